// Frame ranges as the library obtains them: from the platform's scope item factory, which may be any, and
// which the library does not trust to return what it was asked for, or not to throw.
#pragma once

#include "foundation/internal/Operation.h"
#include "platform/CKivIPPRangeIDC.h"

#include <memory>

namespace kivds {

/// A new, empty frame range; null when the factory gives none.
std::unique_ptr<CKivIPPRangeIDC> NewFrameRange() noexcept;

/// A copy of `range`; null when the factory gives none.
std::unique_ptr<CKivIPPRangeIDC> CloneFrameRange(const CKivIPPRangeIDC& range) noexcept;

/// Runs an operation of a frame range; one that throws has failed.
template <class Body>
bool Guarded(Body body) noexcept
{
    return Operation(L"CKivIPPRangeIDC").Guard(nullptr, body);
}

inline bool FindFrame(const CKivIPPRangeIDC& range, int frame, int& position) noexcept
{
    return Guarded([&] { return range.GetPosition(frame, &position); });
}

inline bool SameFrames(const CKivIPPRangeIDC& a, const CKivIPPRangeIDC& b) noexcept
{
    return Guarded([&] { return a == b; });
}

/// As the range's own operations: a null buffer asks for the length; a read keeps to `length` bytes.
inline bool WriteFrameRange(const CKivIPPRangeIDC& range, char* buffer, int& size) noexcept
{
    return Guarded([&] { return range.Serialize(buffer, &size); });
}

inline bool ReadFrameRange(CKivIPPRangeIDC& range, const char* buffer, int length, int& size) noexcept
{
    return Guarded([&] { return range.Deserialize(buffer, length, &size); });
}

} // namespace kivds
