#include "platform/CKivIPPScopeCollectionC.h"

#include "platform/standin/Coverage.h"
#include "platform/standin/Support.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

using namespace kivds::standin;

CKivIPPScopeCollectionC::CKivIPPScopeCollectionC() = default;
CKivIPPScopeCollectionC::~CKivIPPScopeCollectionC() = default;

void CKivIPPScopeCollectionC::Clear()
{
    m_Elements.clear();
    m_ItemTypes.clear();
}

bool CKivIPPScopeCollectionC::Initialize(int levels)
{
    Clear();
    if (levels < 1 || levels > kMaxLevels)
        return false;
    return Guard(false, [&] {
        m_ItemTypes.resize(static_cast<std::size_t>(levels));
        return true;
    });
}

int CKivIPPScopeCollectionC::GetLevels() const
{
    return static_cast<int>(m_ItemTypes.size());
}

bool CKivIPPScopeCollectionC::SetScopeItemType(int level, const _GUID& type)
{
    if (level < 0 || level >= GetLevels())
        return false;
    _GUID& held = m_ItemTypes[static_cast<std::size_t>(level)];
    if (!m_Elements.empty() && !kivds::SameGuid(held, type))
        return false;
    held = type;
    return true;
}

const _GUID& CKivIPPScopeCollectionC::GetScopeItemType(int level) const
{
    return level >= 0 && level < GetLevels() ? m_ItemTypes[static_cast<std::size_t>(level)] : kNoType;
}

/// A new copy of `element`; throws when it cannot be made.
CKivIPPScopeCollectionC::ElementPtr CKivIPPScopeCollectionC::CopyElement(const CKivIPPScopeElementC& element)
{
    auto copy = std::make_unique<CKivIPPScopeElementC>();
    if (!copy->InitializeFromScope(&element))
        throw std::bad_alloc();
    return copy;
}

bool CKivIPPScopeCollectionC::InitializeFromScope(const CKivIPPScopeC* scope)
{
    const auto* const collection = dynamic_cast<const CKivIPPScopeCollectionC*>(scope);
    const bool known = collection != nullptr || dynamic_cast<const CKivIPPScopeElementC*>(scope) != nullptr;
    const bool copied = known && Guard(false, [&] {
                            std::vector<_GUID> itemTypes;
                            for (int level = 0; level < scope->GetLevels(); ++level)
                                itemTypes.push_back(scope->GetScopeItemType(level));
                            std::vector<ElementPtr> elements;
                            for (const CKivIPPScopeElementC* const element : Elements(*scope))
                                elements.push_back(CopyElement(*element));
                            m_ItemTypes.swap(itemTypes);
                            m_Elements.swap(elements);
                            return true;
                        });
    if (!copied)
        Clear();
    else if (collection != nullptr && kivds::SameGuid(GetType(), kNoType))
        SetType(collection->GetType());
    return copied;
}

bool CKivIPPScopeCollectionC::AddScope(const CKivIPPScopeC* scope)
{
    if (scope == nullptr || !SameLevels(*this, *scope))
        return false;
    return Guard(false, [&] {
        std::vector<ElementPtr> added;
        for (const CKivIPPScopeElementC* const element : Elements(*scope)) {
            const auto covers = [&](const ElementPtr& held) { return element->IsIncluded(held.get()); };
            if (!element->IsEmpty() && std::none_of(m_Elements.begin(), m_Elements.end(), covers))
                added.push_back(CopyElement(*element));
        }
        m_Elements.reserve(m_Elements.size() + added.size());
        std::move(added.begin(), added.end(), std::back_inserter(m_Elements));
        return true;
    });
}

bool CKivIPPScopeCollectionC::AddScopeElement(const CKivIPPScopeElementC* element)
{
    if (element == nullptr || element->GetLevels() == 0 || !SameLevels(*this, *element))
        return false;
    return Guard(false, [&] {
        m_Elements.push_back(CopyElement(*element));
        return true;
    });
}

int CKivIPPScopeCollectionC::GetNumberOfScopeElements() const
{
    return static_cast<int>(m_Elements.size());
}

const CKivIPPScopeElementC* CKivIPPScopeCollectionC::GetScopeElement(int index) const
{
    return index >= 0 && index < GetNumberOfScopeElements()
               ? m_Elements[static_cast<std::size_t>(index)].get()
               : nullptr;
}

// A collection's fields:
//
//    24  int32  number n of levels, 0 to 16
//    28  16 n   for each level: _GUID item type
//    +0  int32  number of elements
//    +4         for each element: its own stream
bool CKivIPPScopeCollectionC::Serialize(char* buffer, int* size) const
{
    if (size == nullptr)
        return false;
    StreamWriter writer(buffer, StreamKind::Collection, GetType());
    writer.Count(m_ItemTypes.size());
    for (const _GUID& type : m_ItemTypes)
        writer.Guid(type);
    writer.Count(m_Elements.size());
    for (const auto& element : m_Elements)
        writer.Nested(*element);
    return writer.Finish(size);
}

bool CKivIPPScopeCollectionC::Deserialize(const char* buffer, int* size)
{
    return Deserialize(buffer, DeclaredLength(buffer), size);
}

bool CKivIPPScopeCollectionC::Deserialize(const char* buffer, int length, int* size)
{
    Clear();
    if (size == nullptr)
        return false;
    *size = 0;
    StreamReader reader(buffer, length, StreamKind::Collection);
    const bool read = Guard(false, [&] {
        const std::size_t levels = reader.Count(16);
        if (levels > kMaxLevels)
            return false;
        for (std::size_t i = 0; i < levels; ++i)
            m_ItemTypes.push_back(reader.Guid());
        const std::size_t number = reader.Count(4);
        for (std::size_t i = 0; i < number; ++i) {
            auto element = std::make_unique<CKivIPPScopeElementC>();
            if (!reader.Nested(*element) || levels == 0 || !SameLevels(*this, *element))
                return false;
            m_Elements.push_back(std::move(element));
        }
        return reader.AtEnd();
    });
    if (!read) {
        Clear();
        return false;
    }
    SetType(reader.Type());
    *size = reader.Total();
    return true;
}

bool CKivIPPScopeCollectionC::Dump() const
{
    return true;
}
