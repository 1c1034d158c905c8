#include "faxserver.h"

#include "contactmanager.h"
#include "contactprovider.h"
#include "domtext_p.h"
#include "faxmanager.h"
#include "passwordcipher.h"
#include "quendracontactprovider.h"
#include "serverversion_p.h"
#include "tasks/operationtable_p.h"
#include "tasks/signaltypes_p.h"

#include <QDomDocument>

FaxServer::FaxServer(FaxManager& manager)
    : QObject(&manager)
    , m_nam(&manager.nam())
    , m_manager(manager)
{
    registerSignalTypes();
}

FaxServer::~FaxServer() = default;

// --- How to reach it

template <typename T>
void FaxServer::change(T& member, const T& value)
{
    if (member == value)
        return;
    m_lastStatus = Task::Unknown;
    member = value;
}

void FaxServer::setAddress(const QString& address)
{
    change(m_address, address);
}

void FaxServer::setUseSSL(bool useSSL)
{
    change(m_useSSL, useSSL);
}

void FaxServer::setLogin(const QString& login)
{
    change(m_login, login);
}

void FaxServer::setPassword(const QString& password)
{
    change(m_password, password);
}

// --- What is known of it

void FaxServer::applySupport(const FaxUser& user) const
{
    user.setSupportReceiptOptions(isPrintReceiptSupported());
    user.setSupportFaxPageSizeOptions(isFaxPageSizeSupported());
}

void FaxServer::takeUser(const FaxUser& user)
{
    m_user.setContact(user.contact());
    m_user.setDefaultCoverPage(user.defaultCoverpage());
    m_user.setScheduleOptions(user.faxScheduleOptions());
    m_user.useCoverPage(user.isUsedCoverPage());
    applySupport(m_user);
}

void FaxServer::setUser(const FaxUser& user)
{
    takeUser(user);
    const FaxUser held = m_user;
    Q_EMIT changedFaxUser(held);
}

const QStringList& FaxServer::printersList() const
{
    static const QStringList none{};
    return m_printers ? *m_printers : none;
}

const QVector<CoverPage>& FaxServer::coverPagesList() const
{
    static const QVector<CoverPage> none{};
    return m_coverPages ? *m_coverPages : none;
}

int FaxServer::coverPagesCount() const
{
    return m_coverPages ? m_coverPages->size() : 0;
}

const CoverPage& FaxServer::emptyCoverPage()
{
    static const CoverPage empty;
    return empty;
}

const CoverPage& FaxServer::coverPage(int index) const
{
    return index >= 0 && index < coverPagesCount() ? m_coverPages->at(index) : emptyCoverPage();
}

CoverPage FaxServer::defaultCoverPage() const
{
    return emptyCoverPage();
}

bool FaxServer::isPrintReceiptSupported() const
{
    return versionNumber(m_info.version()) > versionBeforePrintReceipts;
}

bool FaxServer::isFaxPageSizeSupported() const
{
    return versionNumber(m_info.version()) > versionBeforeFaxPageSize;
}

QString FaxServer::getServerPreambule() const
{
    constexpr int longestAddress = 15;
    const bool hasDescription = !m_info.description().isEmpty();
    QString line = m_info.description();
    if (hasDescription)
        line += QLatin1String(" (");
    line += m_address.leftRef(longestAddress);
    if (m_address.size() > longestAddress)
        line += QLatin1String("...");
    if (!m_info.model().isEmpty())
        line += QLatin1String(" : ") + m_info.model();
    if (hasDescription)
        line += QLatin1String(")");
    return line;
}

QString FaxServer::genUID() const
{
    return m_login.toLower() + QLatin1Char('@') + m_address.toLower();
}

// --- Requests

/// Creates the task and connects its done signals, each of which counts as a success.
template <typename T, typename... Args, typename... Others>
Task* FaxServer::newTask(void (T::*done)(Args...), Others... others)
{
    auto* task = new T(*this);
    connect(task, done, this, qOverload<>(&FaxServer::slotDone));
    (connect(task, others, this, qOverload<>(&FaxServer::slotDone)), ...);
    connect(task, &Task::errorExecute, this, &FaxServer::slotError);
    return task;
}

Task* FaxServer::addTask(Task::Type type)
{
    Task* task = nullptr;
    forEachOperation([&](const WebOperation& operation, auto... done) {
        if (operation.type == type)
            task = newTask(done...);
    });
    return task;
}

