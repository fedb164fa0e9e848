// Value records: sizes, allocation, copies, equality, ordering.
#include "foundation/AttributeValue.h"

#include "tests/support/Attributes.h"

#include <climits>
#include <cmath>

namespace kivds::test {
namespace {

using AttributeValueTest = AttributeTest;

TEST_F(AttributeValueTest, ANewArrayIsZeroAndOneThatCannotBeHadIsNull)
{
    const std::unique_ptr<SKivAGAttributeValue[]> records(GetNewAttributeValueArray(3));
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& [count, type, index, data] = records[i];
        EXPECT_TRUE(count == 0 && type == eAttrNone && index == 0 && !data);
    }
    for (const int n : {-1, INT_MIN, INT_MAX, 200'000'000}) { // the last: too many bytes for 32 bits
        EXPECT_EQ(GetNewAttributeValueArray(n), nullptr) << n;
        ClaimEach({{L"GetNewAttributeValueArray", L"Failed to allocate new attibute value", 0}});
    }
}

TEST_F(AttributeValueTest, ACopyCoversTheWholeValueOrOneElementOrSaysWhyNot)
{
    Value five({short{10}, short{-20}, short{30}, short{40}, short{-50}}, 7);
    const std::pair<int, std::vector<short>> rows[] = {
        {-1, {10, -20, 30, 40, -50}}, {INT_MIN, {10, -20, 30, 40, -50}}, {0, {10}}, {2, {30}}, {4, {-50}}};
    SKivAGAttributeValue copy = {};
    for (const auto& [elementIndex, elements] : rows) {
        ASSERT_TRUE(CopyAttributeValue(&five.Record(), &copy, elementIndex));
        EXPECT_TRUE(copy.eType == eAttrShort && copy.nInSequenceIndex == 7 &&
                    copy.pData != five.Record().pData);
        ASSERT_EQ(copy.nCount, static_cast<int>(elements.size()));
        EXPECT_EQ(std::memcmp(copy.pData, elements.data(), elements.size() * 2), 0) << elementIndex;
        EXPECT_TRUE(FreeAttributeValue(copy) && !copy.pData);
    }
    EXPECT_FALSE(CopyAttributeValue(nullptr, &copy, -1) || CopyAttributeValue(&five.Record(), nullptr, -1));
    ClaimEach({2, {L"CopyAttributeValue", L"Invalid input parameters", 0}});
    SKivAGAttributeValue dataless = {2, eAttrShort, 7, nullptr}; // is copied as zeros
    EXPECT_TRUE(CopyAttributeValue(&dataless, &copy, -1) && copy == Value({short{0}, short{0}}, 7));
    FreeAttributeValue(copy);
    for (const int type : {0, 8, -1}) {
        SKivAGAttributeValue none = five;
        none.eType = static_cast<tagEKivAGAttributeType>(type);
        copy = five;
        EXPECT_FALSE(CopyAttributeValue(&none, &copy, -1));
        ClaimEach({{L"CopyAttributeValue", L"Empty source value ", 0}});
        EXPECT_TRUE(copy.nCount == 0 && !copy.pData);
        EXPECT_TRUE(CopyAttributeValue(&none, &none, -1) && none.nCount == 5)
            << "onto itself nothing is looked at";
    }
}

TEST_F(AttributeValueTest, ValuesCompareByTypeCountAndElements)
{
    const float nan = std::nanf("");
    const unsigned short low = 1, high = 0xFFFF;
    const struct
    {
        const char* name;
        Value a, b;
        bool equal, less, greater;
    } rows[] = {
        {"indices differ", {{1, 2}, 0}, {{1, 2}, 5}, true, false, false},
        {"a prefix is less", {{1, 2}}, {{1, 2, 0}}, false, true, false},
        {"elements before length", {{1, 3}}, {{1, 2, 9}}, false, false, true},
        {"no elements", Value(std::initializer_list<int>{}), {{0}}, false, true, false},
        {"characters are unsigned", {{'B', '\x7F'}}, {{'B', '\x80'}}, false, true, false},
        {"signed short", {{short{-1}}}, {{short{1}}}, false, true, false},
        {"unsigned short", {{high}}, {{low}}, false, false, true},
        {"signed int", {{INT_MIN}}, {{INT_MAX}}, false, true, false},
        {"unsigned int", {{0x80000000u}}, {{1u}}, false, false, true},
        {"zeros of both signs are different bytes, neither is less", {{0.0}}, {{-0.0}}, false, false, false},
        {"a NaN is less, both ways", {{nan}}, {{1.0f}}, false, true, true},
        {"a NaN equals its own bytes, and is less", {{nan}}, {{nan}}, true, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const SKivAGAttributeValue &a = row.a, &b = row.b;
        EXPECT_TRUE((a == b) == row.equal && (a != b) == !row.equal);
        EXPECT_TRUE((a < b) == row.less && (b < a) == row.greater);
    }
    for (const int type : {0, 8}) { // no bytes are compared
        const SKivAGAttributeValue three = {3, static_cast<tagEKivAGAttributeType>(type), 0, nullptr};
        const SKivAGAttributeValue four = {4, three.eType, 0, nullptr};
        EXPECT_TRUE(three < four && !(four < three) && three != four);
    }
    const Value number({1}), other({1u});
    const SKivAGAttributeValue &a = number, &b = other;
    EXPECT_FALSE(a == b || a < b || b < a);
    ClaimEach({kOtherTypes, kOtherTypes});
}

} // namespace
} // namespace kivds::test
