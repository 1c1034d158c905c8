#include "contactrow_p.h"
#include "storekit.h"

#include <QtTest>

/// The contact cache on one thread: what is in the tables, what the lists give, what goes with what is
/// deleted.
class ContactStoreTest : public StoreTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { newStore(); }
    void cleanup() { closeStore(); }

    void schema()
    {
        QCOMPARE(raw("SELECT type, name FROM sqlite_master WHERE name NOT LIKE 'sqlite%' ORDER BY rowid"),
                 s("table|contacts table|sources table|properties table|groups trigger|delete_source "
                   "trigger|delete_contact"));
        const QString before = everything();
        m_store.reset();
        QCOMPARE(raw("DROP TABLE groups"), QString());
        m_store = std::make_unique<Store>(); // a table that got lost is made again, and the others stay
        QCOMPARE(everything(), before);
    }

    void connections()
    {
        QVERIFY(QSqlDatabase::connectionNames().first().startsWith(s("contacts.sqlite:0x")));
        m_store->freeStorageForThread();
        m_store->freeStorageForThread();
        QCOMPARE(QSqlDatabase::connectionNames().size(), 0);
        QVERIFY(add(1));

        // Two stores on one thread have one connection; each goes on when the other is gone.
        auto second = std::make_unique<Store>();
        QVERIFY(second->getContact(account, people, personal, s("1")));
        QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
        second.reset();
        QVERIFY(add(2));
    }

    void sources()
    {
        const QString name = s("user@fax");
        QCOMPARE(m_store->addSource(name, Store::SourceQuendra), account);
        QCOMPARE(m_store->addSource(name, Store::SourceOutlook), 2U);
        QCOMPARE(m_store->addSource(none, Store::SourceQuendra), 3U);
        QCOMPARE(m_store->addSource(none, Store::SourceQuendra), 3U);
        QCOMPARE(m_store->getSource(s("User@fax"), Store::SourceQuendra), 0U);
        QCOMPARE(spelled(m_store->getSourceList(Store::AnySource, 1, 1)), s("1 2 3"));
        QCOMPARE(spelled(m_store->getSourceList(Store::SourceQuendra)), s("1 3"));

        QString found = s("kept");
        Store::SourceType type = Store::AnySource;
        QVERIFY(!m_store->getSourceInfo(7, found, type));
        QCOMPARE(found, s("kept"));
        QVERIFY(m_store->getSourceInfo(2, found, type));
        QCOMPARE(found, name);
        QCOMPARE(type, Store::SourceOutlook);
        m_store->deleteSource(name, Store::SourceOutlook);
        m_store->deleteSource(s("nobody"), Store::SourceOutlook);
        QCOMPARE(spelled(m_store->getSourceList(Store::AnySource)), s("1 3"));
        // Ids are never used again, so a provider that still holds one finds nothing.
        m_store->deleteSource(3);
        QCOMPARE(m_store->addSource(none, Store::SourceQuendra), 4U);
    }

    void addAndUpdate()
    {
        const auto store = [this](quint32 timestamp, const char* name, const QString& phone) {
            return m_store->addContact(account, people, global, s("7"), timestamp, s(name), none, phone,
                                       s("f"), s("e"), s("o"));
        };
        const quint32 other = add(7, s("the same uid in another book"));
        const quint32 id = store(4000000000U, "n", s("p"));
        QVERIFY(id != other);
        QCOMPARE(store(0, "N", none), id);
        QCOMPARE(m_store->getContact(account, people, global, s("7")), id);
        QCOMPARE(m_store->getContact(account, groups, global, s("7")), 0U);

        const auto row = ContactRow::read(m_store.get(), id).value();
        QCOMPARE((QStringList{row.uid, row.name, row.description, row.phone, row.fax, row.email,
                              row.organization, QString::number(row.timestamp)})
                     .join(QLatin1Char('|')),
                 s("7|N|||f|e|o|4000000000"));
        QVERIFY(row.type == people && row.location == global && row.source == account);
        QVERIFY(!ContactRow::read(m_store.get(), 99));
        QCOMPARE(m_store->getContactLastTimeStamp(account, anyType, anywhere), 4000000000U);
        QCOMPARE(m_store->getContactLastTimeStamp(account, people, personal), 1U);
        QCOMPARE(m_store->getContactLastTimeStamp(account, groups, anywhere), 0U);

        QString value;
        const auto large = key(3000000000U);
        QVERIFY(!m_store->getPropertyInfo(id, large, value));
        m_store->addProperty(id, large, s("a"));
        m_store->addProperty(id, large, none);
        m_store->addProperty(id, key(1), s("b"));
        QVERIFY(m_store->getPropertyInfo(id, key(1), value));
        QCOMPARE(value, s("b"));
        m_store->deleteProperty(id, key(1));
        QCOMPARE(raw("SELECT * FROM properties"), s("%1|3000000000|").arg(id));
        m_store->deleteContact(account, people, global, s("7"));
        QCOMPARE(raw("SELECT id FROM contacts") + raw("SELECT * FROM properties"), QString::number(other));
    }

    void oddTexts()
    {
        // nothing, quotes, wildcards, NUL, emoji, half a pair, a byte order mark and a swapped one, 1 MB
        for (const QString& text :
             {none, s("O'Hara \"; DROP TABLE contacts; --"), s("100%_?1"), QString(QLatin1String("a\0b", 3)),
              s("\U0001F4E0 Stra\u00DFe"), QString(QChar(0xD83D)) + QLatin1Char('x'),
              QString(QChar(0xFEFF)) + QLatin1Char('x'), QString(QChar(0xFFFE)) + QLatin1Char('x'),
              QString(1 << 20, QLatin1Char('x'))}) {
            const auto store = [&] {
                return m_store->addContact(account, people, personal, text, 1, text, text, text, text, text,
                                           text);
            };
            const quint32 id = store();
            QVERIFY(id);
            QCOMPARE(store(), id);
            m_store->scopeBegin();
            QCOMPARE(store(), id);
            m_store->deleteContact(id);
            const quint32 again = store();
            QVERIFY(again > id);
            QCOMPARE(store(), again);
            m_store->scopeEnd();
            QCOMPARE(find(text), again);
            if (text.isValidUtf16() && text.indexOf(QChar(0xFEFF)) && text.indexOf(QChar(0xFFFE)))
                QCOMPARE(m_store->quickSearch(none, 0, 0, 0).value(again), text);
        }
    }

    void lists_data()
    {
        const Rows<int, int, quint32, uint, uint, QString> row;
        // 1 to 4 are contacts, 5 and 6 groups; the even ones are global; 2, 3 and 6 are members of 5.
        row("all", 0, 0, 0, 0, 0, "1 2 3 4 5 6");
        row("an offset without limit does nothing", 0, 0, 0, 3, 0, "1 2 3 4 5 6");
        row("page", 0, 0, 0, 2, 3, "3 4 5");
        row("beyond the end", 0, 0, 0, 6, 3, "");
        row("largest limit", 0, 0, 0, 0, 4294967295U, "1 2 3 4 5 6");
        row("type", 1, 0, 0, 0, 0, "1 2 3 4");
        row("location", 0, 1, 0, 0, 0, "2 4 6");
        row("both", 1, 1, 0, 0, 0, "2 4");
        row("both, page", 1, 1, 0, 1, 1, "4");
        row("group", 0, 0, 5, 0, 0, "2 3 6");
        row("group, page", 0, 0, 5, 1, 1, "3");
        row("group and type", 1, 0, 5, 0, 0, "2 3");
        row("group and location", 0, 1, 5, 0, 0, "2 6");
        row("group and location, page", 0, 1, 5, 1, 9, "6");
        row("the group does not count beside both", 1, 1, 5, 0, 0, "2 4");
        row("unknown group", 0, 0, 9, 0, 0, "");
    }
    void lists()
    {
        const auto [type, location, group, offset, limit, ids] =
            cells<int, int, quint32, uint, uint, QString>();
        for (int i = 1; i <= 6; ++i) {
            const QString text = QString::number(i);
            add(text, text, i < 5 ? people : groups, i % 2 ? personal : global);
        }
        add(s("1"), s("7"), people, global, m_store->addSource(s("other"), Store::SourceOutlook));
        for (const quint32 member : {2U, 3U, 6U, 7U, 3U})
            m_store->linkContactAndGroup(member, 5);
        const auto t = static_cast<Store::ContactType>(type);
        const auto l = static_cast<Store::ContactLocation>(location);
        QCOMPARE(spelled(m_store->getContactList(account, t, l, group, offset, limit)), ids);
        const QRegularExpression members(s("\\((\\d( |\\(\\))*)*\\)"));
        QCOMPARE(spelled(units(t, l, group, offset, limit)).remove(members), ids);
    }

    void unitsAndLinks()
    {
        const quint32 a = add(s("1"), s("a"));
        const quint32 lost = add(s("null"), s("lost"));
        const quint32 g = add(s("2"), s("g"), groups);
        const quint32 h = add(s("3"), s("h"), groups);
        const quint32 self = add(s("4"), s("self"), groups);
        add(s("5"), s("odd kind"), static_cast<Store::ContactType>(9));
        for (const auto& [member, group] : std::initializer_list<std::pair<quint32, quint32>>{
                 {a, g}, {lost, g}, {h, g}, {g, h}, {a, h}, {self, self}, {99, g}})
            m_store->linkContactAndGroup(member, group);

        // Groups that contain each other end where they meet again. A member that is null is lost with its
        // copy.
        const ContactList list = units(anyType, personal);
        QCOMPARE(spelled(list), s("a null g(a h(a g())) h(a g(a h())) self(self()) odd kind"));
        QCOMPARE(list.contactsType(), ContactList::Unknown);

        const char* const links = "SELECT * FROM groups";
        m_store->unlinkContact(a);
        m_store->unlinkContactAndGroup(lost, g);
        m_store->unlinkContactAndGroup(0, 0);
        QCOMPARE(raw(links), s("%2|%1 %1|%2 %3|%3 99|%1").arg(g).arg(h).arg(self));
        m_store->unlinkGroup(g);
        m_store->deleteContact(self);
        QCOMPARE(raw(links), s("%1|%2").arg(g).arg(h));
    }

    void deleteNotIn_data()
    {
        const Rows<QString, QString> row("uids", "left"); // uids with "|" between them
        const char* const all = "12 15 17 abc";
        row("two stay", "12|15", "12 15");
        row("leading zero", "12|0015", all);
        row("zero", "12|0", "12");
        row("empty book", "", "");
        row("an empty one among others", "12|", all);
        row("blank", " 12", all);
        row("letters", "12|abc", all);
        row("sign", "-1", all);
        row("quoted", "'12'", all);
        row("SQL", "12); DELETE FROM sources; --", all);
        row("SQL without blanks", "12)OR(1=1", all);
        row("other digits", "\u0661", all);
        row("18 digits", "12|123456789012345678", "12");
        row("19 digits", "12|1234567890123456789", all);
        row("2 MB", s("100000000000000000|").repeated(100000) + s("12"), "12");
    }
    void deleteNotIn()
    {
        QFETCH(QString, uids);
        for (const char* uid : {"12", "15", "17", "abc"})
            add(s(uid));
        add(s("18"), none, people, global);
        add(s("18"), none, groups);
        m_store->deleteContactsIfNotInUIDS(account, people, personal, {}); // no list: nothing goes
        QCOMPARE(raw("SELECT count(*) FROM contacts"), s("6"));
        m_store->deleteContactsIfNotInUIDS(account, people, personal, uids.split(QLatin1Char('|')));
        QTEST(raw("SELECT uid FROM contacts WHERE type=1 AND location=2"), "left");
        QCOMPARE(raw("SELECT uid FROM contacts WHERE uid='18'"), s("18 18"));
        QCOMPARE(raw("SELECT id FROM sources"), s("1"));
    }

    void deleteMany()
    {
        const char* const triggers = "SELECT sql FROM sqlite_master WHERE type='trigger' ORDER BY name";
        const QString triggersBefore = raw(triggers);
        const quint32 kept = m_store->addSource(s("kept"), Store::SourceQuendra);
        const quint32 group = add(s("1"), s("g"), groups, global, kept);
        m_store->linkContactAndGroup(group, group);
        m_store->addProperty(group, key(1), s("p"));
        const QString before = everything();

        const std::initializer_list<void (*)(Store&, quint32)> deletions = {
            [](Store& store, quint32 source) { store.deleteSource(source); },
            [](Store& store, quint32 source) { store.deleteContactList(source, anyType, anywhere); },
            [](Store& store, quint32 source) { store.deleteContactList(source, people, anywhere); },
            [](Store& store, quint32 source) { store.deleteContactList(source, anyType, personal); },
            [](Store& store, quint32 source) {
                store.deleteContactsIfNotInUIDS(source, people, personal, {s("0")});
            },
        };
        const int counts[] = {32, 33, 10, 330}; // few and many, the latter two in a bracket
        for (int i = 0; i < 4 * int(deletions.size()); ++i) {
            const int count = counts[i % 4];
            const bool bracket = i % 4 > 1;
            const quint32 source = m_store->addSource(s("victim"), Store::SourceOutlook);
            if (bracket)
                m_store->scopeBegin();
            for (int uid = 1; uid <= count; ++uid) {
                const quint32 id = add(QString::number(uid), none, people, personal, source);
                m_store->linkContactAndGroup(id, group);
                m_store->linkContactAndGroup(group, id);
                m_store->addProperty(id, key(1), none);
            }
            const QString version =
                raw("PRAGMA schema_version"); // grows when the trigger is away for a while
            deletions.begin()[i / 4](*m_store, source);
            QCOMPARE(find(s("1"), source), 0U); // the bracket knows that they are gone
            if (bracket)
                m_store->scopeEnd();
            QCOMPARE(raw("PRAGMA schema_version") != version, count > 32);
            m_store->deleteSource(source);
            QCOMPARE(everything(), before);
        }
        QCOMPARE(raw(triggers), triggersBefore);
    }

    void search_data()
    {
        const Rows<QString, uint, quint32, quint32, QString> row;
        row("everywhere", "ann", 0, 0, 0, "Anna Hanna Joanna");
        row("everything", "", 0, 0, 0, "Anna Hanna Joanna a% \u00E4");
        row("case of ASCII", "HANNA", 0, 0, 0, "Hanna");
        row("case beyond ASCII", "\u00C4", 0, 0, 0, "");
        row("wildcards", "a%_", 0, 0, 0, "Anna Hanna Joanna a%");
        row("no quoting needed", "'", 0, 0, 0, "");
        row("limit", "ann", 2, 0, 0, "Anna Hanna");
        row("one source", "ann", 0, 1, 0, "Anna Hanna");
        row("one source, limit", "ann", 1, 1, 0, "Anna");
        row("the second alone does not count", "ann", 0, 0, 2, "Anna Hanna Joanna");
        row("the second alone with a limit", "ann", 10, 0, 2, "");
        row("two sources", "ann", 0, 3, 2, "Joanna");
        row("two sources, limit", "ann", 2, 2, 1, "Anna Hanna");
        row("too long a pattern", QString(60000, QLatin1Char('a')), 0, 0, 0, "");
    }
    void search()
    {
        const auto [text, limit, source1, source2, names] = cells<QString, uint, quint32, quint32, QString>();
        const quint32 second = m_store->addSource(s("second"), Store::SourceQuendra);
        add(s("1"), s("Anna"));
        add(s("2"), s("Hanna"), groups);
        for (const char* name : {"Joanna", "a%", "\u00E4"})
            add(s(name), s(name), people, personal, second);
        const QMap<quint32, QString> found = m_store->quickSearch(text, limit, source1, source2);
        QCOMPARE(QStringList(found.values()).join(QLatin1Char(' ')), names);
    }
};
QTEST_GUILESS_MAIN(ContactStoreTest)
#include "tst_contactstore.moc"
