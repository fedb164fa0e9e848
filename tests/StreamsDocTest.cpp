// Holds docs/streams.md to its word. A fenced block that opens with "```stream NAME" is what the library
// writes for the object NAME below, and is read back. "```stream NAME CURRENT" is an old form: read, it gives
// the object whose stream is the block CURRENT. A row "| `NAME` | OFFSET | `BYTES` | reports |" says what a
// reader refuses.
#include "tests/support/Build.h"
#include "tests/support/Hex.h"
#include "tests/support/Reports.h"

#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <regex>

namespace kivds::test {

namespace {

constexpr int kVersion = 7;

using Attr = CKivDSDicomAttribute;
using Part = CKivDSBaseDicomAttributeCollection;
using Facade = CKivDSDicomAttributeCollection;

/// A single value; its operations are protected ones of the attribute.
class Value : private Attr
{
public:
    Value() = default;
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() override { FreeAttributeValue(m_Value); }

    bool Set(const SKivAGAttributeValue& value) { return ::CopyAttributeValue(&value, &m_Value, -1); }
    bool Serialize(char* buffer, int& size) const override { return Attr::Serialize(m_Value, buffer, size); }
    bool Deserialize(const char* buffer, int, int& size)
    {
        return Attr::Deserialize(buffer, size, m_Value, false);
    }

private:
    SKivAGAttributeValue m_Value = {};
};

struct Versions : CKivDSScriptVersion
{
    bool Serialize(char* buffer, int& size) const
    {
        size = GetSerializationSize();
        return !buffer || CKivDSScriptVersion::Serialize(buffer) == size;
    }
    bool Deserialize(const char* buffer, int length, int& size)
    {
        size = CKivDSScriptVersion::Deserialize(buffer, length);
        return size > 0;
    }
};

struct Example
{
    /// What the library writes for the example's object; empty for old forms, which are only read.
    std::function<std::string()> m_Write;
    /// Reads bytes, and gives what the object read then writes; nothing when the bytes are refused.
    std::function<std::optional<std::string>(const std::string&)> m_Rewrite;
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
std::string Written(Object& object)
{
    int size = -1;
    EXPECT_TRUE(object.Serialize(nullptr, Out<Object>(size)));
    std::string stream(static_cast<std::size_t>(size), '?');
    EXPECT_TRUE(object.Serialize(stream.data(), Out<Object>(size)));
    return stream;
}

/// A form that is only read; `form` are the arguments of Deserialize that select it.
template <class Object, class... Form>
Example Read(Form... form)
{
    return {nullptr, [=](const std::string& bytes) -> std::optional<std::string> {
                const auto length = static_cast<int>(bytes.size());
                Object object;
                int size = -1;
                if (!object.Deserialize(bytes.data(), length, Out<Object>(size), form...))
                    return std::nullopt;
                EXPECT_EQ(size, length);
                return Written(object);
            }};
}

/// The object that `fill` makes of a new one.
template <class Object, class Fill, class... Form>
Example Of(Fill fill, Form... form)
{
    Example example = Read<Object>(form...);
    example.m_Write = [=] {
        Object object;
        fill(object);
        return Written(object);
    };
    return example;
}

Example OfAttribute(AttributePtr (*make)())
{
    return Of<Attr>([=](Attr& attribute) { attribute = *make(); }, true, kVersion);
}

void AddRows(Facade& collection)
{
    Add(collection, Numbers(0x00280010, {512}));
}

void AddFrames(CKivDSEnhancedMFCollection& enhanced)
{
    Facade regular;
    Facade frame;
    AddRows(regular);
    EXPECT_TRUE(enhanced.AddCollection(&regular, false));
    EXPECT_TRUE(enhanced.AddMFCollection(&frame, true)); // nothing of its own
    Add(frame, Numbers(0x00209156, {2}));
    EXPECT_TRUE(enhanced.AddMFCollection(&frame, true));
}

const std::map<std::string, Example>& Examples()
{
    using Codes = CKivDSCodeSequenceAttribute;
    static const std::map<std::string, Example> examples = {
        {"value", Of<Value>([](Value& value) {
             unsigned short elements[] = {512, 480};
             EXPECT_TRUE(value.Set({2, eAttrUShort, -1, reinterpret_cast<char*>(elements)}));
         })},
        {"attribute", OfAttribute([] { return Numbers(0x00280010, {512}); })},
        {"attribute-texts", OfAttribute([] { return Attribute(0x00080008, CS, "ORIGINAL\\PRIMARY"); })},
        {"attribute-empty",
         Of<Attr>([](Attr& name) { name.InitEmpty(0x00100010, PN, false); }, true, kVersion)},
        {"attribute-per-frame", OfAttribute([] {
             return PerFrame(0x00540010, {1, 1, 2});
         })},
        {"attribute-old", Read<Attr>(true, 0)},
        {"attribute-oldest", Read<Attr>(false, 0)},
        {"frame-range", Of<CKivIPPRangeIDC>([](CKivIPPRangeIDC& range) {
             const int frames[] = {5, 6, 7, 2};
             EXPECT_TRUE(range.SetFrames(4, frames));
         })},
        {"scope-collection", Of<CKivIPPScopeCollectionC>([](CKivIPPScopeCollectionC& collection) {
             CKivIPPScopeElementC element;
             CKivIPPScopeItemC image;
             image.SetType(g_ImageUID);
             element.SetType(g_ScopeElementType);
             collection.SetType(g_ScopeCollectionType);
             EXPECT_TRUE(image.SetUID("1.2.3", 1, 4));
             EXPECT_TRUE(element.Initialize(1) && element.SetScopeItemType(0, g_ImageUID));
             EXPECT_TRUE(element.AddItem(0, &image, true));
             EXPECT_TRUE(collection.Initialize(1) && collection.SetScopeItemType(0, g_ImageUID));
             EXPECT_TRUE(collection.AddScopeElement(&element));
         })},
        {"code-sequence",
         Of<Codes>([](Codes& codes) { codes = Codes(0x00082218, Code("T-04000", "SRT", "Breast")); }, true,
                   kVersion)},
        {"part", Of<Part>([](Part& part) { AddRows(part); }, true)},
        {"part-old", Read<Part>(true)},
        {"collection", Of<Facade>([](Facade& collection) { AddRows(collection); }, true)},
        {"collection-oldest", Read<Facade>(false)},
        {"collection-per-frame", Of<Facade>(
                                     [](Facade& collection) {
                                         Add(collection, Attribute(0x00280008, IS, "3"));
                                         Add(collection, PerFrame(0x00540010, {1, 1, 2}));
                                     },
                                     true)},
        {"collection-old", Read<Facade>(true)},
        {"enhanced", Of<CKivDSEnhancedMFCollection>(AddFrames, true)},
        {"collection-enhanced", Of<Facade>(
                                    [](Facade& collection) {
                                        auto* const enhanced = new CKivDSEnhancedMFCollection;
                                        const Facade holder(enhanced);
                                        Facade regular;
                                        EXPECT_TRUE(enhanced->AddCollection(&regular, false));
                                        collection = holder;
                                    },
                                    true)},
        {"script-versions", Of<Versions>([](Versions& versions) {
             EXPECT_TRUE(versions.AddVersion("MR", 4) && versions.AddVersion("CT", 9));
             EXPECT_TRUE(versions.AddVersion("CT", 3));
         })},
        {"script-versions-old", Read<Versions>()},
    };
    return examples;
}

// ---------------------------------------------------------------------------------------------------------------
// what the document says

struct Refusal
{
    std::string m_Example;
    std::size_t m_nOffset;
    std::string m_Bytes;
    std::vector<std::pair<std::wstring, std::wstring>> m_Reports; // function, message
};

struct Document
{
    std::map<std::string, std::string> m_Blocks;  // name, bytes
    std::map<std::string, std::string> m_Current; // old form's name, name of the form it is rewritten as
    std::vector<Refusal> m_Refusals;
};

std::wstring Wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

Document ReadDocument()
{
    Document document;
    std::ifstream file(KIVDS_DOCS_DIR "/streams.md");
    const std::regex fence("```stream ([a-z-]+) ?([a-z-]*)");
    const std::regex row("\\| `([a-z-]+)` \\| (\\d+) \\| `([^`]+)` \\|(.*)\\|");
    const std::regex report("`([A-Za-z:]+)` `\"([^\"]+)\"`");
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
        if (std::regex_match(line, match, fence)) {
            const std::string name = match[1];
            document.m_Current[name] = match[2].length() > 0 ? match[2].str() : name;
            std::string hex;
            while (std::getline(file, line) && line != "```")
                hex += line + '\n';
            EXPECT_TRUE(document.m_Blocks.emplace(name, Bytes(hex)).second) << name << " stands there twice";
        } else if (std::regex_match(line, match, row)) {
            Refusal refusal = {match[1], std::stoul(match[2]), Bytes(match[3].str()), {}};
            const std::string reports = match[4];
            for (std::sregex_iterator i(reports.begin(), reports.end(), report), end; i != end; ++i)
                refusal.m_Reports.emplace_back(Wide((*i)[1]), Wide((*i)[2]));
            document.m_Refusals.push_back(refusal);
        }
    }
    return document;
}

class StreamsDocTest : public ReportTest
{
protected:
    Document m_Document = ReadDocument();
};

} // namespace

TEST_F(StreamsDocTest, EveryExampleIsWrittenAndReadAsItStandsThere)
{
    for (const auto& [name, example] : Examples())
        EXPECT_EQ(m_Document.m_Blocks.count(name), 1U) << name;
    for (const auto& [name, bytes] : m_Document.m_Blocks) {
        SCOPED_TRACE(name);
        const auto found = Examples().find(name);
        ASSERT_NE(found, Examples().end());
        const auto& [write, rewrite] = found->second;
        const std::string& current = m_Document.m_Current[name];
        EXPECT_EQ(current == name, write != nullptr);
        if (write) {
            EXPECT_EQ(Hex(write()), Hex(bytes));
        }
        const std::optional<std::string> rewritten = rewrite(bytes);
        ASSERT_TRUE(rewritten);
        EXPECT_EQ(Hex(*rewritten), Hex(m_Document.m_Blocks[current]));
    }
}

TEST_F(StreamsDocTest, EveryRefusalIsReportedAsItStandsThere)
{
    EXPECT_GT(m_Document.m_Refusals.size(), 20U);
    for (const Refusal& refusal : m_Document.m_Refusals) {
        SCOPED_TRACE(refusal.m_Example + ", " + std::to_string(refusal.m_nOffset) + ": " +
                     Hex(refusal.m_Bytes));
        std::string bytes = m_Document.m_Blocks.at(refusal.m_Example);
        ASSERT_LE(refusal.m_nOffset + refusal.m_Bytes.size(), bytes.size());
        bytes.replace(refusal.m_nOffset, refusal.m_Bytes.size(), refusal.m_Bytes);
        EXPECT_FALSE(Examples().at(refusal.m_Example).m_Rewrite(bytes));
        for (const auto& [function, message] : refusal.m_Reports)
            Claim(function.c_str(), message.c_str());
        EXPECT_TRUE(NothingReported());
        ClaimAll();
    }
}

} // namespace kivds::test
