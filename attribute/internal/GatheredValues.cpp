#include "attribute/internal/GatheredValues.h"

#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace kivds {

namespace {

std::uint32_t HashOf(const SKivAGAttributeValue& value) noexcept
{
    const std::int64_t bytes = value.pData ? ByteSize(value.eType, value.nCount) : 0;
    const std::string_view contents(value.pData, bytes > 0 ? static_cast<std::size_t>(bytes) : 0);
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(contents));
}

} // namespace

// The slot of an equal value, or the free one where it would go. The table is never full.
std::size_t GatheredValues::FindSlot(std::uint32_t hash, const SKivAGAttributeValue* values,
                                     const SKivAGAttributeValue& value) const noexcept
{
    const std::size_t mask = m_Slots.size() - 1;
    std::size_t at = hash & mask;
    for (; m_Slots[at].m_nPosition >= 0; at = (at + 1) & mask) {
        if (m_Slots[at].m_nHash == hash && values[m_Slots[at].m_nPosition] == value)
            break;
    }
    return at;
}

void GatheredValues::Grow(std::size_t size)
{
    std::vector<SSlot> former(size);
    former.swap(m_Slots);
    const std::size_t mask = size - 1;
    for (const SSlot& slot : former) {
        if (slot.m_nPosition < 0)
            continue;
        std::size_t at = slot.m_nHash & mask;
        while (m_Slots[at].m_nPosition >= 0)
            at = (at + 1) & mask;
        m_Slots[at] = slot;
    }
}

bool GatheredValues::Index(const SKivAGAttributeValue* values, int count) noexcept
{
    // No report: without the index the caller does the same work more slowly.
    const bool indexed = Operation(L"GatheredValues::Index").Guard(nullptr, [&] {
        for (; m_nIndexed < count; ++m_nIndexed) {
            if (m_nUsed * 2 >= m_Slots.size())
                Grow(std::max<std::size_t>(m_Slots.size() * 2, std::size_t{4} * kWorthwhile));
            const std::uint32_t hash = HashOf(values[m_nIndexed]);
            SSlot& slot = m_Slots[FindSlot(hash, values, values[m_nIndexed])];
            if (slot.m_nPosition < 0) { // a value that is repeated needs one entry
                slot = {hash, m_nIndexed};
                ++m_nUsed;
            }
        }
        return true;
    });
    if (!indexed) {
        m_Slots.clear();
        m_nUsed = 0;
        m_nIndexed = 0;
    }
    return indexed;
}

bool GatheredValues::Contains(const SKivAGAttributeValue* values,
                              const SKivAGAttributeValue& value) const noexcept
{
    return !m_Slots.empty() && m_Slots[FindSlot(HashOf(value), values, value)].m_nPosition >= 0;
}

} // namespace kivds
