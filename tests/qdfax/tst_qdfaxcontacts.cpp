// qdfax's contacts commands as users start them, against a simulated server.

#include "qdfaxworld.h"
#include "storefile.h"

namespace {

SimEntry person(const char* name, const char* fax, const char* organization = "", const char* phone = "",
                const char* email = "")
{
    SimEntry entry;
    entry.person.name = s(name);
    entry.person.fax = s(fax);
    entry.person.organization = s(organization);
    entry.person.phone = s(phone);
    entry.person.email = s(email);
    return entry;
}

QStringList fieldsOf(const SimPerson& person)
{
    return {person.name, person.organization, person.phone, person.fax, person.email};
}

/// The entries of a book as comparable texts, sorted.
QStringList sorted(const QVector<SimEntry>& entries)
{
    QStringList texts;
    for (const SimEntry& entry : entries)
        texts.append(fieldsOf(entry.person).join(QLatin1Char('|')));
    texts.sort();
    return texts;
}

} // namespace

class TestQdfaxContacts : public QdfaxTest
{
    Q_OBJECT

    const SimBookId m_mine{s("mary"), false};
    const SimBookId m_myGroups{s("mary"), true};
    const SimBookId m_global{SimBooks::global(), false};
    const SimBookId m_globalGroups{SimBooks::global(), true};

    void startSim(int contacts, int groups)
    {
        SimOptions options;
        options.contacts = contacts;
        options.groups = groups;
        options.speed = 0;
        QdfaxTest::startSim(options, {"mary:secret:global", "tom:secret", "rose:secret:readonly"});
        addServer();
    }
    QVector<SimEntry> mine() const { return m_sim->book(s("mary")); }
    QVector<SimEntry> myGroups() const { return m_sim->book(s("mary"), true); }
    /// Values of all objects that are the output of a run or part of it, as comparable texts, sorted.
    static QStringList values(const QJsonArray& objects, std::initializer_list<const char*> names)
    {
        QStringList texts;
        for (const QJsonValue& value : objects) {
            QStringList fields;
            for (const char* name : names)
                fields.append(value[QLatin1String(name)].toString());
            texts.append(fields.join(QLatin1Char('|')));
        }
        texts.sort();
        return texts;
    }

    /// A group on the server with the entries of these uids in a book.
    QString addGroup(const char* name, const SimBookId& book, const QStringList& uids)
    {
        SimEntry group;
        group.person.name = s(name);
        group.description = s("made here");
        for (const QString& uid : uids)
            group.members.append(book.path(uid));
        return m_sim->addEntry(m_myGroups, group);
    }

private Q_SLOTS:
    void init() { newFolder(); }
    void cleanup() { m_sim.reset(); }

    void bookThatCannotBeStored()
    {
        // a book that was read and not stored is not synchronised, whatever the server said
        const QString file = path("appdata/Quendra Client Software/Contacts/contacts.sqlite");
        startSim(30, 1);
        CHECK_RUN(run("contacts sync"), 0);
        for (const QString& refused : {s("INSERT"), s("DELETE")}) { // what is new, what is gone
            QVERIFY(m_sim->deleteEntry(m_mine, mine().first().uid));
            m_sim->addEntry(m_mine, person("New", "1"));
            const QString trigger =
                s("CREATE TRIGGER refuse BEFORE %1 ON contacts BEGIN SELECT RAISE(ABORT, 'x'); END");
            QVERIFY(OtherProgram(trigger.arg(refused), file).works());
            const Result failed = run("contacts sync --json");
            CHECK_RUN(failed, 11, "The personal contacts could not be stored");
            QCOMPARE(failed.value(0, "synchronised").toBool(), false);
            // perhaps without what is gone
            QVERIFY(run("contacts list --json --book personal").array().size() >= 29);

            QVERIFY(OtherProgram(s("DROP TRIGGER refuse"), file).works());
            const Result repaired = run("contacts sync --json");
            CHECK_RUN(repaired, 0);
            QCOMPARE(repaired.value(0, "entries").toInt(), 30);
            QCOMPARE(run("contacts search New --json").array().size(), refused == s("INSERT") ? 1 : 2);
        }
    }

