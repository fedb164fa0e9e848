// What users of the other toolkits write for what these lack: gathering a series, and the complete collection
// of a frame. Written once over the toolkits' own operations.
#pragma once

#include "bench/peers/Workload.h"

#include <map>
#include <unordered_set>

namespace kivds::peers {

/// The different values of each tag of a series, by their text or bytes; it borrows these. Images come with
/// the same tags in the same order, so each is looked for beside the one before.
template <class Source>
class Gatherer
{
public:
    struct Entry
    {
        const Source* m_pFirst; // the element that came first
        std::string_view m_First;
        std::vector<std::string_view> m_Others;
        std::unordered_set<std::string_view> m_Held; // in use once there are others
    };
    using Entries = std::map<std::uint32_t, Entry>;

    void StartImage() { m_At = m_Entries.begin(); }

    void Add(std::uint32_t tag, const Source& source, std::string_view value)
    {
        if (m_At == m_Entries.end() || m_At->first != tag) {
            m_At = m_Entries.lower_bound(tag);
            if (m_At == m_Entries.end() || m_At->first != tag)
                m_At = m_Entries.emplace_hint(m_At, tag, Entry{&source, value, {}, {}});
        }
        Entry& entry = (m_At++)->second;
        if (value == entry.m_First)
            return;
        if (entry.m_Held.insert(value).second)
            entry.m_Others.push_back(value);
    }

    const Entries& Gathered() const { return m_Entries; }

    /// All values of an entry as one value field, backslashes between them.
    static std::string Joined(const Entry& entry)
    {
        std::size_t size = entry.m_First.size();
        for (const std::string_view value : entry.m_Others)
            size += value.size() + 1;
        std::string joined;
        joined.reserve(size + 1);
        joined = entry.m_First;
        for (const std::string_view value : entry.m_Others) {
            joined += '\\';
            joined += value;
        }
        return joined;
    }

private:
    Entries m_Entries;
    typename Entries::iterator m_At = m_Entries.begin();
};

/// A value without the pad that makes its length even (PS3.5 6.2).
inline std::string_view Unpadded(std::string_view field)
{
    if (!field.empty() && (field.back() == ' ' || field.back() == '\0'))
        field.remove_suffix(1);
    return field;
}

/// An enhanced multi-frame object as a user holds it: what all frames share, and a set a frame.
template <class Toolkit>
class SharedAndOwn
{
public:
    using Set = typename Toolkit::Set;

    SharedAndOwn(Set shared, std::vector<Set> own) : m_Shared(std::move(shared)), m_Own(std::move(own)) {}

    Set Complete(std::size_t frame)
    {
        Set complete = Toolkit::Copy(m_Shared);
        Toolkit::Overlay(complete, m_Own[frame]);
        return complete;
    }

private:
    Set m_Shared;
    std::vector<Set> m_Own;
};

} // namespace kivds::peers
