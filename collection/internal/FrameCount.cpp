#include "collection/internal/FrameCount.h"

#include "foundation/internal/ElementTypes.h"

#include <cstring>

namespace kivds {

namespace {

bool HoldsFrameCount(const SKivAGAttributeValue& value) noexcept
{
    const bool integers = value.eType >= eAttrShort && value.eType <= eAttrUInt;
    return integers && value.pData && ByteSize(value.eType, value.nCount) >= 4;
}

} // namespace

bool ReadFrameCount(const SKivAGAttributeValue& value, int& frames) noexcept
{
    if (!HoldsFrameCount(value))
        return false;
    std::memcpy(&frames, value.pData, sizeof frames);
    return true;
}

bool WriteFrameCount(SKivAGAttributeValue& value, int frames) noexcept
{
    if (!HoldsFrameCount(value))
        return false;
    std::memcpy(value.pData, &frames, sizeof frames);
    return true;
}

} // namespace kivds
