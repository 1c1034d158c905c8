#pragma once

// Annotations of happens-before relations for ThreadSanitizer. Internal: not installed.

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

/// Qt is not instrumented for ThreadSanitizer, which therefore does not know that a thread happens before the
/// return of QThread::wait(), or that starting a runnable in a thread pool happens before it runs. The
/// earlier side (a thread at its end, the caller of a pool) hands an object over, the later side takes it
/// over.
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
