<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>BaseScheduleOptions</name>
    <message>
        <source>BaseScheduleOptions: Priority is out of range!</source>
        <comment>Logger</comment>
        <translation>BaseScheduleOptions: Priorität außerhalb des gültigen Bereichs!</translation>
    </message>
    <message>
        <source>BaseScheduleOptions: Receipt is out of range!</source>
        <comment>Logger</comment>
        <translation>BaseScheduleOptions: Bestätigung außerhalb des gültigen Bereichs!</translation>
    </message>
    <message>
        <source>BaseScheduleOptions: ReceipAttachment is out of range!</source>
        <comment>Logger</comment>
        <translation>BaseScheduleOptions: Anhang der Bestätigung außerhalb des gültigen Bereichs!</translation>
    </message>
    <message>
        <source>BaseScheduleOptions: fax page size is out of range!</source>
        <comment>Logger</comment>
        <translation>BaseScheduleOptions: Seitengröße des Faxes außerhalb des gültigen Bereichs!</translation>
    </message>
</context>
<context>
    <name>ComOutlook</name>
    <message>
        <source>Outlook refused %1: %2</source>
        <comment>Logger</comment>
        <translation>Outlook lehnte %1 ab: %2</translation>
    </message>
</context>
<context>
    <name>ContactLocalStorage</name>
    <message>
        <source>Error creating path %1</source>
        <comment>Logger</comment>
        <translation>Der Pfad %1 konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Error creating database</source>
        <comment>Logger</comment>
        <translation>Die Datenbank konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Closing database</source>
        <comment>Logger</comment>
        <translation>Datenbank wird geschlossen</translation>
    </message>
    <message>
        <source>Database closed</source>
        <comment>Logger</comment>
        <translation>Datenbank geschlossen</translation>
    </message>
    <message>
        <source>Error opening database</source>
        <comment>Logger</comment>
        <translation>Die Datenbank konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Error to add source (db insert)</source>
        <comment>Logger</comment>
        <translation>Quelle konnte nicht hinzugefügt werden (Einfügen in die Datenbank)</translation>
    </message>
    <message>
        <source>Error to add contact (db insert)</source>
        <comment>Logger</comment>
        <translation>Kontakt konnte nicht hinzugefügt werden (Einfügen in die Datenbank)</translation>
    </message>
    <message>
        <source>Transaction mutex locked</source>
        <comment>Logger</comment>
        <translation>Mutex der Transaktion gesperrt</translation>
    </message>
    <message>
        <source>Transaction commit started</source>
        <comment>Logger</comment>
        <translation>Abschluss der Transaktion begonnen</translation>
    </message>
    <message>
        <source>Transaction commit finished</source>
        <comment>Logger</comment>
        <translation>Abschluss der Transaktion beendet</translation>
    </message>
    <message>
        <source>Transaction mutex unlocked</source>
        <comment>Logger</comment>
        <translation>Mutex der Transaktion freigegeben</translation>
    </message>
</context>
<context>
    <name>ContactManager</name>
    <message>
        <source>manager sync count (%1)</source>
        <comment>Logger</comment>
        <translation>Manager: Anzahl laufender Synchronisierungen (%1)</translation>
    </message>
</context>
<context>
    <name>ContactProvider</name>
    <message>
        <source>sync count (%1)</source>
        <comment>Logger</comment>
        <translation>Anzahl laufender Synchronisierungen (%1)</translation>
    </message>
</context>
<context>
    <name>Downloader</name>
    <message>
        <source>Start Downloading %1 from %2</source>
        <comment>Logger</comment>
        <translation>Herunterladen von %1 beginnt, Quelle: %2</translation>
    </message>
    <message>
        <source>Downloader: network error when getting data chunk!</source>
        <comment>Logger</comment>
        <translation>Downloader: Netzwerkfehler beim Empfang eines Datenblocks!</translation>
    </message>
    <message>
        <source>Downloader: next data chunk was obtained.</source>
        <comment>Logger</comment>
        <translation>Downloader: Nächster Datenblock empfangen.</translation>
    </message>
    <message>
        <source>Downloader: file %1 was obtained successfully.</source>
        <comment>Logger</comment>
        <translation>Downloader: Datei %1 erfolgreich empfangen.</translation>
    </message>
    <message>
        <source>Downloader: network error! File has not downloaded!</source>
        <comment>Logger</comment>
        <translation>Downloader: Netzwerkfehler! Die Datei wurde nicht heruntergeladen!</translation>
    </message>
