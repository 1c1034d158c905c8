#include "simserver.h"

#include "simdiscovery.h"
#include "simhttp.h"
#include "simrecorder.h"
#include "simroutes.h"
#include "simstate.h"
#include "simstore.h"
#include "simtls.h"

#include <chrono>
#include <condition_variable>

class SimServer::Private
{
public:
    explicit Private(const SimOptions& options)
        : state(options)
        , faults(options.seed)
    {}

    SimReply answer(SimRequest& request);
    void record(const SimRequest& request, const SimReply& reply);
    void complain(const QString& error) const;
    void housekeeping();
    void save();
    int count(const QString& method, const QString& pathPrefix) const;

    static bool isMeant(const SimRequest& request, const QString& method, const QString& pathPrefix)
    {
        return (method.isEmpty() || request.method == method) && request.path.startsWith(pathPrefix);
    }

    mutable SimState state;
    SimFaults faults;
    std::shared_ptr<SimTls> tls;
    std::vector<std::unique_ptr<SimHttp>> listeners;
    SimRecorder recorder; // outlives discovery, which uses it
    SimDiscovery discovery;
    std::function<void(const QString&)> log;

    mutable std::mutex mutex; // guards the requests
    mutable std::condition_variable answered;
    QVector<SimRequest> requests;

    std::thread housekeeper; // generates changes of the books, if enabled, and saves changed state
    std::mutex housekeeperMutex;
    std::condition_variable housekeeperChanged;
    bool isEnding = false;
};

SimReply SimServer::Private::answer(SimRequest& request)
{
    SimFault fault;
    const bool isFaulty = faults.take(request, &fault);
    if (state.options().clockStart != 0 && request.method != QLatin1String("GET"))
        state.clock().step(1000);
    const bool isCarriedOut = !isFaulty || fault.kind != SimFault::Status;
    SimReply reply = isCarriedOut ? SimRoutes::answer(state, request) : SimFaults::instead(fault);
    reply.compressed = state.options().compress;
    request.status = reply.status;
    request.refusal = reply.refusal;
    request.faulty = isFaulty;
    if (isFaulty) {
        SimFaults::apply(fault, &reply);
        if (reply.hangUp)
            request.status = 0;
    }
    record(request, reply);
    return reply;
}

void SimServer::Private::record(const SimRequest& request, const SimReply& reply)
{
    QString error;
    if (!recorder.write(request, reply, &error))
        complain(error);
    if (state.options().keepRequests) {
        SimRequest kept = request;
        const qint64 limit = state.options().keepBodyLimit;
        if (limit >= 0 && kept.body.size() > limit)
            kept.body = kept.body.left(static_cast<int>(limit));
        const std::lock_guard<std::mutex> lock(mutex);
        requests.append(kept);
    }
    answered.notify_all();
    if (log) {
        const QString who = request.user.isEmpty() ? QStringLiteral("-") : request.user;
        QString line = QStringList{who,
                                   request.method,
                                   QString::fromLatin1(request.target),
                                   QString::number(request.bodySize),
                                   QStringLiteral("bytes:"),
                                   QString::number(request.status)}
                           .join(QLatin1Char(' '));
        if (request.status == 0)
            line += QLatin1String(" connection closed");
        if (request.faulty)
            line += QLatin1String(" trouble on request");
        if (!request.refusal.isEmpty())
            line += QLatin1String(" refused: ") + request.refusal;
        log(line);
    }
}

void SimServer::Private::complain(const QString& error) const
{
    if (log)
        log(error);
}

int SimServer::Private::count(const QString& method, const QString& pathPrefix) const
{
    int number = 0;
    for (const SimRequest& request : requests)
        number += isMeant(request, method, pathPrefix) ? 1 : 0;
    return number;
}

void SimServer::Private::save()
{
    if (state.options().stateDir.isEmpty())
        return;
    QByteArray bytes;
    {
        const SimState::Lock lock(state);
        if (state.takeChanged())
            bytes = SimStore::write(state);
    }
    QString error;
    if (!bytes.isEmpty() && !SimStore::save(state.options().stateDir, bytes, &error))
        complain(error);
}

