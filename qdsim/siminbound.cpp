#include "siminbound.h"

#include "simclock.h"
#include "simmedia.h"
#include "simpeople.h"

#include <algorithm>

SimReply SimInbound::reply() const
{
    SimReply reply;
    const bool isPdf = filename.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive);
    reply.contentType = isPdf ? QByteArrayLiteral("application/pdf") : QByteArrayLiteral("image/tiff");
    const int count = std::min(std::max(pages.toInt(), 1), 1000);
    if (!document.isEmpty()) {
        reply.body = document;
    } else if (hugeSize > 0) {
        reply.size = hugeSize;
        reply.generator = [size = hugeSize](qint64 offset, qint64 length) {
            return SimMedia::hugeTiff(size, offset, length);
        };
    } else {
        reply.body = isPdf ? SimMedia::pdf(QStringLiteral("Fax %1 from %2").arg(id).arg(remoteId), count)
                           : SimMedia::tiff(id, count);
    }
    return reply;
}

void SimInboundLog::generate(int count, qint64 hugeSize, quint32 seed, qint64 now)
{
    SimPeople people(seed);
    m_entries.reserve(count);
    for (int i = 0; i < count; ++i) {
        SimInbound entry;
        const qint64 time = now - 60000 - qint64(count - 1 - i) * 420000 - qint64(1000) * people.below(400);
        entry.completeTime = SimClock::text(time);
        entry.pages = QString::number(1 + people.below(5));
        entry.filename = QStringLiteral("fax%1.%2")
                             .arg(i + 1, 5, 10, QLatin1Char('0'))
                             .arg(people.below(3) == 0 ? QLatin1String("pdf") : QLatin1String("tif"));
        const SimPerson person = people.person();
        entry.toName = person.name;
        entry.remoteId = people.faxNumber();
        const int channel = 1 + people.below(4);
        entry.channel = QString::number(channel);
        entry.modem = QStringLiteral("modem%1").arg(channel);
        entry.extension = QString::number(100 + people.below(900));
        if (people.below(20) == 0) {
            entry.status = QStringLiteral("failed");
            entry.error = QStringLiteral("Mailbox full");
        } else if (!person.email.isEmpty()) {
            entry.deliveredTo.append(qMakePair(QStringLiteral("email"), person.email));
        } else {
            entry.deliveredTo.append(qMakePair(QStringLiteral("printer"), QStringLiteral("Front office")));
        }
        add(entry);
    }
    if (hugeSize > 0) {
        SimInbound entry;
        entry.filename = QStringLiteral("huge.tif");
        entry.completeTime = SimClock::text(now);
        entry.pages = QStringLiteral("1");
        entry.hugeSize = std::max(hugeSize, qint64(4096));
        add(entry);
    }
}

quint64 SimInboundLog::add(SimInbound entry)
{
    entry.id = static_cast<quint64>(m_entries.size()) + 1;
    if (entry.filename.isEmpty())
        entry.filename = QStringLiteral("fax%1.tif").arg(entry.id, 5, 10, QLatin1Char('0'));
    m_entries.append(entry);
    return entry.id;
}

const SimInbound* SimInboundLog::find(quint64 id) const
{
    return id >= 1 && id <= static_cast<quint64>(m_entries.size()) ? &m_entries[static_cast<int>(id - 1)]
                                                                   : nullptr;
}
