// Answers to a broadcast, which anybody on the network may send.

#include "fuzz.h"

#include "discoverreply_p.h"

#include <QRegularExpression>

namespace {

/// A property, found by another algorithm: from the last line on.
QString lastOf(const QStringList& lines, const QString& key)
{
    for (int i = lines.size() - 1; i > 0; --i) {
        const int colon = lines.at(i).indexOf(QLatin1Char(':'));
        if (colon >= 0 && lines.at(i).left(colon).toLower() == key)
            return lines.at(i).mid(colon + 1).trimmed();
    }
    return QString();
}

} // namespace

FUZZ_TARGET(discovery)
{
    const DiscoverEntry before{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
    DiscoverEntry entry = before;
    const bool isReply = readDiscoverReply(input, entry);

    static const QRegularExpression lineEnd(QStringLiteral("\r?\n|\r\\z"));
    const QStringList lines = QString::fromUtf8(input.constData(), input.size()).split(lineEnd);
    PROMISE(isReply == (lines.first().toLower() == QLatin1String("200 ok")));
    if (isReply) {
        PROMISE(entry.inetAddr == lastOf(lines, QStringLiteral("inet_addr")));
        PROMISE_THAT(entry.model == lastOf(lines, QStringLiteral("model")), entry.model);
        PROMISE(entry.version == lastOf(lines, QStringLiteral("version")));
    } else {
        PROMISE(entry.inetAddr == before.inetAddr && entry.model == before.model &&
                entry.version == before.version);
    }
}
