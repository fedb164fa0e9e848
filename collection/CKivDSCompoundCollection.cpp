#include "collection/CKivDSCompoundCollection.h"

#include "collection/internal/PartSharing.h"
#include "collection/internal/ScopeSlot.h"
#include "foundation/internal/Operation.h"

#include <algorithm>

using kivds::Operation;
using kivds::PartAccess;
using Facade = CKivDSDicomAttributeCollection;

namespace {

constexpr const wchar_t* kNullOutput = L"Null output pointer parameter";
constexpr const wchar_t* kNotInitialized = L"Unable to initialize the scope object";

} // namespace

CKivDSCompoundCollection::CKivDSCompoundCollection() : CKivDSDicomAttributeCollection(false) {}

CKivDSCompoundCollection::CKivDSCompoundCollection(const CKivDSCompoundCollection& src, bool deep)
    : CKivDSDicomAttributeCollection(false)
{
    CopyMembers(src, deep);
}

CKivDSCompoundCollection& CKivDSCompoundCollection::operator=(const CKivDSCompoundCollection& src)
{
    if (this == &src)
        return *this;
    Clear();
    CopyMembers(src, true);
    return *this;
}

CKivDSCompoundCollection::~CKivDSCompoundCollection()
{
    CKivDSCompoundCollection::Clear();
}

void CKivDSCompoundCollection::CopyMembers(const CKivDSCompoundCollection& src, bool deep)
{
    for (Facade* const member : src.m_Collections)
        CKivDSCompoundCollection::AddCollection(member, deep);
    CKivDSCompoundCollection::SetScope(src.m_pScope, true);
}

void CKivDSCompoundCollection::Clear()
{
    for (Facade* const member : m_Collections)
        delete member;
    m_Collections.clear();
    delete m_pScope;
    m_pScope = nullptr;
}

std::vector<CKivDSDicomAttributeCollection*>& CKivDSCompoundCollection::GetCollectionVect()
{
    return m_Collections;
}

bool CKivDSCompoundCollection::AddCollection(CKivDSDicomAttributeCollection* collection, bool deep)
{
    const Operation op(L"CKivDSCompoundCollection::AddCollection");
    if (!collection)
        return op.Fail(L"Null input pointer parameter");
    if (collection->IsCompoundCollection())
        return op.Fail(L"Using a compound collection inside a compound collection");
    return op.Guard(kivds::kUnexpectedError, [&] {
        if (PartAccess::Reaches(*collection, *this))
            return op.Fail(L"Operation not supported on compound collections ");
        std::unique_ptr<Facade> member(CreateCollection(collection, deep));
        if (!member)
            return false;
        m_Collections.push_back(member.get());
        (void)member.release(); // a member now
        return true;
    });
}

CKivDSDicomAttributeCollection* CKivDSCompoundCollection::GetCollection(int index, bool deep)
{
    const Operation op(L"CKivDSCompoundCollection::GetCollection");
    if (index < 0 || index >= GetNumberOfCollections()) {
        op.Report(L"Collection index out of range");
        return nullptr;
    }
    return CreateCollection(m_Collections[static_cast<std::size_t>(index)], deep);
}

int CKivDSCompoundCollection::GetNumberOfCollections() const
{
    return static_cast<int>(m_Collections.size());
}

bool CKivDSCompoundCollection::AppendCompoundCollection(CKivDSDicomAttributeCollection* src, bool deep)
{
    const Operation op(L"CKivDSCompoundCollection::AppendCompoundCollection");
    if (!src)
        return op.Fail(L"Bad arg");
    CKivDSCompoundCollection* const compound = PartAccess::Compound(*src);
    if (!compound)
        return op.Fail(L"Bad arg body");
    const int count = compound->GetNumberOfCollections(); // of before: `src` may be this collection's facade
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<Facade> member(compound->GetCollection(i, false));
        if (!member || !AddCollection(member.get(), deep))
            return op.Fail(L"Unable to append coll ");
    }
    return true;
}

bool CKivDSCompoundCollection::IsGood() const
{
    return !m_Collections.empty();
}

bool CKivDSCompoundCollection::IsMultiFrame() const
{
    return std::any_of(m_Collections.begin(), m_Collections.end(),
                       [](const Facade* member) { return member->IsMultiFrame(); });
}

bool CKivDSCompoundCollection::IsCompoundCollection() const
{
    return true;
}

// The first member whose operation finds an attribute gives the answer.
template <class Attribute, class Ask>
bool CKivDSCompoundCollection::FirstMemberWith(const Operation& op, Attribute** out, Ask ask) const
{
    if (!out)
        return op.Fail(kNullOutput);
    return std::any_of(m_Collections.begin(), m_Collections.end(),
                       [&](Facade* member) { return ask(*member) && *out; });
}

