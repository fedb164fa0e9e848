// What the stand-ins share: bounded reading and writing of their byte streams, and the guard that keeps
// exceptions inside. Nothing here owns memory; an object belongs to one thread. Integers are little-endian on
// every host. Every stream of a stand-in begins alike, and holds nothing behind its last field:
//
//     0  int32  total length of the stream in bytes, this field included
//     4  int32  StreamKind
//     8  _GUID  the object's type: Data1 (4 bytes), Data2 and Data3 (2 each), Data4 (8)
//    24         the fields of that kind
#pragma once

#include "platform/Guid.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kivds::standin {

/// Runs `body` and returns its result, or `failed` when it throws: no exception leaves an operation.
template <class Result, class Body>
Result Guard(Result failed, Body body) noexcept
{
    try {
        return body();
    } catch (...) {
        return failed;
    }
}

enum class StreamKind : std::int32_t
{
    Item = 0x314D5449,       // the bytes "ITM1"
    Range = 0x31474E52,      // "RNG1"
    Element = 0x314D4C45,    // "ELM1"
    Collection = 0x314C4F43, // "COL1"
};

/// Writes a stream in one pass; with a null buffer it only counts. Failures stick and show in Finish.
class ByteWriter
{
public:
    ByteWriter(char* buffer, StreamKind kind, const _GUID& type) : m_pBuffer(buffer)
    {
        Int32(0); // the total, known in Finish
        Int32(static_cast<std::int32_t>(kind));
        Guid(type);
    }

    void Int32(std::int32_t value) { Little<4>(static_cast<std::uint32_t>(value)); }
    void Count(std::size_t count)
    {
        m_bOk = m_bOk && count <= INT_MAX;
        Int32(m_bOk ? static_cast<std::int32_t>(count) : 0);
    }
    void Guid(const _GUID& guid)
    {
        Little<4>(guid.Data1);
        Little<2>(guid.Data2);
        Little<2>(guid.Data3);
        Bytes(guid.Data4, sizeof guid.Data4);
    }
    void Text(std::string_view text)
    {
        Count(text.size());
        Bytes(text.data(), text.size());
    }
    /// Lets `object` write its own stream here.
    template <class Object>
    void Nested(const Object& object)
    {
        int size = 0;
        m_bOk = m_bOk && object.Serialize(At(), &size) && size >= 0;
        Advance(m_bOk ? static_cast<std::size_t>(size) : 0);
    }

    /// Completes the stream and sets `*size`, 0 on failure.
    bool Finish(int* size)
    {
        const std::size_t total = m_nWritten;
        m_nWritten = 0;
        Count(total);
        *size = m_bOk ? static_cast<int>(total) : 0;
        return m_bOk;
    }

private:
    char* At() const { return m_pBuffer == nullptr ? nullptr : m_pBuffer + m_nWritten; }
    void Advance(std::size_t count)
    {
        m_bOk = m_bOk && count <= INT_MAX - m_nWritten;
        m_nWritten += m_bOk ? count : 0;
    }
    void Bytes(const void* bytes, std::size_t count)
    {
        char* const at = At();
        Advance(count);
        if (m_bOk && at != nullptr && count > 0)
            std::memcpy(at, bytes, count);
    }
    template <int Size>
    void Little(std::uint32_t value)
    {
        unsigned char bytes[Size];
        for (int i = 0; i < Size; ++i)
            bytes[i] = static_cast<unsigned char>(value >> (8 * i));
        Bytes(bytes, Size);
    }

    char* m_pBuffer;
    std::size_t m_nWritten = 0; // never above INT_MAX
    bool m_bOk = true;
};

/// Reads one stream within the length given and within the total that the stream declares. Failures stick:
/// from then on every field reads as zero.
class ByteReader
{
public:
    ByteReader(const char* buffer, int length, StreamKind kind) : m_pAt(buffer)
    {
        m_bOk = buffer != nullptr && length > 0;
        m_nLeft = m_bOk ? static_cast<std::size_t>(length) : 0;
        m_nTotal = Int32();
        const std::size_t rest = m_nTotal >= 4 ? static_cast<std::size_t>(m_nTotal) - 4 : SIZE_MAX;
        m_bOk = m_bOk && rest <= m_nLeft;
        m_nLeft = m_bOk ? rest : 0;
        m_bOk = Int32() == static_cast<std::int32_t>(kind) && m_bOk;
        m_Type = Guid();
    }

    bool Ok() const { return m_bOk; }
    /// Whether the stream was sound and has been read whole.
    bool AtEnd() const { return m_bOk && m_nLeft == 0; }
    int Total() const { return m_nTotal; }
    const _GUID& Type() const { return m_Type; }

    std::int32_t Int32() { return static_cast<std::int32_t>(Little<4>()); }
    /// A count of things that take at least `smallest` bytes each; fails when they cannot all be there.
    std::size_t Count(std::size_t smallest)
    {
        const std::int32_t count = Int32();
        m_bOk = m_bOk && count >= 0 && static_cast<std::size_t>(count) <= m_nLeft / smallest;
        return m_bOk ? static_cast<std::size_t>(count) : 0;
    }
    _GUID Guid()
    {
        _GUID guid = {};
        guid.Data1 = Little<4>();
        guid.Data2 = static_cast<std::uint16_t>(Little<2>());
        guid.Data3 = static_cast<std::uint16_t>(Little<2>());
        if (const char* const bytes = Take(sizeof guid.Data4))
            std::memcpy(guid.Data4, bytes, sizeof guid.Data4);
        return guid;
    }
    /// A text, lent by the buffer.
    std::string_view Text()
    {
        const std::size_t length = Count(1);
        const char* const text = Take(length);
        return text == nullptr ? std::string_view() : std::string_view(text, length);
    }
    /// Lets `object` read its own stream here. It must take at least its total's bytes, so that a count of
    /// nested streams that passed Count never makes more objects than there are bytes for.
    template <class Object>
    bool Nested(Object& object)
    {
        int size = 0;
        m_bOk = m_bOk && object.Deserialize(m_pAt, static_cast<int>(m_nLeft), &size) && size >= 4;
        return m_bOk && Take(static_cast<std::size_t>(size)) != nullptr;
    }

private:
    const char* Take(std::size_t count)
    {
        m_bOk = m_bOk && count <= m_nLeft;
        if (!m_bOk)
            return nullptr;
        const char* const at = m_pAt;
        m_pAt += count;
        m_nLeft -= count;
        return at;
    }
    template <int Size>
    std::uint32_t Little()
    {
        std::uint32_t value = 0;
        if (const char* const bytes = Take(Size))
            for (int i = 0; i < Size; ++i)
                value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
        return value;
    }

    const char* m_pAt;
    std::size_t m_nLeft = 0;
    int m_nTotal = 0;
    _GUID m_Type = {};
    bool m_bOk = false;
};

/// The length that an unbounded read keeps to: the total that the stream at `buffer` declares; 0 for null.
inline int DeclaredLength(const char* buffer)
{
    std::uint32_t length = 0;
    for (int i = 0; buffer != nullptr && i < 4; ++i)
        length |= static_cast<std::uint32_t>(static_cast<unsigned char>(buffer[i])) << (8 * i);
    return static_cast<int>(length);
}

} // namespace kivds::standin
