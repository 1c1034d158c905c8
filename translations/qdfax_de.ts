<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>qdfax</name>
    <message>
        <source>TIFF, %1, older than the document</source>
        <translation>TIFF, %1, älter als das Dokument</translation>
    </message>
    <message>
        <source>TIFF that cannot be read</source>
        <translation>TIFF, das nicht gelesen werden kann</translation>
    </message>
    <message>
        <source>N</source>
        <translation>N</translation>
    </message>
    <message>
        <source>NAME</source>
        <translation>NAME</translation>
    </message>
    <message>
        <source>PAGES</source>
        <translation>SEITEN</translation>
    </message>
    <message>
        <source>CREATED</source>
        <translation>ERSTELLT</translation>
    </message>
    <message>
        <source>SIZE</source>
        <translation>GRÖSSE</translation>
    </message>
    <message>
        <source>BESIDE IT</source>
        <translation>DANEBEN</translation>
    </message>
    <message>
        <source>There is no captured document &quot;%1&quot;. &quot;qdfax captures list&quot; shows them.</source>
        <translation>Es gibt kein erfasstes Dokument „%1“. „qdfax captures list“ zeigt alle.</translation>
    </message>
    <message>
        <source>There are no captured documents in %1.</source>
        <translation>In %1 liegen keine erfassten Dokumente.</translation>
    </message>
    <message>
        <source>No program is there to open %1.</source>
        <translation>Es gibt kein Programm, das %1 öffnet.</translation>
    </message>
    <message>
        <source>Deleted: %1</source>
        <translation>Gelöscht: %1</translation>
    </message>
    <message>
        <source>Files that cannot be deleted: %1 (%2). Check the rights of %3.</source>
        <translation>Dateien, die nicht gelöscht werden können: %1 (%2). Prüfen Sie die Rechte von %3.</translation>
    </message>
    <message>
        <source>This would delete everything in %2: %1. Say so by --yes.</source>
        <translation>Das würde alles in %2 löschen: %1. Bestätigen Sie es mit --yes.</translation>
    </message>
    <message>
        <source>%1 in %2. Ctrl-C ends.</source>
        <translation>%1 in %2. Strg+C beendet.</translation>
    </message>
    <message>
        <source>Open the window of captured print jobs</source>
        <translation>Das Fenster der erfassten Druckaufträge öffnen</translation>
    </message>
    <message>
        <source>Shows what the print-capture driver has left in its folder, and follows it. &quot;New Fax&quot; asks for a
number and a name and sends the document through the server, as &quot;qdfax send&quot; does. The exit
status is that of the last fax.
Without a window: captures list, view, delete, delete-all, watch.</source>
        <translation>Zeigt, was der Druckertreiber in seinem Ordner abgelegt hat, und folgt den Änderungen. „Neues Fax“
fragt nach Nummer und Name und sendet das Dokument über den Server, wie es „qdfax send“ tut.
Der Rückgabewert ist der des letzten Faxes.
Ohne Fenster: captures list, view, delete, delete-all, watch.</translation>
    </message>
    <message>
        <source>Show the captured print jobs</source>
        <translation>Die erfassten Druckaufträge zeigen</translation>
    </message>
    <message>
        <source>The newest first. Pages are 0 for what is no PDF. BESIDE IT tells of a TIFF file of the same name,
which goes with its document.</source>
        <translation>Der neueste zuerst. Was kein PDF ist, hat 0 Seiten. DANEBEN nennt eine TIFF-Datei gleichen Namens,
die zum Dokument gehört.</translation>
    </message>
    <message>
        <source>Open a captured print job with the desktop&apos;s program</source>
        <translation>Einen erfassten Druckauftrag mit dem Programm des Desktops öffnen</translation>
    </message>
    <message>
        <source>NAME and N are those of &quot;qdfax captures list&quot;; 1 is the newest.</source>
        <translation>NAME und N sind die von „qdfax captures list“; 1 ist der neueste.</translation>
    </message>
    <message>
        <source>Delete captured print jobs</source>
        <translation>Erfasste Druckaufträge löschen</translation>
    </message>
    <message>
        <source>
Nothing is deleted when one of them does not exist. A TIFF file beside one goes too.
JSON: how many documents were deleted, and the names of all files that were left.</source>
        <translation>
Fehlt einer von ihnen, wird nichts gelöscht. Eine TIFF-Datei daneben wird mitgelöscht.
JSON: wie viele Dokumente gelöscht wurden und die Namen aller Dateien, die geblieben sind.</translation>
    </message>
    <message>
        <source>Delete all captured print jobs</source>
        <translation>Alle erfassten Druckaufträge löschen</translation>
    </message>
    <message>
        <source>Really.</source>
        <translation>Wirklich.</translation>
    </message>
    <message>
        <source>Show the captured print jobs whenever they change</source>
        <translation>Die erfassten Druckaufträge bei jeder Änderung zeigen</translation>
    </message>
    <message>
        <source>End when it was shown so often.</source>
        <translation>Nach so vielen Ausgaben enden.</translation>
    </message>
    <message>
        <source>No documents</source>
        <translation>Keine Dokumente</translation>
    </message>
    <message>
        <source>, %1 with a TIFF file</source>
        <translation>, %1 mit TIFF-Datei</translation>
    </message>
    <message>
        <source> See &quot;qdfax help&quot;.</source>
        <translation> Siehe „qdfax help“.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; needs a second word: %2. See &quot;qdfax help %1&quot;.</source>
        <translation>„%1“ braucht ein zweites Wort: %2. Siehe „qdfax help %1“.</translation>
    </message>
    <message>
        <source>There is no command &quot;%1&quot;. There are: %2. See &quot;qdfax help&quot;.</source>
        <translation>Es gibt keinen Befehl „%1“. Es gibt: %2. Siehe „qdfax help“.</translation>
    </message>
    <message>
        <source> See &quot;qdfax help %1&quot;.</source>
        <translation> Siehe „qdfax help %1“.</translation>
    </message>
    <message>
        <source>Something is missing: qdfax %1 %2.%3</source>
        <translation>Etwas fehlt: qdfax %1 %2.%3</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is one argument too many: qdfax %2 %3.%4</source>
        <translation>„%1“ ist ein Argument zu viel: qdfax %2 %3.%4</translation>
    </message>
    <message>
        <source>Use this server instead of the default one.</source>
        <translation>Diesen Server statt des Standardservers verwenden.</translation>
    </message>
    <message>
        <source>Print JSON instead of text for people.</source>
        <translation>JSON statt Text für Menschen ausgeben.</translation>
    </message>
    <message>
        <source>Give up when nothing was heard for so long (%1; 0: never).</source>
        <translation>Aufgeben, wenn so lange nichts zu hören war (%1; 0: nie).</translation>
    </message>
    <message>
        <source>What goes to the log file: 0 nothing to 4 everything (1).</source>
        <translation>Was in die Protokolldatei geschrieben wird: 0 nichts bis 4 alles (1).</translation>
    </message>
    <message>
        <source>The output could not be written. Is the disk full?</source>
        <translation>Die Ausgabe konnte nicht geschrieben werden. Ist der Datenträger voll?</translation>
    </message>
    <message>
        <source>%1 See &quot;qdfax help %2&quot;.</source>
        <translation>%1 Siehe „qdfax help %2“.</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>The contacts kept in %1 cannot be used: the file contacts.sqlite there is damaged, locked, or not permitted. When it is damaged, move it away and run &quot;qdfax %2&quot;.</source>
        <translation>Die in %1 gespeicherten Kontakte sind nicht verwendbar: Die Datei contacts.sqlite dort ist beschädigt, gesperrt oder nicht zugänglich. Ist sie beschädigt, verschieben Sie sie und führen Sie „qdfax %2“ aus.</translation>
    </message>
    <message>
        <source>&quot;qdfax contacts sync&quot; fetches what is new.</source>
        <translation>„qdfax contacts sync“ holt, was neu ist.</translation>
    </message>
    <message>
        <source>Similar: %1.</source>
        <translation>Ähnlich: %1.</translation>
    </message>
    <message>
        <source>personal contacts</source>
        <translation>persönliche Kontakte</translation>
    </message>
    <message>
        <source>personal groups</source>
        <translation>persönliche Gruppen</translation>
    </message>
    <message>
        <source>global contacts</source>
        <translation>globale Kontakte</translation>
    </message>
    <message>
        <source>global groups</source>
        <translation>globale Gruppen</translation>
    </message>
    <message>
        <source>ID</source>
        <translation>ID</translation>
    </message>
    <message>
        <source>ORGANIZATION</source>
        <translation>ORGANISATION</translation>
    </message>
    <message>
        <source>FAX</source>
        <translation>FAX</translation>
    </message>
    <message>
        <source>PHONE</source>
        <translation>TELEFON</translation>
    </message>
    <message>
        <source>E-MAIL</source>
        <translation>E-MAIL</translation>
    </message>
    <message>
        <source>BOOK</source>
        <translation>BUCH</translation>
    </message>
    <message>
        <source>Fax number.</source>
        <translation>Faxnummer.</translation>
    </message>
    <message>
        <source>Phone number.</source>
        <translation>Telefonnummer.</translation>
    </message>
    <message>
        <source>E-mail address.</source>
        <translation>E-Mail-Adresse.</translation>
    </message>
    <message>
        <source>Organization.</source>
        <translation>Organisation.</translation>
    </message>
    <message>
        <source>Of a group: a description.</source>
        <translation>Für eine Gruppe: eine Beschreibung.</translation>
    </message>
    <message>
        <source>Of a group: add this contact. May be given several times.</source>
        <translation>Für eine Gruppe: diesen Kontakt aufnehmen. Mehrfach möglich.</translation>
    </message>
    <message>
        <source>The name %1.</source>
        <translation>Der Name %1.</translation>
    </message>
    <message>
        <source>is nothing that a group has</source>
        <translation>gibt es bei Gruppen nicht</translation>
    </message>
    <message>
        <source>is nothing that a contact has</source>
        <translation>gibt es bei Kontakten nicht</translation>
    </message>
    <message>
        <source>takes contacts, and &quot;%1&quot; is a group</source>
        <translation>erwartet Kontakte, „%1“ ist aber eine Gruppe</translation>
    </message>
    <message>
        <source>The server has it, but the cache does not; &quot;qdfax contacts sync&quot; fetches it.</source>
        <translation>Der Server hat den Eintrag, der Zwischenspeicher aber nicht; „qdfax contacts sync“ holt ihn.</translation>
    </message>
    <message>
        <source>NAME is empty.</source>
        <translation>NAME ist leer.</translation>
    </message>
    <message>
        <source>takes a name, not an empty text</source>
        <translation>erwartet einen Namen, keinen leeren Text</translation>
    </message>
    <message>
        <source>There is nothing to change: name what is to be new.</source>
        <translation>Es gibt nichts zu ändern: Geben Sie an, was neu sein soll.</translation>
    </message>
    <message>
        <source>It is not in the cache any more.</source>
        <translation>Der Eintrag ist nicht mehr im Zwischenspeicher.</translation>
    </message>
    <message>
        <source> Nothing was deleted.</source>
        <translation> Nichts wurde gelöscht.</translation>
    </message>
    <message>
        <source>Deleted %1.</source>
        <translation>%1 gelöscht.</translation>
    </message>
    <message>
        <source>Add a contact or a group to a book of the server</source>
        <translation>Einem Buch des Servers einen Kontakt oder eine Gruppe hinzufügen</translation>
    </message>
    <message>
        <source>Without --book it is your own book. With --book personal-groups or global-groups it is a group.