bool CKivDSCompoundCollection::GetAttribute(unsigned long tag, const CKivDSDicomAttribute** out,
                                            bool searchSingle, bool searchMulti) const
{
    return FirstMemberWith(
        Operation(L"CKivDSCompoundCollection::GetAttribute"), out,
        [=](const Facade& member) { return member.GetAttribute(tag, out, searchSingle, searchMulti); });
}

bool CKivDSCompoundCollection::GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out,
                                               bool searchSingle, bool searchMulti)
{
    return FirstMemberWith(Operation(L"CKivDSCompoundCollection::GetAttributePtr"), out, [=](Facade& member) {
        return member.GetAttributePtr(tag, out, searchSingle, searchMulti);
    });
}

bool CKivDSCompoundCollection::HasAttribute(unsigned long tag, bool searchSingle, bool searchMulti) const
{
    return std::any_of(m_Collections.begin(), m_Collections.end(), [=](const Facade* member) {
        return member->HasAttribute(tag, searchSingle, searchMulti);
    });
}

bool CKivDSCompoundCollection::GetNumberOfAttributes(long* count) const
{
    if (!count)
        return Operation(L"CKivDSCompoundCollection::GetNumberOfAttributes").Fail(kNullOutput);
    *count = 0;
    for (const Facade* const member : m_Collections) {
        long ofMember = 0;
        member->GetNumberOfAttributes(&ofMember);
        *count += ofMember;
    }
    return true;
}

bool CKivDSCompoundCollection::GetNumberOfFrames(int* frames) const
{
    if (!frames)
        return Operation(L"CKivDSCompoundCollection::GetNumberOfFrames").Fail(kNullOutput);
    for (Facade* const member : m_Collections) {
        if (member->GetNumberOfFrames(frames))
            return true;
    }
    *frames = 0;
    return false;
}

CKivIPPScopeC* CKivDSCompoundCollection::GetScope() const
{
    return kivds::CopyScope(m_pScope, Operation(L"CKivDSCompoundCollection::GetScope"), kNotInitialized);
}

CKivIPPScopeC* CKivDSCompoundCollection::GetScopeAsCollection() const
{
    return kivds::WrapScope(m_pScope, Operation(L"CKivDSCompoundCollection::GetScopeAsCollection"),
                            L" Unable to initialize the scope object ");
}

bool CKivDSCompoundCollection::SetScope(CKivIPPScopeC* scope, bool copy)
{
    return kivds::ReplaceScope(m_pScope, scope, copy, Operation(L"CKivDSCompoundCollection::SetScope"),
                               L"Unsupported scope type", kNotInitialized);
}

// ---- flattening

bool Facade::AddCompoundCollection(const Facade* src)
{
    const Operation op(L"CKivDSDicomAttributeCollection::AddCompoundCollection");
    if (!src)
        return op.Fail(L"Null input collection as input");
    if (!src->IsCompoundCollection())
        return op.Fail(L"Bad input parameter: the input collection is not compounded ");
    CKivDSCompoundCollection* const compound = src->m_pCompoundCollection;
    if (!compound)
        return op.Fail(L"Null compound collection inner object ");
    const int count = compound->GetNumberOfCollections();
    if (count == 0)
        return op.Fail(L"Bad input parameter: the compound collection is empty ");
    return op.Guard(L"Unexpected error while converting the compound collection", [&] {
        const auto add = [](CKivDSBaseDicomAttributeCollection*& part,
                            const CKivDSBaseDicomAttributeCollection* member) {
            if (member && part)
                *part += *member;
            else if (member)
                part = PartAccess::Share(PartAccess::Copy(member).release());
        };
        Facade& target = Regular();
        for (int i = 0; i < count; ++i) {
            const std::unique_ptr<Facade> member(compound->GetCollection(i, false));
            if (!member)
                return false;
            const Facade& parts = std::as_const(*member).Regular();
            add(target.m_pSingleFrameCollection, parts.m_pSingleFrameCollection);
            add(target.m_pMultiFrameCollection, parts.m_pMultiFrameCollection);
        }
        return true;
    });
}

CKivDSDicomAttributeCollection* Facade::ConvertCompoundToFlatCollection(const Facade& src)
{
    const Operation op(L"CKivDSDicomAttributeCollection::ConvertCompoundToFlatCollection");
    if (!src.IsCompoundCollection())
        return nullptr;
    std::unique_ptr<Facade> flat(new (std::nothrow) Facade(true));
    if (!flat || !flat->AddCompoundCollection(&src)) {
        op.Report(L"Failed to add compound collection");
        return nullptr;
    }
    std::unique_ptr<CKivIPPScopeC> scope(src.GetScope());
    if (!flat->SetScope(scope.get(), false)) {
        op.Report(L"Failed to set scope on flattened collection");
        return nullptr;
    }
    (void)scope.release(); // the collection's now
    return flat.release();
}
