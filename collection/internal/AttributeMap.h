// The walk over two attribute maps side by side, in ascending tag order, that the set operators share.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"

#include <map>

namespace kivds {

using AttributeMap = std::map<unsigned long, CKivDSDicomAttribute*>;

/// Calls onlyA(entry of a), both(entry of a, attribute of b) or onlyB(position in a, tag, attribute of b) for
/// each tag. Null entries count as if they were not there. The callbacks may erase the entry of `a` that they
/// are given, or insert at the position that they are given.
template <class Map, class OnlyA, class Both, class OnlyB>
void WalkTogether(Map& a, const AttributeMap& b, OnlyA onlyA, Both both, OnlyB onlyB)
{
    auto x = a.begin();
    auto y = b.begin();
    for (;;) {
        while (x != a.end() && !x->second)
            ++x;
        while (y != b.end() && !y->second)
            ++y;
        const bool endA = x == a.end();
        const bool endB = y == b.end();
        if (endA && endB)
            return;
        if (endB || (!endA && x->first < y->first)) {
            onlyA(x++);
        } else if (endA || y->first < x->first) {
            onlyB(x, y->first, *y->second);
            ++y;
        } else {
            both(x++, *y->second);
            ++y;
        }
    }
}

} // namespace kivds
