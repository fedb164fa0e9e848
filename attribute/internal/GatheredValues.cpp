#include "attribute/internal/GatheredValues.h"

#include "foundation/internal/ElementTypes.h"

#include <functional>
#include <string_view>

namespace kivds {

namespace {

std::size_t HashOf(const SKivAGAttributeValue& value)
{
    const std::int64_t bytes = value.pData ? ByteSize(value.eType, value.nCount) : 0;
    const std::string_view contents(value.pData, bytes > 0 ? static_cast<std::size_t>(bytes) : 0);
    return std::hash<std::string_view>()(contents) ^ static_cast<std::size_t>(value.eType);
}

} // namespace

bool GatheredValues::Index(const SKivAGAttributeValue* values, int count) noexcept
{
    try {
        for (; m_nIndexed < count; ++m_nIndexed) {
            if (!Contains(values, values[m_nIndexed])) // values that are repeated need one entry
                m_ByHash.emplace(HashOf(values[m_nIndexed]), m_nIndexed);
        }
        return true;
    } catch (...) { // no report: the caller does the same work without the index
        m_ByHash.clear();
        m_nIndexed = 0;
        return false;
    }
}

bool GatheredValues::Contains(const SKivAGAttributeValue* values, const SKivAGAttributeValue& value) const
{
    const auto [first, last] = m_ByHash.equal_range(HashOf(value));
    for (auto entry = first; entry != last; ++entry) {
        if (values[entry->second] == value)
            return true;
    }
    return false;
}

} // namespace kivds
