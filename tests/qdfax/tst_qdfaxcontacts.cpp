// qdfax's contacts commands as users start them, against a simulated server.

#include "qdfaxworld.h"
#include "storefile.h"

namespace {

/// A person with a fax number, perhaps with more, like "organization|phone|email".
SimEntry person(const char* name, const char* fax, const char* more = "")
{
    SimEntry entry = someEntry(name);
    entry.person.fax = s(fax);
    entry.person.organization = s(more).section(QLatin1Char('|'), 0, 0);
    entry.person.phone = s(more).section(QLatin1Char('|'), 1, 1);
    entry.person.email = s(more).section(QLatin1Char('|'), 2);
    return entry;
}

/// The entries of a book as comparable texts, sorted.
QStringList sorted(const QVector<SimEntry>& entries)
{
    QStringList texts;
    for (const SimEntry& entry : entries) {
        const SimPerson& person = entry.person;
        texts.append(s("%1|%2|%3|").arg(person.name, person.organization, person.phone) + person.fax +
                     QLatin1Char('|') + person.email);
    }
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
                fields.append(value[QLatin1String(name)].toVariant().toString());
            texts.append(fields.join(QLatin1Char('|')));
        }
        texts.sort();
        return texts;
    }

    /// A group on the server with the entries of these uids in a book.
    QString addGroup(const char* name, const SimBookId& book, const QStringList& uids)
    {
        SimEntry group = someEntry(name);
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
        const QString refuse = s("CREATE TRIGGER x BEFORE %1 ON contacts BEGIN SELECT RAISE(ABORT, ''); END");
        startSim(30, 1);
        CHECK_RUN(run("contacts sync"), 0);
        for (const QString& refused : {s("INSERT"), s("DELETE")}) { // what is new, what is gone
            QVERIFY(m_sim->deleteEntry(m_mine, mine().first().uid));
            m_sim->addEntry(m_mine, person("New", "1"));
            QVERIFY(OtherProgram(refuse.arg(refused), file).works());
            const Result failed = run("contacts sync --json");
            CHECK_RUN(failed, 11, "The personal contacts could not be stored");
            QCOMPARE(failed.value(0, "synchronised").toBool(), false);
            // perhaps without what is gone
            QVERIFY(run("contacts list --json --book personal").array().size() >= 29);

            QVERIFY(OtherProgram(s("DROP TRIGGER x"), file).works());
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
        QCOMPARE(values(synced.array(), {"entries"}).join(s(" ")), s("3 3 30 30"));
        QStringList members = myGroups().at(0).members;
        members.replaceInStrings(QRegularExpression(s("^.*/")), QString()).sort();
        const QString name = mine().at(7).person.name;
        m_sim->stop();

        const Result all = run("contacts list --json");
        QCOMPARE(all.array().size(), 60);
        const QVariantList page = run("contacts list --json --limit 25 --offset 20").array().toVariantList();
        QCOMPARE(page, all.array().toVariantList().mid(20, 25));
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
        QVERIFY(m_sim->deleteEntry(m_mine, mine().at(0).uid));
        for (const bool isFull : {false, true}) {
            m_sim->addEntry(m_mine, person("New One", "5"));
            m_sim->clearRequests();
            CHECK_RUN(run(isFull ? "contacts sync --full" : "contacts sync"), 0);
            const QByteArray asked = m_sim->requests(s("GET"), m_mine.path()).value(0).target;
            QCOMPARE(asked.contains("query_time"), !isFull);
            const QJsonArray cached = run("contacts list --book personal --json").array();
            QCOMPARE(values(cached, {"name", "organization", "phone", "fax", "email"}), sorted(mine()));
        }
        // a book that cannot be read does not keep the others from being read
        m_sim->addEntry(m_global, person("Another", "5"));
        m_sim->addEntry(m_mine, person("Unread", "5"));
        m_sim->addFault(s("status=500,path=/qdws/v1/contacts/mary"));
        const Result result = run("contacts sync --json");
        CHECK_RUN(result, 2, "personal contacts");
        const QStringList states = values(result.array(), {"synchronised", "entries"});
        QVERIFY2(states.contains(s("true|11")) && states.contains(s("false|11")), result.out);
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
        const Result added = run("contacts add \"Zo\u00eb \"\"\"Z\"\"\" O'Neill & <Co>\" --fax \"+49 30 1\" "
                                 "--email z@x.com --organization \"A, B\" --json");
        CHECK_RUN(added, 0);
        const QString id = added.value("id").toString();
        QCOMPARE(sorted(mine().mid(3)),
                 QStringList{s("Zo\u00eb \"Z\" O'Neill & <Co>|A, B||+49 30 1|z@x.com")});
        CHECK_RUN(run("contacts modify %1 --fax 7 --email= --name Zo", id), 0);
        QCOMPARE(sorted(mine().mid(3)), QStringList{s("Zo|A, B||7|")});
        QCOMPARE(values({run("contacts show zo --json").object()}, {"fax", "id"}), QStringList(s("7|") + id));

        CHECK_RUN(run("contacts add Desk --fax 8 --book global"), 0);
        CHECK_RUN(run("contacts add Us --book personal-groups --description d --member zo --member Desk"), 0);
        QCOMPARE(myGroups().at(0).members.size(), 2);
        CHECK_RUN(run("contacts modify Us --remove-member zo --name Crew"), 0);
        const SimEntry crew = myGroups().at(0);
        QCOMPARE(crew.person.name + crew.description, s("Crewd"));
        QCOMPARE(crew.members, QStringList(m_global.path(m_sim->book(SimBooks::global()).at(3).uid)));
        QCOMPARE(run("contacts show Crew --json").value("members").toList().size(), 1);

        CHECK_RUN(run("contacts delete Crew %1 nobody", id), 14);
        QCOMPARE(mine().size(), 4); // nothing was deleted
        CHECK_RUN(run("contacts delete Crew %1", id), 0);
        QCOMPARE(mine().size() + myGroups().size(), 3);
        CHECK_RUN(run("contacts show %1", id), 14);
        QCOMPARE(m_sim->refusals(), QStringList());
        // the server's copy went while nobody looked
        m_sim->deleteEntry(m_mine, mine().at(0).uid);
        CHECK_RUN(run("contacts modify 1 --fax 9"), 9);
    }

    void rights_data()
    {
        const Rows<QByteArray, int, QByteArray> row; // who, the status, what is said
        row("contacts add X --fax 1 --book global", "tom", 8, "may not");
        row("contacts modify Shared --fax 1", "tom", 8, "may not");
        row("contacts delete Shared", "tom", 8, "may not");
        row("contacts import two.csv --book global", "tom", 8, "from line 3 on was not tried");
        row("contacts add X --fax 1", "rose", 5, "does not permit");
        row("contacts import two.csv --json", "rose", 5, "does not permit");
    }
    void rights()
    {
        const auto [login, status, says] = cells<QByteArray, int, QByteArray>();
        startSim(0, 0);
        m_sim->addEntry(m_global, person("Shared", "5"));
        addServer(login);
        CHECK_RUN(run("contacts sync"), 0);
        writeFile(path("two.csv"), "name,fax\nA,1\nB,2\n");
        const Result before = run("contacts list --json");
        const Result result = run(QTest::currentDataTag());
        CHECK_RUN(result, status);
        QVERIFY2((result.err + result.out).contains(says), result.err + result.out);
        QCOMPARE(run("contacts list --json").out, before.out);
        QCOMPARE(m_sim->book(SimBooks::global()).size(), 1);
        QCOMPARE(m_sim->book(s(login)).size(), 0);
    }

    void roundTrip()
    {
        startSim(0, 0);
        m_sim->addEntry(m_mine, person("Mary Poe", "+49 30 1234567", "Poe, \"Sons\" & Co; Ltd|5|m@x.org"));
        m_sim->addEntry(m_mine, person("J\u00fcrgen Gro\u00df \u2603 \U0001F4E0", "1"));
        m_sim->addEntry(m_mine, person("\"quoted\"", "", "back\\slash, semi;colon: colon=equals"));
        m_sim->addEntry(m_mine, person("=1+1,'x'", "2", "||a@b.c"));
        m_sim->addEntry(m_mine, person(QByteArray(300, 'n').constData(), "3", "\u5b57\u5b57 \u05d0\u05d1"));
        const QStringList expected = sorted(mine());
        for (const QString& files : {s("--csv book.csv"), s("--vcard book.vcf")}) {
            const QString file = files.section(QLatin1Char(' '), 1);
            CHECK_RUN(run("contacts sync"), 0);
            CHECK_RUN(run("contacts export %1", files), 0);
            CHECK_RUN(run("contacts export %1", files), 11); // it is there
            QCOMPARE(run("contacts export %1", files.section(s(" "), 0, 0)).out, readFile(path(file)));
            QCOMPARE(run("contacts import %1 --json", file).value("present").toInt(), 5);
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
        const Rows<QByteArray, int, int, QByteArray>
            row; // content, status, how many are usable, what is said
        row("csv: empty table", "", 11, 0, "empty");
        row("csv: no titles", "Mary,5551\n", 11, 0, "does not name the columns");
        row("csv: open quote", "name,fax\nA,1\n\"B,2\nC,3\n", 11, 0, "line 3 is never closed");
        row("csv: stray quote", "name,fax\nA,1\nB\"x\",2\n", 11, 0, "line 3 has a quote");
        row("csv: Latin-1", "name,fax\nA,1\nJ\xfcrgen,2\n", 11, 0, "line 3 is not UTF-8");
        row("csv: wrong numbers of fields", "name,fax\nA,1\nB\n\n\nC,3,4\nD,4\n", 11, 2,
            "Line 6 is not imported: it has 3 fields");
        row("csv: line break", "name,fax\r\n\"A\r\nB\",1\r\nC,2\r\n\"D\nE\",3\r\n", 11, 1,
            "Line 5 is not imported: the field \"name\" contains a line break");
        row("csv: control character", QByteArray("name,fax\nA\0B,1\nC,2\n", 19), 11, 1, "control character");
        row("csv: no name", "name,fax\n,1\n", 11, 0, "neither a name");
        row("csv: organization for a name", "Fax Number;Company;Notes\n5;Poe, Inc.;x\n", 0, 1, "Notes");
        row("csv: other titles",
            "\xef\xbb\xbf"
            "First Name\tLast Name\tBusiness Fax\nA\tB\t1\n",
            0, 1, "");
        row("csv: UTF-16", QByteArray("\xff\xfen\0a\0m\0e\0\n\0\xfc\0\n\0", 16), 0, 1, "");
        row("csv: old line ends", "name,fax\rA,1\rB\rC,3\r", 11, 2, "Line 3");
        row("vcf: no card", "name,fax\nA,1\n", 11, 0, "no vCard");
        row("vcf: cut card", "BEGIN:VCARD\nVERSION:3.0\nFN:A\nBEGIN:VCARD\nFN:B\nEND:VCARD\n", 11, 1,
            "Line 1 is not imported: the card has no END:VCARD");
        row("vcf: broken line", "BEGIN:VCARD\nVERSION:3.0\nFN:A\nTEL;FAX 5\nEND:VCARD\n", 11, 0, "TEL;FAX 5");
        row("vcf: between cards", "BEGIN:VCARD\nFN:B\nEND:VCARD\n\njunk\n", 11, 1, "Line 5");
        row("vcf: group card", "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:G\nEND:VCARD\n", 11, 0, "a group");
        row("vcf: escaped line break", "BEGIN:VCARD\nFN:A\\nB\nEND:VCARD\n", 11, 0, "line break");
        row("vcf: quoted-printable",
            "BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=BC=\nrg\nEND:VCARD\n",
            0, 1, "");
        row("vcf: nameless card", "BEGIN:VCARD\nVERSION:3.0\nTEL:5\nEND:VCARD\n", 11, 0, "neither a name");
        row("txt: other ending", "name\nA\n", 1, 0, ".csv");
        row("vcf: deep garbage", QByteArray("BEGIN:VCARD\n").repeated(20000), 11, 0, "no END:VCARD");
    }
    void files()
    {
        const auto [content, status, usable, says] = cells<QByteArray, int, int, QByteArray>();
        const QString name = s("a.") + s(QTest::currentDataTag()).section(QLatin1Char(':'), 0, 0);
        writeFile(path(name), content);
        const Result result = run("contacts import %1 --dry-run --json", name);
        CHECK_RUN(result, status, says);
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
        QCOMPARE(sorted(mine()).join(s(" ")), s("Dr. Mary Poe|Poe, Inc.|4|2|c@d J\u00fcrgen|||tel:+49-1|"));
    }

    void importBreaksOffAndGoesOn()
    {
        startSim(0, 0);
        CHECK_RUN(run("contacts sync"), 0);
        writeFile(path("a.csv"), "name,fax\nA,1\nB,2\nbad\nC,3\nD,4\n");
        m_sim->addFault(s("hangup,method=POST,skip=1,times=1"));
        const Result broken = run("contacts import a.csv --json");
        CHECK_RUN(broken, 2, "Whether the server took line 3");
        QCOMPARE(values({broken.object()}, {"imported", "stoppedAtLine", "notTried"}).join(s(" ")),
                 s("1|4|3"));
        m_sim->clearFaults();
        // the simulator carried out what it did not answer
        CHECK_RUN(run("contacts sync"), 0);
        const Result rest = run("contacts import a.csv --json");
        CHECK_RUN(rest, 11);
        QCOMPARE(values({rest.object()}, {"present", "imported"}).join(s(" ")), s("2|2"));
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

    void wrongCommandLines()
    {
        startSim(0, 0);
        m_sim->addEntry(m_mine, person("Ann", "1"));
        addGroup("G1", m_mine, {});
        QVERIFY(QDir().mkpath(path("folder.csv")));
        CHECK_RUN(run("contacts sync"), 0);
        const auto check = [this](const char* line, int status) {
            const Result result = run(line);
            QVERIFY2(result.status == status && result.out.isEmpty() && !result.err.isEmpty(), line);
        };
        for (const char* line :
             {"contacts", "contacts list --book nosuch", "contacts list --limit -1", "contacts search",
              "contacts add \"\"", "contacts add X --member 1", "contacts add X --fax \"1\x07\"",
              "contacts add X --book personal-groups --fax 1", "contacts modify Ann",
              "contacts modify Ann --name \"\"", "contacts export", "contacts export --csv --vcard",
              "contacts export --csv --book global-groups", "contacts import a.csv --book personal-groups",
              "contacts add G --book global-groups --member G1"})
            check(line, 1);
        for (const char* line :
             {"contacts import missing.csv", "contacts import folder.csv",
              "contacts export --csv nosuch/x.csv", "send x --to-contact nobody"}) // the file comes first
            check(line, 11);
        check("contacts list --server nobody@x", 12);
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
