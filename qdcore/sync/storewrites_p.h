#pragma once

// Writing to the store without blocking the event loop. Internal: not installed, not exported.

#include "contactlocalstorage.h"

#include <QObject>
#include <QPointer>
#include <QVector>

#include <functional>
#include <thread>

/**
 * Single writes to the store from the event loop, in the order of the calls.
 *
 * Storing a large book locks the store for seconds. A write that would block is queued for a thread, and so
 * is every later one until the queue is empty; all others are done at once. The destructor completes the
 * queue.
 */
class StoreWrites : public QObject
{
public:
    using Write = std::function<void(ContactLocalStorage&)>;
    using Done = std::function<void()>;

    StoreWrites(const QPointer<ContactLocalStorage>& storage, QObject* parent);
    ~StoreWrites() override;

    /// Calls @p write: at once, or on another thread. @p done is called afterwards, on this
    /// thread, in the first case from within this function; it may destroy this object.
    void add(const Write& write, const Done& done);
    /// Calls @p done when all that was added before is written; at once if it is.
    void whenWritten(const Done& done);

private:
    struct Job
    {
        Write write;
        Done done;
    };
    using Jobs = QVector<Job>;

    void start();
    void run(const Jobs& jobs);
    void finish(const Jobs& jobs);

    const QPointer<ContactLocalStorage> m_storage;
    Jobs m_waiting; ///< Queued until the thread has ended.
    std::thread m_thread;
};
