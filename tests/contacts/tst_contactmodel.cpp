#include "contactgroup.h"
#include "contactlist.h"
#include "outlookcontact.h"
#include "outlookcontactgroup.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "recepient.h"
#include "sender.h"
#include "shorthand.h"
#include "xmltext.h"

#include <QtTest>

#include <typeinfo>

namespace {

template <typename T>
T named(const QString& name)
{
    T unit;
    unit.setName(name);
    return unit;
}

QString spelled(const Contact& c)
{
    return QStringList{c.name(), c.email(), c.phone(), c.fax(), c.organization()}.join(QLatin1Char('|'));
}

/// Contacts of one letter each.
ContactList list(const char* names)
{
    ContactList result;
    for (; *names; ++names)
        result.addContact(named<Contact>(QString(QLatin1Char(*names))));
    return result;
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
    void contactUrl()
    {
        const std::pair<QString, const char*> urls[] = {
            {elements("contact_url=http://h/qdws/v1/7"), "http://h/qdws/v1/7"},
            {elements("user_url=http://h/u"), "http://h/u"},
            {elements("user_url=http://h/u contact_url=http://h/c"), "http://h/c"},
            {elements("contact_url= user_url=http://h/u"), ""}, // empty, it still wins
            {elements("contact_url=https://h:8443/c?a=1"), "http://h:8443/c?a=1"},
            {elements("user_url=HTTPS://h/c"), "http://h/c"},
            {elements("contact_url=ftp://h/c"), "ftp://h/c"},
            {tag("contact_url", "http://h/a b"), "http://h/a%20b"},
            {s("<name>n</name>"), ""},
            {s("<x><contact_url>http://h/c</contact_url></x>"), ""}};
        for (const auto& [xml, url] : urls) {
            QuendraContact contact = withUrl(QString(), s("http://old/1"));
            contact.setUser(s("kept"));
            QVERIFY(readFax(contact, xml));
            QCOMPARE(contact.url().toString(QUrl::FullyEncoded), s(url));
            QCOMPARE(contact.user(), s("kept"));
        }
    }

    void contactXml()
    {
        const QString some = elements("name=A&lt;B email_address=a@b");
        const QString full = elements("name=n email_address=e phone_number=p fax_number=f organization=o");
        const std::tuple<QString, QString, const char*> contacts[] = {
            {QString(), elements("name= fax_number="), "|||||"},
            {some, some + elements("fax_number="), "A<B|a@b||||"},
            {elements("contact_url=http://h/1 username=u") + full, full, "n|e|p|f|o|u"}};
        for (const auto& [fax, storage, texts] : contacts) {
            QuendraContact contact;
            QVERIFY(readFax(contact, fax));
            QCOMPARE(spelled(contact) + QLatin1Char('|') + contact.user(), s(texts));
            QCOMPARE(writtenFax(contact), fax);
            QCOMPARE(writtenStorage(contact), storage);
        }
    }

    void contactReadAgain()
    {
        Contact contact;
        QVERIFY(readFax(contact, elements("name=old email_address=e phone_number=1 fax_number=2")));
        // a settings file leaves alone what it does not have
        QVERIFY(!readStorage(contact, elements("fax_number=3")));
        QCOMPARE(spelled(contact), s("old|e|1|2|"));
        QVERIFY(readStorage(contact, elements("name= fax_number=3")));
        QCOMPARE(spelled(contact), s("|e|1|3|"));
        // a server's answer empties it
        QVERIFY(readFax(contact, s("<fax_number>1</fax_number><fax_number>2</fax_number><name>A &amp; "
                                   "<![CDATA[<B>]]></name><organization><b>bo</b>ld</organization>")));
        QCOMPARE(spelled(contact), s("A & <B>|||1|bold"));
        QVERIFY(contact.readFax(QDomElement(), 1));
        QCOMPARE(spelled(contact), s("||||"));
    }

    void groupNeedsNameAndDescription()
    {
        QuendraContactGroup group = named<QuendraContactGroup>(s("old"));
        group.setUrl(QUrl(s("http://old/1")));
        const auto spelled = [&group] {
            return group.name() + QLatin1Char('|') + group.description() + QLatin1Char('|') +
                   group.url().toString();
        };
        const QString url = elements("contact_group_url=HTTPS://h/2");
        QVERIFY(!readFax(group, elements("name=new") + url));
        QVERIFY(!readFax(group, elements("description=new") + url));
        QCOMPARE(spelled(), s("old||http://old/1"));
        QVERIFY(readFax(group, elements("name= description=d")));
        QCOMPARE(spelled(), s("|d|http://old/1"));
        QVERIFY(readFax(group, elements("name= description=") + url));
        QCOMPARE(spelled(), s("||http://h/2"));
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

    void equality()
    {
        const QString n = s("n");
        const auto contact = named<Contact>(n);
        QVERIFY(contact == contact);
        QVERIFY(contact == withUrl(n, n) && !(withUrl(n, n) == contact)); // the left one's fields count
        QVERIFY(!(Contact() == ContactGroup()) && !(QuendraContact() == OutlookContact()));
        QVERIFY(!(contact == named<Contact>(s("N"))));
        for (const char* field :
             {"email_address", "phone_number", "fax_number", "organization", "username", "contact_url"}) {
            QuendraContact changed;
            QVERIFY(readFax(changed, tag(field, "n")));
            QVERIFY2(!(QuendraContact() == changed), field);
        }

        OutlookContact outlook = named<OutlookContact>(n);
        outlook.setUid(n);
        QVERIFY(!(outlook == named<OutlookContact>(n)));
        OutlookContactGroup outlookGroup;
        outlookGroup.setUid(n);
        QVERIFY(!(outlookGroup == OutlookContactGroup()));
        QuendraContactGroup group;
        group.setUrl(QUrl(n));
        QVERIFY(!(group == QuendraContactGroup()) && ContactGroup() == group);
        ContactGroup described;
        described.setDescription(n);
        QVERIFY(!(described == ContactGroup()));
        ContactGroup filled;
        filled.addContact(contact);
        QVERIFY(!(filled == ContactGroup()) && filled == filled);
    }

    void listEquality()
    {
        ContactList global = list("abc");
        global.setContactsType(ContactList::GlobalContacts);
        QVERIFY(ContactList() == ContactList());
        QVERIFY(global == list("cab")); // neither type nor order counts
        QVERIFY(!(list("ab") == list("abb")) && !(list("ab") == list("ac")));
        // only the members of the left one are looked for
        QVERIFY(list("aab") == list("abc") && !(list("abc") == list("aab")));
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
        QVERIFY(list.contains(named<Contact>(s("a"))) && !list.contains(source));

        ContactList copy = list;
        QCOMPARE(copy.contactsType(), ContactList::OutlookContacts);
        QVERIFY(copy == list);
        static_cast<Contact&>(*copy.contacts()[0]).setName(s("d"));
        QCOMPARE(static_cast<Contact&>(first).name(), s("c"));
        copy = copy;
        QCOMPARE(copy.contacts().size(), 2);

        // The list's old units go when it is assigned, and the new value stands in one of them.
        ContactGroup group;
        group.addContact(named<Contact>(s("member")));
        ContactList part;
        part = static_cast<ContactGroup&>(part.addContact(group)).contacts();
        QCOMPARE(part.contacts().size(), 1);
        QVERIFY(part.contains(named<Contact>(s("member"))));
        part.addContact(*part.contacts().at(0));
        part.removeContact(*part.contacts().at(0));
        QCOMPARE(part.contacts().size(), 1);
    }

    void listRemoves()
    {
        ContactList units = list("abac");
        units.removeContact(-1);
        units.removeContact(4);
        units.removeContact(named<Contact>(s("z")));
        QCOMPARE(units.contacts().size(), 4);
        units.removeContact(named<Contact>(s("a")));
        QVERIFY(units == list("bac"));
        units.removeContact(2);
        QVERIFY(units == list("ba"));
        // The unit that is handed in decides: a QuendraContact equals no plain contact.
        units.removeContact(named<QuendraContact>(s("b")));
        QCOMPARE(units.contacts().size(), 2);
    }

    void nullUnitsAreSkipped()
    {
        QuendraContactGroup group;
        ContactList& units = group.contacts();
        units.contacts().append(ContactUnitPtr());
        QCOMPARE(writtenFax(group), QString());
        units.addContact(named<Contact>(s("a")));
        QVERIFY(units.contains(named<Contact>(s("a"))) && units == units);
        QCOMPARE(ContactList(units).contacts().size(), 1);
        units.removeContact(named<Contact>(s("a")));
        QCOMPARE(units.contacts().size(), 1);
        units.removeContact(0);
        QVERIFY(units.contacts().isEmpty());
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
        QVERIFY(keeps(named<Sender>(s("n"))) && keeps(named<Recepient>(s("n"))));
    }
};
QTEST_GUILESS_MAIN(ContactModelTest)
#include "tst_contactmodel.moc"
