#include "downloader.h"

#include "log_p.h"

#include <QDir>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QUrl>

#include <algorithm>

namespace {

/// "(n)" goes in front of the dot and the three letters of an extension.
const int extensionLength = 4;

/// Put in front of a name without a folder: Qt would take the part before a colon for the name of a search
/// path.
const QLatin1String currentFolder("./");

/// Limits of the access manager's read buffer, in bytes. Without a limit its thread would read and decompress
/// whatever a server sends, faster than it can be written to the file. If the connection is cut, data beyond
/// the limit is lost, so the one for plain content is large enough for a busy event loop. Compressed content
/// may expand to any multiple of its size; only with the smaller limit does the manager bound its memory.
constexpr qint64 waitingPlain = qint64(16) * 1024 * 1024;
constexpr qint64 waitingCompressed = qint64(16) * 1024;

#ifdef Q_OS_WIN
/// Whether Windows takes the name for a device or resolves it to something else: "NUL.tif", "a.tif:stream",
/// "a.tif ".
bool isSpecialName(const QString& name)
{
    static const char* const devices[] = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$", "CLOCK$"};
    const QString stem = name.section(QLatin1Char('.'), 0, 0).trimmed().toUpper();
    // also in superscript, as COM² is
    const bool isPort = stem.size() == 4 && stem.at(3).digitValue() > 0 &&
                        (stem.startsWith(QLatin1String("COM")) || stem.startsWith(QLatin1String("LPT")));
    return isPort || name.contains(QLatin1Char(':')) || name.endsWith(QLatin1Char('.')) ||
           name.endsWith(QLatin1Char(' ')) ||
           std::any_of(std::begin(devices), std::end(devices),
                       [&stem](const char* device) { return stem == QLatin1String(device); });
}
#endif

/// Whether a name chosen by a server is a plain file name, which stays inside the folder it is appended to
/// and can be shown in one line.
bool isFileName(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    if (name.contains(QLatin1Char('/')) || name.contains(QDir::separator()))
        return false;
#ifdef Q_OS_WIN
    if (isSpecialName(name))
        return false;
#endif
    return std::none_of(name.begin(), name.end(),
                        [](QChar c) { return c.category() == QChar::Other_Control; });
}

/// Whether the path exists, also as a dangling link, which opening would follow.
bool isTaken(const QFileInfo& info)
{
    return info.exists() || info.isSymLink();
}

} // namespace

Downloader::Downloader(QObject* parent, QNetworkAccessManager& manager)
    : QObject(parent)
    , m_manager(manager)
{
    // For receivers that take the error through a queued connection.
    qRegisterMetaType<Downloader::Error>();
}

Downloader::~Downloader()
{
    if (m_reply) {
        m_reply->disconnect(this);
        // Not at once: this may be a slot that the reply has called.
        m_reply->deleteLater();
    }
}

void Downloader::setDownloadPath(const QString& downloadPath)
{
    m_downloadPath = downloadPath;
}

QString Downloader::targetPath(const QString& fileName) const
{
    if (!isFileName(fileName))
        return QString();
    QString path = (m_downloadPath.isEmpty() ? currentFolder : m_downloadPath + QDir::separator()) + fileName;
    for (int n = 1;; ++n) {
        const QFileInfo info(path);
        if (!isTaken(info))
            return path;
        const bool isFile = info.isSymLink() || !info.isDir();
        if (isFile && QFile::remove(path))
            return path;
        // In a shorter name the number would be inserted into the folder's part of the path. Names grow with
        // each number, so the file system's limit on their length ends the loop.
        if (fileName.size() < extensionLength)
            return QString();
        path.insert(path.size() - extensionLength, QStringLiteral("(%1)").arg(n));
    }
}

