// The collection of one frame, the scope narrowed to it, splitting and merging.
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

using CollectionFramesTest = ReportTest;

const std::wstring kPartConstructor = kPart + L"CKivDSBaseDicomAttributeCollection";
const std::wstring kFacadeConstructor = kFacade + L"CKivDSDicomAttributeCollection";
const std::wstring kNarrow = kFacade + L"UpdateMultiFrameScope";

TEST_F(CollectionFramesTest, AFramesCollectionHoldsItsValuesAndItsIndex)
{
    for (const auto& [sourceText, frameOf, expected] : Examples<Txt, int, Txt>("frames")) {
        for (const bool deep : {false, true}) {
            SCOPED_TRACE(std::string(sourceText) + (deep ? " deep" : ""));
            CollectionPtr source = Make(sourceText);
            const Facade frame(*source, frameOf, deep);
            EXPECT_EQ(Show(frame), expected);
            EXPECT_EQ(Show(*source), sourceText);
            EXPECT_EQ(frame.IsMultiFrame(), MultiPart(frame) || Show(frame).find("{X") == 0);
            EXPECT_EQ(SinglePart(frame) && SinglePart(frame) == SinglePart(*source),
                      !deep && SinglePart(*source) != nullptr);
            source.reset();
            EXPECT_EQ(Show(frame), expected);
            EXPECT_TRUE(NothingReported());
        }
    }
    const Facade frame(*Make("|M1"), 3, true);
    EXPECT_FALSE(MultiPart(frame)->IsMultiFrame());
    CKivDSDicomAttribute* index = nullptr;
    ASSERT_TRUE(MultiPart(frame)->GetAttributePtr(0x37110090, &index));
    EXPECT_EQ(index->GetDicomRepresentation(), US);
    EXPECT_EQ(index->GetValuePtr(0)->eType, eAttrUShort);
    EXPECT_EQ(index->GetValuePtr(0)->nInSequenceIndex, 0);
}

TEST_F(CollectionFramesTest, AFrameThatCannotBeMadeLeavesWhatWasMade)
{
    const CollectionPtr source = Make("X1|L1,2,3 Z1,2,3");
    AttributePtr brief = MakeAttribute("M1,2"); // two values for three frames
    brief->SetMultiFrameInfo(1, 3);
    Add(*source, std::move(brief));
    EXPECT_EQ(Show(Facade(*source, 3, false)), "X1|L3s");
    Claim(L"CKivDSDicomAttribute::CreateSingleFrameCopy",
          L"Attempt to use invalid value index to access multiframe attribute non-character value");
    Claim(kPartConstructor, L"Failed to create single frame copy of attribute");
    for (const int index : {-1, 1}) {
        EXPECT_EQ(Show(Facade(*Make("<X1;Z1>"), index, true)), "-");
        Claim(kEnhanced + L"GetMFCollection", L"Invalid multiframe collection index ");
        Claim(kFacadeConstructor, L"Fail to extract the frame collection from the enhanced MF collection");
    }
}

TEST_F(CollectionFramesTest, TheScopeIsNarrowedToTheFrame)
{
    for (const auto& [sourceText, deep, narrowed, ofSource] :
         Examples<Txt, bool, Txt, Txt>("narrowed scopes")) {
        SCOPED_TRACE(sourceText);
        const CollectionPtr source = Make(sourceText);
        SetScope(*source, "9");
        const Facade frame(*source, 2, deep);
        EXPECT_EQ(ScopeOf(frame), narrowed);
        EXPECT_EQ(ScopeOf(*source), ofSource);
    }
}

TEST_F(CollectionFramesTest, AScopeThatCannotBeNarrowedIsReportedAndKept)
{
    const CollectionPtr source = Make("X1|M1,2");
    const auto narrow = [&](std::unique_ptr<CKivIPPScopeElementC> scope, Wide report) {
        EXPECT_TRUE(source->SetScope(scope.release(), false));
        const std::string before = ScopeOf(*source);
        const Facade frame(*source, 1, true);
        Claim(kNarrow, report);
        EXPECT_EQ(ScopeOf(frame), before);
        EXPECT_EQ(Show(frame), "X1|M1s #1prs");
    };
    auto imageless = std::make_unique<CKivIPPScopeElementC>();
    imageless->SetType(g_ScopeElementType);
    imageless->Initialize(2);
    narrow(std::move(imageless), L"Unable to retrieve the image scope item ");
    auto spoilt = Scope("9");
    char none[1];
    EXPECT_FALSE(spoilt->GetScopeItem(2, false)->GetUID(none, 1));
    narrow(std::move(spoilt), L"Inconsistent image scope item for multiframe collection");
    narrow(Scope(std::string(256, '9')), L"Fail to retrieve image UID");
    EXPECT_TRUE(source->SetScope(Scope(std::string(255, '9')).release(), false));
    EXPECT_EQ(ScopeOf(Facade(*source, 1, true)), std::string(255, '9') + "[1-1]");
}

