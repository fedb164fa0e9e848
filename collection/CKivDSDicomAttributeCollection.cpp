// The facade: construction, sharing and release of its parts, routing, adding, finding, counting, removing.
// Its operators are in CollectionOperators.cpp, its stream in CollectionStream.cpp, its scope in
// CollectionScope.cpp, frames and splitting in CollectionFrames.cpp, flattening beside the compound
// collection.
#include "collection/CKivDSDicomAttributeCollection.h"

#include "attribute/CKivDSDicomAttributeFactory.h"
#include "attribute/internal/AttributeTypes.h"
#include "collection/internal/PartSharing.h"
#include "foundation/internal/ExactType.h"
#include "foundation/internal/Operation.h"

#include <memory>

using kivds::Operation;
using kivds::PartAccess;
using Part = CKivDSBaseDicomAttributeCollection;

namespace {

constexpr const wchar_t* kConstructor = L"CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection";

/// Whether a part holds this very object.
bool Holds(const Part* part, const CKivDSDicomAttribute& attribute)
{
    unsigned long tag = 0;
    const CKivDSDicomAttribute* held = nullptr;
    return part && attribute.GetTag(&tag) && part->GetAttribute(tag, &held) && held == &attribute;
}

} // namespace

CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection(bool withSingleFramePart)
{
    if (withSingleFramePart)
        m_pSingleFrameCollection = CreateCollection();
}

CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection(const CKivDSDicomAttributeCollection& src,
                                                               bool deep)
    : CKivDSBase(src)
{
    if (src.IsGood() && !AddCollection(src, deep))
        Operation(kConstructor).Report(L"Failed to initialize from object");
}

CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection(Part* single, Part* multi)
    : m_pSingleFrameCollection(single ? PartAccess::Share(single) : CreateCollection()),
      m_pMultiFrameCollection(PartAccess::Share(multi))
{
}

CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection(CKivDSCompoundCollection* compound)
    : m_pCompoundCollection(PartAccess::Share(compound))
{
}

CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection(CKivDSEnhancedMFCollection* enhanced)
    : m_pEnhancedMFCollection(PartAccess::Share(enhanced))
{
}

CKivDSDicomAttributeCollection::~CKivDSDicomAttributeCollection()
{
    CKivDSDicomAttributeCollection::Clear();
}

void CKivDSDicomAttributeCollection::Clear()
{
    PartAccess::Release(m_pSingleFrameCollection);
    PartAccess::Release(m_pMultiFrameCollection);
    PartAccess::Release(m_pCompoundCollection);
    PartAccess::Release(m_pEnhancedMFCollection);
}

bool CKivDSDicomAttributeCollection::AddCollection(const CKivDSDicomAttributeCollection& src, bool deep)
{
    if (this == &src)
        return true; // its parts are its own already
    Clear();
    return Operation(L"CKivDSDicomAttributeCollection::AddCollection")
        .Guard(L"Unexpected error while trying to initialize from collection", [&] {
            if (src.IsCompoundCollection()) {
                CKivDSCompoundCollection* const compound = src.m_pCompoundCollection;
                m_pCompoundCollection = PartAccess::Share(
                    deep && compound ? new CKivDSCompoundCollection(*compound, true) : compound);
                return true;
            }
            if (!deep) {
                m_pSingleFrameCollection = PartAccess::Share(src.m_pSingleFrameCollection);
                m_pMultiFrameCollection = PartAccess::Share(src.m_pMultiFrameCollection);
                m_pEnhancedMFCollection = PartAccess::Share(src.m_pEnhancedMFCollection);
                return true;
            }
            m_pSingleFrameCollection =
                PartAccess::Share(PartAccess::Copy(src.m_pSingleFrameCollection).release());
            m_pMultiFrameCollection =
                PartAccess::Share(PartAccess::Copy(src.m_pMultiFrameCollection).release());
            if (src.m_pEnhancedMFCollection)
                m_pEnhancedMFCollection =
                    PartAccess::Share(new CKivDSEnhancedMFCollection(*src.m_pEnhancedMFCollection, false));
            return true;
        });
}

