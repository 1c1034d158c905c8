#include "faxorder.h"

#include "exitstatus.h"
#include "faxdocument.h"
#include "faxfile.h"
#include "faxserver.h"
#include "session.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskschedule.h"
#include "terminal.h"
#include "text.h"

#include <algorithm>

namespace {

/// The chosen cover page, or else the user's default.
bool chooseCoverPage(Session& session, const FaxOrder& order, CoverPage& cover)
{
    const FaxUser user = session.server().user();
    const bool isUsual = !order.cover && user.isUsedCoverPage();
    const QString name = order.cover ? *order.cover : isUsual ? user.defaultCoverpage() : QString();
    if (!name.isEmpty()) {
        QVector<CoverPage> offered;
        if (!session.run(
                session.task<TaskGetCoverPages>(Task::GetCoverPages), &TaskGetCoverPages::doneGetCoverPages,
                [&offered](const CoverPageListPtr& pages) { offered = *pages; },
                Text::tr("Reading the cover pages")))
            return false;
        const auto found = std::find_if(offered.cbegin(), offered.cend(), [&name](const CoverPage& page) {
            return page.enabled() && page.name().compare(name, Qt::CaseInsensitive) == 0;
        });
        if (found == offered.cend()) {
            session.fail(ExitStatus::NotFound,
                         Text::tr("The server has no cover page \"%1\". \"qdfax covers\" lists them%2.")
                             .arg(name, isUsual ? Text::tr("; --no-cover sends without one") : QString()));
            return false;
        }
        cover = *found;
        cover.setSubject(QString());
        cover.setComments(QString());
    } else if (!order.comments.isEmpty()) {
        session.fail(ExitStatus::Usage,
                     Text::tr("--comments stand on the cover page: choose one by --cover. See \"qdfax help "
                              "send\"."));
        return false;
    }
    cover.setSubject(order.subject);
    cover.setComments(order.comments);
    return true;
}

/// Whether a request that failed may have reached the server.
bool mayHaveArrived(const Session& session, const ReplyWatch::Outcome& last)
{
    if (session.status() == ExitStatus::TimeOut)
        return true;
    // Accepted, with a reply that cannot be parsed; or a proxy or gateway lost the reply.
    if (last.httpStatus / 100 == 2 || last.httpStatus == 502 || last.httpStatus == 504)
        return true;
    return last.httpStatus == 0 && last.error != QNetworkReply::NoError &&
           last.error != QNetworkReply::ConnectionRefusedError &&
           last.error != QNetworkReply::HostNotFoundError &&
           last.error != QNetworkReply::SslHandshakeFailedError;
}

} // namespace

BaseFaxEntry::FaxEntriesPtrListPtr submitFax(Session& session, const FaxOrder& order, QString* doubt)
{
    const QString problem = order.schedule.problem(session.server());
    if (!problem.isEmpty()) {
        session.fail(ExitStatus::NotSupported, problem);
        return {};
    }
    CoverPage cover;
    if (!chooseCoverPage(session, order, cover))
        return {};

    FaxScheduleOptions options(session.server().user().faxScheduleOptions());
    options.setSupportReceiptOptions(session.server().isPrintReceiptSupported());
    options.setSupportFaxPageSizeOptions(session.server().isFaxPageSizeSupported());
    order.schedule.applyTo(options);
    options.setDateToSend(order.at);

    QString error;
    const auto attachments = attachFiles(order.files, &error);
    if (!attachments) {
        session.fail(ExitStatus::File, error);
        return {};
    }
    FaxDocument document;
    document.setRecipients(order.recipients);
    document.setAttachs(*attachments);
    document.setCoverPage(cover);
    document.setFaxSchedule(options);

    auto* task = session.task<TaskSchedule>(Task::Schedule);
    task->setFaxDocument(document);
    const QString unknown =
        Text::tr("Whether the server took the fax is not known; \"qdfax queue\" shows it.");
    Terminal::setLastWords(Text::tr("qdfax: Interrupted. ") + unknown);
    BaseFaxEntry::FaxEntriesPtrListPtr entries;
    const bool ok = session.run(
        task, &TaskSchedule::doneFaxSchedule,
        [&entries](const BaseFaxEntry::FaxEntriesPtrListPtr& received) { entries = received; },
        Text::tr("Sending the fax"));
    Terminal::setLastWords(QString());
    if (!ok && mayHaveArrived(session, session.replies().last()))
        *doubt = unknown;
    return entries;
}
