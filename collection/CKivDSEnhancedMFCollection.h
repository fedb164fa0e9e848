// An enhanced multi-frame object (PS3.3 C.7.6.16): one regular collection of the attributes that all frames
// share, and a collection of its own for each frame. Callers hold it inside a facade
// (CKivDSDicomAttributeCollection(CKivDSEnhancedMFCollection*)). The regular collection is this object's own
// facade part, shared by reference count; the per-frame collections are facades that it owns. Threads as for
// the facade.
#pragma once

#include "collection/CKivDSDicomAttributeCollection.h"

#include <vector>

/// Failures are reported under "CKivDSEnhancedMFCollection::" and the operation's name.
class KIVDS_API CKivDSEnhancedMFCollection : public CKivDSDicomAttributeCollection
{
public:
    /// No regular collection (not good), no frames.
    CKivDSEnhancedMFCollection();
    /// Shares or copies the parts of the regular collection and of every frame of `src`.
    CKivDSEnhancedMFCollection(const CKivDSEnhancedMFCollection& src, bool deep = false);
    ~CKivDSEnhancedMFCollection() override;
    /// Lets everything go and takes a deep copy of `src`.
    CKivDSEnhancedMFCollection& operator=(const CKivDSEnhancedMFCollection& src);

    // Replaced operations of the facade.

    /// True.
    bool IsEnhancedMFCollection() const override;
    using CKivDSDicomAttributeCollection::Deserialize;
    /// The enhanced multi-frame stream (docs/streams.md). "Failed to serialize the regular collections",
    /// "Failed to deserialize the emf collection" (a frame); for its length, under GetSize: "Failed to
    /// retrieve the size of the regular collection", "Failed to get the size of the emf collection".
    bool Serialize(char* buffer, int& size) override;
    /// Frames read are appended to those held. "Failed to deserialize the regular collections", "Failed to
    /// deserialize the emf collection" (the frames read before stay).
    bool Deserialize(const char* buffer, int& size, bool versioned) override;
    /// The number of per-frame collections; false when it is 0.
    bool GetNumberOfFrames(int* frames) override;

    // Added operations, in the order of the virtual table.

    /// Makes `collection` the regular collection, sharing or copying its parts. "Null collection pointer as
    /// input parameter".
    virtual bool AddCollection(CKivDSDicomAttributeCollection* collection, bool deep);
    /// Appends the collection of the next frame, sharing or copying the parts of `collection`, which stays
    /// the caller's. "Null collection pointer as input parameter"; "Operation not supported on enhanced MF
    /// collections " (one that holds this collection, at any depth).
    virtual bool AddMFCollection(CKivDSDicomAttributeCollection* collection, bool deep);
    /// A new facade, owned by the caller, of the regular collection. "Object not properly initialized ",
    /// "Unexpected error while creating the regular collection".
    virtual CKivDSDicomAttributeCollection* GetCollection(bool deep);
    /// The complete collection of one frame (counted from 0), owned by the caller: copies of the regular
    /// attributes, as they stand for the frame, united with the frame's own; Number of Frames (0028,0008)
    /// says 1. "Invalid multiframe collection index ", "Unexpected error while creating the MF collection".
    virtual CKivDSDicomAttributeCollection* GetMFCollection(int index);
    /// The number of per-frame collections.
    virtual int GetNumberOfMFCollections() const;
    /// The facade's |= on the regular collection and frame by frame. "Source and destination DACs have
    /// different number of frames. Operation is ignored." (code 1; the regular collection has been combined);
    /// "Insufficent memory to allocate DAC object." (the frames copied so far stay). Without frames of its
    /// own it copies those of `src`: "Operation not supported on enhanced MF collections " when one holds
    /// this collection; the regular collection has been combined then, too.
    virtual CKivDSEnhancedMFCollection& operator|=(const CKivDSEnhancedMFCollection& src);
    /// The facade's -= on the regular collection and frame by frame; reports as |=.
    virtual CKivDSEnhancedMFCollection& operator-=(const CKivDSEnhancedMFCollection& src);

protected:
    /// Deletes the frames and lets the regular collection's parts go.
    void Clear();
    /// Bytes of the stream; 0 when a part cannot tell its own or an int cannot hold the length.
    int GetSize();
    /// Makes Number of Frames say 1, where `collection` holds it and its first value can be read.
    void UpdateNumberOfFrames(CKivDSDicomAttributeCollection& collection);
    /// The per-frame collections, lent, in frame order.
    std::vector<CKivDSDicomAttributeCollection*>& GetCollectionVect();

private:
    friend struct kivds::PartAccess;

    bool ReadEnhanced(kivds::ByteReader& reader, int& size, bool versioned);
    bool SameFrames(const CKivDSEnhancedMFCollection& b) const;
    bool AppendFrame(const CKivDSDicomAttributeCollection& frame, bool deep, const kivds::Operation& op,
                     const wchar_t* noMemory);
    void CopyFrames(const CKivDSEnhancedMFCollection& src, bool deep, const kivds::Operation& op,
                    const wchar_t* noMemory);
    int Measure(const kivds::Operation& op, const wchar_t* noRegular, const wchar_t* noFrame);
    bool RefuseFrames(const CKivDSEnhancedMFCollection& src, const kivds::Operation& op) const;

    std::vector<CKivDSDicomAttributeCollection*> m_MFCollections; // owned, in frame order
};