CKivDSDicomAttributeCollection*
CKivDSDicomAttributeCollection::CreateCollection(CKivDSDicomAttributeCollection* src, bool deep)
{
    const Operation op(L"CKivDSDicomAttributeCollection::CreateCollection");
    auto* const created = src ? new (std::nothrow) CKivDSDicomAttributeCollection(*src, deep) : nullptr;
    if (!created)
        op.Report(L"Memory alloc error");
    return created;
}

Part* CKivDSDicomAttributeCollection::CreateCollection() const
{
    Part* const part = new (std::nothrow) Part;
    if (!part)
        Operation(L"CKivDSDicomAttributeCollection::CreateCollection").Report(L"Memory alloc error");
    return PartAccess::Share(part);
}

bool CKivDSDicomAttributeCollection::IsGood() const
{
    return m_pSingleFrameCollection || m_pCompoundCollection || m_pEnhancedMFCollection;
}

bool CKivDSDicomAttributeCollection::IsMultiFrame() const
{
    if (!IsGood())
        return false;
    const CKivDSDicomAttributeCollection* const inner = Inner();
    return m_pMultiFrameCollection || (inner && inner->IsMultiFrame());
}

bool CKivDSDicomAttributeCollection::IsCompoundCollection() const
{
    return m_pCompoundCollection != nullptr;
}

bool CKivDSDicomAttributeCollection::IsEnhancedMFCollection() const
{
    return m_pEnhancedMFCollection != nullptr;
}

// The collection that a compound or an enhanced multi-frame facade stands for, and that answers in its place;
// null for a plain facade.
CKivDSDicomAttributeCollection* CKivDSDicomAttributeCollection::Inner() const
{
    if (m_pCompoundCollection)
        return m_pCompoundCollection;
    return m_pEnhancedMFCollection;
}

bool CKivDSDicomAttributeCollection::RefuseCompound(const Operation& op) const
{
    return IsCompoundCollection() && !op.Fail(L"Operation not supported on compound collections ");
}

