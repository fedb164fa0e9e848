// Every documented report is made by a test: those that only a class of the caller's own, or a ring of
// collections, can bring about are made here, and when all tests have run in one process, each has been made.
#include "tests/support/DocumentedReports.h"
#include "tests/support/Attributes.h"
#include "tests/support/Notation.h"

namespace kivds::test {
namespace {

struct DocumentedReportsAreMade : testing::Environment
{
    void TearDown() override
    {
        if (GTEST_FLAG_GET(filter) != "*" || !testing::UnitTest::GetInstance()->Passed())
            return; // not all of them have run
        for (const std::string& report : ReportsNotAsDocumented())
            ADD_FAILURE() << report;
    }
};

[[maybe_unused]] const auto* const s_pEnd = testing::AddGlobalTestEnvironment(new DocumentedReportsAreMade);

using DocumentedReportsTest = AttributeTest;

struct WithoutRoom : OpenAttribute
{
    bool Alloc(int, tagEKivAGAttributeType, int) override { return false; }
};

/// Announces a byte more than it writes.
struct LyingPart : Part
{
    bool Serialize(char* buffer, int& size) const override
    {
        const bool done = Part::Serialize(buffer, size);
        size += buffer ? 0 : 1;
        return done;
    }
};

struct GrowingCodes : CKivDSCodeSequenceAttribute
{
    using CKivDSCodeSequenceAttribute::CKivDSCodeSequenceAttribute;
    int GetSize() const override { return CKivDSCodeSequenceAttribute::GetSize() + (m_nAsked++ == 0); }
    mutable int m_nAsked = 0;
};

struct OddlyScoped : CKivDSCompoundCollection
{
    CKivIPPScopeC* GetScope() const override
    {
        auto* const scope = new CKivIPPScopeCollectionC; // no scope element
        scope->SetType(g_ScopeCollectionType);
        return scope;
    }
};

TEST_F(DocumentedReportsTest, WhatOnlyOtherClassesAndRingsBringAbout)
{
    char buffer[400];
    int size = 77;
    WithoutRoom poor;
    EXPECT_FALSE(poor.Convert2Age("045Y", 4));
    GrowingCodes codes(1, Code("1", "DCM", "Left"));
    EXPECT_FALSE(codes.CKivDSCodeSequenceAttribute::Serialize(buffer, size) || size != 0);
    Facade holder(new LyingPart, nullptr);
    EXPECT_FALSE(holder.Serialize(buffer, size) || size != 0);
    auto* const odd = new OddlyScoped;
    const Facade compound(odd);
    EXPECT_TRUE(odd->AddCollection(Make("X1").get(), true));
    EXPECT_EQ(Facade::ConvertCompoundToFlatCollection(compound), nullptr);
    const CollectionPtr enhanced = Make("<X1>"), ring = Make("{X1}");
    EXPECT_TRUE(Enhanced(*enhanced)->AddMFCollection(ring.get(), false));
    EXPECT_FALSE(Compound(*ring)->AddCollection(enhanced.get(), false));
    ClaimEach(
        {Of(L"Convert2Age", L" Unable to allocate attribute values "),
         {L"CKivDSCodeSequenceAttribute::Serialize",
          L"Inconsistent serialization procedure: number of bytes written to buffer does not equal "
          L"expected serialization size",
          0},
         {kFacade + L"Serialize", L"Inconsistent serialization format: serialization aborted ", 0},
         {kPart + L"SetScope", L" Unsupported scope type", 0},
         {kFacade + L"ConvertCompoundToFlatCollection", L"Failed to set scope on flattened collection", 0},
         {kCompound + L"AddCollection", kCompoundRefused, 0}});
}

} // namespace
} // namespace kivds::test
