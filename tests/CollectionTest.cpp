// The facade and its parts: forms, routing, adding, finding, counting, removing, sharing, ownership.
#include "tests/support/FailingNew.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

using CollectionTest = ReportTest;

TEST_F(CollectionTest, EveryFormAnswersEveryQuery)
{
    constexpr long X = 77; // the operation fails and leaves its output alone; frames: known, and how many
    for (const auto& [form, is, all, single, multi, framesKnown, frames] :
         Examples<Txt, Txt, long, long, long, bool, int>("forms")) {
        SCOPED_TRACE(form);
        const CollectionPtr facade = Make(form);
        const auto says = [said = std::string(is)](Txt word) { return said.find(word) != std::string::npos; };
        EXPECT_EQ(facade->IsGood(), says("good"));
        EXPECT_EQ(facade->IsMultiFrame(), says("multi"));
        EXPECT_EQ(facade->IsCompoundCollection(), says("compound"));
        EXPECT_EQ(facade->IsEnhancedMFCollection(), says("enhanced"));
        const auto expectCount = [&facade](long expected, auto ask) {
            long count = X;
            EXPECT_EQ(((*facade).*ask)(&count), expected != X);
            EXPECT_EQ(count, expected);
            EXPECT_FALSE(((*facade).*ask)(nullptr));
        };
        expectCount(all, &Facade::GetNumberOfAttributes);
        expectCount(single, &Facade::GetNumberOfSingleFrameAttributes);
        expectCount(multi, &Facade::GetNumberOfMultiFrameAttributes);
        if (says("compound")) {
            Claim(kFacade + L"GetNumberOfSingleFrameAttributes", kCompoundRefused);
            Claim(kFacade + L"GetNumberOfMultiFrameAttributes", kCompoundRefused);
        }
        int count = X;
        EXPECT_EQ(facade->GetNumberOfFrames(&count), framesKnown);
        EXPECT_EQ(count, frames);
        EXPECT_FALSE(facade->GetNumberOfFrames(nullptr));
        EXPECT_TRUE(NothingReported());
    }
}

TEST_F(CollectionTest, ChangesAreRefusedByCompoundAndEmptyFacades)
{
    const AttributePtr y = MakeAttribute("Y1");
    const CollectionPtr none = Make("-"), compound = Make("{X1}");
    Facade& c = *compound;
    Refused(c.AddAttribute(y.get(), true), kFacade + L"AddAttribute", kCompoundRefused);
    Refused(c.AddElement(Tag('Y'), US, 2, "1"), kFacade + L"AddAttribute", kCompoundRefused);
    Refused(c.ExpectElements(1), kFacade + L"ExpectElements", kCompoundRefused);
    Refused(c.RemoveAttribute(Tag('X')), kFacade + L"RemoveAttribute", kCompoundRefused);
    Refused(c.RemoveAllAttributes(), kFacade + L"RemoveAllAttributes", kCompoundRefused);
    Refused(c.RemoveAllSingleFrameAttributes(), kFacade + L"RemoveAllSingleFrameAttributes",
            kCompoundRefused);
    Refused(c.RemoveAllMultiFrameAttributes(), kFacade + L"RemoveAllMultiFrameAttributes", kCompoundRefused);
    Refused(PartAccess::MapOf(c), kFacade + L"GetMapPtr", kCompoundRefused);
    Refused(PartAccess::MultiFrameMapOf(c), kFacade + L"GetMultiFrameMapPtr", kCompoundRefused);
    c.Dump();
    Claim(kFacade + L"Dump", kCompoundRefused);
    EXPECT_EQ(Show(c), "{X1}");
    none->Dump();
    EXPECT_FALSE(none->AddAttribute(y.get(), true) || none->AddElement(Tag('Y'), US, 2, "1") ||
                 none->RemoveAllAttributes() || none->RemoveAllSingleFrameAttributes() ||
                 none->RemoveAllMultiFrameAttributes() || PartAccess::MapOf(*none) ||
                 PartAccess::MultiFrameMapOf(*none));
    Refused(none->RemoveAttribute(Tag('X')), kFacade + L"RemoveAttribute",
            L"Attribute collection not properly initialized");
}

