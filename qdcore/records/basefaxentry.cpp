#include "basefaxentry.h"

#include "enumtext_p.h"

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
    // indexed by FaxEntryState
    static const QString stateTexts[] = {
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
    const int index = indexOfText(stateTexts, int(std::size(stateTexts)), text, Qt::CaseInsensitive, 1);
    m_state = index < 0 ? StateUnknown : static_cast<FaxEntryState>(index);
}
