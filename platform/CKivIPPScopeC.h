// A scope states which part of the DICOM information model (PS3.3 A.1.2) something covers, level by level:
// with three levels, studies, series and images. This is the interface that scope elements and collections
// share. Scopes are not synchronised; every scope that an operation returns new belongs to the caller.
#pragma once

#include "platform/CKivIPPScopeItemC.h"
#include "platform/CKivIPPSerialFormC.h"
#include "platform/Export.h"

/// A scope element covers every combination of one item a level, and nothing while a level has none; a scope
/// collection covers what its elements cover. An item covers the frames of its UID that it names. Comparisons
/// are exact and take items as what they name: 1..2 and 3..4 of an image are 1..4 of it. A scope whose levels
/// are others in number or type has nothing in common with this one.
class KIV_BASESCOPE_API CKivIPPScopeC : public CKivIPPSerialFormC
{
public:
    CKivIPPScopeC();
    CKivIPPScopeC(const CKivIPPScopeC&) = delete;
    CKivIPPScopeC& operator=(const CKivIPPScopeC&) = delete;
    ~CKivIPPScopeC() override;

    /// Gives the scope `levels` (1 to 16) empty levels; what it held before goes. False when out of range.
    virtual bool Initialize(int levels) = 0;
    /// The number of levels; 0 before Initialize.
    virtual int GetLevels() const = 0;
    /// Sets the item type of a level, counted from 0. False for a level that does not exist or that holds
    /// items of another type.
    virtual bool SetScopeItemType(int level, const _GUID& type) = 0;
    /// The item type of a level; all zero bytes for a level that does not exist.
    virtual const _GUID& GetScopeItemType(int level) const = 0;
    /// Becomes an independent copy of `scope`: levels, item types, items, and its type if this one has none
    /// yet. False (and no levels) when `scope` is null, of a kind that cannot be held (for an element: a
    /// collection that does not hold exactly one), or memory runs out.
    virtual bool InitializeFromScope(const CKivIPPScopeC* scope) = 0;
    /// Adds what `scope` covers. False, with nothing added, when `scope` is null, its levels are of other
    /// types, memory runs out, or, for an element, no single element covers exactly what both do.
    virtual bool AddScope(const CKivIPPScopeC* scope) = 0;

    // These give false or null also when `scope` is null and when memory, or the limit of 65536 pieces that a
    // difference may fall into, runs out.

    /// Whether both have the same types of levels and cover the same, down to `level` as if there were none
    /// below (negative: all levels).
    virtual bool IsEqual(const CKivIPPScopeC* scope, int level) const;
    /// Whether all that this scope covers is covered by `scope` too.
    virtual bool IsIncluded(const CKivIPPScopeC* scope) const;
    /// Whether something is covered by both.
    virtual bool HasCommonPart(const CKivIPPScopeC* scope) const;
    /// Whether nothing is covered.
    virtual bool IsEmpty() const;
    /// A new scope collection of exactly what both cover, typed g_ScopeCollectionType and owned by the
    /// caller; null when there is nothing.
    virtual CKivIPPScopeC* GetCommonPart(const CKivIPPScopeC* scope) const;
    /// The same of what this scope covers and `scope` does not.
    virtual CKivIPPScopeC* GetDistinctPart(const CKivIPPScopeC* scope) const;
};

/// The type of scope elements, as their creators set it with SetType.
extern KIV_BASESCOPE_API const _GUID g_ScopeElementType;
/// The type of scope collections, as their creators set it with SetType.
extern KIV_BASESCOPE_API const _GUID g_ScopeCollectionType;
