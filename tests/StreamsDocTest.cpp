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

#include <map>
#include <set>

namespace kivds::test {

namespace {

using StreamsDocTest = ReportTest;

constexpr unsigned long kRows = 0x00280010;

// What the library writes for the examples' objects, but for those that are only read. The platform's write
// what they have read; PlatformTest.cpp looks at what that is.
std::map<std::string, std::string> WrittenByTheLibrary()
{
    struct Opened : CKivDSDicomAttribute
    {
        using CKivDSDicomAttribute::Serialize;
    };
    unsigned short elements[] = {512, 480};
    std::string value(16, '?');
    int size = 0;
    EXPECT_TRUE(
        Opened().Serialize({2, eAttrUShort, -1, reinterpret_cast<char*>(elements)}, value.data(), size));
    EXPECT_EQ(size, 16);

    const CollectionPtr rows = Collection({{kRows, 512}}), perFrame = Collection({}), shared = Collection({});
    CKivDSDicomAttribute name;
    name.InitEmpty(0x00100010, PN, false);
    Add(*perFrame, Attribute(0x00280008, IS, "3"));
    Add(*perFrame, PerFrame(0x00540010, {1, 1, 2}));

    CKivDSEnhancedMFCollection enhanced;
    EXPECT_TRUE(enhanced.AddCollection(rows.get(), true));
    EXPECT_TRUE(enhanced.AddMFCollection(shared.get(), true)); // nothing of its own
    EXPECT_TRUE(enhanced.AddMFCollection(Collection({{0x00209156, 2}}).get(), true));
    Facade facade(new CKivDSEnhancedMFCollection);
    EXPECT_TRUE(Enhanced(facade)->AddCollection(shared.get(), true));

    CKivDSScriptVersion versions;
    EXPECT_TRUE(versions.AddVersion("MR", 4) && versions.AddVersion("CT", 9) && versions.AddVersion("CT", 3));
    std::string list(static_cast<std::size_t>(versions.GetSerializationSize()), '?');
    EXPECT_EQ(versions.Serialize(list.data()), static_cast<int>(list.size()));

    return {
        {"value", value},
        {"attribute", Stream(*Numbers(kRows, {512}))},
        {"attribute-texts", Stream(*Attribute(0x00080008, CS, "ORIGINAL\\PRIMARY"))},
        {"attribute-empty", Stream(name)},
        {"attribute-per-frame", Stream(*PerFrame(0x00540010, {1, 1, 2}))},
        {"code-sequence", Stream(CKivDSCodeSequenceAttribute(0x00082218, Code("T-04000", "SRT", "Breast")))},
        {"part", Stream(*SinglePart(*rows))},
        {"collection", Stream(*rows)},
        {"collection-per-frame", Stream(*perFrame)},
        {"enhanced", Stream(static_cast<Facade&>(enhanced))},
        {"collection-enhanced", Stream(facade)},
        {"script-versions", list}};
}

} // namespace

TEST_F(StreamsDocTest, EveryExampleIsWrittenAndReadAsItStandsThere)
{
    const GoldenStreams& golden = AllGoldenStreams();
    for (const auto& [name, written] : WrittenByTheLibrary())
        EXPECT_EQ(Hex(written), Hex(golden.Named(name).m_Bytes)) << name;
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
            Claim(function, message);
        EXPECT_TRUE(NothingReported());
        ClaimAll();
    }
}

} // namespace kivds::test
