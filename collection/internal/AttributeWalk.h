// Passes over an attribute map, in ascending tag order: AttributeWalk looks, AttributeEdit replaces, drops
// and adds entries as it goes. Both can leap to a tag, which costs a few steps when it is near and a
// logarithm otherwise, so that two maps are walked side by side by leaping in one to the tags of the other.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "collection/AttributeMap.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace kivds {

/// The first entry from `at` on whose tag is not below `tag`.
template <class Entry>
Entry* LeapTo(Entry* at, Entry* end, unsigned long tag)
{
    for (int i = 0; i < 2; ++i, ++at) { // mostly here or the next one
        if (at == end || !(at->tag < tag))
            return at;
    }
    std::ptrdiff_t step = 1;
    while (end - at > step && at[step].tag < tag) {
        at += step;
        step *= 2;
    }
    return std::lower_bound(at, end - at > step ? at + step : end, tag,
                            [](const auto& entry, unsigned long wanted) { return entry.tag < wanted; });
}

/// The same in a std::map.
template <class Map, class Iterator>
Iterator LeapTo(Map& map, Iterator at, unsigned long tag)
{
    if (at != map.end() && at->first < tag)
        ++at; // mostly the next one
    return at != map.end() && at->first < tag ? map.lower_bound(tag) : at;
}

/// Asks the cache for an attribute some entries ahead: a walk would wait for memory at every attribute, and
/// so waits for several at once.
template <class Entry>
void FetchAhead(const Entry* at, const Entry* end)
{
#if defined(__GNUC__)
    constexpr std::ptrdiff_t kAhead = 8; // enough to keep the memory busy
    if (end - at > kAhead) {
        if (const auto* const attribute = reinterpret_cast<const char*>(at[kAhead].attribute)) {
            __builtin_prefetch(attribute);
            __builtin_prefetch(attribute + 64);
        }
    }
#else
    (void)at;
    (void)end;
#endif
}

/// Looks at the entries of a map, which must not change meanwhile; also by a range-based for.
class AttributeWalk
{
public:
    explicit AttributeWalk(const AttributeMap& map)
        : m_At(map.m_Entries.Data()), m_End(map.m_Entries.End()), m_pMap(map.m_pMap.get())
    {
        if (m_pMap)
            m_InMap = m_pMap->begin();
    }

    bool AtEnd() const { return m_pMap ? m_InMap == m_pMap->end() : m_At == m_End; }
    unsigned long Tag() const { return m_pMap ? m_InMap->first : m_At->tag; }
    CKivDSDicomAttribute* Attribute() const { return m_pMap ? m_InMap->second : m_At->attribute; }

    void Next()
    {
        if (m_pMap) {
            ++m_InMap;
        } else {
            FetchAhead(m_At, m_End);
            ++m_At;
        }
    }

    /// Leaps to the first entry that is not below a tag, if it lies ahead, and gives the attribute of that
    /// tag; null when it is not held.
    CKivDSDicomAttribute* AttributeOf(unsigned long tag)
    {
        if (m_pMap) {
            m_InMap = LeapTo(*m_pMap, m_InMap, tag);
        } else {
            m_At = LeapTo(m_At, m_End, tag);
            FetchAhead(m_At, m_End);
        }
        return !AtEnd() && Tag() == tag ? Attribute() : nullptr;
    }

    /// Moves a position on to the next entry of the array, where its own entry still has its place. False,
    /// with nothing changed, when it has not, or there is none: AttributeMap::Next knows more.
    static bool Step(const AttributeMap& map, AttributeMap::Position& position)
    {
        const AttributeMap::Entry* const first = map.m_Entries.Data();
        const std::size_t next = position.index + 1;
        if (next >= map.m_Entries.Size() || first[position.index].tag != position.entry.tag)
            return false;
        position = {first[next], next};
        FetchAhead(first + next, map.m_Entries.End());
        return true;
    }

