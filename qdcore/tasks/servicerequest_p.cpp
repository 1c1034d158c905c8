#include "tasks/servicerequest_p.h"

#include "faxserver.h"
#include "serveraddress_p.h"

#include <QSslConfiguration>

namespace {

void applyServer(QUrl& url, const FaxServer& server)
{
    url.setScheme(server.useSSL() ? QStringLiteral("https") : QStringLiteral("http"));
    url.setUserName(server.login(), QUrl::DecodedMode);
    url.setPassword(server.password(), QUrl::DecodedMode);
    // With an invalid URL the access manager finishes the request with an error, so that an invalid address
    // is reported like an unreachable server.
    if (!setServerAddress(url, server.address()) || !url.isValid())
        url = QUrl();
}

} // namespace

QUrl serviceUrl(const FaxServer& server, const QString& path)
{
    QUrl url;
    url.setPath(path, QUrl::DecodedMode);
    applyServer(url, server);
    return url;
}

QUrl resourceUrl(const FaxServer& server, const QUrl& resource)
{
    QUrl url = resource;
    applyServer(url, server);
    return url;
}

QUrl limitedUrl(const QUrl& url, const QString& query, int limit)
{
    QUrl limited = url;
    if (limit > 0 && !query.isEmpty() && url.isValid())
        limited.setQuery(QString(query).replace(QLatin1String("%1"), QString::number(limit)),
                         QUrl::TolerantMode);
    return limited;
}

QNetworkRequest serviceRequest(const FaxServer& server, const QUrl& url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/xml"));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    if (server.useSSL()) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setPeerVerifyMode(QSslSocket::QueryPeer);
        request.setSslConfiguration(tls);
    }
    const QString login = server.login();
    const QString password = server.password();
    if (!login.isEmpty() || !password.isEmpty()) {
        const QByteArray credentials = (login + QLatin1Char(':') + password).toLatin1();
        request.setRawHeader(QByteArrayLiteral("Authorization"), "Basic " + credentials.toBase64());
        request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    }
    return request;
}
