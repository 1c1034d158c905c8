// Reading a log of the server to records, compared with only parsing the same bytes.

#include "bench.h"
#include "faxentry.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "tasks/replyreader_p.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QSharedPointer>
#include <QVector>

namespace {

QByteArray inboundEntry(int i)
{
    const QByteArray n = QByteArray::number(i);
    const QByteArray minute = QByteArray::number(10 + i % 50);
    return "<inbound_fax_entry><filename>fax" + n +
           ".tif</filename><location>http://fax.example.org/qdws/v1/ifax/" + n +
           "</location><status>complete</status><complete_time>2026-11-15T14:" + minute +
           ":05</complete_time><pages>" + QByteArray::number(1 + i % 9) +
           "</pages><recipient_name>Reception desk " + n + "</recipient_name><remote_id>+1 555 01" + minute +
           "</remote_id><channel>2</channel><modem>m" + n + "</modem><extension>4" + minute +
           "</extension><delivered_to><type>email</type><destination>desk" + n +
           "@example.org</destination></delivered_to></inbound_fax_entry>\n";
}

QByteArray outboundEntry(int i)
{
    const QByteArray n = QByteArray::number(i);
    const QByteArray minute = QByteArray::number(10 + i % 50);
    return "<outbound_fax_entry><fax_entry_url>http://fax.example.org/qdws/v1/ofax/" + n +
           "</fax_entry_url><status>sent</status><pages>2</pages><cover_page_used>1</"
           "cover_page_used><start_time>"
           "2026-11-15T14:" +
           minute + ":05</start_time><end_time>2026-11-15T14:" + minute + ":45</end_time><subject>Offer " +
           n + "</subject><recipient_name>Recipient " + n + "</recipient_name><recipient_fax>+1 555 02" +
           minute +
           "</recipient_fax><sender_name>Sender</sender_name><sender_email>s@example.org</"
           "sender_email><username>user" +
           n + "</username><agent>client</agent></outbound_fax_entry>\n";
}

QByteArray statusEntry(int i)
{
    const QByteArray n = QByteArray::number(i);
    const QByteArray minute = QByteArray::number(10 + i % 50);
    return "<fax_entry><fax_entry_url>http://fax.example.org/qdws/v1/ofax/" + n +
           "</fax_entry_url><state>pending</state><created>2026-11-15T14:" + minute +
           ":05</created><stime>2026-11-15T14:" + minute +
           ":06</stime><agent>client</agent><priority>3</priority><try_number>1</try_number>"
           "<max_tries>3</max_tries><pages>2</pages><sender><name>Sender</name><username>user</username>"
           "</sender><recipient><name>Recipient " +
           n + "</name><fax_number>+1 555 02" + minute +
           "</fax_number></recipient><cover_page><enabled>true</enabled><subject>Offer " + n +
           "</subject></cover_page></fax_entry>\n";
}

QByteArray log(int round, int entries, QByteArray (*entry)(int))
{
    QByteArray bytes = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<log><message>Success</message>\n";
    for (int i = 0; i < entries; ++i)
        bytes += entry(round * entries + i);
    return bytes + "</log>\n";
}

/// Reads a log from the bytes to records like its task, in blocks as the access manager delivers them,
/// compared with parsing it to a DOM in one piece. Neither time includes the destruction of the results.
template <typename Entry>
void row(Bench& bench, const char* name, const char* tag, QByteArray (*entry)(int))
{
    const int entries = bench.size(10000);
    bench.ratio(
        name, 1.1,
        [=](int round) {
            const QByteArray bytes = log(round, entries, entry);
            const int block = ReplyReader::usualPieceSize;
            const QString item = QLatin1String(tag);
            QVector<QSharedPointer<BaseFaxEntry>> records;
            bool isValid = false;
            const double time = milliseconds([&] {
                ReplyReader reader([&](const QDomElement& child, bool) {
                    if (child.tagName() == item) {
                        const auto record = QSharedPointer<Entry>::create();
                        if (record->readFax(child, 1))
                            records.append(record);
                    } else if (child.tagName() == QLatin1String("message")) {
                        isValid = child.text() == QLatin1String("Success");
                    }
                    return 1;
                });
                for (int at = 0; at < bytes.size(); at += block)
                    reader.add(
                        QByteArray::fromRawData(bytes.constData() + at, qMin(block, bytes.size() - at)));
                isValid &= reader.finish();
            });
            if (!isValid || records.size() != entries || records.last()->pages() == 0)
                fail(name);
            return time;
        },
        [=](int round) {
            const QByteArray bytes = log(round, entries, entry);
            QDomDocument document;
            bool isParsed = false;
            const double time = milliseconds([&] { isParsed = document.setContent(bytes); });
            if (!isParsed || document.documentElement().lastChildElement().tagName() != QLatin1String(tag))
                fail("plain parsing");
            return time;
        });
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    row<InboundFaxEntry>(bench, "log-parse", "inbound_fax_entry", inboundEntry);
    row<OutboundFaxEntry>(bench, "log-parse-outbound", "outbound_fax_entry", outboundEntry);
    row<FaxEntry>(bench, "log-parse-status", "fax_entry", statusEntry);
    return bench.exitCode();
}
