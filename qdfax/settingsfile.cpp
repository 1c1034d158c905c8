#include "settingsfile.h"

#include "appfolder_p.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "quendrastorage.h"
#include "terminal.h"
#include "text.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QScopeGuard>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <filesystem>
#include <system_error>
#include <utility>

#ifdef Q_OS_UNIX
#include <unistd.h>
#else
#include <windows.h>
#endif

namespace {

const auto rootTag = QStringLiteral("settings");
const auto serverTag = QStringLiteral("server");
const auto outlookTag = QStringLiteral("outlook");
const auto defaultAttribute = QStringLiteral("default");
const auto versionAttribute = QStringLiteral("version");

const qint64 largestFile = qint64(16) * 1024 * 1024;
const int deepestNesting = 32; // ours have four levels; the DOM parser recurses: stack overflow
const int lockTimeout = 10000; // ms
const auto lockSuffix = QStringLiteral(".lock");
const auto sideSuffix = QStringLiteral(".saving-"); // of the side file, before six letters of its own

/// Empty when the bytes are XML that is safe to parse into a DOM, else what is wrong with them.
QString xmlProblem(const QByteArray& bytes)
{
    if (bytes.trimmed().isEmpty())
        return Text::tr("it is empty");
    QXmlStreamReader reader(bytes);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > deepestNesting)
                return Text::tr("its elements are nested too deep");
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    if (!reader.hasError())
        return QString();
    return Text::tr("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString());
}

/// A document whose root holds nothing but this entry, as a FaxManager reads it.
QDomElement alone(QDomDocument& document, const QDomElement& entry)
{
    QDomElement root = document.createElement(rootTag);
    document.appendChild(root);
    root.appendChild(document.importNode(entry, true));
    return root;
}

/// Reads the visible part of an entry; false if FaxServer::readStorage() would refuse it, which is not called
/// itself: only a manager creates servers, and it logs in to each.
bool readEntry(const QDomElement& entry, StoredServer& stored)
{
    const QDomElement connection = entry.firstChildElement(QStringLiteral("connection"));
    const QDomElement address = connection.firstChildElement(QStringLiteral("address"));
    const QDomElement login = connection.firstChildElement(QStringLiteral("login"));
    const QDomElement password = connection.firstChildElement(QStringLiteral("password"));
    const QDomElement about = entry.firstChildElement(QStringLiteral("about"));
    const QDomElement user = entry.firstChildElement(QStringLiteral("user"));
    if (address.isNull() || login.isNull() || password.isNull() || about.isNull() || user.isNull())
        return false;
    stored.address = address.text();
    stored.login = login.text();
    stored.uid = stored.login.toLower() + QLatin1Char('@') + stored.address.toLower();
    stored.useSSL = connection.attribute(QStringLiteral("ssl")) == QLatin1String("true");
    stored.info.readStorage(about, 1);
    stored.isDefault = entry.attribute(defaultAttribute) == QLatin1String("true");
    return true;
}

QVector<QDomElement> entries(const QDomElement& root)
{
    QVector<QDomElement> list;
    for (QDomElement e = root.firstChildElement(serverTag); !e.isNull(); e = e.nextSiblingElement(serverTag))
        list.append(e);
    return list;
}

/// Whether two elements are equivalent: name, attributes, child elements, and the text of elements without
/// any. Order of attributes, indentation and empty texts are ignored.
bool sameContent(const QDomElement& a, const QDomElement& b)
{
    const QDomNamedNodeMap attributes = a.attributes();
    if (a.tagName() != b.tagName() || attributes.size() != b.attributes().size())
        return false;
    for (int i = 0; i < attributes.size(); ++i) {
        const QDomAttr attribute = attributes.item(i).toAttr();
        if (!b.hasAttribute(attribute.name()) || b.attribute(attribute.name()) != attribute.value())
            return false;
    }
    QDomElement childA = a.firstChildElement();
    QDomElement childB = b.firstChildElement();
    if (childA.isNull() && childB.isNull())
        return a.text() == b.text();
    for (; !childA.isNull() && !childB.isNull();
         childA = childA.nextSiblingElement(), childB = childB.nextSiblingElement()) {
        if (!sameContent(childA, childB))
            return false;
    }
    return childA.isNull() && childB.isNull();
}

/// Flushes the file from the system's cache to the disk. False when that fails.
bool flushToDisk(const QString& path)
{
#ifdef Q_OS_UNIX
    QFile file(path);
    return file.open(QIODevice::ReadWrite) && ::fsync(file.handle()) == 0;
#else
    const HANDLE file = CreateFileW(reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(path).utf16()),
                                    GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    const bool flushed = file != INVALID_HANDLE_VALUE && FlushFileBuffers(file);
    if (file != INVALID_HANDLE_VALUE)
        CloseHandle(file);
    return flushed;
#endif
}

/// Replaces a file by another atomically, which QFile::rename() does not.
bool replaceFile(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::rename(std::filesystem::path(from.toStdU16String()),
                            std::filesystem::path(to.toStdU16String()), error);
    return !error;
}

} // namespace

