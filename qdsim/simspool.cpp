#include "simspool.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

QString SimSpool::safeName(const QString& name)
{
    QString safe = name;
    for (QChar& c : safe) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || c == QLatin1Char('/') || c == QLatin1Char('\\') ||
            c == QLatin1Char(':'))
            c = QLatin1Char('_');
    }
    while (safe.startsWith(QLatin1Char('.')))
        safe.replace(0, 1, QLatin1Char('_'));
    while (safe.toUtf8().size() > 200)
        safe.remove(safe.size() / 2, 1); // keeps the suffix
    return safe.isEmpty() ? QStringLiteral("unnamed") : safe;
}

bool SimSpool::store(const QString& folder, quint64 job, QVector<SimAttachment>* attachments, QString* error)
{
    const QDir dir(QDir(folder).filePath(QString::number(job)));
    if (!dir.mkpath(QStringLiteral("."))) {
        *error = QStringLiteral("cannot make the folder %1").arg(dir.path());
        return false;
    }
    for (SimAttachment& attachment : *attachments) {
        if (attachment.contentType.isEmpty())
            continue; // external: nothing was sent
        const QString name = safeName(attachment.name);
        QString path = dir.filePath(name);
        for (int n = 2; QFile::exists(path); ++n)
            path = dir.filePath(QStringLiteral("%1-%2").arg(n).arg(name));
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(attachment.content) != attachment.content.size() ||
            !file.commit()) {
            *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
            return false;
        }
        attachment.path = path;
        attachment.content = QByteArray();
    }
    return true;
}
