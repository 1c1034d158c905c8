// The simulator's server as a test sees it that runs under Wine: see remotesim.h.

#include "remotesim.h"

class SimServer::Private
{
public:
    /// What the host answers. A test without it has nothing more to say.
    QByteArray ask(const QByteArray& question)
    {
        socket.write(packed(question));
        QByteArray answer;
        while (!readBlock(socket, &answer)) {
            if (!socket.waitForReadyRead(60000))
                qFatal("No answer of simhost: %s", qPrintable(socket.errorString()));
        }
        return answer;
    }

    template <typename Result, typename... Argument>
    Result call(const char* name, const Argument&... arguments)
    {
        Result result;
        QDataStream answer(ask(packed(QByteArray(name), arguments...)));
        answer >> result;
        return result;
    }

    SimOptions options;
    QString address;
    QTcpSocket socket;
};

SimServer::SimServer(const SimOptions& options)
    : d(new Private)
{
    d->options = options;
}

SimServer::~SimServer() = default;

bool SimServer::start(QString* error)
{
    const QString host = qEnvironmentVariable("SIMHOST");
    d->socket.connectToHost(host.section(QLatin1Char(':'), 0, 0),
                            host.section(QLatin1Char(':'), 1).toUShort());
    QString trouble = QStringLiteral("simhost is not there");
    if (d->socket.waitForConnected()) {
        QDataStream answer(d->ask(packed(d->options)));
        answer >> trouble >> d->address;
    }
    if (error)
        *error = trouble;
    return trouble.isEmpty();
}

const SimOptions& SimServer::options() const
{
    return d->options;
}

QString SimServer::address() const
{
    return d->address;
}

QVector<SimRequest> SimServer::requests(const QString& method, const QString& pathPrefix) const
{
    return d->call<QVector<SimRequest>>("requests", method, pathPrefix);
}

int SimServer::requestCount(const QString& method, const QString& pathPrefix) const
{
    return requests(method, pathPrefix).size();
}

QStringList SimServer::refusals() const
{
    return d->call<QStringList>("refusals");
}

void SimServer::clearRequests()
{
    d->ask(packed(QByteArray("clearRequests")));
}

QVector<SimEntry> SimServer::book(const QString& owner, bool groups) const
{
    return d->call<QVector<SimEntry>>("book", owner, groups);
}

bool SimServer::modifyEntry(const SimBookId& book, const SimEntry& entry)
{
    return d->call<bool>("modifyEntry", book, entry);
}

bool SimServer::deleteEntry(const SimBookId& book, const QString& uid)
{
    return d->call<bool>("deleteEntry", book, uid);
}

QStringList SimServer::stepChanges(int count)
{
    return d->call<QStringList>("stepChanges", count);
}

QVector<SimFax> SimServer::faxes() const
{
    return d->call<QVector<SimFax>>("faxes");
}

QVector<SimAttachment> SimServer::attachments(quint64 fax) const
{
    return d->call<QVector<SimAttachment>>("attachments", fax);
}

SimUser SimServer::user(const QString& name) const
{
    return d->call<SimUser>("user", name);
}
