#include "foundation/AttributeValue.h"

#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/Blocks.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

using kivds::Operation;

int GetElementSize(tagEKivAGAttributeType type) noexcept
{
    return kivds::ElementSize(type);
}

SKivAGAttributeValue* GetNewAttributeValueArray(int n) noexcept
{
    const std::int64_t bytes = static_cast<std::int64_t>(sizeof(SKivAGAttributeValue)) * n;
    // Beyond PTRDIFF_MAX an array new throws even where it was told not to.
    constexpr std::int64_t most =
        std::min<std::int64_t>(std::numeric_limits<std::uint32_t>::max(), PTRDIFF_MAX);
    SKivAGAttributeValue* array = nullptr;
    if (n >= 0 && bytes <= most)
        array = new (std::nothrow) SKivAGAttributeValue[static_cast<std::size_t>(n)]();
    if (!array)
        Operation(L"GetNewAttributeValueArray").Report(L"Failed to allocate new attibute value");
    return array;
}

bool CopyAttributeValue(const SKivAGAttributeValue* src, SKivAGAttributeValue* dst, int elementIndex) noexcept
{
    const Operation op(L"CopyAttributeValue");
    if (!src || !dst)
        return op.Fail(L"Invalid input parameters");
    if (dst == src && elementIndex < 0)
        return true;
    const int elementSize = kivds::ElementSize(src->eType);
    if (elementSize == 0) {
        dst->pData = nullptr;
        dst->nCount = 0;
        return op.Fail(L"Empty source value ");
    }
    const int count = elementIndex < 0 ? src->nCount : 1;
    const std::int64_t bytes = kivds::ByteSize(src->eType, count);
    kivds::Block block = kivds::NewBlock(bytes);
    if (!block)
        return op.Fail(L"Failed to allocate destination buffer");
    if (src->pData)
        kivds::CopyBytes(block.get(), src->pData + kivds::ByteSize(src->eType, std::max(elementIndex, 0)),
                         bytes);
    else
        std::fill_n(block.get(), static_cast<std::size_t>(bytes), '\0');
    dst->nCount = count;
    dst->eType = src->eType;
    dst->nInSequenceIndex = src->nInSequenceIndex;
    dst->pData = block.release();
    return true;
}

bool FreeAttributeValue(SKivAGAttributeValue& value) noexcept
{
    delete[] value.pData;
    value.pData = nullptr;
    return true;
}

bool operator==(const SKivAGAttributeValue& a, const SKivAGAttributeValue& b) noexcept
{
    if (a.eType != b.eType || a.nCount != b.nCount)
        return false;
    const std::int64_t bytes = kivds::ByteSize(a.eType, a.nCount);
    if (bytes <= 0 || a.pData == b.pData)
        return true;
    return a.pData && b.pData && std::memcmp(a.pData, b.pData, static_cast<std::size_t>(bytes)) == 0;
}

bool operator!=(const SKivAGAttributeValue& a, const SKivAGAttributeValue& b) noexcept
{
    return !(a == b);
}

bool operator<(const SKivAGAttributeValue& a, const SKivAGAttributeValue& b) noexcept
{
    if (a.eType != b.eType)
        return Operation(L"operator <")
            .Fail(L"Attempt to quantitatively compare attribute values of different type", 1);
    const int n = a.pData && b.pData ? std::max(std::min(a.nCount, b.nCount), 0) : 0;
    // Blocks come from array new and the inline data area is aligned for doubles, so the casts read aligned
    // scalars.
    const int order = kivds::WithNumericType(
        a.eType,
        [&](auto* scalar) {
            using Elements = decltype(scalar);
            return CompareElements(reinterpret_cast<Elements>(a.pData), reinterpret_cast<Elements>(b.pData),
                                   n);
        },
        [&] {
            return n == 0
                       ? 0
                       : std::memcmp(a.pData, b.pData, static_cast<std::size_t>(kivds::ByteSize(a.eType, n)));
        });
    return order != 0 ? order < 0 : a.nCount < b.nCount;
}
