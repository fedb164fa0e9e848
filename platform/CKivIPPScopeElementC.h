// A scope element: one path through the levels, for instance one study, one series of it, and images of that
// series. It owns the items that it holds; see AddItem and GetItem for what its callers own.
#pragma once

#include "platform/CKivIPPScopeC.h"

#include <memory>
#include <vector>

/// Covers every combination of one item a level. It must be initialised before items are added.
class KIV_BASESCOPE_API CKivIPPScopeElementC : public CKivIPPScopeC
{
public:
    CKivIPPScopeElementC();
    ~CKivIPPScopeElementC() override;

    bool Serialize(char* buffer, int* size) const override;
    bool Deserialize(const char* buffer, int* size) override;
    bool Dump() const override;
    bool Initialize(int levels) override;
    int GetLevels() const override;
    bool SetScopeItemType(int level, const _GUID& type) override;
    const _GUID& GetScopeItemType(int level) const override;
    bool InitializeFromScope(const CKivIPPScopeC* scope) override;
    bool AddScope(const CKivIPPScopeC* scope) override;

    /// Adds an item to a level. With `copy` true the element keeps a copy and `item` stays the caller's; with
    /// false it takes `item` over. False, with `item` left to the caller, when `item` is null, the level does
    /// not exist or the item is of another type than the level's.
    virtual bool AddItem(int level, CKivIPPScopeItemC* item, bool copy);
    /// The first item of a level: with `copy` true a new copy that the caller owns, with false the element's
    /// own. False (and a null `item`) when there is none.
    virtual bool GetItem(int level, CKivIPPScopeItemC*& item, bool copy) const;
    /// The same as a result; null when there is none.
    virtual CKivIPPScopeItemC* GetScopeItem(int level, bool copy) const;
    /// Adds `count` items to a level, all or none; otherwise as AddItem.
    virtual bool AddItems(int level, int count, CKivIPPScopeItemC** items, bool copy);

    /// As the two-argument Deserialize, but reads no byte at or past `buffer + length` and allocates no more
    /// than a small multiple of `length`.
    bool Deserialize(const char* buffer, int length, int* size);

    /// The number of items of a level; 0 for a level that does not exist.
    int GetNumberOfItems(int level) const;
    /// The item at `index` of a level, lent until the level changes; null out of range.
    const CKivIPPScopeItemC* GetItemPtr(int level, int index) const;

private:
    struct SLevel
    {
        _GUID m_ItemType = {};
        std::vector<std::unique_ptr<CKivIPPScopeItemC>> m_Items;
    };

    static std::vector<SLevel> CopyLevels(const std::vector<SLevel>& levels);
    bool HasLevel(int level) const;

    std::vector<SLevel> m_Levels;
};
