// The set operators, comparison and assignment, on facades and on parts.
#include "tests/support/FailingNew.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

class CollectionOperatorsTest : public ReportTest
{
protected:
    void ClaimOperator(const std::string& name, const std::wstring& message, int code = 0,
                       const std::wstring& owner = kFacade)
    {
        Claim(owner + L"operator " + std::wstring(name.begin(), name.end()), message, code);
    }
};

TEST_F(CollectionOperatorsTest, CompoundAssignmentsKeepToTheirTruthTables)
{
    for (const auto& [left, name, right, expected] : Examples<Txt, Txt, Txt, Txt>("compound assignments")) {
        SCOPED_TRACE(std::string(left) + "  " + name + "  " + right);
        const CollectionPtr a = Make(left);
        CollectionPtr b = Make(right);
        EXPECT_EQ(&Apply(name, *a, *b), a.get());
        EXPECT_EQ(Show(*b), right);
        b.reset(); // whatever is in A is A's own
        EXPECT_EQ(Show(*a), expected);
        EXPECT_TRUE(NothingReported());
    }
}

TEST_F(CollectionOperatorsTest, CompoundAndEmptyOperandsAreLeftAlone)
{
    for (const std::string name : kAssignments) {
        for (const Txt other : {"X1|M1", "<X1;Z1>", "{X1}", "-"}) {
            SCOPED_TRACE(name + " " + other);
            const CollectionPtr compound = Make("{X1;Y1}");
            EXPECT_EQ(Show(Apply(name, *compound, *Make(other))), "{X1;Y1}");
            ClaimOperator(name, kCompoundRefused);
            if (name != "^=") {
                EXPECT_EQ(Show(Apply<Facade>(name, *Make(other), *compound)), other);
                ClaimOperator(name, kCompoundRefused);
            }
            if (*other == '{')
                continue;
            EXPECT_EQ(Show(Apply<Facade>(name, *Make(other), *Make("-"))), other);
            EXPECT_EQ(Show(Apply<Facade>(name, *Make("-"), *Make(other))), "-");
        }
    }
}

TEST_F(CollectionOperatorsTest, FramesThatCannotBePairedAreReported)
{
    for (const auto& [left, name, right, expected] : Examples<Txt, Txt, Txt, Txt>("frames in pairs")) {
        EXPECT_EQ(Show(Apply<Facade>(name, *Make(left), *Make(right))), expected);
        ClaimOperator(name,
                      L"Source and destination DACs have different number of frames. Operation is ignored.",
                      1, kEnhanced);
    }
}

TEST_F(CollectionOperatorsTest, OneAndTheSameOperandChangesNothingButEmptiesAPart)
{
    for (const std::string name : kAssignments) {
        for (const Txt form : {"X1 Y1pr|M1", "<X1|M1;Z1>", "W1<X1;Z1>"}) {
            const CollectionPtr a = Make(form);
            const Facade shared(*a);
            EXPECT_EQ(Show(Apply(name, *a, *a)), form) << name;
            EXPECT_EQ(Show(Apply<Facade>(name, *a, shared)), form) << name;
        }
        const bool empties = name == "-=" || name == "/=";
        const CollectionPtr owner = Make("X1 Y1pr M1m");
        SetScope(*owner, "9");
        Part& part = *SinglePart(*owner);
        EXPECT_EQ(Show(Apply(name, part, part)), empties ? "" : "M1m X1 Y1pr") << name;
        EXPECT_EQ(ScopeOf(*owner), empties ? "none" : "9") << name;
        EXPECT_TRUE(part.IsMultiFrame());
        part = std::as_const(part);
        EXPECT_TRUE(part == part && Show(part) == (empties ? "" : "M1m X1 Y1pr"));
    }
    const CollectionPtr enhanced = Make("<X1|M1,2;Z1>");
    *Enhanced(*enhanced) |= *Enhanced(*enhanced);
    *Enhanced(*enhanced) -= *Enhanced(*enhanced);
    EXPECT_TRUE(Show(*enhanced) == "<X1|M1,2;Z1>" && Facade(*enhanced) == *enhanced);
    const CollectionPtr a = Make("X1|L1 M1"), b = Make("|M1"); // one part shared, the other not
    EXPECT_EQ(Show(*a -= Facade(SinglePart(*a), MultiPart(*b))), "X1|L1");
}

TEST_F(CollectionOperatorsTest, OperatorsCarryTheMultiFrameFlagAndLeaveScopesAlone)
{
    for (const std::string name : kAssignments) {
        const CollectionPtr left = Make("X1"), right = Make("M1m");
        SetScope(*left, "8");
        SetScope(*right, "9");
        Apply(name, *SinglePart(*left), *SinglePart(*right));
        EXPECT_EQ(SinglePart(*left)->IsMultiFrame(), name != "-=" && name != "/=") << name;
        EXPECT_EQ(ScopeOf(*left), "8") << name;
    }
    const CollectionPtr source = Make("M1m"), target = Make("X1");
    SetScope(*source, "9");
    EXPECT_TRUE(source->RemoveAttribute(Tag('M')));
    const Part& flagged = *SinglePart(*source); // empty, with its flag and its scope
    EXPECT_FALSE(*Make("") == *source);
    *SinglePart(*target) = flagged;
    EXPECT_TRUE(*SinglePart(*target) == flagged);
    EXPECT_EQ(ScopeOf(*target), "9");
    const std::unique_ptr<Part> quotient(flagged | flagged);
    EXPECT_TRUE(!quotient->IsMultiFrame() && *quotient != flagged);
}

