#pragma once

// Running a task alone: a server that does not log in, and the task's recorded outcome.

#include "faxmanager.h"
#include "faxserver.h"
#include "operations.h"
#include "testkit.h"

#include <QMetaMethod>
#include <QPointer>

#include <functional>

/// For a FaxManager without a ContactManager.
inline const QPointer<ContactManager> noContacts;

/// A server that does not log in, as one added to a manager would.
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

/// Records the outcome of a task.
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

    /// Runs the task until it is destroyed. Returns its outcome; Unknown unless there was exactly one.
    Task::Status run(int seconds = 60)
    {
        task->execute();
        const bool isGone = spinUntil([this] { return !task; }, seconds);
        return isGone && ends.size() == 1 ? ends.first() : Task::Unknown;
    }
    bool isOver() const { return !ends.isEmpty(); }

    QPointer<Task> task;
    QList<Task::Status> ends;     ///< Ok: done.
    std::function<void()> onOver; ///< Called at any outcome.

public Q_SLOTS:
    void end(Task::Status status = Task::Ok)
    {
        ends.append(status);
        if (onOver)
            onOver();
    }
};

/// Runs a task, which must succeed, and returns its result.
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

/// A FaxServer and its web service, which answers every request with @p answer.
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
