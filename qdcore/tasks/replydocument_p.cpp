#include "tasks/replydocument_p.h"

#include "xmlguard_p.h"

#include <QDomDocument>
#include <QString>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace {

/// More ampersands than a genuine text of 256 MiB contains.
constexpr int maxAmpersands = 16 * 1024 * 1024;

/// As withAmpersands(), before decoding. A null array when there is nothing to repair.
QByteArray repairedBytes(const QByteArray& data)
{
    static const QByteArray entities[] = {"amp;", "lt;", "gt;", "apos;", "quot;"};
    const char* const end = data.constData() + data.size();
    const char* copied = data.constData();
    const auto next = [end](const char* from) {
        return static_cast<const char*>(std::memchr(from, '&', size_t(end - from)));
    };
    QByteArray repaired;
    for (const char* at = next(copied); at; at = next(at + 1)) {
        const auto begins = [rest = at + 1, end](const QByteArray& entity) {
            return end - rest >= entity.size() &&
                   std::memcmp(rest, entity.constData(), size_t(entity.size())) == 0;
        };
        if (std::any_of(std::begin(entities), std::end(entities), begins))
            continue;
        if (repaired.isNull())
            repaired.reserve(data.size() + data.size() / 8);
        repaired.append(copied, int(at + 1 - copied));
        repaired.append("amp;", 4);
        copied = at + 1;
    }
    if (!repaired.isNull())
        repaired.append(copied, int(end - copied));
    return repaired;
}

} // namespace

QString withAmpersands(const QByteArray& data)
{
    // Done before decoding, since UTF-8 has half as many bytes to scan and copy. Decoding ends at a null
    // byte, which XML cannot contain: the text before it must be a complete document.
    const QByteArray repaired = repairedBytes(data);
    return QString::fromUtf8(repaired.isNull() ? data : repaired);
}

bool parseReply(QByteArray data, QDomDocument& document)
{
    // decoding ends at a null byte, see withAmpersands()
    if (const int end = data.indexOf('\0'); end >= 0)
        data.truncate(end);
    return isFitForDom(data) &&
           withText(std::move(data), [&](const QString& xml) { return document.setContent(xml); });
}

bool withText(QByteArray data, const std::function<bool(const QString&)>& parse)
{
    // Repairing adds four characters for each, and a text of ampersands only would not fit into a string.
    if (data.count('&') > maxAmpersands)
        return false;
    // each stage is freed before the next one is built: a reply may have 256 MiB
    if (QByteArray repaired = repairedBytes(data); !repaired.isNull())
        data = std::move(repaired);
    const QString text = QString::fromUtf8(data);
    data.clear();
    return parse(text);
}