TEST_F(CollectionFramesTest, SplittingGivesAFacadeOfEachPart)
{
    for (const auto& [sourceText, singleText, multiText, report] :
         Examples<Txt, Txt, Txt, Txt>("splitting")) {
        for (const bool deep : {false, true}) {
            SCOPED_TRACE(sourceText);
            const CollectionPtr source = Make(sourceText);
            Facade *single = source.get(), *multi = source.get();
            EXPECT_EQ(source->Split(single, multi, deep), !report);
            const CollectionPtr ownedSingle(single), ownedMulti(multi);
            if (report)
                Claim(kFacade + L"Split", CellAs<std::wstring>(report));
            EXPECT_EQ(single ? Show(*single) : "null", singleText ? singleText : "null");
            EXPECT_EQ(multi ? Show(*multi) : "null", multiText ? multiText : "null");
            EXPECT_EQ(Show(*source), sourceText);
            EXPECT_EQ(single && SinglePart(*single) == SinglePart(*source), single && !deep);
            EXPECT_EQ(multi && MultiPart(*multi) == MultiPart(*source), multi && !deep);
        }
    }
}

TEST_F(CollectionFramesTest, SingleFramePartsAreUpdatedFromTheLeftOrFromTheRight)
{
    for (const auto& [targetText, sourceText, deep, expected, scopeText, report] :
         Examples<Txt, Txt, bool, Txt, Txt, Txt>("updating")) {
        SCOPED_TRACE(targetText);
        const CollectionPtr target = Make(targetText), source = Make(sourceText);
        SetScope(*target, "8");
        SetScope(*source, "9");
        const Facade sharing(*target);
        EXPECT_EQ(target->UpdateSingleFrameCollection(*source, deep), !report);
        if (report)
            Claim(kFacade + L"UpdateSingleFrameCollection", CellAs<std::wstring>(report));
        EXPECT_EQ(Show(*target), expected);
        EXPECT_EQ(Show(sharing), deep || *targetText == '-' ? targetText : expected);
        EXPECT_EQ(ScopeOf(*target), scopeText);
        EXPECT_EQ(Show(*source), sourceText);
    }
    const CollectionPtr scopeless = Make("X1"), source = Make("Y1");
    SetScope(*source, "9"); // which the copy keeps where there is no other
    EXPECT_TRUE(scopeless->UpdateSingleFrameCollection(*source, true));
    EXPECT_EQ(ScopeOf(*scopeless), "9");
    Facade shallow(*source); // a part united with its own copy is shared no more
    EXPECT_TRUE(shallow.UpdateSingleFrameCollection(*source, true));
    Add(*source, MakeAttribute("Z1"));
    EXPECT_EQ(Show(shallow), "Y1");
}

TEST_F(CollectionFramesTest, MergingOverwritesAndTakesTheFirstScope)
{
    for (const auto& [firstText, secondText, mergedText, expected] :
         Examples<Txt, Txt, Txt, Txt>("merging")) {
        SCOPED_TRACE(firstText);
        const CollectionPtr first = Make(firstText), second = Make(secondText), merged = Make(mergedText);
        SetScope(*first, "8");
        SetScope(*second, "9");
        EXPECT_TRUE(Facade::MergeCollections(*first, *second, *merged));
        EXPECT_EQ(Show(*merged), expected);
        EXPECT_EQ(ScopeOf(*merged), "8");
    }
    const CollectionPtr merged = Make("W1");
    for (const auto& [first, second] : {std::pair("{}", "X1"), {"{X1}", "{}"}}) {
        EXPECT_FALSE(Facade::MergeCollections(*Make(first), *Make(second), *merged));
        EXPECT_EQ(ClaimAll(), 2u);
        EXPECT_EQ(Show(*merged), "W1");
    }
    Refused(Facade::MergeCollections(*Make("X1"), *Make("Y1"), *Make("-")), kFacade + L"MergeCollections",
            L"Failed to set scope on merged collection");
}

} // namespace
} // namespace kivds::test
