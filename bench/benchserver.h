#pragma once

// A FaxServer without login and synchronisation, and the request that its tasks send.

#include "contactmanager.h"
#include "faxmanager.h"
#include "faxserver.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

/// A server that does not log in, unlike one added to a manager.
class BareServer : public FaxServer
{
public:
    BareServer(FaxManager& manager, const QString& address)
        : FaxServer(manager)
    {
        setAddress(address);
        setLogin(QStringLiteral("alice"));
        setPassword(QStringLiteral("secret"));
    }
};

/// A task that is never sent and makes protected functions of Task public.
class BareTask : public Task
{
public:
    explicit BareTask(FaxServer& server)
        : Task(server)
    {}
    void execute() override {}
    Task::Type type() override { return Task::GetQuendraInfo; }
    using Task::fixAmp;

protected:
    void onFinished() override {}
};

/// The same request as a task sends, built directly.
inline QNetworkRequest plainRequest(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/xml"));
    request.setRawHeader("Authorization", "Basic " + QByteArray("alice:secret").toBase64());
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    return request;
}

/// Waits for a reply and returns its body; null if it failed. Deletes the reply.
inline QByteArray bodyOf(QNetworkReply* reply)
{
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    const QByteArray body = reply->error() == QNetworkReply::NoError ? reply->readAll() : QByteArray();
    reply->deleteLater();
    return body;
}