Members have to be in the cache: see &quot;qdfax contacts sync&quot;.</source>
        <translation>Ohne --book ist es Ihr eigenes Buch. Mit --book personal-groups oder global-groups ist es eine
Gruppe. Die Mitglieder müssen im Zwischenspeicher sein: siehe „qdfax contacts sync“.</translation>
    </message>
    <message>
        <source>The book to add it to (personal).</source>
        <translation>Das Buch, dem hinzugefügt wird (personal).</translation>
    </message>
    <message>
        <source>Change a contact or a group on the server</source>
        <translation>Einen Kontakt oder eine Gruppe auf dem Server ändern</translation>
    </message>
    <message>
        <source>What is not named stays as the cache has it; an empty text removes a field. Synchronise first
when others change the same book.</source>
        <translation>Was nicht angegeben ist, bleibt, wie es im Zwischenspeicher steht; ein leerer Text entfernt ein
Feld. Synchronisieren Sie vorher, wenn auch andere das Buch ändern.</translation>
    </message>
    <message>
        <source>A new name.</source>
        <translation>Ein neuer Name.</translation>
    </message>
    <message>
        <source>Of a group: take this contact out of it. May be given several times.</source>
        <translation>Für eine Gruppe: diesen Kontakt herausnehmen. Mehrfach möglich.</translation>
    </message>
    <message>
        <source>Delete contacts and groups on the server</source>
        <translation>Kontakte und Gruppen auf dem Server löschen</translation>
    </message>
    <message>
        <source>The members of a group stay. All that is named has to be found before anything is deleted; the
first refusal of the server ends it, and what was deleted until then is said.</source>
        <translation>Die Mitglieder einer Gruppe bleiben. Bevor etwas gelöscht wird, muss alles Angegebene gefunden
sein; lehnt der Server etwas ab, wird abgebrochen und gemeldet, was bis dahin gelöscht wurde.</translation>
    </message>
    <message>
        <source>storing %1 received</source>
        <translation>%1 empfangen, werden gespeichert</translation>
    </message>
    <message>
        <source>%1 received</source>
        <translation>%1 empfangen</translation>
    </message>
    <message>
        <source>qdfax: Interrupted. The book that was being read is as it was before.</source>
        <translation>qdfax: Unterbrochen. Das Buch, das gerade gelesen wurde, ist wie zuvor.</translation>
    </message>
    <message>
        <source>ENTRIES</source>
        <translation>EINTRÄGE</translation>
    </message>
    <message>
        <source>SECONDS</source>
        <translation>SEKUNDEN</translation>
    </message>
    <message>
        <source>%1 (%2 of %3)</source>
        <translation>%1 (%2 von %3)</translation>
    </message>
    <message>
        <source>as before</source>
        <translation>wie zuvor</translation>
    </message>
    <message>
        <source>There is nothing in the cache. &quot;qdfax contacts sync&quot; fetches what the server has.</source>
        <translation>Im Zwischenspeicher ist nichts. „qdfax contacts sync“ holt, was der Server hat.</translation>
    </message>
    <message>
        <source>No name holds &quot;%1&quot;.</source>
        <translation>Kein Name enthält „%1“.</translation>
    </message>
    <message>
        <source>Book</source>
        <translation>Buch</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Organization</source>
        <translation>Organisation</translation>
    </message>
    <message>
        <source>Fax</source>
        <translation>Fax</translation>
    </message>
    <message>
        <source>Phone</source>
        <translation>Telefon</translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation>E-Mail</translation>
    </message>
    <message>
        <source>MEMBERS</source>
        <translation>MITGLIEDER</translation>
    </message>
    <message>
        <source>DESCRIPTION</source>
        <translation>BESCHREIBUNG</translation>
    </message>
    <message>
        <source>Fetch the contact books of the server</source>
        <translation>Die Kontaktbücher des Servers holen</translation>
    </message>
    <message>
        <source>Reads what has changed since the last time: your contacts, the server&apos;s, and the groups of
both. They are kept on this machine, where the other contacts commands and
&quot;qdfax send --to-contact&quot; find them. A book that cannot be read stays as it was.</source>
        <translation>Liest, was sich seit dem letzten Mal geändert hat: Ihre Kontakte, die des Servers und die Gruppen
beider. Sie werden auf diesem Rechner gespeichert, wo die anderen Befehle für Kontakte und
„qdfax send --to-contact“ sie finden. Ein Buch, das nicht gelesen werden kann, bleibt, wie es war.</translation>
    </message>
    <message>
        <source>Read everything anew, not only what has changed.</source>
        <translation>Alles neu lesen, nicht nur, was sich geändert hat.</translation>
    </message>
    <message>
        <source>Shows what the last &quot;qdfax contacts sync&quot; brought, without asking the server.
</source>
        <translation>Zeigt, was „qdfax contacts sync“ zuletzt geholt hat, ohne den Server zu fragen.
</translation>
    </message>
    <message>
        <source>List contacts</source>
        <translation>Kontakte auflisten</translation>
    </message>
    <message>
        <source>Without --book the contacts of both books are listed.</source>
        <translation>Ohne --book werden die Kontakte beider Bücher aufgelistet.</translation>
    </message>
    <message>
        <source>Only this book.</source>
        <translation>Nur dieses Buch.</translation>
    </message>
    <message>
        <source>Leave out so many at the beginning.</source>
        <translation>So viele am Anfang auslassen.</translation>
    </message>
    <message>
        <source>At most so many.</source>
        <translation>Höchstens so viele.</translation>
    </message>
    <message>
        <source>Find contacts and groups by name</source>
        <translation>Kontakte und Gruppen nach Namen suchen</translation>
    </message>
    <message>
        <source>TEXT may stand anywhere in the name. Of letters outside A to Z the case counts; % stands for any
text and _ for any character.</source>
        <translation>TEXT darf überall im Namen stehen. Bei Buchstaben außerhalb von A bis Z zählt die Großschreibung;
% steht für beliebigen Text, _ für ein beliebiges Zeichen.</translation>
    </message>
    <message>
        <source>Show a contact, or a group with its members</source>
        <translation>Einen Kontakt oder eine Gruppe mit ihren Mitgliedern zeigen</translation>
    </message>
    <message>
        <source>ID is as the other contacts commands show it; NAME is the whole name.</source>
        <translation>ID ist, was die anderen Befehle für Kontakte zeigen; NAME ist der ganze Name.</translation>
    </message>
    <message>
        <source>List the groups of contacts</source>
        <translation>Die Gruppen von Kontakten auflisten</translation>
    </message>
    <message>
        <source>&quot;qdfax contacts show&quot; lists the members of one.</source>
        <translation>„qdfax contacts show“ listet die Mitglieder einer Gruppe auf.</translation>
    </message>
    <message>
        <source>the field &quot;%1&quot; %2</source>
        <translation>das Feld „%1“ %2</translation>
    </message>
    <message>
        <source>it has neither a name nor an organization</source>
        <translation>Name und Organisation fehlen</translation>
    </message>
    <message>
        <source>line %1 is not UTF-8; save the file as UTF-8</source>
        <translation>Zeile %1 ist nicht UTF-8; speichern Sie die Datei als UTF-8</translation>
    </message>
    <message>
        <source>line %1 has a quote in the wrong place; a field with quotes is put in quotes, and each quote in it is doubled</source>
        <translation>Zeile %1 hat ein Anführungszeichen an falscher Stelle; ein Feld mit Anführungszeichen steht in Anführungszeichen, und jedes darin wird verdoppelt</translation>
    </message>
    <message>
        <source>a quote in the record that begins in line %1 is never closed</source>
        <translation>ein Anführungszeichen im Datensatz, der in Zeile %1 beginnt, wird nie geschlossen</translation>
    </message>
    <message>
        <source>it is empty</source>
        <translation>die Datei ist leer</translation>
    </message>
    <message>
        <source>its first line does not name the columns. Expected are name, organization, phone, fax, email, of which name or organization must be there</source>
        <translation>die erste Zeile benennt die Spalten nicht. Erwartet werden name, organization, phone, fax, email, davon mindestens name oder organization</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a line of a vCard</source>
        <translation>„%1“ ist keine Zeile einer vCard</translation>
    </message>
    <message>
        <source>it is a group, and groups are not imported</source>
        <translation>es ist eine Gruppe, und Gruppen werden nicht importiert</translation>
    </message>
    <message>
        <source>it is not UTF-8</source>
        <translation>der Text ist nicht UTF-8</translation>
    </message>
    <message>
        <source>the card has no END:VCARD</source>
        <translation>die Karte hat kein END:VCARD</translation>
    </message>
    <message>
        <source>it is outside of any card</source>
        <translation>die Zeile steht außerhalb jeder Karte</translation>
    </message>
    <message>
        <source>it cannot be understood</source>
        <translation>die Karte ist nicht zu verstehen</translation>
    </message>
    <message>
        <source>there is no vCard in it</source>
        <translation>die Datei enthält keine vCard</translation>
    </message>
    <message>
        <source>Choose one of --csv and --vcard.</source>
        <translation>Wählen Sie entweder --csv oder --vcard.</translation>
    </message>
    <message>
        <source>takes personal or global; groups are not exported</source>
        <translation>erwartet personal oder global; Gruppen werden nicht exportiert</translation>
    </message>
    <message>
        <source>With --json the contacts go to a FILE.</source>
        <translation>Mit --json gehen die Kontakte in eine Datei (FILE).</translation>
    </message>
    <message>
        <source>%1 exists already. Choose another name, or replace it with --overwrite.</source>
        <translation>%1 gibt es schon. Wählen Sie einen anderen Namen, oder ersetzen Sie die Datei mit --overwrite.</translation>
    </message>
    <message>
        <source>%1 cannot be written: %2. Nothing of it was.</source>
        <translation>%1 kann nicht geschrieben werden: %2. Nichts davon wurde geschrieben.</translation>
    </message>
    <message>
        <source>Line %1 is not imported: %2.</source>
        <translation>Zeile %1 wird nicht importiert: %2.</translation>
    </message>
    <message>
        <source>FILE has to end in .csv or .vcf, which tells what it holds.</source>
        <translation>FILE muss auf .csv oder .vcf enden, woran zu erkennen ist, was die Datei enthält.</translation>
    </message>
    <message>
        <source>%1 cannot be imported: %2. Nothing was imported.</source>
        <translation>%1 kann nicht importiert werden: %2. Nichts wurde importiert.</translation>
    </message>
    <message>
        <source>it is not a file</source>
        <translation>es ist keine Datei</translation>
    </message>
    <message>
        <source>there is no such file</source>
        <translation>es gibt keine solche Datei</translation>
    </message>
    <message>
        <source>it is larger than %1</source>
        <translation>die Datei ist größer als %1</translation>
    </message>
    <message>
        <source>Importing %1 of %2 (line %3), %4 left</source>
        <translation>%1 von %2 werden importiert (Zeile %3), noch %4</translation>
    </message>
    <message>
        <source>Whether the server took line %1 is not known; &quot;qdfax contacts sync&quot; shows it.</source>
        <translation>Ob der Server Zeile %1 angenommen hat, ist nicht bekannt; „qdfax contacts sync“ zeigt es.</translation>
    </message>
    <message>
        <source>takes personal or global; groups are not imported</source>
        <translation>erwartet personal oder global; Gruppen werden nicht importiert</translation>
    </message>
    <message>
        <source>These columns are not imported: %1.</source>
        <translation>Diese Spalten werden nicht importiert: %1.</translation>
    </message>
    <message>
        <source>Write contacts as a table or as vCards</source>
        <translation>Kontakte als Tabelle oder als vCards schreiben</translation>
    </message>
    <message>
        <source>Writes what the last &quot;qdfax contacts sync&quot; brought, without asking the server: to FILE, or to
