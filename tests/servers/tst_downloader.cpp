#include "downloader.h"
#include "scriptedserver.h"
#include "shorthand.h"
#include "testkit.h"

#include <QNetworkAccessManager>
#include <QtTest>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

QStringList names(const QString& folder)
{
    QStringList all =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    std::sort(all.begin(), all.end());
    return all;
}

} // namespace

class TestDownloader : public QObject
{
    Q_OBJECT

    QNetworkAccessManager m_manager;
    QScopedPointer<QTemporaryDir> m_outside; ///< Holds the download folder and what must not change.
    QScopedPointer<ScriptedServer> m_server;
    QScopedPointer<Downloader> m_downloader;
    QScopedPointer<QSignalSpy> m_finished;
    QScopedPointer<QSignalSpy> m_failed;
    QSslSocket::PeerVerifyMode m_verifyMode{}; ///< Of the last reply released.

    QString folder() const { return m_outside->filePath(s("downloads")); }
    QString target(const QByteArray& name) const { return folder() + QDir::separator() + s(name); }

    /// @p path in its encoded form, as in a URL.
    QUrl url(const QByteArray& path) const
    {
        return QUrl::fromEncoded("http://" + m_server->address().toLatin1() + path);
    }

    bool ends()
    {
        return QTest::qWaitFor([this] { return !m_finished->isEmpty() || !m_failed->isEmpty(); }, 20000);
    }

    /// Downloads a path, and waits for either outcome; clears earlier results first.
    bool fetch(const QByteArray& path)
    {
        m_finished->clear();
        m_failed->clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_downloader->download(url(path), false);
        return ends();
    }

    int firstError() const { return m_failed->isEmpty() ? 0 : m_failed->first().first().toInt(); }

    /// Deletes finished replies in a slot of the access manager, as applications do.
    void releaseReplies()
    {
        connect(&m_manager, &QNetworkAccessManager::finished, m_downloader.get(),
                [this](QNetworkReply* reply) {
                    m_verifyMode = reply->request().sslConfiguration().peerVerifyMode();
                    reply->deleteLater();
                });
    }

private Q_SLOTS:
    void init()
    {
        m_outside.reset(new QTemporaryDir);
        QVERIFY(QDir().mkpath(folder()) && QDir::setCurrent(folder()));
        m_server.reset(new ScriptedServer);
        m_server->setAnswer(ScriptedServer::reply("content"));
        m_downloader.reset(new Downloader(nullptr, m_manager));
        m_downloader->setDownloadPath(folder());
        m_finished.reset(new QSignalSpy(m_downloader.data(), &Downloader::downloadFinished));
        m_failed.reset(new QSignalSpy(m_downloader.data(), &Downloader::downloadError));
    }

    void cleanup() { QVERIFY(QDir::setCurrent(QDir::tempPath())); }

    void bytesArrive()
    {
        for (const auto& [secure, size] : {std::pair(false, 0), {false, 3000000}, {true, 3000000}}) {
            if (secure && !ScriptedServer::canTls())
                QSKIP("Needs openssl to make a certificate.");
            init();
            QByteArray content(size, '\0');
            for (int i = 0; i < size; ++i)
                content[i] = static_cast<char>(i ^ (i >> 8) ^ (i >> 16));
            m_server.reset(new ScriptedServer(secure));
            m_server->setAnswer(ScriptedServer::reply(content));
            writeFile(target("fax123.tif"), "longer than nothing");

            releaseReplies();
            QUrl source = url("/some/where/fax123.tif?page=1");
            source.setScheme(secure ? s("http") : s("https"));
            m_downloader->download(source, secure);

            QVERIFY(ends());
            QVERIFY(m_failed->isEmpty());
            QCOMPARE(m_finished->first().first().toString(), target("fax123.tif"));
            QVERIFY(readFile(target("fax123.tif")) == content);
            QCOMPARE(names(folder()), QStringList(s("fax123.tif")));
            QCOMPARE(m_server->requests().size(), 1);
            const WireRequest& request = m_server->requests().first();
            QCOMPARE(request.method + ' ' + request.target, QByteArray("GET /some/where/fax123.tif?page=1"));
            QVERIFY(request.header("Authorization").isNull());
            if (secure)
                QCOMPARE(m_verifyMode, QSslSocket::QueryPeer); // requested, not verified
        }
    }

    void credentialsGoIntoTheHeaderAlone()
    {
        const TestLog log;
        QUrl source = url("/a.tif");
        source.setUserName(QStringLiteral("j\u00f6rg"));
        source.setPassword(QStringLiteral("p:@ss w\u00f6rd"));
        m_downloader->download(source, false);
        QVERIFY(ends());
        QCOMPARE(m_server->requests().first().header("Authorization"),
                 "Basic " + QByteArray("j\xf6rg:p:@ss w\xf6rd").toBase64());
        const QString shown = QStringLiteral("http://j\u00f6rg@%1/a.tif").arg(m_server->address());
        QCOMPARE(
            log.messages(s("DEBUG")),
            (QStringList{
                s("downloader.cpp Start Downloading a.tif from ") + shown,
                s("downloader.cpp Downloader: next data chunk was obtained."),
                s("downloader.cpp Downloader: file %1 was obtained successfully.").arg(target("a.tif"))}));
        QVERIFY(!log.text().contains(s("ss w")));

        // nor does the access manager cache them for the next request
        m_server->setAnswer(ScriptedServer::reply("", "401 No\r\nWWW-Authenticate: Basic realm=\"x\""));
        QScopedPointer<QNetworkReply> other(m_manager.get(QNetworkRequest(url("/b.tif"))));
        QTRY_VERIFY(other->isFinished());
        QCOMPARE(m_server->requests().size(), 2);
        QVERIFY(m_server->requests().last().header("Authorization").isNull());
    }

