// The attribute factory: which class it makes, and what it refuses.
#include "attribute/CKivDSDicomAttributeFactory.h"

#include "tests/support/Attributes.h"

#include <climits>
#include <type_traits>

namespace kivds::test {
namespace {

static_assert(std::is_trivially_destructible_v<CKivDSDicomAttributeFactory>, "usable until the program ends");

struct FactoryTest : AttributeTest
{
    template <class Source>
    static AttributePtr Make(const Source& source)
    {
        return AttributePtr(g_DicomAttributeFactory.CreateDicomAttribute(source));
    }
    static const CKivDSCodeSequenceAttribute* Codes(const AttributePtr& attribute)
    {
        return dynamic_cast<const CKivDSCodeSequenceAttribute*>(attribute.get());
    }
    static Report OfCreate(const wchar_t* message)
    {
        return {L"CKivDSDicomAttributeFactory::CreateDicomAttribute", message, 0};
    }
};

TEST_F(FactoryTest, ATypeNamesAClass)
{
    for (const int type : {0, 1}) {
        const AttributePtr attribute = Make(type);
        EXPECT_TRUE(attribute && attribute->GetType() == type &&
                    (Codes(attribute) != nullptr) == (type == 1));
        EXPECT_TRUE(!attribute->GetValuePtr(0) && !attribute->IsPrivate() && !attribute->MustReplicate());
    }
    for (const int type : {2, -1, INT_MIN, INT_MAX}) {
        EXPECT_FALSE(Make(type));
        ClaimEach({OfCreate(L"Unknown input DICOM attribute type")});
    }
}

TEST_F(FactoryTest, ACopyIsOfItsSourcesClass)
{
    const CKivDSCodeSequenceAttribute codes(7, Code("1", "DCM", "Left"));
    const AttributePtr source = PerFrame(1, {2, 3}), copy = Make<CKivDSDicomAttribute>(codes),
                       plain = Make(*source);
    ASSERT_TRUE(Codes(copy) && plain && !Codes(plain));
    EXPECT_STREQ(Codes(copy)->GetCodePtr(0)->szCodeMeaning, "Left");
    EXPECT_TRUE(*copy == codes && *plain == *source);
    CKivDSDicomAttribute* frame = nullptr;
    ASSERT_TRUE(codes.CreateSingleFrameCopy(1, &frame));
    EXPECT_FALSE(Codes(Make(*AttributePtr(frame)))) << "a plain copy says that it is plain";
    OpenAttribute attribute;
    for (const int type : {2, -1, 1}) { // the last: it says that it holds codes, but is no such object
        attribute.m_nType = type;
        EXPECT_FALSE(Make<CKivDSDicomAttribute>(attribute));
        ClaimEach({OfCreate(L"Unknown DICOM attribute type")});
    }
}

} // namespace
} // namespace kivds::test
