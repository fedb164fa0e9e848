// Walks the attributes of a collection in ascending tag order, those of the single-frame part first. It is a
// subscriber: whoever changes the collection while it is walked tells its iterators, through events 16 and
// 17, and these end their walk. An iterator borrows the collection, which must outlive it, and lends the
// collection's own attributes; of a compound facade it walks, and owns, a flat copy. Iterators are not for
// several threads at once, but for Notify and Invalidate.
#pragma once

#include "collection/AttributeMap.h"
#include "collection/CKivDSDicomAttributeCollection.h"
#include "foundation/CKivDSSubscriber.h"

#include <atomic>

/// What is walked are the parts' own attributes: a GetMapPtr that a derived class replaces is not asked. A
/// walk ends at its end, when it is invalidated, or with the iterator; GetFirstAttribute starts a new one.
/// Null entries are passed over.
class KIVDS_API CKivDSDicomAttributeCollectionIterator : public CKivDSSubscriber
{
public:
    /// Selects the single-frame attributes (true, or both flags false) and the multi-frame attributes (true)
    /// of `collection` as they are parted now. A compound facade that cannot be flattened gives an iterator
    /// without maps.
    CKivDSDicomAttributeCollectionIterator(CKivDSDicomAttributeCollection& collection, bool walkSingle,
                                           bool walkMulti);
    ~CKivDSDicomAttributeCollectionIterator() override;

    /// Events 16 and 17 (eNotifyInvalidateIterator, eNotifyInvalidateIterator2) invalidate; others are
    /// ignored.
    void Notify(CKivDSBase* const pSource, int nEvent, long lParam1, long lParam2) override;
    /// Starts the walk, also anew, and gives the first attribute; null when there is none. "Object not
    /// (properly) initialized" under "CKivDSDicomAttributeCollectionIterator::GetFirstAttribute" when there
    /// is no map.
    virtual CKivDSDicomAttribute* GetFirstAttribute();
    /// The next attribute; null when the walk has ended, was invalidated or never started. "Object not
    /// (properly) initialized" under "CKivDSDicomAttributeCollectionIterator::GetNextAttribute" when there is
    /// no map.
    virtual CKivDSDicomAttribute* GetNextAttribute();
    /// Ends the walk; it may start again.
    void Invalidate();

protected:
    /// An iterator without a collection, for derived ones.
    CKivDSDicomAttributeCollectionIterator();

private:
    const kivds::AttributeMap* GetAttributeMap();
    CKivDSDicomAttribute* AttributeFromHere(bool held);

    const kivds::AttributeMap* m_pSingleFrameMap = nullptr;
    kivds::AttributeMap::Position m_Position;
    const kivds::AttributeMap* m_pMultiFrameMap = nullptr;
    bool m_bWalking = false;
    std::atomic<bool> m_bInvalid{false}; // set by notifications on other threads
    CKivDSDicomAttributeCollection* m_pCollection = nullptr;
    bool m_bInMultiFrameMap = false;
    bool m_bOwnsCollection = false;
};
