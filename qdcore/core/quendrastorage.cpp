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

/// The content of a file as the parser will decode it, by its byte order mark or its declaration. Looking at
/// anything else would let a declared encoding (UTF-7, say) or a null byte hide what the parser then sees.
QString decoded(const QByteArray& content)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QXmlInputSource source;
    source.setData(content);
    return source.data();
    QT_WARNING_POP
}

/// The version that the outermost object of a settings file is always handed.
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
    // It holds passwords, and the key that enciphers them is no secret.
    keepToOwner(m_filename);
    // Not QDomDocument::save(): it would take the codec from the declaration, and files written so far are in
    // the stream's own.
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
    // Qt leaves what it had parsed up to the error, which would pass for a shorter configuration.
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
