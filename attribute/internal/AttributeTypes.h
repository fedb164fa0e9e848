// The attribute types, which tell an attribute's class in the factory and in streams.
#pragma once

namespace kivds {

enum AttributeType : int
{
    kPlainAttribute = 0,
    kCodeSequenceAttribute = 1
};

constexpr bool IsAttributeType(int type) noexcept
{
    return type == kPlainAttribute || type == kCodeSequenceAttribute;
}

} // namespace kivds