QString SettingsFile::defaultPath()
{
    return QuendraStorage::getAppStoragePath() + QStringLiteral("/qdfax.xml");
}

SettingsFile::SettingsFile(const QString& path)
    : m_path(path)
{
    // a symbolic link is preserved: its target is replaced
    const QFileInfo info(path);
    if (info.isSymLink())
        m_path = info.symLinkTarget();
    startEmpty();
}

SettingsFile::~SettingsFile() = default;

void SettingsFile::startEmpty()
{
    m_document = QDomDocument();
    m_document.appendChild(m_document.createElement(rootTag));
}

SettingsFile::State SettingsFile::load()
{
    clearUp();
    return read();
}

SettingsFile::State SettingsFile::read()
{
    startEmpty();
    m_detail.clear();
    QFile file(m_path);
    if (!file.exists())
        return m_state = Missing;
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        m_detail = file.isOpen() || file.error() == QFileDevice::NoError ? Text::tr("it is not a file")
                                                                         : file.errorString();
        return m_state = Unreadable;
    }
    keepToOwner(m_path); // it contains passwords, whoever created it; also if it is about to be moved aside
    m_detail = file.size() > largestFile ? Text::tr("it is too large") : xmlProblem(file.readAll());
    file.close();
    if (!m_detail.isEmpty())
        return m_state = Damaged;

    m_state = Good;
    if (!QuendraStorage(m_path).Load(*this) && m_state == Good)
        m_state = Unreadable;
    return m_state;
}

bool SettingsFile::readStorage(const QDomElement& element, int)
{
    if (element.tagName() != rootTag) {
        m_detail = Text::tr("it is not a settings file");
        m_state = Damaged;
        return false;
    }
    // This format has no version attribute; one with it is from a later program.
    if (element.hasAttribute(versionAttribute)) {
        m_detail = element.attribute(versionAttribute);
        m_state = Newer;
        return false;
    }
    m_document = QDomDocument();
    m_document.appendChild(m_document.importNode(element, true));
    return true;
}

bool SettingsFile::writeStorage(QDomDocument& document, QDomElement& element, int) const
{
    const QDomElement root = m_document.documentElement();
    for (QDomNode node = root.firstChild(); !node.isNull(); node = node.nextSibling())
        element.appendChild(document.importNode(node, true));
    return true;
}

QString SettingsFile::problem() const
{
    switch (m_state) {
    case Damaged:
        return Text::tr(
                   "The settings file %1 is damaged (%2). Put a good copy in its place, or start anew with "
                   "\"qdfax server add\", which moves it aside.")
            .arg(QDir::toNativeSeparators(m_path), m_detail);
    case Newer:
        return Text::tr("The settings file %1 was written by a newer version of qdfax (format %2). Use that "
                        "version, or move the file away.")
            .arg(QDir::toNativeSeparators(m_path), m_detail);
    case Unreadable:
        return Text::tr("The settings file %1 cannot be read (%2). Check its permissions.")
            .arg(QDir::toNativeSeparators(m_path), m_detail);
    case Missing:
    case Good:
        break;
    }
    return QString();
}

