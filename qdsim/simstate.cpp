#include "simstate.h"

namespace {

QVector<SimCoverPage> offeredCoverPages()
{
    QVector<SimCoverPage> pages(4);
    const char* const names[] = {"Standard", "Confidential", "Urgent", "Retired"};
    const char* const subjects[] = {"", "For the addressee only", "Please act at once", ""};
    for (int i = 0; i < pages.size(); ++i) {
        pages[i].enabled = i != 3;
        pages[i].name = QLatin1String(names[i]);
        pages[i].type = i == 1 ? QStringLiteral("personal") : QStringLiteral("system");
        pages[i].subject = QLatin1String(subjects[i]);
    }
    return pages;
}

} // namespace

SimState::SimState(const SimOptions& options)
    : m_options(options)
    , m_features(SimFeatures::of(options.model, options.version))
    , m_clock(options.manualClock || options.clockStart != 0, options.clockStart)
    , m_faxes(options.speed, options.failPattern)
    , m_people(options.seed + 2)
    , m_coverPages(offeredCoverPages())
    , m_printers({QStringLiteral("Front office"), QStringLiteral("Laser 2 (second floor)"),
                  QStringLiteral("Archive")})
{
    QVector<SimUser> users = options.users;
    if (users.isEmpty()) {
        SimUser user;
        user.name = QStringLiteral("alice");
        user.password = QStringLiteral("secret");
        user.editGlobal = true;
        users.append(user);
    }
    for (SimUser& user : users) {
        if (user.person.name.isEmpty())
            user.person.name = user.name.left(1).toUpper() // clazy:exclude=qstring-left (it may be empty)
                               + user.name.midRef(1);
        if (user.coverPageName.isEmpty())
            user.coverPageName = m_coverPages.first().name;
        m_users[user.name] = user;
    }
    SimPeople residents(options.seed + 1);
    m_books.fill(SimBooks::global(), options.contacts, options.groups, &residents, m_clock.now());
    for (const auto& user : m_users)
        m_books.fill(user.first, options.contacts, options.groups, &residents, m_clock.now());
    m_inbound.generate(options.inbound, options.hugeDocument, options.seed, m_clock.now());
}

SimUser* SimState::user(const QString& name)
{
    const auto found = m_users.find(name);
    return found == m_users.end() ? nullptr : &found->second;
}

bool SimState::takeChanged()
{
    const quint64 revision = m_faxes.revision() + m_books.revision(); // both only grow
    const bool changed = m_changed || m_savedRevision != revision;
    m_changed = false;
    m_savedRevision = revision;
    return changed;
}
