// The part: its map of attributes, its construction and release, adding, finding, counting and removing. Its
// operators are in CollectionOperators.cpp, its stream in CollectionStream.cpp, its scope in
// CollectionScope.cpp, its per-frame constructor in CollectionFrames.cpp.
#include "collection/CKivDSBaseDicomAttributeCollection.h"

#include "collection/internal/AttributeCopy.h"
#include "collection/internal/AttributeWalk.h"
#include "collection/internal/FrameCount.h"
#include "foundation/internal/Operation.h"

using kivds::AttributeEdit;
using kivds::AttributeWalk;
using kivds::Operation;

namespace {

constexpr const wchar_t* kNullOutput = L" Null output pointer parameter ";
constexpr Operation kAddAttribute(L"CKivDSBaseDicomAttributeCollection::AddAttribute");

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
    std::size_t left = src.m_Attributes.Size();
    m_Attributes.Reserve(left);
    for (const auto [tag, attribute] : AttributeWalk(src.m_Attributes)) {
        CKivDSDicomAttribute** const place = m_Attributes.PlaceFor(tag).attribute;
        if (attribute)
            *place = kivds::CopyOf(*attribute, m_Attributes, op, left).release();
        --left;
    }
    SetScope(src.m_pScope, true);
}

bool CKivDSBaseDicomAttributeCollection::Clean()
{
    delete m_pScope;
    m_pScope = nullptr;
    m_Attributes.Clear();
    return true;
}

// Erases the entries whose attribute meets a condition; null entries stay.
template <class Condition>
void CKivDSBaseDicomAttributeCollection::EraseIf(Condition condition)
{
    for (AttributeEdit edit(m_Attributes, m_Attributes.Size()); !edit.AtEnd();) {
        if (edit.Attribute() && condition(*edit.Attribute()))
            edit.Drop();
        else
            edit.Keep();
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
    const Operation op(L"CKivDSBaseDicomAttributeCollection::GetMapPtr");
    return op.Guard(kivds::kUnexpectedError, [this] { return &m_Attributes.AsMap(); });
}

bool CKivDSBaseDicomAttributeCollection::AddAttribute(CKivDSDicomAttribute* attr, bool merge)
{
    if (!attr)
        return kAddAttribute.Fail(L" Null input parameter ");
    unsigned long tag = 0;
    if (!attr->GetTag(&tag))
        return kAddAttribute.Fail(L" Unable to retrieve attribute tag ");
    return Store(tag, attr, merge);
}

// Adds an attribute whose tag is known; what it reports, AddAttribute reports.
bool CKivDSBaseDicomAttributeCollection::Store(unsigned long tag, CKivDSDicomAttribute* attr, bool merge)
{
    const auto place =
        kAddAttribute.Guard(kivds::kUnexpectedError, [&] { return m_Attributes.PlaceFor(tag); });
    if (!place.attribute)
        return false;
    CKivDSDicomAttribute*& held = *place.attribute;
    if (!place.isNew) {
        if (held == attr)
            return true;
        if (held && merge && attr->MustReplicate()) {
            *held += *attr;
            delete attr;
            return true;
        }
        delete held;
    }
    held = attr;
    if ((place.isNew || !merge) && attr->IsMultiFrame())
        m_bMultiFrame = true;
    return true;
}

bool CKivDSBaseDicomAttributeCollection::RemoveAttribute(unsigned long tag)
{
    return m_Attributes.Erase(tag);
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
    CKivDSDicomAttribute* const* const found = m_Attributes.Find(tag);
    *out = found ? *found : nullptr;
    return found != nullptr;
}

bool CKivDSBaseDicomAttributeCollection::GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out)
{
    if (!out)
        return Operation(L"CKivDSBaseDicomAttributeCollection::GetAttributePtr").Fail(kNullOutput);
    CKivDSDicomAttribute* const* const found = m_Attributes.Find(tag);
    *out = found ? *found : nullptr;
    return found != nullptr;
}

bool CKivDSBaseDicomAttributeCollection::HasAttribute(unsigned long tag) const
{
    return m_Attributes.Find(tag) != nullptr;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfAttributes(long* count) const
{
    if (!count)
        return Operation(L"CKivDSBaseDicomAttributeCollection::GetNumberOfAttributes").Fail(kNullOutput);
    *count = static_cast<long>(m_Attributes.Size());
    return true;
}

// The number of attributes that meet a condition.
template <class Condition>
long CKivDSBaseDicomAttributeCollection::CountIf(Condition condition) const
{
    long count = 0;
    for (const auto [tag, attribute] : AttributeWalk(m_Attributes))
        count += attribute && condition(*attribute) ? 1 : 0;
    return count;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfMultiFrameAttributes(long* count) const
{
    if (count)
        *count = CountIf([](const CKivDSDicomAttribute& attribute) { return attribute.IsMultiFrame(); });
    return true;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfSingleFrameAttributes(long* count) const
{
    if (count)
        *count = CountIf([](const CKivDSDicomAttribute& attribute) { return !attribute.IsMultiFrame(); });
    return true;
}

bool CKivDSBaseDicomAttributeCollection::GetNumberOfFrames(int* frames) const
{
    CKivDSDicomAttribute* const* const found = m_Attributes.Find(kivds::kNumberOfFrames);
    if (!frames || !found)
        return false;
    const CKivDSDicomAttribute* const attribute = *found;
    SKivAGAttributeValue value = {};
    const bool read = attribute && attribute->GetValue(0, &value) && kivds::ReadFrameCount(value, *frames);
    FreeAttributeValue(value);
    return read || Operation(L"CKivDSBaseDicomAttributeCollection::GetNumberOfFrames")
                       .Fail(L"Failed to retrieve the number of image frames");
}

void CKivDSBaseDicomAttributeCollection::Dump() const
{
    // The listener may change the part, but for the attribute that is being dumped.
    kivds::AttributeMap::Position position;
    for (bool held = m_Attributes.First(position); held; held = m_Attributes.Next(position)) {
        if (position.entry.attribute)
            position.entry.attribute->Dump();
    }
}
