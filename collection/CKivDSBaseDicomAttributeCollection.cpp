// The part: its map of attributes, its construction and release, adding, finding, counting and removing. Its
// operators are in CollectionOperators.cpp, its stream in CollectionStream.cpp, its scope in
// CollectionScope.cpp, its per-frame constructor in CollectionFrames.cpp.
#include "collection/CKivDSBaseDicomAttributeCollection.h"

#include "collection/internal/AttributeCopy.h"
#include "collection/internal/AttributeMap.h"
#include "collection/internal/FrameCount.h"
#include "foundation/internal/Operation.h"

#include <algorithm>

using kivds::Fetching;
using kivds::Operation;

namespace {

constexpr const wchar_t* kNullOutput = L" Null output pointer parameter ";

} // namespace

CKivDSBaseDicomAttributeCollection::CKivDSBaseDicomAttributeCollection()
    : CKivDSDicomAttributeCollection(false)
{
}

CKivDSBaseDicomAttributeCollection::CKivDSBaseDicomAttributeCollection(
    const CKivDSBaseDicomAttributeCollection& src)
    : CKivDSDicomAttributeCollection(false)
{
    const Operation op(L"CKivDSBaseDicomAttributeCollection::CKivDSBaseDicomAttributeCollection");
    op.Guard(kivds::kUnexpectedError, [&] { CopyFrom(src, op); });
}

CKivDSBaseDicomAttributeCollection&
CKivDSBaseDicomAttributeCollection::operator=(const CKivDSBaseDicomAttributeCollection& b)
{
    if (this == &b)
        return *this;
    Clean();
    const Operation op(L"CKivDSBaseDicomAttributeCollection::operator =");
    op.Guard(kivds::kUnexpectedError, [&] { CopyFrom(b, op); });
    return *this;
}

CKivDSBaseDicomAttributeCollection::~CKivDSBaseDicomAttributeCollection()
{
    Clean();
}

// Fills this empty part with copies. May throw; what was copied before stays.
void CKivDSBaseDicomAttributeCollection::CopyFrom(const CKivDSBaseDicomAttributeCollection& src,
                                                  const Operation& op)
{
    m_bMultiFrame = src.m_bMultiFrame;
    for (const auto& [tag, attribute] : Fetching(src.m_Attributes)) {
        CKivDSDicomAttribute*& entry = m_Attributes.emplace_hint(m_Attributes.end(), tag, nullptr)->second;
        if (attribute)
            entry = kivds::CopyOf(*attribute, op).release();
    }
    SetScope(src.m_pScope, true);
}

bool CKivDSBaseDicomAttributeCollection::Clean()
{
    delete m_pScope;
    m_pScope = nullptr;
    for (const auto& [tag, attribute] : Fetching(m_Attributes))
        delete attribute;
    m_Attributes.clear();
    return true;
}

void CKivDSBaseDicomAttributeCollection::Erase(Map::iterator entry)
{
    delete entry->second;
    m_Attributes.erase(entry);
}

// Erases the entries whose attribute meets a condition; null entries stay.
template <class Condition>
void CKivDSBaseDicomAttributeCollection::EraseIf(Condition condition)
{
    for (auto next = m_Attributes.begin(); next != m_Attributes.end();) {
        const auto entry = next++;
        if (entry->second && condition(*entry->second))
            Erase(entry);
    }
}

bool CKivDSBaseDicomAttributeCollection::IsMultiFrame() const
{
    return m_bMultiFrame;
}

bool CKivDSBaseDicomAttributeCollection::IsCompoundCollection() const
{
    return false;
}

std::map<unsigned long, CKivDSDicomAttribute*>* CKivDSBaseDicomAttributeCollection::GetMapPtr()
{
    return &m_Attributes;
}

// Where a tag is or would stand. Elements come in ascending tag order from files and streams, so the end is
// tried first.
CKivDSBaseDicomAttributeCollection::Map::iterator
CKivDSBaseDicomAttributeCollection::PlaceFor(unsigned long tag)
{
    const bool atEnd = m_Attributes.empty() || m_Attributes.rbegin()->first < tag;
    return atEnd ? m_Attributes.end() : m_Attributes.lower_bound(tag);
}

