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
        Refused(compound.GetCollection(index, false), kCompound + L"GetCollection",
                L"Collection index out of range");
    }
    const Wide noOutput = L"Null output pointer parameter";
    Refused(compound.GetAttribute(0, nullptr, true, true), kCompound + L"GetAttribute", noOutput);
    Refused(compound.GetAttributePtr(0, nullptr, true, true), kCompound + L"GetAttributePtr", noOutput);
    Refused(compound.GetNumberOfAttributes(nullptr), kCompound + L"GetNumberOfAttributes", noOutput);
    Refused(compound.GetNumberOfFrames(nullptr), kCompound + L"GetNumberOfFrames", noOutput);
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

    Refused(compound.AddCollection(nullptr, false), kCompound + L"AddCollection",
            L"Null input pointer parameter");
    Refused(compound.AddCollection(Make("{X1}").get(), true), kCompound + L"AddCollection",
            L"Using a compound collection inside a compound collection");
    EXPECT_EQ(compound.GetNumberOfCollections(), 2);
}

TEST_F(CompoundCollectionTest, CopyingAndAssigningTakeMembersAndScope)
{
    for (const Txt how : {"shallow", "deep", "assigned"}) {
        const CollectionPtr facade = Make("{X1;Y1|M1}");
        CKivDSCompoundCollection& source = *Compound(*facade);
        SetScope(source, "9");
        auto* const copy = *how == 's'   ? new CKivDSCompoundCollection(source)
                           : *how == 'd' ? new CKivDSCompoundCollection(source, true)
                                         : new CKivDSCompoundCollection;
        const Facade owner(copy);
        if (*how == 'a') {
            EXPECT_TRUE(copy->AddCollection(Make("W1").get(), true));
            const CKivDSCompoundCollection& itself = *copy = source;
            *copy = itself;
        }
        Add(*CollectionPtr(source.GetCollection(0, false)), MakeAttribute("Z1"));
        EXPECT_EQ(Show(owner) + ScopeOf(owner), *how == 's' ? "{X1 Z1;Y1|M1}9" : "{X1;Y1|M1}9") << how;
    }
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
    const std::wstring function = kCompound + L"AppendCompoundCollection";
    Refused(compound.AppendCompoundCollection(nullptr, false), function, L"Bad arg");
    const CollectionPtr plain = Make("X1");
    for (Facade* const bodiless : {static_cast<Facade*>(&compound), plain.get()}) {
        Refused(compound.AppendCompoundCollection(bodiless, false), function, L"Bad arg body");
    }
    struct Refusing : CKivDSCompoundCollection
    {
        bool AddCollection(Facade* collection, bool deep) override
        {
            return GetNumberOfCollections() < 2 && CKivDSCompoundCollection::AddCollection(collection, deep);
        }
    } refusing;
    Refused(refusing.AppendCompoundCollection(source.get(), false), function, L"Unable to append coll ");
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

    const std::wstring function = kFacade + L"AddCompoundCollection";
    Refused(flat->AddCompoundCollection(nullptr), function, L"Null input collection as input");
    Refused(flat->AddCompoundCollection(flat.get()), function,
            L"Bad input parameter: the input collection is not compounded ");
    Refused(flat->AddCompoundCollection(Compound(*compound)), function,
            L"Null compound collection inner object ");
    Refused(Facade::ConvertCompoundToFlatCollection(*Make("{}")), function,
            L"Bad input parameter: the compound collection is empty ");
    Claim(kFacade + L"ConvertCompoundToFlatCollection", L"Failed to add compound collection");
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