TEST_F(CollectionOperatorsTest, FreeOperatorsGiveNewCollections)
{
    const auto apply = [](const Facade& a, char name, const Facade& b) {
        return CollectionPtr(name == '/' ? a / b : name == '^' ? a ^ b : a | b);
    };
    for (const auto& [left, name, right, expected] : Examples<Txt, char, Txt, Txt>("free operators")) {
        SCOPED_TRACE(std::string(left) + "  " + name + "  " + right);
        CollectionPtr a = Make(left), b = Make(right);
        SetScope(*a, "9");
        ClaimAll(); // one without a regular part refuses it
        const CollectionPtr result = apply(*a, name, *b);
        EXPECT_EQ(Show(*b), right);
        a.reset();
        b.reset();
        EXPECT_EQ(Show(*result), expected);
        EXPECT_EQ(result->GetScope(), nullptr);
    }
    for (const auto& [a, b, report] : Examples<Txt, Txt, std::wstring>("free operators refused")) {
        for (const char name : {'/', '^', '|'}) {
            EXPECT_EQ(Show(*apply(*Make(a), name, *Make(b))), "");
            ClaimOperator({name}, report, 0, L"");
        }
    }
}

TEST_F(CollectionOperatorsTest, EqualityGoesPartByPart)
{
    const Txt forms[] = {"",     "X1",    "X2",      "Y1",      "X1 Y1",  "X1+2",
                         "X1,2", "X1|",   "X1|M1,2", "X1|M1,3", "X1|M1",  "X1|M1s",
                         "<X1>", "<X1;>", "<X1;Z1>", "<X1;Z2>", "<Y1;Z1>"};
    const auto expectEqual = [](Txt left, Txt right, bool equal) {
        SCOPED_TRACE(std::string(left) + "  " + right);
        const CollectionPtr a = Make(left), b = Make(right);
        SetScope(*b, "9"); // which takes no part
        const Allocations allocations;
        EXPECT_EQ(*a == *b, equal);
        EXPECT_EQ(*b == *a, equal);
        EXPECT_EQ(*a != *b, !equal);
        EXPECT_TRUE(*a == *a);
        EXPECT_EQ(allocations.Count(), 0);
    };
    for (const Txt left : forms) {
        for (const Txt right : forms)
            expectEqual(left, right, left == right);
        expectEqual("-", left, false);
    }
    expectEqual("-", "-", false);
    expectEqual("X1", "X1pr", true);
    expectEqual("W1<X1;Z1>", "<X1;Z1>", true);
    const CollectionPtr compound = Make("{X1}");
    for (const Txt other : {"{X1}", "X1", "-"}) {
        EXPECT_FALSE(*compound == *Make(other) || *compound == *compound);
        EXPECT_TRUE(*Make(other) != *compound);
        for (int i = 0; i < 3; ++i)
            ClaimOperator("==", kCompoundRefused);
    }
}

TEST_F(CollectionOperatorsTest, AssignmentCopiesInPlace)
{
    for (const auto& [left, right, expected, scope, report] :
         Examples<Txt, Txt, Txt, Txt, Txt>("assignment")) {
        SCOPED_TRACE(std::string(left) + " = " + right);
        const CollectionPtr a = Make(left);
        CollectionPtr b = Make(right);
        SetScope(*a, "8");
        SetScope(*b, "9");
        const Facade sharing(*a);
        EXPECT_EQ(&(*a = *b), a.get());
        b.reset();
        if (report)
            ClaimOperator("=", CellAs<std::wstring>(report));
        EXPECT_EQ(Show(*a), expected);
        EXPECT_EQ(ScopeOf(*a), scope);
        if (SinglePart(*a)) {
            EXPECT_EQ(Show(*SinglePart(sharing)), Show(*SinglePart(*a)));
        }
    }
}

TEST_F(CollectionOperatorsTest, NullMembersOfACompoundOperandAreReported)
{
    struct Holed : CKivDSCompoundCollection
    {
        Facade* GetCollection(int index, bool deep) override
        {
            return index == 1 ? nullptr : CKivDSCompoundCollection::GetCollection(index, deep);
        }
    };
    auto holed = std::make_unique<Holed>();
    for (const Txt member : {"X1 Y1", "Z1", "Y2"})
        EXPECT_TRUE(holed->AddCollection(Make(member).get(), false));
    const Facade b(holed.release());
    EXPECT_EQ(Show(*Make("X1 Y2 Z1") ^= b), "X1 Y2");
    EXPECT_EQ(Show(*Make("W1") = b), "X1 Y1+2");
    for (const Txt name : {"^=", "="})
        ClaimOperator(name, L"Invalid null DICOM attribute collection in compound attribute collection", 1);
}

TEST_F(CollectionOperatorsTest, OnlyWhatEndsUpInAResultIsCopied)
{
    for (const auto& [left, name, right, copied] : Examples<Txt, Txt, Txt, int>("copies made")) {
        const CollectionPtr a = Make(left), b = Make(right);
        const Allocations allocations;
        Apply(name, *a, *b);
        EXPECT_LE(allocations.Count(), 2 * copied) << name; // the attribute and its map node
    }
}

} // namespace
} // namespace kivds::test
