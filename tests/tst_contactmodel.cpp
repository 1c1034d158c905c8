#include "contactgroup.h"
#include "contactlist.h"
#include "outlookcontact.h"
#include "outlookcontactgroup.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "xmltext.h"

#include <QtTest>

#include <typeinfo>

Q_DECLARE_METATYPE(QuendraContact)
Q_DECLARE_METATYPE(ContactUnitPtr)

namespace {

template <typename T>
T named(const QString& name)
{
    T unit;
    unit.setName(name);
    return unit;
}

QuendraContact withUrl(const QString& name, const QString& url)
{
    auto contact = named<QuendraContact>(name);
    contact.setUrl(QUrl(url));
    return contact;
}

} // namespace

/// Contacts, groups and lists: their XML, what equals what, and who owns what.
class ContactModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void contactUrl_data();
    void contactUrl();
    void contactFieldsAreOverwritten();
    void contactXml_data();
    void contactXml();
    void storedContactKeepsMissingFields();
    void groupNeedsNameAndDescription();
    void groupXml();
    void equality_data();
    void equality();
    void listEquality_data();
    void listEquality();
    void copyKeepsTheClass();
    void listOwnsClones();
    void listTakesOverPartOfItself();
    void listRemoves();
    void nullUnitsAreSkipped();
};

void ContactModelTest::contactUrl_data()
{
    QTest::addColumn<QString>("xml");
    QTest::addColumn<QString>("url");

    QTest::newRow("contact_url") << "<contact_url>http://h/qdws/v1/7</contact_url>"
                                 << "http://h/qdws/v1/7";
    QTest::newRow("user_url alone") << "<user_url>http://h/u</user_url>"
                                    << "http://h/u";
    QTest::newRow("both") << "<user_url>http://h/u</user_url><contact_url>http://h/c</contact_url>"
                          << "http://h/c";
    QTest::newRow("an empty contact_url still wins") << "<contact_url/><user_url>http://h/u</user_url>"
                                                     << "";
    QTest::newRow("https") << "<contact_url>https://h:8443/c?a=1</contact_url>"
                           << "http://h:8443/c?a=1";
    QTest::newRow("capitals") << "<user_url>HTTPS://h/c</user_url>"
                              << "http://h/c";
    QTest::newRow("ftp") << "<contact_url>ftp://h/c</contact_url>"
                         << "ftp://h/c";
    QTest::newRow("blank in the path") << "<contact_url>http://h/a b</contact_url>"
                                       << "http://h/a%20b";
    QTest::newRow("missing") << "<name>n</name>"
                             << "";
    QTest::newRow("nested too deep") << "<x><contact_url>http://h/c</contact_url></x>"
                                     << "";
}

void ContactModelTest::contactUrl()
{
    QFETCH(QString, xml);
    QFETCH(QString, url);

    QuendraContact contact = withUrl(QString(), QStringLiteral("http://old/1"));
    contact.setUser(QStringLiteral("kept"));
    QVERIFY(readFax(contact, xml));
    QCOMPARE(contact.url().toString(QUrl::FullyEncoded), url);
    QCOMPARE(contact.user(), QStringLiteral("kept"));
}

void ContactModelTest::contactFieldsAreOverwritten()
{
    Contact contact = named<Contact>(QStringLiteral("old"));
    contact.setPhone(QStringLiteral("1"));
    contact.setEmail(QStringLiteral("old@x"));
    QVERIFY(readFax(contact, QStringLiteral("<fax_number>1</fax_number><fax_number>2</fax_number>"
                                            "<name>A &amp; <![CDATA[<B>]]></name>"
                                            "<organization><b>bo</b>ld</organization>")));
    QCOMPARE(contact.name(), QStringLiteral("A & <B>"));
    QCOMPARE(contact.fax(), QStringLiteral("1"));
    QCOMPARE(contact.organization(), QStringLiteral("bold"));
    QCOMPARE(contact.phone(), QString());
    QCOMPARE(contact.email(), QString());

    QVERIFY(contact.readFax(QDomElement(), 1));
    QCOMPARE(contact.name(), QString());
}