    void cacheIsReadWithoutTheServer()
    {
        startSim(30, 3);
        CHECK_RUN(run("contacts list"), 0); // nothing yet
        const Result synced = run("contacts sync --json");
        CHECK_RUN(synced, 0);
        QCOMPARE(synced.array().size(), 4);
        QCOMPARE(synced.value(0, "entries").toInt(), 30);
        QCOMPARE(synced.value(3, "entries").toInt(), 3);
        QStringList members = myGroups().at(0).members;
        for (QString& member : members)
            member = member.section(QLatin1Char('/'), -1);
        members.sort();
        const QString name = mine().at(7).person.name;
        m_sim->stop();

        const Result all = run("contacts list --json");
        QCOMPARE(all.array().size(), 60);
        QJsonArray pages;
        for (const char* offset : {"0", "25", "50"}) {
            for (const QJsonValue& value :
                 run("contacts list --json --limit 25 --offset %1", s(offset)).array())
                pages.append(value);
        }
        QCOMPARE(pages, all.array());
        QCOMPARE(run("contacts list --book global --json").array().size(), 30);
        const Result found = run({s("contacts"), s("search"), name.mid(1).toUpper(), s("--json")});
        QVERIFY2(values(found.array(), {"name"}).contains(name), found.out);
        CHECK_RUN(run("contacts search nosuchname"), 14);
        const Result groups = run("contacts groups --json");
        QCOMPARE(groups.array().size(), 6);
        QCOMPARE(groups.value(0, "memberCount").toInt(), members.size());
        const Result group = run("contacts show %1 --json", groups.value(0, "id").toString());
        QCOMPARE(values(group.object().value(s("members")).toArray(), {"objectId"}), members);
        CHECK_RUN(run("contacts show 999999"), 14);
        CHECK_RUN(run("contacts sync"), 2);

        // with the server go its contacts
        CHECK_RUN(run("server remove mary@%1", m_sim->address()), 0);
        CHECK_RUN(run("server add %1 --login mary --no-check", m_sim->address()), 0);
        QCOMPARE(run("contacts list --json").out.trimmed(), QByteArray("[\n]"));
    }

    void syncFollowsTheServer()
    {
        startSim(10, 0);
        CHECK_RUN(run("contacts sync"), 0);
        for (const char* again : {"contacts sync", "contacts sync --full"}) {
            QVERIFY(m_sim->deleteEntry(m_mine, mine().at(0).uid));
            SimEntry changed = mine().at(0);
            changed.person.name = s(again);
            QVERIFY(m_sim->modifyEntry(m_mine, changed));
            m_sim->addEntry(m_mine, person("New One", "5"));
            CHECK_RUN(run(again), 0);
            const QJsonArray cached = run("contacts list --book personal --json").array();
            QCOMPARE(values(cached, {"name", "organization", "phone", "fax", "email"}), sorted(mine()));
        }
        // a book that cannot be read does not keep the others from being read
        m_sim->addEntry(m_global, person("Another", "5"));
        m_sim->addEntry(m_mine, person("Unread", "5"));
        m_sim->addFault(s("status=500,path=/qdws/v1/contacts/mary"));
        const Result result = run("contacts sync --json");
        CHECK_RUN(result, 2, "personal contacts");
        QVERIFY(!result.value(0, "synchronised").toBool());
        QVERIFY(result.value(1, "synchronised").toBool());
        QCOMPARE(result.value(1, "entries").toInt(), 11);
    }

    void progressOnATerminal()
    {
        startSim(10, 0);
        m_sim->addFault(s("delay=1500,path=/qdws/v1/contacts/global_contact_list,times=1"));
        Terminal terminal;
        Program program;
        program.terminal = terminal.name();
        start(program, {s("contacts"), s("sync")});
        CHECK_RUN(program.finish(), 0);
        for (const char* text : {"global contacts (2 of 4): ", ", 1 s"})
            QVERIFY2(terminal.shown().contains(text), terminal.shown());
    }

