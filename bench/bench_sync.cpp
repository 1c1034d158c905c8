// The first synchronisation of a book, compared with fetching, parsing and inserting the same document
// directly.

#include "bench.h"
#include "benchserver.h"
#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "simserver.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace {

struct Server
{
    SimServer sim;

    Server(int round, int contacts)
        : sim(options(round, contacts))
    {
        if (!sim.start())
            fail("no server");
    }

    static SimOptions options(int round, int contacts)
    {
        SimOptions options;
        options.contacts = contacts;
        options.seed = quint32(round + 1);
        options.keepRequests = false;
        return options;
    }
};

class Folder
{
public:
    Folder() { qputenv("APPDATA", m_dir.path().toLocal8Bit()); }
    QString file() const
    {
        return m_dir.filePath(QStringLiteral("Quendra Client Software/Contacts/contacts.sqlite"));
    }

private:
    QTemporaryDir m_dir;
};

double sync(int round, int contacts)
{
    const Folder folder;
    Server server(round, contacts);
    ContactManager manager;
    FaxManager faxes(&manager);
    BareServer fax(faxes, server.sim.address());
    fax.initProvider();
    const QPointer<ContactProvider> provider = fax.contactProvider();
    QEventLoop loop;
    QObject::connect(provider, &ContactProvider::syncedContacts, &loop, &QEventLoop::quit);
    QObject::connect(provider, &ContactProvider::errorSyncedContacts, [] { fail("sync-http"); });
    const double time = milliseconds([&] {
        provider->syncContacts(ContactList::PersonalContacts, false);
        loop.exec();
    });
    if (manager.storage()->quickSearch(QString(), 0, 0, 0).size() != contacts)
        fail("sync-http");
    return time;
}

/// Reads the contacts of a document into rows of (uid, name, e-mail, phone, fax, organization).
int insertAll(const QDomDocument& document, QSqlQuery& insert)
{
    static const QString names[] = {QStringLiteral("contact_url"),   QStringLiteral("name"),
                                    QStringLiteral("email_address"), QStringLiteral("phone_number"),
                                    QStringLiteral("fax_number"),    QStringLiteral("organization")};
    int count = 0;
    for (QDomNode contact = document.documentElement().firstChild(); !contact.isNull();
         contact = contact.nextSibling()) {
        if (contact.nodeName() != QLatin1String("contact"))
            continue;
        QString values[std::size(names)];
        for (QDomNode child = contact.firstChild(); !child.isNull(); child = child.nextSibling()) {
            const QString name = child.nodeName();
            for (std::size_t i = 0; i < std::size(names); ++i) {
                if (names[i] == name)
                    values[i] = child.firstChild().nodeValue();
            }
        }
        values[0] = values[0].section(QLatin1Char('/'), -1);
        int place = 0;
        for (const QString& value : values)
            insert.bindValue(place++, value);
        if (!insert.exec())
            fail("plain insert");
        ++count;
    }
    return count;
}

double plainSync(int round, int contacts)
{
    const Folder folder;
    Server server(round, contacts);
    ContactLocalStorage().addSource(QStringLiteral("alice@fax"), ContactLocalStorage::SourceQuendra);
    QNetworkAccessManager manager;
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("plain"));
    db.setDatabaseName(folder.file());
    if (!db.open())
        fail("plain open");
    int count = 0;
    const double time = milliseconds([&] {
        const QByteArray body =
            bodyOf(manager.get(plainRequest(server.sim.url(QStringLiteral("/qdws/v1/contacts/alice")))));
        QDomDocument document;
        if (!document.setContent(body))
            fail("plain parsing");
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral(
            "INSERT INTO contacts(uid, name, email, phone, fax, organization, type, location, source, "
            "timestamp, description) VALUES(?, ?, ?, ?, ?, ?, 1, 2, 1, 1000, '')"));
        db.transaction();
        count = insertAll(document, insert);
        if (!db.commit())
            fail("plain commit");
    });
    db.close();
    db = QSqlDatabase();
    QSqlDatabase::removeDatabase(QStringLiteral("plain"));
    if (count != contacts)
        fail("plain sync-http");
    return time;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    const int contacts = bench.size(20000);
    bench.ratio(
        "sync-http", 1.05, [=](int round) { return sync(round, contacts); },
        [=](int round) { return plainSync(round, contacts); }, 9);
    return bench.exitCode();
}