</context>
<context>
    <name>OutlookContactProvider</name>
    <message>
        <source>Incorrectly selected directory Outlook</source>
        <comment>Logger</comment>
        <translation>Falsch gewählter Outlook-Ordner</translation>
    </message>
    <message>
        <source>sync count (%1)</source>
        <comment>Logger</comment>
        <translation>Anzahl laufender Synchronisierungen (%1)</translation>
    </message>
    <message>
        <source>Unsuported contact type</source>
        <comment>Logger</comment>
        <translation>Nicht unterstützter Kontakttyp</translation>
    </message>
</context>
<context>
    <name>PrintCaptureBase</name>
    <message>
        <source>Print Captures</source>
        <translation>Erfasste Druckaufträge</translation>
    </message>
    <message>
        <source>Status:</source>
        <translation>Status:</translation>
    </message>
    <message>
        <source>Idle</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>Delete All</source>
        <translation>Alle löschen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Quendra Client</source>
        <translation>Quendra Client</translation>
    </message>
    <message>
        <source>Quindra Client</source>
        <translation>Quendra Client</translation>
    </message>
    <message>
        <source>Are you sure you want to delete the document?</source>
        <translation>Möchten Sie das Dokument wirklich löschen?</translation>
    </message>
    <message>
        <source>Are you sure you want to delete all the print captures?</source>
        <translation>Möchten Sie wirklich alle erfassten Druckaufträge löschen?</translation>
    </message>
    <message>
        <source>Failed to create new fax.<byte value="xd"/>
The file %1 cannot be found.</source>
        <translation>Das neue Fax konnte nicht erstellt werden.<byte value="xd"/>
Die Datei %1 wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>Failed to open file.<byte value="xd"/>
The file %1 cannot be found.</source>
        <translation>Die Datei konnte nicht geöffnet werden.<byte value="xd"/>
Die Datei %1 wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>Failed to open file: </source>
        <comment>Logger</comment>
        <translation>Die Datei konnte nicht geöffnet werden: </translation>
    </message>
    <message>
        <source>This file does not have a program associated with it and cannot be opened. Install a program to open TIFF files, or create a file association for TIFF files.</source>
        <translation>Dieser Datei ist kein Programm zugeordnet, sie kann daher nicht geöffnet werden. Installieren Sie ein Programm, das TIFF-Dateien öffnet, oder ordnen Sie TIFF-Dateien ein Programm zu.</translation>
    </message>
</context>
<context>
    <name>PrintCaptureModelBase</name>
    <message>
        <source>Document Name</source>
        <translation>Dokumentname</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Created At</source>
        <translation>Erstellt am</translation>
    </message>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>New Fax</source>
        <translation>Neues Fax</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Can&apos;t delete file </source>
        <comment>Logger</comment>
        <translation>Datei kann nicht gelöscht werden: </translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Setting log level %1</source>
        <comment>Logger</comment>
        <translation>Protokollstufe wird auf %1 gesetzt</translation>
    </message>
    <message>
        <source>Change log location to: </source>
        <comment>Logger</comment>
        <translation>Protokollordner wird geändert in: </translation>
    </message>
    <message>
        <source>Location has changed: </source>
        <comment>Logger</comment>
        <translation>Protokollordner wurde geändert: </translation>
    </message>
    <message>
        <source>Failed to remove the file: </source>
        <comment>Logger</comment>
        <translation>Die Datei konnte nicht entfernt werden: </translation>
    </message>
