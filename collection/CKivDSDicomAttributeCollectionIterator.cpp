#include "collection/CKivDSDicomAttributeCollectionIterator.h"

#include "foundation/internal/Operation.h"

#include <memory>
#include <new>

using kivds::Operation;

namespace {

constexpr const wchar_t* kNotInitialized = L"Object not (properly) initialized";

} // namespace

CKivDSDicomAttributeCollectionIterator::CKivDSDicomAttributeCollectionIterator() = default;

CKivDSDicomAttributeCollectionIterator::CKivDSDicomAttributeCollectionIterator(
    CKivDSDicomAttributeCollection& collection, bool walkSingle, bool walkMulti)
    : m_pCollection(&collection)
{
    if (collection.IsCompoundCollection()) {
        std::unique_ptr<CKivDSDicomAttributeCollection> flat(new (std::nothrow)
                                                                 CKivDSDicomAttributeCollection(true));
        m_pCollection = nullptr;
        if (!flat || !flat->AddCompoundCollection(&collection))
            return;
        m_pCollection = flat.release();
        m_bOwnsCollection = true;
    }
    if (walkSingle || !walkMulti)
        m_pSingleFrameMap = m_pCollection->GetMapPtr();
    if (walkMulti)
        m_pMultiFrameMap = m_pCollection->GetMultiFrameMapPtr();
}

CKivDSDicomAttributeCollectionIterator::~CKivDSDicomAttributeCollectionIterator()
{
    if (m_bOwnsCollection)
        delete m_pCollection;
}

void CKivDSDicomAttributeCollectionIterator::Notify(CKivDSBase* const, int nEvent, long, long)
{
    if (nEvent == eNotifyInvalidateIterator || nEvent == eNotifyInvalidateIterator2)
        Invalidate();
}

void CKivDSDicomAttributeCollectionIterator::Invalidate()
{
    m_bInvalid = true;
}

// The map that the walk is in.
CKivDSDicomAttributeCollectionIterator::Map* CKivDSDicomAttributeCollectionIterator::GetAttributeMap()
{
    const bool inMulti = m_pMultiFrameMap && (m_bInMultiFrameMap || !m_pSingleFrameMap);
    return inMulti ? m_pMultiFrameMap : m_pSingleFrameMap;
}

// The attribute at the position, or the next one in this map or the one after it; null entries are passed
// over.
CKivDSDicomAttribute* CKivDSDicomAttributeCollectionIterator::AttributeFromHere()
{
    for (Map* map = GetAttributeMap();; map = m_pMultiFrameMap) {
        while (m_Position != map->end() && !m_Position->second)
            ++m_Position;
        if (m_Position != map->end())
            return m_Position->second;
        if (map == m_pMultiFrameMap || !m_pMultiFrameMap)
            return nullptr;
        m_bInMultiFrameMap = true;
        m_Position = m_pMultiFrameMap->begin();
    }
}

CKivDSDicomAttribute* CKivDSDicomAttributeCollectionIterator::GetFirstAttribute()
{
    m_bInMultiFrameMap = false;
    Map* const map = GetAttributeMap();
    if (!map) {
        Operation(L"CKivDSDicomAttributeCollectionIterator::GetFirstAttribute").Report(kNotInitialized);
        return nullptr;
    }
    m_bInMultiFrameMap = map == m_pMultiFrameMap;
    m_bInvalid = false;
    m_Position = map->begin();
    CKivDSDicomAttribute* const first = AttributeFromHere();
    m_bWalking = first != nullptr;
    return first;
}

CKivDSDicomAttribute* CKivDSDicomAttributeCollectionIterator::GetNextAttribute()
{
    if (m_bInvalid)
        m_bWalking = false;
    if (!m_bWalking)
        return nullptr;
    const Map* const map = GetAttributeMap();
    if (!map) {
        Operation(L"CKivDSDicomAttributeCollectionIterator::GetNextAttribute").Report(kNotInitialized);
        return nullptr;
    }
    if (m_Position != map->end())
        ++m_Position;
    CKivDSDicomAttribute* const next = AttributeFromHere();
    m_bWalking = next != nullptr;
    return next;
}
