// The scope of collections: who owns it, who sees it, what is refused.
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

using CollectionScopeTest = ReportTest;

const std::wstring kSetScope = kFacade + L"SetScope";
constexpr Wide kRefused = L"Failed to set scope of compound collection";

TEST_F(CollectionScopeTest, AFacadesScopeIsThatOfWhatItHolds)
{
    for (const Txt form : {"X1|M1", "{X1;Y1}", "{}", "<X1;Z1>", "W1<X1;Z1>"}) {
        SCOPED_TRACE(form);
        const CollectionPtr facade = Make(form);
        EXPECT_TRUE(!facade->GetScope() && !facade->GetScopeAsCollection());
        EXPECT_TRUE(facade->SetScope(Scope("9").get(), true));
        EXPECT_EQ(ScopeOf(*facade), "9");
        const std::unique_ptr<CKivIPPScopeC> wrapped(facade->GetScopeAsCollection());
        EXPECT_TRUE(SameGuid(wrapped->GetType(), g_ScopeCollectionType));
        ASSERT_EQ(wrapped->GetLevels(), 3);
        EXPECT_TRUE(SameGuid(wrapped->GetScopeItemType(0), g_StudyUID));
        EXPECT_TRUE(SameGuid(wrapped->GetScopeItemType(1), g_SeriesUID));
        EXPECT_TRUE(SameGuid(wrapped->GetScopeItemType(2), g_ImageUID));
        EXPECT_TRUE(wrapped->IsEqual(std::unique_ptr<CKivIPPScopeC>(facade->GetScope()).get(), -1));
        // Nothing else has it: neither the part beside an enhanced collection, nor multi-frame parts.
        if (SinglePart(*facade)) {
            EXPECT_EQ(ScopeOf(*SinglePart(*facade)), *form == 'X' ? "9" : "none");
        }
        EXPECT_EQ(MultiPart(*facade) ? ScopeOf(*MultiPart(*facade)) : "none", "none");
        EXPECT_TRUE(facade->SetScope(nullptr, false));
        EXPECT_EQ(ScopeOf(*facade), "none");
    }
    const CollectionPtr compound = Make("{X1}");
    SetScope(*compound, "9");
    EXPECT_EQ(ScopeOf(*CollectionPtr(Compound(*compound)->GetCollection(0, false))), "none");
    EXPECT_FALSE(Make("-")->SetScope(nullptr, true));
    EXPECT_TRUE(!Make("-")->GetScope() && !Make("-")->GetScopeAsCollection());
    EXPECT_TRUE(NothingReported());
    EXPECT_FALSE(Make("<-;Z1>")->SetScope(nullptr, true));
    Claim(kSetScope, kRefused);
}

TEST_F(CollectionScopeTest, WhatIsTakenOverIsDeletedOnceAndWhatIsCopiedStays)
{
    struct Counted : CKivIPPScopeElementC
    {
        explicit Counted(int* deleted) : m_pDeleted(deleted) { SetType(g_ScopeElementType); }
        ~Counted() override { ++*m_pDeleted; }
        int* m_pDeleted;
    };
    for (const Txt form : {"X1", "{X1}", "<X1;Z1>"}) {
        int deleted = 0;
        CollectionPtr facade = Make(form);
        EXPECT_TRUE(facade->SetScope(new Counted(&deleted), false));
        EXPECT_TRUE(facade->SetScope(new Counted(&deleted), false));
        EXPECT_EQ(deleted, 1);
        Counted copied(&deleted);
        EXPECT_TRUE(facade->SetScope(&copied, true));
        EXPECT_EQ(deleted, 2);
        EXPECT_TRUE(facade->SetScope(new Counted(&deleted), false));
        facade.reset();
        EXPECT_EQ(deleted, 3);
    }
}

TEST_F(CollectionScopeTest, OnlyScopeElementsAreKept)
{
    const Wide blanks = L" Unable to initialize the scope object ",
               none = L"Unable to initialize the scope object";
    for (const auto& [form, owner, unsupported, notInitialized] : Rows<Txt, std::wstring, Wide, Wide>{
             {"X1", kPart, L" Unsupported scope type", blanks},
             {"{X1}", kCompound, L"Unsupported scope type", none},
             {"<X1;Z1>", kPart, L" Unsupported scope type", blanks},
         }) {
        SCOPED_TRACE(form);
        const CollectionPtr facade = Make(form);
        const auto expectRefused = [&, owning = owner, plain = *form == 'X'](CKivIPPScopeC& scope, bool copy,
                                                                             Wide message) {
            SetScope(*facade, "9");
            Refused(facade->SetScope(&scope, copy), owning + L"SetScope", message);
            if (!plain)
                Claim(kSetScope, kRefused);
            EXPECT_EQ(ScopeOf(*facade), "none");
        };
        auto collection = std::make_unique<CKivIPPScopeCollectionC>();
        collection->SetType(g_ScopeCollectionType);
        expectRefused(*collection, true, unsupported);
        expectRefused(*collection, false, unsupported);
        collection->SetType(g_ScopeElementType); // it says that it is what it is not
        expectRefused(*collection, true, notInitialized);
        EXPECT_TRUE(facade->SetScope(collection.release(), false));
        EXPECT_TRUE(!facade->GetScope() && !facade->GetScopeAsCollection());
        Claim(owner + L"GetScope", notInitialized);
        Claim(owner + L"GetScopeAsCollection", blanks);
    }
}

TEST_F(CollectionScopeTest, ShallowCopiesSeeAScopeChangeAndDeepCopiesDoNot)
{
    for (const Txt form : {"X1", "{X1}"}) {
        const CollectionPtr facade = Make(form);
        SetScope(*facade, "8");
        const Facade shallow(*facade), deep(*facade, true);
        SetScope(*facade, "9");
        EXPECT_EQ(ScopeOf(shallow), "9");
        EXPECT_EQ(ScopeOf(deep), "8");
    }
}

} // namespace
} // namespace kivds::test