    void changesReachServerAndCache()
    {
        startSim(3, 0);
        CHECK_RUN(run("contacts sync"), 0);
        const Result added = run("contacts add \"Zo\u00eb \\\"Z\\\" O'Neill & <Co>\" --fax \"+49 30 1\" "
                                 "--email z@example.com --organization \"A, B\" --json");
        CHECK_RUN(added, 0);
        const QString id = added.value("id").toString();
        QCOMPARE(mine().size(), 4);
        QCOMPARE(mine().at(3).person.name, added.value("name").toString());
        QCOMPARE(mine().at(3).person.organization, s("A, B"));
        CHECK_RUN(run("contacts modify %1 --fax 7 --email= --name Zo", id), 0);
        QCOMPARE(sorted(mine().mid(3)), QStringList{s("Zo|A, B||7|")});
        const Result shown = run("contacts show zo --json");
        QCOMPARE(shown.value("fax").toString(), s("7"));
        QCOMPARE(shown.value("id").toString(), id);

        CHECK_RUN(run("contacts add Desk --fax 8 --book global"), 0);
        CHECK_RUN(run("contacts add Team --book personal-groups --description d --member zo --member Desk"),
                  0);
        QCOMPARE(myGroups().at(0).members.size(), 2);
        CHECK_RUN(run("contacts modify Team --remove-member zo --name Crew"), 0);
        const SimEntry crew = myGroups().at(0);
        QCOMPARE(crew.person.name + crew.description, s("Crewd"));
        QCOMPARE(crew.members, QStringList(m_global.path(m_sim->book(SimBooks::global()).at(3).uid)));
        QCOMPARE(run("contacts show Crew --json").value("members").toList().size(), 1);

        CHECK_RUN(run("contacts delete Crew %1 nobody", id), 14);
        QCOMPARE(mine().size(), 4); // nothing was deleted
        CHECK_RUN(run("contacts delete Crew %1", id), 0);
        QCOMPARE(mine().size(), 3);
        QCOMPARE(myGroups().size(), 0);
        CHECK_RUN(run("contacts show %1", id), 14);
        QCOMPARE(m_sim->refusals(), QStringList());
        // the server's copy went while nobody looked
        m_sim->deleteEntry(m_mine, mine().at(0).uid);
        CHECK_RUN(run("contacts modify 1 --fax 9"), 9);
    }

    void rights_data()
    {
        const Rows<QString, QString, int, QString> row("login", "line", "status", "says");
        row("add to the global book", "tom", "contacts add X --fax 1 --book global", 8, "may not");
        row("modify in it", "tom", "contacts modify Shared --fax 1", 8, "may not");
        row("delete from it", "tom", "contacts delete Shared", 8, "may not");
        row("import to it", "tom", "contacts import two.csv --book global", 8,
            "from line 3 on was not tried");
        row("add to a closed book", "rose", "contacts add X --fax 1", 5, "does not permit");
        row("import to it as JSON", "rose", "contacts import two.csv --json", 5, "does not permit");
    }
    void rights()
    {
        QFETCH(QString, login);
        QFETCH(QString, line);
        QFETCH(int, status);
        QFETCH(QString, says);
        startSim(0, 0);
        m_sim->addEntry(m_global, person("Shared", "5"));
        addServer(login.toLatin1().constData());
        CHECK_RUN(run("contacts sync"), 0);
        writeFile(path("two.csv"), "name,fax\nA,1\nB,2\n");
        const Result before = run("contacts list --json");
        const Result result = run(QProcess::splitCommand(line));
        CHECK_RUN(result, status);
        QVERIFY2((result.err + result.out).contains(says.toUtf8()), result.err + result.out);
        QCOMPARE(run("contacts list --json").out, before.out);
        QCOMPARE(m_sim->book(SimBooks::global()).size(), 1);
        QCOMPARE(m_sim->book(login).size(), 0);
    }

