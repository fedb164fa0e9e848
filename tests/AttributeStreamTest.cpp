// The byte streams of attributes and code sequences: golden streams, old forms, and what is not sound.
#include "tests/support/Attributes.h"
#include "tests/support/Hex.h"

#include <climits>

namespace kivds::test {
namespace {

const char* const kEmpty = R"(13 00 00 00  // total length
                              20 00 10 00  // tag
                              0A 00 00 00  // representation: LO
                              00 01        // private, must-replicate
                              00 00 00 00  // number of values
                              00)"; // multi-frame

const char* const kTwoTexts = R"(31 00 00 00  // total length
                                 08 00 08 00  // tag
                                 03 00 00 00  // representation: CS
                                 00 01        // private, must-replicate
                                 02 00 00 00  // number of values
                                 01 00 00 00  // value: type char
                                 02 00 00 00  // element count
                                 41 00        // "A"
                                 FF FF FF FF  // in-sequence index
                                 01 00 00 00  // value: type char
                                 04 00 00 00  // element count
                                 42 43 44 00  // "BCD"
                                 FF FF FF FF  // in-sequence index
                                 00)"; // multi-frame

const char* const kPerFrame = R"(47 00 00 00  // total length
                                 10 00 28 00  // tag
                                 16 00 00 00  // representation: US
                                 00 00        // private, must-replicate
                                 01 00 00 00  // number of values
                                 03 00 00 00  // value: type u short
                                 02 00 00 00  // element count
                                 0A 00 14 00  // 10, 20
                                 00 00 00 00  // in-sequence index
                                 01           // multi-frame
                                 24 00 00 00  // frame range: total length
                                 52 4E 47 31  // kind
                                 25 93 6F E0 4C 8B D0 47 A1 7E 5B 36 E8 02 DF 4C  // type
                                 01 00 00 00  // number of runs
                                 01 00 00 00  // first frame
                                 02 00 00 00)"; // number of frames

const char* const kCode = R"(69 00 00 00  // total size
                             29 00 00 00  // the attribute stream: total length
                             05 00 0E 00  // tag
                             03 00 00 00  // representation: CS
                             00 01        // private, must-replicate
                             01 00 00 00  // number of values
                             01 00 00 00  // value: type char
                             0A 00 00 00  // element count
                             4C 65 66 74 20 73 69 64 65 00  // "Left side"
                             00 00 00 00  // in-sequence index
                             00           // multi-frame
                             01 00 00 00  // record count
                             04 00 00 00 54 2D 30 34  // code value "T-04"
                             03 00 00 00 53 4E 4D     // coding scheme designator "SNM"
                             00 00 00 00  // coding scheme version
                             09 00 00 00 4C 65 66 74 20 73 69 64 65  // code meaning "Left side"
                             00 00 00 00  // context identifier
                             00 00 00 00  // mapping resource
                             00 00 00 00  // context group version
                             01 00 00 00  // context group extension flag
                             00 00 00 00  // context group local version
                             00 00 00 00)"; // context group extension creator UID

struct Golden
{
    std::string bytes;
    bool code, versioned;
    int version;
};
const Golden kStreams[] = {{Bytes(kEmpty), false, true, 7},
                           {Bytes(kTwoTexts), false, true, 1},
                           {Bytes(kPerFrame), false, true, 7},
                           {Bytes(kTwoTexts), false, false, 7}, // the multi-frame part is not read
                           {Bytes(kCode), true, true, 7},
                           {Bytes(kTwoTexts).substr(4, 44), false, false, 0}}; // old: no total, no such part

AttributePtr New(bool code = false)
{
    return AttributePtr(g_DicomAttributeFactory.CreateDicomAttribute(code ? 1 : 0));
}

using AttributeStreamTest = AttributeTest;

