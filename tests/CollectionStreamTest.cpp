// The collection stream: the old forms, refusals, and bytes that nobody may trust. Golden bytes are those of
// docs/streams.md, which StreamsDocTest.cpp compares.
#include "fuzz/Harnesses.h"
#include "fuzz/Seeds.h"
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
    // Reads from a block of exactly the stream's size, so that a read past it is noticed; bounded, and then
    // the memory spent is, too, or not.
    static bool Read(Facade& facade, std::string_view bytes, bool versioned, int* size = nullptr,
                     bool bounded = true)
    {
        int consumed = -1;
        const Exact block(bytes);
        const char* const data = block.Data();
        const int length = block.Size();
        const Allocations allocations;
        const bool read = bounded ? facade.Deserialize(data, length, size ? *size : consumed, versioned)
                                  : facade.Deserialize(data, size ? *size : consumed, versioned);
        EXPECT_LE(allocations.Bytes(), 16LL * length + 65536);
        return read;
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

TEST_F(CollectionStreamTest, CurrentAndOldFormsAreRead)
{
    const std::string old = kX1, current = kCurrentX1;
    for (const auto& [what, versioned, hex, expected] : Rows<Txt, bool, std::string, Txt>{
             {"no header at all, an attribute", false, "01000000" + old, "X1"},
             {"no version, kind 0, an old part", true, "00 01000000" + old + "00", "X1"},
             {"no version, kind 1, two old parts", true, "01 00000000 01000000" + old + "00", "|X1s"},
             {"no version, a part of version 3", true, "00 FDFFFFFF 33000000 01000000 00000000" + current,
              "X1"},
             {"a negative version byte: no total", true, "80 00 00000000", ""},
             {"kind 5, taken for 0", true, "07 05 F9FFFFFF 0C000000 00000000 12000000", ""},
             {"a part without a length", true, "07 00 F9FFFFFF 00000000 00000000 12000000", ""},
             {"a part of the highest version", true, "07 00 00000080 0C000000 00000000 12000000", ""},
             {"a negative count", true, "07 00 F9FFFFFF 0C000000 FEFFFFFF 12000000", ""},
             {"a part longer than its records", true, "07 00 F9FFFFFF 0E000000 00000000 AAAA 14000000", ""},
             {"a total that is wrong", true, "07 00 F9FFFFFF 0C000000 00000000 63000000", ""},
             {"an attribute longer than its fields", true,
              "07 00 F9FFFFFF 35000000 01000000 00000000 25000000" + old + "00 AAAA 3B000000", "X1"},
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
    const std::vector<Report> badUnknown = {
        {L"CKivDSDicomAttributeFactory::CreateDicomAttribute", L"Unknown input DICOM attribute type", 0},
        {part, L"Failed to deserialize attribute", 0}};
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
             {"an unknown type's negative length", "",
              header + "18000000 01000000 09000000 FFFFFFFF AAAAAAAA 1E000000", badUnknown, ""},
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
    // The harnesses check what is read: memory in proportion, a sound object, the same when read again.
    const std::map<std::string, fuzz::SInputs> inputs = fuzz::MakeInputs();
    for (const auto& [name, read] : {std::pair("CollectionStream", &fuzz::CollectionStream),
                                     {"EnhancedStream", &fuzz::EnhancedStream},
                                     {"ScriptVersionStream", &fuzz::ScriptVersionStream}}) {
        for (const std::string& stream : inputs.at(name).m_Seeds) {
            for (std::size_t at = 0; at < stream.size(); ++at) {
                read(stream.substr(0, at));
                for (const Txt field : {"00000000", "FFFFFFFF", "FFFFFF7F"})
                    read(std::string(stream).replace(at, 4, Bytes(field)));
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
