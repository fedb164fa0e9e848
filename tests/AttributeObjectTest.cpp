// The attribute as an object: storage, copies, accessors, the factory, and what all that costs.
#include "tests/support/Attributes.h"

#include <climits>
#include <type_traits>

namespace kivds::test {
namespace {

using namespace std::string_view_literals;
using AttributeObjectTest = AttributeTest;

TEST_F(AttributeObjectTest, ANewAttributeIsEmpty)
{
    const OpenAttribute plain, flagged(true, true);
    unsigned long tag = 1;
    int count = 1;
    EXPECT_TRUE(plain.GetTag(&tag) && tag == 0 && plain.GetNumberOfValues(&count) && count == 0);
    EXPECT_TRUE(!plain.IsPrivate() && !plain.MustReplicate() && !plain.IsMultiFrame() && !plain.GetType());
    EXPECT_TRUE(!plain.GetDescription() && plain.GetDicomRepresentation() == 0 && !plain.GetValuePtr(0));
    EXPECT_TRUE(flagged.IsPrivate() && flagged.MustReplicate());
    EXPECT_FALSE(plain.GetTag(nullptr) || plain.GetNumberOfValues(nullptr));
    ClaimEach({Of(L"GetTag", L" Nul output parameter pointer "),
               Of(L"GetNumberOfValues", L" Nul output parameter pointer ")});
}

TEST_F(AttributeObjectTest, AllocMakesZeroedValuesAndASmallSingleOneInside)
{
    const std::tuple<int, tagEKivAGAttributeType, int, bool, const char*> rows[] = {
        {1, eAttrInt, 4, true, "[0 0 0 0]"}, {1, eAttrInt, 5, false, "[0 0 0 0 0]"},
        {1, eAttrDouble, 2, true, "[0 0]"},  {2, eAttrInt, 1, false, "[0] [0]"},
        {1, eAttrNone, 3, true, "[]"},       {3, eAttrUShort, 0, false, "[] [] []"},
        {0, eAttrInt, 1, false, ""},         {-2, eAttrInt, 1, false, ""}};
    OpenAttribute attribute;
    for (const auto& [values, type, elements, inside, text] : rows) {
        attribute.InitFromDicomData(1, OB, 12, "123456789012", nullptr, false, false, 5, 1);
        EXPECT_TRUE(attribute.Alloc(values, type, elements));
        EXPECT_EQ(Text(attribute), text);
        EXPECT_EQ(attribute.m_bPreallocatedData, inside);
        for (int i = 0; const auto* value = attribute.GetValuePtr(i); ++i) {
            EXPECT_EQ(attribute.IsPreallocatedData(value->pData), inside);
            EXPECT_TRUE(value->nCount == elements && value->eType == type && value->nInSequenceIndex == 0);
        }
    }
    EXPECT_FALSE(attribute.Alloc(3, eAttrInt, -1));
    ClaimEach({Of(L"Alloc", L"Invalid byte size")});
}

TEST_F(AttributeObjectTest, ValuesAreHandedOutAsCopiesLentOrReplaced)
{
    const auto attribute = Values({10, 20, 30});
    SKivAGAttributeValue value = {};
    ASSERT_TRUE(attribute->GetValue(1, &value));
    value.pData[0] = 99;
    EXPECT_TRUE(attribute->DeleteAttributeValue(value) && !value.pData);
    value = *attribute->GetValuePtr(0); // the first small value lives inside and is not released on its own
    EXPECT_TRUE(attribute->DeleteAttributeValue(value) && attribute->IsPreallocatedData(value.pData));
    EXPECT_EQ(Text(*attribute), "[10] [20] [30]");
    for (const int index : {-1, 3, INT_MIN, INT_MAX, 0}) {
        SKivAGAttributeValue* const record = index == 0 ? nullptr : &value;
        EXPECT_FALSE(attribute->GetValue(index, record) || attribute->SetValue(index, record));
        EXPECT_TRUE(index == 0 || !attribute->GetValuePtr(index));
        ClaimEach({Of(L"GetValue", L" Bad input / output parameters "),
                   Of(L"SetValue", L" Bad input / output parameters ")});
    }

    Value text({'h', 'i', '\0'}, 4);
    EXPECT_TRUE(attribute->SetValue(0, &text.Record()) && attribute->SetValue(2, &text.Record()));
    value = *attribute->GetValuePtr(2);
    EXPECT_TRUE(attribute->SetValue(2, &value)) << "from the block that is replaced";
    EXPECT_EQ(Text(*attribute), "[hi] [20] [hi]");
    EXPECT_EQ(attribute->GetValuePtr(2)->nInSequenceIndex, 4);
    EXPECT_FALSE(attribute->IsPreallocatedData(attribute->GetValuePtr(0)->pData));
    value = {1, eAttrInt, 0, nullptr};
    EXPECT_FALSE(attribute->SetValue(1, &value) || attribute->CopyAttributeValue(&value, &value, -1));
    EXPECT_FALSE(attribute->CopyAttributeValue(nullptr, &value, 0) ||
                 attribute->CopyAttributeValue(&value, nullptr, 0));
    ClaimEach({Of(L"CopyAttributeValue", L"Invalid input buffer "),
               Of(L"CopyAttributeValue", L"Invalid input buffer "),
               Of(L"CopyAttributeValue", L"Invalid input parameter"),
               Of(L"CopyAttributeValue", L"Invalid input parameter")});
    EXPECT_EQ(Text(*attribute), "[hi] [20] [hi]");
    text.Record().nCount = 0;
    EXPECT_TRUE(attribute->SetValue(1, &text.Record()));
    const auto& [count, type, index, data] = *attribute->GetValuePtr(1);
    EXPECT_TRUE(count == 0 && type == eAttrChar && index == 0 && !data) << "empty, the index as it was";
}

void ExpectSame(const CKivDSDicomAttribute& copy, const CKivDSDicomAttribute& source)
{
    unsigned long copyTag = 0, tag = 1;
    EXPECT_TRUE(copy.GetTag(&copyTag) && source.GetTag(&tag) && copyTag == tag);
    EXPECT_EQ(copy.GetDicomRepresentation(), source.GetDicomRepresentation());
    EXPECT_TRUE(copy.IsPrivate() == source.IsPrivate() && copy.MustReplicate() == source.MustReplicate());
    EXPECT_TRUE(copy == source && copy.GetType() == 0) << Text(copy) << " and " << Text(source);
    for (int i = 0; const auto* value = source.GetValuePtr(i); ++i) {
        EXPECT_NE(copy.GetValuePtr(i)->pData, value->pData);
        EXPECT_EQ(copy.GetValuePtr(i)->nInSequenceIndex, value->nInSequenceIndex);
    }
}

TEST_F(AttributeObjectTest, CopiesAndAssignmentsOwnWhatTheyHold)
{
    for (int over = 0; over < kKinds * kKinds; ++over) { // every kind of storage over every other
        const AttributePtr source = OfKind(over % kKinds), earlier = OfKind(over / kKinds);
        SCOPED_TRACE(Text(*source));
        CKivDSDicomAttribute target(*earlier);
        ExpectSame(target, *earlier);
        const CKivDSDicomAttribute& self = target = *source;
        target = self;
        ExpectSame(target, *source);
        target.Clean();
        EXPECT_TRUE(Text(target).empty() && target.IsMultiFrame() == source->IsMultiFrame() &&
                    target.IsPrivate() == source->IsPrivate() &&
                    target.MustReplicate() == source->MustReplicate());
    }
    const auto source = Values({1, 2});
    source->InitEmpty(0xFFFEE000, 33, true);
    unsigned long tag = 0;
    EXPECT_TRUE(source->GetTag(&tag) && tag == 0xFFFEE000 && source->GetDicomRepresentation() == 33);
    EXPECT_TRUE(source->MustReplicate() && !source->IsPrivate() && Text(*source).empty());
}

TEST_F(AttributeObjectTest, TheFactoryMakesAndCopiesTheClassThatATypeNames)
{
    static_assert(std::is_trivially_destructible_v<CKivDSDicomAttributeFactory>, "usable until the end");
    const auto make = [](const auto& source) {
        return AttributePtr(g_DicomAttributeFactory.CreateDicomAttribute(source));
    };
    const auto isCodes = [](const CKivDSDicomAttribute& attribute) {
        return dynamic_cast<const CKivDSCodeSequenceAttribute*>(&attribute) != nullptr;
    };
    const std::wstring create = L"CKivDSDicomAttributeFactory::CreateDicomAttribute";
    for (const int type : {0, 1}) {
        const AttributePtr made = make(type);
        EXPECT_TRUE(made->GetType() == type && isCodes(*made) == (type == 1));
        EXPECT_TRUE(!made->GetValuePtr(0) && !made->IsPrivate() && !made->MustReplicate());
    }
    OpenAttribute attribute;
    for (const int type : {1, 2, -1, INT_MIN, INT_MAX}) {
        attribute.m_nType = type; // 1: it says that it holds codes, but is no such object
        Refused(make(static_cast<OpenAttribute::Base&>(attribute)) != nullptr, create,
                L"Unknown DICOM attribute type");
        if (type != 1)
            Refused(make(type) != nullptr, create, L"Unknown input DICOM attribute type");
    }
    for (int kind = 0; kind < kKinds; ++kind) {
        const AttributePtr source = OfKind(kind), copy = make(*source);
        EXPECT_TRUE(*copy == *source && isCodes(*copy) == isCodes(*source)) << kind;
        CKivDSDicomAttribute* frame = nullptr;
        const bool made = source->CreateSingleFrameCopy(1, &frame) && frame;
        EXPECT_FALSE(made && isCodes(*make(*AttributePtr(frame)))) << "a plain copy says that it is plain";
        ClaimAll(); // from those of no frames
    }
}

TEST_F(AttributeObjectTest, OneSmallValueCostsTheObjectAloneAndReadingItNothing)
{
    const std::pair<int, std::string_view> rows[] = {
        {US, "\0\2"sv},    {FD, "12345678"}, {UL, "123456789012"}, {CS, "ORIGINAL"},     {DA, "20240229"},
        {TM, "101530.25"}, {DS, "1.5\\2"},   {AS, "045Y"},         {IS, "-3\\12\\40\\7"}};
    for (const auto& [representation, bytes] : rows) {
        AttributePtr attribute;
        {
            const Allocations watched;
            attribute = Attribute(0x00080060, representation, bytes);
            EXPECT_EQ(watched.Count(), 1) << bytes;
        }
        const auto other = Attribute(0x00080060, representation, bytes);
        char buffer[100];
        unsigned char text[20];
        const Allocations watched;
        int size = 0;
        EXPECT_TRUE(*attribute == *other && !(*attribute < *other) && attribute->Serialize(nullptr, size) &&
                    attribute->Serialize(buffer, size) && attribute->GetValuePtr(0));
        attribute->GetValueAsString(0, sizeof text, text);
        EXPECT_EQ(watched.Count(), 0) << bytes;
    }
}

} // namespace
} // namespace kivds::test
