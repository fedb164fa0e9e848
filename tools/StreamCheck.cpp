#include "tools/StreamCheck.h"

#include "attribute/CKivDSDicomAttributeFactory.h"
#include "collection/CKivDSBaseDicomAttributeCollection.h"
#include "tools/Numbers.h"
#include "tools/Reports.h"
#include "tools/Text.h"

#include <fmt/core.h>

#include <cstdint>
#include <memory>

namespace kivds::tool {
namespace {

class StreamWalk
{
public:
    explicit StreamWalk(std::string_view stream) : m_Stream(stream) {}

    StreamFault Run()
    {
        if (ReadCollection(0) && m_nAt != m_Stream.size())
            Fail(m_nAt, fmt::format("{} more after the end of the stream",
                                    Counted(static_cast<long long>(m_Stream.size() - m_nAt), "byte")));
        return m_Fault;
    }

private:
    bool ReadCollection(int depth);
    bool ReadPart();
    bool ReadRecord(int version, int number, int count);
    bool ReadEnhanced(int depth);

    bool Fail(std::size_t offset, std::string text)
    {
        m_Fault = {offset, std::move(text)};
        return false;
    }

    bool Has(std::size_t bytes, const char* what)
    {
        return m_Stream.size() - m_nAt >= bytes ||
               Fail(m_nAt, fmt::format("the stream ends within {}", what));
    }

    bool ReadInt32(std::int32_t& number, const char* what)
    {
        if (!Has(4, what))
            return false;
        number = Int32At(m_Stream, m_nAt);
        m_nAt += 4;
        return true;
    }

    /// A count of what follows, each of at least `size` bytes.
    bool ReadCount(std::int32_t& count, std::size_t size, const char* what)
    {
        if (!ReadInt32(count, what))
            return false;
        const std::size_t left = m_Stream.size() - m_nAt;
        if (count < 0 || static_cast<std::size_t>(count) > left / size)
            return Fail(m_nAt - 4, fmt::format("{} is {}, with {} bytes left", what, count, left));
        return true;
    }

    /// A total that stands at the end of what it counts.
    bool ReadTrailingTotal(std::size_t start, const char* what)
    {
        std::int32_t total = 0;
        return ReadInt32(total, what) && CheckTotal(m_nAt - 4, total, m_nAt - start, what);
    }

    bool CheckTotal(std::size_t offset, std::int32_t total, std::size_t length, const char* what)
    {
        return (total >= 0 && static_cast<std::size_t>(total) == length) ||
               Fail(offset, fmt::format("{} is {}, it should be {}", what, total, length));
    }

    const std::string_view m_Stream;
    std::size_t m_nAt = 0;
    StreamFault m_Fault;
};

bool StreamWalk::ReadCollection(int depth)
{
    const std::size_t start = m_nAt;
    if (!Has(1, "a collection's header"))
        return false;
    const int first = static_cast<unsigned char>(m_Stream[m_nAt++]);
    int kind = first;
    const bool hasVersion = first > 1; // the oldest form begins with its kind
    if (first > Collection::ms_nVersion)
        return Fail(start,
                    fmt::format("version {} is not known; {} is", first, int{Collection::ms_nVersion}));
    if (hasVersion) {
        if (!Has(1, "a collection's header"))
            return false;
        kind = static_cast<unsigned char>(m_Stream[m_nAt++]);
    }
    if (kind > 2)
        return Fail(m_nAt - 1, fmt::format("kind {} is none of 0, 1 and 2", kind));
    const bool isRead = kind == 2 ? ReadEnhanced(depth + 1) : ReadPart() && (kind == 0 || ReadPart());
    return isRead && (!hasVersion || ReadTrailingTotal(start, "a collection's total"));
}

bool StreamWalk::ReadPart()
{
    const std::size_t start = m_nAt;
    std::int32_t version = 0, total = 0, count = 0;
    if (!ReadInt32(version, "a part's version"))
        return false;
    const bool hasVersion = version < 0;
    if (hasVersion) {
        if (version < -CKivDSBaseDicomAttributeCollection::ms_nAttrVersion)
            return Fail(start, fmt::format("a part's version is {}", version));
        if (!ReadInt32(total, "a part's total") || !ReadCount(count, 4, "a part's number of attributes"))
            return false;
    } else { // the oldest form begins with the count
        m_nAt = start;
        if (!ReadCount(count, 4, "a part's number of attributes"))
            return false;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        if (!ReadRecord(hasVersion ? -version : 0, i + 1, count))
            return false;
    }
    return !hasVersion || CheckTotal(start + 4, total, m_nAt - start, "a part's total");
}

bool StreamWalk::ReadRecord(int version, int number, int count)
{
    std::int32_t type = 0, length = 0;
    if (version > 0 && !ReadInt32(type, "an attribute's type"))
        return false;
    const std::size_t start = m_nAt;
    const auto room = static_cast<int>(m_Stream.size() - start);
    const Reports reports;
    const std::unique_ptr<Attribute> attribute(g_DicomAttributeFactory.CreateDicomAttribute(type));
    if (!attribute) { // readers pass over types that they do not know
        if (!ReadInt32(length, "an attribute's length"))
            return false;
        if (length < 4 || length > room)
            return Fail(start, fmt::format("the length of an attribute of type {} is {}", type, length));
    } else if (!attribute->Deserialize(m_Stream.data() + start, room, length, true, version) || length <= 0) {
        return Fail(start, fmt::format("attribute {} of {}, {}: {}", number, count,
                                       TagText(TagOf(*attribute)), reports.First()));
    }
    m_nAt = start + static_cast<std::size_t>(length);
    return true;
}

bool StreamWalk::ReadEnhanced(int depth)
{
    constexpr int kDeepest = 64; // as the library's readers
    const std::size_t start = m_nAt;
    if (depth > kDeepest)
        return Fail(start, "enhanced multi-frame collections are nested too deeply");
    std::int32_t frames = 0;
    if (!ReadCollection(depth) || !ReadCount(frames, 1, "the number of per-frame collections"))
        return false;
    for (std::int32_t i = 0; i < frames; ++i) {
        if (!ReadCollection(depth))
            return false;
    }
    return ReadTrailingTotal(start, "the total of an enhanced multi-frame collection");
}

} // namespace

StreamFault FindFault(std::string_view stream)
{
    return StreamWalk(stream).Run();
}

} // namespace kivds::tool
