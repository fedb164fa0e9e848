#include "collection/CKivDSDicomAttributeCollectionIterator.h"

#include "collection/internal/AttributeWalk.h"
#include "collection/internal/PartSharing.h"
#include "foundation/internal/Operation.h"

#include <memory>
#include <new>

using kivds::Operation;

namespace {

constexpr const wchar_t* kNotInitialized = L"Object not (properly) initialized";

const kivds::AttributeMap* AttributesOf(const CKivDSBaseDicomAttributeCollection* part)
{
    return part ? &kivds::PartAccess::AttributesOf(*part) : nullptr;
}

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
    auto* const part = dynamic_cast<CKivDSBaseDicomAttributeCollection*>(m_pCollection); // or a facade
    if (walkSingle || !walkMulti)
        m_pSingleFrameMap = AttributesOf(part ? part : m_pCollection->PartOfMap());
    if (walkMulti)
        m_pMultiFrameMap = AttributesOf(m_pCollection->PartOfMultiFrameMap());
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
const kivds::AttributeMap* CKivDSDicomAttributeCollectionIterator::GetAttributeMap()
{
    const bool inMulti = m_pMultiFrameMap && (m_bInMultiFrameMap || !m_pSingleFrameMap);
    return inMulti ? m_pMultiFrameMap : m_pSingleFrameMap;
}

// The attribute at the position, unless the map that the walk is in has ended (`held` false), or the next one
// in this map or the one after it; null entries are passed over.
CKivDSDicomAttribute* CKivDSDicomAttributeCollectionIterator::AttributeFromHere(bool held)
{
    for (const kivds::AttributeMap* map = GetAttributeMap();; map = m_pMultiFrameMap) {
        while (held && !m_Position.entry.attribute)
            held = map->Next(m_Position);
        if (held)
            return m_Position.entry.attribute;
        if (map == m_pMultiFrameMap || !m_pMultiFrameMap)
            return nullptr;
        m_bInMultiFrameMap = true;
        held = m_pMultiFrameMap->First(m_Position);
    }
}

CKivDSDicomAttribute* CKivDSDicomAttributeCollectionIterator::GetFirstAttribute()
{
    m_bInMultiFrameMap = false;
    const kivds::AttributeMap* const map = GetAttributeMap();
    if (!map) {
        Operation(L"CKivDSDicomAttributeCollectionIterator::GetFirstAttribute").Report(kNotInitialized);
        return nullptr;
    }
    m_bInMultiFrameMap = map == m_pMultiFrameMap;
    m_bInvalid = false;
    CKivDSDicomAttribute* const first = AttributeFromHere(map->First(m_Position));
    m_bWalking = first != nullptr;
    return first;
}

CKivDSDicomAttribute* CKivDSDicomAttributeCollectionIterator::GetNextAttribute()
{
    if (m_bInvalid)
        m_bWalking = false;
    if (!m_bWalking)
        return nullptr;
    const kivds::AttributeMap* const map = GetAttributeMap();
    if (!map) {
        Operation(L"CKivDSDicomAttributeCollectionIterator::GetNextAttribute").Report(kNotInitialized);
        return nullptr;
    }
    const bool held = kivds::AttributeWalk::Step(*map, m_Position) || map->Next(m_Position);
    if (held && m_Position.entry.attribute) // mostly
        return m_Position.entry.attribute;
    CKivDSDicomAttribute* const next = AttributeFromHere(held);
    m_bWalking = next != nullptr;
    return next;
}
