// The factory of scope items and frame-range collections. The library asks whatever factory g_pItemFactory
// points at when it needs one; what a factory returns belongs to the caller.
// The stand-in's factory has no state: any thread may use it.
#pragma once

#include "platform/CKivIPPRangeIDC.h"
#include "platform/CKivIPPScopeItemC.h"

/// Makes items by type; may be derived from.
class KIV_SCOPEITEM_API CKivIPPScopeItemFactory
{
public:
    constexpr CKivIPPScopeItemFactory() noexcept = default; // so that one stands before any code runs
    /// Copies nothing.
    CKivIPPScopeItemFactory(const CKivIPPScopeItemFactory&) = default;
    /// Copies nothing.
    CKivIPPScopeItemFactory& operator=(const CKivIPPScopeItemFactory&) = default;
    virtual ~CKivIPPScopeItemFactory();

    /// A new, empty item: a CKivIPPScopeItemC for g_StudyUID, g_SeriesUID and g_ImageUID, a CKivIPPRangeIDC
    /// for g_RangeUID. Null for any other type and when no memory can be had.
    virtual CKivIPPScopeItemC* Create(const _GUID& type);
    /// A new copy of `item`; null when `item` is null or no memory can be had.
    virtual CKivIPPScopeItemC* Clone(const CKivIPPScopeItemC* item);
};

/// The factory in use, from load to unload. It may be pointed at another one, which must outlive its use.
extern KIV_SCOPEITEM_API CKivIPPScopeItemFactory* g_pItemFactory;

/// The type of items that name a study by its Study Instance UID (0020,000D).
extern KIV_SCOPEITEM_API const _GUID g_StudyUID;
/// The type of items that name a series by its Series Instance UID (0020,000E).
extern KIV_SCOPEITEM_API const _GUID g_SeriesUID;
/// The type of items that name an image by its SOP Instance UID (0008,0018).
extern KIV_SCOPEITEM_API const _GUID g_ImageUID;
/// The type of frame ranges.
extern KIV_SCOPEITEM_API const _GUID g_RangeUID;
