#include "foundation/CKivDSSubscriber.h"

#include "foundation/internal/Operation.h"

#include <algorithm>

using kivds::Operation;

CKivDSBase::CKivDSBase() = default;
CKivDSBase::CKivDSBase(const CKivDSBase&) = default;
CKivDSBase& CKivDSBase::operator=(const CKivDSBase&) = default;
CKivDSBase::~CKivDSBase() = default;

namespace {

class ReadHold
{
public:
    explicit ReadHold(CRWLock& lock) : m_Lock(lock) { m_Lock.EnterReadLock(); }
    ~ReadHold() { m_Lock.LeaveReadLock(); }
    ReadHold(const ReadHold&) = delete;
    ReadHold& operator=(const ReadHold&) = delete;

private:
    CRWLock& m_Lock;
};

class WriteHold
{
public:
    explicit WriteHold(CRWLock& lock) : m_Lock(lock) { m_Lock.EnterWriteLock(); }
    ~WriteHold() { m_Lock.LeaveWriteLock(); }
    WriteHold(const WriteHold&) = delete;
    WriteHold& operator=(const WriteHold&) = delete;

private:
    CRWLock& m_Lock;
};

// The report is made while the hold lasts, so that reports and notifications of one subject stand in one
// order.
void NotifyAll(const Operation& op, CRWLock& lock, const std::list<CKivDSSubscriber*>& subscribers,
               CKivDSBase* source, int event, long param1, long param2)
{
    const ReadHold hold(lock);
    op.Guard(L"Unexpected error while notifying the subscribers ", [&] {
        for (CKivDSSubscriber* subscriber : subscribers)
            subscriber->Notify(source, event, param1, param2);
    });
}

} // namespace

CKivDSSubscriber::CKivDSSubscriber() = default;

CKivDSSubscriber::~CKivDSSubscriber()
{
    const WriteHold hold(m_Lock);
    m_Subscribers.clear();
}

bool CKivDSSubscriber::Subscribe(CKivDSSubscriber* const pSubscriber)
{
    if (!pSubscriber)
        return false;
    const WriteHold hold(m_Lock);
    return Operation(L"CKivDSSubscriber::Subscribe").Guard(L"Unexpected error while subscribing ", [&] {
        m_Subscribers.push_back(pSubscriber);
        return true;
    });
}

bool CKivDSSubscriber::Unsubscribe(CKivDSSubscriber* const pSubscriber)
{
    if (!pSubscriber)
        return false;
    const WriteHold hold(m_Lock);
    const auto entry = std::find(m_Subscribers.begin(), m_Subscribers.end(), pSubscriber);
    if (entry == m_Subscribers.end())
        return false;
    m_Subscribers.erase(entry);
    return true;
}

void CKivDSSubscriber::NotifySubscribers(int nEvent, long lParam1, long lParam2)
{
    NotifyAll(Operation(L"CKivDSSubscriber::NotifySubscribers"), m_Lock, m_Subscribers, this, nEvent, lParam1,
              lParam2);
}

void CKivDSSubscriber::NotifySubscribers2(CKivDSBase* const pSource, int nEvent, long lParam1, long lParam2)
{
    NotifyAll(Operation(L"CKivDSSubscriber::NotifySubscribers2"), m_Lock, m_Subscribers, pSource, nEvent,
              lParam1, lParam2);
}
