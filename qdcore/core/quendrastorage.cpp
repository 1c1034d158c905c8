#include "quendrastorage.h"

#include "appfolder_p.h"
#include "domtext_p.h"
#include "iquendrastorage.h"
#include "xmlguard_p.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QTextStream>
#include <QXmlInputSource>

namespace {

/// Decodes the content of a file like the parser, by its byte order mark or its declaration. With any other
/// decoding, a declared encoding (UTF-7, say) or a null byte could hide from the guard what the parser reads.
QString decoded(const QByteArray& content)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QXmlInputSource source;
    source.setData(content);
    return source.data();
    QT_WARNING_POP
}

/// The protocol version passed to the top-level object of a settings file.
const int storageProtocolVersion = 1;

} // namespace

QuendraStorage::QuendraStorage(const QString& filename)
    : m_filename(filename)
{}

void QuendraStorage::setFilename(const QString& filename)
{
    m_filename = filename;
}

bool QuendraStorage::Save(const IQuendraStorage& object)
{
    QDomDocument document;
    appendDeclaration(document);
    QDomElement root = appendElement(document, document, QStringLiteral("settings"));
    if (!object.writeStorage(document, root, storageProtocolVersion))
        return false;

    QFile file(m_filename);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    // It contains passwords, and their key is not secret.
    keepToOwner(m_filename);
    // Not QDomDocument::save(): it would use the codec of the declaration, but existing files are in that of
    // the stream.
    QTextStream stream(&file);
    stream << document.toString(1);
    stream.flush();
    const bool written = stream.status() == QTextStream::Ok && file.flush();
    file.close();
    return written;
}

bool QuendraStorage::Load(IQuendraStorage& object)
{
    QFile file(m_filename);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString content = decoded(file.readAll());
    file.close();

    QDomDocument document;
    // On an error Qt keeps the part parsed before it, which would be read as incomplete settings.
    if (!isFitForDom(content) || !document.setContent(content))
        document.clear();
    return object.readStorage(document.documentElement(), storageProtocolVersion);
}

const QString& QuendraStorage::getAppStoragePath()
{
    static QString path;
    if (path.isNull()) {
        path = appFolder(QStringLiteral("/Settings"));
        QDir().mkpath(path);
    }
    return path;
}