TEST_F(CollectionTest, AddingReplacesOrAccumulatesAndDeletesWhatItDoesNotKeep)
{
    for (const auto& [held, added, merge, expected, heldDeleted, addedDeleted] :
         Examples<Txt, Txt, bool, Txt, int, int>("adding")) {
        SCOPED_TRACE(std::string(held) + " " + added + (merge ? " merge" : ""));
        int first = 0, second = 0;
        CollectionPtr facade = Make("");
        ASSERT_TRUE(facade->AddAttribute(new CountedAttribute(held, &first), true));
        auto* const attribute = new CountedAttribute(added, &second);
        for (int again = 0; again < 2 && !second; ++again) { // the very object that is held changes nothing
            EXPECT_TRUE(facade->AddAttribute(attribute, merge));
            EXPECT_EQ(Show(*facade), expected);
            EXPECT_EQ(first, heldDeleted);
            EXPECT_EQ(second, addedDeleted);
        }
        facade.reset();
        EXPECT_EQ(first + second, 2);
    }
    const CollectionPtr facade = Make("X1"); // of another representation: taken, and not accumulated
    EXPECT_TRUE(facade->AddAttribute(Numbers(Tag('X'), {5}, true).release(), true));
    EXPECT_EQ(Show(*facade), "X1");
}

TEST_F(CollectionTest, AddingAnElementIsAddingItsAttribute)
{
    const std::string_view dates = "20240229\\20240301 ";
    for (const Txt form : {"", "K1", "X1", "X1r Z2", "Z1", "X1|M1,2", "<X1|M1,2;Y1>", "Z1<X1;Y1>"}) {
        for (const bool mustReplicate : {false, true}) {
            SCOPED_TRACE(form);
            const CollectionPtr facade = Make(form), byHand = Make(form);
            EXPECT_TRUE(facade->AddElement(Tag('X'), DA, 18, dates.data(), 2, mustReplicate, 3));
            Add(*byHand, Attribute(Tag('X'), DA, dates, mustReplicate, 3, 2));
            EXPECT_TRUE(facade->AddElement(Tag('Y'), US, 2, "7"));
            Add(*byHand, Attribute(Tag('Y'), US, std::string_view("7", 2), false, -1));
            EXPECT_EQ(Stream(*facade), Stream(*byHand));
            Refused(facade->AddElement(Tag('Z'), LO, 0, ""), L"CKivDSDicomAttribute::InitFromDicomData",
                    L" Bad input parameters ");
            EXPECT_EQ(Stream(*facade), Stream(*byHand));
        }
    }
    struct Counting : Facade
    {
        bool AddAttribute(CKivDSDicomAttribute* attribute, bool merge) override
        {
            return ++added < 3 && Facade::AddAttribute(attribute, merge);
        }
        int added = 0;
    } counting;
    EXPECT_TRUE(counting.ExpectElements(3)); // its attributes may end elsewhere: they are made as ever
    EXPECT_TRUE(counting.AddElement(Tag('X'), US, 2, "1") && counting.AddElement(Tag('Y'), US, 2, "1"));
    EXPECT_FALSE(counting.AddElement(Tag('Z'), US, 2, "1"));
    EXPECT_EQ(Show(counting), "X49 Y49");
    Part part;
    EXPECT_TRUE(part.AddElement(Tag('X'), US, 2, "1"));
    EXPECT_EQ(Show(part), "X49");
}

