// The scope of collections: parts own one, facades route to the part or collection that does.
#include "collection/internal/PartSharing.h"
#include "collection/internal/ScopeSlot.h"

using kivds::Operation;

namespace {

constexpr const wchar_t* kNotInitialized = L" Unable to initialize the scope object ";

} // namespace

CKivIPPScopeC* CKivDSBaseDicomAttributeCollection::GetScope() const
{
    return kivds::CopyScope(m_pScope, Operation(L"CKivDSBaseDicomAttributeCollection::GetScope"),
                            kNotInitialized);
}

CKivIPPScopeC* CKivDSBaseDicomAttributeCollection::GetScopeAsCollection() const
{
    return kivds::WrapScope(m_pScope, Operation(L"CKivDSBaseDicomAttributeCollection::GetScopeAsCollection"),
                            kNotInitialized);
}

bool CKivDSBaseDicomAttributeCollection::SetScope(CKivIPPScopeC* scope, bool copy)
{
    return kivds::ReplaceScope(m_pScope, scope, copy,
                               Operation(L"CKivDSBaseDicomAttributeCollection::SetScope"),
                               L" Unsupported scope type", kNotInitialized);
}

// The collection whose scope is the facade's; null for an empty facade.
CKivDSDicomAttributeCollection* CKivDSDicomAttributeCollection::ScopeHolder() const
{
    if (m_pEnhancedMFCollection)
        return m_pEnhancedMFCollection;
    if (m_pCompoundCollection)
        return m_pCompoundCollection;
    return m_pSingleFrameCollection;
}

CKivIPPScopeC* CKivDSDicomAttributeCollection::GetScope() const
{
    const CKivDSDicomAttributeCollection* const holder = ScopeHolder();
    return holder ? holder->GetScope() : nullptr;
}

CKivIPPScopeC* CKivDSDicomAttributeCollection::GetScopeAsCollection() const
{
    const CKivDSDicomAttributeCollection* const holder = ScopeHolder();
    return holder ? holder->GetScopeAsCollection() : nullptr;
}

bool CKivDSDicomAttributeCollection::SetScope(CKivIPPScopeC* scope, bool copy)
{
    CKivDSDicomAttributeCollection* const holder = ScopeHolder();
    if (!holder)
        return false;
    const bool set = holder->SetScope(scope, copy);
    if (!set && holder != m_pSingleFrameCollection)
        Operation(L"CKivDSDicomAttributeCollection::SetScope")
            .Report(L"Failed to set scope of compound collection");
    return set;
}
