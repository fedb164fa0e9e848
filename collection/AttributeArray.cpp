#include "collection/AttributeArray.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace kivds {

namespace {

using Entry = AttributeArray::Entry;

constexpr std::size_t kFirstEntries = 4;
constexpr std::size_t kFewestIndexed = 16; // fewer are as quickly found by halving
constexpr std::size_t kMostIndexed = 65535;
constexpr std::size_t kSlotsAnEntry = 2; // so that every search soon comes to a free one

/// Slots of an array with room for so many entries.
std::size_t SlotsOf(std::size_t capacity)
{
    return capacity >= kFewestIndexed && capacity <= kMostIndexed ? capacity * kSlotsAnEntry : 0;
}

} // namespace

const Entry* AttributeArray::LowerBound(unsigned long tag) const noexcept
{
    return std::lower_bound(Data(), End(), tag,
                            [](const Entry& entry, unsigned long wanted) { return entry.tag < wanted; });
}

Entry* AttributeArray::LowerBound(unsigned long tag) noexcept
{
    return Data() + (static_cast<const AttributeArray*>(this)->LowerBound(tag) - Data());
}

const Entry* AttributeArray::Find(unsigned long tag) const noexcept
{
    if (m_nSlots > 0) {
        const Slot* const slots = Slots();
        std::uint32_t slot = FirstSlot(tag);
        for (int i = 0; i <= kMostSteps && slots[slot] != 0; ++i, slot = NextSlot(slot)) {
            const Entry& entry = m_pEntries[slots[slot] - 1];
            if (entry.tag == tag)
                return &entry;
        }
        return nullptr;
    }
    const Entry* const found = LowerBound(tag);
    return found != End() && found->tag == tag ? found : nullptr;
}

Entry* AttributeArray::Insert(const Entry* before, const Entry& entry)
{
    const std::ptrdiff_t position = before - m_pEntries;
    if (m_nSize == m_nCapacity)
        Reserve(std::max(kFirstEntries, std::size_t{m_nCapacity} * 2));
    Entry* const place = m_pEntries + position;
    if (place == End() && Append(entry.tag, entry.attribute))
        return place;
    DropIndex();
    std::copy_backward(place, End(), End() + 1);
    ++m_nSize;
    *place = entry;
    return place;
}

void AttributeArray::Erase(const Entry* place) noexcept
{
    DropIndex();
    Entry* const gap = m_pEntries + (place - m_pEntries);
    std::copy(gap + 1, End(), gap);
    --m_nSize;
}

void AttributeArray::Reserve(std::size_t count)
{
    if (count <= m_nCapacity)
        return;
    if (count > std::numeric_limits<std::uint32_t>::max() / (sizeof(Entry) + kSlotsAnEntry * sizeof(Slot)))
        throw std::bad_alloc();
    void* const memory = ::operator new(count * sizeof(Entry) + SlotsOf(count) * sizeof(Slot));
    std::uninitialized_copy(Data(), End(), static_cast<Entry*>(memory));
    const bool mayIndex = m_nSlots > 0 || m_nCapacity < kFewestIndexed;
    ::operator delete(m_pEntries);
    m_pEntries = static_cast<Entry*>(memory);
    m_nCapacity = static_cast<std::uint32_t>(count);
    DropIndex();
    if (mayIndex)
        MakeIndex();
}

void AttributeArray::Resize(std::size_t count) noexcept
{
    DropIndex();
    if (count > m_nSize)
        std::uninitialized_value_construct(End(), m_pEntries + count);
    m_nSize = static_cast<std::uint32_t>(count);
}

void AttributeArray::Clear() noexcept
{
    ::operator delete(m_pEntries);
    m_pEntries = nullptr;
    m_nSize = m_nCapacity = m_nSlots = 0;
}

void AttributeArray::MakeIndex() noexcept
{
    m_nSlots = static_cast<std::uint32_t>(SlotsOf(m_nCapacity));
    std::fill_n(Slots(), m_nSlots, Slot{0});
    for (std::uint32_t end = 1; end <= m_nSize && m_nSlots > 0; ++end)
        AddToIndex(end);
}

} // namespace kivds
