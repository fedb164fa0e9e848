// Frame ranges as the library obtains them: from the platform's scope item factory, which may be any, and
// which the library does not trust to return what it was asked for, or not to throw.
#pragma once

#include "platform/CKivIPPRangeIDC.h"

#include <memory>

namespace kivds {

/// A new, empty frame range; null when the factory gives none.
std::unique_ptr<CKivIPPRangeIDC> NewFrameRange() noexcept;

/// A copy of `range`; null when the factory gives none.
std::unique_ptr<CKivIPPRangeIDC> CloneFrameRange(const CKivIPPRangeIDC& range) noexcept;

} // namespace kivds