bool CKivDSDicomAttributeCollection::AddAttribute(CKivDSDicomAttribute* attr, bool merge)
{
    if (RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::AddAttribute")))
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->AddAttribute(attr, merge);
    if (!IsGood())
        return false;
    const bool multiFrame = attr && attr->IsMultiFrame();
    // An attribute that is held became, or ceased to be, multi-frame since it was added: it stays where it
    // is.
    if (attr && Holds(multiFrame ? m_pSingleFrameCollection : m_pMultiFrameCollection, *attr))
        return true;
    if (!multiFrame)
        return m_pSingleFrameCollection->AddAttribute(attr, merge);
    if (!m_pMultiFrameCollection)
        m_pMultiFrameCollection = CreateCollection();
    return m_pMultiFrameCollection && m_pMultiFrameCollection->AddAttribute(attr, merge);
}

bool CKivDSDicomAttributeCollection::ExpectElements(int count)
{
    const Operation op(L"CKivDSDicomAttributeCollection::ExpectElements");
    if (RefuseCompound(op))
        return false;
    Part* const part = OwnPart();
    return !part || count <= 0 || op.Guard(kivds::kUnexpectedError, [&] {
        part->m_Attributes.Expect(static_cast<std::size_t>(count));
        return true;
    });
}

// The part that AddAttribute puts single-frame attributes into, where no derived class has a say in that;
// else null.
Part* CKivDSDicomAttributeCollection::OwnPart() const
{
    const bool isPlain = m_pSingleFrameCollection && !Inner() &&
                         kivds::IsExactly<CKivDSDicomAttributeCollection>(*this) &&
                         kivds::IsExactly<Part>(*m_pSingleFrameCollection);
    return isPlain ? m_pSingleFrameCollection : nullptr;
}

bool CKivDSDicomAttributeCollection::AddElement(unsigned long tag, int representation, int length,
                                                const char* data, int expectedCount, bool mustReplicate,
                                                int inSequenceIndex)
{
    Part* const part = OwnPart();
    std::unique_ptr<CKivDSDicomAttribute> made =
        part ? part->m_Attributes.NewElement()
             : std::unique_ptr<CKivDSDicomAttribute>(
                   g_DicomAttributeFactory.CreateDicomAttribute(kivds::kPlainAttribute));
    if (!made)
        return Operation(L"CKivDSDicomAttributeCollection::AddElement").Fail(kivds::kUnexpectedError);
    if (!made->InitFromElement(tag, representation, length, data, expectedCount, mustReplicate,
                               inSequenceIndex))
        return false;
    const auto key = static_cast<std::uint32_t>(tag);
    const bool appended = part && part->m_Attributes.Append(key, made.get());
    if (!appended && !(part ? part->Store(key, made.get(), true) : AddAttribute(made.get(), true)))
        return false;
    (void)made.release(); // the part's now
    return true;
}

bool CKivDSDicomAttributeCollection::RemoveAttribute(unsigned long tag)
{
    const Operation op(L"CKivDSDicomAttributeCollection::RemoveAttribute");
    if (RefuseCompound(op))
        return false;
    if (!IsGood())
        return op.Fail(L"Attribute collection not properly initialized");
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->RemoveAttribute(tag);
    return m_pSingleFrameCollection->RemoveAttribute(tag) ||
           (m_pMultiFrameCollection && m_pMultiFrameCollection->RemoveAttribute(tag));
}

bool CKivDSDicomAttributeCollection::RemoveAllAttributes()
{
    if (RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::RemoveAllAttributes")) || !IsGood())
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->RemoveAllAttributes();
    m_pSingleFrameCollection->RemoveAllAttributes();
    if (m_pMultiFrameCollection)
        m_pMultiFrameCollection->RemoveAllAttributes();
    return true;
}

bool CKivDSDicomAttributeCollection::RemoveAllSingleFrameAttributes()
{
    if (RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::RemoveAllSingleFrameAttributes")) ||
        !IsGood())
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->RemoveAllSingleFrameAttributes();
    return m_pSingleFrameCollection->RemoveAllAttributes();
}

bool CKivDSDicomAttributeCollection::RemoveAllMultiFrameAttributes()
{
    if (RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::RemoveAllMultiFrameAttributes")) ||
        !IsGood())
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->RemoveAllMultiFrameAttributes();
    return m_pMultiFrameCollection && m_pMultiFrameCollection->RemoveAllAttributes();
}

// Looks a tag up in the parts to be searched; `ask` asks one part. `*out` is written only when it is found.
template <class Attribute, class Ask>
bool CKivDSDicomAttributeCollection::FindAttribute(Attribute** out, bool searchSingle, bool searchMulti,
                                                   Ask ask) const
{
    Attribute* found = nullptr;
    const bool hit =
        out &&
        ((searchSingle && m_pSingleFrameCollection && ask(*m_pSingleFrameCollection, &found) && found) ||
         (searchMulti && m_pMultiFrameCollection && ask(*m_pMultiFrameCollection, &found) && found));
    if (hit)
        *out = found;
    return hit;
}

bool CKivDSDicomAttributeCollection::GetAttribute(unsigned long tag, const CKivDSDicomAttribute** out,
                                                  bool searchSingle, bool searchMulti) const
{
    if (!IsGood())
        return false;
    if (const CKivDSDicomAttributeCollection* const inner = Inner())
        return inner->GetAttribute(tag, out, searchSingle, searchMulti);
    return FindAttribute(
        out, searchSingle, searchMulti,
        [&](const Part& part, const CKivDSDicomAttribute** found) { return part.GetAttribute(tag, found); });
}

bool CKivDSDicomAttributeCollection::GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out,
                                                     bool searchSingle, bool searchMulti)
{
    if (!IsGood())
        return false;
    if (CKivDSDicomAttributeCollection* const inner = Inner())
        return inner->GetAttributePtr(tag, out, searchSingle, searchMulti);
    return FindAttribute(out, searchSingle, searchMulti, [&](Part& part, CKivDSDicomAttribute** found) {
        return part.GetAttributePtr(tag, found);
    });
}

bool CKivDSDicomAttributeCollection::HasAttribute(unsigned long tag, bool searchSingle,
                                                  bool searchMulti) const
{
    if (!IsGood())
        return false;
    if (m_pCompoundCollection)
        return m_pCompoundCollection->HasAttribute(tag, searchSingle, searchMulti);
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->HasAttribute(tag, searchSingle, searchMulti);
    if (searchSingle)
        return m_pSingleFrameCollection && m_pSingleFrameCollection->HasAttribute(tag);
    return searchMulti && m_pMultiFrameCollection && m_pMultiFrameCollection->HasAttribute(tag);
}

bool CKivDSDicomAttributeCollection::GetNumberOfAttributes(long* count) const
{
    if (!IsGood() || !count)
        return false;
    if (const CKivDSDicomAttributeCollection* const inner = Inner())
        return inner->GetNumberOfAttributes(count);
    long single = 0;
    long multi = 0;
    m_pSingleFrameCollection->GetNumberOfAttributes(&single);
    if (m_pMultiFrameCollection)
        m_pMultiFrameCollection->GetNumberOfAttributes(&multi);
    *count = single + multi;
    return true;
}

bool CKivDSDicomAttributeCollection::GetNumberOfSingleFrameAttributes(long* count) const
{
    if (!IsGood() || !count ||
        RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::GetNumberOfSingleFrameAttributes")))
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->GetNumberOfSingleFrameAttributes(count);
    return m_pSingleFrameCollection->GetNumberOfAttributes(count);
}

bool CKivDSDicomAttributeCollection::GetNumberOfMultiFrameAttributes(long* count) const
{
    if (!IsGood() || !count ||
        RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::GetNumberOfMultiFrameAttributes")))
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->GetNumberOfMultiFrameAttributes(count);
    *count = 0;
    return !m_pMultiFrameCollection || m_pMultiFrameCollection->GetNumberOfAttributes(count);
}

bool CKivDSDicomAttributeCollection::GetNumberOfFrames(int* frames)
{
    if (!IsGood() || !frames)
        return false;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->GetNumberOfFrames(frames);
    if (m_pCompoundCollection)
        return m_pCompoundCollection->GetNumberOfFrames(frames);
    *frames = 0;
    return !m_pMultiFrameCollection || m_pSingleFrameCollection->GetNumberOfFrames(frames);
}

void CKivDSDicomAttributeCollection::Dump() const
{
    if (!IsGood() || RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::Dump")))
        return;
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection->Dump();
    m_pSingleFrameCollection->Dump();
    if (m_pMultiFrameCollection)
        m_pMultiFrameCollection->Dump();
}

std::map<unsigned long, CKivDSDicomAttribute*>* CKivDSDicomAttributeCollection::GetMapPtr()
{
    Part* const part = PartOfMap();
    return part ? PartAccess::MapOf(*part) : nullptr;
}

// The part whose map GetMapPtr lends and the iterators walk.
Part* CKivDSDicomAttributeCollection::PartOfMap()
{
    if (!IsGood() || RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::GetMapPtr")))
        return nullptr;
    return m_pEnhancedMFCollection ? m_pEnhancedMFCollection->PartOfMap() : m_pSingleFrameCollection;
}

std::map<unsigned long, CKivDSDicomAttribute*>* CKivDSDicomAttributeCollection::GetMultiFrameMapPtr()
{
    Part* const part = PartOfMultiFrameMap();
    return part ? PartAccess::MapOf(*part) : nullptr;
}

// The part whose map GetMultiFrameMapPtr lends and the iterators walk.
Part* CKivDSDicomAttributeCollection::PartOfMultiFrameMap()
{
    if (RefuseCompound(Operation(L"CKivDSDicomAttributeCollection::GetMultiFrameMapPtr")))
        return nullptr;
    return m_pEnhancedMFCollection ? m_pEnhancedMFCollection->PartOfMultiFrameMap() : m_pMultiFrameCollection;
}