void ContactModelTest::contactXml_data()
{
    QTest::addColumn<QuendraContact>("contact");
    QTest::addColumn<QString>("fax");
    QTest::addColumn<QString>("storage");

    QTest::newRow("empty") << QuendraContact() << ""
                           << "<name></name><fax_number></fax_number>";

    QuendraContact some = named<QuendraContact>(QStringLiteral("A<B"));
    some.setEmail(QStringLiteral("a@b"));
    QTest::newRow("some") << some << "<name>A&lt;B</name><email_address>a@b</email_address>"
                          << "<name>A&lt;B</name><email_address>a@b</email_address><fax_number></fax_number>";

    QuendraContact full = withUrl(QStringLiteral("n"), QStringLiteral("http://h/1"));
    full.setUser(QStringLiteral("u"));
    full.setEmail(QStringLiteral("e"));
    full.setPhone(QStringLiteral("p"));
    full.setFax(QStringLiteral("f"));
    full.setOrganization(QStringLiteral("o"));
    const QString fields =
        QStringLiteral("<name>n</name><email_address>e</email_address><phone_number>p"
                       "</phone_number><fax_number>f</fax_number><organization>o</organization>");
    QTest::newRow("full") << full
                          << QStringLiteral("<contact_url>http://h/1</contact_url><username>u</username>") +
                                 fields
                          << fields;
}

void ContactModelTest::contactXml()
{
    QFETCH(QuendraContact, contact);
    QFETCH(QString, fax);
    QFETCH(QString, storage);

    QCOMPARE(writtenFax(contact), fax);
    QCOMPARE(writtenStorage(contact), storage);

    QuendraContact again;
    QVERIFY(readFax(again, fax));
    QVERIFY(again == contact);
}

void ContactModelTest::storedContactKeepsMissingFields()
{
    Contact contact = named<Contact>(QStringLiteral("old"));
    contact.setPhone(QStringLiteral("1"));
    contact.setFax(QStringLiteral("2"));
    QVERIFY(!readStorage(contact, QStringLiteral("<fax_number>3</fax_number>")));
    QCOMPARE(contact.fax(), QStringLiteral("2"));
    QVERIFY(readStorage(contact, QStringLiteral("<name/><fax_number>3</fax_number>")));
    QCOMPARE(contact.name(), QString());
    QCOMPARE(contact.fax(), QStringLiteral("3"));
    QCOMPARE(contact.phone(), QStringLiteral("1"));
}

void ContactModelTest::groupNeedsNameAndDescription()
{
    QuendraContactGroup group = named<QuendraContactGroup>(QStringLiteral("old"));
    group.setUrl(QUrl(QStringLiteral("http://old/1")));
    const QString url = QStringLiteral("<contact_group_url>HTTPS://h/2</contact_group_url>");
    QVERIFY(!readFax(group, QStringLiteral("<name>new</name>") + url));
    QVERIFY(!readFax(group, QStringLiteral("<description>new</description>") + url));
    QCOMPARE(group.name(), QStringLiteral("old"));
    QCOMPARE(group.url().toString(), QStringLiteral("http://old/1"));

    QVERIFY(readFax(group, QStringLiteral("<name/><description>d</description>")));
    QCOMPARE(group.name(), QString());
    QCOMPARE(group.description(), QStringLiteral("d"));
    QCOMPARE(group.url().toString(), QStringLiteral("http://old/1"));
    QVERIFY(readFax(group, QStringLiteral("<name/><description/>") + url));
    QCOMPARE(group.url().toString(), QStringLiteral("http://h/2"));

    QVERIFY(!readStorage(group, QStringLiteral("<name/><description/>")));
    QCOMPARE(writtenStorage(group), QStringLiteral("refused"));
    QCOMPARE(writtenFax(ContactGroup()), QStringLiteral("refused"));
}

