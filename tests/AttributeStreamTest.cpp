// The byte streams of attributes and code sequences, beside those of docs/streams.md: what a refusal leaves,
// single values, and what cannot be written.
#include "tests/support/Attributes.h"
#include "tests/support/GoldenStreams.h"
#include "tests/support/Hex.h"

namespace kivds::test {
namespace {

using AttributeStreamTest = AttributeTest;

TEST_F(AttributeStreamTest, WhatIsReadBeforeARefusalStays)
{
    const Report input = Of(L"Deserialize", L" Bad input parameters ");
    const GoldenStreams& golden = AllGoldenStreams();
    CKivDSDicomAttribute attribute(true);
    int size = -1;
    EXPECT_FALSE(attribute.Deserialize(nullptr, size, true, 7) ||
                 attribute.Deserialize("", -1, size, true, 7) ||
                 attribute.Deserialize(nullptr, 10, size, true, 7));
    ClaimEach({input, input, input});
    const Exact texts(std::string(golden.Named("attribute-texts").m_Bytes)
                          .replace(39, 1, "\x09")); // the second value's type
    EXPECT_FALSE(attribute.Deserialize(texts.Data(), texts.Size(), size, true, 7));
    ClaimEach({Of(L"Deserialize", L"Invalid input parameter"),
               Of(L"Deserialize", L" Unable to deserialize the attribute value ")});
    EXPECT_TRUE(Text(attribute) == "[ORIGINAL]" && !attribute.IsPrivate() && size == -1);
    attribute.Clean();
    const OtherFactory none;
    const Exact perFrame(golden.Named("attribute-per-frame").m_Bytes);
    EXPECT_FALSE(attribute.Deserialize(perFrame.Data(), perFrame.Size(), size, true, 7));
    ClaimEach({Of(L"Deserialize", L"Failed to allocate new frame range collection")});
    EXPECT_TRUE(Text(attribute) == "[1 1 2]" && !attribute.IsMultiFrame());

    OpenAttribute open;
    SKivAGAttributeValue value = {};
    EXPECT_FALSE(open.Deserialize(nullptr, size, value, true) ||
                 open.Deserialize("\0\0\0\0\0\0\0", size, value, true));
    ClaimEach({2, Of(L"Deserialize", L"Invalid input parameter")});
    for (const auto& [bytes, inlineAllowed, inside] :
         {std::tuple('\x0F', false, false), {'\x0F', true, true}, {'\x10', true, false}}) {
        const Exact stream(Bytes("01000000") + bytes +
                           std::string(7U + static_cast<unsigned char>(bytes), '\0'));
        EXPECT_TRUE(open.Deserialize(stream.Data(), size, value, inlineAllowed) && size == stream.Size());
        EXPECT_EQ(open.IsPreallocatedData(value.pData), inside);
        open.DeleteAttributeValue(value);
    }
    CKivDSCodeSequenceAttribute codes;
    const std::string& code = golden.Named("code-sequence").m_Bytes;
    for (int twice = 1; twice <= 2; ++twice) {
        EXPECT_TRUE(codes.Deserialize(code.data(), size, true, 7));
        EXPECT_EQ(codes.GetNumberOfCodes(), twice) << "records in the list stay in front";
    }
    EXPECT_FALSE(codes.Deserialize(code.data(), static_cast<int>(code.size()) - 1, size, true, 7));
    EXPECT_TRUE(ClaimAll() == 1 && size == 0);
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
    // In a collection, which asks for all lengths first, and where two lies may come to the truth.
    for (const int more : {-4, 4}) {
        CKivDSDicomAttributeCollection collection;
        for (const int lie : {more, -more}) {
            const OtherFactory lying(std::make_unique<LyingRange>(true, lie));
            auto liar = Numbers(lie == more ? 0x00091001 : 0x00091002, {1, 2});
            liar->SetMultiFrameInfo(1, 2);
            Add(collection, std::move(liar));
        }
        EXPECT_FALSE(collection.Serialize(buffer, size));
        ClaimEach({inconsistent,
                   {L"CKivDSBaseDicomAttributeCollection::Serialize",
                    L"Inconsistent serialization format: serialization aborted", 0}});
    }
    const OtherFactory unknown(std::make_unique<LyingRange>(false, 0));
    plain->SetMultiFrameInfo(1, 2);
    EXPECT_TRUE(plain->GetSize() == 0 && plain->Serialize(nullptr, size) && size == 0);
    EXPECT_FALSE(plain->Serialize(buffer, size));
    ClaimEach({noSize, noSize, noSize, inconsistent});
}

} // namespace
} // namespace kivds::test
