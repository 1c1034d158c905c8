#pragma once

#include "qdcore_global.h"

#include <QFile>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QUrl;

/**
 * Fetches one file at a time over HTTP or HTTPS into a folder.
 *
 * Owned by its creator; lives on a thread with an event loop, that of the access manager, which it shares and
 * does not own. The data is written as it arrives. Destroying the object or the manager, which any slot may
 * do, ends a running download without a signal.
 *
 * The name of the file comes from the URL, and so from a server. Whatever it is, nothing outside the folder
 * is opened, replaced or deleted.
 */
class QDCORE_EXPORT Downloader : public QObject
{
    Q_OBJECT

public:
    /// The argument of downloadError().
    enum Error {
        NoError = 0,      ///< Never emitted.
        NetworkError = 1, ///< The request failed, or the server answered with an error.
        FileError = 2     ///< The target file cannot be opened.
    };
    Q_ENUM(Error)

    /// download() must not be called after @p manager was destroyed.
    Downloader(QObject* parent, QNetworkAccessManager& manager);
    ~Downloader() override;

    /// The target folder, which must exist. Empty, as at first, means the current folder.
    const QString& downloadPath() const { return m_downloadPath; }
    void setDownloadPath(const QString& downloadPath);

    /**
     * Fetches @p url by HTTPS if @p secure, else by HTTP, whatever its scheme is. User name and password in
     * it are sent as Basic authentication; the server's certificate is not verified. Redirects are not
     * followed: the body of one is saved as the file.
     *
     * The file is named after the last part of the URL's path. A file of that name is replaced; where it
     * cannot be deleted, "(1)" goes in front of the last four characters of the name, and so on: a.tif,
     * a(1).tif, a(1)(2).tif. An invalid name ("..", control characters) or is too short to be numbered
     * ends in downloadError(FileError).
     *
     * Ends with downloadFinished() or downloadError(). While a download is running only the target file is
     * prepared (and what still arrives goes into it); no second request is sent. That still holds inside a
     * slot of downloadFinished(). Where that file cannot be opened, downloadError(FileError) comes and the
     * running download goes on without a file.
     */
    void download(QUrl url, bool secure);

    /// Always NoError; failures are reported by downloadError() only.
    Error getLastError() const { return m_lastError; }

Q_SIGNALS:
    /// The server's answer has arrived. It is in the file @p filePath: downloadPath(), the platform's
    /// separator, the name. Data that could not be written, as on a full disk, is lost without an error, and
    /// the file is shorter: to detect it, compare its size with the content length that the server sent.
    void downloadFinished(const QString& filePath);

    /// The download has failed; data already written stays in the file. Of a compressed answer, the last data
    /// received may be missing. A network error may be reported twice.
    void downloadError(Downloader::Error error);

    /// Not emitted. Both counts are in bytes.
    void onDownloadProgress(qint64 bytesReceived, qint64 bytesTotal);

private Q_SLOTS:
    void slotReadyRead();
    void slotFinished();
    void err(QNetworkReply::NetworkError code);

private:
    void fail();
    QString targetPath(const QString& fileName) const;

    QNetworkAccessManager& m_manager;
    QString m_downloadPath;
    Error m_lastError{NoError};
    QString m_filePath; ///< Of the file being written.
    QFile m_file;
    QPointer<QNetworkReply> m_reply; ///< The running request; null when there is none, or it was released.
    QPointer<QNetworkAccessManager> m_alive; ///< The manager of the running request.
    bool m_isRunning{false};                 ///< From sending until slotFinished().
    /// The result of the reply, which an application may delete before slotFinished().
    QNetworkReply::NetworkError m_endError{QNetworkReply::NoError};
};