    void roundTrip()
    {
        startSim(0, 0);
        m_sim->addEntry(m_mine,
                        person("Mary Poe", "+49 30 1234567", "Poe, \"Sons\" & Co; Ltd", "5", "m@x.org"));
        m_sim->addEntry(m_mine, person("J\u00fcrgen Gro\u00df \u2603 \U0001F4E0", "1"));
        m_sim->addEntry(m_mine, person("\"quoted\"", "", "back\\slash, semi;colon: colon=equals"));
        m_sim->addEntry(m_mine, person("=1+1,'x'", "2", "", "", "a@b.c"));
        m_sim->addEntry(m_mine, person(QByteArray(300, 'n').constData(), "3", "\u5b57\u5b57 \u05d0\u05d1"));
        const QStringList expected = sorted(mine());
        for (const QString& files : {s("--csv book.csv"), s("--vcard book.vcf")}) {
            const QString file = files.section(QLatin1Char(' '), 1);
            CHECK_RUN(run("contacts sync"), 0);
            const auto exported = [&](const QString& to) {
                return run(qPrintable(s("contacts export ") + to));
            };
            CHECK_RUN(exported(files), 0);
            CHECK_RUN(exported(files), 11); // it is there
            QCOMPARE(exported(files.section(QLatin1Char(' '), 0, 0)).out, readFile(path(file)));
            const Result again = run("contacts import %1 --json", file);
            CHECK_RUN(again, 0);
            QCOMPARE(again.value("present").toInt(), 5);
            for (const SimEntry& entry : mine())
                m_sim->deleteEntry(m_mine, entry.uid);
            CHECK_RUN(run("contacts sync"), 0);
            CHECK_RUN(run("contacts import %1", file), 0);
            QCOMPARE(sorted(mine()), expected);
        }
        QCOMPARE(m_sim->refusals(), QStringList());
    }