template <typename T>
T* FaxServer::createTask(Task::Type type)
{
    return static_cast<T*>(addTask(type));
}

void FaxServer::verifyUser(bool syncContacts)
{
    m_lastStatus = Task::Unknown;
    auto* task = createTask<TaskVerifyLogin>(Task::VerifyLogin);
    if (syncContacts)
        m_syncAfterLogin = true;
    connect(task, &TaskVerifyLogin::doneVerifyLogin, this, &FaxServer::slotDoneVerifyUser);
    connect(task, &Task::errorExecute, this, &FaxServer::slotErrorVerifyUser);
    task->execute();
}

void FaxServer::updateInfo(bool)
{
    auto* task = createTask<TaskGetQuendraInfo>(Task::GetQuendraInfo);
    connect(task, &TaskGetQuendraInfo::doneGetFaxInfo, this, &FaxServer::slotFaxInfoReceived);
    task->execute();
}

void FaxServer::updateContact(bool)
{
    auto* task = createTask<TaskGetFaxUser>(Task::GetFaxUser);
    task->setUser(m_login);
    connect(task, &TaskGetFaxUser::doneGetFaxUser, this, &FaxServer::slotFaxUserReceived);
    task->execute();
}

void FaxServer::updateCoverpagesList()
{
    auto* task = createTask<TaskGetCoverPages>(Task::GetCoverPages);
    connect(task, &TaskGetCoverPages::doneGetCoverPages, this, &FaxServer::slotCoverPagesReceived);
    connect(task, &Task::errorExecute, this, &FaxServer::errorRetrieveCoverpageList);
    task->execute();
}

void FaxServer::updatePrinternamesList()
{
    if (!isPrintReceiptSupported())
        return;
    auto* task = createTask<TaskGetPrinterNames>(Task::GetPrinterNames);
    connect(task, &TaskGetPrinterNames::doneGetPrinterNames, this, &FaxServer::slotPrinterNamesReceived);
    connect(task, &Task::errorExecute, this, &FaxServer::errorRetrievePrintersList);
    task->execute();
}

// --- Bookkeeping

/// Records a success. False if a slot has destroyed this server.
bool FaxServer::succeeded()
{
    if (m_lastStatus == Task::Ok)
        return true;
    m_lastStatus = Task::Ok;
    const QPointer<FaxServer> self(this);
    setConnected(true);
    if (self)
        Q_EMIT changedLastStatus(Task::Ok);
    return self;
}

void FaxServer::setConnected(bool connected)
{
    m_connected = connected;
    Q_EMIT changedConnected(connected);
}

void FaxServer::setLastStatus(Task::Status status)
{
    slotError(status);
}

void FaxServer::slotError(Task::Status status)
{
    if (status == m_lastStatus)
        return;
    m_lastStatus = status;
    const QPointer<FaxServer> self(this);
    switch (status) {
    case Task::Unknown:
    case Task::Error:
    case Task::AuthError:
        setConnected(false);
        break;
    case Task::Ok:
        setConnected(true);
        break;
    default: // says nothing about the connection
        break;
    }
    if (self)
        Q_EMIT changedLastStatus(status);
}

void FaxServer::slotDone()
{
    succeeded();
}

void FaxServer::slotDone(const QuendraInfo&)
{
    succeeded();
}

void FaxServer::slotDone(const FaxUser&)
{
    succeeded();
}

void FaxServer::slotDone(BaseFaxEntry::FaxEntriesPtrListPtr)
{
    succeeded();
}

void FaxServer::slotDone(const InboundFaxEntriesPtrListPtr&)
{
    succeeded();
}

void FaxServer::slotDone(CoverPageListPtr)
{
    succeeded();
}

void FaxServer::slotDone(QStringListPtr)
{
    succeeded();
}

void FaxServer::slotDone(const ContactList&, unsigned int)
{
    succeeded();
}

void FaxServer::slotDone(ContactList::Type)
{
    succeeded();
}

void FaxServer::slotDone(const ContactUnit&, ContactList::Type)
{
    succeeded();
}

void FaxServer::slotDone(const QList<QString>&, ContactList::Type)
{
    succeeded();
}

void FaxServer::slotDoneVerifyUser()
{
    if (succeeded())
        updateInfo();
}

void FaxServer::slotErrorVerifyUser()
{
    m_syncAfterLogin = false;
}