void Downloader::download(QUrl url, bool secure)
{
    const QString fileName = QFileInfo(url.path(QUrl::FullyDecoded)).fileName();
    const QString filePath = targetPath(fileName);
    if (filePath.isEmpty()) {
        Q_EMIT downloadError(FileError);
        return;
    }

    m_filePath = m_downloadPath.isEmpty() ? filePath.mid(currentFolder.size()) : filePath;
    if (m_file.isOpen())
        m_file.close();
    m_file.setFileName(filePath);
    // The name is free now. NewOnly: a link that appears meanwhile (a race) is not followed.
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        Q_EMIT downloadError(FileError);
        return;
    }

    QD_LOG(DEBUG, tr("Start Downloading %1 from %2", "Logger").arg(fileName, url.toDisplayString()));
    if (m_reply || (m_isRunning && m_alive))
        return;

    url.setScheme(secure ? QStringLiteral("https") : QStringLiteral("http"));
    const QString userName = url.userName(QUrl::FullyDecoded);
    const QString password = url.password(QUrl::FullyDecoded);
    // The credentials are sent only in the header: from the URL the manager would cache them for other
    // requests.
    url.setUserInfo(QString());

    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    if (secure) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setPeerVerifyMode(QSslSocket::QueryPeer);
        request.setSslConfiguration(configuration);
    }
    if (!userName.isEmpty() || !password.isEmpty()) {
        const QString credentials = userName + QLatin1Char(':') + password;
        request.setRawHeader("Authorization", "Basic " + credentials.toLatin1().toBase64());
    }

    m_reply = m_manager.get(request);
    m_alive = &m_manager;
    m_isRunning = true;
    m_endError = QNetworkReply::OperationCanceledError;
    m_reply->setReadBufferSize(waitingPlain);
    connect(m_reply.data(), &QNetworkReply::metaDataChanged, m_reply.data(), [reply = m_reply.data()] {
        if (reply->hasRawHeader("Content-Encoding"))
            reply->setReadBufferSize(waitingCompressed);
    });
    connect(m_reply.data(), &QNetworkReply::finished, this, [this] { m_endError = m_reply->error(); });
    // Queued: a slot may destroy the access manager and with it the reply, which accesses its members after
    // emitting (use after free). Data is read at once: after a failure the reply no longer returns it.
    connect(m_reply.data(), &QNetworkReply::finished, this, &Downloader::slotFinished, Qt::QueuedConnection);
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    connect(m_reply.data(), QOverload<QNetworkReply::NetworkError>::of(&QNetworkReply::error), this,
            &Downloader::err, Qt::QueuedConnection);
    QT_WARNING_POP
    connect(m_reply.data(), &QNetworkReply::readyRead, this, &Downloader::slotReadyRead);
}

void Downloader::slotReadyRead()
{
    if (!m_reply)
        return;
    if (m_reply->error() != QNetworkReply::NoError) {
        if (m_file.isOpen())
            m_file.close();
        QD_LOG(ERROR, tr("Downloader: network error when getting data chunk!", "Logger"));
        QMetaObject::invokeMethod(this, &Downloader::fail, Qt::QueuedConnection);
        return;
    }

    const QByteArray chunk = m_reply->readAll();
    // A full disk does not end the download. Nothing is written after the gap, even if there is room again,
    // so that the file is always a prefix of the content.
    if (m_file.isOpen() && (m_file.write(chunk) != chunk.size() || !m_file.flush()))
        m_file.close();
    QD_LOG(DEBUG, tr("Downloader: next data chunk was obtained.", "Logger"));
}

void Downloader::err(QNetworkReply::NetworkError code)
{
    Q_UNUSED(code)
    if (m_file.isOpen())
        m_file.close();
    fail();
}

/// Reports the failure, unless the manager was destroyed meanwhile.
void Downloader::fail()
{
    if (m_alive)
        Q_EMIT downloadError(NetworkError);
}

void Downloader::slotFinished()
{
    if (m_file.isOpen())
        m_file.close();

    // The receiver may destroy this object, or begin the next download.
    const QPointer<Downloader> self(this);
    const QPointer<QNetworkReply> reply = m_reply;
    if (m_alive && m_endError == QNetworkReply::NoError) {
        QD_LOG(DEBUG, tr("Downloader: file %1 was obtained successfully.", "Logger").arg(m_filePath));
        const QString filePath = m_filePath;
        Q_EMIT downloadFinished(filePath);
    } else {
        QD_LOG(ERROR, tr("Downloader: network error! File has not downloaded!", "Logger"));
    }
    if (self)
        m_isRunning = false;
    if (reply)
        reply->deleteLater();
}
