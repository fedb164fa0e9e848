// Compound collections: members, queries across them, appending, flattening.
#include "tests/support/FailingNew.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

using CompoundCollectionTest = ReportTest;

TEST_F(CompoundCollectionTest, AnEmptyOneAnswersWithNothing)
{
    CKivDSCompoundCollection compound;
    long count = 77;
    int frames = 77;
    const CKivDSDicomAttribute* found = nullptr;
    EXPECT_TRUE(compound.IsCompoundCollection() && !compound.IsGood() && !compound.IsMultiFrame());
    EXPECT_TRUE(compound.GetNumberOfAttributes(&count) && count == 0);
    EXPECT_TRUE(!compound.GetNumberOfFrames(&frames) && frames == 0);
    EXPECT_FALSE(compound.GetAttribute(Tag('X'), &found, true, true) ||
                 compound.HasAttribute(Tag('X'), true, true));
    EXPECT_TRUE(NothingReported());
    for (const int index : {-1, 0}) {
        EXPECT_EQ(compound.GetCollection(index, false), nullptr);
        Claim(L"CKivDSCompoundCollection::GetCollection", L"Collection index out of range");
    }
    for (const auto& [name, done] :
         {std::pair<Wide, bool>(L"GetAttribute", compound.GetAttribute(0, nullptr, true, true)),
          {L"GetAttributePtr", compound.GetAttributePtr(0, nullptr, true, true)},
          {L"GetNumberOfAttributes", compound.GetNumberOfAttributes(nullptr)},
          {L"GetNumberOfFrames", compound.GetNumberOfFrames(nullptr)}}) {
        EXPECT_FALSE(done);
        Claim((std::wstring(L"CKivDSCompoundCollection::") + name).c_str(), L"Null output pointer parameter");
    }
}

TEST_F(CompoundCollectionTest, MembersShareOrCopyAndNeverNest)
{
    const CollectionPtr added = Make("X1");
    const CollectionPtr facade = Make("{}");
    CKivDSCompoundCollection& compound = *Compound(*facade);
    EXPECT_TRUE(compound.AddCollection(added.get(), false));
    EXPECT_TRUE(compound.AddCollection(added.get(), true));
    Add(*added, MakeAttribute("Y1"));
    EXPECT_EQ(Show(*facade), "{X1 Y1;X1}");
    const CollectionPtr deep(compound.GetCollection(0, true));
    const CollectionPtr shallow(compound.GetCollection(0, false));
    Add(*deep, MakeAttribute("V1"));
    Add(*shallow, MakeAttribute("W1"));
    EXPECT_EQ(Show(*facade), "{W1 X1 Y1;X1}");

    EXPECT_FALSE(compound.AddCollection(nullptr, false));
    Claim(L"CKivDSCompoundCollection::AddCollection", L"Null input pointer parameter");
    EXPECT_FALSE(compound.AddCollection(Make("{X1}").get(), true));
    Claim(L"CKivDSCompoundCollection::AddCollection",
          L"Using a compound collection inside a compound collection");
    EXPECT_EQ(compound.GetNumberOfCollections(), 2);
}

TEST_F(CompoundCollectionTest, CopyingAndAssigningTakeMembersAndScope)
{
    const CollectionPtr facade = Make("{X1;Y1|M1}");
    CKivDSCompoundCollection& source = *Compound(*facade);
    SetScope(source, "9");
    const auto shownWithNewMemberAttribute = [&](CKivDSCompoundCollection* copy) {
        const Facade owner(copy);
        const CollectionPtr member(source.GetCollection(0, false));
        Add(*member, MakeAttribute("Z1"));
        const std::string shown = Show(owner) + ScopeOf(owner);
        EXPECT_TRUE(member->RemoveAttribute(Tag('Z')));
        return shown;
    };
    EXPECT_EQ(shownWithNewMemberAttribute(new CKivDSCompoundCollection(source)), "{X1 Z1;Y1|M1}9");
    EXPECT_EQ(shownWithNewMemberAttribute(new CKivDSCompoundCollection(source, true)), "{X1;Y1|M1}9");
    auto assigned = std::make_unique<CKivDSCompoundCollection>();
    EXPECT_TRUE(assigned->AddCollection(Make("W1").get(), true));
    *assigned = source;
    CKivDSCompoundCollection& itself = *assigned;
    *assigned = itself;
    EXPECT_EQ(shownWithNewMemberAttribute(assigned.release()), "{X1;Y1|M1}9");
}

