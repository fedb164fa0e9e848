// Heap blocks of bytes, as value records own them: array new, array delete, no exceptions.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace kivds {

using Block = std::unique_ptr<char[]>;

/// A new block whose bytes are not set; null when `bytes` is negative or cannot be had.
inline Block NewBlock(std::int64_t bytes) noexcept
{
    if (bytes < 0 || static_cast<std::uint64_t>(bytes) > static_cast<std::uint64_t>(PTRDIFF_MAX))
        return nullptr;
    return Block(new (std::nothrow) char[static_cast<std::size_t>(bytes)]);
}

/// memcpy that may be given null when there is nothing to copy.
inline void CopyBytes(char* destination, const void* source, std::int64_t bytes) noexcept
{
    if (bytes > 0)
        std::memcpy(destination, source, static_cast<std::size_t>(bytes));
}

/// Copies `count` elements of `size` bytes between the machine's byte order and the streams' little-endian
/// order; the same reordering serves both directions.
inline void CopyLittleEndian(char* destination, const char* source, int count, int size) noexcept
{
    const std::uint16_t one = 1;
    char lowByte = 0;
    std::memcpy(&lowByte, &one, 1);
    CopyBytes(destination, source, std::int64_t{count} * size);
    if (lowByte == 1)
        return;
    for (int i = 0; i < count; ++i, destination += size)
        std::reverse(destination, destination + size);
}

} // namespace kivds
