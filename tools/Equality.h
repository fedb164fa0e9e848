// Whether attributes are the same in everything that they hold: the library's equality (values and frames),
// and what that leaves out, the representation, the items of values and the code records.
#pragma once

#include "tools/Walk.h"

#include <cstddef>
#include <functional>
#include <string_view>

namespace kivds::tool {

/// Equal in what the library's equality leaves out.
bool HaveSameDetails(const Attribute& a, const Attribute& b);

struct AttributeEqual
{
    bool operator()(const Attribute* a, const Attribute* b) const
    {
        return *a == *b && HaveSameDetails(*a, *b);
    }
};

/// Equal attributes have the same hash.
struct AttributeHash
{
    std::size_t operator()(const Attribute* attribute) const;
};

} // namespace kivds::tool