TEST_F(AttributeStreamTest, AttributesAreWrittenAsTheGoldenStreamsAndReadBackByBothReaders)
{
    OpenAttribute empty;
    empty.InitEmpty(0x00100020, LO, true);
    EXPECT_EQ(Hex(Stream(empty)), Hex(Bytes(kEmpty)));
    EXPECT_EQ(Hex(Stream(*Attribute(0x00080008, CS, "A\\BCD", true, -1))), Hex(Bytes(kTwoTexts)));
    EXPECT_EQ(Hex(Stream(*PerFrame(0x00280010, {10, 20}))), Hex(Bytes(kPerFrame)));
    auto code = Code("T-04", "SNM", "Left side");
    code.nContextGroupExtensionFlag = 1;
    EXPECT_EQ(Hex(Stream(CKivDSCodeSequenceAttribute(0x000E0005, code))), Hex(Bytes(kCode)));
    for (const Golden& row : kStreams) {
        SCOPED_TRACE(Hex(row.bytes));
        const Exact bytes(row.bytes), followed(row.bytes + std::string(30, '\xFF'));
        const AttributePtr bounded = New(row.code), unbounded = New(row.code), longer = New(row.code);
        int size[] = {-1, -1, -1};
        EXPECT_TRUE(bounded->Deserialize(bytes.Data(), bytes.Size(), size[0], row.versioned, row.version));
        EXPECT_TRUE(unbounded->Deserialize(bytes.Data(), size[1], row.versioned, row.version));
        EXPECT_TRUE(
            longer->Deserialize(followed.Data(), followed.Size(), size[2], row.versioned, row.version));
        EXPECT_TRUE(size[0] == bytes.Size() && size[1] == bytes.Size() && size[2] == bytes.Size());
        EXPECT_TRUE(*bounded == *unbounded && *bounded == *longer);
        const std::string again = Stream(*bounded);
        EXPECT_EQ(Hex(row.version > 0 ? again : again.substr(4, again.size() - 5)), Hex(row.bytes));
    }
}

// Whatever the bytes say: no crash, no leak, no read past the end (the block ends where they do), memory in
// proportion, a report for every refusal, and an attribute that can still be used.
TEST_F(AttributeStreamTest, UnsoundStreamsAreRefusedAndHarmless)
{
    const auto read = [this](const Golden& row, const std::string& stream) {
        const Exact bytes(stream);
        const AttributePtr attribute = New(row.code), again = New(row.code);
        int size = -1;
        bool ok = false;
        {
            const Allocations watched;
            ok = attribute->Deserialize(bytes.Data(), bytes.Size(), size, row.versioned, row.version);
            EXPECT_LE(watched.Bytes(), 16 * bytes.Size() + 4096);
        }
        EXPECT_EQ(ClaimAll() == 0, ok);
        EXPECT_TRUE(!ok || (size > 0 && size <= bytes.Size())) << size;
        const std::string written = Stream(*attribute);
        EXPECT_TRUE(again->Deserialize(written.data(), size, true, 7) && *again == *attribute);
        return ok;
    };
    for (const Golden& row : kStreams) {
        const std::string& sound = row.bytes;
        for (std::size_t length = 0; length < sound.size(); ++length)
            EXPECT_FALSE(read(row, sound.substr(0, length))) << length;
        for (std::size_t at = 0; at + 4 <= sound.size(); ++at) {
            for (const std::int32_t number : {0, 1, -1, INT_MIN, INT_MAX, 0x01010101}) {
                SCOPED_TRACE(std::to_string(at) + " of " + Hex(sound));
                std::string altered = sound;
                for (std::size_t i = 0; i < 4; ++i)
                    altered[at + i] = static_cast<char>(static_cast<std::uint32_t>(number) >> (8 * i));
                read(row, altered);
            }
        }
    }
}

