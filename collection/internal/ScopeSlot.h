// The scope that a part or a compound collection owns: copying it out, wrapping it, replacing it. The callers
// differ only in the words of their reports.
#pragma once

#include "foundation/internal/Operation.h"
#include "platform/CKivIPPScopeCollectionC.h"
#include "platform/CKivIPPScopeElementC.h"

#include <memory>

namespace kivds {

/// A new scope collection with the levels study, series and image (PS3.3 A.1.2); null when no memory can be
/// had.
std::unique_ptr<CKivIPPScopeCollectionC> CreateDicomScopeCollection() noexcept;

/// A new scope element copied from `stored`; null without a report when `stored` is null, with one when it
/// fails.
CKivIPPScopeC* CopyScope(const CKivIPPScopeC* stored, const Operation& op,
                         const wchar_t* notInitialized) noexcept;

/// A new scope collection that holds `stored`, likewise.
CKivIPPScopeC* WrapScope(const CKivIPPScopeC* stored, const Operation& op,
                         const wchar_t* notInitialized) noexcept;

/// Replaces `stored` by a copy of `scope`, or by `scope` itself, which must then be a scope element; null
/// removes it. The former scope goes first, so that every failure leaves none.
bool ReplaceScope(CKivIPPScopeC*& stored, CKivIPPScopeC* scope, bool copy, const Operation& op,
                  const wchar_t* unsupported, const wchar_t* notInitialized) noexcept;

} // namespace kivds
