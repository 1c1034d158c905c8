#include "outlookport.h"

#ifdef Q_OS_WIN
#include "comoutlook_p.h"
#endif

#include <mutex>

// Out of line, so that each vtable is emitted only here.
OutlookItem::~OutlookItem() = default;
OutlookItems::~OutlookItems() = default;
OutlookFolder::~OutlookFolder() = default;
OutlookFolders::~OutlookFolders() = default;
OutlookSession::~OutlookSession() = default;
OutlookApplication::~OutlookApplication() = default;
OutlookPort::~OutlookPort() = default;

namespace {

/// Where there is no Outlook.
class UnavailableOutlook : public OutlookPort
{
public:
    bool enterThread() override { return true; }
    void leaveThread() override {}
    QSharedPointer<OutlookApplication> createApplication() override
    {
        return QSharedPointer<OutlookApplication>();
    }
};

QSharedPointer<OutlookPort> systemPort()
{
#ifdef Q_OS_WIN
    return QSharedPointer<ComOutlook>::create();
#else
    return QSharedPointer<UnavailableOutlook>::create();
#endif
}

std::mutex currentMutex;

QSharedPointer<OutlookPort>& currentPort()
{
    static QSharedPointer<OutlookPort> port = systemPort();
    return port;
}

} // namespace

QSharedPointer<OutlookPort> OutlookPort::current()
{
    const std::lock_guard<std::mutex> lock(currentMutex);
    return currentPort();
}

void OutlookPort::setCurrent(const QSharedPointer<OutlookPort>& port)
{
    const std::lock_guard<std::mutex> lock(currentMutex);
    currentPort() = port ? port : systemPort();
}

OutlookAccess::OutlookAccess()
    : m_port(OutlookPort::current())
    , m_entered(m_port->enterThread())
{}

OutlookAccess::~OutlookAccess()
{
    if (m_entered)
        m_port->leaveThread();
}

QSharedPointer<OutlookApplication> OutlookAccess::createApplication() const
{
    return m_port->createApplication();
}