void ContactModelTest::groupXml()
{
    QuendraContactGroup group = named<QuendraContactGroup>(QStringLiteral("g"));
    group.addContact(withUrl(QStringLiteral("a"), QStringLiteral("http://h/1")));
    group.addContact(named<QuendraContact>(QStringLiteral("without url")));
    group.addContact(named<Contact>(QStringLiteral("of another class")));
    group.addContact(QuendraContactGroup());
    group.addContact(withUrl(QStringLiteral("b"), QStringLiteral("http://h/2")));
    QCOMPARE(writtenFax(group),
             QStringLiteral("<name>g</name><contact>http://h/1</contact><contact>http://h/2</contact>"));

    group.setUrl(QUrl(QStringLiteral("http://h/3")));
    group.setDescription(QStringLiteral("d"));
    group.contacts() = ContactList();
    QCOMPARE(writtenFax(group), QStringLiteral("<contact_group_url>http://h/3</contact_group_url>"
                                               "<name>g</name><description>d</description>"));
}

void ContactModelTest::equality_data()
{
    QTest::addColumn<ContactUnitPtr>("left");
    QTest::addColumn<ContactUnitPtr>("right");
    QTest::addColumn<bool>("equal");

    const auto row = [](const char* name, const ContactUnit& left, const ContactUnit& right, bool equal) {
        QTest::newRow(name) << ContactUnitPtr(left.copy()) << ContactUnitPtr(right.copy()) << equal;
    };
    const QString n = QStringLiteral("n");
    const auto contact = named<Contact>(n);
    row("same", contact, contact, true);
    row("base on the left", contact, withUrl(n, n), true);
    row("base on the right", withUrl(n, n), contact, false);
    row("contact and group", Contact(), ContactGroup(), false);
    row("siblings", QuendraContact(), OutlookContact(), false);
    row("case counts", contact, named<Contact>(QStringLiteral("N")), false);

    const auto differs = [&](const char* name, auto change) {
        QuendraContact changed = named<QuendraContact>(n);
        change(changed);
        row(name, named<QuendraContact>(n), changed, false);
    };
    differs("email", [&](QuendraContact& c) { c.setEmail(n); });
    differs("phone", [&](QuendraContact& c) { c.setPhone(n); });
    differs("fax", [&](QuendraContact& c) { c.setFax(n); });
    differs("organization", [&](QuendraContact& c) { c.setOrganization(n); });
    differs("user", [&](QuendraContact& c) { c.setUser(n); });
    differs("url", [&](QuendraContact& c) { c.setUrl(QUrl(n)); });

    OutlookContact outlook = named<OutlookContact>(n);
    outlook.setUid(n);
    row("uid", outlook, named<OutlookContact>(n), false);
    OutlookContactGroup outlookGroup;
    outlookGroup.setUid(n);
    row("group uid", outlookGroup, OutlookContactGroup(), false);
    QuendraContactGroup group;
    group.setUrl(QUrl(n));
    row("group url", group, QuendraContactGroup(), false);
    row("group as base", ContactGroup(), group, true);
    ContactGroup described;
    described.setDescription(n);
    row("description", described, ContactGroup(), false);
    ContactGroup filled;
    filled.addContact(contact);
    row("members", filled, ContactGroup(), false);
    row("equal members", filled, filled, true);
}

void ContactModelTest::equality()
{
    QFETCH(ContactUnitPtr, left);
    QFETCH(ContactUnitPtr, right);
    QTEST(*left == *right, "equal");
}

void ContactModelTest::listEquality_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<bool>("equal");

    QTest::newRow("empty") << ""
                           << "" << true;
    QTest::newRow("order") << "abc"
                           << "cab" << true;
    QTest::newRow("size") << "ab"
                          << "abb" << false;
    QTest::newRow("other") << "ab"
                           << "ac" << false;
    QTest::newRow("duplicates on the left") << "aab"
                                            << "abc" << true;
    QTest::newRow("duplicates on the right") << "abc"
                                             << "aab" << false;
}

void ContactModelTest::listEquality()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    const auto list = [](const QString& names) {
        ContactList result;
        for (const QChar name : names)
            result.addContact(named<Contact>(name));
        return result;
    };
    ContactList first = list(left);
    first.setContactsType(ContactList::GlobalContacts);
    QTEST(first == list(right), "equal");
}