void SimServer::Private::housekeeping()
{
    using Clock = std::chrono::steady_clock;
    const double rate = state.options().changesPerSecond;
    auto changedUntil = Clock::now();
    auto nextSave = Clock::now() + std::chrono::milliseconds(500);
    std::unique_lock<std::mutex> lock(housekeeperMutex);
    while (!housekeeperChanged.wait_for(lock, std::chrono::milliseconds(rate > 0 ? 50 : 500),
                                        [this] { return isEnding; })) {
        lock.unlock();
        const std::chrono::duration<double> elapsed = Clock::now() - changedUntil;
        if (const int due = static_cast<int>(elapsed.count() * rate)) {
            const SimState::Lock stateLock(state);
            state.books().change(due, &state.people(), state.clock().now());
            changedUntil +=
                std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(due / rate));
        }
        const auto begin = Clock::now();
        if (begin >= nextSave) {
            save();
            nextSave = Clock::now() + std::chrono::milliseconds(400) + 10 * (Clock::now() - begin);
        }
        lock.lock();
    }
}

SimServer::SimServer(const SimOptions& options)
    : d(new Private(options))
{}

SimServer::~SimServer()
{
    stop();
}

bool SimServer::start(QString* error)
{
    QString why;
    if (options().tls && !(d->tls = SimTls::create(&why))) {
        if (error)
            *error = why;
        return false;
    }
    if (!options().stateDir.isEmpty()) {
        const SimState::Lock lock(d->state);
        if (!SimStore::load(options().stateDir, &d->state, &why)) {
            if (error)
                *error = why;
            return false;
        }
        d->state.takeChanged();
    }
    if (!options().recordDir.isEmpty() && !d->recorder.open(options().recordDir, &why)) {
        if (error)
            *error = why;
        return false;
    }
    SimHttp::Handlers handlers;
    handlers.head = [this](const SimRequest& request) {
        if (!d->faults.hangUpEarly(request))
            return true;
        SimRequest cut = request;
        cut.faulty = true;
        SimReply none;
        none.hangUp = true;
        d->record(cut, none);
        return false;
    };
    handlers.request = [this](SimRequest& request) { return d->answer(request); };
    handlers.broken = [this](const QString& what) {
        if (d->log)
            d->log(QStringLiteral("- no request: ") + what);
    };
    quint16 port = options().port;
    QStringList addresses{options().bind};
    if (options().bindIpv6)
        addresses.append(QStringLiteral("::1"));
    for (const QString& address : qAsConst(addresses)) {
        std::unique_ptr<SimHttp> listener(new SimHttp(handlers, d->tls));
        if (!listener->start(address, port, &why)) {
            d->listeners.clear();
            if (error)
                *error = why;
            return false;
        }
        port = listener->port();
        d->listeners.push_back(std::move(listener));
    }
    if (!options().discoveryAddress.isEmpty()) {
        const QString announced =
            options().discoveryAnnounce.isEmpty() ? address() : options().discoveryAnnounce;
        const QString reply = QStringLiteral("200 OK\ninet_addr: %1\nmodel: %2\nversion: %3\nhostname: %4\n")
                                  .arg(announced, options().model, options().version, options().hostname);
        d->discovery.setAnswered([this](const QByteArray& query, const QByteArray& answer) {
            QString failure;
            if (!d->recorder.writeDatagrams(query, answer, &failure))
                d->complain(failure);
        });
        if (!d->discovery.start(options().discoveryAddress, options().discoveryPort, reply.toUtf8(), error)) {
            stop();
            return false;
        }
    }
    d->housekeeper = std::thread([this] { d->housekeeping(); });
    return true;
}

void SimServer::stop()
{
    d->discovery.stop();
    for (const auto& listener : d->listeners)
        listener->stop();
    if (d->housekeeper.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(d->housekeeperMutex);
            d->isEnding = true;
        }
        d->housekeeperChanged.notify_all();
        d->housekeeper.join();
        d->save();
    }
}

const SimOptions& SimServer::options() const
{
    return d->state.options();
}

quint16 SimServer::port() const
{
    return d->listeners.empty() ? 0 : d->listeners.front()->port();
}

QString SimServer::address() const
{
    const QString host = options().bind;
    return QStringLiteral("%1:%2")
        .arg(host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]").arg(host) : host)
        .arg(port());
}

QUrl SimServer::url(const QString& path) const
{
    QUrl url;
    url.setScheme(options().tls ? QStringLiteral("https") : QStringLiteral("http"));
    url.setHost(options().bind);
    url.setPort(port());
    url.setPath(path);
    return url;
}