void FaxServer::slotFaxInfoReceived(const QuendraInfo& info)
{
    m_info = info;
    const QuendraInfo held = m_info;
    const QPointer<FaxServer> self(this);
    updateContact();
    const QPointer<ContactProvider> provider = m_provider;
    if (m_syncAfterLogin && provider && !provider->isSync()) {
        const QList<ContactList::Type> books = provider->contactsTypeList();
        for (const ContactList::Type book : books) {
            if (provider)
                provider->syncContacts(book, false);
        }
    }
    if (!self)
        return;
    m_syncAfterLogin = false;
    if (succeeded())
        Q_EMIT changedQuendraInfo(held);
}

void FaxServer::slotFaxUserReceived(const FaxUser& user)
{
    FaxUser received = user;
    // a server of the older protocol knows no schedule defaults: keep ours
    if (m_info.protocolVersion() == 1)
        received.setScheduleOptions(m_user.faxScheduleOptions());
    takeUser(received);
    const FaxUser held = m_user;
    if (succeeded())
        Q_EMIT changedFaxUser(held);
}

void FaxServer::slotCoverPagesReceived(CoverPageListPtr coverPagesList)
{
    m_coverPages = coverPagesList;
    if (succeeded())
        Q_EMIT changedCoverPagesList(this);
}

void FaxServer::slotPrinterNamesReceived(QStringListPtr printerNamesList)
{
    m_printers = printerNamesList;
    if (succeeded())
        Q_EMIT changedPrintersList(this);
}

// --- Contacts

void FaxServer::initProvider()
{
    const QPointer<ContactManager> contacts = m_manager.conatctManager();
    if (m_provider || !contacts)
        return;
    const QPointer<FaxServer> self(this);
    const QPointer<ContactProvider> provider = contacts->addProvider(ContactProvider::QuendraProvider);
    if (!self) {
        if (contacts && provider)
            contacts->deleteProvider(provider);
        return;
    }
    m_provider = provider;
    if (auto* quendra = qobject_cast<QuendraContactProvider*>(m_provider))
        quendra->linkFaxServer(self);
}

void FaxServer::deinitProvider()
{
    const QPointer<ContactManager> contacts = m_manager.conatctManager();
    if (!contacts || !m_provider)
        return;
    if (auto* quendra = qobject_cast<QuendraContactProvider*>(m_provider))
        quendra->unlinkFaxServer();
    const QPointer<FaxServer> self(this);
    contacts->deleteProvider(m_provider);
    if (self)
        m_provider.clear();
}

// --- Settings

bool FaxServer::readStorage(const QDomElement& element, int version)
{
    const QDomElement connection = element.firstChildElement(QStringLiteral("connection"));
    if (connection.isNull())
        return false;
    setUseSSL(isTrue(connection.attribute(QStringLiteral("ssl"), QStringLiteral("false"))));

    const DomChildren fields(connection);
    QString address;
    QString login;
    QString stored;
    if (!fields.read(QStringLiteral("address"), address) || !fields.read(QStringLiteral("login"), login) ||
        !fields.read(QStringLiteral("password"), stored)) {
        return false;
    }
    setAddress(address);
    setLogin(login);
    const QString password = PasswordCipher(def_cryptKey).decipherText(stored);
    setPassword(password.isEmpty() ? stored : password);

    const QDomElement about = element.firstChildElement(QStringLiteral("about"));
    const QDomElement user = element.firstChildElement(QStringLiteral("user"));
    if (about.isNull() || user.isNull())
        return false;
    m_info.readStorage(about, version);
    applySupport(m_user);
    m_user.readStorage(user, version);
    return true;
}

bool FaxServer::writeStorage(QDomDocument& doc, QDomElement& element, int) const
{
    QDomElement connection = appendElement(doc, element, QStringLiteral("connection"));
    connection.setAttribute(QStringLiteral("ssl"), boolText(m_useSSL));
    appendText(doc, connection, QStringLiteral("address"), m_address);
    appendText(doc, connection, QStringLiteral("login"), m_login);
    appendText(doc, connection, QStringLiteral("password"),
               PasswordCipher(def_cryptKey).encipherText(m_password));

    QDomElement about = appendElement(doc, element, QStringLiteral("about"));
    m_info.writeStorage(doc, about, 1);
    QDomElement user = appendElement(doc, element, QStringLiteral("user"));
    applySupport(m_user);
    m_user.writeStorage(doc, user, m_info.protocolVersion());
    return true;
}