    void namesStayInTheFolder()
    {
        const QString refused;
        const bool isWindows = QDir::separator() != QLatin1Char('/');
        // special names on Windows
        const auto special = [&](const char* name) { return isWindows ? refused : s(name); };
        const std::tuple<QByteArray, QString, const char*> rows[] = {
            {"/x%2F..%2F..%2Fcanary", s("canary"), ""},
            {"/x/%2e%2e", refused, ""},
            {"/x%2F.", refused, ""},
            {"/x/", refused, ""},
            {"/a%0D%0Ab.tif", refused, ""},
            {"/canary%00.tif", refused, ""},
            {"/" + QByteArray(300, 'n'), refused, ""},
            {"/a%FFb.tif", s("a\ufffdb.tif"), ""},
            {"/...%2525", s("...%25"), ""},
            // a name taken by a folder cannot be replaced, and is numbered
            {"/a.tif", s("a(1).tif"), "a.tif"},
            {"/a.tif", s("a(1)(2).tif"), "a.tif a(1).tif"},
            {"/a.jpeg", s("a.(1)jpeg"), "a.jpeg"},
            {"/abcd", s("(1)abcd"), "abcd"},
            {"/abc", refused, "abc"},
            {"/C:canary", special("C:canary"), ""},
            {"/elsewhere:canary", special("elsewhere:canary"), ""}, // a search path
            {"/elsewhere:b.tif", special("elsewhere:b(1).tif"), "elsewhere:b.tif"},
            {"/:a.tif", special(":a.tif"), ""}, // a resource
            {"/nul.tif", special("nul.tif"), ""},
            {"/com1.tif", special("com1.tif"), ""},
            {"/a.", special("a."), ""},
            {"/a%20", special("a "), ""},
            {"/..%5Ccanary", s(isWindows ? "canary" : "..\\canary"), ""}};
        for (const auto& [source, name, taken] : rows) {
            init();
            writeFile(m_outside->filePath(s("canary")), "alive");
            QDir::setSearchPaths(s("elsewhere"), {m_outside->path()});
            QStringList expected = s(taken).split(QLatin1Char(' '), Qt::SkipEmptyParts);
            for (const QString& folder : qAsConst(expected))
                QVERIFY(QDir().mkdir(target(folder.toUtf8())));
            if (!name.isNull())
                expected.append(name);
            std::sort(expected.begin(), expected.end());

            for (const QString& path : {folder(), QString()}) { // empty: the current folder
                m_downloader->setDownloadPath(path);
                QVERIFY(fetch(source));
                QCOMPARE(names(folder()), expected);
                QCOMPARE(names(m_outside->path()), (QStringList{s("canary"), s("downloads")}));
                QCOMPARE(readFile(m_outside->filePath(s("canary"))), QByteArray("alive"));
                QCOMPARE(firstError(), name.isNull() ? int(Downloader::FileError) : 0);
                if (name.isNull())
                    continue;
                const QString written = target(name.toUtf8());
                QCOMPARE(m_finished->first().first().toString(), path.isEmpty() ? name : written);
                QCOMPARE(readFile(written), QByteArray("content"));
                QVERIFY(QFile::remove(written));
            }
            QCOMPARE(m_server->requests().size(), name.isNull() ? 0 : 2);
        }
    }

    void linksAreReplacedNotFollowed()
    {
#ifdef Q_OS_WIN
        QSKIP("Needs symbolic links.");
#endif
        const QString precious = m_outside->filePath(s("precious"));
        writeFile(precious, "kept");
        QVERIFY(QFile::link(precious, target("file.tif")));
        QVERIFY(QFile::link(m_outside->filePath(s("new")), target("dangling.tif")));
        QVERIFY(QFile::link(m_outside->path(), target("folder.tif")));
        for (const char* name : {"file.tif", "dangling.tif", "folder.tif"}) {
            QVERIFY(fetch(QByteArray("/") + name));
            QVERIFY(!QFileInfo(target(name)).isSymLink());
            QCOMPARE(readFile(target(name)), QByteArray("content"));
        }
        QCOMPARE(readFile(precious), QByteArray("kept"));
        QCOMPARE(names(m_outside->path()), (QStringList{s("downloads"), s("precious")}));
    }

