#include "platform/CKivIPBaseError.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <type_traits>
#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

#if defined(_WIN32)
/// The one lock of this system that needs no set-up, no clean-up and no memory.
class Lock
{
public:
    void lock() { AcquireSRWLockExclusive(&m_Lock); }
    void unlock() { ReleaseSRWLockExclusive(&m_Lock); }

private:
    SRWLOCK m_Lock = SRWLOCK_INIT;
};

using ThreadId = DWORD;
ThreadId CurrentThread()
{
    return GetCurrentThreadId();
}
void Pause()
{
    Sleep(1);
}
#else
using Lock = std::mutex;
using ThreadId = std::thread::id;
ThreadId CurrentThread()
{
    return std::this_thread::get_id();
}
void Pause()
{
    std::this_thread::sleep_for(std::chrono::microseconds(50));
}
#endif

/// One call of a listener that is under way. It stands on the stack of the thread that reports, so that
/// reporting takes no memory.
struct Run
{
    ThreadId m_Thread;
    std::uint64_t m_nGeneration; // of the listener called
    bool m_bReplacing;           // the listener called SetListener, which waits
    Run* m_pNext;
};

struct Sink
{
    std::atomic<bool> m_bListening{false}; // lets a report end at once when nobody listens
    Lock m_Lock;                           // guards what follows; never held while a listener runs
    CKivIPBaseError::Listener m_Listener = nullptr;
    void* m_pContext = nullptr;
    std::uint64_t m_nGeneration = 0; // counts the listeners set
    Run* m_pRuns = nullptr;          // latest first
};

// Constant-initialised and never destroyed: modules report while they are loaded and unloaded, too.
static_assert(std::is_trivially_destructible<Sink>::value, "the sink must outlive every static object");
Sink s_Sink;

void Enter(Run& run)
{
    run.m_pNext = s_Sink.m_pRuns;
    s_Sink.m_pRuns = &run;
}

void Leave(const Run& run)
{
    Run** link = &s_Sink.m_pRuns;
    while (*link != &run)
        link = &(*link)->m_pNext;
    *link = run.m_pNext;
}

/// Says of the listeners under way on `thread` whether they wait in SetListener; false when there are none.
bool MarkReplacing(ThreadId thread, bool replacing)
{
    bool any = false;
    for (Run* run = s_Sink.m_pRuns; run != nullptr; run = run->m_pNext)
        if (run->m_Thread == thread) {
            run->m_bReplacing = replacing;
            any = true;
        }
    return any;
}

/// Whether a listener of an earlier generation runs on another thread. For a caller that is a listener itself
/// (`nested`) those that wait in SetListener do not count: two that waited for each other would wait forever.
bool RunsElsewhere(std::uint64_t generation, ThreadId thread, bool nested)
{
    for (const Run* run = s_Sink.m_pRuns; run != nullptr; run = run->m_pNext)
        if (run->m_nGeneration < generation && run->m_Thread != thread && !(nested && run->m_bReplacing))
            return true;
    return false;
}

} // namespace

CKivIPBaseError g_KivIPError;

void CKivIPBaseError::SetError(const wchar_t* function, const wchar_t* message, int code)
{
    if (!s_Sink.m_bListening.load(std::memory_order_acquire))
        return;
    std::unique_lock<Lock> lock(s_Sink.m_Lock);
    const Listener listener = s_Sink.m_Listener;
    void* const context = s_Sink.m_pContext;
    if (listener == nullptr)
        return;
    Run run = {CurrentThread(), s_Sink.m_nGeneration, false, nullptr};
    Enter(run);
    lock.unlock();
    try {
        listener(context, function, message, code);
    } catch (...) {
        // A report never fails, whatever its listener does.
    }
    lock.lock();
    Leave(run);
}

void CKivIPBaseError::SetListener(Listener listener, void* context)
{
    const ThreadId self = CurrentThread();
    std::unique_lock<Lock> lock(s_Sink.m_Lock);
    s_Sink.m_Listener = listener;
    s_Sink.m_pContext = context;
    s_Sink.m_bListening.store(listener != nullptr, std::memory_order_release);
    const std::uint64_t generation = ++s_Sink.m_nGeneration;
    const bool nested = MarkReplacing(self, true);
    while (RunsElsewhere(generation, self, nested)) {
        lock.unlock();
        Pause();
        lock.lock();
    }
    MarkReplacing(self, false);
}
