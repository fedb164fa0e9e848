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
constexpr std::size_t kMostIndexedAStep =
    8; // entries, so that an index does not cost more than what was done
constexpr std::size_t kMostAnnounced = 65536; // entries that a mere number is enough for; more must come

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
    const Entry* const found = m_Entries.Find(tag);
    return found ? &found->attribute : nullptr;
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
    Entry* const place = m_Entries.LowerBound(tag);
    if (place != m_Entries.End() && place->tag == tag)
        return {&place->attribute, false};
    if (m_Entries.End() - place > kMostMoved && BecomesMap())
        return FindPlace(tag);
    return {&m_Entries.Insert(place, {tag, nullptr})->attribute, true};
}

bool AttributeMap::Erase(unsigned long tag)
{
    if (!m_pMap) {
        const Entry* const entry = m_Entries.Find(tag);
        if (!entry)
            return false;
        if (m_Entries.End() - entry <= kMostMoved || !BecomesMap()) {
            delete entry->attribute;
            m_Entries.Erase(entry);
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
    m_Entries.Clear();
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
    const std::size_t expected = m_nExpected;
    if (expected > 0) {
        --m_nExpected;
        if (UsesBlock(kPlainAttribute, expected))
            return std::unique_ptr<CKivDSDicomAttribute>(new (m_pBlock, expected) BlockAttribute);
    }
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
    const std::size_t needed = m_Entries.Size() + count;
    if (!m_pMap && needed > m_Entries.Capacity())
        m_Entries.Reserve(std::max(needed, m_Entries.Capacity() * 2));
}

void AttributeMap::Reserve(std::size_t count)
{
    if (!m_pMap)
        m_Entries.Reserve(count);
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
    if (AttributeWalk::Step(*this, position))
        return true;
    const Entry* next = m_Entries.LowerBound(tag);
    if (next != m_Entries.End() && next->tag == tag)
        ++next;
    if (next == m_Entries.End())
        return false;
    position = {*next, static_cast<std::size_t>(next - m_Entries.Data())};
    return true;
}

AttributeMap::Map& AttributeMap::AsMap()
{
    if (!m_pMap) {
        auto map = std::make_unique<Map>();
        for (const auto [tag, attribute] : AttributeWalk(*this))
            map->emplace_hint(map->end(), tag, attribute);
        m_pMap = std::move(map);
        m_Entries.Clear();
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
    KeepUpTo(m_Entries.Size());
    const bool hasAll = m_nKept == m_Entries.Size();
    if (hasAll && (m_Added.empty() || m_nKept == 0 || m_Entries.Last().tag < m_Added.front().tag)) {
        for (const auto& [tag, attribute] : m_Added)
            m_Entries.Append(tag, attribute);
        return;
    }
    m_Entries.Resize(m_nKept + m_Added.size());
    AttributeMap::Entry* kept = m_Entries.Data() + m_nKept;
    AttributeMap::Entry* to = m_Entries.End();
    while (!m_Added.empty()) { // from the back, where there is room
        if (kept != m_Entries.Data() && m_Added.back().tag < kept[-1].tag) {
            *--to = *--kept;
            ++m_nMoved;
        } else {
            *--to = m_Added.back();
            m_Added.pop_back();
        }
    }
    const bool isMap = m_nMoved / static_cast<std::size_t>(kMostMoved) > m_nSteps && m_Map.BecomesMap();
    if (!isMap && m_Entries.Size() / kMostIndexedAStep <= m_nSteps)
        m_Entries.MakeIndex();
}

void AttributeEdit::Put(unsigned long tag, std::unique_ptr<CKivDSDicomAttribute> attribute)
{
    if (!AtEnd() && Tag() == tag) {
        CKivDSDicomAttribute*& held = m_pMap ? m_InMap->second : m_Entries.Data()[m_nRead].attribute;
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
