// Several collections side by side, one an image, that answer queries as one: an attribute is looked up in
// each member in turn, counts are summed. Callers hold it inside a facade
// (CKivDSDicomAttributeCollection(CKivDSCompoundCollection*)). It owns its members, which are facades of
// their own that share or copy the parts of what was added, and its scope. It has no byte stream. Threads as
// for the facade.
#pragma once

#include "collection/CKivDSDicomAttributeCollection.h"

#include <vector>

/// Failures are reported under "CKivDSCompoundCollection::" and the operation's name.
class KIVDS_API CKivDSCompoundCollection : public CKivDSDicomAttributeCollection
{
public:
    /// No members, no scope.
    CKivDSCompoundCollection();
    /// Members made from those of `src`, sharing or copying their parts, and a copy of the scope.
    CKivDSCompoundCollection(const CKivDSCompoundCollection& src, bool deep = false);
    ~CKivDSCompoundCollection() override;
    /// Lets the members go and takes deep copies of those of `src`, and of its scope.
    CKivDSCompoundCollection& operator=(const CKivDSCompoundCollection& src);

    // Replaced operations of the facade; members are visited in the order in which they were added.

    /// Whether there is a member.
    bool IsGood() const override;
    /// Whether any member is multi-frame.
    bool IsMultiFrame() const override;
    /// True.
    bool IsCompoundCollection() const override;
    /// As the facade's; the members' scopes take no part. "Unable to initialize the scope object".
    CKivIPPScopeC* GetScope() const override;
    /// As the facade's. " Unable to initialize the scope object ".
    CKivIPPScopeC* GetScopeAsCollection() const override;
    /// As the facade's; the members' scopes stay. "Unsupported scope type", "Unable to initialize the scope
    /// object"; no scope is left.
    bool SetScope(CKivIPPScopeC* scope, bool copy) override;
    /// The first member's that has one. "Null output pointer parameter".
    bool GetAttribute(unsigned long tag, const CKivDSDicomAttribute** out, bool searchSingle,
                      bool searchMulti) const override;
    /// The same, to be changed.
    bool GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out, bool searchSingle,
                         bool searchMulti) override;
    /// The sum of the members' counts. "Null output pointer parameter".
    bool GetNumberOfAttributes(long* count) const override;

    // Added operations, in the order of the virtual table.

    /// Appends a member that shares or copies the parts of `collection`, which stays the caller's. "Null
    /// input pointer parameter", "Using a compound collection inside a compound collection".
    virtual bool AddCollection(CKivDSDicomAttributeCollection* collection, bool deep);
    /// A new facade, owned by the caller, that shares or copies the parts of member `index`. "Collection
    /// index out of range".
    virtual CKivDSDicomAttributeCollection* GetCollection(int index, bool deep);
    /// The number of members.
    virtual int GetNumberOfCollections() const;
    /// The first member's count that can be had; 0 and false, without a report, when none can. "Null output
    /// pointer parameter".
    virtual bool GetNumberOfFrames(int* frames) const;
    /// Whether any member holds the tag.
    virtual bool HasAttribute(unsigned long tag, bool searchSingle, bool searchMulti) const;

    // What follows is not virtual.

    /// Appends every member of the compound facade `src`. "Bad arg" (null), "Bad arg body" (not compound),
    /// "Unable to append coll " (the members appended before stay).
    bool AppendCompoundCollection(CKivDSDicomAttributeCollection* src, bool deep);

protected:
    /// Deletes the members and the scope.
    void Clear();
    /// The members, lent: facades in the order in which they were added.
    std::vector<CKivDSDicomAttributeCollection*>& GetCollectionVect();

private:
    friend class CKivDSCompoundCollectionIterator;
    friend struct kivds::PartAccess;

    void CopyMembers(const CKivDSCompoundCollection& src, bool deep);
    template <class Attribute, class Ask>
    bool FirstMemberWith(const kivds::Operation& op, Attribute** out, Ask ask) const;

    std::vector<CKivDSDicomAttributeCollection*> m_Collections; // owned, none null, none compound
    CKivIPPScopeC* m_pScope = nullptr;                          // owned
};