    void files_data()
    {
        const Rows<QString, QByteArray, int, int, QString> row("name", "content", "status", "usable", "says");
        row("empty table", "a.csv", "", 11, 0, "empty");
        row("no titles", "a.csv", "Mary,5551\n", 11, 0, "does not name the columns");
        row("open quote", "a.csv", "name,fax\nA,1\n\"B,2\nC,3\n", 11, 0, "line 3 is never closed");
        row("stray quote", "a.csv", "name,fax\nA,1\nB\"x\",2\n", 11, 0, "line 3 has a quote");
        row("Latin-1", "a.csv", "name,fax\nA,1\nJ\xfcrgen,2\n", 11, 0, "line 3 is not UTF-8");
        row("wrong numbers of fields", "a.csv", "name,fax\nA,1\nB\n\n\nC,3,4\nD,4\n", 11, 2,
            "Line 6 is not imported: it has 3 fields");
        row("line break", "a.csv", "name,fax\r\n\"A\r\nB\",1\r\nC,2\r\n\"D\nE\",3\r\n", 11, 1,
            "Line 5 is not imported: the field \"name\" contains a line break");
        row("control character", "a.csv", QByteArray("name,fax\nA\0B,1\nC,2\n", 19), 11, 1,
            "control character");
        row("no name", "a.csv", "name,fax\n,1\n", 11, 0, "neither a name");
        row("organization for a name", "a.csv", "Fax Number;Company;Notes\n5;Poe, Inc.;x\n", 0, 1, "Notes");
        row("other titles", "a.csv",
            "\xef\xbb\xbf"
            "First Name\tLast Name\tBusiness Fax\nA\tB\t1\n",
            0, 1, "");
        row("UTF-16", "a.csv", QByteArray("\xff\xfen\0a\0m\0e\0\n\0\xfc\0\n\0", 16), 0, 1, "");
        row("old line ends", "a.csv", "name,fax\rA,1\rB\rC,3\r", 11, 2, "Line 3");
        row("no card", "a.vcf", "name,fax\nA,1\n", 11, 0, "no vCard");
        row("cut card", "a.vcf", "BEGIN:VCARD\nVERSION:3.0\nFN:A\nBEGIN:VCARD\nFN:B\nEND:VCARD\n", 11, 1,
            "Line 1 is not imported: the card has no END:VCARD");
        row("broken line", "a.vcf", "BEGIN:VCARD\nVERSION:3.0\nFN:A\nTEL;FAX 5\nEND:VCARD\n", 11, 0,
            "TEL;FAX 5");
        row("between cards", "a.vcf", "BEGIN:VCARD\nFN:B\nEND:VCARD\n\njunk\n", 11, 1, "Line 5");
        row("group card", "a.vcf", "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:G\nEND:VCARD\n", 11, 0,
            "is a group");
        row("escaped line break", "a.vcf", "BEGIN:VCARD\nVERSION:3.0\nFN:A\\nB\nEND:VCARD\n", 11, 0,
            "line break");
        row("quoted-printable", "a.vcf",
            "BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=BC=\nrg\nEND:VCARD\n",
            0, 1, "");
        row("nameless card", "a.vcf", "BEGIN:VCARD\nVERSION:3.0\nTEL:5\nEND:VCARD\n", 11, 0,
            "neither a name");
        row("other ending", "a.txt", "name\nA\n", 1, 0, ".csv");
        row("deep garbage", "a.vcf", QByteArray("BEGIN:VCARD\n").repeated(20000), 11, 0, "no END:VCARD");
    }
    void files()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, status);
        QFETCH(int, usable);
        QFETCH(QString, says);
        writeFile(m_folder->filePath(name), content);
        const Result result = run({s("contacts"), s("import"), name, s("--dry-run"), s("--json")});
        CHECK_RUN(result, status, says.toUtf8());
        QCOMPARE(result.value("imported").toInt(), usable);
    }

    void fieldsOfCards()
    {
        startSim(0, 0);
        writeFile(path("a.vcf"),
                  "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Poe;Mary;;Dr.;\r\nORG:Poe\\, Inc.;Sales\r\n"
                  "TEL;TYPE=HOME,FAX:1\r\nTEL;TYPE=WORK,FAX:2\r\nTEL;TYPE=CELL:3\r\n"
                  "TEL;TYPE=WORK,VOICE:4\r\nEMAIL:a@b\r\nEMAIL;TYPE=PREF:c@d\r\nEND:VCARD\r\n"
                  "begin:vcard\nversion:4.0\nfn:J\xc3\xbc\n rgen\ntel;type=fax;value=uri:tel:+49-1\n"
                  "end:vcard\n");
        CHECK_RUN(run("contacts import a.vcf"), 0);
        const QVector<SimEntry> book = mine();
        QCOMPARE(book.size(), 2);
        QVERIFY2(book.at(0).person.name.contains(s("Mary Poe")), qPrintable(book.at(0).person.name));
        QCOMPARE(fieldsOf(book.at(0).person).mid(1), QStringList({s("Poe, Inc."), s("4"), s("2"), s("c@d")}));
        QCOMPARE(book.at(1).person.name, s("J\u00fcrgen"));
        QVERIFY2(book.at(1).person.fax.contains(s("+49-1")), qPrintable(book.at(1).person.fax));
    }

    void importBreaksOffAndGoesOn()
    {
        startSim(0, 0);
        CHECK_RUN(run("contacts sync"), 0);
        writeFile(path("a.csv"), "name,fax\nA,1\nB,2\nbad\nC,3\nD,4\n");
        m_sim->addFault(s("hangup,method=POST,skip=1,times=1"));
        const Result broken = run("contacts import a.csv --json");
        CHECK_RUN(broken, 2, "Whether the server took line 3");
        QCOMPARE(broken.value("imported").toInt(), 1);
        QCOMPARE(broken.value("stoppedAtLine").toInt(), 4);
        QCOMPARE(broken.value("notTried").toInt(), 3);
        m_sim->clearFaults();
        // the simulator carried out what it did not answer
        CHECK_RUN(run("contacts sync"), 0);
        const Result rest = run("contacts import a.csv --json");
        CHECK_RUN(rest, 11);
        QCOMPARE(rest.value("present").toInt(), 2);
        QCOMPARE(rest.value("imported").toInt(), 2);
        QCOMPARE(rest.value("notImported").toList().size(), 1);
        QCOMPARE(mine().size(), 4);
        // one that the server does not take does not keep the others back
        m_sim->addFault(s("status=400,method=POST,skip=1,times=1"));
        writeFile(path("b.csv"), "name\nE\nF\nG\n");
        const Result some = run("contacts import b.csv");
        CHECK_RUN(some, 11);
        QCOMPARE(some.out, QByteArray("Imported 2 contacts to the personal contacts, 1 was not imported.\n"));
        QCOMPARE(mine().size(), 6);
    }

    void sendToContacts()
    {
        startSim(0, 0);
        const QString ann = m_sim->addEntry(m_mine, person("Ann", "1", "Ann, Inc."));
        const QString bob = m_sim->addEntry(m_mine, person("Bob", "2"));
        const QString dumb = m_sim->addEntry(m_mine, person("No Fax", ""));
        m_sim->addEntry(m_mine, person("Twin", "3"));
        m_sim->addEntry(m_mine, person("twin", "4"));
        addGroup("Team", m_mine, {ann, bob, dumb});
        addGroup("Pair", m_mine, {bob, ann});
        addGroup("Silent", m_mine, {dumb});
        addGroup("Nobody", m_mine, {});
        CHECK_RUN(run("contacts sync"), 0);
        writeFile(path("a.txt"), "text\n");
        CHECK_RUN(run("send a.txt --to-contact Team --to-contact ann --to-contact Pair --to 9"), 0,
                  "without a fax number: No Fax");
        QStringList sent;
        for (const SimFax& fax : m_sim->faxes())
            sent.append(fax.recipient.fax + fax.recipient.organization);
        sent.sort();
        QCOMPARE(sent.join(QLatin1Char(' ')), s("1Ann, Inc. 2 9"));
        QCOMPARE(m_sim->refusals(), QStringList());

        const Result twins = run("send a.txt --to-contact Twin");
        CHECK_RUN(twins, 1);
        QCOMPARE(twins.err.toLower().count(" twin (personal"), 2);
        const QString id = run("contacts search twin --json").value(1, "id").toString();
        CHECK_RUN(run("send a.txt --to-contact %1", id), 0);
        for (const char* line : {"send a.txt --to-contact Silent", "send a.txt --to-contact Nobody",
                                 "send a.txt --to-contact \"No Fax\""})
            CHECK_RUN(run(line), 1);
        CHECK_RUN(run("send a.txt --to-contact Team --to-contact Nosuch"), 14);
        QCOMPARE(m_sim->faxes().size(), 4);
    }

    void wrongCommandLines_data()
    {
        const Rows<int> row("status");
        for (const char* line :
             {"contacts", "contacts list --book nosuch", "contacts list --limit -1", "contacts search",
              "contacts add \"\"", "contacts add X --member 1", "contacts add X --fax \"1\x07\"",
              "contacts add X --book personal-groups --fax 1", "contacts modify Ann",
              "contacts modify Ann --name \"\"", "contacts export", "contacts export --csv --vcard",
              "contacts export --csv --book global-groups", "contacts import a.csv --book personal-groups",
              "contacts add G --book global-groups --member G1"})
            row(line, 1);
        row("contacts import missing.csv", 11);
        row("contacts import folder.csv", 11);
        row("contacts export --csv nosuch/x.csv", 11);
        row("contacts list --server nobody@x", 12);
        row("send x --to-contact nobody", 11); // the file comes first
    }
    void wrongCommandLines()
    {
        QFETCH(int, status);
        startSim(0, 0);
        m_sim->addEntry(m_mine, person("Ann", "1"));
        addGroup("G1", m_mine, {});
        QVERIFY(QDir().mkpath(path("folder.csv")));
        CHECK_RUN(run("contacts sync"), 0);
        const Result result = run(QTest::currentDataTag());
        CHECK_RUN(result, status);
        QCOMPARE(result.out, QByteArray());
        QVERIFY(!result.err.isEmpty());
        QCOMPARE(m_sim->requestCount() - m_sim->requestCount(s("GET")), 0);
    }

    void damagedCache()
    {
        startSim(2, 0);
        CHECK_RUN(run("contacts sync"), 0);
        writeFile(path("appdata/Quendra Client Software/Contacts/contacts.sqlite"), QByteArray(9000, 'x'));
        for (const char* line : {"contacts sync", "contacts list", "contacts add X", "contacts show 1"})
            CHECK_RUN(run(line), 11, "contacts.sqlite");
        QCOMPARE(mine().size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestQdfaxContacts)

#include "tst_qdfaxcontacts.moc"
