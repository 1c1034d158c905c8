#include "tasks/requestdocument_p.h"

#include "domtext_p.h"

#include <QDomDocument>
#include <QUuid>
#include <QVector>

#include <limits>

QDomElement startDocument(QDomDocument& document, const QString& rootName)
{
    appendDeclaration(document);
    return appendElement(document, document, rootName);
}

QByteArray oneLine(const QDomDocument& document)
{
    return document.toString(0).remove(QLatin1Char('\n')).toUtf8();
}

QByteArray indented(QDomDocument& document)
{
    // Serialising a file of 100 MB through the DOM takes twenty times as long as encoding it. A placeholder
    // stands in for it meanwhile; it cannot be mistaken, since no text of the document can hold a tag.
    const QByteArray placeholder = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    QVector<QString> contents;
    const QDomNodeList elements = document.elementsByTagName(QStringLiteral("content"));
    for (int i = 0; i < elements.size(); ++i) {
        QDomNode text = elements.at(i).firstChild();
        if (!text.isText())
            continue;
        contents.append(text.nodeValue());
        text.setNodeValue(QString::fromLatin1(placeholder));
    }

    const QByteArray frame = document.toByteArray(1);
    const QByteArray stand = "<content>" + placeholder + "</content>";
    qint64 total = frame.size();
    for (const QString& content : qAsConst(contents))
        total += content.size() - placeholder.size();

    if (total > std::numeric_limits<int>::max())
        return QByteArray();
    QByteArray bytes;
    bytes.reserve(int(total));
    int from = 0;
    for (QString& content : contents) {
        const int at = frame.indexOf(stand, from) + int(qstrlen("<content>"));
        bytes.append(frame.constData() + from, at - from);
        constexpr int blockSize = 256 * 1024;
        for (int done = 0; done < content.size(); done += blockSize)
            bytes.append(content.midRef(done, blockSize).toLatin1());
        content.clear();
        from = at + placeholder.size();
    }
    bytes.append(frame.constData() + from, frame.size() - from);
    return bytes;
}
