// A collection of DICOM attributes, keyed by tag: one image, one multi-frame image, several images side by
// side (a compound collection) or an enhanced multi-frame object. This class is a facade: it holds its parts
// by reference count, shares them with its shallow copies, and routes every operation to them. A collection
// owns its attributes. Collections take no lock; only the reference counts are atomic, so that facades on
// different threads may share parts.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "foundation/CKivDSBase.h"
#include "platform/CKivIPPScopeC.h"
#include "platform/Export.h"
#include "platform/Synchronization.h"

#include <cstdint>
#include <map>

class CKivDSBaseDicomAttributeCollection;
class CKivDSCompoundCollection;
class CKivDSEnhancedMFCollection;

namespace kivds {
class ByteReader;
class Operation;
struct PartAccess;
} // namespace kivds

/// Notification codes that the iterators act on; see CKivDSDicomAttributeCollectionIterator.
enum tagEKivDSNotification : int
{
    eNotifyInvalidateIterator = 16, ///< ends an iterator's walk
    eNotifyInvalidateIterator2 = 17 ///< the same
};

/// Failures are reported to the error sink under "CKivDSDicomAttributeCollection::" and the operation's name,
/// with code 0 where nothing else is said; the operation then gives false or null. An operation on a facade
/// without parts (one that is not good) gives false without a report where nothing else is said. Operations
/// that make no sense on a compound collection report "Operation not supported on compound collections ". No
/// exception leaves an operation.
///
/// `deep`: true copies parts, false shares them. Even a deep copy of an enhanced multi-frame facade shares
/// the parts of its regular collection and of its frames.
class KIVDS_API CKivDSDicomAttributeCollection : public CKivDSBase
{
public:
    /// With true, an empty collection; with false, a facade without any part, which is not good.
    explicit CKivDSDicomAttributeCollection(bool withSingleFramePart = true);
    /// Shares or copies the parts of `src`; without any part when `src` is not good. "Failed to initialize
    /// from object".
    CKivDSDicomAttributeCollection(const CKivDSDicomAttributeCollection& src, bool deep = false);
    /// Shares the given parts; a null `single` is replaced by a new empty part, a null `multi` stays null.
    CKivDSDicomAttributeCollection(CKivDSBaseDicomAttributeCollection* single,
                                   CKivDSBaseDicomAttributeCollection* multi);
    /// Holds a compound collection, made with new; the last facade that holds it deletes it.
    explicit CKivDSDicomAttributeCollection(CKivDSCompoundCollection* compound);
    /// Holds an enhanced multi-frame collection, made with new; the last facade that holds it deletes it.
    explicit CKivDSDicomAttributeCollection(CKivDSEnhancedMFCollection* enhanced);
    /// The collection of one frame of `src`: the single-frame part of `src` (shared or copied), and in place
    /// of the multi-frame part the attributes as they stand for `frame`, with a frame index attribute
    /// (3711,0090). The scope is narrowed to the frame; with `deep` false that is the source's scope, too.
    /// Reports and goes on: the object then holds what was built. "Fail to extract the frame collection from
    /// the enhanced MF collection", "Unable to add coll", and the reports of UpdateMultiFrameScope.
    CKivDSDicomAttributeCollection(const CKivDSDicomAttributeCollection& src, int frame, bool deep);

    // The virtual operations stand in the order of the virtual table.