standard output. Both forms are UTF-8; the table has the columns name, organization, phone, fax
and email. Groups are not part of it.</source>
        <translation>Schreibt, was „qdfax contacts sync“ zuletzt geholt hat, ohne den Server zu fragen: nach FILE oder
auf die Standardausgabe. Beide Formen sind UTF-8; die Tabelle hat die Spalten name, organization,
phone, fax und email. Gruppen gehören nicht dazu.</translation>
    </message>
    <message>
        <source>A table, as spreadsheets read it.</source>
        <translation>Eine Tabelle, wie Tabellenkalkulationen sie lesen.</translation>
    </message>
    <message>
        <source>vCards 3.0, as address books and telephones read them.</source>
        <translation>vCards 3.0, wie Adressbücher und Telefone sie lesen.</translation>
    </message>
    <message>
        <source>Only personal or only global contacts.</source>
        <translation>Nur persönliche oder nur globale Kontakte.</translation>
    </message>
    <message>
        <source>Replace a file of the same name.</source>
        <translation>Eine Datei gleichen Namens ersetzen.</translation>
    </message>
    <message>
        <source>Add the contacts of a table or of vCards to a book of the server</source>
        <translation>Einem Buch des Servers die Kontakte einer Tabelle oder von vCards hinzufügen</translation>
    </message>
    <message>
        <source>The first line of a table names its columns: name, organization, phone, fax, email, in any
order; titles of other address books are understood too. Of a vCard the name, the organization,
a phone and a fax number and an e-mail address are taken, those at work before others. Contacts
that the cache has in this book with the same fields are left out, so an import that broke off
can be repeated. Each line that cannot be imported is named with the reason, and the others are
imported; the exit status is %1 then. A file that is damaged as a whole imports nothing.</source>
        <translation>Die erste Zeile einer Tabelle benennt die Spalten: name, organization, phone, fax, email, in
beliebiger Reihenfolge; auch Überschriften anderer Adressbücher werden verstanden. Von einer vCard
werden Name, Organisation, eine Telefon-, eine Faxnummer und eine E-Mail-Adresse genommen,
dienstliche zuerst. Kontakte, die der Zwischenspeicher in diesem Buch mit denselben Feldern hat,
werden ausgelassen; ein abgebrochener Import kann also wiederholt werden. Jede Zeile, die nicht
importiert werden kann, wird mit dem Grund genannt, die anderen werden importiert; der Rückgabewert
ist dann %1. Aus einer Datei, die als Ganzes beschädigt ist, wird nichts importiert.</translation>
    </message>
    <message>
        <source>The book to add them to (personal).</source>
        <translation>Das Buch, dem sie hinzugefügt werden (personal).</translation>
    </message>
    <message>
        <source>Only say what can be imported.</source>
        <translation>Nur sagen, was importiert werden kann.</translation>
    </message>
    <message>
        <source>Adding to the %1</source>
        <translation>Hinzufügen (%1)</translation>
    </message>
    <message>
        <source>Changing the %1</source>
        <translation>Ändern (%1)</translation>
    </message>
    <message>
        <source>Deleting from the %1</source>
        <translation>Löschen (%1)</translation>
    </message>
    <message>
        <source>Reading the %1</source>
        <translation>Lesen (%1)</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>, %1 left</source>
        <translation>, noch %1</translation>
    </message>
    <message>
        <source>it holds control characters</source>
        <translation>er enthält Steuerzeichen</translation>
    </message>
    <message>
        <source>it is longer than %1 bytes</source>
        <translation>er ist länger als %1 Bytes</translation>
    </message>
    <message>
        <source>it is not one for a new file</source>
        <translation>er ist für eine neue Datei nicht geeignet</translation>
    </message>
    <message>
        <source> The file %1 holds what the server said, and not the document.</source>
        <translation> Die Datei %1 enthält, was der Server dazu gesagt hat, und nicht das Dokument.</translation>
    </message>
    <message>
        <source> The partial file %1 (%2) is left.</source>
        <translation> Die unvollständige Datei %1 (%2) bleibt liegen.</translation>
    </message>
    <message>
        <source>qdfax: Interrupted. The partial file %1 is left.</source>
        <translation>qdfax: Unterbrochen. Die unvollständige Datei %1 bleibt liegen.</translation>
    </message>
    <message>
        <source>Downloading from %1: nothing was heard for %2. Try again later, or allow more with --timeout.%3</source>
        <translation>Herunterladen von %1: %2 lang war nichts zu hören. Versuchen Sie es später noch einmal, oder gewähren Sie mit --timeout mehr Zeit.%3</translation>
    </message>
    <message>
        <source>The file %1 cannot be written. Check permissions and free space.%2</source>
        <translation>Die Datei %1 kann nicht geschrieben werden. Prüfen Sie Rechte und freien Platz.%2</translation>
    </message>
    <message>
        <source>the connection ended before the file did. Try again.</source>
        <translation>die Verbindung endete, bevor die Datei vollständig war. Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>it wants a login, and none was sent, since this is not the configured server.</source>
        <translation>eine Anmeldung wird verlangt, und es wurde keine gesendet, weil dies nicht der eingerichtete Server ist.</translation>
    </message>
    <message>
        <source>the server answered &quot;%1 %2&quot;.</source>
        <translation>der Server antwortete „%1 %2“.</translation>
    </message>
    <message>
        <source>Downloading from %1 failed: %2%3</source>
        <translation>Herunterladen von %1 fehlgeschlagen: %2%3</translation>
    </message>
    <message>
        <source>Downloading from %1 failed: the server packed the document (%2), although it was asked not to. The file %3 holds what it sent.</source>
        <translation>Herunterladen von %1 fehlgeschlagen: Der Server hat das Dokument gepackt (%2), obwohl er gebeten war, es nicht zu tun. Die Datei %3 enthält, was er gesendet hat.</translation>
    </message>
    <message>
        <source>Downloading from %1 failed: a web page came instead of a document. The file %2 holds it.</source>
        <translation>Herunterladen von %1 fehlgeschlagen: Statt eines Dokuments kam eine Webseite. Die Datei %2 enthält sie.</translation>
    </message>
    <message>
        <source>%1 arrived, but the file holds %2. Is the disk full?%3</source>
        <translation>%1 kamen an, aber die Datei enthält %2. Ist der Datenträger voll?%3</translation>
    </message>
    <message>
        <source>Downloading from %1 failed: only %2 of %3 arrived. Try again.%4</source>
        <translation>Herunterladen von %1 fehlgeschlagen: Nur %2 von %3 kamen an. Versuchen Sie es noch einmal.%4</translation>
    </message>
    <message>
        <source>%1: %2 in %3, %4/s</source>
        <translation>%1: %2 in %3, %4/s</translation>
    </message>
    <message>
        <source>Give either a URL or --inbox N.</source>
        <translation>Geben Sie entweder eine URL oder --inbox N an.</translation>
    </message>
    <message>
        <source>There is no folder %1.</source>
        <translation>Es gibt keinen Ordner %1.</translation>
    </message>
    <message>
        <source>The server names no document for this fax.</source>
        <translation>Der Server nennt für dieses Fax kein Dokument.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a URL of a document; it begins with http:// or https://.</source>
        <translation>„%1“ ist keine URL eines Dokuments; sie beginnt mit http:// oder https://.</translation>
    </message>
    <message>
        <source>The name &quot;%1&quot;, which the server gives the document, is refused: %2.</source>
        <translation>Der Name „%1“, den der Server dem Dokument gibt, wird abgelehnt: %2.</translation>
    </message>
    <message>
        <source>The file %1 is there already. Choose another folder by --to, or replace it with --overwrite.</source>
        <translation>Die Datei %1 gibt es schon. Wählen Sie mit --to einen anderen Ordner, oder ersetzen Sie sie mit --overwrite.</translation>
    </message>
    <message>
        <source>No fax server answered within %1 ms. It may be in another network: add it by its address.</source>
        <translation>Innerhalb von %1 ms hat kein Faxserver geantwortet. Vielleicht ist er in einem anderen Netz: Fügen Sie ihn mit seiner Adresse hinzu.</translation>
    </message>
    <message>
        <source>Download a received document</source>
        <translation>Ein empfangenes Dokument herunterladen</translation>
    </message>
    <message>
        <source>The file is named as the server names it. Login and password go to the configured server only;
a URL of another host is fetched without them. What was interrupted stays, and is named.</source>
        <translation>Die Datei heißt, wie der Server sie nennt. Anmeldename und Passwort gehen nur an den eingerichteten
