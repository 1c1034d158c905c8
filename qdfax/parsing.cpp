#include "parsing.h"

#include "text.h"

#include <QRegularExpression>

namespace {

template <typename T>
std::optional<T> refuse(QString* error, const QString& why)
{
    *error = why;
    return std::nullopt;
}

/// The parts between commas that no backslash precedes, at most @p count; the last one takes the rest.
QStringList splitAtCommas(const QString& text, int count)
{
    QStringList parts{QString()};
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const QChar following = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (c == QLatin1Char('\\') && (following == QLatin1Char(',') || following == QLatin1Char('\\'))) {
            parts.last() += following;
            ++i;
        } else if (c == QLatin1Char(',') && parts.size() < count) {
            parts.append(QString());
        } else {
            parts.last() += c;
        }
    }
    for (QString& part : parts)
        part = part.trimmed();
    return parts;
}

/// Several colons: an IPv6 address without a port.
bool isBareIPv6(const QString& address)
{
    return address.count(QLatin1Char(':')) > 1 && !address.startsWith(QLatin1Char('['));
}

} // namespace

bool checkText(const QString& text, bool lines, QString* error)
{
    for (const QChar c : text) {
        if (lines && (c == QLatin1Char('\n') || c == QLatin1Char('\t')))
            continue;
        if (c.unicode() < 0x20 || c.unicode() == 0x7F || c.unicode() >= 0xFFFE) {
            *error = c == QLatin1Char('\n') ? Text::tr("contains a line break, which cannot be sent")
                                            : Text::tr("contains a control character, which cannot be sent");
            return false;
        }
    }
    return true;
}

std::optional<Contact> parseRecipient(const QString& text, QString* error)
{
    if (!checkText(text, false, error))
        return std::nullopt;
    const QStringList parts = splitAtCommas(text, 3);
    const QString& number = parts.at(0);
    static const QRegularExpression digit(QStringLiteral("[0-9]"));
    if (!number.contains(digit)) {
        return refuse<Contact>(error, Text::tr("has no fax number in \"%1\"; write NUMBER, "
                                               "NUMBER,NAME or NUMBER,NAME,ORGANIZATION")
                                          .arg(text));
    }
    Contact contact;
    contact.setFax(number);
    contact.setName(parts.value(1));
    contact.setOrganization(parts.value(2));
    return contact;
}

std::optional<QDateTime> parseFutureTime(const QString& text, const QDateTime& now, QString* error)
{
    static const QRegularExpression form(
        QStringLiteral("^(\\d{4}-\\d{2}-\\d{2})[Tt ](\\d{2}:\\d{2})(:\\d{2})?(Z|z|[+-]\\d{2}:?\\d{2})?$"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    const QString local = match.captured(1) + QLatin1Char('T') + match.captured(2) +
                          (match.captured(3).isEmpty() ? QStringLiteral(":00") : match.captured(3));
    const QDateTime time = match.hasMatch()
                               ? QDateTime::fromString(local + match.captured(4).toUpper(), Qt::ISODate)
                               : QDateTime();
    if (!match.hasMatch() || !QDateTime::fromString(local + QLatin1Char('Z'), Qt::ISODate).isValid()) {
        return refuse<QDateTime>(
            error, Text::tr("\"%1\" is not a time; write it like 2026-11-15T14:30, in local time").arg(text));
    }
    // Qt silently moves a time in the hour skipped by daylight saving; reject it instead
    if (!time.isValid() ||
        (match.captured(4).isEmpty() && time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) != local)) {
        return refuse<QDateTime>(
            error, Text::tr("\"%1\" does not exist here: the clock is put forward then. Choose another time")
                       .arg(text));
    }
    if (time <= now) {
        return refuse<QDateTime>(error,
                                 Text::tr("\"%1\" is in the past; it is %2 now. Leave the option out to "
                                          "send at once")
                                     .arg(text, now.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))));
    }
    return time.toLocalTime();
}

std::optional<int> parseInteger(const QString& text, int least, int greatest, QString* error)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < least || number > greatest) {
        return refuse<int>(error, Text::tr("takes a number from %1 to %2, not \"%3\"")
                                      .arg(QString::number(least), QString::number(greatest), text));
    }
    return number;
}

std::optional<int> parseChoice(const QString& text, const QStringList& choices, QString* error)
{
    for (int i = 0; i < choices.size(); ++i) {
        if (choices.at(i).compare(text, Qt::CaseInsensitive) == 0)
            return i;
    }
    return refuse<int>(error,
                       Text::tr("takes one of %1, not \"%2\"").arg(choices.join(QStringLiteral(", ")), text));
}

QUrl serverUrl(const QString& address, bool useSSL)
{
    const QString host = isBareIPv6(address) ? QLatin1Char('[') + address + QLatin1Char(']') : address;
    return QUrl((useSSL ? QStringLiteral("https://") : QStringLiteral("http://")) + host + QLatin1Char('/'),
                QUrl::StrictMode);
}

bool namesServer(const QUrl& url, const QString& address, bool useSSL)
{
    const auto port = [](const QUrl& u) { return u.port(u.scheme() == QLatin1String("https") ? 443 : 80); };
    const QUrl server = serverUrl(address, useSSL);
    return !url.host().isEmpty() && url.host() == server.host() &&
           (url.port() == server.port() || port(url) == port(server));
}

bool checkAddress(const QString& text, QString* error)
{
    if (text.contains(QLatin1String("://"))) {
        *error = Text::tr("takes a host name or HOST:PORT without http:// before it; --ssl chooses HTTPS");
        return false;
    }
    if (text.contains(QLatin1Char('@'))) {
        *error = Text::tr("takes a host name or HOST:PORT without a login in it; that goes to --login");
        return false;
    }
    const QUrl url = serverUrl(text, false);
    static const QRegularExpression forbidden(QStringLiteral("[\\s/?#%\\\\]"));
    static const QRegularExpression emptyPort(QStringLiteral(":0*$"));
    if (!url.isValid() || url.host().isEmpty() || text.contains(forbidden) ||
        (!isBareIPv6(text) && text.contains(emptyPort))) {
        *error = Text::tr("\"%1\" is not a server address; write a host name or HOST:PORT, such as "
                          "fax.example.org or [::1]:8080")
                     .arg(text);
        return false;
    }
    return true;
}

std::optional<QUrl> parseEntryUrl(const QString& text, QString* error)
{
    const QUrl url(text, QUrl::TolerantMode);
    const bool isAbsolute =
        (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")) &&
        !url.host().isEmpty();
    const bool isPath = url.scheme().isEmpty() && url.host().isEmpty() && text.startsWith(QLatin1Char('/'));
    if (!url.isValid() || !(isAbsolute || isPath) || url.path().size() < 2) {
        return refuse<QUrl>(error, Text::tr("takes the URL of a fax as \"qdfax send\" and \"qdfax queue\" "
                                            "print it"));
    }
    return url;
}
