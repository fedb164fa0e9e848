// Walks over attribute maps, in ascending tag order: one that asks for memory ahead of its use, and the walk
// over two maps side by side that the set operators share.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"

#include <map>

namespace kivds {

using AttributeMap = std::map<unsigned long, CKivDSDicomAttribute*>;

/// A position in a map that reads a few entries ahead and asks the cache for their attributes: a walk through
/// a large collection would wait for memory at every entry, and so waits for several at once. The entry that
/// the position has just left may be erased, and others may be inserted between it and the position.
template <class Iterator>
class FetchingIterator
{
public:
    FetchingIterator(Iterator at, Iterator end) : m_Next(at), m_End(end) { Fetch(); }

    auto& operator*() const { return *m_At; }
    auto* operator->() const { return &*m_At; }
    FetchingIterator& operator++()
    {
        if (m_nTaken < m_nFetched)
            m_At = m_Fetched[m_nTaken++];
        else
            Fetch();
        return *this;
    }
    bool operator!=(const FetchingIterator& other) const { return m_At != other.m_At; }
    bool AtEnd() const { return m_At == m_End; }
    Iterator Position() const { return m_At; }

private:
    static constexpr int kMost = 8; // enough to keep the memory busy

    void Fetch()
    {
        m_At = m_Next;
        m_nTaken = 1;
        for (m_nFetched = 0; m_nFetched < kMost && m_Next != m_End; ++m_Next) {
#if defined(__GNUC__)
            if (const auto* const attribute = reinterpret_cast<const char*>(m_Next->second)) {
                __builtin_prefetch(attribute);
                __builtin_prefetch(attribute + 64);
            }
#endif
            m_Fetched[m_nFetched++] = m_Next;
        }
    }

    Iterator m_At;
    Iterator m_Next; // the first one that is not fetched
    Iterator m_End;
    Iterator m_Fetched[kMost];
    int m_nFetched = 0;
    int m_nTaken = 0;
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
    const auto mine = [&x] { // an entry that is passed before it is given away
        const auto entry = x.Position();
        ++x;
        return entry;
    };
    while (!x.AtEnd() && !y.AtEnd()) {
        if (!x->second) {
            ++x;
        } else if (!y->second) {
            ++y;
        } else if (x->first < y->first) {
            onlyA(mine());
        } else if (y->first < x->first) {
            onlyB(x.Position(), y->first, *y->second);
            ++y;
        } else {
            both(mine(), *y->second);
            ++y;
        }
    }
    while (!x.AtEnd()) {
        const auto entry = mine();
        if (entry->second)
            onlyA(entry);
    }
    for (; !y.AtEnd(); ++y) {
        if (y->second)
            onlyB(x.Position(), y->first, *y->second);
    }
}

} // namespace kivds
