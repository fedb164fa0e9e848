// An object that can be notified, and that keeps a list of others that it notifies. The list does not own its
// entries: before a subscriber is destroyed, its owner removes it from every subject to which it was
// subscribed. Subscribing and unsubscribing exclude everything else on the subject; any number of threads may
// notify at once.
#pragma once

#include "foundation/CKivDSBase.h"
#include "foundation/CRWLock.h"
#include "platform/Export.h"

#include <list>

/// Both sides of a notification: a subject, and a subscriber of other subjects.
class KIVDS_API CKivDSSubscriber : public CKivDSBase
{
public:
    CKivDSSubscriber();
    CKivDSSubscriber(const CKivDSSubscriber&) = delete;
    CKivDSSubscriber& operator=(const CKivDSSubscriber&) = delete;
    /// Waits for notifications in progress, then forgets the subscribers without notifying them.
    ~CKivDSSubscriber() override;

    /// Adds `pSubscriber` at the end of the list, again if it already stands there. False when it is null, or
    /// when the list cannot grow: "Unexpected error while subscribing " under "CKivDSSubscriber::Subscribe".
    virtual bool Subscribe(CKivDSSubscriber* const pSubscriber);
    /// Removes the earliest entry equal to `pSubscriber`; false, without a report, when there is none.
    virtual bool Unsubscribe(CKivDSSubscriber* const pSubscriber);
    /// Called by a subject while it holds its read lock: it must not subscribe to, unsubscribe from or
    /// destroy that subject, but may notify through it. `pSource` is where the event arose; `nEvent` gives
    /// the numbers a meaning.
    virtual void Notify(CKivDSBase* const pSource, int nEvent, long lParam1, long lParam2) = 0;

protected:
    /// Calls Notify on each entry in the order of subscription, with this object as the source. When one
    /// throws, the walk ends: "Unexpected error while notifying the subscribers " under
    /// "CKivDSSubscriber::NotifySubscribers".
    virtual void NotifySubscribers(int nEvent, long lParam1, long lParam2);
    /// The same with another source, to pass an event on; reports under
    /// "CKivDSSubscriber::NotifySubscribers2".
    virtual void NotifySubscribers2(CKivDSBase* const pSource, int nEvent, long lParam1, long lParam2);

private:
    std::list<CKivDSSubscriber*> m_Subscribers;
    CRWLock m_Lock;
};