    ~CKivDSDicomAttributeCollection() override;
    /// Whether the facade has any part to work on.
    virtual bool IsGood() const;
    /// Whether there is a multi-frame part, here or in the compound or enhanced multi-frame collection.
    virtual bool IsMultiFrame() const;
    /// Whether the facade holds a compound collection.
    virtual bool IsCompoundCollection() const;
    /// Whether the facade holds an enhanced multi-frame collection.
    virtual bool IsEnhancedMFCollection() const;
    /// Adds the attributes of all members of the compound facade `src` to this facade's parts, in place.
    /// "Null input collection as input", "Bad input parameter: the input collection is not compounded ",
    /// "Null compound collection inner object ", "Bad input parameter: the compound collection is empty ";
    /// "Unexpected error while converting the compound collection" (what was added before stays).
    virtual bool AddCompoundCollection(const CKivDSDicomAttributeCollection* src);
    /// Writes the collection stream (docs/streams.md) at `buffer`, which has room for the length that a call
    /// with a null `buffer` gives in `size`. Not for compound collections. "Inconsistent serialization
    /// format: serialization aborted " (`size` becomes 0). The scope is not part of the stream.
    virtual bool Serialize(char* buffer, int& size);
    /// Reads a collection stream into the parts, trusting the totals that it declares; `size` receives the
    /// bytes consumed. `versioned` false: the old form without any header. For bytes from elsewhere use the
    /// overload with a length. The single-frame part loses its scope. " Invalid input parameters " (a
    /// malformed header); "Operation not supported on compound collections " or "Operation not supported on
    /// enhanced MF collections " (a plain stream into a facade without a single-frame part); and the parts'
    /// own reports.
    virtual bool Deserialize(const char* buffer, int& size, bool versioned);
    /// The collection's scope as a new scope element, which the caller owns. Null, without a report, when
    /// there is none.
    virtual CKivIPPScopeC* GetScope() const;
    /// The same as a new scope collection of the levels study, series and image.
    virtual CKivIPPScopeC* GetScopeAsCollection() const;
    /// Replaces the scope; null removes it. With `copy` true the collection keeps a copy, with false it takes
    /// the scope over. Only scope elements are kept: " Unsupported scope type" (no scope is left, `scope`
    /// stays the caller's). " Unable to initialize the scope object " when it cannot be copied. "Failed to
    /// set scope of compound collection" for compound and enhanced multi-frame collections.
    virtual bool SetScope(CKivIPPScopeC* scope, bool copy);
    /// A += B: union; at a tag in both, A's attribute accumulates B's when B's must be replicated or the two
    /// differ.
    virtual CKivDSDicomAttributeCollection& operator+=(const CKivDSDicomAttributeCollection& b);
    /// A *= B: every attribute of B, replacing A's.
    virtual CKivDSDicomAttributeCollection& operator*=(const CKivDSDicomAttributeCollection& b);
    /// A |= B: as *=, but B's private attributes are passed over. "Operation not supported on enhanced MF
    /// collections " when A would hold itself: it is a frame of what B's frames hold.
    virtual CKivDSDicomAttributeCollection& operator|=(const CKivDSDicomAttributeCollection& b);
    /// A -= B: without the attributes that equal B's at the same tag.
    virtual CKivDSDicomAttributeCollection& operator-=(const CKivDSDicomAttributeCollection& b);
    /// A /= B: without the tags at which B holds an attribute that is not private, equal or not.
    virtual CKivDSDicomAttributeCollection& operator/=(const CKivDSDicomAttributeCollection& b);
    /// A ^= B: only the attributes that equal B's at the same tag; with a compound B those that agree with at
    /// least one member, accumulated over the members ("Invalid null DICOM attribute collection in compound
    /// attribute collection", code 1).
    virtual CKivDSDicomAttributeCollection& operator^=(const CKivDSDicomAttributeCollection& b);
    /// The same tags with equal attributes, part by part. The scopes take no part.
    virtual bool operator==(const CKivDSDicomAttributeCollection& b);
    /// The negation of ==.
    virtual bool operator!=(const CKivDSDicomAttributeCollection& b);
    /// Adds `attr` and takes it over; on failure it stays the caller's. Under a tag that is held already,
    /// with `merge` true, an attribute that must be replicated is accumulated into the held one and deleted;
    /// otherwise `attr` replaces the held one, which is deleted. Adding the very object that is held changes
    /// nothing. " Null input parameter " and " Unable to retrieve attribute tag " under
    /// "CKivDSBaseDicomAttributeCollection::AddAttribute".
    virtual bool AddAttribute(CKivDSDicomAttribute* attr, bool merge);
    /// Removes and deletes the attribute of a tag, first looked for in the single-frame part. False when
    /// there is none; "Attribute collection not properly initialized" when the facade is not good.
    virtual bool RemoveAttribute(unsigned long tag);
    /// Removes and deletes all attributes but the private ones.
    virtual bool RemoveAllAttributes();
    /// The same in the single-frame part.
    virtual bool RemoveAllSingleFrameAttributes();
    /// The same in the multi-frame part, which stays; false when there is none.
    virtual bool RemoveAllMultiFrameAttributes();
    /// The attribute of a tag, lent until it leaves the collection; `*out` is written on success alone.
    /// False, without a report, when it is not held in the parts to be searched.
    virtual bool GetAttribute(unsigned long tag, const CKivDSDicomAttribute** out, bool searchSingle,
                              bool searchMulti) const;
    /// The same, to be changed: its tag must stay, and whoever shares the part sees the change.
    virtual bool GetAttributePtr(unsigned long tag, CKivDSDicomAttribute** out, bool searchSingle,
                                 bool searchMulti);
    /// The number of attributes in all parts; of a compound collection the sum over its members.
    virtual bool GetNumberOfAttributes(long* count) const;
    /// The number of attributes in the multi-frame part.
    virtual bool GetNumberOfMultiFrameAttributes(long* count) const;
    /// The number of attributes in the single-frame part.
    virtual bool GetNumberOfSingleFrameAttributes(long* count) const;
    /// The number of frames: 0 without a multi-frame part, else the first value of Number of Frames
    /// (0028,0008) in the single-frame part. False when it is absent (`*frames` is 0 then); "Failed to
    /// retrieve the number of image frames" under "CKivDSBaseDicomAttributeCollection::GetNumberOfFrames"
    /// when it cannot be read.
    virtual bool GetNumberOfFrames(int* frames);
    /// Merges the single-frame attributes of `src` into this facade. With `deep` false this facade's part
    /// takes them in, in place; with true it is replaced by a copy of `src`'s part that takes its attributes
    /// in and keeps its scope. "Operation not supported on enhanced MF collections ".
    virtual bool UpdateSingleFrameCollection(const CKivDSDicomAttributeCollection& src, bool deep);
    /// Sends every attribute's lines to the dump listener, part by part, in tag order.
    virtual void Dump() const;

protected:
    /// The single-frame part's map, lent, to be changed at will, for as long as the part lives; null when
    /// there is none. It makes the part hold a map from now on, which no other thread may look at meanwhile;
    /// the library itself walks parts without it. An attribute that is taken out of the map is deleted as a
    /// change to the part, under its lock; into another collection goes a copy.
    virtual std::map<unsigned long, CKivDSDicomAttribute*>* GetMapPtr();
    /// The same of the multi-frame part.
    virtual std::map<unsigned long, CKivDSDicomAttribute*>* GetMultiFrameMapPtr();

public:
    // What follows is not virtual.

