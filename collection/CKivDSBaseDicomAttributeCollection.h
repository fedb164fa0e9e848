// A part of a collection: the tag-ordered map of attributes that facades share. Callers hold facades
// (CKivDSDicomAttributeCollection.h); this class is public because facades are made of it. It owns its
// attributes and its scope, and is deleted by the last facade that holds it. It inherits the facade's
// interface with empty parts: the operations that it neither replaces nor adds see an empty facade. Threads
// as for the facade.
#pragma once

#include "collection/AttributeMap.h"
#include "collection/CKivDSDicomAttributeCollection.h"

/// Failures are reported under "CKivDSBaseDicomAttributeCollection::" and the operation's name.
class KIVDS_API CKivDSBaseDicomAttributeCollection : public CKivDSDicomAttributeCollection
{
public:
    /// No attributes, no scope.
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
    /// False.
    bool IsCompoundCollection() const override;
    using CKivDSDicomAttributeCollection::Deserialize;
    /// Reads a part's stream; the former attributes and the scope go. " Invalid input parameters ", "Failed
    /// to deserialize attribute", "Failed to add attribute to collection"; the attributes read before a
    /// failure stay.
    bool Deserialize(const char* buffer, int& size, bool versioned) override;
    /// As the facade's. " Unable to initialize the scope object ".
    CKivIPPScopeC* GetScope() const override;
    /// As the facade's. " Unable to initialize the scope object ".
    CKivIPPScopeC* GetScopeAsCollection() const override;
    /// As the facade's. " Unsupported scope type", " Unable to initialize the scope object "; no scope is
    /// left.
    bool SetScope(CKivIPPScopeC* scope, bool copy) override;
    /// As the facade's, multi-frame attributes included.
    bool AddAttribute(CKivDSDicomAttribute* attr, bool merge) override;
    /// Removes and deletes the attribute of a tag; false, without a report, when there is none.
    bool RemoveAttribute(unsigned long tag) override;
    /// Removes what is not private. Always true.
    bool RemoveAllAttributes() override;
    /// Removes what is neither private nor multi-frame.
    bool RemoveAllSingleFrameAttributes() override;
    /// Removes what is multi-frame, private or not.
    bool RemoveAllMultiFrameAttributes() override;
    /// The number of attributes, null entries included. " Null output pointer parameter ".
    bool GetNumberOfAttributes(long* count) const override;
    /// The number of multi-frame attributes; a null `count` is passed over. Always true.
    bool GetNumberOfMultiFrameAttributes(long* count) const override;
    /// The number of single-frame attributes; a null `count` is passed over. Always true.
    bool GetNumberOfSingleFrameAttributes(long* count) const override;
    /// Sends every attribute's lines to the dump listener, in tag order.
    void Dump() const override;

private:
    /// "Unexpected error" when there is no memory for the map.
    std::map<unsigned long, CKivDSDicomAttribute*>* GetMapPtr() override;

public:
    // Added operations, in the order of the virtual table. They hide the facade's of the same name on
    // purpose.