TEST_F(AttributeStreamTest, EveryRefusalHasItsWords)
{
    const Report input = Of(L"Deserialize", L" Bad input parameters ");
    const Report value = Of(L"Deserialize", L"Invalid input parameter");
    const Report noValue = Of(L"Deserialize", L" Unable to deserialize the attribute value ");
    const Report base{L"CKivDSCodeSequenceAttribute::Deserialize", L"Failed to deserialize base class data",
                      0};
    const Report inconsistent{
        L"CKivDSCodeSequenceAttribute::Deserialize",
        L"Inconsistent deserialization procedure: number of bytes read from deserialization "
        L"buffer does not equal expected number of bytes read",
        0};
    // What is put into a stream, and where: total length, number of values, element type, element count;
    // total size, the base's element type, record count, text length.
    const struct
    {
        const char* stream;
        std::vector<std::pair<std::size_t, const char*>> changes;
        std::vector<Report> reports;
    } rows[] = {
        {kTwoTexts, {{0, "30"}, {0, "32"}, {0, "00"}, {0, "FF FF FF FF"}}, {input}},
        {kTwoTexts,
         {{14, "03"}, {14, "FF FF FF 7F"}, {18, "00"}, {18, "08"}, {21, "80"}, {19, "01"}},
         {value, noValue}},
        {kTwoTexts, {{22, "FF FF FF FF"}, {36, "06"}, {36, "FF FF FF 7F"}}, {value, noValue}},
        {kCode, {{0, "68"}, {0, "6A"}, {0, "00"}, {0, "FF FF FF FF"}}, {inconsistent}},
        {kCode, {{22, "09"}}, {value, noValue, base}},
        {kCode,
         {{45, "02"}, {45, "00"}, {45, "FF FF FF 7F"}, {49, "FF FF FF FF"}, {68, "40"}},
         {inconsistent}},
    };
    for (const auto& row : rows) {
        for (const auto& [at, hex] : row.changes) {
            SCOPED_TRACE(std::to_string(at) + ": " + hex);
            const std::string bytes = Bytes(hex);
            const Exact altered(Bytes(row.stream).replace(at, bytes.size(), bytes));
            const AttributePtr attribute = New(row.stream == kCode);
            int size = -1;
            EXPECT_FALSE(attribute->Deserialize(altered.Data(), altered.Size(), size, true, 7));
            ClaimEach(row.reports);
            EXPECT_EQ(size, row.reports[0] == inconsistent ? 0 : -1);
            EXPECT_TRUE(at != 36 || (Text(*attribute) == "[A]" && attribute->MustReplicate()))
                << "read before";
            if (at > 0 || hex[1] != '2') { // the unbounded reader has only the total to keep to
                EXPECT_FALSE(attribute->Deserialize(altered.Data(), size, true, 7));
                EXPECT_EQ(ClaimAll(), row.reports.size());
            }
        }
    }
    const AttributePtr attribute = New();
    int size = -1;
    EXPECT_FALSE(attribute->Deserialize(nullptr, size, true, 7) ||
                 attribute->Deserialize("", -1, size, true, 7) ||
                 attribute->Deserialize(nullptr, 10, size, true, 7));
    ClaimEach({input, input, input});
    const OtherFactory none;
    const Exact perFrame(Bytes(kPerFrame));
    EXPECT_FALSE(attribute->Deserialize(perFrame.Data(), perFrame.Size(), size, true, 7));
    ClaimEach({Of(L"Deserialize", L"Failed to allocate new frame range collection")});
    EXPECT_TRUE(Text(*attribute) == "[10 20]" && !attribute->IsMultiFrame());
}

TEST_F(AttributeStreamTest, UnusualStreamsAreRead)
{
    const AttributePtr attribute = New();
    int size = -1;
    const Exact negative(Bytes(kEmpty).replace(14, 4, Bytes("FE FF FF FF"))); // no values
    EXPECT_TRUE(attribute->Deserialize(negative.Data(), negative.Size(), size, true, 7) && size == 19);
    const Exact padded(Bytes(kEmpty).replace(0, 1, "\x15") + "\xEE\xEE"); // longer than its fields
    EXPECT_TRUE(attribute->Deserialize(padded.Data(), padded.Size(), size, true, 7) && size == 21);
    EXPECT_TRUE(attribute->Deserialize(padded.Data(), size, true, 7) && size == 21);
    CKivDSCodeSequenceAttribute codes;
    for (int twice = 1; twice <= 2; ++twice) {
        EXPECT_TRUE(codes.Deserialize(Bytes(kCode).data(), size, true, 7));
        EXPECT_EQ(codes.GetNumberOfCodes(), twice) << "records in the list stay in front";
    }
    for (const std::size_t length : {32u, 33u}) { // the code value's longest text, and one more
        std::string stream = Bytes(kCode).replace(53, 4, length, 'x');
        stream[49] = static_cast<char>(length);
        stream[0] = static_cast<char>(stream.size());
        CKivDSCodeSequenceAttribute longest;
        EXPECT_EQ(longest.Deserialize(stream.data(), static_cast<int>(stream.size()), size, true, 7),
                  length == 32);
        EXPECT_EQ(ClaimAll(), length - 32);
        EXPECT_EQ(longest.GetNumberOfCodes(), length == 32 ? 1 : 0);
    }
    const std::string bytes = Bytes(kTwoTexts);
    for (const long failing : {0, 1, 2}) { // the records, a value, another
        const AttributePtr poor = New();
        EXPECT_TRUE(Failing(failing, [&] { EXPECT_FALSE(poor->Deserialize(bytes.data(), size, true, 7)); }));
        if (failing == 0)
            ClaimEach({kNoArray, Of(L"Deserialize", L"Failed to allocate attribute value array")});
        else
            ClaimEach({Of(L"Deserialize", L"Failed to allocate attribute value data buffer"),
                       Of(L"Deserialize", L" Unable to deserialize the attribute value ")});
        EXPECT_EQ(Text(*poor), failing == 2 ? "[A]" : "");
    }
}