    /// The bounded read, for bytes from elsewhere: as Deserialize above, but it reads no byte at or past
    /// `buffer + length`, allocates no more than a small multiple of `length`, and refuses malformed input.
    /// It reads what the object's own class reads; `size` receives the bytes read.
    bool Deserialize(const char* buffer, int length, int& size, bool versioned);
    /// Adds a new attribute made of an element: CKivDSDicomAttribute::InitFromDicomData, which says what the
    /// arguments are, then AddAttribute with `merge` true, which refuses for its own reasons. When one of
    /// them fails, with the reports that it makes under its own name, nothing is added. "Unexpected error"
    /// (no memory for the attribute).
    bool AddElement(unsigned long tag, int representation, int length, const char* data,
                    int expectedCount = 1, bool mustReplicate = false, int inSequenceIndex = -1);
    /// Announces `count` elements that AddElement is going to add, so that they come to lie side by side and
    /// are added and gone through faster. More or fewer may come; nothing but time and memory depends on it.
    /// False: "Operation not supported on compound collections ", "Unexpected error" (no memory; nothing has
    /// changed).
    bool ExpectElements(int count);
    /// Whether a tag is held. With `searchSingle` true the single-frame part alone is asked, else, with
    /// `searchMulti` true, the multi-frame part.
    bool HasAttribute(unsigned long tag, bool searchSingle, bool searchMulti) const;
    /// A new facade copied from `src`, which must not be null; the caller owns it. "Memory alloc error".
    static CKivDSDicomAttributeCollection* CreateCollection(CKivDSDicomAttributeCollection* src, bool deep);
    /// Makes a facade of the single-frame part and, when there is one, a facade of the multi-frame part; the
    /// caller owns both. Both are null on failure: "Operation not supported on enhanced MF collections ",
    /// "Attempt to split an uninitialized object ".
    bool Split(CKivDSDicomAttributeCollection*& single, CKivDSDicomAttributeCollection*& multi, bool deep);
    /// Makes `merged` hold the attributes of `first` (when it held none) overwritten by those of `second`,
    /// and the scope of `first`; compound collections are flattened. "Failed to set scope on merged
    /// collection".
    static bool MergeCollections(const CKivDSDicomAttributeCollection& first,
                                 const CKivDSDicomAttributeCollection& second,
                                 CKivDSDicomAttributeCollection& merged);
    /// A new plain facade, owned by the caller, of the attributes of all members of the compound facade
    /// `src`, with its scope. Null without a report when `src` is not compound; "Failed to add compound
    /// collection", "Failed to set scope on flattened collection".
    static CKivDSDicomAttributeCollection*
    ConvertCompoundToFlatCollection(const CKivDSDicomAttributeCollection& src);
    /// Copies B's attributes into A's parts, in place, so that facades that share them see the change; a
    /// multi-frame part that B lacks stays. A compound B is flattened, an enhanced multi-frame B is copied
    /// beside A's parts. Not onto a compound facade, nor onto an enhanced multi-frame one: "Operation not
    /// supported on enhanced MF collections ".
    CKivDSDicomAttributeCollection& operator=(const CKivDSDicomAttributeCollection& b);

