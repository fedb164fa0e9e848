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

enum class EventReset
{
    Automatic, // a wait that ends takes the signal away
    Manual     // the signal stays until Reset
};

/// An event (CreateEventW): signalled or not; threads wait for the signal.
class KIVDS_API Event
{
public:
    Event(EventReset reset, bool signalled) noexcept;
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void Wait() noexcept;
    void Set() noexcept;
    void Reset() noexcept;
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

    void Wait() noexcept;
    void Release() noexcept;
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
    explicit Counter(std::int32_t value) noexcept : m_Value(value) {}
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    std::int32_t Increment() noexcept { return m_Value.fetch_add(1) + 1; }
    std::int32_t Decrement() noexcept { return m_Value.fetch_sub(1) - 1; }
    std::int32_t Value() const noexcept { return m_Value.load(); }

private:
    std::atomic<std::int32_t> m_Value;
};

} // namespace kivds
