// Walks over attribute maps, in ascending tag order: one that asks for memory ahead of its use, and the walk
// over two maps side by side that the set operators share.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"

#include <map>

namespace kivds {

using AttributeMap = std::map<unsigned long, CKivDSDicomAttribute*>;

/// A position in a map that knows the next few entries, too, and has asked the cache for their attributes: a
/// walk through a large collection would wait for memory at every entry, and so waits for several at once.
/// The entry that the position has just left may be erased, and others may be inserted between it and the
/// position.
template <class Iterator>
class FetchingIterator
{
public:
    FetchingIterator(Iterator at, Iterator end) : m_Ahead(at), m_End(end)
    {
        for (Iterator& next : m_Next)
            next = Fetch();
    }

    auto& operator*() const { return *Position(); }
    auto* operator->() const { return &*Position(); }
    FetchingIterator& operator++()
    {
        m_Next[m_nAt] = Fetch();
        m_nAt = (m_nAt + 1) % kSteps;
        return *this;
    }
    bool operator!=(const FetchingIterator& other) const { return Position() != other.Position(); }
    bool AtEnd() const { return Position() == m_End; }
    Iterator Position() const { return m_Next[m_nAt]; }

private:
    static constexpr unsigned kSteps = 4; // enough to keep the memory busy

    Iterator Fetch()
    {
        if (m_Ahead == m_End)
            return m_End;
#if defined(__GNUC__) // a hint, for any address
        const auto* const attribute = reinterpret_cast<const char*>(m_Ahead->second);
        __builtin_prefetch(attribute);
        __builtin_prefetch(attribute + 64);
#endif
        return m_Ahead++;
    }

    Iterator m_Next[kSteps]; // the position and those behind it, in a ring
    unsigned m_nAt = 0;      // where in the ring
    Iterator m_Ahead;
    Iterator m_End;
};

/// All entries of a map, for a range-based for that fetches ahead.
template <class Map>
class Fetching
{
public:
    explicit Fetching(Map& map) : m_Map(map) {}

    auto begin() const { return FetchingIterator(m_Map.begin(), m_Map.end()); }
    auto end() const { return FetchingIterator(m_Map.end(), m_Map.end()); }

private:
    Map& m_Map;
};

/// Calls onlyA(entry of a), both(entry of a, attribute of b) or onlyB(position in a, tag, attribute of b) for
/// each tag. Null entries count as if they were not there. The callbacks may erase the entry of `a` that they
/// are given, or insert at the position that they are given.
template <class Map, class OnlyA, class Both, class OnlyB>
void WalkTogether(Map& a, const AttributeMap& b, OnlyA onlyA, Both both, OnlyB onlyB)
{
    auto x = Fetching(a).begin();
    auto y = Fetching(b).begin();
    const auto next = [&x] {
        const auto passed = x.Position();
        ++x;
        return passed;
    };
    for (;;) {
        while (!x.AtEnd() && !x->second)
            ++x;
        while (!y.AtEnd() && !y->second)
            ++y;
        if (x.AtEnd() && y.AtEnd())
            return;
        if (y.AtEnd() || (!x.AtEnd() && x->first < y->first)) {
            onlyA(next());
        } else if (x.AtEnd() || y->first < x->first) {
            onlyB(x.Position(), y->first, *y->second);
            ++y;
        } else {
            both(next(), *y->second);
            ++y;
        }
    }
}

} // namespace kivds