QByteArray SimServer::certificate() const
{
    return d->tls ? d->tls->certificate() : QByteArray();
}

QVector<SimRequest> SimServer::requests(const QString& method, const QString& pathPrefix) const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    QVector<SimRequest> chosen;
    for (const SimRequest& request : qAsConst(d->requests)) {
        if (Private::isMeant(request, method, pathPrefix))
            chosen.append(request);
    }
    return chosen;
}

int SimServer::requestCount(const QString& method, const QString& pathPrefix) const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->count(method, pathPrefix);
}

bool SimServer::waitForRequests(int count, int ms, const QString& method, const QString& pathPrefix) const
{
    std::unique_lock<std::mutex> lock(d->mutex);
    return d->answered.wait_for(lock, std::chrono::milliseconds(ms),
                                [&] { return d->count(method, pathPrefix) >= count; });
}

QStringList SimServer::refusals() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    QStringList lines;
    for (const SimRequest& request : qAsConst(d->requests)) {
        if (!request.refusal.isEmpty())
            lines.append(request.method + QLatin1Char(' ') + QString::fromLatin1(request.target) +
                         QStringLiteral(": %1 ").arg(request.status) + request.refusal);
    }
    return lines;
}

void SimServer::clearRequests()
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->requests.clear();
}

void SimServer::setLog(std::function<void(const QString&)> log)
{
    d->log = std::move(log);
}

void SimServer::addFault(const SimFault& fault)
{
    d->faults.add(fault);
}

bool SimServer::addFault(const QString& fault, QString* error)
{
    SimFault parsed;
    QString why;
    if (!SimFault::parse(fault, &parsed, &why)) {
        if (error)
            *error = why;
        return false;
    }
    d->faults.add(parsed);
    return true;
}

void SimServer::clearFaults()
{
    d->faults.clear();
}

void SimServer::step(qint64 ms)
{
    d->state.clock().step(ms);
}

qint64 SimServer::now() const
{
    return d->state.clock().now();
}

QVector<SimFax> SimServer::faxes() const
{
    const SimState::Lock lock(d->state);
    QVector<SimFax> faxes;
    for (const auto& fax : d->state.faxes().all())
        faxes.append(fax.second);
    return faxes;
}

QVector<SimAttachment> SimServer::attachments(quint64 fax) const
{
    const SimState::Lock lock(d->state);
    const SimFax* found = d->state.faxes().find(fax);
    return found ? d->state.attachments(found->job) : QVector<SimAttachment>();
}

QVector<SimInbound> SimServer::inbound() const
{
    const SimState::Lock lock(d->state);
    return d->state.inbound().all();
}

quint64 SimServer::addInbound(const SimInbound& entry)
{
    const SimState::Lock lock(d->state);
    return d->state.inbound().add(entry);
}

QVector<SimEntry> SimServer::book(const QString& owner, bool groups) const
{
    const SimState::Lock lock(d->state);
    QVector<SimEntry> entries;
    if (const SimBook* book = d->state.books().book({owner, groups})) {
        for (const auto& entry : book->entries())
            entries.append(entry.second);
    }
    return entries;
}

QString SimServer::addEntry(const SimBookId& book, SimEntry entry)
{
    const SimState::Lock lock(d->state);
    return d->state.books().add(book, &entry, d->state.clock().now()) ? entry.uid : QString();
}

bool SimServer::modifyEntry(const SimBookId& book, const SimEntry& entry)
{
    const SimState::Lock lock(d->state);
    return d->state.books().modify(book, entry, d->state.clock().now());
}

bool SimServer::deleteEntry(const SimBookId& book, const QString& uid)
{
    const SimState::Lock lock(d->state);
    return d->state.books().remove(book, uid, d->state.clock().now());
}

QStringList SimServer::stepChanges(int count)
{
    const SimState::Lock lock(d->state);
    return d->state.books().change(count, &d->state.people(), d->state.clock().now());
}

quint16 SimServer::discoveryPort() const
{
    return d->discovery.port();
}

int SimServer::discoveryQueries() const
{
    return d->discovery.queries();
}

SimUser SimServer::user(const QString& name) const
{
    const SimState::Lock lock(d->state);
    const SimUser* user = d->state.user(name);
    return user ? *user : SimUser();
}
