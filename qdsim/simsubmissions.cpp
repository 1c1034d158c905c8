#include "simhandlers.h"

#include "simmedia.h"
#include "simspool.h"

#include <QtCore/QRegularExpression>

#include <algorithm>

namespace {

SimReply entryReply(SimCall& call, const QString& message, const QVector<SimFax>& faxes)
{
    SimXmlWriter xml;
    xml.open("reply").text("message", message);
    for (const SimFax& fax : faxes)
        SimDocuments::writeQueueEntry(xml, call.state.features(), fax, call.server);
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

/// The fax that the path addresses, if the user may see it; otherwise null and the refusal. Needs the state's
/// lock.
const SimFax* findFax(SimCall& call, SimReply* refusal)
{
    bool isNumber = false;
    const quint64 id = call.rest.toULongLong(&isNumber);
    const SimFax* fax = isNumber ? call.state.faxes().find(id) : nullptr;
    if (!fax)
        *refusal = SimReply::refuse(404, QStringLiteral("no fax \"%1\"").arg(call.rest));
    else if (fax->user != call.user.name && !call.user.admin)
        *refusal = SimReply::refuse(403, QStringLiteral("fax %1 is somebody else's").arg(call.rest));
    else
        return fax;
    return nullptr;
}

} // namespace

SimReply SimHandlers::submit(SimCall& call)
{
    if (call.user.noSend)
        return SimReply::refuse(403, QStringLiteral("%1 may not send").arg(call.user.name));
    SimSubmission submission;
    QString why;
    if (!SimDocuments::readSubmission(call.root, call.state.features(), &submission, &why))
        return SimReply::refuse(400, why);
    int pages = 0;
    for (const SimAttachment& attachment : qAsConst(submission.attachments))
        pages += SimMedia::countPages(attachment.contentType, attachment.content);

    const SimOptions& options = call.state.options();
    const SimState::Lock lock(call.state);
    if (!options.spoolDir.isEmpty() &&
        !SimSpool::store(options.spoolDir, call.state.faxes().nextId(), &submission.attachments, &why))
        return SimReply::refuse(500, why);
    for (SimAttachment& attachment : submission.attachments) {
        if (options.keepBodyLimit >= 0 && attachment.size > options.keepBodyLimit)
            attachment.content = QByteArray();
    }
    const QVector<SimFax> faxes =
        call.state.faxes().submit(call.user.name, submission, pages, call.state.clock().now());
    call.state.attachments(faxes.first().job) = submission.attachments;
    return entryReply(call, QStringLiteral("Success"), faxes);
}

SimReply SimHandlers::getFax(SimCall& call)
{
    const SimState::Lock lock(call.state);
    SimReply refusal;
    const SimFax* fax = findFax(call, &refusal);
    return fax ? entryReply(call, QStringLiteral("Success"), {*fax}) : refusal;
}

SimReply SimHandlers::abortFax(SimCall& call)
{
    const SimState::Lock lock(call.state);
    SimReply refusal;
    const SimFax* fax = findFax(call, &refusal);
    if (!fax)
        return refusal;
    if (!call.state.faxes().abort(fax->id, call.state.clock().now()))
        return SimReply::refuse(409, QStringLiteral("fax %1 is %2 already").arg(fax->id).arg(fax->state));
    return entryReply(call, QStringLiteral("Attempting Abort"), {*fax});
}

SimReply SimHandlers::rescheduleFax(SimCall& call)
{
    const QString at = QString::fromUtf8(QByteArray::fromPercentEncoding(call.request.query.mid(3)));
    const qint64 when = at == QLatin1String("now") ? call.state.clock().now() : SimClock::fromUtcText(at);
    if (when == 0)
        return SimReply::refuse(400, QStringLiteral("\"%1\" is no date").arg(at));
    const SimState::Lock lock(call.state);
    SimReply refusal;
    const SimFax* fax = findFax(call, &refusal);
    if (!fax)
        return refusal;
    if (!call.state.faxes().reschedule(fax->id, when, call.state.clock().now()))
        return SimReply::refuse(409, QStringLiteral("fax %1 is %2 already").arg(fax->id).arg(fax->state));
    return entryReply(call, QStringLiteral("Attempting reschedule"), {*fax});
}
