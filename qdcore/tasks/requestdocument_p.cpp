#include "tasks/requestdocument_p.h"

#include "domtext_p.h"

#include "tasks/oneshotbody_p.h"

#include <QDomDocument>

QDomElement startDocument(QDomDocument& document, const QString& rootName)
{
    appendDeclaration(document);
    return appendElement(document, document, rootName);
}

QByteArray oneLine(const QDomDocument& document)
{
    return document.toString(0).remove(QLatin1Char('\n')).toUtf8();
}

void writeIndented(const QDomDocument& document, const QString& placeholder,
                   const QVector<QVector<QByteArray>>& files, OneShotBody& body)
{
    const QByteArray frame = document.toByteArray(1);
    const QByteArray stand = "<content>" + placeholder.toLatin1() + "</content>";
    int from = 0;
    for (const QVector<QByteArray>& file : files) {
        const int at = frame.indexOf(stand, from) + int(qstrlen("<content>"));
        body.append(frame.mid(from, at - from));
        body.appendEncoded(file);
        from = at + placeholder.size();
    }
    body.append(frame.mid(from));
}
