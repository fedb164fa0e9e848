// A frame-range collection: an ordered list of frame numbers, kept as runs, that maps a frame to its
// position. Frame numbers are any ints, 0 included; a frame's position is its index in the list, counted from
// 0. A range has no UID, and passes its state test while it lists a frame. Objects are not synchronised; they
// belong to whoever made them (Create(g_RangeUID), Clone).
#pragma once

#include "platform/CKivIPPScopeItemC.h"

#include <vector>

/// Its stream is bounded by the runs, not by the frames: 1..100000 takes no more than 1..2.
class KIV_SCOPEITEM_API CKivIPPRangeIDC : public CKivIPPScopeItemC
{
public:
    CKivIPPRangeIDC();
    /// A copy, without frames when memory runs out.
    CKivIPPRangeIDC(const CKivIPPRangeIDC&);
    /// Becomes a copy, without frames when memory runs out.
    CKivIPPRangeIDC& operator=(const CKivIPPRangeIDC&);
    ~CKivIPPRangeIDC() override;

    bool Serialize(char* buffer, int* size) const override;
    using CKivIPPScopeItemC::Deserialize;
    bool Deserialize(const char* buffer, int length, int* size) override;
    bool Dump() const override;
    bool IsGood() const override;
    bool IsEqual(const CKivIPPScopeItemC* other) const override;
    CKivIPPScopeItemC* Copy() const override;
    /// Refused: nothing changes.
    bool SetUID(const char* uid) override;
    /// Refused: nothing changes.
    bool SetUID(const char* uid, int firstFrame, int lastFrame) override;
    int GetNumberOfFrameRuns() const override;
    bool GetFrameRun(int index, int* firstFrame, int* lastFrame) const override;

    /// Replaces the frames by the `count` ints at `frames`, in the order given. A frame that stands twice
    /// keeps its earlier position. False (no frames) when `count` is negative, `frames` is null or memory
    /// runs out.
    virtual bool SetFrames(int count, const int* frames);
    /// Replaces the frames by first..last, inclusive. False (no frames) when first > last, or when they are
    /// more than INT_MAX.
    virtual bool SetFrames(int first, int last);
    /// Whether `frame` is in the list, and at which position; logarithmic in the number of runs. `position`
    /// may be null, and stays as it is when the frame is not there.
    virtual bool GetPosition(int frame, int* position) const;
    /// The length of the list.
    virtual int GetNumberOfFrames() const;

    /// Whether both list the same frames in the same order.
    bool operator==(const CKivIPPRangeIDC& other) const;

private:
    /// `m_nCount` consecutive ascending frames from `m_nFirst`, the first of them at position `m_nPosition`.
    struct SRun
    {
        int m_nFirst;
        int m_nCount;
        int m_nPosition;

        int Last() const { return m_nFirst + (m_nCount - 1); }
    };
    using Runs = std::vector<SRun>;

    bool Assign(const CKivIPPRangeIDC& other);
    static void Append(Runs& runs, int first, int count);
    static Runs ByFrame(const Runs& runs);
    bool SetRuns(Runs&& runs);
    void ClearFrames();

    Runs m_Runs;    // in list order, each as long as it can be, so that equal lists have equal runs
    Runs m_ByFrame; // the earliest position of every frame, ascending by frame; empty while m_Runs serves as
                    // that
};
