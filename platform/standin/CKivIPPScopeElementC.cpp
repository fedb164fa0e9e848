#include "platform/CKivIPPScopeElementC.h"

#include "platform/CKivIPPScopeCollectionC.h"
#include "platform/CKivIPPScopeItemFactory.h"
#include "platform/standin/Coverage.h"
#include "platform/standin/Support.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

using namespace kivds::standin;

CKivIPPScopeElementC::CKivIPPScopeElementC() = default;
CKivIPPScopeElementC::~CKivIPPScopeElementC() = default;

bool CKivIPPScopeElementC::Initialize(int levels)
{
    m_Levels.clear();
    if (levels < 1 || levels > kMaxLevels)
        return false;
    return Guard(false, [&] {
        m_Levels.resize(static_cast<std::size_t>(levels));
        return true;
    });
}

int CKivIPPScopeElementC::GetLevels() const
{
    return static_cast<int>(m_Levels.size());
}
bool CKivIPPScopeElementC::HasLevel(int level) const
{
    return level >= 0 && level < GetLevels();
}

bool CKivIPPScopeElementC::SetScopeItemType(int level, const _GUID& type)
{
    if (!HasLevel(level))
        return false;
    SLevel& held = m_Levels[static_cast<std::size_t>(level)];
    if (!held.m_Items.empty() && !kivds::SameGuid(held.m_ItemType, type))
        return false;
    held.m_ItemType = type;
    return true;
}

const _GUID& CKivIPPScopeElementC::GetScopeItemType(int level) const
{
    return HasLevel(level) ? m_Levels[static_cast<std::size_t>(level)].m_ItemType : kNoType;
}

std::vector<CKivIPPScopeElementC::SLevel> CKivIPPScopeElementC::CopyLevels(const std::vector<SLevel>& levels)
{
    std::vector<SLevel> copies(levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        copies[i].m_ItemType = levels[i].m_ItemType;
        copies[i].m_Items.reserve(levels[i].m_Items.size());
        for (const auto& item : levels[i].m_Items)
            copies[i].m_Items.push_back(CopyItem(*item));
    }
    return copies;
}

bool CKivIPPScopeElementC::InitializeFromScope(const CKivIPPScopeC* scope)
{
    const auto* source = dynamic_cast<const CKivIPPScopeElementC*>(scope);
    const auto* const collection = dynamic_cast<const CKivIPPScopeCollectionC*>(scope);
    if (collection != nullptr && collection->GetNumberOfScopeElements() == 1)
        source = collection->GetScopeElement(0);
    const bool copied = source != nullptr && Guard(false, [&] {
                            m_Levels = CopyLevels(source->m_Levels);
                            return true;
                        });
    if (!copied)
        m_Levels.clear();
    else if (kivds::SameGuid(GetType(), kNoType))
        SetType(source->GetType());
    return copied;
}

bool CKivIPPScopeElementC::AddScope(const CKivIPPScopeC* scope)
{
    if (scope == nullptr || !SameLevels(*this, *scope))
        return false;
    return Guard(false, [&] {
        // The smallest element that covers both has all their items at each level. It will do when it covers
        // nothing that neither of them does.
        std::vector<SLevel> joined = CopyLevels(m_Levels);
        CKivIPPScopeElementC added;
        CKivIPPScopeCollectionC both;
        if (!both.InitializeFromScope(this) || !both.AddScope(scope))
            return false;
        for (std::size_t i = 0; i < m_Levels.size(); ++i) {
            const int level = static_cast<int>(i);
            Runs runs;
            for (const CKivIPPScopeElementC* const element : Elements(*scope)) {
                const Runs more = element->IsEmpty() ? Runs() : LevelRuns(*element, level);
                runs.insert(runs.end(), more.begin(), more.end());
            }
            Normalise(runs);
            for (const Covered& run : Distinct(runs, LevelRuns(*this, level)))
                joined[i].m_Items.push_back(MakeItem(run));
        }
        added.m_Levels.swap(joined);
        if (!added.IsIncluded(&both))
            return false;
        m_Levels.swap(added.m_Levels);
        return true;
    });
}

bool CKivIPPScopeElementC::AddItem(int level, CKivIPPScopeItemC* item, bool copy)
{
    return AddItems(level, 1, &item, copy);
}

