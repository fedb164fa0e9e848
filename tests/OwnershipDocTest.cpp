// The snippets of docs/ownership.md, compiled and run: its n-th "```cpp" block is ownership-n.inc.
#include "tests/support/Build.h"
#include "tests/support/Reports.h"

#include <thread>

namespace kivds::test {

namespace {

constexpr unsigned long kRows = 0x00280010;
constexpr unsigned long kWindows = 0x00540010; // Energy Window Vector

static_assert(KIVDS_OWNERSHIP_SNIPPETS == 11, "each snippet is included below");

using OwnershipDocTest = ReportTest;

} // namespace

TEST_F(OwnershipDocTest, AnAttributeIsHandedOver)
{
    CKivDSDicomAttributeCollection image;
    const char bytes[] = {0x00, 0x02}; // 512

#include "ownership-1.inc"

    const CKivDSDicomAttribute* held = nullptr;
    ASSERT_TRUE(image.GetAttribute(kRows, &held, true, false));
#include "ownership-2.inc"
    EXPECT_EQ(lent->nCount, 1);
    EXPECT_EQ(Text(image), "(0028,0010)=[512]");
}

TEST_F(OwnershipDocTest, ShallowCopiesShareParts)
{
    CKivDSDicomAttributeCollection image;
    Add(image, Numbers(kRows, {512}));

#include "ownership-3.inc"
    EXPECT_FALSE(sharedHasIt);
    EXPECT_TRUE(copyHasIt);

#include "ownership-4.inc"
    EXPECT_TRUE(shallow.HasAttribute(kRows, true, false));

    // A part that is made later is nobody's but its maker's.
    Add(image, PerFrame(kWindows, {1, 1, 2}));
    EXPECT_TRUE(image.IsMultiFrame());
    EXPECT_FALSE(shallow.IsMultiFrame());
}

TEST_F(OwnershipDocTest, ADeepCopyOfAnEnhancedFacadeSharesParts)
{
    CKivDSDicomAttributeCollection regular;

#include "ownership-5.inc"
    Add(regular, Numbers(kRows, {512}));
    EXPECT_TRUE(copy.HasAttribute(kRows, true, false));
    EXPECT_FALSE(apart.HasAttribute(kRows, true, false));
}

TEST_F(OwnershipDocTest, MembersOutliveWhatTheyWereMadeOf)
{
#include "ownership-6.inc"
    const std::unique_ptr<CKivDSDicomAttributeCollection> member(series->GetCollection(0, false));
    EXPECT_TRUE(member->HasAttribute(kRows, true, false));
}

TEST_F(OwnershipDocTest, ResultsAreTheCallersToDelete)
{
    const auto former = Collection({{kRows, 512}});
    const auto latter = Collection({{kRows, 256}});

#include "ownership-7.inc"
    EXPECT_EQ(Text(*changed), "(0028,0010)=[256]");
    EXPECT_EQ(Text(*ownedSingle), "(0028,0010)=[512]");
}

TEST_F(OwnershipDocTest, AScopeIsCopiedOrTakenOver)
{
    CKivDSDicomAttributeCollection image;

#include "ownership-8.inc"

    const std::unique_ptr<CKivIPPScopeC> found(image.GetScope()); // a new one each time
    EXPECT_NE(found, nullptr);
}

TEST_F(OwnershipDocTest, WhoeverChangesTellsTheIterators)
{
    CKivDSDicomAttributeCollection image;
    Add(image, Numbers(kRows, {512}));

#include "ownership-9.inc"
    EXPECT_EQ(next, nullptr);
}

TEST_F(OwnershipDocTest, ThreadsShareUnderALock)
{
    CKivDSDicomAttributeCollection image;
    Add(image, Numbers(kRows, {512}));

#include "ownership-10.inc"
    writer.join();
    EXPECT_FALSE(image.HasAttribute(kRows, true, false)) << held;
}

TEST_F(OwnershipDocTest, AListenerLeavesBeforeItsContext)
{
#include "ownership-11.inc"
    CKivDSDicomAttributeCollection().RemoveAttribute(kRows);
    CKivDSDicomAttributeCollection(false).RemoveAttribute(kRows);
    EXPECT_EQ(log.m_Last, L"CKivDSDicomAttributeCollection::RemoveAttribute");
}

} // namespace kivds::test
