<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>qdfax</name>
    <message numerus="yes">
        <source>%n documents</source>
        <translation>
            <numerusform>%n document</numerusform>
            <numerusform>%n documents</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n pages</source>
        <translation>
            <numerusform>%n page</numerusform>
            <numerusform>%n pages</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Not deleted: %1. %n of %2 were deleted before it.</source>
        <translation>
            <numerusform>Not deleted: %1. %n of %2 was deleted before it.</numerusform>
            <numerusform>Not deleted: %1. %n of %2 were deleted before it.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n members received</source>
        <translation>
            <numerusform>%n member received</numerusform>
            <numerusform>%n members received</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>it has %n fields, and the first line names %1</source>
        <translation>
            <numerusform>it has %n field, and the first line names %1</numerusform>
            <numerusform>it has %n fields, and the first line names %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Exported %n contacts to %1.</source>
        <translation>
            <numerusform>Exported %n contact to %1.</numerusform>
            <numerusform>Exported %n contacts to %1.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n contacts can be imported to the %1</source>
        <translation>
            <numerusform>%n contact can be imported to the %1</numerusform>
            <numerusform>%n contacts can be imported to the %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Imported %n contacts to the %1</source>
        <translation>
            <numerusform>Imported %n contact to the %1</numerusform>
            <numerusform>Imported %n contacts to the %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n were there already</source>
        <translation>
            <numerusform>, %n was there already</numerusform>
            <numerusform>, %n were there already</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n were not imported</source>
        <translation>
            <numerusform>, %n was not imported</numerusform>
            <numerusform>, %n were not imported</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n from line %1 on were not tried</source>
        <translation>
            <numerusform>, %n from line %1 on was not tried</numerusform>
            <numerusform>, %n from line %1 on were not tried</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>qdfax: Interrupted at line %1. %n contacts were imported before it, and perhaps this one; &quot;qdfax contacts sync&quot; shows it.</source>
        <translation>
            <numerusform>qdfax: Interrupted at line %1. %n contact was imported before it, and perhaps this one; &quot;qdfax contacts sync&quot; shows it.</numerusform>
            <numerusform>qdfax: Interrupted at line %1. %n contacts were imported before it, and perhaps this one; &quot;qdfax contacts sync&quot; shows it.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>There are %n received faxes, so there is no number %1.</source>
        <translation>
            <numerusform>There is %n received fax, so there is no number %1.</numerusform>
            <numerusform>There are %n received faxes, so there is no number %1.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n contacts copied.</source>
        <translation>
            <numerusform>%n contact copied.</numerusform>
            <numerusform>%n contacts copied.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n of the entries in %1 cannot be read. They are kept as they are.</source>
        <translation>
            <numerusform>%n of the entries in %1 cannot be read. It is kept as it is.</numerusform>
            <numerusform>%n of the entries in %1 cannot be read. They are kept as they are.</numerusform>
        </translation>
    </message>
</context>
</TS>
