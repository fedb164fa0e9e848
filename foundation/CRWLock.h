// A reader/writer lock: any number of readers hold it together, or one writer alone. Waits have no time-out,
// and there is no writer preference: readers that keep arriving can keep a waiting writer out. The lock is
// neither copied nor assigned; it must outlive every thread that holds it or waits for it.
#pragma once

#include "platform/Export.h"
#include "platform/Synchronization.h"

/// Nobody holds a new lock.
class KIVDS_API CRWLock
{
public:
    CRWLock();
    ~CRWLock();
    CRWLock(const CRWLock&) = delete;
    CRWLock& operator=(const CRWLock&) = delete;

    /// Waits until the caller may read. Read holds nest, also while a writer waits. A thread that holds the
    /// write lock must not call this.
    void EnterReadLock();
    /// Ends one read hold; any thread may end a hold that another thread took.
    void LeaveReadLock();
    /// Waits until the caller holds the lock alone. A thread that holds the lock in either mode must not call
    /// this.
    void EnterWriteLock();
    /// Ends the write hold, on the thread that took it.
    void LeaveWriteLock();

private:
    kivds::Event m_hExclusiveEvent; // the token that the readers' group or one writer holds
    kivds::Mutex m_hWriterMutex;    // lines writers up one behind the other
    kivds::Event m_hReaderEvent;    // open while the readers' group holds the token
    kivds::Counter m_nReaders;      // readers inside or entering, minus one
    kivds::Mutex m_hCountMutex;     // makes the last reader's leaving one step; see LeaveReadLock
};
