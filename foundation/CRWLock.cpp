#include "foundation/CRWLock.h"

CRWLock::CRWLock()
    : m_hExclusiveEvent(kivds::EventReset::Automatic, true), m_hReaderEvent(kivds::EventReset::Manual, false),
      m_nReaders(-1)
{
}

CRWLock::~CRWLock()
{
    m_hReaderEvent.Close();
    m_hExclusiveEvent.Close();
    m_hWriterMutex.Close();
    m_hCountMutex.Close();
}

void CRWLock::EnterReadLock()
{
    m_hCountMutex.Wait();
    const bool first = m_nReaders.Increment() == 0;
    m_hCountMutex.Release();
    if (first) {
        m_hExclusiveEvent.Wait();
        m_hReaderEvent.Set();
    }
    m_hReaderEvent.Wait();
}

// Between the last reader's decrement and its reset of the reader event, two readers could arrive: the first
// would wait for the token, the second would pass the event that is still open, perhaps beside a writer that
// took the token. The count mutex closes that interval: nobody is counted in while a group is being
// dissolved. The token is handed back last, so that whoever takes the write lock and then destroys the object
// finds the last reader done with it.
void CRWLock::LeaveReadLock()
{
    m_hCountMutex.Wait();
    const bool last = m_nReaders.Decrement() < 0;
    if (last)
        m_hReaderEvent.Reset();
    m_hCountMutex.Release();
    if (last)
        m_hExclusiveEvent.Set();
}

void CRWLock::EnterWriteLock()
{
    m_hWriterMutex.Wait();
    m_hExclusiveEvent.Wait();
}

void CRWLock::LeaveWriteLock()
{
    m_hExclusiveEvent.Set();
    m_hWriterMutex.Release();
}
