#pragma once

// Telling ThreadSanitizer what it cannot see. Internal: not installed.

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QDCORE_TSAN
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define QDCORE_TSAN
#endif

#ifdef QDCORE_TSAN
extern "C" {
void __tsan_acquire(void* address);
void __tsan_release(void* address);
}
#endif

/// Qt is not built for ThreadSanitizer, which therefore does not see that QThread::wait() orders what the
/// thread did before what its waiter does, nor that a pool does so for what it runs. Who is done with an
/// object says that it hands it over (a thread at its end, the caller of a pool), who goes on with it that it
/// takes it over.
inline void tsanHandOver([[maybe_unused]] void* address)
{
#ifdef QDCORE_TSAN
    __tsan_release(address);
#endif
}

inline void tsanTakeOver([[maybe_unused]] void* address)
{
#ifdef QDCORE_TSAN
    __tsan_acquire(address);
#endif
}
