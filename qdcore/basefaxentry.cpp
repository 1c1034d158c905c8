#include "basefaxentry.h"

#include "enumtext_p.h"

namespace {

/// Indexed by BaseFaxEntry::FaxEntryState.
const QString stateTexts[] = {
    QString(),
    QStringLiteral("preprocessing"),
    QStringLiteral("pending"),
    QStringLiteral("sending"),
    QStringLiteral("sent"),
    QStringLiteral("complete"),
    QStringLiteral("aborted"),
    QStringLiteral("failed"),
    QStringLiteral("approval_pending"),
    QStringLiteral("rejected"),
};

} // namespace

BaseFaxEntry::~BaseFaxEntry() = default;

QDateTime BaseFaxEntry::sentAt() const
{
    return QDateTime();
}

int BaseFaxEntry::pages() const
{
    return 0;
}

QString BaseFaxEntry::subject() const
{
    return QString();
}

QString BaseFaxEntry::recipient() const
{
    return QString();
}

QUrl BaseFaxEntry::entryUrl() const
{
    return QUrl();
}

void BaseFaxEntry::setFaxEntryStatusFromString(const QString& text)
{
    const int index = indexOfText(stateTexts, int(std::size(stateTexts)), text, Qt::CaseInsensitive, 1);
    m_state = index < 0 ? StateUnknown : static_cast<FaxEntryState>(index);
}
