#include "simstore.h"

#include "simstate.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSaveFile>

namespace {

/// Copies fields from a record to JSON or back, depending on the constructor, so that each record is
/// described only once.
class Fields
{
public:
    explicit Fields(QJsonObject* target)
        : m_target(target)
    {}
    explicit Fields(const QJsonObject& source)
        : m_source(source)
    {}

    void field(const char* name, QString* value)
    {
        carry(name, value, [](const QJsonValue& json) { return json.toString(); });
    }
    void field(const char* name, bool* value)
    {
        carry(name, value, [](const QJsonValue& json) { return json.toBool(); });
    }
    void field(const char* name, int* value)
    {
        carry(name, value, [](const QJsonValue& json) { return json.toInt(); });
    }
    void field(const char* name, qint64* value)
    {
        carry(name, value, [](const QJsonValue& json) { return static_cast<qint64>(json.toDouble()); });
    }
    void field(const char* name, quint64* value)
    {
        auto number = static_cast<qint64>(*value);
        field(name, &number);
        *value = static_cast<quint64>(number);
    }
    template <typename Record, typename Describe>
    void record(const char* name, Record* value, const Describe& describe)
    {
        QJsonObject object = m_source[QLatin1String(name)].toObject();
        if (m_target) {
            Fields inside(&object);
            describe(inside, value);
            m_target->insert(QLatin1String(name), object);
        } else {
            Fields inside(object);
            describe(inside, value);
        }
    }

private:
    template <typename T, typename Convert>
    void carry(const char* name, T* value, const Convert& convert)
    {
        if (m_target)
            m_target->insert(QLatin1String(name), QJsonValue(*value));
        else if (m_source.contains(QLatin1String(name)))
            *value = convert(m_source[QLatin1String(name)]);
    }