    /// The version that the collection stream begins with.
    static const char ms_nVersion;

protected:
    /// How many facades hold this object; a part is deleted when the last of them lets it go.
    kivds::Counter m_nRefCount{0};
    CKivDSBaseDicomAttributeCollection* m_pSingleFrameCollection = nullptr; ///< shared by its count, or null
    CKivDSBaseDicomAttributeCollection* m_pMultiFrameCollection = nullptr;  ///< shared by its count, or null
    CKivDSCompoundCollection* m_pCompoundCollection = nullptr;              ///< shared by its count, or null
    CKivDSEnhancedMFCollection* m_pEnhancedMFCollection = nullptr;          ///< shared by its count, or null

    /// A new empty part whose count is already 1.
    CKivDSBaseDicomAttributeCollection* CreateCollection() const;
    /// Lets all parts go.
    void Clear();
    /// Lets all parts go and takes those of `src`. "Unexpected error while trying to initialize from
    /// collection" (the parts made so far stay).
    bool AddCollection(const CKivDSDicomAttributeCollection& src, bool deep);
    /// Bytes of the collection stream; 0 when a part cannot tell its own or an int cannot hold the length.
    int GetSize() const;
    /// Sets the scope of `src`, its image item narrowed to `frame`, on this facade's parts. False without a
    /// report when `src` has no scope; "Unable to retrieve the image scope item ", "Inconsistent image scope
    /// item for multiframe collection", "Fail to retrieve image UID", "Failed to set scope of original
    /// collection".
    bool UpdateMultiFrameScope(const CKivDSDicomAttributeCollection& src, int frame);

private:
    friend struct kivds::PartAccess;
    friend class CKivDSDicomAttributeCollectionIterator;

    // Implemented beside the operations that use them.
    CKivDSBaseDicomAttributeCollection* OwnPart() const;
    CKivDSDicomAttributeCollection* Inner() const;
    CKivDSDicomAttributeCollection* ScopeHolder() const;
    CKivDSCompoundCollection* Members() const;
    CKivDSBaseDicomAttributeCollection* PartOfMap();
    CKivDSBaseDicomAttributeCollection* PartOfMultiFrameMap();
    template <class Attribute, class Ask>
    bool FindAttribute(Attribute** out, bool searchSingle, bool searchMulti, Ask ask) const;
    bool RefuseCompound(const kivds::Operation& op) const;
    bool RefuseCompoundAndEnhanced(const kivds::Operation& op) const;
    bool TakePlainFrame(const CKivDSDicomAttributeCollection& src, int frame, bool deep);
    void TakeEnhancedFrame(const CKivDSDicomAttributeCollection& src, int frame);
    void TakeMemberFrames(const CKivDSDicomAttributeCollection& src, int frame, bool deep);
    struct SSetOperator;
    const CKivDSDicomAttributeCollection& Regular() const;
    CKivDSDicomAttributeCollection& Regular();
    CKivDSDicomAttributeCollection& Combine(const CKivDSDicomAttributeCollection& b, const SSetOperator& how);
    void CombineParts(const CKivDSDicomAttributeCollection& b,
                      CKivDSBaseDicomAttributeCollection& (CKivDSBaseDicomAttributeCollection::*apply)(
                          const CKivDSBaseDicomAttributeCollection&));
    void CombinePart(CKivDSBaseDicomAttributeCollection* CKivDSDicomAttributeCollection::*part,
                     const CKivDSDicomAttributeCollection& b,
                     CKivDSBaseDicomAttributeCollection& (CKivDSBaseDicomAttributeCollection::*apply)(
                         const CKivDSBaseDicomAttributeCollection&));
    bool SameParts(const CKivDSDicomAttributeCollection& b) const;
    void AssignParts(const CKivDSDicomAttributeCollection& b);
    template <class Use>
    static void ForEachMember(const CKivDSDicomAttributeCollection& b, const kivds::Operation& op, Use use);
    bool WriteParts(kivds::ByteWriter& writer, int& total);
    bool ReadFacade(kivds::ByteReader& reader, int& size, bool versioned);
};

/// A / B: B's attributes that differ from A's at the tags where A holds an attribute that is not private.
/// This and the other free operators give a new collection, owned by the caller, and when they refuse a new
/// empty one: "Operation not supported on compound collections " or "Attribute collection not properly
/// initialized" under "operator /", "operator ^" or "operator |".
KIVDS_API CKivDSDicomAttributeCollection* operator/(const CKivDSDicomAttributeCollection& a,
                                                    const CKivDSDicomAttributeCollection& b);
/// A ^ B: A's attributes at the tags where both are equal.
KIVDS_API CKivDSDicomAttributeCollection* operator^(const CKivDSDicomAttributeCollection& a,
                                                    const CKivDSDicomAttributeCollection& b);
/// A | B: B's attributes at the tags where both are equal.
KIVDS_API CKivDSDicomAttributeCollection* operator|(const CKivDSDicomAttributeCollection& a,
                                                    const CKivDSDicomAttributeCollection& b);
