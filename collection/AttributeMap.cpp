#include "collection/AttributeMap.h"

#include "attribute/CKivDSDicomAttributeFactory.h"
#include "attribute/internal/AttributeBlock.h"
#include "attribute/internal/AttributeTypes.h"
#include "attribute/internal/WholeCopy.h"
#include "collection/internal/AttributeWalk.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kivds {

namespace {

constexpr std::ptrdiff_t kMostMoved = 1024; // entries; moving them takes about as long as making a node does
constexpr std::size_t kFirstEntries = 4;
constexpr std::size_t kMostAnnounced = 65536; // entries that a mere number is enough for; more must come

/// The first entry whose tag is not below `tag`.
template <class Entries>
auto LowerBound(Entries& entries, unsigned long tag)
{
    return std::lower_bound(
        entries.begin(), entries.end(), tag,
        [](const AttributeMap::Entry& entry, unsigned long wanted) { return entry.tag < wanted; });
}

} // namespace

AttributeMap::~AttributeMap()
{
    Clear();
}

CKivDSDicomAttribute* const* AttributeMap::Find(unsigned long tag) const
{
    if (m_pMap) {
        const auto found = m_pMap->find(tag);
        return found != m_pMap->end() ? &found->second : nullptr;
    }
    const auto found = LowerBound(m_Entries, tag);
    return found != m_Entries.end() && found->tag == tag ? &found->attribute : nullptr;
}

AttributeMap::Place AttributeMap::FindPlace(unsigned long tag)
{
    if (m_pMap) {
        const std::size_t held = m_pMap->size();
        const bool atEnd = held == 0 || m_pMap->rbegin()->first < tag;
        const auto place =
            m_pMap->try_emplace(atEnd ? m_pMap->end() : m_pMap->lower_bound(tag), tag, nullptr);
        return {&place->second, m_pMap->size() > held};
    }
    if (m_Entries.empty() || m_Entries.back().tag < tag) {
        if (m_Entries.capacity() == 0)
            m_Entries.reserve(kFirstEntries);
        return {&m_Entries.emplace_back(Entry{tag, nullptr}).attribute, true};
    }
    const auto place = LowerBound(m_Entries, tag);
    if (place->tag == tag)
        return {&place->attribute, false};
    if (m_Entries.end() - place > kMostMoved && BecomesMap())
        return FindPlace(tag);
    return {&m_Entries.insert(place, {tag, nullptr})->attribute, true};
}

bool AttributeMap::Erase(unsigned long tag)
{
    if (!m_pMap) {
        const auto entry = LowerBound(m_Entries, tag);
        if (entry == m_Entries.end() || entry->tag != tag)
            return false;
        if (m_Entries.end() - entry <= kMostMoved || !BecomesMap()) {
            delete entry->attribute;
            m_Entries.erase(entry);
            return true;
        }
    }
    const auto entry = m_pMap->find(tag);
    if (entry == m_pMap->end())
        return false;
    delete entry->second;
    m_pMap->erase(entry);
    return true;
}

void AttributeMap::Clear()
{
    for (const auto [tag, attribute] : AttributeWalk(*this))
        delete attribute;
    std::vector<Entry>().swap(m_Entries);
    if (m_pMap)
        m_pMap->clear();
    m_nExpected = 0;
    AttributeBlock::LetGo(std::exchange(m_pBlock, nullptr));
}

// A block is for company: what may stay alone, and what is not plain, goes by itself.
bool AttributeMap::UsesBlock(int type, std::size_t expected) const
{
    const bool hasCompany = m_pBlock || (expected > 0 ? expected > 1 : Size() > 0);
    return type == kPlainAttribute && hasCompany;
}

std::unique_ptr<CKivDSDicomAttribute> AttributeMap::NewCopy(const CKivDSDicomAttribute& attribute,
                                                            std::size_t expected)
{
    if (!UsesBlock(attribute.GetType(), expected))
        return std::unique_ptr<CKivDSDicomAttribute>(g_DicomAttributeFactory.CreateDicomAttribute(attribute));
    std::unique_ptr<CKivDSDicomAttribute> copy(new (m_pBlock, expected) BlockAttribute(attribute));
    return copy && IsWhole(*copy, attribute) ? std::move(copy) : nullptr;
}

