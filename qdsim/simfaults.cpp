#include "simfaults.h"

#include "simxml.h"

#include <algorithm>
#include <iterator>

namespace {

struct KindName
{
    const char* name;
    // cppcheck-suppress unusedStructMember ; initialised by position
    SimFault::Kind kind;
    const char* argument;
    const char* help;
};

const KindName kinds[] = {
    {"delay", SimFault::Delay, "MS", "answer after MS milliseconds"},
    {"hangup-early", SimFault::HangUpEarly, "", "close the connection before the request's body is read"},
    {"hangup", SimFault::HangUp, "", "carry the request out, close the connection without an answer"},
    {"cut", SimFault::Cut, "[BYTES]", "close the connection inside the body, by default in its middle"},
    {"drip", SimFault::Drip, "MS", "send the body byte by byte, MS milliseconds apart"},
    {"status", SimFault::Status, "CODE", "answer with this HTTP status"},
    {"truncated", SimFault::Truncated, "", "XML that ends in the middle"},
    {"notxml", SimFault::NotXml, "", "a body that is not XML"},
    {"html", SimFault::Html, "", "an HTML page"},
    {"message", SimFault::Message, "TEXT", "another \"message\""},
    {"nomessage", SimFault::NoMessage, "", "no \"message\""},
    {"ampersand", SimFault::Ampersand, "", "a bare ampersand in the texts"},
    {"empty", SimFault::Empty, "", "an empty body"},
    {"huge", SimFault::Huge, "[MB]", "a body of so many MB, by default 50"},
    {"deep", SimFault::Deep, "[LEVELS]", "XML nested so deep, by default 1000000"},
    {"body", SimFault::Body, "TEXT", "this body"},
};

QByteArray deepXml(qint64 levels)
{
    const QByteArray opening = QByteArrayLiteral("<a>");
    const QByteArray closing = QByteArrayLiteral("</a>");
    return SimXmlWriter().bytes() + opening.repeated(static_cast<int>(levels)) +
           closing.repeated(static_cast<int>(levels));
}

/// A document of exactly @p size bytes that is generated while it is sent.
void makeHuge(qint64 size, SimReply* reply)
{
    const QByteArray head = SimXmlWriter().open("reply").open("message").bytes();
    const QByteArray tail = QByteArrayLiteral("</message></reply>");
    size = std::max(size, qint64(head.size() + tail.size()));
    reply->body.clear();
    reply->size = size;
    reply->generator = [head, tail, size](qint64 offset, qint64 length) {
        QByteArray part(static_cast<int>(length), 'x');
        for (qint64 i = 0; i < length && offset + i < head.size(); ++i)
            part[static_cast<int>(i)] = head[static_cast<int>(offset + i)];
        const qint64 tailBegin = size - tail.size();
        for (qint64 i = std::max(qint64(0), tailBegin - offset); i < length; ++i)
            part[static_cast<int>(i)] = tail[static_cast<int>(offset + i - tailBegin)];
        return part;
    };
}

void replaceMessage(QByteArray* body, const QByteArray& replacement)
{
    const QByteArray closing = QByteArrayLiteral("</message>");
    const int begin = body->indexOf("<message>");
    const int end = body->indexOf(closing);
    if (begin >= 0 && end > begin)
        body->replace(begin, end + closing.size() - begin, replacement);
}

void addAmpersands(QByteArray* body)
{
    const char* const texts[] = {"name",         "description", "subject", "comments",
                                 "organization", "hostname",    "printer"};
    for (const char* text : texts) {
        const QByteArray closing = QByteArrayLiteral("</") + text + '>';
        body->replace(closing, QByteArrayLiteral(" & co") + closing);
    }
}

} // namespace

bool SimFault::parse(const QString& text, SimFault* fault, QString* error)
{
    *fault = SimFault();
    const QStringList parts = text.split(QLatin1Char(','));
    const auto nameOf = [](const QString& part) { return part.section(QLatin1Char('='), 0, 0).trimmed(); };
    const auto valueOf = [](const QString& part) { return part.section(QLatin1Char('='), 1).trimmed(); };
    const QString name = nameOf(parts.value(0));
    const auto* kind = std::find_if(std::begin(kinds), std::end(kinds),
                                    [&name](const KindName& k) { return name == QLatin1String(k.name); });
    if (kind == std::end(kinds)) {
        *error = QStringLiteral("unknown fault \"%1\"").arg(name);
        return false;
    }
    fault->kind = kind->kind;
    fault->text = valueOf(parts.value(0));
    bool isNumber = true;
    if (!fault->text.isEmpty() && fault->kind != Message && fault->kind != Body)
        fault->number = fault->text.toLongLong(&isNumber);
    const bool needsNumber = fault->kind == Delay || fault->kind == Drip || fault->kind == Status;
    if (!isNumber || (needsNumber && fault->number < 0) || fault->number > 100000000 ||
        (fault->kind == Status && (fault->number < 100 || fault->number > 999))) {
        *error = QStringLiteral("fault \"%1\" needs a number").arg(name);
        return false;
    }
    for (int i = 1; i < parts.size(); ++i) {
        const QString key = nameOf(parts[i]);
        if (key == QLatin1String("method"))
            fault->method = valueOf(parts[i]);
        else if (key == QLatin1String("path"))
            fault->pathPrefix = valueOf(parts[i]);
        else if (key == QLatin1String("skip"))
            fault->skip = valueOf(parts[i]).toInt(&isNumber);
        else if (key == QLatin1String("times"))
            fault->times = valueOf(parts[i]).toInt(&isNumber);
        else if (key == QLatin1String("chance"))
            fault->chance = valueOf(parts[i]).toDouble(&isNumber);
        else
            isNumber = false;
        if (!isNumber) {
            *error = QStringLiteral("fault \"%1\": cannot read \"%2\"").arg(name, parts[i]);
            return false;
        }
    }
    return true;
}