</context>
<context>
    <name>QuendraContactProvider</name>
    <message>
        <source>Unsuported contact type</source>
        <comment>Logger</comment>
        <translation>Nicht unterstützter Kontakttyp</translation>
    </message>
    <message>
        <source>Error to link with server (init contact provider)</source>
        <comment>Logger</comment>
        <translation>Fehler beim Verbinden mit dem Server (Einrichten der Kontaktquelle)</translation>
    </message>
    <message>
        <source>Error to add contact (create task)</source>
        <comment>Logger</comment>
        <translation>Kontakt konnte nicht hinzugefügt werden (Anlegen der Aufgabe)</translation>
    </message>
    <message>
        <source>Error to modify contact (modify task)</source>
        <comment>Logger</comment>
        <translation>Kontakt konnte nicht geändert werden (Aufgabe zum Ändern)</translation>
    </message>
    <message>
        <source>Error to delete contact (delete task)</source>
        <comment>Logger</comment>
        <translation>Kontakt konnte nicht gelöscht werden (Aufgabe zum Löschen)</translation>
    </message>
    <message>
        <source>sync count (%1)</source>
        <comment>Logger</comment>
        <translation>Anzahl laufender Synchronisierungen (%1)</translation>
    </message>
    <message>
        <source>Error to sync contact (get contacts oids task)</source>
        <comment>Logger</comment>
        <translation>Kontakte konnten nicht synchronisiert werden (Aufgabe zum Abruf der IDs)</translation>
    </message>
    <message>
        <source>Error to sync contact (get contacts task)</source>
        <comment>Logger</comment>
        <translation>Kontakte konnten nicht synchronisiert werden (Aufgabe zum Abruf der Kontakte)</translation>
    </message>
    <message>
        <source>Unsuported contact location</source>
        <comment>Logger</comment>
        <translation>Nicht unterstützter Ort des Kontakts</translation>
    </message>
</context>
<context>
    <name>TaskAbort</name>
    <message>
        <source>TaskAbort request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskAbort-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskAbort: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskAbort: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>TaskAbort reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskAbort-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskAbort: invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskAbort: Ungültige Antwort!</translation>
    </message>
</context>
<context>
    <name>TaskAddContact</name>
    <message>
        <source>TaskAddContact request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskAddContact-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskAddContact reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskAddContact-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskAddContact: invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskAddContact: Ungültige Antwort!</translation>
    </message>
    <message>
        <source>TaskAddContact: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskAddContact: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskChekPermissions</name>
    <message>
        <source>Request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskChekPermissions: response permission error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskChekPermissions: Fehler bei der Abfrage der Rechte! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskChekPermissions reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskChekPermissions-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskChekPermissions: response permission error! response: %1</source>
        <comment>Logger</comment>
        <translation>TaskChekPermissions: Fehler bei der Abfrage der Rechte! Antwort: %1</translation>
    </message>
    <message>
        <source>TaskChekPermissions: can not parse user options</source>
        <comment>Logger</comment>
        <translation>TaskChekPermissions: Die Optionen des Benutzers sind nicht lesbar</translation>
    </message>
</context>
<context>
    <name>TaskDeleteContact</name>
    <message>
        <source>TaskDeleteContact request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskDeleteContact-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskDeleteContact reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskDeleteContact-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskDeleteContact: invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskDeleteContact: Ungültige Antwort!</translation>
    </message>
    <message>
        <source>TaskDeleteContact: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskDeleteContact: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskGetContacts</name>
    <message>
        <source>TaskGetContacts request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetContacts-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetContacts: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetContacts: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetContacts reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetContacts-Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskGetContactsOids</name>
    <message>
        <source>TaskGetContactsOids request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetContactsOids-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetContactsOids: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetContactsOids: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetContactsOids reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetContactsOids-Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskGetCoverPages</name>
    <message>
        <source>TaskGetCoverPages request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetCoverPages-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetCoverPages reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetCoverPages-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetContactsOids: reply error! http code %1.</source>
        <comment>Logger</comment>
        <translation>TaskGetContactsOids: Fehler in der Antwort! HTTP-Code %1.</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskGetFaxEntry</name>
    <message>
        <source>TaskGetFaxEntry request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxEntry-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetFaxEntry reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxEntry-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetFaxEntry: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxEntry: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetFaxEntry: contains invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxEntry: Ungültige Antwort!</translation>
    </message>
