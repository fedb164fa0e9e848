// Objects that are given themselves, their own parts or bytes, or nothing to read from or to answer in.
#include "tests/support/Attributes.h"
#include "tests/support/Notation.h"

#include <memory>
#include <utility>

namespace kivds::test {
namespace {

using ItselfAndNothingTest = AttributeTest;

TEST_F(ItselfAndNothingTest, AnOperationOnItselfDoesWhatItDoesOnAnEqualObject)
{
    for (const auto& [text, apply, expected] : Rows<Txt, void (*)(Facade&), Txt>{
             {"X1 Y2", [](Facade& c) { *SinglePart(c) = std::as_const(*SinglePart(c)); }, "X1 Y2"},
             {"<X1|M1,2;Z1>", [](Facade& c) { *Enhanced(c) |= *Enhanced(c); }, "<X1|M1,2;Z1>"},
             {"<X1|M1,2;Z1>", [](Facade& c) { *Enhanced(c) -= *Enhanced(c); }, "<X1|M1,2;Z1>"},
             {"<X1;Z1>", [](Facade& c) { c -= Facade(c); }, "<X1;Z1>"},
             {"X1 Y2", [](Facade& c) { EXPECT_TRUE(c == c && *SinglePart(c) == *SinglePart(c)); }, "X1 Y2"},
             {"<X1;Z1>", [](Facade& c) { EXPECT_TRUE(Facade(c) == c); }, "<X1;Z1>"},
         }) {
        const CollectionPtr collection = Make(text);
        apply(*collection);
        EXPECT_EQ(Show(*collection), expected) << text;
    }
    CKivIPPRangeIDC range;
    EXPECT_TRUE(range.SetFrames(2, 4));
    range = std::as_const(range);
    EXPECT_EQ(range.GetNumberOfFrames(), 3);
}

TEST_F(ItselfAndNothingTest, AnAttributeTakesItsOwnBytesAndRecords)
{
    const AttributePtr name = Attribute(0x00100010, LO, "one\\two", false, 0, 2);
    const SKivAGAttributeValue second = *name->GetValuePtr(1);
    EXPECT_TRUE(name->InitFromDicomData(0x00100010, LO, second.nCount - 1, second.pData, nullptr, false,
                                        false, -1, 1));
    EXPECT_EQ(Text(*name), "[two]");
    EXPECT_TRUE(name->SetValue(0, const_cast<SKivAGAttributeValue*>(name->GetValuePtr(0))));
    EXPECT_EQ(Text(*name), "[two]");
    CKivDSCodeSequenceAttribute codes(0x00082218, Code("1", "DCM", "Left"));
    codes += std::as_const(codes);
    int values = 0;
    EXPECT_TRUE(codes.GetNumberOfValues(&values));
    EXPECT_EQ(values, codes.GetNumberOfCodes());
}

TEST_F(ItselfAndNothingTest, AnAttributeThatBecomesMultiFrameWhileItIsHeldStaysWhereItIs)
{
    const CollectionPtr collection = Make("X1 M1,2|");
    CKivDSDicomAttribute* held = nullptr;
    ASSERT_TRUE(collection->GetAttributePtr(Tag('M'), &held, true, false));
    held->SetMultiFrameInfo(1, 2);
    EXPECT_TRUE(collection->AddAttribute(held, true) && collection->AddAttribute(held, false));
    EXPECT_EQ(Show(*collection), "M1,2m X1|");
}

TEST_F(ItselfAndNothingTest, NothingToReadFromOrToAnswerInIsRefused)
{
    const std::unique_ptr<CKivIPPScopeElementC> element = Scope("1.2.3");
    CKivIPPScopeCollectionC collection;
    EXPECT_TRUE(collection.InitializeFromScope(element.get()));
    CKivIPPRangeIDC range;
    EXPECT_TRUE(range.SetFrames(1, 3));
    const std::unique_ptr<CKivIPPScopeItemC> study(g_pItemFactory->Create(g_StudyUID));
    EXPECT_TRUE(study->SetUID("1.2"));
    const std::initializer_list<CKivIPPSerialFormC*> objects = {element.get(), &collection, &range,
                                                                study.get()};
    for (CKivIPPSerialFormC* const object : objects) {
        EXPECT_TRUE(object->Dump());
        char buffer[1000];
        int size = 0;
        EXPECT_TRUE(object->Serialize(buffer, &size) && size > 0);
        EXPECT_FALSE(object->Serialize(buffer, nullptr) || object->Deserialize(nullptr, &size));
        EXPECT_TRUE(object->Serialize(nullptr, &size));
        EXPECT_FALSE(object->Deserialize(buffer, nullptr));
    }
    int size = 0;
    EXPECT_FALSE(Enhanced(*Make("<X1;Y1>"))->Deserialize(nullptr, size, true));
    Claim(L"CKivDSEnhancedMFCollection::Deserialize", L"Failed to deserialize the regular collections");
    char stream[1000];
    EXPECT_TRUE(Scope("1.2.3")->Serialize(stream, &size));
    CKivIPPScopeItemFactory* const factory = std::exchange(g_pItemFactory, nullptr);
    EXPECT_FALSE(element->Deserialize(stream, &size));
    g_pItemFactory = factory;
}

} // namespace
} // namespace kivds::test
