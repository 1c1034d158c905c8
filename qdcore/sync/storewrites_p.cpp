#include "storewrites_p.h"

#include <utility>

StoreWrites::StoreWrites(const QPointer<ContactLocalStorage>& storage, QObject* parent)
    : QObject(parent)
    , m_storage(storage)
{}

StoreWrites::~StoreWrites()
{
    if (m_thread.joinable())
        m_thread.join();
    run(m_waiting);
}

void StoreWrites::add(const Write& write, const Done& done)
{
    const bool isQueueEmpty = !m_thread.joinable();
    if (!m_storage || (isQueueEmpty && m_storage->writeIfIdle([&] { write(*m_storage); })))
        return done();
    m_waiting.append({write, done});
    if (isQueueEmpty)
        start();
}

void StoreWrites::whenWritten(const Done& done)
{
    if (m_thread.joinable())
        m_waiting.append({Write(), done});
    else
        done();
}

void StoreWrites::start()
{
    m_thread = std::thread([this, jobs = std::exchange(m_waiting, Jobs())] {
        run(jobs);
        if (m_storage)
            m_storage->freeStorageForThread();
        QMetaObject::invokeMethod(
            this, [this, jobs] { finish(jobs); }, Qt::QueuedConnection);
    });
}

void StoreWrites::run(const Jobs& jobs)
{
    for (const Job& job : jobs) {
        if (!m_storage)
            return;
        if (job.write)
            m_storage->writeWhenIdle([&] { job.write(*m_storage); });
    }
}

void StoreWrites::finish(const Jobs& jobs)
{
    m_thread.join();
    const QPointer<StoreWrites> self(this);
    if (!m_waiting.isEmpty())
        start();
    for (const Job& job : jobs) {
        if (self)
            job.done();
    }
}
