// The collection stream: golden bytes, the old forms, refusals, and bytes that nobody may trust.
#include "tests/support/FailingNew.h"
#include "tests/support/Hex.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

#include <climits>
#include <cstdlib>

namespace kivds::test {
namespace {

constexpr Txt kEmpty = R"(
    07          // version
    00          // kind: single-frame part alone
    F9FFFFFF    // the part's version, -7
    0C000000    // the part's length, 12
    00000000    // no attributes
    12000000    // total, 18)";

// X1 as its attribute stream, without the length that comes first in the current form.
constexpr Txt kX1 = R"(
    58001100    // tag (0011,0058)
    09000000    // representation 9, IS
    00          // not private
    00          // not to be replicated
    01000000    // one value
    04000000    //   of signed 32-bit integers
    01000000    //   one of them
    01000000    //   1
    00000000    //   sequence item 0)";

// The same in the current form: with its length, and the multi-frame flag.
const std::string kCurrentX1 = "\n23000000" + std::string(kX1) + "\n00\n";

class CollectionStreamTest : public ReportTest
{
protected:
    // Reads from a block of exactly the stream's size, so that a read past it is noticed; bounded, and then
    // the memory spent is, too, or not.
    static bool Read(Facade& facade, std::string_view bytes, bool versioned, int* size = nullptr,
                     bool bounded = true)
    {
        int consumed = -1;
        const std::unique_ptr<void, decltype(&std::free)> block(std::malloc(bytes.size()), std::free);
        char* const data = static_cast<char*>(block.get());
        bytes.copy(data, bytes.size());
        const int length = static_cast<int>(bytes.size());
        const Allocations allocations;
        const bool read = bounded ? facade.Deserialize(data, length, size ? *size : consumed, versioned)
                                  : facade.Deserialize(data, size ? *size : consumed, versioned);
        EXPECT_LE(allocations.Bytes(), 16LL * length + 65536);
        return read;
    }
};

TEST_F(CollectionStreamTest, StreamsAreTheseBytes)
{
    const auto expectStream = [](Facade& facade, const std::string& bytes) {
        EXPECT_EQ(Hex(Stream(facade).substr(0, bytes.size())), Hex(bytes));
    };
    expectStream(*Make(""), Bytes(kEmpty));
    expectStream(*Make("X1"), Bytes(R"(
        07 00       // version, kind
        F9FFFFFF    // -7
        33000000    // the part's length, 51
        01000000    // one attribute
        00000000    //   of type 0)" +
                                    kCurrentX1 + R"(
        39000000    // total, 57)"));
    expectStream(*Make("|M7"), Bytes(R"(
        07 01       // version; kind: both parts
        F9FFFFFF 0C000000 00000000 // an empty single-frame part
        F9FFFFFF    // -7
        57000000    // the multi-frame part's length, 87
        01000000    // one attribute
        00000000    //   of type 0
        47000000    //   71 bytes
        4D001100    //   tag (0011,004D)
        09000000    //   IS
        00 00       //   flags
        01000000    //   one value
        04000000 01000000 07000000 00000000 // one integer, 7; sequence item 0
        01          //   multi-frame: the frame range's own stream follows, 36 bytes)"));
    EXPECT_EQ(Stream(*Make("|M7")).substr(101), Bytes("69000000 // total, 105"));
    Facade codes;
    Add(codes, std::make_unique<CKivDSCodeSequenceAttribute>(Tag('C'), Code("V", "S", "M")));
    expectStream(codes, Bytes(R"(
        07 00 F9FFFFFF 64000000 01000000
        01000000    // type 1, the code sequence
        54000000    // which has a length of its own, 84
        21000000    // in front of the attribute's stream)"));
    EXPECT_EQ(Stream(*Make("Z1 X1pr Y1")), Stream(*Make("X1pr Y1 Z1")));
}

TEST_F(CollectionStreamTest, CurrentAndOldFormsAreRead)
{
    const std::string old = kX1, current = kCurrentX1;
    for (const auto& [what, versioned, hex, expected] : Rows<Txt, bool, std::string, Txt>{
             {"the current form", true, kEmpty, ""},
             {"no header at all", false, "00000000", ""},
             {"no header at all, an attribute", false, "01000000" + old, "X1"},
             {"no version, kind 0, an old part", true, "00 01000000" + old + "\n00", "X1"},
             {"no version, kind 1, two old parts", true, "01 00000000 01000000" + old + "\n00", "|X1s"},
             {"no version, a part of version 3", true, "00 FDFFFFFF 33000000 01000000 00000000" + current,
              "X1"},
             {"a version byte of 2", true, "02 00 00000000 07000000", ""},
             {"a negative version byte: no total", true, "80 00 00000000", ""},
             {"kind 5, taken for 0", true, "07 05 F9FFFFFF 0C000000 00000000 12000000", ""},
             {"a part without a length", true, "07 00 F9FFFFFF 00000000 00000000 12000000", ""},
             {"a part of the highest version", true, "07 00 00000080 0C000000 00000000 12000000", ""},
             {"a negative count", true, "07 00 F9FFFFFF 0C000000 FEFFFFFF 12000000", ""},
             {"a part longer than its records", true, "07 00 F9FFFFFF 0E000000 00000000 AAAA 14000000", ""},
             {"a total that is wrong", true, "07 00 F9FFFFFF 0C000000 00000000 63000000", ""},
             {"an attribute longer than its fields", true,
              "07 00 F9FFFFFF 35000000 01000000 00000000 25000000" + old + "\n00 AAAA 3B000000", "X1"},
             {"the same tag twice", true,
              "07 00 F9FFFFFF 5A000000 02000000 00000000" + current + "00000000" + current + "60000000",
              "X1"},
             {"parts of two versions", true,
              "07 01 00000000 FFFFFFFF 33000000 01000000 00000000" + current + "3D000000", "|X1s"},
         }) {
        SCOPED_TRACE(what);
        const std::string bytes = Bytes(hex);
        for (const int more : {-1, 0, 3}) { // unbounded, bounded, bounded with bytes behind the stream
            Facade facade;
            SetScope(facade, "9");
            int size = -1;
            EXPECT_TRUE(
                Read(facade, bytes + std::string(more > 0 ? 3 : 0, '\7'), versioned, &size, more >= 0));
            EXPECT_EQ(size, static_cast<int>(bytes.size()));
            EXPECT_EQ(Show(facade), expected);
            EXPECT_EQ(ScopeOf(facade), "none");
        }
    }
    const CollectionPtr kept = Make("Y1|M1"); // a multi-frame part that the stream does not bring stays
    EXPECT_TRUE(Read(*kept, Stream(*Make("X1")), true));
    EXPECT_EQ(Show(*kept), "X1|M1");
    Facade known;
    EXPECT_TRUE(Read(known,
                     Bytes("07 00 F9FFFFFF 3F000000 02000000 09000000 08000000 AAAAAAAA // type 9, 8 bytes\n"
                           "00000000" +
                           current + "45000000"),
                     true));
    Claim(L"CKivDSDicomAttributeFactory::CreateDicomAttribute", L"Unknown input DICOM attribute type");
    EXPECT_EQ(Show(known), "X1");
}

TEST_F(CollectionStreamTest, MalformedStreamsAreRefusedByEveryReader)
{
    const Wide part = L"CKivDSBaseDicomAttributeCollection::Deserialize";
    const Wide facadeRead = L"CKivDSDicomAttributeCollection::Deserialize";
    const Wide enhanced = L"CKivDSEnhancedMFCollection::Deserialize";
    const std::vector<Report> badAttribute = {
        {L"CKivDSDicomAttribute::Deserialize", L" Bad input parameters ", 0},
        {part, L"Failed to deserialize attribute", 0}};
    const std::vector<Report> badUnknown = {
        {L"CKivDSDicomAttributeFactory::CreateDicomAttribute", L"Unknown input DICOM attribute type", 0},
        {part, L"Failed to deserialize attribute", 0}};
    const std::vector<Report> onCompound = {{facadeRead, kCompoundRefused, 0}};
    const std::vector<Report> onEnhanced = {{facadeRead, kEnhancedRefused, 0}};
    const std::string header = "07 00 F9FFFFFF ", unknown = header + "18000000 01000000 09000000 ";
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
             {"a part shorter than its records", "",
              header + "32000000 01000000 00000000" + kCurrentX1 + "39000000", badAttribute, ""},
             {"a part shorter than its header",
              "",
              header + "07000000 00000000 12000000",
              {{part, L" Invalid input parameters ", 0}},
              ""},
             {"an attribute shorter than its fields", "",
              header + "33000000 01000000 00000000 22000000" + kX1 + "\n00 39000000", badAttribute, ""},
             {"an unknown type's length within itself", "", unknown + "03000000 AAAAAAAA 1E000000",
              badUnknown, ""},
             {"an unknown type's length past the part", "", unknown + "09000000 AAAAAAAA 1E000000",
              badUnknown, ""},
             {"an unknown type's negative length", "", unknown + "FFFFFFFF AAAAAAAA 1E000000", badUnknown,
              ""},
             {"a plain stream into a compound facade", "{X1}", kEmpty, onCompound, "{X1}"},
             {"a plain stream into an enhanced facade", "<X1;Z1>", kEmpty, onEnhanced, "<X1;Z1>"},
             {"an old stream into an enhanced facade", "<X1;Z1>", "00 00000000", onEnhanced, "<X1;Z1>"},
             {"a frame that fails",
              "Y1",
              std::string("07 02 ") + kEmpty + "\n02000000" + kEmpty + "\n07 02 07 02",
              {{facadeRead, kEnhancedRefused, 0},
               {enhanced, L"Failed to deserialize the regular collections", 0},
               {enhanced, L"Failed to deserialize the emf collection", 0}},
              "Y1<;>"},
         }) {
        SCOPED_TRACE(what);
        for (const bool bounded : {true, false}) {
            const CollectionPtr facade = Make(into);
            EXPECT_FALSE(Read(*facade, Bytes(hex), true, nullptr, bounded));
            for (const Report& report : reports)
                Claim(report.m_Function.c_str(), report.m_Message.c_str(), report.m_nCode);
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
    EXPECT_FALSE(SinglePart(good)->Deserialize(nullptr, size, true));
    Claim(L"CKivDSBaseDicomAttributeCollection::Deserialize", L" Invalid input parameters ");
    char buffer[64];
    for (char* const target : {static_cast<char*>(nullptr), buffer}) {
        EXPECT_FALSE(Make("{X1}")->Serialize(target, size));
        Claim(L"CKivDSDicomAttributeCollection::Serialize", kCompoundRefused);
    }
    EXPECT_EQ(size, 77);
    for (const int length : {0, -1, INT_MIN}) {
        EXPECT_FALSE(good.Deserialize(bytes.data(), length, size, true));
        EXPECT_GT(ClaimAll(), 0u);
    }
}

TEST_F(CollectionStreamTest, AnAttributeThatWritesLessThanItAnnouncesIsReported)
{
    struct Lying : CKivDSDicomAttribute
    {
        explicit Lying(int announced) : m_Announced(announced) { InitEmpty(Tag('X'), IS, false); }
        bool Serialize(char* buffer, int& size) const override
        {
            size = buffer ? 5 : m_Announced;
            return buffer == nullptr;
        }
        int m_Announced;
    };
    for (const int announced : {9, 0}) {
        Facade facade;
        Add(facade, std::make_unique<Lying>(announced));
        char buffer[64] = {};
        int size = 77;
        EXPECT_FALSE(SinglePart(facade)->Serialize(buffer, size));
        Claim(L"CKivDSBaseDicomAttributeCollection::Serialize",
              L"Inconsistent serialization format: serialization aborted");
        EXPECT_EQ(size, 0);
        size = 77;
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

TEST_F(CollectionStreamTest, WhateverIsCutOffOrDisturbedIsReadWithinBounds)
{
    const CollectionPtr all = Make("X1 Y2,3+4pr|L1,2 M1+2");
    Add(*all, Attribute(Tag('T'), LO, "some text\\more"));
    Add(*all, Attribute(Tag('F'), FD, std::string(24, '\x3F')));
    auto codes = std::make_unique<CKivDSCodeSequenceAttribute>(Tag('C'), Code("V", "S", "Meaning"));
    *codes += CKivDSCodeSequenceAttribute(Tag('C'), Code("W", "S", "Other"));
    Add(*all, std::move(codes));
    const struct
    {
        std::string bytes;
        bool versioned;
    } streams[] = {
        {Stream(*all), true},
        {Stream(*Make("<X1|M1,2;Y1;;Z2>")), true},
        {Bytes("01 02000000" + std::string(kX1) + "\n00" + kX1 + "\n00 01000000" + kX1 + "\n00"), true},
        {Bytes("02000000" + std::string(kX1) + kX1), false},
    };
    const auto expectSound = [](Facade& facade) {
        Show(facade);
        const std::string written = Stream(facade);
        Facade again;
        EXPECT_TRUE(Read(again, written, true));
        EXPECT_EQ(Hex(Stream(again)), Hex(written));
    };
    for (const auto& stream : streams) {
        Facade whole;
        ASSERT_TRUE(Read(whole, stream.bytes, stream.versioned));
        expectSound(whole);
        for (const bool versioned : {true, false}) {
            for (std::size_t length = 0; length < stream.bytes.size(); ++length) {
                Facade facade;
                const bool read = Read(facade, stream.bytes.substr(0, length), versioned);
                EXPECT_FALSE(read && versioned == stream.versioned) << length;
                expectSound(facade);
                ClaimAll();
            }
            for (std::size_t at = 0; at + 4 <= stream.bytes.size(); ++at) {
                for (const Txt field : {"00000000", "01000000", "FFFFFFFF", "00000080", "FFFFFF7F"}) {
                    Facade facade;
                    if (Read(facade, std::string(stream.bytes).replace(at, 4, Bytes(field)), versioned))
                        expectSound(facade);
                    ClaimAll();
                }
            }
        }
    }
}

// An enhanced multi-frame stream whose one frame is another, and so on.
std::string Nested(int levels)
{
    const auto int32 = [](std::size_t value) {
        std::string bytes;
        for (int i = 0; i < 4; ++i)
            bytes += static_cast<char>(value >> (8 * i) & 0xFF);
        return bytes;
    };
    std::string stream = Bytes(kEmpty);
    for (int i = 0; i < levels; ++i) {
        std::string enhanced = Bytes(kEmpty) + int32(1) + stream;
        enhanced += int32(enhanced.size() + 4);
        stream = "\7\2" + enhanced + int32(enhanced.size() + 6);
    }
    return stream;
}

TEST_F(CollectionStreamTest, StreamsNestedTooDeeplyOrOfTooManySmallFramesAreRefused)
{
    Facade facade;
    EXPECT_TRUE(Read(facade, Nested(64), true));
    EXPECT_EQ(Hex(Stream(facade)), Hex(Nested(64)));
    EXPECT_TRUE(NothingReported());
    for (const int levels : {65, 3000}) {
        Facade refused;
        EXPECT_FALSE(Read(refused, Nested(levels), true));
        EXPECT_GE(ClaimAll(), 64u);
    }
    const std::string frames = Bytes("07 02 00 00000000 00100000"); // 4,096 of an old form, 5 bytes each
    Facade refused;
    EXPECT_FALSE(Read(refused, frames + std::string(4096 * 5 + 8, '\0'), true));
    Claim(L"CKivDSEnhancedMFCollection::Deserialize", L"Failed to deserialize the emf collection");
}

} // namespace
} // namespace kivds::test