Server; von anderen Rechnern wird ohne sie geladen. Was unvollständig blieb, wird nicht gelöscht, sondern genannt.</translation>
    </message>
    <message>
        <source>The document of the Nth entry of &quot;qdfax inbox&quot;; 1 is the newest.</source>
        <translation>Das Dokument des N-ten Eintrags von „qdfax inbox“; 1 ist der neueste.</translation>
    </message>
    <message>
        <source>Put it into this folder and not the current one.</source>
        <translation>In diesem Ordner und nicht im aktuellen ablegen.</translation>
    </message>
    <message>
        <source>Find fax servers on the local network</source>
        <translation>Faxserver im lokalen Netz suchen</translation>
    </message>
    <message>
        <source>Broadcasts a query and prints each server when its answer comes.</source>
        <translation>Sendet eine Anfrage an alle und gibt jeden Server aus, sobald seine Antwort kommt.</translation>
    </message>
    <message>
        <source>How long to wait for answers, in milliseconds (%1).</source>
        <translation>Wie lange auf Antworten gewartet wird, in Millisekunden (%1).</translation>
    </message>
    <message>
        <source>done</source>
        <translation>erledigt</translation>
    </message>
    <message>
        <source>the command line is wrong; nothing was sent</source>
        <translation>die Befehlszeile ist falsch; nichts wurde gesendet</translation>
    </message>
    <message>
        <source>the server cannot be reached, or refused the request</source>
        <translation>der Server ist nicht erreichbar oder hat die Anfrage abgelehnt</translation>
    </message>
    <message>
        <source>the server does not accept login and password</source>
        <translation>der Server akzeptiert Anmeldename und Passwort nicht</translation>
    </message>
    <message>
        <source>this server, or this computer, cannot do that</source>
        <translation>dieser Server oder dieser Rechner kann das nicht</translation>
    </message>
    <message>
        <source>the server does not permit it</source>
        <translation>der Server erlaubt es nicht</translation>
    </message>
    <message>
        <source>the answer is not one of a fax server</source>
        <translation>die Antwort ist nicht die eines Faxservers</translation>
    </message>
    <message>
        <source>the server denies access</source>
        <translation>der Server verweigert den Zugriff</translation>
    </message>
    <message>
        <source>the server, or Outlook, does not have it</source>
        <translation>der Server oder Outlook hat es nicht</translation>
    </message>
    <message>
        <source>no answer within --timeout seconds</source>
        <translation>keine Antwort innerhalb der Sekunden von --timeout</translation>
    </message>
    <message>
        <source>a file cannot be read or written, or is of a type that cannot be faxed</source>
        <translation>eine Datei kann nicht gelesen oder geschrieben werden oder ist von einem Typ, der sich nicht faxen lässt</translation>
    </message>
    <message>
        <source>the settings file is of no use, or holds no such server</source>
        <translation>die Einstellungsdatei ist unbrauchbar oder enthält keinen solchen Server</translation>
    </message>
    <message>
        <source>waited for the end of the fax, and not every recipient got it</source>
        <translation>das Ende des Faxes wurde abgewartet, und nicht jeder Empfänger hat es bekommen</translation>
    </message>
    <message>
        <source>the search found nothing</source>
        <translation>die Suche hat nichts gefunden</translation>
    </message>
    <message>
        <source>interrupted with Ctrl-C</source>
        <translation>mit Strg+C unterbrochen</translation>
    </message>
    <message>
        <source>New Fax</source>
        <translation>Neues Fax</translation>
    </message>
    <message>
        <source>may be left out</source>
        <translation>kann entfallen</translation>
    </message>
    <message>
        <source>Send</source>
        <translation>Senden</translation>
    </message>
    <message>
        <source>Document:</source>
        <translation>Dokument:</translation>
    </message>
    <message>
        <source>&amp;Number:</source>
        <translation>&amp;Nummer:</translation>
    </message>
    <message>
        <source>N&amp;ame:</source>
        <translation>N&amp;ame:</translation>
    </message>
    <message>
        <source>Sending %1 of %2</source>
        <translation>%1 von %2 werden gesendet</translation>
    </message>
    <message>
        <source>Sent %1, waiting for the server</source>
        <translation>%1 gesendet, der Server arbeitet</translation>
    </message>
    <message>
        <source>Logging in</source>
        <translation>Anmeldung</translation>
    </message>
    <message>
        <source>%1 has taken the fax</source>
        <translation>%1 hat das Fax angenommen</translation>
    </message>
    <message>
        <source>The file %1 cannot be sent: %2</source>
        <translation>Die Datei %1 kann nicht gesendet werden: %2</translation>
    </message>
    <message>
        <source>it does not exist.</source>
        <translation>es gibt sie nicht.</translation>
    </message>
    <message>
        <source>it is not a file.</source>
        <translation>es ist keine Datei.</translation>
    </message>
    <message>
        <source>it cannot be read (%1).</source>
        <translation>sie kann nicht gelesen werden (%1).</translation>
    </message>
    <message>
        <source>it is empty.</source>
        <translation>sie ist leer.</translation>
    </message>
    <message>
        <source>the files of one fax may have %1 together. Send them one by one.</source>
        <translation>die Dateien eines Faxes dürfen zusammen %1 haben. Senden Sie sie einzeln.</translation>
    </message>
    <message>
        <source>it is of type %1. Only PDF, PostScript, plain text and TIFF can be faxed; convert it to PDF first.</source>
        <translation>sie ist vom Typ %1. Nur PDF, PostScript, reiner Text und TIFF können gefaxt werden; wandeln Sie sie erst in PDF um.</translation>
    </message>
    <message>
        <source>qdfax: Interrupted. The fax goes on; &quot;qdfax queue&quot; shows it.</source>
        <translation>qdfax: Unterbrochen. Das Fax läuft weiter; „qdfax queue“ zeigt es.</translation>
    </message>
    <message>
        <source> The fax may still be on its way.</source>
        <translation> Das Fax ist vielleicht noch unterwegs.</translation>
    </message>
    <message>
        <source>Not every recipient got the fax: %1 of %2 did.</source>
        <translation>Nicht jeder Empfänger hat das Fax bekommen: %1 von %2.</translation>
    </message>
    <message>
        <source>STATE</source>
        <translation>ZUSTAND</translation>
    </message>
    <message>
        <source>TO</source>
        <translation>AN</translation>
    </message>
    <message>
        <source>TRY</source>
        <translation>VERSUCH</translation>
    </message>
    <message>
        <source>URL</source>
        <translation>URL</translation>
    </message>
    <message>
        <source>Reading the queue</source>
        <translation>Lesen der Warteschlange</translation>
    </message>
    <message>
        <source>Reading the status</source>
        <translation>Lesen des Status</translation>
    </message>
    <message>
        <source>Reading the log of sent faxes</source>
        <translation>Lesen des Protokolls gesendeter Faxe</translation>
    </message>
    <message>
        <source>Reading the log of received faxes</source>
        <translation>Lesen des Protokolls empfangener Faxe</translation>
    </message>
    <message>
        <source>SEND AT</source>
        <translation>SENDEN AM</translation>
    </message>
    <message>
        <source>SUBJECT</source>
        <translation>BETREFF</translation>
    </message>
    <message>
        <source>ENDED</source>
        <translation>BEENDET</translation>
    </message>
    <message>
        <source>USER</source>
        <translation>BENUTZER</translation>
    </message>
    <message>
        <source>RECEIVED</source>
        <translation>EMPFANGEN</translation>
    </message>
    <message>
        <source>FROM</source>
        <translation>VON</translation>
    </message>
    <message>
        <source>STATUS</source>
        <translation>STATUS</translation>
    </message>
    <message>
        <source>FILE</source>
        <translation>DATEI</translation>
    </message>
    <message>
        <source>DELIVERED TO</source>
        <translation>ZUGESTELLT AN</translation>
    </message>
    <message>
        <source>ERROR</source>
        <translation>FEHLER</translation>
    </message>
    <message>
        <source>Priority from 0 to 5.</source>
        <translation>Priorität von 0 bis 5.</translation>
    </message>
    <message>
        <source>How often to try.</source>
        <translation>Wie oft versucht wird.</translation>
    </message>
    <message>
        <source>Seconds between two tries.</source>
        <translation>Sekunden zwischen zwei Versuchen.</translation>
    </message>
    <message>
        <source>When to mail a receipt.</source>
        <translation>Wann eine Bestätigung per E-Mail kommt.</translation>
    </message>
    <message>
        <source>What to attach to the receipt.</source>
        <translation>Was der Bestätigung angehängt wird.</translation>
    </message>
    <message>
        <source>Page size of the fax.</source>
        <translation>Seitengröße des Faxes.</translation>
    </message>
    <message>
        <source>When to print a receipt on the server&apos;s printer.</source>
        <translation>Wann eine Bestätigung auf dem Drucker des Servers gedruckt wird.</translation>
    </message>
    <message>
        <source>The printer for it; None for none.</source>
        <translation>Der Drucker dafür; None für keinen.</translation>
    </message>
    <message>
        <source>Whether to print the first page with it.</source>
        <translation>Ob die erste Seite mitgedruckt wird.</translation>
    </message>
    <message>
        <source>Version %1 of this server does not let the page size be chosen. Leave out --page-size.</source>
        <translation>Version %1 dieses Servers lässt keine Wahl der Seitengröße zu. Lassen Sie --page-size weg.</translation>
    </message>
    <message>
        <source>Version %1 of this server does not print receipts. Leave out --print-receipt, --printer and --print-first-page.</source>
        <translation>Version %1 dieses Servers druckt keine Bestätigungen. Lassen Sie --print-receipt, --printer und --print-first-page weg.</translation>
    </message>
    <message>
        <source>Reading the cover pages</source>
        <translation>Lesen der Deckblätter</translation>
    </message>
    <message>
        <source>The server has no cover page &quot;%1&quot;. &quot;qdfax covers&quot; lists them%2.</source>
        <translation>Der Server hat kein Deckblatt „%1“. „qdfax covers“ listet sie auf%2.</translation>
    </message>
    <message>
        <source>; --no-cover sends without one</source>
        <translation>; --no-cover sendet ohne Deckblatt</translation>
    </message>
    <message>
        <source>--comments stand on the cover page: choose one by --cover. See &quot;qdfax help send&quot;.</source>
        <translation>--comments steht auf dem Deckblatt: Wählen Sie eines mit --cover. Siehe „qdfax help send“.</translation>
    </message>
    <message>
        <source>Whether the server took the fax is not known; &quot;qdfax queue&quot; shows it.</source>
        <translation>Ob der Server das Fax angenommen hat, ist nicht bekannt; „qdfax queue“ zeigt es.</translation>
    </message>
    <message>
        <source>qdfax: Interrupted. </source>
        <translation>qdfax: Unterbrochen. </translation>
    </message>
    <message>
        <source>Sending the fax</source>
        <translation>Senden des Faxes</translation>
    </message>
    <message>
        <source>qdfax %1 COMMAND

Commands:
</source>
        <translation>qdfax %1 COMMAND

Befehle:
</translation>
    </message>
    <message>
        <source>
&quot;qdfax help %1&quot; explains a command, with its own options and examples.
</source>
        <translation>
„qdfax help %1“ erklärt einen Befehl, mit seinen eigenen Optionen und Beispielen.
</translation>
    </message>
    <message>
        <source>There is no command &quot;%1&quot;. &quot;qdfax help&quot; lists them.</source>
        <translation>Es gibt keinen Befehl „%1“. „qdfax help“ listet alle auf.</translation>
    </message>
    <message>
        <source>qdfax: send and watch faxes through a network fax server.

