#include "faxfile.h"

#include "displaytext.h"
#include "text.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>

Content::Type contentType(const QString& path, QString* typeName)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchContent);
    *typeName = type.name();
    const auto is = [&type](const char* name) { return type.inherits(QLatin1String(name)); };
    if (type.name() == QLatin1String("application/pdf"))
        return Content::Pdf;
    if (is("application/postscript"))
        return Content::PostScript;
    if (type.name() == QLatin1String("image/tiff"))
        return Content::Tiff;
    // text-based formats, whose source nobody wants to fax
    for (const char* markup : {"text/html", "application/xml", "application/rtf", "text/rtf"}) {
        if (is(markup))
            return Content::None;
    }
    return is("text/plain") ? Content::PlainText : Content::None;
}

std::optional<QList<Attach>> attachFiles(const QStringList& paths, QString* error)
{
    QList<Attach> attachments;
    qint64 total = 0;
    for (const QString& path : paths) {
        const auto refuse = [&](const QString& why) {
            *error = Text::tr("The file %1 cannot be sent: %2").arg(path, why);
            return std::nullopt;
        };
        const QFileInfo info(path);
        if (!info.exists())
            return refuse(Text::tr("it does not exist."));
        if (!info.isFile())
            return refuse(Text::tr("it is not a file."));
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return refuse(Text::tr("it cannot be read (%1).").arg(file.errorString()));
        if (file.size() == 0)
            return refuse(Text::tr("it is empty."));
        file.close();
        total += info.size();
        if (total > largestFax) {
            return refuse(Text::tr("the files of one fax may have %1 together. Send them one by one.")
                              .arg(sizeText(largestFax)));
        }

        QString typeName;
        const Content::Type type = contentType(path, &typeName);
        if (type == Content::None) {
            return refuse(
                Text::tr("it is of type %1. Only PDF, PostScript, plain text and TIFF can be faxed; "
                         "convert it to PDF first.")
                    .arg(typeName));
        }
        DiskDataProvider data;
        data.setFileName(path);
        Content content;
        content.setType(type);
        content.setData(data);
        Attach attachment;
        attachment.setLocation(Attach::Inline);
        attachment.setName(info.fileName());
        attachment.setContent(content);
        attachments.append(attachment);
    }
    return attachments;
}
