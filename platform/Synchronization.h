// The platform's synchronisation objects: unnamed events, an unnamed mutex and an atomic 32-bit counter. On
// Windows they are the system's own, elsewhere small classes with the same behaviour. Waits have no time-out.
// These objects are neither copied nor moved; Close ends an object's use, and nobody may wait for it any
// more.
#pragma once

#include "platform/Export.h"

#include <atomic>
#include <cstdint>
#if !defined(_WIN32)
#include <condition_variable>
#include <mutex>
#endif

namespace kivds {

/// What ends an event's signal.
enum class EventReset
{
    Automatic, ///< a wait that ends takes the signal away
    Manual     ///< the signal stays until Reset
};

/// An event (CreateEventW): signalled or not; threads wait for the signal.
class KIVDS_API Event
{
public:
    /// An event that is `signalled` or not.
    Event(EventReset reset, bool signalled) noexcept;
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// Waits for the signal, and takes it away where the event says so (WaitForSingleObject).
    void Wait() noexcept;
    /// Gives the signal: to everybody who waits, or to one of them where a wait takes it away (SetEvent).
    void Set() noexcept;
    /// Takes the signal away (ResetEvent).
    void Reset() noexcept;
    /// Ends the use of the object (CloseHandle); again: nothing.
    void Close() noexcept;

private:
#if defined(_WIN32)
    void* m_Handle;
#else
    std::mutex m_Mutex;
    std::condition_variable m_Released;
    const EventReset m_Reset;
    bool m_bSignalled;
    // A signal belongs to the threads that wait when it comes, also when a Reset follows at once: each waiter
    // takes the next number and waits until it is released.
    std::uint64_t m_nWaiters = 0;
    std::uint64_t m_nReleased = 0;
#endif
};

/// A mutex (CreateMutexW) that nobody owns at first; the thread that acquired it releases it, as often as it
/// did.
class KIVDS_API Mutex
{
public:
    Mutex() noexcept;
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /// Acquires the mutex, or waits until it can (WaitForSingleObject).
    void Wait() noexcept;
    /// Ends one acquisition (ReleaseMutex).
    void Release() noexcept;
    /// Ends the use of the object (CloseHandle); again: nothing.
    void Close() noexcept;

private:
#if defined(_WIN32)
    void* m_Handle;
#else
    std::recursive_mutex m_Mutex;
#endif
};

/// A signed 32-bit counter with atomic, fully ordered increment and decrement that give the new value.
class Counter
{
public:
    /// A counter that stands at `value`.
    explicit Counter(std::int32_t value) noexcept : m_Value(value) {}
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    /// One more; gives the new value.
    std::int32_t Increment() noexcept { return m_Value.fetch_add(1) + 1; }
    /// One less; gives the new value.
    std::int32_t Decrement() noexcept { return m_Value.fetch_sub(1) - 1; }
    /// The value now.
    std::int32_t Value() const noexcept { return m_Value.load(); }

private:
    std::atomic<std::int32_t> m_Value;
};

} // namespace kivds
