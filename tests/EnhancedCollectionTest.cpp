// Enhanced multi-frame collections: the regular one, the frames, the complete collection of a frame, the
// stream. Operators are in CollectionOperatorsTest.cpp, hostile streams in CollectionStreamTest.cpp, golden
// bytes in docs/streams.md.
#include "tests/support/FailingNew.h"
#include "tests/support/Hex.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

namespace kivds::test {
namespace {

using EnhancedCollectionTest = ReportTest;

constexpr Wide kNullCollection = L"Null collection pointer as input parameter";

TEST_F(EnhancedCollectionTest, CollectionsAreSharedOrCopied)
{
    const auto addedTo = [](bool deep) {
        const CollectionPtr regular = Make("X1|M1"), frame = Make("Z1"), facade = Make("<Q1;Y1>");
        EXPECT_TRUE(Enhanced(*facade)->AddCollection(regular.get(), deep));
        EXPECT_TRUE(Enhanced(*facade)->AddMFCollection(frame.get(), deep));
        Add(*regular, MakeAttribute("X2"));
        Add(*frame, MakeAttribute("Z2"));
        return Show(*facade);
    };
    EXPECT_EQ(addedTo(false), "<X2|M1;Y1;Z2>");
    EXPECT_EQ(addedTo(true), "<X1|M1;Y1;Z1>");

    for (const Txt how : {"shallow", "deep", "assigned"}) {
        const CollectionPtr facade = Make("<X1|M1;Y1>"), frame = Make("Z1");
        CKivDSEnhancedMFCollection& source = *Enhanced(*facade);
        EXPECT_TRUE(source.AddMFCollection(frame.get(), false));
        SetScope(source, "9");
        auto* const copy = *how == 's'   ? new CKivDSEnhancedMFCollection(source)
                           : *how == 'd' ? new CKivDSEnhancedMFCollection(source, true)
                                         : new CKivDSEnhancedMFCollection;
        const Facade owner(copy);
        if (*how == 'a') {
            EXPECT_TRUE(copy->AddMFCollection(Make("Q1").get(), true));
            const CKivDSEnhancedMFCollection& itself = *copy = source;
            *copy = itself;
        }
        Add(*facade, MakeAttribute("X2"));
        Add(*frame, MakeAttribute("Z2"));
        EXPECT_TRUE(source.AddMFCollection(Make("W1").get(), false));
        EXPECT_EQ(Show(owner) + ScopeOf(owner), *how == 's' ? "<X2|M1;Y1;Z2>9" : "<X1|M1;Y1;Z1>9") << how;
    }
    CKivDSEnhancedMFCollection enhanced;
    Refused(enhanced.AddCollection(nullptr, false), kEnhanced + L"AddCollection", kNullCollection);
    Refused(enhanced.AddMFCollection(nullptr, false), kEnhanced + L"AddMFCollection", kNullCollection);
}

TEST_F(EnhancedCollectionTest, NoneIsPutIntoItself)
{
    for (const Txt form : {"<X1;Z1>", "W1<X1;Z1>"}) {
        const CollectionPtr facade = Make(form);
        EXPECT_TRUE(Enhanced(*facade)->AddCollection(facade.get(), false));
        EXPECT_EQ(Enhanced(static_cast<const Facade&>(*Enhanced(*facade))), nullptr) << form;
        Refused(Enhanced(*facade)->AddMFCollection(facade.get(), true), kEnhanced + L"AddMFCollection",
                kEnhancedRefused);
    }
    const CollectionPtr facade = Make("{<X1;Z1>}");
    const CollectionPtr member(Compound(*facade)->GetCollection(0, false));
    Refused(Enhanced(*member)->AddMFCollection(facade.get(), false), kEnhanced + L"AddMFCollection",
            kEnhancedRefused);
    EXPECT_TRUE(Enhanced(*member)->AddMFCollection(Make("{X1}").get(), false));

    for (const auto& [form, holders, refusing] : Rows<Txt, int, std::wstring>{
             {"<X1>", 2, kEnhanced + L"operator |="},     // would get the frames
             {"<X1;Z1>", 3, kFacade + L"operator |="}}) { // whose frame would get them
        const CollectionPtr held = Make(form);
        CollectionPtr outermost(Facade::CreateCollection(held.get(), false));
        for (int i = 0; i < holders; ++i) {
            CollectionPtr holder = Make("<Y1>");
            EXPECT_TRUE(Enhanced(*holder)->AddMFCollection(outermost.get(), false));
            outermost = std::move(holder);
        }
        *held |= *outermost;
        Claim(refusing, kEnhancedRefused);
    }
}

TEST_F(EnhancedCollectionTest, TheRegularCollectionIsHandedOut)
{
    const CollectionPtr facade = Make("<X1|M1;Z1>");
    for (const bool deep : {false, true}) {
        const CollectionPtr regular(Enhanced(*facade)->GetCollection(deep));
        EXPECT_EQ(Show(*regular), "X1|M1");
        EXPECT_EQ(SinglePart(*regular) == SinglePart(*Enhanced(*facade)), !deep);
        EXPECT_EQ(MultiPart(*regular) == MultiPart(*Enhanced(*facade)), !deep);
    }
    CKivDSEnhancedMFCollection none;
    Refused(none.GetCollection(true), kEnhanced + L"GetCollection", L"Object not properly initialized ");
}

TEST_F(EnhancedCollectionTest, AFramesCompleteCollectionUnitesRegularAndOwnAttributes)
{
    for (const auto& [object, indexOf, expected] : Examples<Txt, int, Txt>("complete collections")) {
        SCOPED_TRACE(object);
        const CollectionPtr facade = Make(object);
        const CollectionPtr complete(Enhanced(*facade)->GetMFCollection(indexOf));
        EXPECT_EQ(Show(*complete), expected);
        Add(*complete, MakeAttribute("X9"));
        EXPECT_EQ(Show(*facade), object);
    }
    const CollectionPtr text = Make("<;>"); // Number of Frames that holds no integers stays as it is
    Add(*text, Attribute(0x00280008, LO, "12345"));
    EXPECT_EQ(Text(*CollectionPtr(Enhanced(*text)->GetMFCollection(0))), "(0028,0008)=[12345]");
    for (const int index : {-1, 1}) {
        Refused(Enhanced(*text)->GetMFCollection(index), kEnhanced + L"GetMFCollection",
                L"Invalid multiframe collection index ");
    }
}

TEST_F(EnhancedCollectionTest, StreamsReplaceTheRegularCollectionAndAppendFrames)
{
    const CollectionPtr facade = Make("<X1|M1,2;;Y1>");
    const std::string own = Stream(static_cast<Facade&>(*Enhanced(*facade)));
    const int total = static_cast<int>(own.size());
    for (const bool bounded : {true, false}) {
        const CollectionPtr target = Make("<Q1|L1;Z1>");
        int size = 0;
        EXPECT_TRUE(bounded ? Enhanced(*target)->Deserialize(own.data(), total, size, true)
                            : Enhanced(*target)->Deserialize(own.data(), size, true));
        EXPECT_EQ(size, total);
        EXPECT_EQ(Show(*target), "<X1|M1,2;Z1;;Y1>");
    }
    std::string disturbed = own; // the total that the stream states is what the unbounded form tells
    disturbed.replace(own.size() - 4, 4, Bytes("05000000"));
    CKivDSEnhancedMFCollection read;
    int size = 0;
    EXPECT_TRUE(read.Deserialize(disturbed.data(), size, true));
    EXPECT_EQ(size, 5);
    EXPECT_TRUE(read.Deserialize(disturbed.data(), total, size, true));
    EXPECT_EQ(size, total);
    EXPECT_EQ(read.GetNumberOfMFCollections(), 4);
}

TEST_F(EnhancedCollectionTest, WhatCannotBeWrittenIsReported)
{
    for (const auto& [form, onLength, onWriting] : Rows<Txt, Wide, Wide>{
             {"<-;X1>", L"Failed to retrieve the size of the regular collection",
              L"Failed to serialize the regular collections"},
             {"<X1;Y1;->", L"Failed to get the size of the emf collection",
              L"Failed to deserialize the emf collection"},
         }) {
        const CollectionPtr facade = Make(form);
        char buffer[512];
        for (Facade* const object : {static_cast<Facade*>(Enhanced(*facade)), facade.get()}) {
            int size = 77;
            EXPECT_TRUE(object->Serialize(nullptr, size));
            Claim(kEnhanced + L"GetSize", onLength);
            EXPECT_EQ(size, 0);
            size = 77;
            Refused(object->Serialize(buffer, size), kEnhanced + L"Serialize", onWriting);
            EXPECT_EQ(size, 77);
        }
    }
    const CollectionPtr members = Make("<X1;{Y1}>");
    int size = 77;
    EXPECT_TRUE(members->Serialize(nullptr, size));
    Claim(kFacade + L"Serialize", kCompoundRefused);
    Claim(kEnhanced + L"GetSize", L"Failed to get the size of the emf collection");
    EXPECT_EQ(size, 0);
}

TEST_F(EnhancedCollectionTest, CompletingAllFramesGrowsAsTheirNumber)
{
    const auto cost = [](int frames) {
        const CollectionPtr facade = Make("<X1 Y1 Z1,2,3,4,5 N3>");
        for (int i = 0; i < frames; ++i)
            EXPECT_TRUE(Enhanced(*facade)->AddMFCollection(Make("A1 B2").get(), false));
        const Allocations allocations;
        for (int i = 0; i < frames; ++i)
            EXPECT_TRUE(CollectionPtr(Enhanced(*facade)->GetMFCollection(i)));
        return std::pair(allocations.Count(), allocations.Bytes());
    };
    const auto [count, bytes] = cost(200);
    EXPECT_EQ(cost(400), std::pair(2 * count, 2 * bytes));
}

} // namespace
} // namespace kivds::test