bool CKivIPPScopeElementC::AddItems(int level, int count, CKivIPPScopeItemC** items, bool copy)
{
    if (!HasLevel(level) || count < 0 || items == nullptr)
        return false;
    SLevel& held = m_Levels[static_cast<std::size_t>(level)];
    for (int i = 0; i < count; ++i)
        if (items[i] == nullptr || !kivds::SameGuid(items[i]->GetType(), held.m_ItemType))
            return false;
    return Guard(false, [&] {
        const std::size_t total = held.m_Items.size() + static_cast<std::size_t>(count);
        std::vector<std::unique_ptr<CKivIPPScopeItemC>> added;
        added.reserve(static_cast<std::size_t>(count));
        if (total > held.m_Items.capacity())
            held.m_Items.reserve(std::max(total, 2 * held.m_Items.capacity()));
        for (int i = 0; copy && i < count; ++i)
            added.push_back(CopyItem(*items[i]));
        for (int i = 0; !copy && i < count; ++i) // nothing fails any more, so ownership passes whole
            added.emplace_back(items[i]);
        std::move(added.begin(), added.end(), std::back_inserter(held.m_Items));
        return true;
    });
}

bool CKivIPPScopeElementC::GetItem(int level, CKivIPPScopeItemC*& item, bool copy) const
{
    item = GetScopeItem(level, copy);
    return item != nullptr;
}

CKivIPPScopeItemC* CKivIPPScopeElementC::GetScopeItem(int level, bool copy) const
{
    if (GetNumberOfItems(level) == 0)
        return nullptr;
    CKivIPPScopeItemC* const item = m_Levels[static_cast<std::size_t>(level)].m_Items.front().get();
    return copy ? Guard<CKivIPPScopeItemC*>(nullptr, [&] { return item->Copy(); }) : item;
}

int CKivIPPScopeElementC::GetNumberOfItems(int level) const
{
    return HasLevel(level) ? static_cast<int>(m_Levels[static_cast<std::size_t>(level)].m_Items.size()) : 0;
}

const CKivIPPScopeItemC* CKivIPPScopeElementC::GetItemPtr(int level, int index) const
{
    if (index < 0 || index >= GetNumberOfItems(level))
        return nullptr;
    return m_Levels[static_cast<std::size_t>(level)].m_Items[static_cast<std::size_t>(index)].get();
}

// An element's fields:
//
//    24  int32  number of levels, 0 to 16
//    28         for each level:
//        _GUID    item type
//        int32    number of items
//        ...      for each item: its own stream
bool CKivIPPScopeElementC::Serialize(char* buffer, int* size) const
{
    if (size == nullptr)
        return false;
    StreamWriter writer(buffer, StreamKind::Element, GetType());
    writer.Count(m_Levels.size());
    for (const SLevel& level : m_Levels) {
        writer.Guid(level.m_ItemType);
        writer.Count(level.m_Items.size());
        for (const auto& item : level.m_Items)
            writer.Nested(*item);
    }
    return writer.Finish(size);
}

bool CKivIPPScopeElementC::Deserialize(const char* buffer, int* size)
{
    return Deserialize(buffer, DeclaredLength(buffer), size);
}

bool CKivIPPScopeElementC::Deserialize(const char* buffer, int length, int* size)
{
    m_Levels.clear();
    if (size == nullptr)
        return false;
    *size = 0;
    StreamReader reader(buffer, length, StreamKind::Element);
    const bool read = Guard(false, [&] {
        const std::size_t number = reader.Count(20);
        if (number > kMaxLevels)
            return false;
        std::vector<SLevel> levels(number);
        for (SLevel& level : levels) {
            level.m_ItemType = reader.Guid();
            const std::size_t items = reader.Count(4);
            for (std::size_t i = 0; i < items; ++i) {
                if (g_pItemFactory == nullptr)
                    return false;
                std::unique_ptr<CKivIPPScopeItemC> item(g_pItemFactory->Create(level.m_ItemType));
                if (item == nullptr || !reader.Nested(*item) ||
                    !kivds::SameGuid(item->GetType(), level.m_ItemType))
                    return false;
                level.m_Items.push_back(std::move(item));
            }
        }
        if (!reader.AtEnd())
            return false;
        m_Levels.swap(levels);
        return true;
    });
    if (!read)
        return false;
    SetType(reader.Type());
    *size = reader.Total();
    return true;
}

bool CKivIPPScopeElementC::Dump() const
{
    return true;
}
