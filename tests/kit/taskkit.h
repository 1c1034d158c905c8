#pragma once

// A task on its own: a server without a login, and what the task said.

#include "faxmanager.h"
#include "faxserver.h"
#include "scriptedserver.h"

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

/// A server, and the service behind it, which answers everything with @p answer.
struct TaskWorld
{
    explicit TaskWorld(const QByteArray& answer = QByteArray()) { wire.setAnswer(answer); }

    ScriptedServer wire;
    FaxManager manager{noContacts};
    BareServer server{manager, wire.address()};
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
        connect(task, &Task::errorExecute, this, [this](Task::Status status) {
            errors.append(status);
            if (onOver)
                onOver();
        });
        if (!connect(task, doneSignal.constData(), this, SLOT(slotDone())))
            qFatal("no signal %s", doneSignal.constData());
    }

    bool isOver() const { return done + errors.size() > 0; }

    QPointer<Task> task;
    int done{0};
    QList<Task::Status> errors;
    std::function<void()> onOver; ///< Called with either outcome.

public Q_SLOTS:
    void slotDone()
    {
        ++done;
        if (onOver)
            onOver();
    }
};
