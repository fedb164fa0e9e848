#include "platform/Synchronization.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace kivds {

#if defined(_WIN32)

namespace {

void CloseOnce(void*& handle) noexcept
{
    if (handle != nullptr)
        CloseHandle(handle);
    handle = nullptr;
}

} // namespace

Event::Event(EventReset reset, bool signalled) noexcept
    : m_Handle(CreateEventW(nullptr, reset == EventReset::Manual, signalled, nullptr))
{
}

Event::~Event()
{
    Close();
}
void Event::Wait() noexcept
{
    WaitForSingleObject(m_Handle, INFINITE);
}
void Event::Set() noexcept
{
    SetEvent(m_Handle);
}
void Event::Reset() noexcept
{
    ResetEvent(m_Handle);
}
void Event::Close() noexcept
{
    CloseOnce(m_Handle);
}

Mutex::Mutex() noexcept : m_Handle(CreateMutexW(nullptr, FALSE, nullptr)) {}
Mutex::~Mutex()
{
    Close();
}
void Mutex::Wait() noexcept
{
    WaitForSingleObject(m_Handle, INFINITE);
}
void Mutex::Release() noexcept
{
    ReleaseMutex(m_Handle);
}
void Mutex::Close() noexcept
{
    CloseOnce(m_Handle);
}

#else

Event::Event(EventReset reset, bool signalled) noexcept : m_Reset(reset), m_bSignalled(signalled) {}
Event::~Event() = default;

void Event::Wait() noexcept
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    if (m_bSignalled) {
        m_bSignalled = m_Reset == EventReset::Manual;
        return;
    }
    const std::uint64_t number = m_nWaiters++;
    m_Released.wait(lock, [this, number] { return number < m_nReleased; });
}

void Event::Set() noexcept
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const bool manual = m_Reset == EventReset::Manual;
    const bool waitedFor = m_nReleased < m_nWaiters;
    m_bSignalled = m_bSignalled || manual || !waitedFor;
    if (waitedFor)
        m_nReleased = manual ? m_nWaiters : m_nReleased + 1;
    // Notified under the mutex: a waiter that wakes may destroy the event as soon as it gets the mutex. All
    // are woken, since each waits for its own number.
    m_Released.notify_all();
}

void Event::Reset() noexcept
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_bSignalled = false;
}

void Event::Close() noexcept {}

Mutex::Mutex() noexcept = default;
Mutex::~Mutex() = default;
void Mutex::Wait() noexcept
{
    m_Mutex.lock();
}
void Mutex::Release() noexcept
{
    m_Mutex.unlock();
}
void Mutex::Close() noexcept {}

#endif

} // namespace kivds