TEST_F(CompoundCollectionTest, AppendingTakesEveryMemberInOrder)
{
    const CollectionPtr target = Make("{X1}");
    CKivDSCompoundCollection& compound = *Compound(*target);
    const auto source = Make("{Y1;Y2;Y3|M1}");
    EXPECT_TRUE(compound.AppendCompoundCollection(source.get(), false));
    EXPECT_TRUE(compound.AppendCompoundCollection(Make("{}").get(), false));
    EXPECT_EQ(Show(*target), "{X1;Y1;Y2;Y3|M1}");
    Add(*CollectionPtr(Compound(*source)->GetCollection(0, false)), MakeAttribute("Z1"));
    EXPECT_TRUE(compound.AppendCompoundCollection(target.get(), true)); // itself: the members of before
    EXPECT_EQ(Show(*target), "{X1;Y1 Z1;Y2;Y3|M1;X1;Y1 Z1;Y2;Y3|M1}");
    const Wide function = L"CKivDSCompoundCollection::AppendCompoundCollection";
    EXPECT_FALSE(compound.AppendCompoundCollection(nullptr, false));
    Claim(function, L"Bad arg");
    const CollectionPtr plain = Make("X1");
    for (Facade* const bodiless : {static_cast<Facade*>(&compound), plain.get()}) {
        EXPECT_FALSE(compound.AppendCompoundCollection(bodiless, false));
        Claim(function, L"Bad arg body");
    }
    struct Refusing : CKivDSCompoundCollection
    {
        bool AddCollection(Facade* collection, bool deep) override
        {
            return GetNumberOfCollections() < 2 && CKivDSCompoundCollection::AddCollection(collection, deep);
        }
    } refusing;
    EXPECT_FALSE(refusing.AppendCompoundCollection(source.get(), false));
    Claim(function, L"Unable to append coll ");
    EXPECT_EQ(refusing.GetNumberOfCollections(), 2);
}

TEST_F(CompoundCollectionTest, FlatteningUnitesTheMembersInPlace)
{
    for (const auto& [intoText, compoundText, expected] : Examples<Txt, Txt, Txt>("flattening")) {
        SCOPED_TRACE(compoundText);
        const CollectionPtr into = Make(intoText);
        CollectionPtr compound = Make(compoundText);
        const CollectionPtr flat(Facade::ConvertCompoundToFlatCollection(*compound));
        EXPECT_TRUE(into->AddCompoundCollection(compound.get()));
        EXPECT_EQ(Show(*compound), compoundText);
        compound.reset();
        EXPECT_EQ(Show(*into), expected);
        if (!*intoText) {
            EXPECT_EQ(Show(*flat), expected);
        }
    }
    const CollectionPtr compound = Make("{X1}");
    SetScope(*compound, "9");
    const CollectionPtr flat(Facade::ConvertCompoundToFlatCollection(*compound));
    EXPECT_EQ(ScopeOf(*flat), "9");
    EXPECT_EQ(Facade::ConvertCompoundToFlatCollection(*flat), nullptr);
    EXPECT_TRUE(NothingReported());

    const Wide function = L"CKivDSDicomAttributeCollection::AddCompoundCollection";
    EXPECT_FALSE(flat->AddCompoundCollection(nullptr));
    Claim(function, L"Null input collection as input");
    EXPECT_FALSE(flat->AddCompoundCollection(flat.get()));
    Claim(function, L"Bad input parameter: the input collection is not compounded ");
    EXPECT_FALSE(flat->AddCompoundCollection(Compound(*compound)));
    Claim(function, L"Null compound collection inner object ");
    EXPECT_EQ(Facade::ConvertCompoundToFlatCollection(*Make("{}")), nullptr);
    Claim(function, L"Bad input parameter: the compound collection is empty ");
    Claim(L"CKivDSDicomAttributeCollection::ConvertCompoundToFlatCollection",
          L"Failed to add compound collection");
    EXPECT_EQ(Show(*flat), "X1");
}

TEST_F(CompoundCollectionTest, GatheringASeriesGrowsAsItsLength)
{
    const auto cost = [](int images) {
        const CollectionPtr series = Make("{}");
        const Allocations allocations;
        for (int i = 0; i < images; ++i) {
            const CollectionPtr image = Make("X1 Y" + std::to_string(i) + " Z" + std::to_string(i) + "r");
            EXPECT_TRUE(Compound(*series)->AddCollection(image.get(), false));
        }
        const CollectionPtr flat(Facade::ConvertCompoundToFlatCollection(*series));
        EXPECT_TRUE(flat->HasAttribute(Tag('Y'), true, true));
        return std::pair(allocations.Count(), allocations.Bytes());
    };
    const auto [count, bytes] = cost(1000);
    const auto [doubleCount, doubleBytes] = cost(2000);
    EXPECT_LE(static_cast<double>(doubleCount), 2.2 * static_cast<double>(count));
    EXPECT_LE(static_cast<double>(doubleBytes), 2.2 * static_cast<double>(bytes));
}

} // namespace
} // namespace kivds::test
