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

constexpr std::pair<const char*, StreamKind> kKinds[] = {
    {"value", StreamKind::Value},
    {"attribute", StreamKind::Attribute},
    {"code-sequence", StreamKind::CodeSequence},
    {"part", StreamKind::Part},
    {"collection", StreamKind::Collection},
    {"enhanced", StreamKind::Enhanced},
    {"script-versions", StreamKind::ScriptVersions},
    {"frame-range", StreamKind::FrameRange},
    {"scope-item", StreamKind::ScopeItem},
    {"scope-element", StreamKind::ScopeElement},
    {"scope-collection", StreamKind::ScopeCollection},
};

GoldenStream Stream(const std::string& name, const std::string& current, const std::string& hex)
{
    const auto has = [&](const char* word) { return (name + '-').find(word) != std::string::npos; };
    for (const auto& [prefix, kind] : kKinds) {
        if (name.rfind(prefix, 0) == 0)
            return {name,
                    Bytes(hex),
                    current.empty() ? name : current,
                    kind,
                    {!has("-oldest-") && !has("-unflagged-"), has("-old-") || has("-oldest-") ? 0 : 7}};
    }
    throw std::invalid_argument("a stream of no kind: " + name);
}

std::wstring Wide(const std::string& text)
{
    return {text.begin(), text.end()};
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

// ---- reading

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

template <class Object, class... Form>
StreamReading ReadInto(const char* bytes, int length, bool writeRefused, Form... form)
{
    StreamReading reading;
    Object object;
    {
        const Allocations watched;
        reading.m_bRead = length >= 0
                              ? object.Deserialize(bytes, length, Out<Object>(reading.m_nSize), form...)
                              : object.Deserialize(bytes, Out<Object>(reading.m_nSize), form...);
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
    const auto [versioned, version] = form;
    switch (kind) {
    case StreamKind::Attribute:
        return ReadInto<CKivDSDicomAttribute>(bytes, length, writeRefused, versioned, version);
    case StreamKind::CodeSequence:
        return ReadInto<CKivDSCodeSequenceAttribute>(bytes, length, writeRefused, versioned, version);
    case StreamKind::Part:
        return ReadInto<CKivDSBaseDicomAttributeCollection>(bytes, length, writeRefused, versioned);
    case StreamKind::Collection:
        return ReadInto<CKivDSDicomAttributeCollection>(bytes, length, writeRefused, versioned);
    case StreamKind::Enhanced:
        return ReadInto<CKivDSEnhancedMFCollection>(bytes, length, writeRefused, versioned);
    case StreamKind::ScriptVersions:
        return ReadInto<Versions>(bytes, length, writeRefused);
    case StreamKind::FrameRange:
        return ReadInto<CKivIPPRangeIDC>(bytes, length, writeRefused);
    case StreamKind::ScopeItem:
        return ReadInto<CKivIPPScopeItemC>(bytes, length, writeRefused);
    case StreamKind::ScopeElement:
        return ReadInto<CKivIPPScopeElementC>(bytes, length, writeRefused);
    case StreamKind::ScopeCollection:
        return ReadInto<CKivIPPScopeCollectionC>(bytes, length, writeRefused);
    default:
        return ReadInto<Value>(bytes, length, writeRefused);
    }
}

} // namespace kivds::test