TEST_F(CollectionTest, AnnouncedElementsAreTheSameInFewerBlocks)
{
    constexpr int kGroups = 40;
    const auto tagOf = [](int i, int kind) {
        return 0x00100000UL + static_cast<unsigned long>(i * 4 + kind);
    };
    const auto build = [&](int announced) {
        CollectionPtr facade = Make("");
        EXPECT_TRUE(facade->ExpectElements(announced));
        for (int i = 0; i < kGroups; ++i) {
            const std::string text(i % 8 == 7 ? 300 : static_cast<std::size_t>(i + 1), 'A');
            std::string texts = "B", numbers = "1";
            for (int j = 0; j < i % 6; ++j) {
                texts += "\\" + text.substr(0, 20);
                numbers += "\\.5";
            }
            const auto add = [&](int kind, int code, const std::string& field) {
                EXPECT_TRUE(facade->AddElement(tagOf(i, kind), code, static_cast<int>(field.size()),
                                               field.data(), 1, true));
            };
            add(0, LO, text);
            add(1, LO, texts);
            add(2, DS, numbers);
            add(3, OB, text);
            add(i % 4, i % 4 == 2 ? DS : OB, "2"); // accumulated, or refused for its representation
        }
        return facade;
    };
    const auto change = [&](Facade& facade) {
        for (int i = 0; i < kGroups; ++i) {
            CKivDSDicomAttribute* held[4] = {};
            for (const int kind : {0, 1, 3})
                ASSERT_TRUE(facade.GetAttributePtr(tagOf(i, kind), &held[kind], true, false));
            SKivAGAttributeValue value = {};
            EXPECT_TRUE(held[3]->GetValue(0, &value) && held[0]->SetValue(0, &value));
            FreeAttributeValue(value);
            EXPECT_TRUE(held[1]->InitFromDicomData(tagOf(i, 1), LO, 24, "a text of its own length", nullptr,
                                                   false, false, -1, 1));
            EXPECT_TRUE(facade.AddElement(tagOf(i, 2), DS, 3, "7.5", 1, true));
            EXPECT_TRUE(facade.RemoveAttribute(tagOf(i, 3)));
        }
    };
    std::string built, changed;
    long alone = 0;
    for (const int announced : {-1, 1, 3, 160, 200}) {
        SCOPED_TRACE(announced);
        const Allocations allocations;
        const CollectionPtr facade = build(announced);
        if (announced < 0) {
            alone = allocations.Count();
            built = Stream(*facade);
        } else if (announced >= 200) {
            EXPECT_LT(allocations.Count(), alone - 300);
        }
        EXPECT_EQ(Stream(*facade), built);
        Facade copy(*facade, true);
        change(*facade);
        if (announced < 0)
            changed = Stream(*facade);
        EXPECT_EQ(Stream(*facade), changed);
        EXPECT_EQ(Stream(copy), built);
    }
    long counts[2] = {}; // announcing them one by one does not make room anew for each
    for (const bool announced : {false, true}) {
        const Allocations allocations;
        const CollectionPtr facade = Make("");
        for (int i = 0; i < 1000; ++i)
            EXPECT_TRUE((!announced || facade->ExpectElements(1)) &&
                        facade->AddElement(tagOf(i, 0), US, 2, "1"));
        counts[announced] = allocations.Count();
    }
    EXPECT_LT(counts[true], counts[false] + 20);
    Facade empty;
    bool expects = true;
    {
        const Allocations failing(0, Allocations::Later::Succeed);
        expects = empty.ExpectElements(9);
    }
    Refused(expects, kFacade + L"ExpectElements", L"Unexpected error");
}

TEST_F(CollectionTest, AnAttributeThatBecomesMultiFrameWhileItIsHeldStaysWhereItIs)
{
    const CollectionPtr collection = Make("X1 M1,2|");
    CKivDSDicomAttribute* held = nullptr;
    ASSERT_TRUE(collection->GetAttributePtr(Tag('M'), &held, true, false));
    held->SetMultiFrameInfo(1, 2);
    EXPECT_TRUE(collection->AddAttribute(held, true) && collection->AddAttribute(held, false));
    EXPECT_EQ(Show(*collection), "M1,2m X1|");
}

TEST_F(CollectionTest, OnlyThePlainPathOfAddingSetsThePartsMultiFrameFlag)
{
    for (const bool merge : {false, true}) {
        Part part;
        EXPECT_TRUE(part.AddAttribute(MakeAttribute("X1").release(), merge));
        EXPECT_FALSE(part.IsMultiFrame());
        EXPECT_TRUE(part.AddAttribute(MakeAttribute("X1m").release(), merge));
        EXPECT_EQ(part.IsMultiFrame(), !merge);
        EXPECT_TRUE(part.AddAttribute(MakeAttribute("Y1m").release(), merge));
        EXPECT_TRUE(part.RemoveAllMultiFrameAttributes());
        EXPECT_TRUE(part.IsMultiFrame());
    }
}

