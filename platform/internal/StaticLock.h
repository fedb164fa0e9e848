// The one lock of this system that needs no set-up, no clean-up and no memory: for what is there from load to
// unload.
#pragma once

#if defined(_WIN32)
#include <windows.h>
#else
#include <mutex>
#endif

namespace kivds {

#if defined(_WIN32)
class StaticLock
{
public:
    void lock() { AcquireSRWLockExclusive(&m_Lock); }
    void unlock() { ReleaseSRWLockExclusive(&m_Lock); }

private:
    SRWLOCK m_Lock = SRWLOCK_INIT;
};
#else
using StaticLock = std::mutex;
#endif

} // namespace kivds
