// Values per frame and values per sequence item.
#include "tests/support/Attributes.h"

#include <climits>

namespace kivds::test {
namespace {

struct AttributeMultiFrameTest : AttributeTest
{
    /// The attribute's single-frame copy for `frame`, as text; "none" for a null one, "failed" on failure.
    static std::string Frame(const CKivDSDicomAttribute& attribute, int frame)
    {
        CKivDSDicomAttribute* out = nullptr;
        if (!attribute.CreateSingleFrameCopy(frame, &out))
            return "failed";
        const AttributePtr copy(out);
        if (!copy)
            return "none";
        unsigned long tag = 0, copyTag = 1;
        EXPECT_TRUE(attribute.GetTag(&tag) && copy->GetTag(&copyTag) && tag == copyTag);
        EXPECT_EQ(copy->GetDicomRepresentation(), attribute.GetDicomRepresentation());
        EXPECT_TRUE(!copy->IsMultiFrame() && copy->GetType() == 0);
        return Text(*copy) + (copy->GetValuePtr(0)->nInSequenceIndex == 4 ? " of item 4" : "");
    }
};

TEST_F(AttributeMultiFrameTest, FramesMakeAnAttributeMultiFrameAndClearItsFlags)
{
    int list[] = {5, 3, 0}, position = -1;
    OpenAttribute attribute(true, true), flagged(true, true);
    EXPECT_EQ(attribute.GetFrameRangeCollection(), nullptr);
    EXPECT_TRUE(attribute.SetMultiFrameInfo(1, 3) && attribute.IsMultiFrame());
    EXPECT_FALSE(attribute.IsPrivate() || attribute.MustReplicate());
    const std::unique_ptr<CKivIPPRangeIDC> first(attribute.GetFrameRangeCollection());
    const std::unique_ptr<CKivIPPRangeIDC> second(attribute.GetFrameRangeCollection());
    EXPECT_TRUE(first != second && *first == *second && first->GetNumberOfFrames() == 3);
    EXPECT_TRUE(attribute.SetMultiFrameInfo(3, list)); // replaces the frames
    EXPECT_TRUE(attribute.m_pFrameRange->GetPosition(3, &position) && position == 1);
    EXPECT_FALSE(attribute.m_pFrameRange->GetPosition(1, &position));
    EXPECT_TRUE(attribute.SetMultiFrameInfo(4, 2) && attribute.IsMultiFrame()) << "the range's own business";
    {
        const OtherFactory wrong(std::make_unique<CKivIPPScopeItemC>()); // an item, but no range; then none
        EXPECT_EQ(attribute.GetFrameRangeCollection(), nullptr);
        EXPECT_FALSE(flagged.SetMultiFrameInfo(1, 2) || attribute.SetMultiFrameInfo(1, list));
        ClaimEach({Of(L"GetFrameRangeCollection", L"Failed to create new CKivIPPRangeIDC object"),
                   Of(L"SetMultiFrameInfo", L"Failed to allocate frame range"),
                   Of(L"SetMultiFrameInfo", L"Failed to allocate frame range")});
        EXPECT_TRUE(!attribute.IsMultiFrame() && flagged.IsPrivate() && flagged.MustReplicate());
    }
    EXPECT_TRUE(flagged.SetMultiFrameInfo(1, 1) && flagged.ResetMultiFrameInfo() &&
                flagged.ResetMultiFrameInfo());
    EXPECT_TRUE(!flagged.IsMultiFrame() && !flagged.GetFrameRangeCollection());
}

TEST_F(AttributeMultiFrameTest, AFrameHasTheElementOrTheValueAtItsPosition)
{
    constexpr wchar_t noElement[] =
        L"Attempt to use invalid value index to access multiframe attribute non-character value";
    constexpr wchar_t noValue[] =
        L"Attempt to use invalid value index to access multiframe attribute character value";
    int frames[] = {12, 10, 11};
    const auto elements = Numbers(1, {10, 20, 30}), one = Numbers(2, {7}), two = Numbers(3, {1, 2});
    const auto texts = Attribute(4, CS, "A\\BB\\CCC", false, 4), twoTexts = Attribute(5, CS, "A\\B");
    const auto none = Attribute(6, 29, "x"), sequence = Attribute(7, SQ, "");
    for (const auto* attribute : {&elements, &one, &two, &texts, &twoTexts, &none, &sequence})
        (*attribute)->SetMultiFrameInfo(3, frames);
    const std::tuple<const AttributePtr&, int, const char*, const wchar_t*> rows[] = {
        {elements, 12, "[10]", nullptr},
        {elements, 11, "[30]", nullptr},
        {elements, 9, "none", nullptr},
        {elements, INT_MIN, "none", nullptr},
        {one, 11, "[7]", nullptr},
        {one, 13, "none", nullptr},
        {two, 10, "[2]", nullptr},
        {two, 11, "failed", noElement},
        {texts, 11, "[CCC] of item 4", nullptr},
        {twoTexts, 11, "failed", noValue},
        {none, 12, "failed", noValue}};
    for (const auto& [attribute, frame, copy, message] : rows) {
        EXPECT_EQ(Frame(*attribute, frame), copy) << frame;
        if (message)
            ClaimEach({Of(L"CreateSingleFrameCopy", message)});
    }
    EXPECT_EQ(Frame(*sequence, 12), "failed");
    ClaimEach({Of(L"InitFromValues", L" Sequence type DICOM data values not supported "),
               Of(L"CreateSingleFrameCopy", L"Failed to initialize single frame copy from data values")});
    texts->ResetMultiFrameInfo();
    EXPECT_EQ(Frame(*texts, 77), "[A] [BB] [CCC] of item 4") << "a single-frame attribute is copied whole";
    EXPECT_EQ(Frame(CKivDSCodeSequenceAttribute(2, Code("1", "DCM", "Left")), 77), "[Left]");
}

TEST_F(AttributeMultiFrameTest, SequenceItemsAreFoundByTheirIndexAndNumberedInACopy)
{
    const auto attribute = Values({10, 20, 30, 40, 50}, -4, 2); // indices -4 to 4
    Value again({60u}, 2);
    attribute->SetValue(4, &again.Record());
    int count = -1;
    EXPECT_TRUE(attribute->GetNumberOfInSequenceValues(&count) && count == 3);
    SKivAGAttributeValue value = {};
    for (const auto& [index, position] : {std::pair(0, 2), std::pair(2, 3), std::pair(-2, 1)}) { // the first
        ASSERT_TRUE(attribute->GetInSequenceValue(index, &value));
        EXPECT_TRUE(value == *attribute->GetValuePtr(position) && value.nInSequenceIndex == index);
        EXPECT_NE(value.pData, attribute->GetValuePtr(position)->pData);
        attribute->DeleteAttributeValue(value);
    }
    const OpenAttribute empty;
    EXPECT_FALSE(attribute->GetInSequenceValue(1, &value) || empty.GetInSequenceValue(0, &value));
    EXPECT_TRUE(empty.GetNumberOfInSequenceValues(&count) && count == 0);
    EXPECT_FALSE(empty.GetNumberOfInSequenceValues(nullptr) || empty.GetInSequenceValue(0, nullptr));
    ClaimEach({Of(L"GetNumberOfInSequenceValues", L"Invalid null output pointer"),
               Of(L"GetInSequenceValue", L"Invalid null output value pointer")});

    const auto zero = Values({1, 2, 3}), outside = Values({1, 2}, -1), counted = Values({1, 2, 3}, 0, 5);
    const std::pair<OpenAttribute*, std::vector<int>> rows[] = {
        {zero.get(), {0, 1, 2}}, {outside.get(), {-1, -1}}, {counted.get(), {0, 5, 10}}};
    for (const auto& [source, indices] : rows) {
        source->SetMultiFrameInfo(1, 3);
        CKivDSDicomAttribute* out = nullptr;
        ASSERT_TRUE(source->CreateInSequenceInitializedCopy(out));
        const AttributePtr copy(out);
        EXPECT_TRUE(*copy == *source && copy->GetType() == 0);
        for (std::size_t i = 0; i < indices.size(); ++i)
            EXPECT_EQ(copy->GetValuePtr(static_cast<int>(i))->nInSequenceIndex, indices[i]);
    }
    EXPECT_EQ(zero->GetValuePtr(2)->nInSequenceIndex, 0) << "the source stays";
}

} // namespace
} // namespace kivds::test