TEST_F(CollectionTest, RemovalSparesWhatIsPrivateButForThePartsMultiFrameRemoval)
{
    for (const auto& [which, before, after, done] : Examples<char, Txt, Txt, bool>("removing")) {
        const CollectionPtr facade = Make(before);
        EXPECT_EQ(which == 'a'   ? facade->RemoveAllAttributes()
                  : which == 's' ? facade->RemoveAllSingleFrameAttributes()
                                 : facade->RemoveAllMultiFrameAttributes(),
                  done)
            << before;
        EXPECT_EQ(Show(*facade), after);
    }
    const CollectionPtr mixed = Make("X1 Y1p K1m L1pm");
    Part& part = *SinglePart(*mixed);
    long multi = 0, single = 0;
    EXPECT_TRUE(part.GetNumberOfMultiFrameAttributes(&multi) &&
                part.GetNumberOfSingleFrameAttributes(&single));
    EXPECT_EQ(std::pair(multi, single), std::pair(2L, 2L));
    EXPECT_TRUE(part.RemoveAllSingleFrameAttributes());
    EXPECT_EQ(Show(part), "K1m L1pm Y1p");
    EXPECT_TRUE(part.RemoveAllMultiFrameAttributes());
    EXPECT_EQ(Show(part), "Y1p");

    const CollectionPtr both = Make("X1|X2 M3");
    for (const auto& [done, left] : {std::pair(true, "|M3 X2"), {true, "|M3"}, {false, "|M3"}}) {
        EXPECT_EQ(both->RemoveAttribute(Tag('X')), done);
        EXPECT_EQ(Show(*both), left);
    }
}

TEST_F(CollectionTest, LookupsSearchThePartsAskedFor)
{
    // "Q1" is what the caller put there, and what stays there when nothing is found.
    for (const auto& [form, letter, single, multi, result, has] :
         Examples<Txt, char, bool, bool, Txt, bool>("looking up")) {
        SCOPED_TRACE(std::string(form) + " " + letter);
        const CollectionPtr facade = Make(form);
        const AttributePtr before = MakeAttribute("Q1");
        const CKivDSDicomAttribute* found = before.get();
        CKivDSDicomAttribute* pointer = before.get();
        const Allocations allocations;
        const bool hit = *result != 'Q';
        EXPECT_EQ(facade->GetAttribute(Tag(letter), &found, single, multi), hit);
        EXPECT_EQ(facade->GetAttributePtr(Tag(letter), &pointer, single, multi), hit);
        EXPECT_EQ(facade->HasAttribute(Tag(letter), single, multi), has);
        EXPECT_EQ(allocations.Count(), 0);
        EXPECT_EQ(found, pointer);
        EXPECT_EQ(Show(Tag(*result), *found, false), result);
    }
}

TEST_F(CollectionTest, PartsReportNullPointersAndMissesLeaveNull)
{
    Part part;
    const AttributePtr other = MakeAttribute("Q1");
    const CKivDSDicomAttribute* found = other.get();
    CKivDSDicomAttribute* pointer = other.get();
    EXPECT_FALSE(part.GetAttribute(Tag('X'), &found) || part.GetAttributePtr(Tag('X'), &pointer));
    EXPECT_TRUE(!found && !pointer);
    struct Nameless : CKivDSDicomAttribute
    {
        bool GetTag(unsigned long*) const override { return false; }
    } nameless;
    const Wide noOutput = L" Null output pointer parameter ", noInput = L" Null input parameter ";
    Refused(part.GetAttribute(Tag('X'), nullptr), kPart + L"GetAttribute", noOutput);
    Refused(part.GetAttributePtr(Tag('X'), nullptr), kPart + L"GetAttributePtr", noOutput);
    Refused(part.GetNumberOfAttributes(nullptr), kPart + L"GetNumberOfAttributes", noOutput);
    Refused(part.AddAttribute(nullptr, true), kPart + L"AddAttribute", noInput);
    Refused(Make("")->AddAttribute(nullptr, true), kPart + L"AddAttribute", noInput);
    Refused(part.AddAttribute(&nameless, true), kPart + L"AddAttribute",
            L" Unable to retrieve attribute tag ");
}

TEST_F(CollectionTest, AFrameCountThatCannotBeReadIsReported)
{
    const CollectionPtr facade = Make("|M1,2");
    const auto frames = [&](AttributePtr numberOfFrames) {
        Add(*facade, std::move(numberOfFrames));
        int count = 77;
        const bool read = facade->GetNumberOfFrames(&count);
        EXPECT_TRUE(read || count == 0);
        return read ? count : -1;
    };
    EXPECT_EQ(frames(Attribute(Tag('N'), IS, "16\\9")), 16);
    auto empty = std::make_unique<CKivDSDicomAttribute>();
    empty->InitEmpty(Tag('N'), IS, false);
    EXPECT_EQ(frames(std::move(empty)), -1);
    Claim(L"CKivDSDicomAttribute::GetValue", L" Bad input / output parameters ");
    EXPECT_EQ(frames(Attribute(Tag('N'), LO, "12345")), -1);
    EXPECT_EQ(frames(Attribute(Tag('N'), US, std::string_view("\7\0", 2))), -1);
    for (int i = 0; i < 3; ++i)
        Claim(kPart + L"GetNumberOfFrames", L"Failed to retrieve the number of image frames");
}

