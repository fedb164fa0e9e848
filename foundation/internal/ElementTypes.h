// The element types and the C++ scalars that they stand for: their sizes in one table, and one dispatch from
// an element type to code for its scalar. Nothing here owns or allocates.
#pragma once

#include "foundation/AttributeValue.h"

#include <cstdint>

namespace kivds {

inline constexpr signed char kElementSizes[] = {0, 1, 2, 2, 4, 4, 4, 8};

/// Bytes per element, by type; 0 for a number that is no type.
constexpr int ElementSize(tagEKivAGAttributeType type) noexcept
{
    return type >= eAttrNone && type <= eAttrDouble ? kElementSizes[type] : 0;
}

/// Bytes of `count` elements, without overflow; negative for a negative count.
constexpr std::int64_t ByteSize(tagEKivAGAttributeType type, int count) noexcept
{
    return static_cast<std::int64_t>(ElementSize(type)) * count;
}

/// Whether a value holds bytes that a copy could be made of.
constexpr bool HasBytes(const SKivAGAttributeValue& value) noexcept
{
    return value.pData && ByteSize(value.eType, value.nCount) > 0;
}

/// The element type that holds a scalar.
template <class T>
struct ElementTypeOf;
// clang-format off
template <> struct ElementTypeOf<char>           { static constexpr tagEKivAGAttributeType value = eAttrChar; };
template <> struct ElementTypeOf<short>          { static constexpr tagEKivAGAttributeType value = eAttrShort; };
template <> struct ElementTypeOf<unsigned short> { static constexpr tagEKivAGAttributeType value = eAttrUShort; };
template <> struct ElementTypeOf<int>            { static constexpr tagEKivAGAttributeType value = eAttrInt; };
template <> struct ElementTypeOf<unsigned int>   { static constexpr tagEKivAGAttributeType value = eAttrUInt; };
template <> struct ElementTypeOf<float>          { static constexpr tagEKivAGAttributeType value = eAttrFloat; };
template <> struct ElementTypeOf<double>         { static constexpr tagEKivAGAttributeType value = eAttrDouble; };
// clang-format on

/// Calls `use` with a null pointer to the scalar type of numeric elements; `otherwise` for characters and the
/// rest.
template <class Use, class Otherwise>
auto WithNumericType(tagEKivAGAttributeType type, Use&& use, Otherwise&& otherwise)
{
    switch (type) {
    case eAttrShort:
        return use(static_cast<short*>(nullptr));
    case eAttrUShort:
        return use(static_cast<unsigned short*>(nullptr));
    case eAttrInt:
        return use(static_cast<int*>(nullptr));
    case eAttrUInt:
        return use(static_cast<unsigned int*>(nullptr));
    case eAttrFloat:
        return use(static_cast<float*>(nullptr));
    case eAttrDouble:
        return use(static_cast<double*>(nullptr));
    default:
        return otherwise();
    }
}

} // namespace kivds