    /// Writes the part's stream (docs/streams.md), with a null `buffer` only its length. "Inconsistent
    /// serialization format: serialization aborted" (`size` becomes 0).
    virtual bool Serialize(char* buffer, int& size) const;
    /// Union: at a tag in both, this attribute accumulates b's when b's must be replicated or the two differ.
    /// The set operators copy b's attributes, pass over null entries, and with the object itself change
    /// nothing, but for -= and /=, which then empty it, scope included.
    virtual CKivDSBaseDicomAttributeCollection& operator+=(const CKivDSBaseDicomAttributeCollection& b);
    /// Every attribute of b, replacing this one's.
    virtual CKivDSBaseDicomAttributeCollection& operator*=(const CKivDSBaseDicomAttributeCollection& b);
    /// Keeps the attributes that equal b's at the same tag.
    virtual CKivDSBaseDicomAttributeCollection& operator^=(const CKivDSBaseDicomAttributeCollection& b);
    /// As *=, but b's private attributes are passed over.
    virtual CKivDSBaseDicomAttributeCollection& operator|=(const CKivDSBaseDicomAttributeCollection& b);
    /// Removes the attributes that equal b's at the same tag.
    virtual CKivDSBaseDicomAttributeCollection& operator-=(const CKivDSBaseDicomAttributeCollection& b);
    /// Removes the tags at which b holds an attribute that is not private, equal or not.
    virtual CKivDSBaseDicomAttributeCollection& operator/=(const CKivDSBaseDicomAttributeCollection& b);
    /// The same tags with equal attributes, and the same multi-frame flag. The scopes take no part.
    virtual bool operator==(const CKivDSBaseDicomAttributeCollection& b);
    /// The negation of ==.
    virtual bool operator!=(const CKivDSBaseDicomAttributeCollection& b);
    /// The attribute of a tag, lent; null in `*out` and false, without a report, when there is none. " Null
    /// output pointer parameter ".
    virtual bool GetAttribute(unsigned long tag, const CKivDSDicomAttribute** out) const;
    /// The same, to be changed.
    virtual bool GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out);
    /// The first value of Number of Frames (0028,0008). False without a report when it is absent; "Failed to
    /// retrieve the number of image frames".
    virtual bool GetNumberOfFrames(int* frames) const;
    /// Whether the tag is held, be it by a null entry.
    virtual bool HasAttribute(unsigned long tag) const;

    // What follows is not virtual.

    /// Replaces attributes and scope by copies of those of `b`.
    CKivDSBaseDicomAttributeCollection& operator=(const CKivDSBaseDicomAttributeCollection& b);

    /// The version that the part's stream begins with, negated.
    static const int ms_nAttrVersion;

private:
    friend class CKivDSDicomAttributeCollection;
    friend struct kivds::PartAccess;
    friend KIVDS_API CKivDSBaseDicomAttributeCollection*
    operator/(const CKivDSBaseDicomAttributeCollection& a, const CKivDSBaseDicomAttributeCollection& b);
    friend KIVDS_API CKivDSBaseDicomAttributeCollection*
    operator^(const CKivDSBaseDicomAttributeCollection& a, const CKivDSBaseDicomAttributeCollection& b);
    friend KIVDS_API CKivDSBaseDicomAttributeCollection*
    operator|(const CKivDSBaseDicomAttributeCollection& a, const CKivDSBaseDicomAttributeCollection& b);

    bool Clean();
    bool Store(unsigned long tag, CKivDSDicomAttribute* attr, bool merge);
    void CopyFrom(const CKivDSBaseDicomAttributeCollection& src, const kivds::Operation& op);
    template <class Condition>
    CKivDSBaseDicomAttributeCollection& Overwrite(const CKivDSBaseDicomAttributeCollection& b,
                                                  const kivds::Operation& op, Condition condition);
    template <class Condition>
    CKivDSBaseDicomAttributeCollection& Remove(const CKivDSBaseDicomAttributeCollection& b,
                                               Condition condition);
    template <class Condition>
    void EraseIf(Condition condition);
    template <class Condition>
    long CountIf(Condition condition) const;
    struct SMeasure
    {
        int length = 0;
        int records = 0;
    };
    SMeasure Measure() const;
    bool WriteMeasured(char* buffer, int& size, const SMeasure& measure) const;
    bool MeasureAsPart(SMeasure& measure) const;
    bool WriteAsPart(kivds::ByteWriter& writer, const SMeasure& measure) const;
    bool WriteRecords(kivds::ByteWriter& writer) const;
    bool ReadPart(kivds::ByteReader& reader, int& size, bool versioned);

    kivds::AttributeMap m_Attributes;
    bool m_bMultiFrame = false;
    CKivIPPScopeC* m_pScope = nullptr; // owned
};

/// b's attributes that differ from a's at the tags where a holds one that is not private. This and the other
/// free operators on parts give a new part without a scope, which the caller owns.
KIVDS_API CKivDSBaseDicomAttributeCollection* operator/(const CKivDSBaseDicomAttributeCollection& a,
                                                        const CKivDSBaseDicomAttributeCollection& b);
/// a's attributes at the tags where both are equal.
KIVDS_API CKivDSBaseDicomAttributeCollection* operator^(const CKivDSBaseDicomAttributeCollection& a,
                                                        const CKivDSBaseDicomAttributeCollection& b);
/// b's attributes at the tags where both are equal.
KIVDS_API CKivDSBaseDicomAttributeCollection* operator|(const CKivDSBaseDicomAttributeCollection& a,
                                                        const CKivDSBaseDicomAttributeCollection& b);
