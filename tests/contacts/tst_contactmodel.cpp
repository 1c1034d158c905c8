#include "contactgroup.h"
#include "contactlist.h"
#include "outlookcontact.h"
#include "outlookcontactgroup.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "shorthand.h"
#include "xmltext.h"

#include <QtTest>

#include <typeinfo>

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
    void contactUrl_data()
    {
        const Rows<QString, QString> row("xml", "url");

        row("contact_url", elements("contact_url=http://h/qdws/v1/7"), "http://h/qdws/v1/7");
        row("user_url alone", elements("user_url=http://h/u"), "http://h/u");
        row("both", elements("user_url=http://h/u contact_url=http://h/c"), "http://h/c");
        row("an empty contact_url still wins", elements("contact_url= user_url=http://h/u"), "");
        row("https", elements("contact_url=https://h:8443/c?a=1"), "http://h:8443/c?a=1");
        row("capitals", elements("user_url=HTTPS://h/c"), "http://h/c");
        row("ftp", elements("contact_url=ftp://h/c"), "ftp://h/c");
        row("blank in the path", "<contact_url>http://h/a b</contact_url>", "http://h/a%20b");
        row("missing", "<name>n</name>", "");
        row("nested too deep", "<x><contact_url>http://h/c</contact_url></x>", "");
    }
    void contactUrl()
    {
        QFETCH(QString, xml);
        QFETCH(QString, url);

        QuendraContact contact = withUrl(QString(), s("http://old/1"));
        contact.setUser(s("kept"));
        QVERIFY(readFax(contact, xml));
        QCOMPARE(contact.url().toString(QUrl::FullyEncoded), url);
        QCOMPARE(contact.user(), s("kept"));
    }

    void contactFieldsAreOverwritten()
    {
        Contact contact = named<Contact>(s("old"));
        contact.setPhone(s("1"));
        contact.setEmail(s("old@x"));
        QVERIFY(readFax(contact, s("<fax_number>1</fax_number><fax_number>2</fax_number><name>A &amp; "
                                   "<![CDATA[<B>]]></name><organization><b>bo</b>ld</organization>")));
        QCOMPARE(contact.name(), s("A & <B>"));
        QCOMPARE(contact.fax(), s("1"));
        QCOMPARE(contact.organization(), s("bold"));
        QCOMPARE(contact.phone(), QString());
        QCOMPARE(contact.email(), QString());

        QVERIFY(contact.readFax(QDomElement(), 1));
        QCOMPARE(contact.name(), QString());
    }

    void contactXml_data()
    {
        const Rows<QString, QString, QString> row("fax", "storage", "texts");
        row("empty", "", elements("name= fax_number="), "|||||");
        const QString some = elements("name=A&lt;B email_address=a@b");
        row("some", some, some + elements("fax_number="), "A<B|a@b||||");
        const QString full = elements("name=n email_address=e phone_number=p fax_number=f organization=o");
        row("full", elements("contact_url=http://h/1 username=u") + full, full, "n|e|p|f|o|u");
    }
    void contactXml()
    {
        QFETCH(QString, fax);
        QuendraContact contact;
        QVERIFY(readFax(contact, fax));
        QTEST((QStringList{contact.name(), contact.email(), contact.phone(), contact.fax(),
                           contact.organization(), contact.user()}
                   .join(QLatin1Char('|'))),
              "texts");
        QCOMPARE(writtenFax(contact), fax);
        QTEST(writtenStorage(contact), "storage");
    }

    void storedContactKeepsMissingFields()
    {
        Contact contact = named<Contact>(s("old"));
        contact.setPhone(s("1"));
        contact.setFax(s("2"));
        QVERIFY(!readStorage(contact, elements("fax_number=3")));
        QCOMPARE(contact.fax(), s("2"));
        QVERIFY(readStorage(contact, elements("name= fax_number=3")));
        QCOMPARE(contact.name(), QString());
        QCOMPARE(contact.fax(), s("3"));
        QCOMPARE(contact.phone(), s("1"));
    }

    void groupNeedsNameAndDescription()
    {
        QuendraContactGroup group = named<QuendraContactGroup>(s("old"));
        group.setUrl(QUrl(s("http://old/1")));
        const QString url = elements("contact_group_url=HTTPS://h/2");
        QVERIFY(!readFax(group, elements("name=new") + url));
        QVERIFY(!readFax(group, elements("description=new") + url));
        QCOMPARE(group.name(), s("old"));
        QCOMPARE(group.url().toString(), s("http://old/1"));

        QVERIFY(readFax(group, elements("name= description=d")));
        QCOMPARE(group.name(), QString());
        QCOMPARE(group.description(), s("d"));
        QCOMPARE(group.url().toString(), s("http://old/1"));
        QVERIFY(readFax(group, elements("name= description=") + url));
        QCOMPARE(group.url().toString(), s("http://h/2"));

        QVERIFY(!readStorage(group, elements("name= description=")));
        QCOMPARE(writtenStorage(group), s("refused"));
        QCOMPARE(writtenFax(ContactGroup()), s("refused"));
    }

    void groupXml()
    {
        QuendraContactGroup group = named<QuendraContactGroup>(s("g"));
        group.addContact(withUrl(s("a"), s("http://h/1")));
        group.addContact(named<QuendraContact>(s("without url")));
        group.addContact(named<Contact>(s("of another class")));
        group.addContact(QuendraContactGroup());
        group.addContact(withUrl(s("b"), s("http://h/2")));
        QCOMPARE(writtenFax(group), elements("name=g contact=http://h/1 contact=http://h/2"));

        group.setUrl(QUrl(s("http://h/3")));
        group.setDescription(s("d"));
        group.contacts() = ContactList();
        QCOMPARE(writtenFax(group), elements("contact_group_url=http://h/3 name=g description=d"));
    }

    void equality_data()
    {
        QTest::addColumn<ContactUnitPtr>("left");
        QTest::addColumn<ContactUnitPtr>("right");
        QTest::addColumn<bool>("equal");

        const auto row = [](const char* name, const ContactUnit& left, const ContactUnit& right, bool equal) {
            QTest::newRow(name) << ContactUnitPtr(left.copy()) << ContactUnitPtr(right.copy()) << equal;
        };
        const QString n = s("n");
        const auto contact = named<Contact>(n);
        row("same", contact, contact, true);
        row("base on the left", contact, withUrl(n, n), true);
        row("base on the right", withUrl(n, n), contact, false);
        row("contact and group", Contact(), ContactGroup(), false);
        row("siblings", QuendraContact(), OutlookContact(), false);
        row("case counts", contact, named<Contact>(s("N")), false);

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
    void equality()
    {
        QFETCH(ContactUnitPtr, left);
        QFETCH(ContactUnitPtr, right);
        QTEST(*left == *right, "equal");
    }

    void listEquality()
    {
        const auto list = [](const char* names) {
            ContactList result;
            for (; *names; ++names)
                result.addContact(named<Contact>(QString(QLatin1Char(*names))));
            return result;
        };
        ContactList global = list("abc");
        global.setContactsType(ContactList::GlobalContacts);
        QVERIFY(ContactList() == ContactList());
        QVERIFY(global == list("cab")); // neither type nor order counts
        QVERIFY(!(list("ab") == list("abb")));
        QVERIFY(!(list("ab") == list("ac")));
        QVERIFY(list("aab") == list("abc")); // only the members of the left one are looked for
        QVERIFY(!(list("abc") == list("aab")));
    }

    void copyKeepsTheClass()
    {
        const auto keeps = [](const ContactUnit& unit) {
            const ContactUnitPtr copy(unit.copy());
            return typeid(*copy) == typeid(unit) && *copy == unit && unit == *copy;
        };
        OutlookContactGroup outer = named<OutlookContactGroup>(s("o"));
        outer.addContact(named<OutlookContactGroup>(s("i")));
        outer.addContact(withUrl(s("n"), s("http://h/1")));
        OutlookContact outlook = named<OutlookContact>(s("o"));
        outlook.setUid(s("u"));
        QVERIFY(keeps(named<Contact>(s("n"))) && keeps(named<ContactGroup>(s("n"))) && keeps(outlook));
        QVERIFY(keeps(withUrl(s("n"), s("http://h/1"))) && keeps(QuendraContactGroup()) && keeps(outer));
    }

    void listOwnsClones()
    {
        ContactList list;
        list.setContactsType(ContactList::OutlookContacts);
        Contact source = named<Contact>(s("a"));
        ContactUnit& first = list.addContact(source);
        list.addContact(source);
        QCOMPARE(&first, list.contacts().at(0).data());
        source.setName(s("b"));
        static_cast<Contact&>(first).setName(s("c"));
        QVERIFY(list.contains(named<Contact>(s("a"))));
        QVERIFY(!list.contains(source));

        ContactList copy = list;
        QCOMPARE(copy.contactsType(), ContactList::OutlookContacts);
        QVERIFY(copy == list);
        static_cast<Contact&>(*copy.contacts()[0]).setName(s("d"));
        QCOMPARE(static_cast<Contact&>(first).name(), s("c"));
        copy = copy;
        QCOMPARE(copy.contacts().size(), 2);
    }

    void listTakesOverPartOfItself()
    {
        // The list's old units go when it is assigned, and the new value stands in one of them.
        ContactGroup group;
        group.addContact(named<Contact>(s("member")));
        ContactList list;
        ContactUnit& stored = list.addContact(group);
        list = static_cast<ContactGroup&>(stored).contacts();
        QCOMPARE(list.contacts().size(), 1);
        QVERIFY(list.contains(named<Contact>(s("member"))));
        list.addContact(*list.contacts().at(0));
        list.removeContact(*list.contacts().at(0));
        QCOMPARE(list.contacts().size(), 1);
    }

    void listRemoves()
    {
        ContactList list;
        for (const char name : {'a', 'b', 'a', 'c'})
            list.addContact(named<Contact>(QString(QLatin1Char(name))));
        list.removeContact(-1);
        list.removeContact(4);
        list.removeContact(named<Contact>(s("z")));
        QCOMPARE(list.contacts().size(), 4);
        list.removeContact(named<Contact>(s("a")));
        QCOMPARE(list.contacts().size(), 3);
        QVERIFY(list.contains(named<Contact>(s("a"))));
        list.removeContact(2);
        QVERIFY(!list.contains(named<Contact>(s("c"))));

        // The unit that is handed in decides: a QuendraContact equals no plain contact.
        list.removeContact(named<QuendraContact>(s("b")));
        QCOMPARE(list.contacts().size(), 2);
    }

    void nullUnitsAreSkipped()
    {
        ContactList list;
        list.contacts().append(ContactUnitPtr());
        list.addContact(named<Contact>(s("a")));
        QVERIFY(list.contains(named<Contact>(s("a"))));
        QVERIFY(list == list);
        QCOMPARE(ContactList(list).contacts().size(), 1);
        list.removeContact(named<Contact>(s("a")));
        QCOMPARE(list.contacts().size(), 1);
        list.removeContact(0);
        QVERIFY(list.contacts().isEmpty());

        QuendraContactGroup group;
        group.contacts().contacts().append(ContactUnitPtr());
        QCOMPARE(writtenFax(group), QString());
    }
};
QTEST_GUILESS_MAIN(ContactModelTest)
#include "tst_contactmodel.moc"
