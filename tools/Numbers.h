// Access to the elements of a value as numbers of their own type, and to the integers of a stream.
#pragma once

#include "foundation/AttributeValue.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace kivds::tool {

/// The little-endian integer at an offset of a stream.
inline std::int32_t Int32At(std::string_view bytes, std::size_t offset)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 4; i-- > 0;)
        bits = bits << 8 | static_cast<unsigned char>(bytes[offset + i]);
    std::int32_t number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

template <class T>
T ElementAt(const SKivAGAttributeValue& value, int index)
{
    T element;
    std::memcpy(&element, value.pData + static_cast<std::size_t>(index) * sizeof(T), sizeof(T));
    return element;
}

/// Calls `use` with element `index` of `value` as a number of its type, characters as unsigned bytes.
template <class Use>
void WithElement(const SKivAGAttributeValue& value, int index, Use use)
{
    switch (value.eType) {
    case eAttrChar:
        return use(ElementAt<std::uint8_t>(value, index));
    case eAttrShort:
        return use(ElementAt<std::int16_t>(value, index));
    case eAttrUShort:
        return use(ElementAt<std::uint16_t>(value, index));
    case eAttrInt:
        return use(ElementAt<std::int32_t>(value, index));
    case eAttrUInt:
        return use(ElementAt<std::uint32_t>(value, index));
    case eAttrFloat:
        return use(ElementAt<float>(value, index));
    case eAttrDouble:
        return use(ElementAt<double>(value, index));
    case eAttrNone:
        break;
    }
}

/// The number of elements that can be read; 0 for a value without data.
inline int ReadableCount(const SKivAGAttributeValue& value)
{
    return value.pData && GetElementSize(value.eType) > 0 && value.nCount > 0 ? value.nCount : 0;
}

} // namespace kivds::tool
