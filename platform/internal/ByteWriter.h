// The one writer of byte streams: little-endian on every host. Without a destination it only counts, so that
// one field routine a format gives both its length and its bytes. It allocates nothing and cannot fail.
#pragma once

#include "platform/internal/Blocks.h"

#include <cstdint>
#include <limits>
#include <string_view>

namespace kivds {

class ByteWriter
{
public:
    /// Writes at `destination`, which the caller made large enough; null only counts.
    explicit ByteWriter(char* destination) noexcept : m_Destination(destination) {}

    std::int64_t Written() const noexcept { return m_Written; }
    /// Where the next byte goes; null while counting.
    char* Position() const noexcept { return m_Destination ? m_Destination + m_Written : nullptr; }
    /// Passes over bytes that somebody else wrote at Position().
    void Advance(std::int64_t bytes) noexcept { m_Written += bytes; }

    void U8(std::uint8_t value) noexcept
    {
        if (m_Destination)
            *Position() = static_cast<char>(value);
        m_Written += 1;
    }

    void U32(std::uint32_t value) noexcept
    {
        if (m_Destination)
            CopyLittleEndian(Position(), reinterpret_cast<const char*>(&value), 1, 4);
        m_Written += 4;
    }

    void I32(std::int32_t value) noexcept { U32(static_cast<std::uint32_t>(value)); }

    void Bytes(const void* bytes, std::int64_t count) noexcept
    {
        if (m_Destination)
            CopyBytes(Position(), bytes, count);
        m_Written += count;
    }

    /// `count` elements of `size` bytes each, held at `elements` in the machine's byte order.
    void Elements(const char* elements, int count, int size) noexcept
    {
        if (m_Destination)
            CopyLittleEndian(Position(), elements, count, size);
        m_Written += std::int64_t{count} * size;
    }

    /// A text as the streams hold it: its length, then its characters, no NUL.
    void Text(std::string_view text) noexcept
    {
        I32(static_cast<std::int32_t>(text.size()));
        Bytes(text.data(), static_cast<std::int64_t>(text.size()));
    }

private:
    char* m_Destination;
    std::int64_t m_Written = 0;
};

/// A stream length as the public operations give it. A stream longer than an int can say has no length: 0,
/// which every writer refuses as inconsistent.
inline int StreamLength(std::int64_t bytes) noexcept
{
    return bytes > 0 && bytes <= std::numeric_limits<int>::max() ? static_cast<int>(bytes) : 0;
}

} // namespace kivds
