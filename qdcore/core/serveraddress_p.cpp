#include "serveraddress_p.h"

#include <QHostAddress>
#include <QUrl>

namespace {

bool isBareIPv6(const QString& address)
{
    return address.count(QLatin1Char(':')) > 1 && !address.startsWith(QLatin1Char('['));
}

} // namespace

QString addressForUrl(const QString& address)
{
    return isBareIPv6(address) ? QLatin1Char('[') + address + QLatin1Char(']') : address;
}

bool setServerAddress(QUrl& url, const QString& address)
{
    QString host = addressForUrl(address.trimmed());
    int port = -1;
    // A colon after the bracket, or the only colon, begins a port.
    const int colon = host.lastIndexOf(QLatin1Char(':'));
    if (colon > host.lastIndexOf(QLatin1Char(']'))) {
        const QString digits = host.mid(colon + 1);
        bool isNumber = false;
        port = digits.toUShort(&isNumber);
        if (!isNumber || port == 0 || !digits.at(0).isDigit())
            return false;
        host.truncate(colon);
    }
    if (host.startsWith(QLatin1Char('[')) &&
        (!host.endsWith(QLatin1Char(']')) ||
         QHostAddress(host.mid(1, host.size() - 2)).protocol() != QAbstractSocket::IPv6Protocol)) {
        return false;
    }
    url.setPort(port);
    url.setHost(host, QUrl::DecodedMode);
    return !url.host().isEmpty();
}
