// What an attribute remembers while it gathers values from many others: how many records its array has room
// for, and an index of the values by their contents. With it one more value costs the same whether three or
// thirty thousand are held; without it (a few values, or no memory for it) the attribute compares them one by
// one.
#pragma once

#include "foundation/AttributeValue.h"

#include <cstdint>
#include <vector>

namespace kivds {

class GatheredValues
{
public:
    /// From this many values on an index pays.
    static constexpr int kWorthwhile = 16;

    int Capacity() const noexcept { return m_nCapacity; }
    void SetCapacity(int capacity) noexcept { m_nCapacity = capacity; }

    /// Enters the values from the last one entered up to `count`. False when there is no memory for it: the
    /// index is then empty, and the values must be compared one by one.
    bool Index(const SKivAGAttributeValue* values, int count) noexcept;
    /// Whether a value equal to `value` has been entered; `values` are the records that the index was made
    /// from.
    bool Contains(const SKivAGAttributeValue* values, const SKivAGAttributeValue& value) const noexcept;

private:
    /// A place of the table: a value's hash and the position of its record; negative: empty.
    struct SSlot
    {
        std::uint32_t m_nHash = 0;
        int m_nPosition = -1;
    };

    std::size_t FindSlot(std::uint32_t hash, const SKivAGAttributeValue* values,
                         const SKivAGAttributeValue& value) const noexcept;
    void Grow(std::size_t size);

    int m_nCapacity = 0;
    int m_nIndexed = 0;
    std::vector<SSlot> m_Slots; // a power of two, at most half full; collisions go to the next free slot
    std::size_t m_nUsed = 0;
};

} // namespace kivds
