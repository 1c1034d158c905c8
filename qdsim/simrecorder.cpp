#include "simrecorder.h"

#include "simspool.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace {

const QByteArray xmlType = QByteArrayLiteral("application/xml");

QByteArray headerLine(const QByteArray& name, const QByteArray& value)
{
    return name + ": " + value + '\n';
}

/// An Authorization header with the credentials removed.
QByteArray withoutCredentials(const QByteArray& value)
{
    const int blank = value.indexOf(' ');
    return blank < 0 ? QByteArrayLiteral("(credentials)") : value.left(blank) + " (credentials)";
}

/// Empty for an empty body; otherwise it ends with a line feed.
QByteArray bodyText(const QByteArray& body, qint64 size, const QByteArray& contentType)
{
    if (size == 0)
        return QByteArray();
    if (contentType != xmlType || body.size() != size)
        return "\n(" + QByteArray::number(size) + " bytes)\n";
    return '\n' + body + (body.endsWith('\n') ? "" : "\n");
}

QByteArray requestText(const SimRequest& request)
{
    QByteArray text = request.rawHead.left(request.rawHead.indexOf('\n')).trimmed() + '\n';
    for (const auto& header : request.headers) {
        const QByteArray name = header.first.toLower();
        if (name == "authorization")
            text += headerLine(header.first, withoutCredentials(header.second));
        else if (name == "host" || name.startsWith("content-"))
            text += headerLine(header.first, header.second);
    }
    return text + bodyText(request.body, request.bodySize, request.header("Content-Type"));
}

QByteArray replyText(const SimReply& reply)
{
    if (reply.hangUp)
        return QByteArrayLiteral("(connection closed)\n");
    QByteArray text = "HTTP/1.1 " + QByteArray::number(reply.status) + '\n';
    for (const auto& header : reply.headers)
        text += headerLine(header.first, header.second);
    text += headerLine("Content-Type", reply.contentType);
    text += headerLine("Content-Length", QByteArray::number(reply.length()));
    text += bodyText(reply.body, reply.length(), reply.contentType);
    if (reply.cutAfter >= 0)
        text += "(connection closed after " + QByteArray::number(reply.cutAfter) + " bytes)\n";
    return text;
}

} // namespace

bool SimRecorder::open(const QString& folder, QString* error)
{
    const QDir dir(folder);
    if (!dir.mkpath(QStringLiteral(".")))
        *error = QStringLiteral("cannot make the folder %1").arg(folder);
    else if (!dir.isEmpty())
        *error = QStringLiteral("the folder %1 is not empty").arg(folder);
    else
        m_folder = folder;
    return isOpen();
}

bool SimRecorder::write(const SimRequest& request, const SimReply& reply, QString* error)
{
    if (!isOpen())
        return true;
    QString path = request.path;
    if (path.startsWith(QLatin1String("/qdws/v1/")))
        path.remove(0, int(qstrlen("/qdws/v1/")));
    return writeFile(request.method + QLatin1Char('-') + path, requestText(request) + '\n' + replyText(reply),
                     error);
}

bool SimRecorder::writeDatagrams(const QByteArray& query, const QByteArray& answer, QString* error)
{
    return !isOpen() || writeFile(QStringLiteral("UDP-discovery"), query + '\n' + answer, error);
}

bool SimRecorder::writeFile(const QString& name, const QByteArray& text, QString* error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    QFile file(QDir(m_folder).filePath(
        QStringLiteral("%1-%2.txt").arg(++m_count, 4, 10, QLatin1Char('0')).arg(SimSpool::safeName(name))));
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && file.write(text) == text.size() &&
        file.flush())
        return true;
    *error = QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString());
    return false;
}
