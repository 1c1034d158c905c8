#include "discoverreply_p.h"

#include <QHash>
#include <QTextStream>

bool readDiscoverReply(const QByteArray& datagram, DiscoverEntry& entry)
{
    // decoded in one call: a QTextStream would guess encodings, and drop a truncated character at the end
    QString text = QString::fromUtf8(datagram.constData(), datagram.size());
    QTextStream lines(&text, QIODevice::ReadOnly);
    if (lines.readLine().compare(QLatin1String("200 OK"), Qt::CaseInsensitive) != 0)
        return false;

    QHash<QString, QString> properties;
    QString line;
    while (lines.readLineInto(&line)) {
        const int colon = line.indexOf(QLatin1Char(':'));
        if (colon >= 0)
            properties.insert(line.left(colon).toLower(), line.mid(colon + 1));
    }
    entry.inetAddr = properties.value(QStringLiteral("inet_addr")).trimmed();
    entry.model = properties.value(QStringLiteral("model")).trimmed();
    entry.version = properties.value(QStringLiteral("version")).trimmed();
    return true;
}
