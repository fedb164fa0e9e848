// The one reader of byte streams: little-endian on every host, bounded, and sticky. A read past the limit
// gives zero (or null) and fails the reader for good, so that a record is read field by field and Ok() is
// asked once, at its end. It borrows the bytes.
#pragma once

#include <cstdint>
#include <limits>

namespace kivds {

class ByteReader
{
public:
    /// Reads at most `length` bytes at `data`; a negative length reads none.
    ByteReader(const char* data, int length) noexcept
        : m_Start(data), m_Data(data), m_Left(length > 0 ? length : 0)
    {
    }

    /// A reader for the forms that are given no length: only the totals that the stream declares bound it.
    static ByteReader Unbounded(const char* data) noexcept
    {
        ByteReader reader(data, std::numeric_limits<int>::max());
        reader.m_nAllowance = std::numeric_limits<std::int64_t>::max();
        return reader;
    }

    bool Ok() const noexcept { return m_Left >= 0; }
    int Left() const noexcept { return m_Left > 0 ? m_Left : 0; }
    int Consumed() const noexcept { return static_cast<int>(m_Data - m_Start); }
    const char* Position() const noexcept { return m_Data; }

    bool Fail() noexcept
    {
        m_Left = -1;
        return false;
    }

    /// The next `bytes` bytes, where they lie; null, and the reader fails, when so many are not left.
    const char* Take(std::int64_t bytes) noexcept
    {
        if (bytes < 0 || bytes > m_Left) {
            Fail();
            return nullptr;
        }
        const char* const here = m_Data;
        m_Data += bytes;
        m_Left -= static_cast<int>(bytes);
        return here;
    }

    std::uint8_t U8() noexcept
    {
        const char* p = Take(1);
        return p ? static_cast<std::uint8_t>(*p) : std::uint8_t{0};
    }

    std::uint32_t U32() noexcept
    {
        const char* p = Take(4);
        return p ? Load(p) : 0;
    }

    std::int32_t I32() noexcept { return static_cast<std::int32_t>(U32()); }

    /// The next signed 32-bit field, left in place; 0 when it is not there.
    std::int32_t PeekI32() const noexcept
    {
        return m_Left >= 4 ? static_cast<std::int32_t>(Load(m_Data)) : 0;
    }

    /// Enters a stream that is nested in the one being read; false, and the reader fails, when that is deeper
    /// than any sound stream goes. Readers made by Part from here on are as deep.
    bool Deeper() noexcept { return ++m_Depth <= kMaxDepth || Fail(); }
    void Shallower() noexcept { --m_Depth; }

    /// Bytes consumed that nothing has been paid with.
    std::int64_t Unpaid() const noexcept { return Consumed() - m_nPaid; }

    /// Pays for `memory` bytes of objects with `bytes` bytes of the stream, each of which accounts for a few
    /// bytes of memory, and for the rest with an allowance that a whole stream has once; false, and the
    /// reader fails, when that is used up.
    bool Pay(std::int64_t bytes, std::int64_t memory) noexcept
    {
        constexpr std::int64_t memoryPerByte = 16;
        m_nPaid += bytes;
        m_nAllowance -= memory > memoryPerByte * bytes ? memory - memoryPerByte * bytes : 0;
        return m_nAllowance >= 0 || Fail();
    }

    /// A reader of the next `length` bytes alone, which narrows this one's limit and never widens it: when so
    /// many are not left, or `length` is negative, it has failed from the start. This reader stays where it
    /// is.
    ByteReader Part(int length) const noexcept
    {
        ByteReader part(m_Data, length);
        part.m_Depth = m_Depth;
        if (length < 0 || length > m_Left)
            part.Fail();
        return part;
    }

private:
    static std::uint32_t Load(const char* p) noexcept
    {
        const auto* u = reinterpret_cast<const unsigned char*>(p);
        return u[0] | std::uint32_t{u[1]} << 8 | std::uint32_t{u[2]} << 16 | std::uint32_t{u[3]} << 24;
    }

    static constexpr int kMaxDepth = 64;

    const char* m_Start;
    const char* m_Data;
    int m_Left; // negative: the reader has failed
    int m_Depth = 0;
    std::int64_t m_nPaid = 0;
    std::int64_t m_nAllowance = std::int64_t{48} * 1024;
};

} // namespace kivds