QVector<StoredServer> SettingsFile::servers() const
{
    QVector<StoredServer> list;
    bool hasDefault = false;
    const auto elements = entries(m_document.documentElement());
    for (const QDomElement& element : elements) {
        StoredServer server;
        if (!readEntry(element, server))
            continue;
        server.isDefault = server.isDefault && !hasDefault;
        hasDefault = hasDefault || server.isDefault;
        list.append(server);
    }
    if (!hasDefault && !list.isEmpty())
        list.first().isDefault = true;
    return list;
}

int SettingsFile::strangeEntryCount() const
{
    return entries(m_document.documentElement()).size() - servers().size();
}

int SettingsFile::find(const QString& name) const
{
    const QVector<StoredServer> list = servers();
    int byAddress = -1;
    int addressCount = 0;
    for (int i = 0; i < list.size(); ++i) {
        const StoredServer& server = list.at(i);
        if (name.isEmpty() ? server.isDefault : server.uid == name.toLower())
            return i;
        if (server.address.compare(name, Qt::CaseInsensitive) == 0) {
            byAddress = i;
            ++addressCount;
        }
    }
    return addressCount == 1 ? byAddress : -1;
}

QString SettingsFile::choose(const QString& name, StoredServer* chosen)
{
    load();
    if (!problem().isEmpty())
        return problem();
    const QVector<StoredServer> list = servers();
    const int index = find(name);
    if (index >= 0) {
        *chosen = list.at(index);
        return QString();
    }
    return list.isEmpty() ? Text::tr("No fax server is configured. Add one: qdfax server add ADDRESS "
                                     "--login LOGIN")
                          : Text::tr("No configured server is called \"%1\". \"qdfax server list\" "
                                     "shows them.")
                                .arg(name);
}

QDomElement SettingsFile::entry(const QString& uid) const
{
    const auto elements = entries(m_document.documentElement());
    for (const QDomElement& element : elements) {
        StoredServer server;
        if (readEntry(element, server) && server.uid == uid)
            return element;
    }
    return QDomElement();
}

FaxServer* SettingsFile::open(const StoredServer& server, FaxManager& manager) const
{
    const QDomElement element = entry(server.uid);
    if (element.isNull())
        return nullptr;
    QDomDocument document;
    manager.readStorage(alone(document, element), 1);
    return manager.getServerByUID(server.uid);
}

void SettingsFile::put(const FaxServer& server, bool makeDefault)
{
    const QString uid = server.genUID();
    const bool first = servers().isEmpty();
    QDomElement element = m_document.createElement(serverTag);
    server.writeStorage(m_document, element, 1);

    QDomElement old = entry(uid);
    if (old.isNull()) {
        m_document.documentElement().appendChild(element);
    } else {
        if (old.hasAttribute(defaultAttribute))
            element.setAttribute(defaultAttribute, old.attribute(defaultAttribute));
        m_document.documentElement().replaceChild(element, old);
    }
    if (makeDefault || first)
        setDefault(uid);
}

void SettingsFile::remove(const QString& uid)
{
    m_document.documentElement().removeChild(entry(uid));
    // as the library does: the first of the others becomes the default
    const QVector<StoredServer> left = servers();
    for (const StoredServer& server : left) {
        if (server.isDefault)
            setDefault(server.uid);
    }
}

void SettingsFile::setDefault(const QString& uid)
{
    for (QDomElement& element : entries(m_document.documentElement())) {
        StoredServer server;
        if (!readEntry(element, server))
            continue;
        if (server.uid == uid)
            element.setAttribute(defaultAttribute, QStringLiteral("true"));
        else
            element.removeAttribute(defaultAttribute);
    }
}

QString SettingsFile::outlookFolder() const
{
    return m_document.documentElement().firstChildElement(outlookTag).text();
}

void SettingsFile::setOutlookFolder(const QString& key)
{
    QDomElement element = m_document.createElement(outlookTag);
    element.appendChild(m_document.createTextNode(key));
    QDomElement root = m_document.documentElement();
    root.removeChild(root.firstChildElement(outlookTag));
    root.appendChild(element);
}