std::unique_ptr<CKivDSDicomAttribute> AttributeMap::NewAttribute(int type, std::size_t expected)
{
    return std::unique_ptr<CKivDSDicomAttribute>(UsesBlock(type, expected)
                                                     ? new (m_pBlock, expected) BlockAttribute
                                                     : g_DicomAttributeFactory.CreateDicomAttribute(type));
}

std::unique_ptr<CKivDSDicomAttribute> AttributeMap::NewElement()
{
    if (m_nExpected > 0)
        return NewAttribute(kPlainAttribute, m_nExpected--);
    return std::unique_ptr<CKivDSDicomAttribute>(
        g_DicomAttributeFactory.CreateDicomAttribute(kPlainAttribute));
}

void AttributeMap::Expect(std::size_t count)
{
    GrowFor(std::min(count, kMostAnnounced));
    m_nExpected = count;
}

// Room for so many entries more, and for as many again where entries have come before: however often it is
// called, each entry is moved a few times.
void AttributeMap::GrowFor(std::size_t count)
{
    const std::size_t needed = m_Entries.size() + count;
    if (!m_pMap && needed > m_Entries.capacity())
        m_Entries.reserve(std::max(needed, m_Entries.capacity() * 2));
}

void AttributeMap::Reserve(std::size_t count)
{
    if (!m_pMap)
        m_Entries.reserve(count);
}

bool AttributeMap::First(Position& position) const
{
    position.index = 0;
    if (Size() == 0)
        return false;
    position.entry = *AttributeWalk(*this);
    return true;
}

bool AttributeMap::Next(Position& position) const
{
    const unsigned long tag = position.entry.tag;
    if (m_pMap) {
        const auto next = m_pMap->upper_bound(tag);
        if (next == m_pMap->end())
            return false;
        position.entry = {next->first, next->second};
        return true;
    }
    const Entry* const first = m_Entries.data();
    const Entry* const end = first + m_Entries.size();
    const bool inPlace = position.index < m_Entries.size() && first[position.index].tag == tag;
    const Entry* const next =
        inPlace ? first + position.index + 1
                : std::upper_bound(first, end, tag, [](unsigned long passed, const Entry& entry) {
                      return passed < entry.tag;
                  });
    if (next == end)
        return false;
    position = {*next, static_cast<std::size_t>(next - first)};
    FetchAhead(next, end);
    return true;
}

AttributeMap::Map& AttributeMap::AsMap()
{
    if (!m_pMap) {
        auto map = std::make_unique<Map>();
        for (const Entry& entry : m_Entries)
            map->emplace_hint(map->end(), entry.tag, entry.attribute);
        m_pMap = std::move(map);
        std::vector<Entry>().swap(m_Entries);
    }
    return *m_pMap;
}

// As AsMap; false when there is no memory for it.
bool AttributeMap::BecomesMap() noexcept
{
    try {
        AsMap();
        return true;
    } catch (...) {
        return false;
    }
}

AttributeEdit::~AttributeEdit()
{
    if (m_pMap)
        return;
    KeepUpTo(m_Entries.size());
    m_Entries.resize(m_nKept + m_Added.size());
    auto kept = m_Entries.begin() + static_cast<std::ptrdiff_t>(m_nKept);
    auto to = m_Entries.end();
    while (!m_Added.empty()) { // from the back, where there is room
        if (kept != m_Entries.begin() && m_Added.back().tag < kept[-1].tag) {
            *--to = *--kept;
            ++m_nMoved;
        } else {
            *--to = m_Added.back();
            m_Added.pop_back();
        }
    }
    if (m_nMoved / static_cast<std::size_t>(kMostMoved) > m_nSteps)
        m_Map.BecomesMap();
}

void AttributeEdit::Put(unsigned long tag, std::unique_ptr<CKivDSDicomAttribute> attribute)
{
    if (!AtEnd() && Tag() == tag) {
        CKivDSDicomAttribute*& held = m_pMap ? m_InMap->second : m_Entries[m_nRead].attribute;
        delete held;
        held = attribute.release();
    } else if (m_pMap) {
        m_pMap->emplace_hint(m_InMap, tag, attribute.get());
        (void)attribute.release(); // the map's now
    } else {
        m_Map.GrowFor(m_Added.size() + 1);
        if (m_Added.empty())
            m_Added.reserve(m_nSteps);
        m_Added.push_back({tag, attribute.get()});
        (void)attribute.release(); // the map's at the end
    }
}

} // namespace kivds
