// The name of a downloaded file, which a server chooses.

#include "fuzz.h"

#include "downloader.h"
#include "fakenetwork.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QUrl>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(content);
}

const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

/// A folder for downloads, containing a folder whose name is taken, and a sibling file that must not change.
struct Place
{
    Place()
    {
        QDir().mkpath(folder + QStringLiteral("/taken.tif/inside"));
        write(precious, "precious");
    }

    /// The content of the folder, except the folder in it.
    QStringList files() const
    {
        QStringList names = QDir(folder).entryList(everything, QDir::Name);
        PROMISE(names.removeAll(QStringLiteral("taken.tif")) == 1);
        return names;
    }

    const QString root = fuzzFolder() + QStringLiteral("/downloads");
    const QString folder = root + QStringLiteral("/here");
    const QString precious = root + QStringLiteral("/precious.tif");
};

} // namespace

FUZZ_TARGET(filename)
{
    static const Place place;
    FuzzChoices choices(input);
    const int how = choices.choose(8);
    const QString text = QString::fromUtf8(choices.rest());
    QUrl url;
    if (how & 1) {
        url.setHost(QStringLiteral("server"));
        url.setPath(text, QUrl::DecodedMode);
    } else {
        url = QUrl(text, QUrl::TolerantMode);
    }

    FakeNetwork network;
    QStringList finished;
    QList<Downloader::Error> errors;
    {
        Downloader downloader(nullptr, network);
        QObject::connect(&downloader, &Downloader::downloadFinished,
                         [&finished](const QString& path) { finished.append(path); });
        QObject::connect(&downloader, &Downloader::downloadError,
                         [&errors](Downloader::Error error) { errors.append(error); });
        downloader.setDownloadPath(place.folder);
        downloader.download(url, how & 2);
        FakeReply* reply = network.next();
        PROMISE(bool(reply) == errors.isEmpty());
        if (reply) {
            PROMISE(reply->url().userInfo().isEmpty());
            reply->deliver("the content", 3,
                           how & 4 ? QNetworkReply::ContentNotFoundError : QNetworkReply::NoError);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
        }
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    PROMISE(network.left() == 0);

    const QStringList files = place.files();
    if (finished.isEmpty()) {
        PROMISE(!errors.isEmpty());
        PROMISE(files.size() <= 1);
    } else {
        PROMISE(finished.size() == 1 && errors.isEmpty() && files.size() == 1);
        const QString path = place.folder + QDir::separator() + files.first();
        PROMISE_THAT(finished.first() == path, finished.first());
        PROMISE(contentOf(path) == "the content");
    }
    PROMISE(contentOf(place.precious) == "precious");
    PROMISE(QDir(place.root).entryList(everything).size() == 2);
    PROMISE(QFileInfo(place.folder + QStringLiteral("/taken.tif/inside")).isDir());
    for (const QString& name : files)
        PROMISE(QFile::remove(place.folder + QLatin1Char('/') + name));
}