    struct Sentinel
    {
    };
    AttributeWalk begin() const { return *this; }
    Sentinel end() const { return {}; }
    AttributeMap::Entry operator*() const { return {Tag(), Attribute()}; }
    bool operator!=(Sentinel) const { return !AtEnd(); }
    AttributeWalk& operator++()
    {
        Next();
        return *this;
    }

private:
    const AttributeMap::Entry* m_At;
    const AttributeMap::Entry* m_End;
    const AttributeMap::Map* m_pMap;
    AttributeMap::Map::const_iterator m_InMap{};
};

/// Changes the entries of a map in one pass. Until its end nobody else may change the map; who looks at it
/// meanwhile does not see what is added; once something was dropped, entries may show twice or as null.
class AttributeEdit
{
public:
    /// `steps`: how many steps the operation takes anyway. A map whose array had far more to move than that
    /// is a std::map afterwards.
    AttributeEdit(AttributeMap& map, std::size_t steps)
        : m_Map(map), m_Entries(map.m_Entries), m_nSteps(steps), m_pMap(map.m_pMap.get())
    {
        if (m_pMap)
            m_InMap = m_pMap->begin();
    }
    ~AttributeEdit();
    AttributeEdit(const AttributeEdit&) = delete;
    AttributeEdit& operator=(const AttributeEdit&) = delete;

    AttributeMap& Map() const { return m_Map; }
    bool AtEnd() const { return m_pMap ? m_InMap == m_pMap->end() : m_nRead == m_Entries.Size(); }
    unsigned long Tag() const { return m_pMap ? m_InMap->first : m_Entries.Data()[m_nRead].tag; }
    CKivDSDicomAttribute* Attribute() const
    {
        return m_pMap ? m_InMap->second : m_Entries.Data()[m_nRead].attribute;
    }

    void Keep()
    {
        if (m_pMap)
            ++m_InMap;
        else
            KeepUpTo(m_nRead + 1);
    }

    /// Deletes the current attribute, and its entry.
    void Drop()
    {
        delete Attribute();
        if (m_pMap) {
            m_InMap = m_pMap->erase(m_InMap);
        } else {
            m_Entries.DropIndex();
            m_Entries.Data()[m_nRead++].attribute = nullptr;
        }
    }

    /// Keeps the entries below a tag, which must lie ahead; whether the current one is that tag's then.
    bool LeapTo(unsigned long tag)
    {
        if (m_pMap) {
            m_InMap = kivds::LeapTo(*m_pMap, m_InMap, tag);
        } else {
            AttributeMap::Entry* const first = m_Entries.Data();
            AttributeMap::Entry* const found = kivds::LeapTo(first + m_nRead, m_Entries.End(), tag);
            KeepUpTo(static_cast<std::size_t>(found - first));
        }
        return !AtEnd() && Tag() == tag;
    }

    /// Stores an attribute under a tag that LeapTo has gone to, in place of what is held there. May throw;
    /// then it is not stored, and what was done before stays.
    void Put(unsigned long tag, std::unique_ptr<CKivDSDicomAttribute> attribute);

private:
    void KeepUpTo(std::size_t end)
    {
        AttributeMap::Entry* const first = m_Entries.Data();
        if (m_nKept == m_nRead) {
            m_nKept = end;
        } else {
            m_nMoved += end - m_nRead;
            for (; m_nRead < end; ++m_nRead)
                first[m_nKept++] = first[m_nRead];
        }
        m_nRead = end;
        FetchAhead(first + end, m_Entries.End());
    }

    AttributeMap& m_Map;
    AttributeArray& m_Entries;
    std::vector<AttributeMap::Entry> m_Added; // go into the array at the end, for which there is room
    std::size_t m_nRead = 0;
    std::size_t m_nKept = 0; // of those read, at the front
    std::size_t m_nMoved = 0;
    std::size_t m_nSteps;
    AttributeMap::Map* m_pMap;
    AttributeMap::Map::iterator m_InMap{};
};

} // namespace kivds
