#include "simhandlers.h"

#include "simmedia.h"

#include <QtCore/QUrl>
#include <QtCore/QUrlQuery>

#include <limits>

namespace {

/// A limit in the query; the largest int if it is missing.
int limit(const SimCall& call, const char* name)
{
    const QString value =
        QUrlQuery(QString::fromLatin1(call.request.query)).queryItemValue(QLatin1String(name));
    return value.isEmpty() ? std::numeric_limits<int>::max() : value.toInt();
}

/// Writes the accepted entries from @p begin to @p end, at most @p count of them.
template <typename Iterator, typename Accept, typename Write>
void writeSome(Iterator begin, Iterator end, int count, const Accept& accept, const Write& write)
{
    for (; begin != end && count > 0; ++begin) {
        if (accept(begin->second)) {
            write(begin->second);
            --count;
        }
    }
}

class FaxLog
{
public:
    explicit FaxLog(SimCall& call)
        : m_call(call)
        , m_xml(1 << 16)
    {
        m_xml.open("reply").text("message", "Success");
    }

    bool isVisible(const SimFax& fax) const { return fax.user == m_call.user.name || m_call.user.admin; }
    const std::map<quint64, SimFax>& faxes() const { return m_call.state.faxes().all(); }

    /// Faxes in one of the states, in order of submission.
    void addInState(const char* state, int count)
    {
        writeSome(
            faxes().begin(), faxes().end(), count,
            [&](const SimFax& fax) { return isVisible(fax) && fax.state == QLatin1String(state); },
            [&](const SimFax& fax) { writeQueueEntry(fax); });
    }
    /// Faxes in a final state, the newest first.
    template <typename Write>
    void addFinal(int count, const Write& write)
    {
        writeSome(
            faxes().rbegin(), faxes().rend(), count,
            [&](const SimFax& fax) { return isVisible(fax) && fax.isFinal(); }, write);
    }
    void writeQueueEntry(const SimFax& fax)
    {
        SimDocuments::writeQueueEntry(m_xml, m_call.state.features(), fax, m_call.server);
    }

    SimXmlWriter& xml() { return m_xml; }
    SimReply reply()
    {
        SimReply reply;
        reply.body = m_xml.close("reply").bytes();
        return reply;
    }

private:
    SimCall& m_call;
    SimXmlWriter m_xml;
};

void writeInbound(SimXmlWriter& xml, const SimInbound& entry, const QByteArray& server)
{
    xml.open("inbound_fax_entry");
    for (const auto& delivered : entry.deliveredTo) {
        xml.open("delivered_to").text("type", delivered.first).text("destination", delivered.second);
        xml.close("delivered_to");
    }
    const QByteArray file = QUrl::toPercentEncoding(entry.filename);
    xml.text("status", entry.status).text("filename", entry.filename);
    xml.text("location", QString::fromUtf8(server + "/qdws/v1/documents/inbound/" +
                                           QByteArray::number(entry.id) + '/' + file));
    xml.text("complete_time", entry.completeTime)
        .text("pages", entry.pages)
        .text("recipient_name", entry.toName);
    if (!entry.error.isEmpty())
        xml.open("delivery_error").text("error", entry.error).close("delivery_error");
    xml.text("remote_id", entry.remoteId).text("channel", entry.channel).text("modem", entry.modem);
    xml.text("extension", entry.extension).close("inbound_fax_entry");
}

} // namespace

SimReply SimHandlers::getQueue(SimCall& call)
{
    const SimState::Lock lock(call.state);
    FaxLog log(call);
    log.addInState("sending", std::numeric_limits<int>::max());
    log.addInState("pending", std::numeric_limits<int>::max());
    if (!call.request.query.isEmpty()) // without the limit only unfinished faxes
        log.addFinal(limit(call, "complete_limit"), [&](const SimFax& fax) { log.writeQueueEntry(fax); });
    return log.reply();
}

SimReply SimHandlers::getOutboundStatus(SimCall& call)
{
    const SimState::Lock lock(call.state);
    FaxLog log(call);
    log.addInState("sending", limit(call, "sending_limit"));
    log.addInState("pending", limit(call, "pending_limit"));
    return log.reply();
}

SimReply SimHandlers::getOutboundLog(SimCall& call)
{
    const SimState::Lock lock(call.state);
    FaxLog log(call);
    log.addFinal(limit(call, "limit"),
                 [&](const SimFax& fax) { SimDocuments::writeOutboundEntry(log.xml(), fax, call.server); });
    return log.reply();
}

SimReply SimHandlers::getInboundLog(SimCall& call)
{
    const SimState::Lock lock(call.state);
    const QVector<SimInbound>& entries = call.state.inbound().all();
    const int count = std::min(entries.size(), limit(call, "limit"));
    SimXmlWriter xml(1024 * (count + 1));
    xml.open("reply").text("message", "Success");
    for (int i = 0; i < count; ++i)
        writeInbound(xml, entries[entries.size() - 1 - i], call.server);
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

SimReply SimHandlers::getCoverPages(SimCall& call)
{
    SimXmlWriter xml;
    xml.open("reply").text("message", "Success");
    for (const SimCoverPage& page : call.state.coverPages()) {
        xml.open("file").boolean("enabled", page.enabled).text("name", page.name).text("type", page.type);
        xml.text("url", QString::fromUtf8(call.server + "/qdws/v1/data/cover_pages/" +
                                          QUrl::toPercentEncoding(page.name)));
        xml.text("subject", page.subject).text("comments", page.comments).close("file");
    }
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

SimReply SimHandlers::getPrinters(SimCall& call)
{
    if (!call.state.features().printReceipts)
        return SimReply::refuse(
            404, QStringLiteral("a server of version %1 has no printers").arg(call.state.options().version));
    SimXmlWriter xml;
    xml.open("reply").text("message", "Success");
    for (const QString& printer : call.state.printers())
        xml.text("printer", printer);
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

SimReply SimHandlers::getDocument(SimCall& call)
{
    const QString kind = call.rest.section(QLatin1Char('/'), 0, 0);
    const quint64 id = call.rest.section(QLatin1Char('/'), 1, 1).toULongLong();
    const QString name = call.rest.section(QLatin1Char('/'), 2);
    if (kind == QLatin1String("inbound")) {
        SimInbound entry;
        {
            const SimState::Lock lock(call.state);
            const SimInbound* found = call.state.inbound().find(id);
            if (found)
                entry = *found;
        }
        if (entry.id != 0 && entry.filename == name)
            return entry.reply();
    } else if (kind == QLatin1String("preview")) {
        const SimState::Lock lock(call.state);
        const SimFax* fax = call.state.faxes().find(id);
        if (fax && (fax->user == call.user.name || call.user.admin) &&
            name == QStringLiteral("fax%1.tif").arg(id)) {
            SimReply reply;
            reply.contentType = QByteArrayLiteral("image/tiff");
            reply.body = SimMedia::tiff(id, std::max(1, fax->pages));
            return reply;
        }
    }
    return SimReply::refuse(404, QStringLiteral("no document \"%1\"").arg(call.rest));
}