Usage: qdfax [OPTIONS] COMMAND [ARGUMENTS]

Commands:
</source>
        <translation>qdfax: Faxe über einen Faxserver im Netz senden und verfolgen.

Aufruf: qdfax [OPTIONS] COMMAND [ARGUMENTS]

Befehle:
</translation>
    </message>
    <message>
        <source>
Options of every command:
</source>
        <translation>
Optionen aller Befehle:
</translation>
    </message>
    <message>
        <source>  --help                      Explain a command, as &quot;qdfax help COMMAND&quot; does.
  --version                   Print the version.
</source>
        <translation>  --help                      Einen Befehl erklären, wie es „qdfax help COMMAND“ tut.
  --version                   Die Version ausgeben.
</translation>
    </message>
    <message>
        <source>
Exit status:
</source>
        <translation>
Rückgabewert:
</translation>
    </message>
    <message>
        <source>
A UID is LOGIN@ADDRESS, as &quot;qdfax server list&quot; shows it.
</source>
        <translation>
Eine UID ist LOGIN@ADDRESS, wie „qdfax server list“ sie zeigt.
</translation>
    </message>
    <message>
        <source>Settings: %1
</source>
        <translation>Einstellungen: %1
</translation>
    </message>
    <message>
        <source>
Options:
</source>
        <translation>
Optionen:
</translation>
    </message>
    <message>
        <source>
Examples:
</source>
        <translation>
Beispiele:
</translation>
    </message>
    <message>
        <source>Explain qdfax or one of its commands</source>
        <translation>qdfax oder einen seiner Befehle erklären</translation>
    </message>
    <message>
        <source>There are no faxes.</source>
        <translation>Es gibt keine Faxe.</translation>
    </message>
    <message>
        <source>%1 of %2 at %3, every %4 s. Ctrl-C ends.</source>
        <translation>%1 von %2 um %3, alle %4 s. Strg+C beendet.</translation>
    </message>
    <message>
        <source>TYPE</source>
        <translation>TYP</translation>
    </message>
    <message>
        <source>The server offers no cover pages.</source>
        <translation>Der Server bietet keine Deckblätter an.</translation>
    </message>
    <message>
        <source>Disabled on the server, and not shown: %1.</source>
        <translation>Auf dem Server abgeschaltet und nicht gezeigt: %1.</translation>
    </message>
    <message>
        <source>Version %1 of this server does not print receipts, so it has no printers to offer.</source>
        <translation>Version %1 dieses Servers druckt keine Bestätigungen, bietet also keine Drucker an.</translation>
    </message>
    <message>
        <source>Reading the printers</source>
        <translation>Lesen der Drucker</translation>
    </message>
    <message>
        <source>The server offers no printers.</source>
        <translation>Der Server bietet keine Drucker an.</translation>
    </message>
    <message>
        <source>At most N faxes that wait and N that are being sent.</source>
        <translation>Höchstens N wartende Faxe und N, die gerade gesendet werden.</translation>
    </message>
    <message>
        <source>At most N faxes, the newest.</source>
        <translation>Höchstens N Faxe, die neuesten.</translation>
    </message>
    <message>
        <source>Show the faxes that are not finished, the newest first</source>
        <translation>Die nicht beendeten Faxe zeigen, die neuesten zuerst</translation>
    </message>
    <message>
        <source>URL is what &quot;qdfax abort&quot; and &quot;qdfax reschedule&quot; take.</source>
        <translation>URL ist, was „qdfax abort“ und „qdfax reschedule“ erwarten.</translation>
    </message>
    <message>
        <source>Also the N faxes that were finished last.</source>
        <translation>Auch die N zuletzt beendeten Faxe.</translation>
    </message>
    <message>
        <source>Show the faxes that wait or are being sent, of all that you may see</source>
        <translation>Alle wartenden und laufenden Faxe zeigen, die Sie sehen dürfen</translation>
    </message>
    <message>
        <source>Show the log of sent faxes, the newest first</source>
        <translation>Das Protokoll der gesendeten Faxe zeigen, die neuesten zuerst</translation>
    </message>
    <message>
        <source>Show the log of received faxes, the newest first</source>
        <translation>Das Protokoll der empfangenen Faxe zeigen, die neuesten zuerst</translation>
    </message>
    <message>
        <source>N is what &quot;qdfax download --inbox&quot; takes; it counts from the newest.</source>
        <translation>N ist, was „qdfax download --inbox“ erwartet; gezählt wird vom neuesten an.</translation>
    </message>
    <message>
        <source>Show a log again and again until interrupted</source>
        <translation>Ein Protokoll immer wieder zeigen, bis zur Unterbrechung</translation>
    </message>
    <message>
        <source>At most N faxes.</source>
        <translation>Höchstens N Faxe.</translation>
    </message>
    <message>
        <source>Seconds between two readings (%1).</source>
        <translation>Sekunden zwischen zwei Abfragen (%1).</translation>
    </message>
    <message>
        <source>End after so many readings.</source>
        <translation>Nach so vielen Abfragen enden.</translation>
    </message>
    <message>
        <source>List the cover pages that the server offers</source>
        <translation>Die Deckblätter auflisten, die der Server anbietet</translation>
    </message>
    <message>
        <source>A star marks the one of your profile.</source>
        <translation>Ein Stern kennzeichnet das Deckblatt Ihres Profils.</translation>
    </message>
    <message>
        <source>List the printers on which the server prints receipts</source>
        <translation>Die Drucker auflisten, auf denen der Server Bestätigungen druckt</translation>
    </message>
    <message>
        <source>&quot;qdfax outlook folders&quot; shows what there is.</source>
        <translation>„qdfax outlook folders“ zeigt, was es gibt.</translation>
    </message>
    <message>
        <source>Outlook is not available: it has to be installed on this computer, and that takes Windows.</source>
        <translation>Outlook ist nicht verfügbar: Es muss auf diesem Rechner installiert sein, und dazu braucht es Windows.</translation>
    </message>
    <message>
        <source>yes</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Contacts</source>
        <translation>Kontakte</translation>
    </message>
    <message>
        <source>Key</source>
        <translation>Schlüssel</translation>
    </message>
    <message>
        <source>Outlook has no contact folder.</source>
        <translation>Outlook hat keinen Kontaktordner.</translation>
    </message>
    <message>
        <source>Name a folder by its key, or take the default with --default.</source>
        <translation>Geben Sie einen Ordner mit seinem Schlüssel an, oder nehmen Sie mit --default den Standardordner.</translation>
    </message>
    <message>
        <source>Outlook has no default contact folder. </source>
        <translation>Outlook hat keinen Standard-Kontaktordner. </translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not the key of a contact folder. </source>
        <translation>„%1“ ist nicht der Schlüssel eines Kontaktordners. </translation>
    </message>
    <message>
        <source>The folder is chosen, but the contacts of the one before could not be taken out of the cache.</source>
        <translation>Der Ordner ist gewählt, aber die Kontakte des vorigen konnten nicht aus dem Zwischenspeicher entfernt werden.</translation>
    </message>
    <message>
        <source>Chosen. &quot;qdfax outlook sync&quot; copies the contacts.</source>
        <translation>Der Ordner ist gewählt. „qdfax outlook sync“ kopiert die Kontakte.</translation>
    </message>
    <message>
        <source>No Outlook folder is chosen. Choose one with &quot;qdfax outlook choose&quot;.</source>
        <translation>Kein Outlook-Ordner ist gewählt. Wählen Sie einen mit „qdfax outlook choose“.</translation>
    </message>
    <message>
        <source>The chosen Outlook folder is gone, or holds no contacts any more. </source>
        <translation>Den gewählten Outlook-Ordner gibt es nicht mehr, oder er enthält keine Kontakte mehr. </translation>
    </message>
    <message>
        <source>Outlook does not open the folder any more.</source>
        <translation>Outlook öffnet den Ordner nicht mehr.</translation>
    </message>
    <message>
        <source>The contacts could not be stored, and those copied before stay: check permissions and free space.</source>
        <translation>Die Kontakte konnten nicht gespeichert werden, und die zuvor kopierten bleiben: Prüfen Sie Rechte und freien Platz.</translation>
    </message>
    <message>
        <source>Outlook did not give the whole folder, and the cache holds only what it gave. Try again while Outlook runs.</source>
        <translation>Outlook hat nicht den ganzen Ordner geliefert, und der Zwischenspeicher enthält nur, was es geliefert hat. Versuchen Sie es noch einmal, während Outlook läuft.</translation>
    </message>
    <message>
        <source>Show Outlook&apos;s contact folders</source>
        <translation>Die Kontaktordner von Outlook zeigen</translation>
    </message>
    <message>
        <source>Folders that neither are contact folders nor hold one are left out. The
chosen folder has a star.</source>
        <translation>Ordner, die weder Kontaktordner sind noch einen enthalten, fehlen. Der gewählte Ordner
hat einen Stern.</translation>
    </message>
    <message>
        <source>Choose the Outlook folder whose contacts are copied</source>
        <translation>Den Outlook-Ordner wählen, dessen Kontakte kopiert werden</translation>
    </message>
    <message>
        <source>The contacts of the folder chosen before leave the cache.</source>
        <translation>Die Kontakte des zuvor gewählten Ordners werden aus dem Zwischenspeicher entfernt.</translation>
    </message>
    <message>
        <source>Outlook&apos;s own contact folder.</source>
        <translation>Der eigene Kontaktordner von Outlook.</translation>
    </message>
    <message>
        <source>Copy the contacts of the chosen Outlook folder into the cache</source>
        <translation>Die Kontakte des gewählten Outlook-Ordners in den Zwischenspeicher kopieren</translation>
    </message>
    <message>
        <source>What was copied before is replaced. Takes as long as Outlook takes: --timeout
does not count here.</source>
        <translation>Was zuvor kopiert wurde, wird ersetzt. Es dauert so lange, wie Outlook braucht; --timeout
