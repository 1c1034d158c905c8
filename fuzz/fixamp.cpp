// The repair of ampersands, which every reply goes through before it is parsed.

#include "fuzz.h"

#include "fakenetwork.h"
#include "faxserver.h"

#include <QRegularExpression>

namespace {

/// The repair by itself.
class Repair : public Task
{
public:
    explicit Repair(FaxServer& server)
        : Task(server)
    {}
    using Task::fixAmp;
    void execute() override {}
    void onFinished() override {}
    Type type() override { return GetQuendraInfo; }
};

class Server : public FaxServer
{
public:
    explicit Server(FaxManager& manager)
        : FaxServer(manager)
    {}
};

} // namespace

FUZZ_TARGET(fixamp)
{
    static FakeManager manager;
    static Server server(manager);
    static Repair task(server);

    const QString repaired = task.fixAmp(input);
    // slow and obviously correct
    static const QRegularExpression bare(QStringLiteral("&(?!(amp;|lt;|gt;|apos;|quot;))"));
    const QString expected = QString::fromUtf8(input).replace(bare, QStringLiteral("&amp;"));
    PROMISE_THAT(repaired == expected, repaired + QLatin1Char('\n') + expected);
    // decoding drops one byte order mark each time
    PROMISE(repaired.startsWith(QChar::ByteOrderMark) || task.fixAmp(repaired.toUtf8()) == repaired);
}