</context>
<context>
    <name>TaskGetFaxUser</name>
    <message>
        <source>TaskGetFaxUser request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxUser-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetFaxUser: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxUser: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetFaxUser reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxUser-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetFaxUser: invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskGetFaxUser: Ungültige Antwort!</translation>
    </message>
</context>
<context>
    <name>TaskGetInboundFaxEntry</name>
    <message>
        <source>TaskGetInboundFaxEntry request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetInboundFaxEntry-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetInboundFaxEntry reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetInboundFaxEntry-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetInboundFaxEntry: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetInboundFaxEntry: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>TaskGetInboundFaxEntry: contains invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskGetInboundFaxEntry: Ungültige Antwort!</translation>
    </message>
</context>
<context>
    <name>TaskGetOutboundFaxEntry</name>
    <message>
        <source>TaskGetOutboundFaxEntry request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetOutboundFaxEntry-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetOutboundFaxEntry reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetOutboundFaxEntry-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetOutboundFaxEntry: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetOutboundFaxEntry: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetOutboundFaxEntry: contains invalid reply!</source>
        <comment>Logger</comment>
        <translation>TaskGetOutboundFaxEntry: Ungültige Antwort!</translation>
    </message>
</context>
<context>
    <name>TaskGetPrinterNames</name>
    <message>
        <source>TaskGetPrinterNames request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetPrinterNames-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetPrinterNames reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetPrinterNames-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetPrinterNames: reply error! http code %1.</source>
        <comment>Logger</comment>
        <translation>TaskGetPrinterNames: Fehler in der Antwort! HTTP-Code %1.</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskGetQuendraInfo</name>
    <message>
        <source>TaskGetQuendraInfo request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskGetQuendraInfo-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskGetQuendraInfo: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskGetQuendraInfo: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskGetQuendraInfo reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskGetQuendraInfo-Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskModifyContact</name>
    <message>
        <source>TaskModifyContact request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskModifyContact-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskModifyContact reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskModifyContact-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskModifyContact: invalid reply</source>
        <comment>Logger</comment>
        <translation>TaskModifyContact: Ungültige Antwort</translation>
    </message>
    <message>
        <source>TaskModifyContact: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskModifyContact: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
<context>
    <name>TaskModifyFaxUser</name>
    <message>
        <source>TaskModifyFaxUser request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskModifyFaxUser-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskModifyFaxUser: reply error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskModifyFaxUser: Fehler in der Antwort! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskModifyFaxUser reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>TaskModifyFaxUser-Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskModifyFaxUser: invalid reply</source>
        <comment>Logger</comment>
        <translation>TaskModifyFaxUser: Ungültige Antwort</translation>
    </message>
</context>
<context>
    <name>TaskReschedule</name>
    <message>
        <source>TaskReschedule request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskReschedule-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskReschedule: reschedule error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskReschedule: Fehler beim Verschieben! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskReschedule: reschedule error! response: </source>
        <comment>Logger</comment>
        <translation>TaskReschedule: Fehler beim Verschieben! Antwort: </translation>
    </message>
</context>
<context>
    <name>TaskSchedule</name>
    <message>
        <source>TaskSchedule request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskSchedule-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskSchedule: reschedule error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskSchedule: Fehler beim Einreihen! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>TaskSchedule: invalid reply.</source>
        <comment>Logger</comment>
        <translation>TaskSchedule: Ungültige Antwort.</translation>
    </message>
</context>
<context>
    <name>TaskVerifyLogin</name>
    <message>
        <source>TaskVerifyLogin request:<byte value="xd"/>
%1</source>
        <comment>Logger</comment>
        <translation>TaskVerifyLogin-Anfrage:<byte value="xd"/>
%1</translation>
    </message>
    <message>
        <source>TaskVerifyLogin: reschedule error! http code %1</source>
        <comment>Logger</comment>
        <translation>TaskVerifyLogin: Fehler beim Prüfen der Anmeldung! HTTP-Code %1</translation>
    </message>
    <message>
        <source>Reply:<byte value="xd"/>
</source>
        <comment>Logger</comment>
        <translation>Antwort:<byte value="xd"/>
</translation>
    </message>
</context>
</TS>