    QJsonObject* m_target = nullptr;
    QJsonObject m_source;
};

void describePerson(Fields& fields, SimPerson* person)
{
    fields.field("url", &person->url);
    fields.field("username", &person->username);
    fields.field("name", &person->name);
    fields.field("email", &person->email);
    fields.field("phone", &person->phone);
    fields.field("fax", &person->fax);
    fields.field("organization", &person->organization);
}

void describeSchedule(Fields& fields, SimSchedule* schedule)
{
    fields.field("sendAt", &schedule->sendAt);
    fields.field("priority", &schedule->priority);
    fields.field("maxTries", &schedule->maxTries);
    fields.field("tryInterval", &schedule->tryInterval);
    fields.field("receipt", &schedule->receipt);
    fields.field("receiptAttachment", &schedule->receiptAttachment);
    fields.field("printReceipt", &schedule->printReceipt);
    fields.field("printer", &schedule->printer);
    fields.field("printFirstPage", &schedule->printFirstPage);
    fields.field("pageSize", &schedule->pageSize);
}

void describeCoverPage(Fields& fields, SimCoverPage* cover)
{
    fields.field("enabled", &cover->enabled);
    fields.field("name", &cover->name);
    fields.field("type", &cover->type);
    fields.field("url", &cover->url);
    fields.field("subject", &cover->subject);
    fields.field("comments", &cover->comments);
}

void describeUser(Fields& fields, SimUser* user)
{
    fields.field("name", &user->name);
    fields.record("person", &user->person, describePerson);
    fields.field("coverPageEnabled", &user->coverPageEnabled);
    fields.field("coverPageName", &user->coverPageName);
    fields.record("defaults", &user->defaults, describeSchedule);
}

void describeFax(Fields& fields, SimFax* fax)
{
    fields.field("id", &fax->id);
    fields.field("job", &fax->job);
    fields.field("user", &fax->user);
    fields.field("state", &fax->state);
    fields.field("created", &fax->created);
    fields.field("changed", &fax->changed);
    fields.field("nextAt", &fax->nextAt);
    fields.field("startTime", &fax->startTime);
    fields.field("endTime", &fax->endTime);
    fields.field("tryNumber", &fax->tryNumber);
    fields.field("pages", &fax->pages);
    fields.field("message", &fax->message);
    fields.record("schedule", &fax->schedule, describeSchedule);
    fields.record("sender", &fax->sender, describePerson);
    fields.record("recipient", &fax->recipient, describePerson);
    fields.record("cover", &fax->cover, describeCoverPage);
}

void describeAttachment(Fields& fields, SimAttachment* attachment)
{
    fields.field("name", &attachment->name);
    fields.field("contentType", &attachment->contentType);
    fields.field("size", &attachment->size);
    fields.field("path", &attachment->path);
}

void describeEntry(Fields& fields, SimEntry* entry)
{
    qint64 changed = entry->changed;
    QString members = entry->members.join(QLatin1Char('\n'));
    fields.field("uid", &entry->uid);
    fields.record("person", &entry->person, describePerson);
    fields.field("description", &entry->description);
    fields.field("members", &members);
    fields.field("changed", &changed);
    entry->changed = static_cast<quint32>(changed);
    entry->members = members.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

template <typename Record, typename Describe>
QJsonObject toJson(Record record, const Describe& describe)
{
    QJsonObject object;
    Fields fields(&object);
    describe(fields, &record);
    return object;
}

template <typename Record, typename Describe>
Record fromJson(const QJsonValue& json, Record record, const Describe& describe)
{
    Fields fields(json.toObject());
    describe(fields, &record);
    return record;
}

QString fileName(const QString& folder)
{
    return QDir(folder).filePath(QStringLiteral("qdsim.json"));
}

} // namespace

QByteArray SimStore::write(SimState& state)
{
    QJsonArray users;
    for (const auto& user : state.users())
        users.append(toJson(user.second, describeUser));
    QJsonArray faxes;
    QJsonObject attachments;
    for (const auto& fax : state.faxes().all()) {
        faxes.append(toJson(fax.second, describeFax));
        if (fax.second.id != fax.second.job)
            continue;
        QJsonArray list;
        for (const SimAttachment& attachment : qAsConst(state.attachments(fax.second.job)))
            list.append(toJson(attachment, describeAttachment));
        attachments.insert(QString::number(fax.second.job), list);
    }
    QJsonArray books;
    for (const auto& book : state.books().all()) {
        QJsonArray entries;
        for (const auto& entry : book.second.entries())
            entries.append(toJson(entry.second, describeEntry));
        books.append(QJsonObject{{QStringLiteral("owner"), book.first.owner},
                                 {QStringLiteral("groups"), book.first.groups},
                                 {QStringLiteral("entries"), entries}});
    }
    return QJsonDocument(
               QJsonObject{{QStringLiteral("format"), 1},
                           {QStringLiteral("users"), users},
                           {QStringLiteral("faxes"), faxes},
                           {QStringLiteral("attachments"), attachments},
                           {QStringLiteral("books"), books},
                           {QStringLiteral("lastUid"), static_cast<double>(state.books().lastUid())},
                           {QStringLiteral("lastTime"), static_cast<double>(state.books().lastTime())}})
        .toJson(QJsonDocument::Compact);
}

bool SimStore::read(const QByteArray& bytes, SimState* state)
{
    const QJsonObject root = QJsonDocument::fromJson(bytes).object();
    if (root[QLatin1String("format")].toInt() != 1)
        return false;
    const QJsonArray users = root[QLatin1String("users")].toArray();
    for (const QJsonValue& json : users) {
        if (SimUser* user = state->user(json.toObject()[QLatin1String("name")].toString()))
            *user = fromJson(json, *user, describeUser);
    }
    const QJsonArray faxes = root[QLatin1String("faxes")].toArray();
    for (const QJsonValue& json : faxes)
        state->faxes().restore(fromJson(json, SimFax(), describeFax));
    const QJsonObject attachments = root[QLatin1String("attachments")].toObject();
    for (auto job = attachments.begin(); job != attachments.end(); ++job) {
        const QJsonArray list = job.value().toArray();
        for (const QJsonValue& json : list)
            state->attachments(job.key().toULongLong())
                .append(fromJson(json, SimAttachment(), describeAttachment));
    }
    state->books().reset(static_cast<quint64>(root[QLatin1String("lastUid")].toDouble()),
                         static_cast<quint32>(root[QLatin1String("lastTime")].toDouble()));
    const QJsonArray books = root[QLatin1String("books")].toArray();
    for (const QJsonValue& json : books) {
        const QJsonObject book = json.toObject();
        const SimBookId id{book[QLatin1String("owner")].toString(), book[QLatin1String("groups")].toBool()};
        const QJsonArray entries = book[QLatin1String("entries")].toArray();
        for (const QJsonValue& entry : entries)
            state->books().restore(id, fromJson(entry, SimEntry(), describeEntry));
    }
    return true;
}

bool SimStore::load(const QString& folder, SimState* state, QString* error)
{
    QFile file(fileName(folder));
    if (!file.exists())
        return true;
    if (file.open(QIODevice::ReadOnly) && read(file.readAll(), state))
        return true;
    *error = QStringLiteral("%1 is not a saved state").arg(file.fileName());
    return false;
}

bool SimStore::save(const QString& folder, const QByteArray& bytes, QString* error)
{
    QSaveFile file(fileName(folder));
    if (QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() &&
        file.commit())
        return true;
    *error = QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString());
    return false;
}
