// The streams of docs/streams.md and tests/streams.md, and reading them. A name says what a stream is: its
// kind, then perhaps how it is read (see there).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivds::test {

enum class StreamKind
{
    Value,
    Attribute,
    CodeSequence,
    Part,
    Collection,
    Enhanced,
    ScriptVersions,
    FrameRange,
    ScopeItem,
    ScopeElement,
    ScopeCollection
};

/// What a reader is told beside the bytes; kinds without versions pass over it.
struct StreamForm
{
    bool m_bVersioned = true;
    int m_nVersion = 7;
};

struct GoldenStream
{
    std::string m_Name;
    std::string m_Bytes;
    std::string m_Current; ///< the name of the stream that is written once this one has been read
    StreamKind m_Kind;
    StreamForm m_Form;
};

struct StreamRefusal
{
    std::string m_Name;
    std::size_t m_nOffset;
    std::string m_Bytes;
    std::vector<std::pair<std::wstring, std::wstring>> m_Reports; ///< function, message
};

struct GoldenStreams
{
    std::vector<GoldenStream> m_Streams;
    std::vector<StreamRefusal> m_Refusals;

    /// Throws when there is none of that name.
    const GoldenStream& Named(std::string_view name) const;
};

/// Both documents.
const GoldenStreams& AllGoldenStreams();

/// What came of bytes that were read into a new object.
struct StreamReading
{
    bool m_bRead = false;
    int m_nSize = 0;
    std::optional<std::string> m_Written; ///< nothing when the object cannot be written
    bool m_bAsNew = false;                ///< it is written with as many bytes as a new object
    long long m_nAllocated = 0;           ///< bytes, while reading
};

/// Reads `length` bytes, or trusts the stream when `length` is negative (and a single value, always). Then
/// writes, empties and deletes the object; one that refused the bytes is only written when `writeRefused`.
StreamReading ReadStream(StreamKind kind, StreamForm form, const char* bytes, int length,
                         bool writeRefused = false);

} // namespace kivds::test
