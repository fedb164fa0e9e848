// A scope item names one thing that a scope covers: a study, a series, an image (by UID), or, for an image,
// some of its frames. Items are made and cloned by the factory (CKivIPPScopeItemFactory.h) and belong to the
// caller. Objects are not synchronised.
#pragma once

#include "platform/CKivIPPSerialFormC.h"
#include "platform/Export.h"

#include <string>

/// A UID (PS3.5 9) with all its frames or a run of them.
class KIV_SCOPEITEM_API CKivIPPScopeItemC : public CKivIPPSerialFormC
{
public:
    CKivIPPScopeItemC();
    /// A copy, which names nothing when memory runs out.
    CKivIPPScopeItemC(const CKivIPPScopeItemC&);
    /// Becomes a copy, which names nothing when memory runs out.
    CKivIPPScopeItemC& operator=(const CKivIPPScopeItemC&);
    ~CKivIPPScopeItemC() override;

    bool Serialize(char* buffer, int* size) const override;
    bool Deserialize(const char* buffer, int* size) override;
    bool Dump() const override;

    /// The state test: whether the item names something and no operation on it has failed since it was last
    /// set.
    virtual bool IsGood() const;
    /// Whether `other` is an item of the same type that names the same UID and the same frames.
    virtual bool IsEqual(const CKivIPPScopeItemC* other) const;
    /// Copies the UID, NUL-terminated, into `size` bytes at `buffer`. False, with an empty text, when the
    /// item has none or it does not fit; the item then fails its state test until it is set again.
    virtual bool GetUID(char* buffer, int size) const;
    /// Names `uid` with all its frames. False when `uid` is null or empty or no memory can be had; the item
    /// then names nothing, and its state test fails.
    virtual bool SetUID(const char* uid);
    /// Names the frames `firstFrame` to `lastFrame`, inclusive, of `uid`. False also when first > last.
    virtual bool SetUID(const char* uid, int firstFrame, int lastFrame);
    /// The frames named with SetUID; false when all frames are meant.
    virtual bool GetFrames(int* firstFrame, int* lastFrame) const;
    /// As the two-argument Deserialize, but reads no byte at or past `buffer + length` and allocates no more
    /// than a small multiple of `length`.
    virtual bool Deserialize(const char* buffer, int length, int* size);
    /// A new copy of the item's own class, owned by the caller; null when no memory can be had.
    virtual CKivIPPScopeItemC* Copy() const;
    /// How many runs of frames the item covers: one for a UID, none when it names nothing.
    virtual int GetNumberOfFrameRuns() const;
    /// The run at `index`, inclusive; all frames are INT_MIN to INT_MAX. False when `index` is out of range
    /// or a pointer is null.
    virtual bool GetFrameRun(int index, int* firstFrame, int* lastFrame) const;
    /// Lends the UID until the item changes; an empty text when it has none. The state test stays as it is.
    const char* GetUIDPtr() const { return m_UID.c_str(); }

private:
    bool Assign(const CKivIPPScopeItemC& other);
    bool Name(const char* uid, bool allFrames, int firstFrame, int lastFrame);
    void Clear();

    std::string m_UID;
    bool m_bAllFrames = true;
    int m_nFirstFrame = 0;
    int m_nLastFrame = 0;
    mutable bool m_bGood = false;
};
