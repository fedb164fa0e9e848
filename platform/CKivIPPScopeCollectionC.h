// A scope collection: any number of scope elements with the same levels. It owns copies of the elements added
// to it.
#pragma once

#include "platform/CKivIPPScopeElementC.h"

#include <memory>
#include <vector>

/// Covers what its elements cover, together.
class KIV_BASESCOPE_API CKivIPPScopeCollectionC : public CKivIPPScopeC
{
public:
    CKivIPPScopeCollectionC();
    ~CKivIPPScopeCollectionC() override;

    bool Serialize(char* buffer, int* size) const override;
    bool Deserialize(const char* buffer, int* size) override;
    bool Dump() const override;
    bool Initialize(int levels) override;
    int GetLevels() const override;
    bool SetScopeItemType(int level, const _GUID& type) override;
    const _GUID& GetScopeItemType(int level) const override;
    bool InitializeFromScope(const CKivIPPScopeC* scope) override;
    bool AddScope(const CKivIPPScopeC* scope) override;

    /// Adds a copy of `element`, which stays the caller's. False when it is null, has no levels, or its
    /// levels are of other types than the collection's.
    bool AddScopeElement(const CKivIPPScopeElementC* element);
    /// The number of elements.
    int GetNumberOfScopeElements() const;
    /// The element at `index`, lent until the collection changes; null out of range.
    const CKivIPPScopeElementC* GetScopeElement(int index) const;

    /// As the two-argument Deserialize, but reads no byte at or past `buffer + length` and allocates no more
    /// than a small multiple of `length`.
    bool Deserialize(const char* buffer, int length, int* size);

private:
    using ElementPtr = std::unique_ptr<CKivIPPScopeElementC>;

    static ElementPtr CopyElement(const CKivIPPScopeElementC& element);
    void Clear();

    std::vector<_GUID> m_ItemTypes; // one a level
    std::vector<ElementPtr> m_Elements;
};
