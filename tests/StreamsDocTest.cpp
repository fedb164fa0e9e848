// Holds docs/streams.md, and tests/streams.md beside it, to their word. A fenced block that opens with
// "```stream NAME" is what the library writes for the object NAME below, where there is one, and is read
// back.
// "```stream NAME CURRENT" is an old or an unusual form: read, it gives the object whose stream is the block
// CURRENT. A row "| `NAME` | OFFSET | `BYTES` | reports |" says what a reader refuses.
#include "tests/support/Build.h"
#include "tests/support/GoldenStreams.h"
#include "tests/support/Hex.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

#include <functional>
#include <set>

namespace kivds::test {

namespace {

using StreamsDocTest = ReportTest;

constexpr unsigned long kRows = 0x00280010;

std::string WrittenValue()
{
    struct Opened : CKivDSDicomAttribute
    {
        using CKivDSDicomAttribute::Serialize;
    };
    unsigned short elements[] = {512, 480};
    std::string stream(16, '?');
    int size = 0;
    EXPECT_TRUE(
        Opened().Serialize({2, eAttrUShort, -1, reinterpret_cast<char*>(elements)}, stream.data(), size));
    EXPECT_EQ(size, 16);
    return stream;
}

std::string WrittenVersions()
{
    CKivDSScriptVersion versions;
    EXPECT_TRUE(versions.AddVersion("MR", 4) && versions.AddVersion("CT", 9) && versions.AddVersion("CT", 3));
    std::string stream(static_cast<std::size_t>(versions.GetSerializationSize()), '?');
    EXPECT_EQ(versions.Serialize(stream.data()), static_cast<int>(stream.size()));
    return stream;
}

std::string WrittenFrames(std::unique_ptr<CKivDSEnhancedMFCollection> enhanced, bool withFrames)
{
    const Facade facade(enhanced.get());
    CKivDSEnhancedMFCollection* const held = enhanced.release(); // the facade's now
    const CollectionPtr regular = withFrames ? Collection({{kRows, 512}}) : Collection({});
    EXPECT_TRUE(held->AddCollection(regular.get(), false));
    if (!withFrames)
        return Stream(const_cast<Facade&>(facade));
    EXPECT_TRUE(held->AddMFCollection(Collection({}).get(), true)); // nothing of its own
    EXPECT_TRUE(held->AddMFCollection(Collection({{0x00209156, 2}}).get(), true));
    return Stream(static_cast<Facade&>(*held));
}

std::string WrittenPerFrame()
{
    Facade collection;
    Add(collection, Attribute(0x00280008, IS, "3"));
    Add(collection, PerFrame(0x00540010, {1, 1, 2}));
    return Stream(collection);
}

// What the library writes for the examples' objects, but for those that are only read. The platform's write
// what they have read; PlatformTest.cpp looks at what that is.
const std::pair<Txt, std::function<std::string()>> kWritten[] = {
    {"value", WrittenValue},
    {"attribute", [] { return Stream(*Numbers(kRows, {512})); }},
    {"attribute-texts", [] { return Stream(*Attribute(0x00080008, CS, "ORIGINAL\\PRIMARY")); }},
    {"attribute-empty",
     [] {
         CKivDSDicomAttribute name;
         name.InitEmpty(0x00100010, PN, false);
         return Stream(name);
     }},
    {"attribute-per-frame",
     [] {
         return Stream(*PerFrame(0x00540010, {1, 1, 2}));
     }},
    {"code-sequence",
     [] { return Stream(CKivDSCodeSequenceAttribute(0x00082218, Code("T-04000", "SRT", "Breast"))); }},
    {"part",
     [] {
         return Stream(*SinglePart(*Collection({{kRows, 512}})));
     }},
    {"collection",
     [] {
         return Stream(*Collection({{kRows, 512}}));
     }},
    {"collection-per-frame", WrittenPerFrame},
    {"enhanced", [] { return WrittenFrames(std::make_unique<CKivDSEnhancedMFCollection>(), true); }},
    {"collection-enhanced",
     [] { return WrittenFrames(std::make_unique<CKivDSEnhancedMFCollection>(), false); }},
    {"script-versions", WrittenVersions},
};

} // namespace

TEST_F(StreamsDocTest, EveryExampleIsWrittenAndReadAsItStandsThere)
{
    const GoldenStreams& golden = AllGoldenStreams();
    for (const auto& [name, write] : kWritten)
        EXPECT_EQ(Hex(write()), Hex(golden.Named(name).m_Bytes)) << name;
    std::set<std::string> names;
    for (const auto& [name, bytes, current, kind, form] : golden.m_Streams) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(names.insert(name).second) << "twice";
        const std::string followed = bytes + std::string(30, '\xFF');
        const int length = static_cast<int>(bytes.size());
        for (const int given : {length, length + 30, -1}) { // bounded, with bytes behind it, unbounded
            const StreamReading reading = ReadStream(kind, form, followed.data(), given);
            EXPECT_TRUE(reading.m_bRead);
            EXPECT_TRUE(reading.m_nSize == length || given < 0) << reading.m_nSize;
            EXPECT_EQ(Hex(reading.m_Written.value_or("")), Hex(golden.Named(current).m_Bytes)) << given;
        }
    }
    EXPECT_GT(names.size(), 70U);
}

TEST_F(StreamsDocTest, EveryRefusalIsReportedAsItStandsThere)
{
    EXPECT_GT(AllGoldenStreams().m_Refusals.size(), 45U);
    for (const auto& [name, offset, instead, reports] : AllGoldenStreams().m_Refusals) {
        SCOPED_TRACE(name + ", " + std::to_string(offset) + ": " + Hex(instead));
        auto [same, bytes, current, kind, form] = AllGoldenStreams().Named(name);
        ASSERT_LE(offset + instead.size(), bytes.size());
        bytes.replace(offset, instead.size(), instead);
        EXPECT_FALSE(ReadStream(kind, form, bytes.data(), static_cast<int>(bytes.size())).m_bRead);
        for (const auto& [function, message] : reports)
            Claim(function.c_str(), message.c_str());
        EXPECT_TRUE(NothingReported());
        ClaimAll();
    }
}

} // namespace kivds::test
