// The iterators: what they walk, in which order, and what ends their walk.
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

using Iterator = CKivDSDicomAttributeCollectionIterator;
using IteratorTest = ReportTest;

constexpr Wide kFirst = L"CKivDSDicomAttributeCollectionIterator::GetFirstAttribute";
constexpr Wide kNotInitialized = L"Object not (properly) initialized";

std::string Walk(Iterator& iterator)
{
    std::string walked;
    for (auto* attribute = iterator.GetFirstAttribute(); attribute; attribute = iterator.GetNextAttribute()) {
        unsigned long tag = 0;
        attribute->GetTag(&tag);
        walked += (walked.empty() ? "" : " ") + Show(tag, *attribute, false);
    }
    EXPECT_EQ(iterator.GetNextAttribute(), nullptr);
    return walked;
}

TEST_F(IteratorTest, FlagsSelectThePartsToWalk)
{
    for (const auto& [form, single, multi, both] : Examples<Txt, Txt, Txt, Txt>("walks")) {
        SCOPED_TRACE(form);
        for (const auto& [walkSingle, walkMulti, expected] : {std::tuple(true, false, single),
                                                              {false, false, single},
                                                              {false, true, multi},
                                                              {true, true, both}}) {
            const CollectionPtr facade = Make(form);
            Iterator iterator(*facade, walkSingle, walkMulti);
            EXPECT_EQ(iterator.GetNextAttribute(), nullptr);
            for (int again = 0; again < 2; ++again) {
                EXPECT_EQ(Walk(iterator), expected ? expected : "");
                if (!expected)
                    Claim(kFirst, kNotInitialized);
            }
        }
    }
    const CollectionPtr empty = Make("{}");
    Iterator iterator(*empty, true, true);
    Claim(kFacade + L"AddCompoundCollection", L"Bad input parameter: the compound collection is empty ");
    Refused(iterator.GetFirstAttribute(), kFirst, kNotInitialized);
    EXPECT_EQ(iterator.GetNextAttribute(), nullptr);
}

TEST_F(IteratorTest, TheWalkLendsTheCollectionsOwnAttributes)
{
    const CollectionPtr facade = Make("X1");
    CKivDSDicomAttribute* own = nullptr;
    ASSERT_TRUE(facade->GetAttributePtr(Tag('X'), &own, true, true));
    EXPECT_EQ(Iterator(*facade, true, true).GetFirstAttribute(), own);
    const CollectionPtr compound = Make("{}");
    ASSERT_TRUE(Compound(*compound)->AddCollection(facade.get(), false));
    EXPECT_EQ(CKivDSCompoundCollectionIterator(*Compound(*compound), true, true).GetFirstAttribute(), own);
    EXPECT_NE(Iterator(*compound, true, true).GetFirstAttribute(), own);

    Iterator early(*facade, true, true); // a multi-frame part that comes later is not seen
    Add(*facade, MakeAttribute("M1", true));
    EXPECT_EQ(Walk(early), "X1");
}

TEST_F(IteratorTest, InvalidationEndsTheWalkUntilItStartsAgain)
{
    struct Subject : CKivDSSubscriber
    {
        void Notify(CKivDSBase* const, int, long, long) override {}
        using CKivDSSubscriber::NotifySubscribers;
    } subject;
    const CollectionPtr facade = Make("X1 Y1 Z1");
    Iterator iterator(*facade, true, true);
    ASSERT_TRUE(subject.Subscribe(&iterator));
    for (const int event : {15, 16, 17, 18, 0, -1}) {
        EXPECT_TRUE(iterator.GetFirstAttribute());
        event < 0 ? iterator.Invalidate() : subject.NotifySubscribers(event, 0, 0);
        const bool ends = event == 16 || event == 17 || event < 0;
        EXPECT_EQ(iterator.GetNextAttribute() == nullptr, ends) << event;
        EXPECT_EQ(iterator.GetNextAttribute() == nullptr, ends) << event;
        EXPECT_EQ(Walk(iterator), "X1 Y1 Z1");
    }
    EXPECT_TRUE(subject.Unsubscribe(&iterator));
}

TEST_F(IteratorTest, TheCompoundIteratorWalksMemberAfterMember)
{
    for (const auto& [form, single, multi, walked, memberless] :
         Examples<Txt, bool, bool, Txt, int>("member walks")) {
        SCOPED_TRACE(form);
        const CollectionPtr compound = Make(form);
        CKivDSCompoundCollectionIterator iterator(*Compound(*compound), single, multi);
        EXPECT_EQ(iterator.GetNextAttribute(), nullptr);
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(Walk(iterator), walked);
            for (int i = 0; i < memberless; ++i)
                Claim(kFirst, kNotInitialized);
        }
    }
    const CollectionPtr compound = Make("{X1;Y1}");
    CKivDSCompoundCollectionIterator iterator(*Compound(*compound), true, true);
    EXPECT_TRUE(iterator.GetFirstAttribute());
    iterator.Notify(nullptr, 16, 0, 0); // which does not stop this one
    EXPECT_TRUE(iterator.GetNextAttribute());
}

} // namespace
} // namespace kivds::test