bool CKivDSBaseDicomAttributeCollection::AddAttribute(CKivDSDicomAttribute* attr, bool merge)
{
    const Operation op(L"CKivDSBaseDicomAttributeCollection::AddAttribute");
    if (!attr)
        return op.Fail(L" Null input parameter ");
    unsigned long tag = 0;
    if (!attr->GetTag(&tag))
        return op.Fail(L" Unable to retrieve attribute tag ");
    const auto place = PlaceFor(tag);
    const bool present = place != m_Attributes.end() && place->first == tag;
    if (present && place->second == attr)
        return true;
    if (present && merge && place->second && attr->MustReplicate()) {
        *place->second += *attr;
        delete attr;
        return true;
    }
    if (present) {
        delete place->second;
        place->second = attr;
    } else {
        const bool stored = op.Guard(kivds::kUnexpectedError, [&] {
            m_Attributes.emplace_hint(place, tag, attr);
            return true;
        });
        if (!stored)
            return false;
    }
    if (!(present && merge) && attr->IsMultiFrame())
        m_bMultiFrame = true;
    return true;
}

bool CKivDSBaseDicomAttributeCollection::RemoveAttribute(unsigned long tag)
{
    const auto entry = m_Attributes.find(tag);
    if (entry == m_Attributes.end())
        return false;
    Erase(entry);
    return true;
}

bool CKivDSBaseDicomAttributeCollection::RemoveAllAttributes()
{
    EraseIf([](const CKivDSDicomAttribute& attribute) { return !attribute.IsPrivate(); });
    return true;
}

bool CKivDSBaseDicomAttributeCollection::RemoveAllSingleFrameAttributes()
{
    EraseIf([](const CKivDSDicomAttribute& attribute) {
        return !attribute.IsPrivate() && !attribute.IsMultiFrame();
    });
    return true;
}

bool CKivDSBaseDicomAttributeCollection::RemoveAllMultiFrameAttributes()
{
    EraseIf([](const CKivDSDicomAttribute& attribute) { return attribute.IsMultiFrame(); });
    return true;
}

bool CKivDSBaseDicomAttributeCollection::GetAttribute(unsigned long tag,
                                                      const CKivDSDicomAttribute** out) const
{
    if (!out)
        return Operation(L"CKivDSBaseDicomAttributeCollection::GetAttribute").Fail(kNullOutput);
    const auto entry = m_Attributes.find(tag);
    *out = entry != m_Attributes.end() ? entry->second : nullptr;
    return entry != m_Attributes.end();
}

bool CKivDSBaseDicomAttributeCollection::GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out)
{
    if (!out)
        return Operation(L"CKivDSBaseDicomAttributeCollection::GetAttributePtr").Fail(kNullOutput);
    const auto entry = m_Attributes.find(tag);
    *out = entry != m_Attributes.end() ? entry->second : nullptr;
    return entry != m_Attributes.end();
}

bool CKivDSBaseDicomAttributeCollection::HasAttribute(unsigned long tag) const
{
    return m_Attributes.find(tag) != m_Attributes.end();
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfAttributes(long* count) const
{
    if (!count)
        return Operation(L"CKivDSBaseDicomAttributeCollection::GetNumberOfAttributes").Fail(kNullOutput);
    *count = static_cast<long>(m_Attributes.size());
    return true;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfMultiFrameAttributes(long* count) const
{
    if (count)
        *count =
            static_cast<long>(std::count_if(m_Attributes.begin(), m_Attributes.end(), [](const auto& entry) {
                return entry.second && entry.second->IsMultiFrame();
            }));
    return true;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfSingleFrameAttributes(long* count) const
{
    if (count)
        *count =
            static_cast<long>(std::count_if(m_Attributes.begin(), m_Attributes.end(), [](const auto& entry) {
                return entry.second && !entry.second->IsMultiFrame();
            }));
    return true;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfFrames(int* frames) const
{
    const auto entry = m_Attributes.find(kivds::kNumberOfFrames);
    if (!frames || entry == m_Attributes.end())
        return false;
    SKivAGAttributeValue value = {};
    const bool read =
        entry->second && entry->second->GetValue(0, &value) && kivds::ReadFrameCount(value, *frames);
    FreeAttributeValue(value);
    return read || Operation(L"CKivDSBaseDicomAttributeCollection::GetNumberOfFrames")
                       .Fail(L"Failed to retrieve the number of image frames");
}

void CKivDSBaseDicomAttributeCollection::Dump() const
{
    for (const auto& [tag, attribute] : m_Attributes) {
        if (attribute)
            attribute->Dump();
    }
}
