#pragma once

// Every operation of the web service once, ready to be sent, and a service that answers each of them well.

#include "scriptedserver.h"
#include "tasks/operations_p.h"

class QuendraContact;

/// An operation with parameters that let it be sent.
struct Operation
{
    QByteArray name;
    Task::Type type;
    QByteArray request; ///< Method and target.
    QByteArray done;    ///< The done signal.
    QByteArray good;    ///< The content of a reply that ends in the done signal.
    WebOperation row;   ///< What the library's table says of it.

    bool isChange() const { return !request.startsWith("GET"); }
    /// Whether it sends a body, and so must not be sent twice.
    bool hasBody() const;
    /// The operation as a task of this server, not yet started; URLs of its parameters name @p host.
    Task* make(FaxServer& server, const QString& host = QStringLiteral("http://elsewhere:9")) const;
};

/// All of the library's table, and one more for the groups, whose members are fetched one by one.
const QList<Operation>& operations();
const Operation& operation(Task::Type type);
const Operation& operation(const QByteArray& name);

/// The good answer to any request of the operations, of the login and of a synchronisation; 404 to others.
QByteArray serve(const WireRequest& request);

/// A contact with a number, as a reply holds it and as one is sent.
QByteArray memberXml(int number);
QuendraContact personAt(const QString& url);
