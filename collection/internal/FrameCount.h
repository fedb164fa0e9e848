// Number of Frames (0028,0008), the attribute that says how many frames a multi-frame collection has (PS3.3
// C.7.6.6), and the 32-bit integer that its first value begins with.
#pragma once

#include "foundation/AttributeValue.h"

#include <cstdint>

namespace kivds {

constexpr unsigned long kNumberOfFrames = 0x00280008;

/// The count that a value begins with; false when it does not hold four bytes of integers.
bool ReadFrameCount(const SKivAGAttributeValue& value, int& frames) noexcept;

/// Puts a count in its place; false, with nothing written, when the value does not hold four bytes of
/// integers.
bool WriteFrameCount(SKivAGAttributeValue& value, int frames) noexcept;

} // namespace kivds