gilt hier nicht.</translation>
    </message>
    <message>
        <source>contains a line break, which cannot be sent</source>
        <translation>enthält einen Zeilenumbruch, der nicht gesendet werden kann</translation>
    </message>
    <message>
        <source>contains a control character, which cannot be sent</source>
        <translation>enthält ein Steuerzeichen, das nicht gesendet werden kann</translation>
    </message>
    <message>
        <source>has no fax number in &quot;%1&quot;; write NUMBER, NUMBER,NAME or NUMBER,NAME,ORGANIZATION</source>
        <translation>hat keine Faxnummer in „%1“; schreiben Sie NUMBER, NUMBER,NAME oder NUMBER,NAME,ORGANIZATION</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a time; write it like 2026-11-15T14:30, in local time</source>
        <translation>„%1“ ist keine Zeit; schreiben Sie sie wie 2026-11-15T14:30, in Ortszeit</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not exist here: the clock is put forward then. Choose another time</source>
        <translation>„%1“ gibt es hier nicht: Dann wird die Uhr vorgestellt. Wählen Sie eine andere Zeit</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is in the past; it is %2 now. Leave the option out to send at once</source>
        <translation>„%1“ ist vergangen; es ist jetzt %2. Lassen Sie die Option weg, um sofort zu senden</translation>
    </message>
    <message>
        <source>takes a number from %1 to %2, not &quot;%3&quot;</source>
        <translation>erwartet eine Zahl von %1 bis %2, nicht „%3“</translation>
    </message>
    <message>
        <source>takes one of %1, not &quot;%2&quot;</source>
        <translation>erwartet eines von %1, nicht „%2“</translation>
    </message>
    <message>
        <source>takes a host name or HOST:PORT without http:// before it; --ssl chooses HTTPS</source>
        <translation>erwartet einen Rechnernamen oder HOST:PORT ohne http:// davor; --ssl wählt HTTPS</translation>
    </message>
    <message>
        <source>takes a host name or HOST:PORT without a login in it; that goes to --login</source>
        <translation>erwartet einen Rechnernamen oder HOST:PORT ohne Anmeldename darin; der gehört zu --login</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a server address; write a host name or HOST:PORT, such as fax.example.org or [::1]:8080</source>
        <translation>„%1“ ist keine Serveradresse; schreiben Sie einen Rechnernamen oder HOST:PORT, etwa fax.example.org oder [::1]:8080</translation>
    </message>
    <message>
        <source>takes the URL of a fax as &quot;qdfax send&quot; and &quot;qdfax queue&quot; print it</source>
        <translation>erwartet die URL eines Faxes, wie „qdfax send“ und „qdfax queue“ sie ausgeben</translation>
    </message>
    <message>
        <source>Login</source>
        <translation>Anmeldename</translation>
    </message>
    <message>
        <source>Cover page</source>
        <translation>Deckblatt</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keines</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Tries</source>
        <translation>Versuche</translation>
    </message>
    <message>
        <source>Retry interval</source>
        <translation>Abstand der Versuche</translation>
    </message>
    <message>
        <source>Receipt</source>
        <translation>Bestätigung</translation>
    </message>
    <message>
        <source>Receipt attachment</source>
        <translation>Anhang der Bestätigung</translation>
    </message>
    <message>
        <source>Page size</source>
        <translation>Seitengröße</translation>
    </message>
    <message>
        <source>Print receipt</source>
        <translation>Bestätigung drucken</translation>
    </message>
    <message>
        <source>Printer</source>
        <translation>Drucker</translation>
    </message>
    <message>
        <source>Print first page</source>
        <translation>Erste Seite drucken</translation>
    </message>
    <message>
        <source>no</source>
        <translation>nein</translation>
    </message>
    <message>
        <source>Your name as recipients see it.</source>
        <translation>Ihr Name, wie Empfänger ihn sehen.</translation>
    </message>
    <message>
        <source>Your organization.</source>
        <translation>Ihre Organisation.</translation>
    </message>
    <message>
        <source>Your phone number.</source>
        <translation>Ihre Telefonnummer.</translation>
    </message>
    <message>
        <source>Your fax number.</source>
        <translation>Ihre Faxnummer.</translation>
    </message>
    <message>
        <source>Your mail address, for receipts.</source>
        <translation>Ihre E-Mail-Adresse, für Bestätigungen.</translation>
    </message>
    <message>
        <source>--cover and --no-cover exclude each other.</source>
        <translation>--cover und --no-cover schließen einander aus.</translation>
    </message>
    <message>
        <source>There is nothing to set.</source>
        <translation>Es gibt nichts zu ändern.</translation>
    </message>
    <message>
        <source>Saving the profile</source>
        <translation>Speichern des Profils</translation>
    </message>
    <message>
        <source>The server took the profile. </source>
        <translation>Der Server hat das Profil angenommen. </translation>
    </message>
    <message>
        <source>Show your profile on the server: who you are, and the defaults of a fax</source>
        <translation>Ihr Profil auf dem Server zeigen: wer Sie sind, und die Vorgaben eines Faxes</translation>
    </message>
    <message>
        <source>Change your profile on the server</source>
        <translation>Ihr Profil auf dem Server ändern</translation>
    </message>
    <message>
        <source>What is not named stays as it is; an empty value empties a field. The server has
to be of a recent version to keep the defaults of a fax; an older one gets them
from this program&apos;s settings.</source>
        <translation>Was nicht angegeben ist, bleibt, wie es ist; ein leerer Wert leert ein Feld. Die Vorgaben eines
Faxes speichert nur ein Server neuerer Version; ein älterer bekommt sie aus den Einstellungen dieses
Programms.</translation>
    </message>
    <message>
        <source>The cover page of a new fax.</source>
        <translation>Das Deckblatt eines neuen Faxes.</translation>
    </message>
    <message>
        <source>A new fax has no cover page.</source>
        <translation>Ein neues Fax hat kein Deckblatt.</translation>
    </message>
    <message>
        <source>preprocessing</source>
        <translation>in Vorbereitung</translation>
    </message>
    <message>
        <source>pending</source>
        <translation>wartend</translation>
    </message>
    <message>
        <source>sending</source>
        <translation>wird gesendet</translation>
    </message>
    <message>
        <source>sent</source>
        <translation>gesendet</translation>
    </message>
    <message>
        <source>complete</source>
        <translation>fertig</translation>
    </message>
    <message>
        <source>aborted</source>
        <translation>abgebrochen</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>approval_pending</source>
        <translation>wartet auf Freigabe</translation>
    </message>
    <message>
        <source>rejected</source>
        <translation>abgelehnt</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>--to-contact: %1 Nothing was sent.</source>
        <translation>--to-contact: %1 Nichts wurde gesendet.</translation>
    </message>
    <message>
        <source>names no one: the group has no members</source>
        <translation>nennt niemanden: Die Gruppe hat keine Mitglieder</translation>
    </message>
    <message>
        <source>reaches no one: %1 without a fax number</source>
        <translation>erreicht niemanden: %1 ohne Faxnummer</translation>
    </message>
    <message>
        <source>Not sent to those without a fax number: %1.</source>
        <translation>Nicht gesendet, da ohne Faxnummer: %1.</translation>
    </message>
    <message>
        <source>--to NUMBER or --to-contact NAME is missing.</source>
        <translation>--to NUMBER oder --to-contact NAME fehlt.</translation>
    </message>
    <message>
        <source>There is nothing to send: name a file, or a cover page by --cover.</source>
        <translation>Es gibt nichts zu senden: Geben Sie eine Datei an, oder mit --cover ein Deckblatt.</translation>
    </message>
    <message>
        <source>Sending %1 of %2 (%3 %), %4/s</source>
        <translation>%1 von %2 gesendet (%3 %), %4/s</translation>
    </message>
    <message>
        <source>Aborting the fax</source>
        <translation>Abbrechen des Faxes</translation>
    </message>
    <message>
        <source>The server is aborting the fax. &quot;qdfax queue&quot; shows its state.</source>
        <translation>Der Server bricht das Fax ab. „qdfax queue“ zeigt seinen Zustand.</translation>
    </message>
    <message>
        <source>Rescheduling the fax</source>
        <translation>Verschieben des Faxes</translation>
    </message>
    <message>
        <source>The server will send the fax now.</source>
        <translation>Der Server wird das Fax jetzt senden.</translation>
    </message>
    <message>
        <source>The server will send the fax at %1.</source>
        <translation>Der Server wird das Fax am %1 senden.</translation>
    </message>
    <message>
        <source>Send files as a fax</source>
        <translation>Dateien als Fax senden</translation>
    </message>
    <message>
        <source>Takes PDF, PostScript, plain text and TIFF, recognised by content. Prints one line a recipient
with the state and the URL of the fax, by which it can be aborted or rescheduled.
A comma inside a name is written as \,. Names of contacts are looked up in what the last
&quot;qdfax contacts sync&quot; brought; a group stands for its members, each of whom gets the fax once.
Without --cover and --no-cover your profile decides.
Options that are not given are those of your profile.</source>
        <translation>Nimmt PDF, PostScript, reinen Text und TIFF, am Inhalt erkannt. Gibt je Empfänger eine Zeile mit
Zustand und URL des Faxes aus, mit der es abgebrochen oder verschoben werden kann.
Ein Komma in einem Namen wird \, geschrieben. Namen von Kontakten werden in dem gesucht, was
„qdfax contacts sync“ zuletzt geholt hat; eine Gruppe steht für ihre Mitglieder, von denen jedes
das Fax einmal bekommt.
Ohne --cover und --no-cover entscheidet Ihr Profil.
Optionen, die nicht angegeben sind, kommen aus Ihrem Profil.</translation>
    </message>
    <message>
        <source>A recipient. May be given several times.</source>
        <translation>Ein Empfänger. Mehrfach möglich.</translation>
    </message>
    <message>
        <source>A contact, or the members of a group. May be given several times.</source>
        <translation>Ein Kontakt oder die Mitglieder einer Gruppe. Mehrfach möglich.</translation>
    </message>
    <message>
        <source>Put this cover page of the server before it.</source>
        <translation>Dieses Deckblatt des Servers voranstellen.</translation>
    </message>
    <message>
        <source>No cover page, whatever your profile says.</source>
        <translation>Kein Deckblatt, was immer Ihr Profil sagt.</translation>
    </message>
    <message>
        <source>The subject, on the cover page and in the logs.</source>
        <translation>Der Betreff, auf dem Deckblatt und in den Protokollen.</translation>
    </message>
    <message>
        <source>Text for the cover page.</source>
        <translation>Text für das Deckblatt.</translation>
    </message>
    <message>
        <source>Send at this local time, like 2026-11-15T14:30, and not now.</source>
        <translation>Zu dieser Ortszeit, etwa 2026-11-15T14:30, und nicht jetzt senden.</translation>
    </message>
    <message>
        <source>Wait until it is sent to, or has failed for, every recipient.</source>
        <translation>Warten, bis es für jeden Empfänger gesendet oder fehlgeschlagen ist.</translation>
    </message>
    <message>
        <source>Seconds between two looks while waiting (%1).</source>
        <translation>Sekunden zwischen zwei Abfragen beim Warten (%1).</translation>
    </message>
    <message>
        <source>Cancel a fax that is not sent yet</source>
        <translation>Ein noch nicht gesendetes Fax abbrechen</translation>
    </message>
    <message>
        <source>URL is what &quot;qdfax send&quot; and &quot;qdfax queue&quot; print. The request always goes to the configured
