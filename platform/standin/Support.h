// What the stand-ins share: the frame of their byte streams, and the guard that keeps exceptions inside.
// Nothing here owns memory; an object belongs to one thread. Every stream of a stand-in begins alike, and
// holds nothing behind its last field:
//
//     0  int32  total length of the stream in bytes, this field included
//     4  int32  StreamKind
//     8  _GUID  the object's type: Data1 (4 bytes), Data2 and Data3 (2 each), Data4 (8)
//    24         the fields of that kind
#pragma once

#include "platform/Guid.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"

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
class StreamWriter
{
public:
    StreamWriter(char* buffer, StreamKind kind, const _GUID& type) : m_pBuffer(buffer), m_Writer(buffer)
    {
        Int32(0); // the total, known in Finish
        Int32(static_cast<std::int32_t>(kind));
        Guid(type);
    }

    void Int32(std::int32_t value) { m_Writer.I32(value); }
    void Count(std::size_t count)
    {
        m_bOk = m_bOk && count <= INT_MAX;
        Int32(m_bOk ? static_cast<std::int32_t>(count) : 0);
    }
    void Guid(const _GUID& guid)
    {
        m_Writer.U32(guid.Data1);
        m_Writer.U32(std::uint32_t{guid.Data3} << 16 | guid.Data2); // two fields of 16 bits
        m_Writer.Bytes(guid.Data4, sizeof guid.Data4);
    }
    void Text(std::string_view text) { m_Writer.Text(text); }
    /// Lets `object` write its own stream here.
    template <class Object>
    void Nested(const Object& object)
    {
        int size = 0;
        m_bOk = m_bOk && object.Serialize(m_Writer.Position(), &size);
        m_Writer.Advance(size);
    }

    /// Completes the stream and sets `*size`, 0 on failure.
    bool Finish(int* size)
    {
        *size = m_bOk ? StreamLength(m_Writer.Written()) : 0;
        ByteWriter(m_pBuffer).I32(*size);
        return *size > 0;
    }

private:
    char* m_pBuffer;
    ByteWriter m_Writer;
    bool m_bOk = true;
};

/// Reads one stream within the length given and within the total that the stream declares. Failures stick:
/// from then on every field reads as zero.
class StreamReader
{
public:
    StreamReader(const char* buffer, int length, StreamKind kind)
        : m_Reader(buffer, buffer ? length : 0), m_nTotal(m_Reader.PeekI32())
    {
        m_Reader = m_Reader.Part(m_nTotal);
        m_Reader.U32(); // the total itself
        if (Int32() != static_cast<std::int32_t>(kind))
            m_Reader.Fail();
        m_Type = Guid();
    }

    bool Ok() const { return m_Reader.Ok(); }
    /// Whether the stream was sound and has been read whole.
    bool AtEnd() const { return Ok() && m_Reader.Left() == 0; }
    int Total() const { return m_nTotal; }
    const _GUID& Type() const { return m_Type; }

    std::int32_t Int32() { return m_Reader.I32(); }
    /// A count of things that take at least `smallest` bytes each; fails when they cannot all be there.
    std::size_t Count(int smallest)
    {
        const std::int32_t count = Int32();
        if (count < 0 || count > m_Reader.Left() / smallest)
            m_Reader.Fail();
        return Ok() ? static_cast<std::size_t>(count) : 0;
    }
    _GUID Guid()
    {
        _GUID guid = {};
        guid.Data1 = m_Reader.U32();
        const std::uint32_t data2And3 = m_Reader.U32();
        guid.Data2 = static_cast<std::uint16_t>(data2And3 & 0xFFFF);
        guid.Data3 = static_cast<std::uint16_t>(data2And3 >> 16);
        if (const char* const bytes = m_Reader.Take(sizeof guid.Data4))
            std::memcpy(guid.Data4, bytes, sizeof guid.Data4);
        return guid;
    }
    /// A text, lent by the buffer.
    std::string_view Text()
    {
        const std::size_t length = Count(1);
        const char* const text = m_Reader.Take(static_cast<std::int64_t>(length));
        return text ? std::string_view(text, length) : std::string_view();
    }
    /// Lets `object` read its own stream here. It must take at least its total's bytes, so that a count of
    /// nested streams that passed Count never makes more objects than there are bytes for.
    template <class Object>
    bool Nested(Object& object)
    {
        int size = 0;
        const bool read =
            Ok() && object.Deserialize(m_Reader.Position(), m_Reader.Left(), &size) && size >= 4;
        return m_Reader.Take(read ? size : -1) != nullptr;
    }

private:
    ByteReader m_Reader;
    int m_nTotal;
    _GUID m_Type = {};
};

/// The length that an unbounded read keeps to: the total that the stream at `buffer` declares; 0 for null.
inline int DeclaredLength(const char* buffer)
{
    return buffer ? ByteReader::Unbounded(buffer).PeekI32() : 0;
}

} // namespace kivds::standin
