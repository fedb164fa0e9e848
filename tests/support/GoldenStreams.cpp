#include "tests/support/GoldenStreams.h"

#include "KivDSDataU.h"
#include "tests/support/FailingNew.h"
#include "tests/support/Hex.h"
#include "tests/support/Versions.h"

#include <fstream>
#include <regex>
#include <stdexcept>
#include <type_traits>

namespace kivds::test {

namespace {

std::wstring Wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// A single value; its operations are protected ones of the attribute.
struct Value : CKivDSDicomAttribute
{
    ~Value() override { FreeAttributeValue(m_Value); }
    bool Serialize(char* buffer, int& size) const override
    {
        return CKivDSDicomAttribute::Serialize(m_Value, buffer, size);
    }
    bool Deserialize(const char* buffer, int& size) // which trusts the stream
    {
        return CKivDSDicomAttribute::Deserialize(buffer, size, m_Value, false);
    }
    bool Deserialize(const char* buffer, int, int& size) { return Deserialize(buffer, size); }
    SKivAGAttributeValue m_Value = {};
};

/// `size` as an object of this class takes it.
template <class Object>
decltype(auto) Out(int& size)
{
    if constexpr (std::is_base_of_v<CKivIPPSerialFormC, Object>)
        return &size;
    else
        return (size);
}

template <class Object>
std::optional<std::string> Written(Object& object)
{
    int size = 0;
    if (!object.Serialize(nullptr, Out<Object>(size)) || size <= 0)
        return std::nullopt;
    std::string stream(static_cast<std::size_t>(size), '?');
    int written = 0;
    if (!object.Serialize(stream.data(), Out<Object>(written)))
        return std::nullopt;
    return written == size ? std::move(stream) : throw std::logic_error("another length than announced");
}

template <class Object>
void Empty(Object& object)
{
    if constexpr (std::is_base_of_v<CKivDSDicomAttribute, Object>)
        object.Clean();
    else if constexpr (std::is_base_of_v<CKivDSDicomAttributeCollection, Object>)
        object.RemoveAllAttributes();
}

/// Calls the form of Deserialize that the class has; the unbounded one when `length` is negative.
template <class Object>
bool Read(Object& object, const char* bytes, int length, int& size, StreamForm form)
{
    const auto read = [&](auto... told) {
        return length >= 0 ? object.Deserialize(bytes, length, Out<Object>(size), told...)
                           : object.Deserialize(bytes, Out<Object>(size), told...);
    };
    if constexpr (std::is_base_of_v<Value, Object>)
        return read();
    else if constexpr (std::is_base_of_v<CKivDSDicomAttribute, Object>)
        return read(form.m_bVersioned, form.m_nVersion);
    else if constexpr (std::is_base_of_v<CKivDSDicomAttributeCollection, Object>)
        return read(form.m_bVersioned);
    else
        return read();
}

template <class Object>
StreamReading ReadInto(StreamForm form, const char* bytes, int length, bool writeRefused)
{
    StreamReading reading;
    Object object;
    {
        const Allocations watched;
        reading.m_bRead = Read(object, bytes, length, reading.m_nSize, form);
        reading.m_nAllocated = watched.Bytes();
    }
    if (reading.m_bRead || writeRefused)
        reading.m_Written = Written(object);
    if (!reading.m_bRead && writeRefused) {
        Object fresh;
        reading.m_bAsNew = reading.m_Written.value_or("").size() == Written(fresh).value_or("").size();
    }
    Empty(object);
    return reading;
}

/// In the order of StreamKind.
constexpr struct
{
    const char* m_Prefix; // of the names
    StreamReading (*m_Read)(StreamForm form, const char* bytes, int length, bool writeRefused);
} kKinds[] = {{"value", ReadInto<Value>},
              {"attribute", ReadInto<CKivDSDicomAttribute>},
              {"code-sequence", ReadInto<CKivDSCodeSequenceAttribute>},
              {"part", ReadInto<CKivDSBaseDicomAttributeCollection>},
              {"collection", ReadInto<CKivDSDicomAttributeCollection>},
              {"enhanced", ReadInto<CKivDSEnhancedMFCollection>},
              {"script-versions", ReadInto<Versions>},
              {"frame-range", ReadInto<CKivIPPRangeIDC>},
              {"scope-item", ReadInto<CKivIPPScopeItemC>},
              {"scope-element", ReadInto<CKivIPPScopeElementC>},
              {"scope-collection", ReadInto<CKivIPPScopeCollectionC>}};

// ---- the documents

GoldenStream Stream(const std::string& name, const std::string& current, const std::string& hex)
{
    const auto is = [&](const char* word) { return (name + '-').find(word) != std::string::npos; };
    const StreamForm form = {!is("-oldest-") && !is("-unflagged-"), is("-old-") || is("-oldest-") ? 0 : 7};
    for (int kind = 0; kind < static_cast<int>(std::size(kKinds)); ++kind) {
        if (name.rfind(kKinds[kind].m_Prefix, 0) == 0)
            return {name, Bytes(hex), current.empty() ? name : current, static_cast<StreamKind>(kind), form};
    }
    throw std::invalid_argument("a stream of no kind: " + name);
}

void ReadDocument(const char* path, GoldenStreams& all)
{
    std::ifstream file(path);
    const std::regex fence("```stream ([a-z0-9-]+) ?([a-z0-9-]*)");
    const std::regex row("\\| `([a-z-]+)` \\| (\\d+) \\| `([^`]+)` \\|(.*)\\|");
    const std::regex report("`([A-Za-z:]+)` `\"([^\"]+)\"`");
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
        if (std::regex_match(line, match, fence)) {
            const std::string name = match[1], current = match[2];
            std::string hex;
            while (std::getline(file, line) && line != "```")
                hex += line + '\n';
            all.m_Streams.push_back(Stream(name, current, hex));
        } else if (std::regex_match(line, match, row)) {
            StreamRefusal refusal = {match[1], std::stoul(match[2]), Bytes(match[3].str()), {}};
            const std::string reports = match[4];
            for (std::sregex_iterator i(reports.begin(), reports.end(), report), end; i != end; ++i)
                refusal.m_Reports.emplace_back(Wide((*i)[1]), Wide((*i)[2]));
            all.m_Refusals.push_back(std::move(refusal));
        }
    }
}

} // namespace

const GoldenStream& GoldenStreams::Named(std::string_view name) const
{
    for (const GoldenStream& stream : m_Streams) {
        if (stream.m_Name == name)
            return stream;
    }
    throw std::out_of_range("no stream " + std::string(name));
}

const GoldenStreams& AllGoldenStreams()
{
    static const GoldenStreams all = [] {
        GoldenStreams read;
        ReadDocument(KIVDS_DOCS_DIR "/streams.md", read);
        ReadDocument(KIVDS_DOCS_DIR "/../tests/streams.md", read);
        return read;
    }();
    return all;
}

StreamReading ReadStream(StreamKind kind, StreamForm form, const char* bytes, int length, bool writeRefused)
{
    return kKinds[static_cast<int>(kind)].m_Read(form, bytes, length, writeRefused);
}

} // namespace kivds::test
