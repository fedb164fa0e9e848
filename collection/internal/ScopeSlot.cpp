#include "collection/internal/ScopeSlot.h"

#include "platform/CKivIPPScopeItemFactory.h"

#include <new>

namespace kivds {

std::unique_ptr<CKivIPPScopeCollectionC> CreateDicomScopeCollection() noexcept
{
    std::unique_ptr<CKivIPPScopeCollectionC> scope(new (std::nothrow) CKivIPPScopeCollectionC);
    if (!scope)
        return nullptr;
    scope->Initialize(3);
    scope->SetType(g_ScopeCollectionType);
    scope->SetScopeItemType(0, g_StudyUID);
    scope->SetScopeItemType(1, g_SeriesUID);
    scope->SetScopeItemType(2, g_ImageUID);
    return scope;
}

CKivIPPScopeC* CopyScope(const CKivIPPScopeC* stored, const Operation& op,
                         const wchar_t* notInitialized) noexcept
{
    if (!stored)
        return nullptr;
    std::unique_ptr<CKivIPPScopeElementC> copy(new (std::nothrow) CKivIPPScopeElementC);
    if (copy) {
        copy->SetType(g_ScopeElementType);
        if (copy->InitializeFromScope(stored))
            return copy.release();
    }
    op.Report(notInitialized);
    return nullptr;
}

CKivIPPScopeC* WrapScope(const CKivIPPScopeC* stored, const Operation& op,
                         const wchar_t* notInitialized) noexcept
{
    if (!stored)
        return nullptr;
    std::unique_ptr<CKivIPPScopeCollectionC> scope = CreateDicomScopeCollection();
    if (scope && scope->AddScopeElement(dynamic_cast<const CKivIPPScopeElementC*>(stored)))
        return scope.release();
    op.Report(notInitialized);
    return nullptr;
}

bool ReplaceScope(CKivIPPScopeC*& stored, CKivIPPScopeC* scope, bool copy, const Operation& op,
                  const wchar_t* unsupported, const wchar_t* notInitialized) noexcept
{
    if (scope && scope == stored)
        return true; // its own scope, handed back: nothing changes, and nothing is deleted
    delete stored;
    stored = nullptr;
    if (!scope)
        return true;
    if (!SameGuid(scope->GetType(), g_ScopeElementType))
        return op.Fail(unsupported);
    stored = copy ? CopyScope(scope, op, notInitialized) : scope;
    return stored != nullptr;
}

} // namespace kivds
