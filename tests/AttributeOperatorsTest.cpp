// Equality, ordering and accumulation of attributes.
#include "tests/support/Attributes.h"

#include <algorithm>
#include <utility>

namespace kivds::test {
namespace {

using namespace std::string_view_literals;
using AttributeOperatorsTest = AttributeTest;

TEST_F(AttributeOperatorsTest, ValuesAndFramesAloneMakeAttributesEqual)
{
    const auto frames = [](AttributePtr attribute, int first, int last) {
        attribute->SetMultiFrameInfo(first, last);
        return attribute;
    };
    const std::pair<AttributePtr, int> attributes[] = {
        // equal numbers: equal attributes
        {Numbers(0x00100010, {1, 2, 3}), 0},
        {Numbers(0x00100020, {1, 2, 3}, true), 0}, // tag and flags take no part
        {Attribute(0x00100010, OW, "\1\0\2\0\3\0"sv), 1},
        {frames(Numbers(0x00100010, {1, 2, 3}), 1, 3), 2},
        {frames(Numbers(0x00100010, {1, 2, 3}), 2, 4), 3},
        {frames(Numbers(0x00100020, {1, 2, 3}), 1, 3), 2},
        {Attribute(0x00100010, CS, "A\\B", false, 0), 4},
        {Attribute(0x00100010, LO, "A\\B", false, 7), 4}, // nor do codes and indices
        {Attribute(0x00100010, CS, "B\\A"), 5},
        {Attribute(0x00100010, CS, "A"), 6},
        {std::make_unique<OpenAttribute>(), 7},
        {std::make_unique<CKivDSCodeSequenceAttribute>(true, true), 7}, // nor does the type
    };
    for (const auto& [first, firstKind] : attributes) {
        for (const auto& [second, secondKind] : attributes) {
            SCOPED_TRACE(Text(*first) + " and " + Text(*second));
            CKivDSDicomAttribute &a = *first, &b = *second;
            const bool equal = firstKind == secondKind;
            EXPECT_TRUE((a == b) == equal && (a != b) == !equal);
            EXPECT_TRUE((std::as_const(a) == b) == equal && (std::as_const(a) != b) == !equal);
        }
    }
}

TEST_F(AttributeOperatorsTest, OrderGoesByValuesThenByTheirNumber)
{
    const auto a = Attribute(1, CS, "A"), ab = Attribute(1, CS, "A\\B"), b = Attribute(2, LO, "B");
    const auto none = Attribute(1, 29, "x"), number = Numbers(1, {5});
    const auto frame = PerFrame(1, {5}), laterFrame = PerFrame(1, {6});
    const Report multiFrame{L"operator <", L"Attempt to quantitatively compare multiframe attributes", 1};
    const std::tuple<const AttributePtr&, const AttributePtr&, bool, bool, std::vector<Report>> rows[] = {
        {a, ab, true, false, {}},
        {a, b, true, false, {}},
        {ab, b, true, false, {}},
        {none, a, true, false, {}},
        {a, a, false, false, {}},
        {frame, frame, false, false, {}},
        {a, number, false, false, {kOtherTypes}},
        {frame, laterFrame, true, false, {multiFrame}},
        {number, laterFrame, true, false, {multiFrame}},
        {frame, a, false, false, {multiFrame, kOtherTypes}}};
    for (const auto& [left, right, less, greater, reports] : rows) {
        EXPECT_EQ(*left < *right, less);
        ClaimEach(reports);
        EXPECT_EQ(*right < *left, greater);
        ClaimEach(reports);
        EXPECT_EQ(*left >= *right, !less);
        ClaimEach(reports);
    }
}

// What is appended, the tables of docs/collections.md say.
TEST_F(AttributeOperatorsTest, AccumulationKeepsIndicesAndFlagsAndPassesOverWhatIsNotAlike)
{
    const auto held = Values({1, 2}, -4), added = Values({2, 3, 3}, 10, 1, 0x00280010, true);
    EXPECT_EQ(&(*held += *added), held.get());
    EXPECT_EQ(Text(*held), "[1] [2] [2] [3] [3]");
    EXPECT_FALSE(held->MustReplicate());
    for (int i = 0; const auto* value = held->GetValuePtr(i); ++i)
        EXPECT_EQ(value->nInSequenceIndex, i < 2 ? -4 : 8 + i);
    EXPECT_EQ(Text(*Values({}) += *Values({5, 5})), "[5] [5]");
    EXPECT_EQ(Text(*Values({1}) += *Values({}, 0, 0, 0x00280010, true)), "[1]");
    const auto a = Numbers(5, {1}), otherTag = Numbers(6, {3}), multiFrame = PerFrame(5, {3});
    const auto otherCode = Attribute(5, SS, "\3\0"sv);
    for (const AttributePtr* b : {&otherTag, &multiFrame, &otherCode, &a})
        EXPECT_EQ(Text(*a += **b), "[1]");
    EXPECT_EQ(Text(*multiFrame += *a), "[3]");
}

// Many values take another road inside (room made ahead, an index); what it gives must be the same.
TEST_F(AttributeOperatorsTest, ThousandsOfValuesGatherAsAFewDo)
{
    const auto gathered = Values({});
    std::vector<unsigned> expected;
    unsigned state = 1;
    for (unsigned i = 0; i < 3000; ++i) {
        state = state * 1664525 + 1013904223;
        const unsigned x = state >> 20 & 1023, y = x ^ 1;
        const std::vector<unsigned> held = expected;
        for (const unsigned element : {x, y, y}) {
            if (std::find(held.begin(), held.end(), element) == held.end())
                expected.push_back(element);
        }
        *gathered += *Values({x, y, y});
        if (i % 1000 == 500) { // a value that is replaced is no longer held, its replacement is
            Value other({100'000 + i});
            EXPECT_TRUE(gathered->SetValue(3, &other.Record()));
            *gathered += *Values({100'000 + i});
            expected[3] = 100'000 + i;
        }
    }
    std::string text;
    for (const unsigned element : expected)
        text += (text.empty() ? "[" : " [") + std::to_string(element) + "]";
    EXPECT_EQ(Text(*gathered), text);
    EXPECT_EQ(Text(CKivDSDicomAttribute(*gathered)), text);
}

} // namespace
} // namespace kivds::test