TEST_F(AttributeStreamTest, OneValueIsWrittenAndReadAsAStreamOfItsOwn)
{
    const Value value({short{-2}, short{258}}, -1);
    const Exact golden(Bytes("02 00 00 00 02 00 00 00 FE FF 02 01 FF FF FF FF"));
    const Exact sixteen(Bytes("01 00 00 00 10 00 00 00") + std::string(20, '\0'));
    OpenAttribute attribute;
    SKivAGAttributeValue read = {};
    int size = -1;
    char written[16];
    EXPECT_TRUE(attribute.Serialize(value, nullptr, size) && size == 16 && attribute.GetSize(value) == 16);
    EXPECT_TRUE(attribute.Serialize(value, written, size) && std::memcmp(written, golden.Data(), 16) == 0);
    for (const bool inlineAllowed : {false, true}) {
        EXPECT_TRUE(attribute.Deserialize(golden.Data(), size, read, inlineAllowed) && size == 16);
        EXPECT_TRUE(read == value && read.nInSequenceIndex == -1);
        EXPECT_EQ(attribute.IsPreallocatedData(read.pData), inlineAllowed);
        EXPECT_EQ(attribute.m_bPreallocatedData, inlineAllowed);
        attribute.DeleteAttributeValue(read);
    }
    EXPECT_TRUE(attribute.Deserialize(sixteen.Data(), size, read, true) && size == 28);
    EXPECT_FALSE(attribute.IsPreallocatedData(read.pData)) << "too long for the object";
    attribute.DeleteAttributeValue(read);
    EXPECT_FALSE(attribute.Deserialize(nullptr, size, read, true) ||
                 attribute.Deserialize("\0\0\0\0\0\0\0", size, read, true));
    ClaimEach({2, Of(L"Deserialize", L"Invalid input parameter")});
}

TEST_F(AttributeStreamTest, WhatCannotBeWrittenIsRefused)
{
    struct LyingRange : CKivIPPRangeIDC
    {
        LyingRange(bool known, int more) : m_bKnown(known), m_nMore(more) {}
        bool Serialize(char* buffer, int* size) const override
        {
            const bool ok = CKivIPPRangeIDC::Serialize(buffer, size);
            *size += buffer ? m_nMore : 0;
            return ok && (m_bKnown || buffer);
        }
        bool m_bKnown;
        int m_nMore;
    };
    const Report inconsistent = Of(L"Serialize", L" Inconsistent attribute format: serialization aborted");
    const Report noSize = Of(L"GetSize", L"Failed to obtain serialization size of frame range collection");
    char buffer[200];
    int size = 77;
    const auto attribute = Values({1, 2});
    Value empty(std::initializer_list<int>{});
    attribute->SetValue(1, &empty.Record());
    EXPECT_FALSE(attribute->Serialize(buffer, size));
    ClaimEach({Of(L"Serialize", L"Attempt to serialize attribute value with null data pointer"),
               Of(L"Serialize", L" Unable to serialize the attribute value ")});
    EXPECT_EQ(size, 77) << "as it was";
    CKivDSCodeSequenceAttribute codes(1, Code("1", "DCM", "Left"));
    const auto plain = Values({1});
    for (const int more : {-1, 4}) {
        const OtherFactory lying(std::make_unique<LyingRange>(true, more));
        CKivDSDicomAttribute& multiFrame = more > 0 ? static_cast<CKivDSDicomAttribute&>(codes) : *plain;
        multiFrame.SetMultiFrameInfo(1, 2);
        EXPECT_FALSE(multiFrame.Serialize(buffer, size));
        EXPECT_EQ(size, more > 0 ? 77 : 0);
        size = 77;
    }
    ClaimEach(
        {inconsistent,
         inconsistent,
         {L"CKivDSCodeSequenceAttribute::Serialize", L"Failed to serialize base class attribute data", 0}});
    const OtherFactory unknown(std::make_unique<LyingRange>(false, 0));
    plain->SetMultiFrameInfo(1, 2);
    EXPECT_TRUE(plain->GetSize() == 0 && plain->Serialize(nullptr, size) && size == 0);
    EXPECT_FALSE(plain->Serialize(buffer, size));
    ClaimEach({noSize, noSize, noSize, inconsistent});
}

} // namespace
} // namespace kivds::test