TEST_F(CollectionTest, ShallowCopiesShareAndDeepCopiesDoNot)
{
    for (const auto& [form, shallow, deep] : Examples<Txt, Txt, Txt>("copies")) {
        SCOPED_TRACE(form);
        CollectionPtr original = Make(form);
        const Facade copies[] = {Facade(*original), Facade(*original, true)};
        const CollectionPtr created[] = {CollectionPtr(Facade::CreateCollection(original.get(), false)),
                                         CollectionPtr(Facade::CreateCollection(original.get(), true))};
        CollectionPtr target(Compound(*original) ? Compound(*original)->GetCollection(0, false)
                                                 : new Facade(*original));
        AttributePtr added = MakeAttribute("X2");
        if (target->AddAttribute(added.get(), true))
            (void)added.release(); // the collection's now
        target.reset();
        original.reset();
        EXPECT_EQ(Show(copies[0]), shallow);
        EXPECT_EQ(Show(*created[0]), shallow);
        EXPECT_EQ(Show(copies[1]), deep);
        EXPECT_EQ(Show(*created[1]), deep);
    }
    const CollectionPtr source = Make("X1|M1");
    EXPECT_EQ(Show(Facade(SinglePart(*source), nullptr)), "X1");
    EXPECT_EQ(Show(Facade(nullptr, MultiPart(*source))), "|M1");
}

TEST_F(CollectionTest, EntriesWithoutAnAttributeArePassedOver)
{
    int deleted = 0;
    const CollectionPtr source = Make("W1 Z1");
    Add(*source, std::make_unique<CountedAttribute>("X5", &deleted, 9));
    Facade holed(*source, true);
    Claim(L"CKivDSDicomAttributeFactory::CreateDicomAttribute", L"Unknown DICOM attribute type");
    EXPECT_EQ(Show(holed), "W1 X? Z1");
    long count = 0;
    EXPECT_TRUE(holed.GetNumberOfAttributes(&count) && count == 3 &&
                holed.HasAttribute(Tag('X'), true, true));
    const CKivDSDicomAttribute* found = nullptr;
    EXPECT_FALSE(holed.GetAttribute(Tag('X'), &found, true, true));
    EXPECT_EQ(Text(holed), "(0011,0057)=[1] (0011,005a)=[1]"); // the iterator's walk
    EXPECT_EQ(Stream(holed), Stream(*Make("W1 Z1")));
    holed.Dump();
    EXPECT_TRUE(holed == Facade(holed, true));
    EXPECT_FALSE(holed == *Make("W1 X5 Z1"));
    for (const auto& [op, onTheLeft, onTheRight] : Examples<Txt, Txt, Txt>("missing attributes")) {
        EXPECT_EQ(Show(Apply<Facade>(op, *std::make_unique<Facade>(holed, true), *Make("X2 Z1"))), onTheLeft)
            << op;
        EXPECT_EQ(Show(Apply<Facade>(op, *Make("X2 Z1"), holed)), onTheRight) << op;
    }
    EXPECT_TRUE(holed.RemoveAllAttributes());
    EXPECT_EQ(Show(holed), "X?");
    EXPECT_TRUE(holed.AddAttribute(MakeAttribute("X3r").release(), true));
    EXPECT_EQ(Show(holed), "X3r");
}

TEST_F(CollectionTest, TheDumpShowsPartAfterPartInTagOrder)
{
    using Lines = std::vector<std::string>;
    Lines lines;
    SetDumpListener([](void* context, Txt line) { static_cast<Lines*>(context)->push_back(line); }, &lines);
    for (const Txt attribute : {"X1", "Y2", "M1,2m"})
        MakeAttribute(attribute)->Dump();
    const Lines expected = std::exchange(lines, {});
    for (const Txt form : {"Y2 X1|M1,2", "Z1<Y2 X1|M1,2;Z1>"}) {
        Make(form)->Dump();
        EXPECT_EQ(std::exchange(lines, {}), expected) << form;
    }
    Make("-")->Dump();
    EXPECT_TRUE(lines.empty());
    SetDumpListener(nullptr, nullptr);
}

} // namespace
} // namespace kivds::test
