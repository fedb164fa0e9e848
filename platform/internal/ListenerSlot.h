// The one listener of a process-wide channel, which any thread may replace while others call it. A slot is
// constant-initialised and never destroyed, so that it works from load to unload, and a call takes no memory.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#if defined(_WIN32)
#include <windows.h>
#else
#include <mutex>
#endif

namespace kivds {

#if defined(_WIN32)
/// The one lock of this system that needs no set-up, no clean-up and no memory.
class SlotLock
{
public:
    void lock() { AcquireSRWLockExclusive(&m_Lock); }
    void unlock() { ReleaseSRWLockExclusive(&m_Lock); }

private:
    SRWLOCK m_Lock = SRWLOCK_INIT;
};
using SlotThread = DWORD;
inline SlotThread CurrentThread()
{
    return GetCurrentThreadId();
}
inline void PauseThread()
{
    Sleep(1);
}
#else
using SlotLock = std::mutex;
using SlotThread = std::thread::id;
inline SlotThread CurrentThread()
{
    return std::this_thread::get_id();
}
inline void PauseThread()
{
    std::this_thread::sleep_for(std::chrono::microseconds(50));
}
#endif

template <class... Args>
class ListenerSlot
{
public:
    using Listener = void (*)(void* context, Args... args);

    constexpr ListenerSlot() noexcept = default;
    ListenerSlot(const ListenerSlot&) = delete;
    ListenerSlot& operator=(const ListenerSlot&) = delete;

    bool IsSet() const noexcept { return m_bListening.load(std::memory_order_acquire); }

    /// Calls the listener, if there is one, on this thread. Its exceptions end here.
    void Call(Args... args) noexcept
    {
        if (!IsSet())
            return;
        m_Lock.lock();
        const Listener listener = m_Listener;
        void* const context = m_pContext;
        Run run = {CurrentThread(), m_nGeneration, false, m_pRuns};
        if (listener)
            m_pRuns = &run;
        m_Lock.unlock();
        if (!listener)
            return;
        try {
            listener(context, args...);
        } catch (...) {
            // A channel never fails, whatever its listener does.
        }
        m_Lock.lock();
        Run** link = &m_pRuns;
        while (*link != &run)
            link = &(*link)->m_pNext;
        *link = run.m_pNext;
        m_Lock.unlock();
    }

    /// Replaces the listener; null: nobody listens. When this returns, former listeners run on no other
    /// thread any more. A listener may call this itself.
    void Set(Listener listener, void* context) noexcept
    {
        const SlotThread self = CurrentThread();
        m_Lock.lock();
        m_Listener = listener;
        m_pContext = context;
        m_bListening.store(listener != nullptr, std::memory_order_release);
        const std::uint64_t generation = ++m_nGeneration;
        const bool nested = MarkReplacing(self, true);
        while (RunsElsewhere(generation, self, nested)) {
            m_Lock.unlock();
            PauseThread();
            m_Lock.lock();
        }
        MarkReplacing(self, false);
        m_Lock.unlock();
    }

private:
    /// One call of a listener that is under way; it stands on the stack of the thread that calls.
    struct Run
    {
        SlotThread m_Thread;
        std::uint64_t m_nGeneration; // of the listener called
        bool m_bReplacing;           // the listener called Set, which waits
        Run* m_pNext;
    };

    /// Says of the listeners under way on `thread` whether they wait in Set; false when there are none.
    bool MarkReplacing(SlotThread thread, bool replacing) noexcept
    {
        bool any = false;
        for (Run* run = m_pRuns; run; run = run->m_pNext) {
            if (run->m_Thread == thread) {
                run->m_bReplacing = replacing;
                any = true;
            }
        }
        return any;
    }

    /// Whether a listener of an earlier generation runs on another thread. For a caller that is a listener
    /// itself
    /// (`nested`) those that wait in Set do not count: two that waited for each other would wait forever.
    bool RunsElsewhere(std::uint64_t generation, SlotThread thread, bool nested) const noexcept
    {
        for (const Run* run = m_pRuns; run; run = run->m_pNext) {
            if (run->m_nGeneration < generation && run->m_Thread != thread && !(nested && run->m_bReplacing))
                return true;
        }
        return false;
    }

    std::atomic<bool> m_bListening{false}; // lets a call end at once when nobody listens
    SlotLock m_Lock;                       // guards what follows; never held while a listener runs
    Listener m_Listener = nullptr;
    void* m_pContext = nullptr;
    std::uint64_t m_nGeneration = 0; // counts the listeners set
    Run* m_pRuns = nullptr;          // latest first
};

} // namespace kivds
