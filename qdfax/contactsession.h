#pragma once

#include "contactcache.h"
#include "session.h"

#include <QSharedPointer>

class ContactProvider;
class ContactUnit;

/**
 * A session with a server whose contacts are to be changed or synchronised: every change goes to the server
 * first and, once confirmed, to the cache.
 */
class ContactSession
{
public:
    explicit ContactSession(const Invocation& call);
    ~ContactSession();

    /// Logs in. False, with the error printed, if that fails or the cache cannot be used.
    bool open();
    int status() const { return m_status != 0 ? m_status : m_session.status(); }

    Session& session() { return m_session; }
    ContactProvider& provider();
    const ContactCache& cache() const { return *m_cache; }

    /// The unit as the server knows it, with its members.
    QSharedPointer<ContactUnit> unit(quint32 id);

    // Each returns false if the server did not do it, with the error printed or, if the session is quiet,
    // kept.
    /// @p id is that of the new unit in the cache.
    bool add(const ContactUnit& unit, ContactList::Type book, quint32* id);
    bool modify(const ContactUnit& unit, ContactList::Type book);
    bool remove(const ContactUnit& unit, ContactList::Type book);
    bool synchronise(ContactList::Type book, bool full);

private:
    const Invocation& m_call;
    Session m_session;
    std::unique_ptr<ContactCache> m_cache;
    int m_status{0};
};