server, whichever the URL names. Success means that the server will try.</source>
        <translation>URL ist, was „qdfax send“ und „qdfax queue“ ausgeben. Die Anfrage geht immer an den eingerichteten
Server, welchen auch immer die URL nennt. Erfolg bedeutet, dass der Server es versuchen wird.</translation>
    </message>
    <message>
        <source>Send a queued fax at another time, or now</source>
        <translation>Ein eingereihtes Fax zu anderer Zeit oder jetzt senden</translation>
    </message>
    <message>
        <source>The local time, like 2026-11-15T14:30; without it: now.</source>
        <translation>Die Ortszeit, etwa 2026-11-15T14:30; ohne sie: jetzt.</translation>
    </message>
    <message>
        <source>The password file %1 cannot be read: %2.</source>
        <translation>Die Passwortdatei %1 kann nicht gelesen werden: %2.</translation>
    </message>
    <message>
        <source>Password of %1: </source>
        <translation>Passwort von %1: </translation>
    </message>
    <message>
        <source>No password, and no terminal to ask for it. Give it by --password-file or the variable %1.</source>
        <translation>Kein Passwort, und kein Terminal, um danach zu fragen. Geben Sie es mit --password-file oder der Variablen %1 an.</translation>
    </message>
    <message>
        <source>The password holds characters that cannot be sent to a fax server (only Latin-1 can).</source>
        <translation>Das Passwort enthält Zeichen, die nicht an einen Faxserver gesendet werden können (nur Latin-1 ist möglich).</translation>
    </message>
    <message>
        <source>The settings file was damaged. It is kept as %1, and a new one was begun.</source>
        <translation>Die Einstellungsdatei war beschädigt. Sie ist als %1 aufgehoben, und eine neue wurde begonnen.</translation>
    </message>
    <message>
        <source>--login LOGIN is missing.</source>
        <translation>--login LOGIN fehlt.</translation>
    </message>
    <message>
        <source>cannot hold a colon, nor characters beyond Latin-1</source>
        <translation>kann weder einen Doppelpunkt noch Zeichen außerhalb von Latin-1 enthalten</translation>
    </message>
    <message>
        <source>Added %1: %2</source>
        <translation>%1 hinzugefügt: %2</translation>
    </message>
    <message>
        <source>No fax server is configured. Add one: qdfax server add ADDRESS --login LOGIN</source>
        <translation>Kein Faxserver ist eingerichtet. Fügen Sie einen hinzu: qdfax server add ADDRESS --login LOGIN</translation>
    </message>
    <message>
        <source>SERVER</source>
        <translation>SERVER</translation>
    </message>
    <message>
        <source>HTTPS</source>
        <translation>HTTPS</translation>
    </message>
    <message>
        <source>MODEL</source>
        <translation>MODELL</translation>
    </message>
    <message>
        <source>VERSION</source>
        <translation>VERSION</translation>
    </message>
    <message>
        <source>No configured server is called &quot;%1&quot;. &quot;qdfax server list&quot; shows them.</source>
        <translation>Kein eingerichteter Server heißt „%1“. „qdfax server list“ zeigt sie.</translation>
    </message>
    <message>
        <source>Removed %1.</source>
        <translation>%1 entfernt.</translation>
    </message>
    <message>
        <source>%1 is the default server now.</source>
        <translation>%1 ist jetzt der Standardserver.</translation>
    </message>
    <message>
        <source>Reading the permissions</source>
        <translation>Lesen der Rechte</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>Serial number</source>
        <translation>Seriennummer</translation>
    </message>
    <message>
        <source>Host name</source>
        <translation>Rechnername</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>Kanäle</translation>
    </message>
    <message>
        <source>Uptime</source>
        <translation>Laufzeit</translation>
    </message>
    <message>
        <source>Log in to a fax server and keep it in the settings</source>
        <translation>Sich an einem Faxserver anmelden und ihn in die Einstellungen aufnehmen</translation>
    </message>
    <message>
        <source>ADDRESS is a host name or IP address with an optional port: fax.example.org,
192.0.2.7:8080, [2001:db8::7]:8080. The password is asked for, or comes from --password-file
or the variable QDFAX_PASSWORD; it is stored enciphered. A server that refuses the login, or
cannot be reached, is not kept. Adding an account again replaces its entry.
The first server becomes the default one.</source>
        <translation>ADDRESS ist ein Rechnername oder eine IP-Adresse, auf Wunsch mit Port: fax.example.org,
192.0.2.7:8080, [2001:db8::7]:8080. Das Passwort wird erfragt oder kommt von --password-file oder
aus der Variablen QDFAX_PASSWORD; es wird verschlüsselt gespeichert. Ein Server, der die Anmeldung
ablehnt oder nicht erreichbar ist, wird nicht aufgenommen. Ein Konto, das noch einmal hinzugefügt
wird, ersetzt seinen Eintrag. Der erste Server wird der Standardserver.</translation>
    </message>
    <message>
        <source>The user&apos;s name on the server.</source>
        <translation>Der Name des Benutzers auf dem Server.</translation>
    </message>
    <message>
        <source>Use HTTPS. The certificate is not verified, so self-signed ones work.</source>
        <translation>HTTPS verwenden. Das Zertifikat wird nicht geprüft, auch selbst signierte gelten.</translation>
    </message>
    <message>
        <source>Make it the default server.</source>
        <translation>Zum Standardserver machen.</translation>
    </message>
    <message>
        <source>Read the password from the first line of this file; - is standard input.</source>
        <translation>Das Passwort aus der ersten Zeile dieser Datei lesen; - ist die Standardeingabe.</translation>
    </message>
    <message>
        <source>Keep the server without asking it.</source>
        <translation>Den Server aufnehmen, ohne ihn zu fragen.</translation>
    </message>
    <message>
        <source>List the configured servers, without asking them</source>
        <translation>Die eingerichteten Server auflisten, ohne sie zu fragen</translation>
    </message>
    <message>
        <source>A star marks the default server.</source>
        <translation>Ein Stern kennzeichnet den Standardserver.</translation>
    </message>
    <message>
        <source>Forget a server</source>
        <translation>Einen Server aus den Einstellungen entfernen</translation>
    </message>
    <message>
        <source>UID is as &quot;qdfax server list&quot; shows it; the address alone will do where only one
account has it. When the default server goes, the first of the others takes its place.
Its contacts go from this machine with it.</source>
        <translation>UID ist, was „qdfax server list“ zeigt; die Adresse allein genügt, wo nur ein Konto sie hat. Wird
