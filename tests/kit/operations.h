#pragma once

// All operations of the web service, with sample parameters, and a service that answers each successfully.

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
    WebOperation row;   ///< Its row of the library's table.

    bool isChange() const { return !request.startsWith("GET"); }
    /// Whether it sends a body, and so must not be sent twice.
    bool hasBody() const;
    /// The operation as a task of this server, not yet started; URLs of its parameters name @p host.
    Task* make(FaxServer& server, const QString& host = QStringLiteral("http://elsewhere:9")) const;
};

/// All rows of the library's table, and one more for groups, whose members are fetched one by one.
const QList<Operation>& operations();
const Operation& operation(Task::Type type);
const Operation& operation(const QByteArray& name);

/// A good reply to any request of the operations, the login and a synchronisation; 404 to others.
QByteArray serve(const WireRequest& request);

/// A contact: as an element of a reply, and as an object to be sent.
QByteArray memberXml(int number);
QuendraContact personAt(const QString& url);
