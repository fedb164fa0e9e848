// Walks over attribute maps, in ascending tag order: one that asks for memory ahead of its use, and the walk
// over two maps side by side that the set operators share.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"

#include <map>

namespace kivds {

using AttributeMap = std::map<unsigned long, CKivDSDicomAttribute*>;

/// A position in a map that has asked the cache for the attributes of the entries behind it: a walk through a
/// large collection waits for memory at every entry, and so waits for several at once. The entry at the
/// position may be erased after the position has moved on, and others may be inserted before it.
template <class Iterator>
class FetchingIterator
{
public:
    FetchingIterator(Iterator at, Iterator end) : m_At(at), m_Ahead(at), m_End(end)
    {
        for (int i = 0; i < kSteps; ++i)
            Fetch();
    }

    auto& operator*() const { return *m_At; }
    auto* operator->() const { return &*m_At; }
    FetchingIterator& operator++()
    {
        ++m_At;
        Fetch();
        return *this;
    }
    bool operator!=(const FetchingIterator& other) const { return m_At != other.m_At; }
    bool AtEnd() const { return m_At == m_End; }
    Iterator Position() const { return m_At; }

private:
    static constexpr int kSteps =
        4; // enough to keep the memory busy; more would push out what is needed first

    void Fetch()
    {
        if (m_Ahead == m_End)
            return;
#if defined(__GNUC__) // a hint, for any address
        const auto* const attribute = reinterpret_cast<const char*>(m_Ahead->second);
        __builtin_prefetch(attribute);
        __builtin_prefetch(attribute + 64);
#endif
        ++m_Ahead;
    }

    Iterator m_At;
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