    void missingFolderSendsNothing()
    {
        m_downloader->setDownloadPath(m_outside->filePath(s("none")));
        QVERIFY(fetch("/a.tif"));
        QCOMPARE(firstError(), int(Downloader::FileError));
        QVERIFY(!QFile::exists(m_downloader->downloadPath()) && m_server->requests().isEmpty());
    }

    void failures()
    {
        using HangUp = ScriptedServer::HangUp;
        const std::tuple<QByteArray, HangUp, QByteArray> rows[] = {
            {"404 Not Found", HangUp::Never, "no such file"}, // which is written before it fails
            {"401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"", HangUp::Never, {}},
            {"200 OK", HangUp::InsideReply, {}},
            {"200 OK", HangUp::AfterBody, {}}};
        for (const auto& [status, hangUp, written] : rows) {
            init();
            const TestLog log;
            m_server->setAnswer(ScriptedServer::reply("no such file", status));
            m_server->setHangUp(hangUp);
            releaseReplies();
            QVERIFY(fetch("/a.tif"));
            QCOMPARE(firstError(), int(Downloader::NetworkError));
            QTRY_VERIFY(
                log.messages(s("ERROR"))
                    .contains(s("downloader.cpp Downloader: network error! File has not downloaded!")));
            QVERIFY(m_finished->isEmpty());
            QCOMPARE(m_downloader->getLastError(), Downloader::NoError);
            QVERIFY(QFile::exists(target("a.tif")));
            if (!written.isNull())
                QCOMPARE(readFile(target("a.tif")), written);

            // The object is ready for the next one.
            m_server->setHangUp(HangUp::Never);
            m_server->setAnswer(ScriptedServer::reply("content"));
            QVERIFY(fetch("/a.tif"));
            QCOMPARE(readFile(target("a.tif")), QByteArray("content"));
        }
    }

    void redirectIsNotFollowed()
    {
        m_server->setAnswer(ScriptedServer::reply("moved", "302 Found", "Location: /other.tif\r\n"));
        m_manager.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
        const bool ended = fetch("/a.tif");
        m_manager.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
        QVERIFY(ended);
        QCOMPARE(m_finished->size(), 1);
        QCOMPARE(readFile(target("a.tif")), QByteArray("moved"));
        QCOMPARE(m_server->requests().size(), 1);
    }

    void fullDiskMakesAShorterFile()
    {
#ifdef Q_OS_UNIX
        // A limit on the file size makes writing fail as a full disk does, and needs no privileges.
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        rlimit limit = before;
        for (const int room : {100000, 5}) { // within a chunk, and at the end of a small file
            limit.rlim_cur = static_cast<rlim_t>(room);
            const auto handler = std::signal(SIGXFSZ, SIG_IGN);
            QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
            m_server->setAnswer(ScriptedServer::reply(QByteArray(room < 10 ? room + 1 : 1000000, 'x')));
            const bool ended = fetch("/a.tif");
            setrlimit(RLIMIT_FSIZE, &before);
            std::signal(SIGXFSZ, handler);

            QVERIFY(ended);
            QVERIFY(m_failed->isEmpty());
            QCOMPARE(m_finished->size(), 1);
            QCOMPARE(readFile(target("a.tif")), QByteArray(room, 'x'));
        }
#else
        QSKIP("Needs a limit on the size of files.");
#endif
    }

    void callsDuringADownload()
    {
        writeFile(target("b.tif"), "old");
        m_downloader->download(url("/a.tif"), false);
        m_downloader->download(url("/b.tif"), false); // only prepares the file
        QVERIFY(QFile::exists(target("b.tif")));
        // Neither an invalid name nor a file that cannot be opened ends the running download.
        m_downloader->download(url("/.."), false);
        QCOMPARE(m_failed->size(), 1);
        m_downloader->setDownloadPath(m_outside->filePath(QStringLiteral("none")));
        m_downloader->download(url("/c.tif"), false);
        QCOMPARE(m_failed->size(), 2);
        QCOMPARE(m_failed->last().first().toInt(), int(Downloader::FileError));
        QTRY_COMPARE(m_finished->size(), 1);
        QCOMPARE(m_failed->size(), 2);
        QCOMPARE(m_server->requests().size(), 1);
        QCOMPARE(names(folder()), (QStringList{s("a.tif"), s("b.tif")}));
        QCOMPARE(readFile(target("a.tif")) + readFile(target("b.tif")), QByteArray());
    }

    void requestIsStillRunningInItsSlots()
    {
        QString told;
        connect(m_downloader.data(), &Downloader::downloadFinished, this, [this, &told](const QString& path) {
            if (told.isEmpty())
                m_downloader->download(url("/b.tif"), false);
            told += path;
        });
        QVERIFY(fetch("/a.tif"));
        QCOMPARE(told, target("a.tif")); // the argument is still that of the first download
        QVERIFY(QFile::exists(target("b.tif")) && readFile(target("b.tif")).isEmpty());
        QVERIFY(fetch("/c.tif"));
        QCOMPARE(m_server->requests().size(), 2);
        QCOMPARE(m_server->requests().last().target, QByteArray("/c.tif"));
    }
};

QTEST_GUILESS_MAIN(TestDownloader)
#include "tst_downloader.moc"
