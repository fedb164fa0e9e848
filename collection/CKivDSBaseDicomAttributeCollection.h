// A part of a collection: the tag-ordered map of attributes that facades share. Callers hold facades
// (CKivDSDicomAttributeCollection.h); this class is public because facades are made of it. It owns its
// attributes and its scope, and is deleted by the last facade that holds it. It inherits the facade's
// interface with empty parts: the operations that it neither replaces nor adds see an empty facade. Threads
// as for the facade.
#pragma once

#include "collection/CKivDSDicomAttributeCollection.h"

/// Failures are reported under "CKivDSBaseDicomAttributeCollection::" and the operation's name.
class KIVDS_API CKivDSBaseDicomAttributeCollection : public CKivDSDicomAttributeCollection
{
public:
    CKivDSBaseDicomAttributeCollection();
    /// Copies every attribute and the scope. An attribute that the factory cannot copy becomes a null entry.
    CKivDSBaseDicomAttributeCollection(const CKivDSBaseDicomAttributeCollection& src);
    /// The attributes of the multi-frame part `src` as they stand for `frame`, and the frame index attribute
    /// (3711,0090). Reports and stops: "Failed to create single frame copy of attribute", "Failed to
    /// intialize frame index attribute", "Failed to add frame index attribute to collection".
    CKivDSBaseDicomAttributeCollection(const CKivDSBaseDicomAttributeCollection& src, int frame);
    ~CKivDSBaseDicomAttributeCollection() override;

    // Replaced operations of the facade.

    /// Whether a multi-frame attribute was added, here or where the content was copied from; removals do not
    /// change it.
    bool IsMultiFrame() const override;
    bool IsCompoundCollection() const override;
    using CKivDSDicomAttributeCollection::Deserialize;
    /// Reads a part's stream; the former attributes and the scope go. " Invalid input parameters ", "Failed
    /// to deserialize attribute", "Failed to add attribute to collection"; the attributes read before a
    /// failure stay.
    bool Deserialize(const char* buffer, int& size, bool versioned) override;
    /// " Unable to initialize the scope object ".
    CKivIPPScopeC* GetScope() const override;
    CKivIPPScopeC* GetScopeAsCollection() const override;
    /// " Unsupported scope type", " Unable to initialize the scope object "; no scope is left.
    bool SetScope(CKivIPPScopeC* scope, bool copy) override;
    bool AddAttribute(CKivDSDicomAttribute* attr, bool merge) override;
    bool RemoveAttribute(unsigned long tag) override;
    bool RemoveAllAttributes() override;
    /// Removes what is neither private nor multi-frame.
    bool RemoveAllSingleFrameAttributes() override;
    /// Removes what is multi-frame, private or not.
    bool RemoveAllMultiFrameAttributes() override;
    /// " Null output pointer parameter ".
    bool GetNumberOfAttributes(long* count) const override;
    bool GetNumberOfMultiFrameAttributes(long* count) const override;
    bool GetNumberOfSingleFrameAttributes(long* count) const override;
    void Dump() const override;

private:
    std::map<unsigned long, CKivDSDicomAttribute*>* GetMapPtr() override;

public:
    // Added operations, in the order of the virtual table. They hide the facade's of the same name on
    // purpose.

    /// Writes the part's stream (docs/streams.md), with a null `buffer` only its length. "Inconsistent
    /// serialization format: serialization aborted" (`size` becomes 0).
    virtual bool Serialize(char* buffer, int& size) const;
    virtual CKivDSBaseDicomAttributeCollection& operator+=(const CKivDSBaseDicomAttributeCollection& b);
    virtual CKivDSBaseDicomAttributeCollection& operator*=(const CKivDSBaseDicomAttributeCollection& b);
    virtual CKivDSBaseDicomAttributeCollection& operator^=(const CKivDSBaseDicomAttributeCollection& b);
    virtual CKivDSBaseDicomAttributeCollection& operator|=(const CKivDSBaseDicomAttributeCollection& b);
    virtual CKivDSBaseDicomAttributeCollection& operator-=(const CKivDSBaseDicomAttributeCollection& b);
    virtual CKivDSBaseDicomAttributeCollection& operator/=(const CKivDSBaseDicomAttributeCollection& b);
    virtual bool operator==(const CKivDSBaseDicomAttributeCollection& b);
    virtual bool operator!=(const CKivDSBaseDicomAttributeCollection& b);
    /// The attribute of a tag, lent; null in `*out` and false, without a report, when there is none. " Null
    /// output pointer parameter ".
    virtual bool GetAttribute(unsigned long tag, const CKivDSDicomAttribute** out) const;
    virtual bool GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out);
    /// The first value of Number of Frames (0028,0008). False without a report when it is absent; "Failed to
    /// retrieve the number of image frames".
    virtual bool GetNumberOfFrames(int* frames) const;
    virtual bool HasAttribute(unsigned long tag) const;

    // What follows is not virtual.

    /// Replaces attributes and scope by copies of those of `b`.
    CKivDSBaseDicomAttributeCollection& operator=(const CKivDSBaseDicomAttributeCollection& b);

    /// The version that the part's stream begins with, negated.
    static const int ms_nAttrVersion;

private:
    friend struct kivds::PartAccess;
    friend KIVDS_API CKivDSBaseDicomAttributeCollection*
    operator/(const CKivDSBaseDicomAttributeCollection& a, const CKivDSBaseDicomAttributeCollection& b);
    friend KIVDS_API CKivDSBaseDicomAttributeCollection*
    operator^(const CKivDSBaseDicomAttributeCollection& a, const CKivDSBaseDicomAttributeCollection& b);
    friend KIVDS_API CKivDSBaseDicomAttributeCollection*
    operator|(const CKivDSBaseDicomAttributeCollection& a, const CKivDSBaseDicomAttributeCollection& b);

    using Map = std::map<unsigned long, CKivDSDicomAttribute*>;

    bool Clean();
    void CopyFrom(const CKivDSBaseDicomAttributeCollection& src, const kivds::Operation& op);
    void StoreCopy(Map::iterator hint, unsigned long tag, const CKivDSDicomAttribute& attribute,
                   const kivds::Operation& op);
    Map::iterator PlaceFor(unsigned long tag);
    void Erase(Map::iterator entry);
    template <class Condition>
    CKivDSBaseDicomAttributeCollection& Overwrite(const CKivDSBaseDicomAttributeCollection& b,
                                                  const kivds::Operation& op, Condition condition);
    template <class Condition>
    void EraseIf(Condition condition);
    int GetSize() const;
    bool WriteFields(kivds::ByteWriter& writer, int total) const;
    bool ReadPart(kivds::ByteReader& reader, int& size, bool versioned);

    Map m_Attributes; // owns the attributes; an entry is null when the factory could not copy its attribute
    bool m_bMultiFrame = false;
    CKivIPPScopeC* m_pScope = nullptr; // owned
};

/// The free operators on parts: new parts, owned by the caller, without a scope.
KIVDS_API CKivDSBaseDicomAttributeCollection* operator/(const CKivDSBaseDicomAttributeCollection& a,
                                                        const CKivDSBaseDicomAttributeCollection& b);
KIVDS_API CKivDSBaseDicomAttributeCollection* operator^(const CKivDSBaseDicomAttributeCollection& a,
                                                        const CKivDSBaseDicomAttributeCollection& b);
KIVDS_API CKivDSBaseDicomAttributeCollection* operator|(const CKivDSBaseDicomAttributeCollection& a,
                                                        const CKivDSBaseDicomAttributeCollection& b);