der Standardserver entfernt, tritt der erste der anderen an seine Stelle. Die Kontakte des entfernten
Servers werden auf diesem Rechner gelöscht.</translation>
    </message>
    <message>
        <source>Choose the server that commands use without --server</source>
        <translation>Den Server wählen, den Befehle ohne --server verwenden</translation>
    </message>
    <message>
        <source>Log in and show the server&apos;s identity, your profile and your permissions</source>
        <translation>Sich anmelden und Angaben zum Server, Ihr Profil und Ihre Rechte zeigen</translation>
    </message>
    <message>
        <source>Reading the user&apos;s profile</source>
        <translation>Lesen des Benutzerprofils</translation>
    </message>
    <message>
        <source>Reading the server&apos;s identity</source>
        <translation>Lesen der Angaben zum Server</translation>
    </message>
    <message>
        <source> If the server does not speak HTTPS there, add it without --ssl.</source>
        <translation> Wenn der Server dort kein HTTPS spricht, fügen Sie ihn ohne --ssl hinzu.</translation>
    </message>
    <message>
        <source>%1 at %2: nothing was heard for %3. Try again later, or allow more with --timeout.%4</source>
        <translation>%1 bei %2: %3 lang war nichts zu hören. Versuchen Sie es später noch einmal, oder gewähren Sie mit --timeout mehr Zeit.%4</translation>
    </message>
    <message>
        <source>%1 at %2 failed: %3</source>
        <translation>%1 bei %2 fehlgeschlagen: %3</translation>
    </message>
    <message>
        <source>a web page came instead of a fax server&apos;s answer. Check address and port: some other server may listen there.</source>
        <translation>statt der Antwort eines Faxservers kam eine Webseite. Prüfen Sie Adresse und Port: Dort ist vielleicht ein anderer Server.</translation>
    </message>
    <message>
        <source>the server does not accept login &quot;%1&quot; with this password. Enter them again with &quot;qdfax server add&quot;.</source>
        <translation>der Server akzeptiert den Anmeldenamen „%1“ mit diesem Passwort nicht. Geben Sie beides mit „qdfax server add“ neu ein.</translation>
    </message>
    <message>
        <source>the answer cannot be understood. Check that a fax server listens at this address; --log-level 4 writes the answer to the log.</source>
        <translation>die Antwort ist nicht zu verstehen. Prüfen Sie, ob unter dieser Adresse ein Faxserver antwortet; --log-level 4 schreibt die Antwort in das Protokoll.</translation>
    </message>
    <message>
        <source>the server did not confirm it. Its answer goes to the log with --log-level 4.</source>
        <translation>der Server hat es nicht bestätigt. Mit --log-level 4 geht seine Antwort in das Protokoll.</translation>
    </message>
    <message>
        <source>the server answered &quot;400 %1&quot;. If it expects HTTPS there, add it with --ssl.</source>
        <translation>der Server antwortete „400 %1“. Wenn er dort HTTPS erwartet, fügen Sie ihn mit --ssl hinzu.</translation>
    </message>
    <message>
        <source> Login or password are not accepted; enter them again with &quot;qdfax server add&quot;.</source>
        <translation> Anmeldename oder Passwort wird nicht akzeptiert; geben Sie sie mit „qdfax server add“ neu ein.</translation>
    </message>
    <message>
        <source> This user may not do that; ask the server&apos;s administrator.</source>
        <translation> Dieser Benutzer darf das nicht; fragen Sie den Administrator des Servers.</translation>
    </message>
    <message>
        <source> It does not permit that here; ask the server&apos;s administrator.</source>
        <translation> Das ist hier nicht erlaubt; fragen Sie den Administrator des Servers.</translation>
    </message>
    <message>
        <source> What was asked for does not exist there (any more); check the URL or address.</source>
        <translation> Das Angeforderte gibt es dort nicht (mehr); prüfen Sie URL oder Adresse.</translation>
    </message>
    <message>
        <source> It is no longer in a state that allows this; see &quot;qdfax queue&quot; and &quot;qdfax sent&quot;.</source>
        <translation> Der Zustand des Faxes lässt das nicht mehr zu; siehe „qdfax queue“ und „qdfax sent“.</translation>
    </message>
    <message>
        <source> It points elsewhere, which is not followed; check address and --ssl.</source>
        <translation> Die Antwort verweist anderswohin, dem wird nicht gefolgt; prüfen Sie Adresse und --ssl.</translation>
    </message>
    <message>
        <source> Try again later, or ask the server&apos;s administrator.</source>
        <translation> Versuchen Sie es später noch einmal, oder fragen Sie den Administrator des Servers.</translation>
    </message>
    <message>
        <source>no host has this name. Check its spelling, and the network.</source>
        <translation>kein Rechner hat diesen Namen. Prüfen Sie die Schreibweise und das Netz.</translation>
    </message>
    <message>
        <source>the connection is refused. Check that the server runs, and its port.</source>
        <translation>die Verbindung wird abgelehnt. Prüfen Sie, ob der Server läuft, und seinen Port.</translation>
    </message>
    <message>
        <source>the server closed the connection. If it does not speak HTTPS there, add it without --ssl.</source>
        <translation>der Server hat die Verbindung geschlossen. Wenn er dort kein HTTPS spricht, fügen Sie ihn ohne --ssl hinzu.</translation>
    </message>
    <message>
        <source>the server closed the connection without an answer. If it expects HTTPS there, add it with --ssl.</source>
        <translation>der Server hat die Verbindung ohne Antwort geschlossen. Wenn er dort HTTPS erwartet, fügen Sie ihn mit --ssl hinzu.</translation>
    </message>
    <message>
        <source>no secure connection comes about (%1). If the server does not speak HTTPS there, add it without --ssl.</source>
        <translation>es kommt keine sichere Verbindung zustande (%1). Wenn der Server dort kein HTTPS spricht, fügen Sie ihn ohne --ssl hinzu.</translation>
    </message>
    <message>
        <source>the answer is not HTTP. Check address and port.</source>
        <translation>die Antwort ist kein HTTP. Prüfen Sie Adresse und Port.</translation>
    </message>
    <message>
        <source>the answer is not HTTP. Check address and port; if the server expects HTTPS there, add it with --ssl.</source>
        <translation>die Antwort ist kein HTTP. Prüfen Sie Adresse und Port; wenn der Server dort HTTPS erwartet, fügen Sie ihn mit --ssl hinzu.</translation>
    </message>
    <message>
        <source>the answer is larger than any real one, and was cut off.</source>
        <translation>die Antwort ist zu groß, um echt zu sein; der Empfang wurde abgebrochen.</translation>
    </message>
    <message>
        <source>the connection ended before the answer came. Try again later.</source>
        <translation>die Verbindung endete, bevor die Antwort kam. Versuchen Sie es später noch einmal.</translation>
    </message>
    <message>
        <source>%1. Check address and network.</source>
        <translation>%1. Prüfen Sie Adresse und Netz.</translation>
    </message>
    <message>
        <source>the connection failed (%1)</source>
        <translation>die Verbindung ist fehlgeschlagen (%1)</translation>
    </message>
    <message>
        <source>its elements are nested too deep</source>
        <translation>die Elemente sind zu tief verschachtelt</translation>
    </message>
    <message>
        <source>line %1: %2</source>
        <translation>Zeile %1: %2</translation>
    </message>
    <message>
        <source>it is too large</source>
        <translation>sie ist zu groß</translation>
    </message>
    <message>
        <source>it is not a settings file</source>
        <translation>es ist keine Einstellungsdatei</translation>
    </message>
    <message>
        <source>The settings file %1 is damaged (%2). Put a good copy in its place, or start anew with &quot;qdfax server add&quot;, which moves it aside.</source>
        <translation>Die Einstellungsdatei %1 ist beschädigt (%2). Ersetzen Sie sie durch eine gute Kopie, oder fangen Sie mit „qdfax server add“ neu an, das sie beiseitelegt.</translation>
    </message>
    <message>
        <source>The settings file %1 was written by a newer version of qdfax (format %2). Use that version, or move the file away.</source>
        <translation>Die Einstellungsdatei %1 stammt von einer neueren Version von qdfax (Format %2). Verwenden Sie diese Version, oder verschieben Sie die Datei.</translation>
    </message>
    <message>
        <source>The settings file %1 cannot be read (%2). Check its permissions.</source>
        <translation>Die Einstellungsdatei %1 kann nicht gelesen werden (%2). Prüfen Sie ihre Rechte.</translation>
    </message>
    <message>
        <source>The settings folder %1 cannot be made. Check permissions and free space.</source>
        <translation>Der Einstellungsordner %1 kann nicht angelegt werden. Prüfen Sie Rechte und freien Platz.</translation>
    </message>
    <message>
        <source>Another program holds the settings file %1. Try again later.</source>
        <translation>Ein anderes Programm verwendet gerade die Einstellungsdatei %1. Versuchen Sie es später noch einmal.</translation>
    </message>
    <message>
        <source>Nothing can be written to the settings folder %1. Check permissions and free space.</source>
        <translation>In den Einstellungsordner %1 kann nichts geschrieben werden. Prüfen Sie Rechte und freien Platz.</translation>
    </message>
    <message>
        <source>An earlier change of the settings was broken off and is not in them. &quot;qdfax server list&quot; shows what is.</source>
        <translation>Eine frühere Änderung der Einstellungen wurde abgebrochen und fehlt darin. „qdfax server list“ zeigt den Stand.</translation>
    </message>
    <message>
        <source>The settings could not be saved in %1: %2. The file is as it was.</source>
        <translation>Die Einstellungen konnten nicht in %1 gespeichert werden: %2. Die Datei ist, wie sie war.</translation>
    </message>
    <message>
        <source>writing failed; is the disk full?</source>
        <translation>das Schreiben ist fehlgeschlagen; ist der Datenträger voll?</translation>
    </message>
    <message>
        <source>what was written does not read back</source>
        <translation>das Geschriebene ist nicht lesbar</translation>
    </message>
    <message>
        <source>the damaged file cannot be moved aside</source>
        <translation>die beschädigte Datei kann nicht beiseitegelegt werden</translation>
    </message>
    <message>
        <source>the new file cannot be put in its place</source>
        <translation>die neue Datei kann nicht an ihre Stelle gesetzt werden</translation>
    </message>
    <message>
        <source>this qdfax was built without vCards; use a table, a file that ends in .csv</source>
        <translation>dieses qdfax wurde ohne vCards gebaut; verwenden Sie eine Tabelle, eine Datei, die auf .csv endet</translation>
    </message>
    <message>
        <source>This qdfax was built without vCards; use --csv.</source>
        <translation>Dieses qdfax wurde ohne vCards gebaut; verwenden Sie --csv.</translation>
    </message>
    <message>
        <source>The %1 could not be stored: check permissions and free space, and whether another program has the file.</source>
        <translation>Nicht gespeichert (%1): Prüfen Sie Rechte und freien Platz, und ob ein anderes Programm die Datei hat.</translation>
    </message>
    <message numerus="yes">
        <source>%n documents</source>
        <translation>
            <numerusform>%n Dokument</numerusform>
            <numerusform>%n Dokumente</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n pages</source>
        <translation>
            <numerusform>%n Seite</numerusform>
            <numerusform>%n Seiten</numerusform>
        </translation>
    </message>
    <message>
        <source>&quot;%1&quot; is the name of several; choose one by its ID: %2.</source>
        <translation>Mehrere heißen „%1“; wählen Sie einen anhand der ID: %2.</translation>
    </message>
    <message>
        <source>No contact or group is called &quot;%1&quot;, nor has that ID. %2</source>
        <translation>Kein Kontakt und keine Gruppe heißt „%1“ oder hat diese ID. %2</translation>
    </message>
    <message numerus="yes">
        <source>Not deleted: %1. %n of %2 were deleted before it.</source>
        <translation>
            <numerusform>Nicht gelöscht: %1. Davor wurde %n von %2 gelöscht.</numerusform>
            <numerusform>Nicht gelöscht: %1. Davor wurden %n von %2 gelöscht.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n members received</source>
        <translation>
            <numerusform>%n Mitglied empfangen</numerusform>
            <numerusform>%n Mitglieder empfangen</numerusform>
        </translation>
    </message>
    <message>
        <source>Object ID</source>
        <translation>Objekt-ID</translation>
    </message>
    <message numerus="yes">
        <source>it has %n fields, and the first line names %1</source>
        <translation>
            <numerusform>der Eintrag hat %n Feld, und die erste Zeile benennt %1</numerusform>
            <numerusform>der Eintrag hat %n Felder, und die erste Zeile benennt %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Exported %n contacts to %1.</source>
        <translation>
            <numerusform>%n Kontakt nach %1 exportiert.</numerusform>
            <numerusform>%n Kontakte nach %1 exportiert.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n contacts can be imported to the %1</source>
        <translation>
            <numerusform>%n Kontakt kann importiert werden (%1)</numerusform>
            <numerusform>%n Kontakte können importiert werden (%1)</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Imported %n contacts to the %1</source>
        <translation>
            <numerusform>%n Kontakt importiert (%1)</numerusform>
            <numerusform>%n Kontakte importiert (%1)</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n were there already</source>
        <translation>
            <numerusform>, %n war schon da</numerusform>
            <numerusform>, %n waren schon da</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n were not imported</source>
        <translation>
            <numerusform>, %n wurde nicht importiert</numerusform>
            <numerusform>, %n wurden nicht importiert</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n from line %1 on were not tried</source>
        <translation>
            <numerusform>, %n ab Zeile %1 wurde nicht versucht</numerusform>
            <numerusform>, %n ab Zeile %1 wurden nicht versucht</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>qdfax: Interrupted at line %1. %n contacts were imported before it, and perhaps this one; &quot;qdfax contacts sync&quot; shows it.</source>
        <translation>
            <numerusform>qdfax: Unterbrochen in Zeile %1. Davor wurde %n Kontakt importiert und vielleicht auch dieser; „qdfax contacts sync“ zeigt es.</numerusform>
            <numerusform>qdfax: Unterbrochen in Zeile %1. Davor wurden %n Kontakte importiert und vielleicht auch dieser; „qdfax contacts sync“ zeigt es.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>There are %n received faxes, so there is no number %1.</source>
        <translation>
            <numerusform>Es gibt %n empfangenes Fax, also keine Nummer %1.</numerusform>
            <numerusform>Es gibt %n empfangene Faxe, also keine Nummer %1.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n contacts copied.</source>
        <translation>
            <numerusform>%n Kontakt kopiert.</numerusform>
            <numerusform>%n Kontakte kopiert.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n of the entries in %1 cannot be read. They are kept as they are.</source>
        <translation>
            <numerusform>%n der Einträge in %1 kann nicht gelesen werden. Er bleibt, wie er ist.</numerusform>
            <numerusform>%n der Einträge in %1 können nicht gelesen werden. Sie bleiben, wie sie sind.</numerusform>
        </translation>
    </message>
    <message>
        <source>May edit personal contacts</source>
        <translation>Darf persönliche Kontakte ändern</translation>
    </message>
    <message>
        <source>May edit global contacts</source>
        <translation>Darf globale Kontakte ändern</translation>
    </message>
</context>
</TS>
