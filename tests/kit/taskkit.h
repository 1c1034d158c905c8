#pragma once

// A task on its own: a server without a login, and what the task said.

#include "faxmanager.h"
#include "faxserver.h"
#include "operations.h"
#include "testkit.h"

#include <QMetaMethod>
#include <QPointer>

#include <functional>

/// A manager of servers without a manager of contacts.
inline const QPointer<ContactManager> noContacts;

/// A server without the login that a manager would start.
class BareServer : public FaxServer
{
public:
    explicit BareServer(FaxManager& manager, const QString& address, bool useSSL = false)
        : FaxServer(manager)
    {
        setAddress(address);
        setUseSSL(useSSL);
        setLogin(QStringLiteral("anna"));
        setPassword(QStringLiteral("se:cret"));
    }
};

/// A good answer with this content in its document element.
inline QByteArray okReply(const QByteArray& content)
{
    return ScriptedServer::reply("<?xml version=\"1.0\" encoding=\"utf-8\"?><reply>" + content + "</reply>");
}

/// What a task said at its end.
class Outcome : public QObject
{
    Q_OBJECT
public:
    Outcome(Task* task, const QByteArray& doneSignal)
        : task(task)
    {
        connect(task, &Task::errorExecute, this, &Outcome::end);
        if (!connect(task, doneSignal.constData(), this, SLOT(end())))
            qFatal("no signal %s", doneSignal.constData());
    }
    explicit Outcome(Task* task)
        : Outcome(task, operation(task->type()).done)
    {}

    /// Runs the task until it has gone. How it ended: Unknown unless that was in one way, and once.
    Task::Status run(int seconds = 60)
    {
        task->execute();
        const bool isGone = spinUntil([this] { return !task; }, seconds);
        return isGone && ends.size() == 1 ? ends.first() : Task::Unknown;
    }
    bool isOver() const { return !ends.isEmpty(); }

    QPointer<Task> task;
    QList<Task::Status> ends;     ///< Ok: done.
    std::function<void()> onOver; ///< Called with either outcome.

public Q_SLOTS:
    void end(Task::Status status = Task::Ok)
    {
        ends.append(status);
        if (onOver)
            onOver();
    }
};

/// Runs a task to its end, which must be a good one, and returns what it brings.
template <typename T, typename Owner, typename Result, typename... More>
std::decay_t<Result> resultOf(T* task, void (Owner::*done)(Result, More...))
{
    using Value = std::decay_t<Result>;
    const QByteArray name = task->metaObject()->className();
    Value result{};
    QObject::connect(task, done, task, [&result](const Value& brought) { result = brought; });
    const auto signal = QMetaMethod::fromSignal(done).methodSignature();
    if (Outcome(task, QByteArray::number(QSIGNAL_CODE) + signal).run() != Task::Ok)
        qFatal("%s did not end well", name.constData());
    return result;
}

/// A server, and the service behind it, which answers everything with @p answer.
struct TaskWorld
{
    explicit TaskWorld(const QByteArray& answer = QByteArray(), bool tls = false)
        : wire(tls)
        , server(manager, wire.address(), tls)
    {
        wire.setAnswer(answer);
    }

    /// Runs an operation, a login by default, to its end.
    Task::Status run(const Operation& operation = ::operation(Task::VerifyLogin), int seconds = 60)
    {
        return Outcome(operation.make(server)).run(seconds);
    }

    ScriptedServer wire;
    FaxManager manager{noContacts};
    BareServer server;
};