QString SimFault::help()
{
    QString text;
    for (const KindName& kind : kinds) {
        QString name = QLatin1String(kind.name);
        if (kind.argument[0] == '[')
            name += QStringLiteral("[=") + QString::fromLatin1(kind.argument).mid(1);
        else if (kind.argument[0])
            name += QLatin1Char('=') + QLatin1String(kind.argument);
        text += QStringLiteral("  %1 %2\n").arg(name, -16).arg(QLatin1String(kind.help));
    }
    return text;
}

void SimFaults::add(const SimFault& fault)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_faults.append(fault);
}

void SimFaults::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_faults.clear();
}

bool SimFaults::hangUpEarly(const SimRequest& request)
{
    SimFault fault;
    return take(request, true, &fault);
}

bool SimFaults::take(const SimRequest& request, SimFault* fault)
{
    return take(request, false, fault);
}

bool SimFaults::take(const SimRequest& request, bool early, SimFault* fault)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (SimFault& candidate : m_faults) {
        if ((candidate.kind == SimFault::HangUpEarly) != early || candidate.times == 0 ||
            !request.path.startsWith(candidate.pathPrefix) ||
            (!candidate.method.isEmpty() && candidate.method != request.method))
            continue;
        if (candidate.chance < 100 && m_random.bounded(100.0) >= candidate.chance)
            continue;
        if (candidate.skip > 0) {
            --candidate.skip;
            continue;
        }
        if (candidate.times > 0)
            --candidate.times;
        *fault = candidate;
        return true;
    }
    return false;
}

SimReply SimFaults::instead(const SimFault& fault)
{
    SimReply reply = SimReply::message(QStringLiteral("trouble on request"));
    reply.status = static_cast<int>(fault.number);
    if (fault.number == 401)
        reply.headers.append(
            qMakePair(QByteArrayLiteral("WWW-Authenticate"), QByteArrayLiteral("Basic realm=\"qdws\"")));
    return reply;
}

void SimFaults::apply(const SimFault& fault, SimReply* reply)
{
    const auto replaceBody = [reply](const QByteArray& body) {
        reply->body = body;
        reply->generator = nullptr;
    };
    switch (fault.kind) {
    case SimFault::Delay:
        reply->delayMs = static_cast<int>(fault.number);
        break;
    case SimFault::HangUpEarly:
    case SimFault::HangUp:
        reply->hangUp = true;
        break;
    case SimFault::Cut:
        reply->cutAfter = fault.number >= 0 ? fault.number : reply->length() / 2;
        break;
    case SimFault::Drip:
        reply->dripMs = static_cast<int>(fault.number);
        break;
    case SimFault::Status:
        break;
    case SimFault::Truncated:
        reply->body.chop(reply->body.size() / 3 + 1);
        break;
    case SimFault::NotXml:
        replaceBody(QByteArrayLiteral("This is not XML, whatever the header says. 1 < 2\n"));
        break;
    case SimFault::Html:
        replaceBody(
            QByteArrayLiteral("<!DOCTYPE html>\n<html><head><title>Welcome</title><body><p>Please log in.<br>"
                              "<input disabled></body></html>\n"));
        reply->contentType = QByteArrayLiteral("text/html");
        break;
    case SimFault::Message:
        replaceMessage(&reply->body, "<message>" + fault.text.toHtmlEscaped().toUtf8() + "</message>");
        break;
    case SimFault::NoMessage:
        replaceMessage(&reply->body, QByteArray());
        break;
    case SimFault::Ampersand:
        addAmpersands(&reply->body);
        break;
    case SimFault::Empty:
        replaceBody(QByteArray());
        break;
    case SimFault::Huge:
        makeHuge((fault.number >= 0 ? fault.number : 50) << 20, reply);
        break;
    case SimFault::Deep:
        replaceBody(deepXml(fault.number >= 0 ? fault.number : 1000000));
        break;
    case SimFault::Body:
        replaceBody(fault.text.toUtf8());
        break;
    }
}