void ContactModelTest::copyKeepsTheClass()
{
    const auto check = [](const ContactUnit& unit) {
        const ContactUnitPtr copy(unit.copy());
        return typeid(*copy) == typeid(unit) && *copy == unit && unit == *copy;
    };
    OutlookContactGroup inner;
    inner.setUid(QStringLiteral("i"));
    OutlookContactGroup outer = named<OutlookContactGroup>(QStringLiteral("o"));
    outer.addContact(inner);
    outer.addContact(withUrl(QStringLiteral("n"), QStringLiteral("http://h/1")));
    OutlookContact outlook = named<OutlookContact>(QStringLiteral("o"));
    outlook.setUid(QStringLiteral("u"));

    QVERIFY(check(named<Contact>(QStringLiteral("n"))));
    QVERIFY(check(named<ContactGroup>(QStringLiteral("n"))));
    QVERIFY(check(withUrl(QStringLiteral("n"), QStringLiteral("http://h/1"))));
    QVERIFY(check(QuendraContactGroup()));
    QVERIFY(check(outlook));
    QVERIFY(check(outer));
}

void ContactModelTest::listOwnsClones()
{
    ContactList list;
    list.setContactsType(ContactList::OutlookContacts);
    Contact source = named<Contact>(QStringLiteral("a"));
    ContactUnit& first = list.addContact(source);
    list.addContact(source);
    QCOMPARE(&first, list.contacts().at(0).data());
    source.setName(QStringLiteral("b"));
    static_cast<Contact&>(first).setName(QStringLiteral("c"));
    QVERIFY(list.contains(named<Contact>(QStringLiteral("a"))));
    QVERIFY(!list.contains(source));

    ContactList copy = list;
    QCOMPARE(copy.contactsType(), ContactList::OutlookContacts);
    QVERIFY(copy == list);
    static_cast<Contact&>(*copy.contacts()[0]).setName(QStringLiteral("d"));
    QCOMPARE(static_cast<Contact&>(first).name(), QStringLiteral("c"));
    copy = copy;
    QCOMPARE(copy.contacts().size(), 2);
}

void ContactModelTest::listTakesOverPartOfItself()
{
    // The list's old units go when it is assigned, and the new value stands in one of them.
    ContactGroup group;
    group.addContact(named<Contact>(QStringLiteral("member")));
    ContactList list;
    ContactUnit& stored = list.addContact(group);
    list = static_cast<ContactGroup&>(stored).contacts();
    QCOMPARE(list.contacts().size(), 1);
    QVERIFY(list.contains(named<Contact>(QStringLiteral("member"))));
    list.addContact(*list.contacts().at(0));
    list.removeContact(*list.contacts().at(0));
    QCOMPARE(list.contacts().size(), 1);
}

void ContactModelTest::listRemoves()
{
    ContactList list;
    for (const char name : {'a', 'b', 'a', 'c'})
        list.addContact(named<Contact>(QString(QLatin1Char(name))));
    list.removeContact(-1);
    list.removeContact(4);
    list.removeContact(named<Contact>(QStringLiteral("z")));
    QCOMPARE(list.contacts().size(), 4);
    list.removeContact(named<Contact>(QStringLiteral("a")));
    QCOMPARE(list.contacts().size(), 3);
    QVERIFY(list.contains(named<Contact>(QStringLiteral("a"))));
    list.removeContact(2);
    QVERIFY(!list.contains(named<Contact>(QStringLiteral("c"))));

    // The unit that is handed in decides: a QuendraContact equals no plain contact.
    list.removeContact(named<QuendraContact>(QStringLiteral("b")));
    QCOMPARE(list.contacts().size(), 2);
}

void ContactModelTest::nullUnitsAreSkipped()
{
    ContactList list;
    list.contacts().append(ContactUnitPtr());
    list.addContact(named<Contact>(QStringLiteral("a")));
    QVERIFY(list.contains(named<Contact>(QStringLiteral("a"))));
    QVERIFY(list == list);
    QCOMPARE(ContactList(list).contacts().size(), 1);
    list.removeContact(named<Contact>(QStringLiteral("a")));
    QCOMPARE(list.contacts().size(), 1);
    list.removeContact(0);
    QVERIFY(list.contacts().isEmpty());

    QuendraContactGroup group;
    group.contacts().contacts().append(ContactUnitPtr());
    QCOMPARE(writtenFax(group), QString());
}

QTEST_GUILESS_MAIN(ContactModelTest)
#include "tst_contactmodel.moc"
