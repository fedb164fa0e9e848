// The map of attributes behind a part, in both its forms, array and std::map, and its way from one to the
// other.
#include "attribute/DumpListener.h"
#include "collection/internal/AttributeWalk.h"
#include "tests/support/FailingNew.h"
#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <vector>

namespace kivds::test {
namespace {

using AttributeMapTest = ReportTest;
using Tags = std::vector<unsigned long>;

struct OpenFacade : Facade
{
    using Facade::GetMapPtr;
};

AttributePtr Empty(unsigned long tag)
{
    auto attribute = std::make_unique<CKivDSDicomAttribute>(false, false);
    attribute->InitEmpty(tag, US, false);
    return attribute;
}

void Put(AttributeMap& map, unsigned long tag)
{
    CKivDSDicomAttribute*& place = *map.PlaceFor(tag).attribute;
    delete place;
    place = Empty(tag).release();
}

/// The tags in the order of a walk, each of them also found, and stepped to.
Tags Walked(const AttributeMap& map)
{
    Tags tags;
    AttributeMap::Position step;
    bool stepped = map.First(step);
    for (const auto [tag, attribute] : AttributeWalk(map)) {
        unsigned long own = 0;
        EXPECT_TRUE(attribute && attribute->GetTag(&own) && own == tag);
        CKivDSDicomAttribute* const* const found = map.Find(tag);
        EXPECT_TRUE(found && *found == attribute);
        EXPECT_TRUE(stepped && step.entry.attribute == attribute);
        stepped = map.Next(step);
        tags.push_back(tag);
    }
    EXPECT_FALSE(stepped);
    EXPECT_EQ(map.Size(), tags.size());
    return tags;
}

TEST_F(AttributeMapTest, AgreesWithASetWhateverIsDoneToIt)
{
    std::mt19937 random(1);
    for (const auto& [range, steps, asMap] :
         {std::tuple(24UL, 400, false), {24UL, 400, true}, {9000UL, 9000, false}}) {
        AttributeMap map;
        std::set<unsigned long> model;
        if (asMap)
            map.AsMap();
        for (int i = 0; i < steps; ++i) {
            const unsigned long tag = random() % range;
            const bool held = model.count(tag) > 0;
            EXPECT_EQ(map.Find(tag) != nullptr, held);
            if (random() % 3 > 0) {
                Put(map, tag);
                model.insert(tag);
            } else {
                EXPECT_EQ(map.Erase(tag), held);
                model.erase(tag);
            }
            if (range < 100 || i % 1000 == 0) {
                ASSERT_EQ(Walked(map), Tags(model.begin(), model.end()));
            }
        }
        ASSERT_EQ(Walked(map), Tags(model.begin(), model.end()));
        map.Clear();
        EXPECT_TRUE(Walked(map).empty());
    }
}

// Keeps, replaces, adds and drops what it leaps to, and knows beforehand what must come out.
TEST_F(AttributeMapTest, AnEditMeetsEveryTagAndKeepsTheRest)
{
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        const unsigned long range = round % 2 ? 30 : 700;
        AttributeMap map;
        std::set<unsigned long> model, leaps;
        const auto choose = [&](std::set<unsigned long>& tags) {
            for (auto i = random() % 300; i > 0; --i)
                tags.insert(random() % range);
        };
        choose(model);
        choose(leaps);
        for (const unsigned long tag : model)
            Put(map, tag);
        if (round % 3 == 0)
            map.AsMap();
        AttributeWalk walk(map);
        for (const unsigned long tag : leaps)
            EXPECT_EQ(walk.AttributeOf(tag) != nullptr, model.count(tag) > 0);
        {
            AttributeEdit edit(map, 1000);
            for (const unsigned long tag : leaps) {
                const bool held = model.count(tag) > 0;
                EXPECT_EQ(edit.LeapTo(tag), held);
                if (random() % 2) {
                    edit.Put(tag, Empty(tag));
                    model.insert(tag);
                } else if (held) {
                    edit.Drop();
                    model.erase(tag);
                }
            }
        }
        ASSERT_EQ(Walked(map), Tags(model.begin(), model.end()));
        for (unsigned long tag = 0; tag < range; ++tag)
            ASSERT_EQ(map.Find(tag) != nullptr, model.count(tag) > 0);
    }
}

// What comes in tag order is indexed: in any number, also where tags were chosen to crowd in the index.
TEST_F(AttributeMapTest, FindsWhatCameInTagOrderAndNothingElse)
{
    constexpr std::uint32_t factor = 0x9E3779B1U; // the index's
    std::uint32_t inverse = factor;
    for (int i = 0; i < 5; ++i) // doubles the bits that are right
        inverse *= 2U - factor * inverse;
    ASSERT_EQ(factor * inverse, 1U);
    for (const std::uint32_t step : {2U, 0x10000U, inverse}) {
        for (const std::size_t count : {1U, 15U, 16U, 17U, 33U, 300U, 70000U}) {
            std::set<unsigned long> tags;
            for (std::size_t i = 1; i <= count; ++i)
                tags.insert(static_cast<std::uint32_t>(i * step));
            AttributeMap map;
            if (count % 2)
                map.Reserve(count);
            for (const unsigned long tag : tags)
                map.PlaceFor(tag);
            for (const unsigned long tag : tags) {
                ASSERT_TRUE(map.Find(tag));
                ASSERT_EQ(map.Find(tag + 1) != nullptr, tags.count(tag + 1) > 0);
            }
            const unsigned long middle = *std::next(tags.begin(), static_cast<std::ptrdiff_t>(count / 2));
            EXPECT_TRUE(map.Erase(middle));
            EXPECT_FALSE(map.Find(middle));
            EXPECT_EQ(map.Find(*tags.rbegin()) != nullptr, count > 1);
            EXPECT_TRUE(map.PlaceFor(middle).isNew);
            EXPECT_TRUE(map.Find(middle));
        }
    }
}

// The map that a derived class is lent is the collection's own, before and after every operation.
TEST_F(AttributeMapTest, ALentMapIsTheCollectionsOwn)
{
    OpenFacade a;
    a += *Make("X1 Y1");
    AttributeMap::Map& map = *a.GetMapPtr();
    EXPECT_EQ(map.size(), 2U);
    map[Tag('Z')] = MakeAttribute("Z1").release();
    map[Tag('W')] = nullptr; // an entry without an attribute
    EXPECT_EQ(Show(a), "W? X1 Y1 Z1");
    EXPECT_EQ(Show(a *= *Make("Y2 V1")), "V1 W? X1 Y2 Z1");
    EXPECT_EQ(map.size(), 5U);
    const Facade copy(a, true);
    EXPECT_EQ(Show(copy), "V1 W? X1 Y2 Z1");
    EXPECT_TRUE(a == copy);
    CKivDSDicomAttributeCollectionIterator walk(a, true, true);
    std::string walked;
    for (auto* at = walk.GetFirstAttribute(); at; at = walk.GetNextAttribute())
        walked += Show(Tag(' '), *at, false).substr(1);
    EXPECT_EQ(walked, "1121");
    EXPECT_TRUE(a.RemoveAttribute(Tag('W')) && a.RemoveAllAttributes());
    EXPECT_TRUE(map.empty());
    static_cast<Facade&>(a) = copy;
    EXPECT_EQ(map.size(), 5U);
    EXPECT_EQ(a.GetMapPtr(), &map);
}

TEST_F(AttributeMapTest, WithoutMemoryForAMapTheCollectionStaysAsItIs)
{
    OpenFacade a;
    a += *Make("X1 Y1");
    for (int n = 0; n < 3; ++n) {
        const Allocations failing(n, Allocations::Later::Succeed);
        EXPECT_EQ(a.GetMapPtr(), nullptr);
    }
    for (int n = 0; n < 3; ++n)
        Claim(kPart + L"GetMapPtr", kUnexpectedError);
    EXPECT_EQ(Show(a), "X1 Y1");
    EXPECT_TRUE(a.GetMapPtr());
    AttributePtr x = MakeAttribute("X2");
    {
        const Allocations failing(0, Allocations::Later::Fail);
        EXPECT_TRUE(a.AddAttribute(x.get(), true)); // takes a place that is there
        (void)x.release();
    }
    EXPECT_EQ(Show(a), "X2 Y1");
    AttributeMap large; // which, to erase at the front, would rather be a map
    for (unsigned long tag = 0; tag < 3000; ++tag)
        Put(large, tag);
    {
        const Allocations failing(0, Allocations::Later::Fail);
        EXPECT_TRUE(large.Erase(0) && large.Erase(1) && !large.Erase(0));
    }
    EXPECT_TRUE(large.Erase(3));
    EXPECT_EQ(Walked(large).size(), 2997U);
    AttributeMap edited; // to add at the front, the same
    edited.Reserve(3002);
    for (unsigned long tag = 1; tag <= 3000; ++tag)
        Put(edited, tag);
    AttributePtr first = Empty(0);
    std::optional<AttributeEdit> edit(std::in_place, edited, 1);
    edit->LeapTo(0);
    edit->Put(0, std::move(first));
    {
        const Allocations failing(0, Allocations::Later::Fail);
        edit.reset();
    }
    EXPECT_FALSE(edited.IsMap());
    EXPECT_EQ(Walked(edited).size(), 3001U);
}

// The array stays as long as it serves: appending to it, and changes near its end or in small ones, move
// little. Any other order of work would move everything again and again.
TEST_F(AttributeMapTest, WorkThatWouldMoveTooMuchMakesAMapOfTheArray)
{
    constexpr unsigned long count = 5000;
    const auto isMap = [](const Facade& a) { return PartAccess::AttributesOf(*SinglePart(a)).IsMap(); };
    const auto filled = [](unsigned long first, bool ascending = true) {
        auto a = std::make_unique<Facade>();
        for (unsigned long i = first; i < count; ++i)
            Add(*a, Empty(ascending ? i : count - i));
        return a;
    };
    EXPECT_FALSE(isMap(*filled(0)));
    EXPECT_TRUE(isMap(*filled(0, false)));
    EXPECT_FALSE(isMap(Facade(*filled(0, false), true)));
    for (const std::string name : kAssignments) {
        const CollectionPtr a = filled(0), whole = filled(0), high = filled(2);
        Facade end, front;
        Add(end, Empty(count));
        Add(front, Empty(1));
        Apply(name, *a, end);
        Apply(name, *whole, *filled(0));
        EXPECT_FALSE(isMap(*a) || isMap(*whole)) << name;
        Apply(name, *high, front); // adds in front
        EXPECT_EQ(isMap(*high), name == "+=" || name == "*=" || name == "|=") << name;
        Apply(name, *a, front); // drops in front
        EXPECT_EQ(isMap(*a), name == "-=" || name == "/=") << name;
    }
    const CollectionPtr a = filled(0);
    for (unsigned long tag = 0; tag < 2000; ++tag)
        EXPECT_TRUE(a->RemoveAttribute(tag));
    EXPECT_TRUE(isMap(*a));
    EXPECT_EQ(Walked(PartAccess::AttributesOf(*SinglePart(*a))).size(), count - 2000);
}

// An entry without an attribute lies among many; and who hears that it could not be copied looks around.
TEST_F(AttributeMapTest, ListenersFindTheCollectionWholeWhileItIsChanged)
{
    int deleted = 0;
    Facade a, b;
    for (unsigned long tag = 0; tag < 40; ++tag)
        Add(tag % 2 ? a : b, Empty(tag));
    Add(b, std::make_unique<CountedAttribute>("X5", &deleted, 9));
    Add(a, Empty(Tag('Z')));
    Facade holed(b, true);
    Claim(L"CKivDSDicomAttributeFactory::CreateDicomAttribute", L"Unknown DICOM attribute type");
    Facade again(holed, true);
    EXPECT_EQ(Stream(again), Stream(holed));
    g_KivIPError.SetListener(
        [](void* context, Wide, Wide, int) {
            auto& collection = *static_cast<Facade*>(context);
            long count = 0;
            EXPECT_TRUE(collection.GetNumberOfAttributes(&count) && count == 21);
            for (unsigned long tag = 1; tag < 40; tag += 2)
                EXPECT_TRUE(collection.HasAttribute(tag, true, true));
        },
        &a);
    a |= b;
    EXPECT_EQ(Walked(PartAccess::AttributesOf(*SinglePart(a))).size(), 41U);
    const auto add = [](void* context, Txt) {
        for (unsigned long tag = 100; tag < 200; ++tag) {
            if (!static_cast<Facade*>(context)->HasAttribute(tag, true, true))
                Add(*static_cast<Facade*>(context), Empty(tag));
        }
    };
    SetDumpListener(add, &a);
    a.Dump();
    SetDumpListener(nullptr, nullptr);
    EXPECT_EQ(Walked(PartAccess::AttributesOf(*SinglePart(a))).size(), 141U);
}

// Copies and what is read lie in blocks, from which each attribute goes by itself.
TEST_F(AttributeMapTest, AttributesOfABlockStayAndGoOneByOne)
{
    const long live = Allocations::Live();
    {
        std::mt19937 random(3);
        Facade original;
        Tags tags;
        for (unsigned short i = 0; i < 300; ++i) {
            tags.push_back(0x00091000U + i);
            Add(original, Numbers(tags.back(), {i, i}));
        }
        const std::string stream = Stream(original);
        Facade copy(original, true), read, united;
        int size = 0;
        EXPECT_TRUE(read.Deserialize(stream.data(), static_cast<int>(stream.size()), size, true));
        united += original;
        std::shuffle(tags.begin(), tags.end(), random);
        for (Facade* const facade : {&copy, &read, &united}) {
            for (std::size_t i = 0; i < 290; ++i)
                EXPECT_TRUE(facade->RemoveAttribute(tags[i]));
            *facade += original; // into what is left of the block that was being filled, and new ones
            EXPECT_EQ(Stream(*facade), stream);
            for (std::size_t i = 10; i < 300; ++i)
                EXPECT_TRUE(facade->RemoveAttribute(tags[i]));
        }
        EXPECT_TRUE(copy == read && read == united);
        Facade again(read, true);
        EXPECT_EQ(Stream(again), Stream(copy));
    }
    EXPECT_EQ(Allocations::Live(), live);
}

// A walk by an iterator goes on from its tag, whatever happens to the entries.
TEST_F(AttributeMapTest, AnIteratorOutlivesChanges)
{
    OpenFacade a;
    a += *Make("B1 D1 F1 H1");
    CKivDSDicomAttributeCollectionIterator walk(a, true, true);
    std::string walked;
    for (auto* at = walk.GetFirstAttribute(); at; at = walk.GetNextAttribute()) {
        unsigned long tag = 0;
        at->GetTag(&tag);
        walked += static_cast<char>(tag & 0xFF);
        if (walked == "B")
            Add(a, MakeAttribute("A1"));
        if (walked == "BD") {
            EXPECT_TRUE(a.RemoveAttribute(Tag('D')) && a.RemoveAttribute(Tag('B')));
        }
        if (walked == "BDF") {
            for (const char letter : std::string("CEGIJKLOPQ"))
                Add(a, MakeAttribute(std::string(1, letter) + "1"));
        }
        if (walked == "BDFGHI") {
            EXPECT_TRUE(a.GetMapPtr());
        }
    }
    EXPECT_EQ(walked, "BDFGHIJKLOPQ");
}

} // namespace
} // namespace kivds::test