QString SettingsFile::edit(const std::function<bool(SettingsFile&)>& change, QString* movedTo)
{
    const QFileInfo info(m_path);
    const QString folder = QDir::toNativeSeparators(info.absolutePath());
    if (!QDir().mkpath(info.absolutePath()))
        return Text::tr("The settings folder %1 cannot be made. Check permissions and free space.")
            .arg(folder);

    const Terminal::InterruptBlocker blocker;
    QLockFile lock(m_path + lockSuffix);
    // A process that died before it wrote its PID into the lock file leaves a stale lock, which only its age
    // shows. The lock of a running process stays valid, however old it is.
    lock.setStaleLockTime(lockTimeout / 2);
    if (!lock.tryLock(lockTimeout)) {
        return lock.error() == QLockFile::LockFailedError
                   ? Text::tr("Another program holds the settings file %1. Try again later.")
                         .arg(QDir::toNativeSeparators(m_path))
                   : Text::tr("Nothing can be written to the settings folder %1. Check permissions and free "
                              "space.")
                         .arg(folder);
    }
    read();
    if (m_state == Newer || m_state == Unreadable)
        return problem();
    removeSideFiles();
    if (!change(*this))
        return QString();
    return save(movedTo);
}

QString SettingsFile::takeRemark()
{
    return std::exchange(m_wasBrokenOff, false)
               ? Text::tr("An earlier change of the settings was broken off and is not in "
                          "them. \"qdfax server list\" shows what is.")
               : QString();
}

QStringList SettingsFile::sideFiles() const
{
    const QFileInfo info(m_path);
    QStringList found;
    const QFileInfoList all = info.absoluteDir().entryInfoList(QDir::Files | QDir::Hidden);
    for (const QFileInfo& file : all) {
        if (file.fileName().startsWith(info.fileName() + sideSuffix))
            found.append(file.absoluteFilePath());
    }
    return found;
}

/// Call only while holding the lock: any side file is then left over from a process that died while saving.
void SettingsFile::removeSideFiles()
{
    const QStringList left = sideFiles();
    for (const QString& file : left)
        m_wasBrokenOff = QFile::remove(file) || m_wasBrokenOff;
}

/// Removes stale side files unless another process is saving. Does not wait for the lock.
void SettingsFile::clearUp()
{
    if (sideFiles().isEmpty())
        return;
    const Terminal::InterruptBlocker blocker;
    QLockFile lock(m_path + lockSuffix);
    lock.setStaleLockTime(lockTimeout / 2);
    if (lock.tryLock(0))
        removeSideFiles();
}

QString SettingsFile::save(QString* movedTo)
{
    const auto failure = [this](const QString& why) {
        return Text::tr("The settings could not be saved in %1: %2. The file is as it was.")
            .arg(QDir::toNativeSeparators(m_path), why);
    };
    // QTemporaryFile creates the file readable by its owner only. It keeps the file open until it is
    // destroyed, and Windows cannot rename an open file.
    QString side;
    {
        QTemporaryFile file(m_path + sideSuffix + QStringLiteral("XXXXXX"));
        if (!file.open())
            return failure(file.errorString());
        file.setAutoRemove(false);
        side = file.fileName();
    }
    auto sideRemover = qScopeGuard([&side] { QFile::remove(side); });
    if (!QuendraStorage(side).Save(*this))
        return failure(Text::tr("writing failed; is the disk full?"));
    SettingsFile written(side);
    if (written.read() != Good ||
        !sameContent(written.m_document.documentElement(), m_document.documentElement()) ||
        !flushToDisk(side))
        return failure(Text::tr("what was written does not read back"));

    QString aside;
    if (m_state == Damaged) {
        const QString base = m_path + QStringLiteral(".damaged-") +
                             QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
        aside = base;
        for (int n = 1; n < 100 && !QFile::rename(m_path, aside); ++n)
            aside = base + QLatin1Char('-') + QString::number(n);
        if (QFile::exists(m_path))
            return failure(Text::tr("the damaged file cannot be moved aside"));
    }
    if (!replaceFile(side, m_path)) {
        if (!aside.isEmpty())
            QFile::rename(aside, m_path);
        return failure(Text::tr("the new file cannot be put in its place"));
    }
    if (movedTo)
        *movedTo = aside;
    sideRemover.dismiss();
    m_state = Good;
    return QString();
}
