// The collection stream: what reading replaces, what refusals leave, what cannot be written. Golden bytes are
// those of docs/streams.md, which StreamsDocTest.cpp compares.
#include "tests/support/Attributes.h"
#include "tests/support/Hex.h"
#include "tests/support/Notation.h"

#include <climits>

namespace kivds::test {
namespace {

// Version, kind 0, a part of version -7 and length 12 without attributes, total.
constexpr Txt kEmpty = "07 00 F9FFFFFF 0C000000 00000000 12000000";

// X1 as its attribute stream, without the length that comes first in the current form: tag, representation,
// flags, one value of one integer, 1, of sequence item 0.
constexpr Txt kX1 = "58001100 09000000 0000 01000000 04000000 01000000 01000000 00000000";

// The same in the current form: with its length, and the multi-frame flag.
const std::string kCurrentX1 = "23000000" + std::string(kX1) + "00";

class CollectionStreamTest : public ReportTest
{
protected:
    static bool Read(Facade& facade, std::string_view bytes, bool bounded = true)
    {
        const Exact block(bytes);
        int size = -1;
        return bounded ? facade.Deserialize(block.Data(), block.Size(), size, true)
                       : facade.Deserialize(block.Data(), size, true);
    }
};

TEST_F(CollectionStreamTest, RecordsStandInTagOrderUnderTheirType)
{
    EXPECT_EQ(Stream(*Make("Z1 X1pr Y1")), Stream(*Make("X1pr Y1 Z1")));
    Facade codes;
    Add(codes, std::make_unique<CKivDSCodeSequenceAttribute>(Tag('C'), Code("V", "S", "M")));
    EXPECT_EQ(Hex(Stream(codes).substr(0, 26)), Hex(Bytes(R"(
        07 00 F9FFFFFF 64000000 01000000
        01000000    // type 1, the code sequence
        54000000    // which has a length of its own, 84
        21000000    // in front of the attribute's stream)")));
}

TEST_F(CollectionStreamTest, ReadingReplacesWhatTheStreamBrings)
{
    const CollectionPtr kept = Make("Y1|M1"); // a multi-frame part that the stream does not bring stays
    SetScope(*kept, "9");
    EXPECT_TRUE(Read(*kept, Stream(*Make("X1"))));
    EXPECT_EQ(Show(*kept) + ScopeOf(*kept), "X1|M1none");
    Facade known;
    EXPECT_TRUE(
        Read(known, Bytes("07 00 F9FFFFFF 3F000000 02000000 09000000 08000000 AAAAAAAA // type 9, 8 bytes\n"
                          "00000000" +
                          kCurrentX1 + "45000000")));
    Claim(L"CKivDSDicomAttributeFactory::CreateDicomAttribute", L"Unknown input DICOM attribute type");
    EXPECT_EQ(Show(known), "X1");
}

TEST_F(CollectionStreamTest, MalformedStreamsAreRefusedByEveryReader)
{
    const std::wstring part = kPart + L"Deserialize";
    const std::wstring facadeRead = kFacade + L"Deserialize";
    const std::wstring enhanced = kEnhanced + L"Deserialize";
    const std::vector<Report> onCompound = {{facadeRead, kCompoundRefused, 0}};
    const std::vector<Report> onEnhanced = {{facadeRead, kEnhancedRefused, 0}};
    const std::string header = "07 00 F9FFFFFF ";
    for (const auto& [what, into, hex, reports, after] :
         Rows<Txt, Txt, std::string, std::vector<Report>, Txt>{
             {"a value of no type behind a sound attribute",
              "Y1|M1",
              header + "5A000000 02000000 00000000" + kCurrentX1 +
                  "00000000 23000000 59001100 09000000 0000 01000000 "
                  "00000000 00000000 00000000 00000000 00 60000000",
              {{L"CKivDSDicomAttribute::Deserialize", L"Invalid input parameter", 0},
               {L"CKivDSDicomAttribute::Deserialize", L" Unable to deserialize the attribute value ", 0},
               {part, L"Failed to deserialize attribute", 0}},
              "X1|M1"},
             {"a plain stream into a compound facade", "{X1}", kEmpty, onCompound, "{X1}"},
             {"an old stream into an enhanced facade", "<X1;Z1>", "00 00000000", onEnhanced, "<X1;Z1>"},
             {"a frame that fails",
              "Y1",
              std::string("07 02 ") + kEmpty + "02000000" + kEmpty + "07 02 07 02",
              {{facadeRead, kEnhancedRefused, 0},
               {enhanced, L"Failed to deserialize the regular collections", 0},
               {enhanced, L"Failed to deserialize the emf collection", 0}},
              "Y1<;>"},
         }) {
        SCOPED_TRACE(what);
        for (const bool bounded : {true, false}) {
            const CollectionPtr facade = Make(into);
            EXPECT_FALSE(Read(*facade, Bytes(hex), bounded));
            for (const Report& report : reports)
                Claim(report.m_Function, report.m_Message, report.m_nCode);
            EXPECT_EQ(Show(*facade), after);
        }
    }
}

TEST_F(CollectionStreamTest, EmptyFacadesAndNullBuffersGiveFalse)
{
    int size = 77;
    const std::string bytes = Bytes(kEmpty);
    Facade good;
    EXPECT_FALSE(good.Deserialize(nullptr, size, true));
    EXPECT_FALSE(good.Deserialize(nullptr, 10, size, true));
    EXPECT_FALSE(Make("-")->Deserialize(bytes.data(), size, true));
    EXPECT_FALSE(Make("-")->Deserialize(bytes.data(), 18, size, true));
    EXPECT_FALSE(Make("-")->Serialize(nullptr, size));
    EXPECT_TRUE(NothingReported());
    Refused(SinglePart(good)->Deserialize(nullptr, size, true), kPart + L"Deserialize",
            L" Invalid input parameters ");
    EXPECT_FALSE(Enhanced(*Make("<X1;Y1>"))->Deserialize(nullptr, size, true));
    Claim(kEnhanced + L"Deserialize", L"Failed to deserialize the regular collections");
    char buffer[64];
    for (char* const target : {static_cast<char*>(nullptr), buffer}) {
        Refused(Make("{X1}")->Serialize(target, size), kFacade + L"Serialize", kCompoundRefused);
    }
    EXPECT_EQ(size, 77);
    for (const int length : {0, -1, INT_MIN}) {
        EXPECT_FALSE(good.Deserialize(bytes.data(), length, size, true));
        EXPECT_GT(ClaimAll(), 0u);
    }
}

TEST_F(CollectionStreamTest, AnAttributeThatWritesLessThanItAnnouncesIsReported)
{
    static int s_nAnnounced;
    struct Lying : CKivDSDicomAttribute
    {
        bool Serialize(char* buffer, int& size) const override
        {
            size = buffer ? 5 : s_nAnnounced;
            return buffer == nullptr;
        }
    };
    Facade facade;
    Add(facade, std::make_unique<Lying>());
    for (const int announced : {9, 0}) {
        s_nAnnounced = announced;
        char buffer[64] = {};
        int size = 77;
        Refused(SinglePart(facade)->Serialize(buffer, size) || size != 0, kPart + L"Serialize",
                L"Inconsistent serialization format: serialization aborted");
        EXPECT_FALSE(static_cast<Facade&>(facade).Serialize(buffer, size));
        EXPECT_EQ(ClaimAll(), 1u);
    }
}

TEST_F(CollectionStreamTest, WritingAllocatesNothing)
{
    for (const Txt form : {"X1 Y2,3+4|M1,2", "<X1|M1,2;Y1;Z1>"}) {
        const CollectionPtr facade = Make(form);
        std::string buffer(4096, '?');
        int announced = 0, written = 0;
        const Allocations allocations;
        EXPECT_TRUE(facade->Serialize(nullptr, announced));
        EXPECT_TRUE(facade->Serialize(buffer.data(), written));
        EXPECT_EQ(allocations.Count(), 0);
        EXPECT_EQ(written, announced);
    }
}

} // namespace
} // namespace kivds::test
