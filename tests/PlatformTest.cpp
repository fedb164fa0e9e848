// The platform's stand-ins: error sink, frame ranges, scope items, scopes with their algebra and streams,
// events.
#include "platform/CKivIPBaseError.h"
#include "platform/CKivIPPScopeCollectionC.h"
#include "platform/CKivIPPScopeItemFactory.h"
#include "platform/Synchronization.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Item = CKivIPPScopeItemC;
using Range = CKivIPPRangeIDC;
using Element = CKivIPPScopeElementC;
using Collection = CKivIPPScopeCollectionC;
using ItemPtr = std::unique_ptr<Item>;
using ScopePtr = std::unique_ptr<CKivIPPScopeC>;

// ---- error sink

/// Counts the reports.
struct Log
{
    static void Receive(void* context, const wchar_t*, const wchar_t*, int)
    {
        ++static_cast<Log*>(context)->m_nReports;
    }
    int m_nReports = 0;
};

struct ErrorSink : testing::Test
{
    ~ErrorSink() override { g_KivIPError.SetListener(nullptr, nullptr); }
};

TEST_F(ErrorSink, PassesReportsToTheLatestListenerOnly)
{
    std::wstring first, second;
    const auto append = [](void* heard, const wchar_t* function, const wchar_t* message, int code) {
        const std::wstring report = std::wstring(function) + L"|" + message + L"|";
        *static_cast<std::wstring*>(heard) += report + std::to_wstring(code);
    };
    g_KivIPError.SetError(L"f", L"unheard", 1);
    g_KivIPError.SetListener(append, &first);
    g_KivIPError.SetError(L"C::Op", L" text ", 1);
    g_KivIPError.SetListener(append, &second);
    g_KivIPError.SetError(L"operator <", L"", 0);
    g_KivIPError.SetListener(nullptr, &first);
    g_KivIPError.SetError(L"f", L"unheard", 0);
    EXPECT_EQ(first, L"C::Op| text |1");
    EXPECT_EQ(second, L"operator <||0");
}

TEST_F(ErrorSink, LetsAListenerReportReplaceItselfAndThrow)
{
    static Log s_Inner;
    g_KivIPError.SetListener(
        [](void* context, const wchar_t* function, const wchar_t* message, int code) {
            Log::Receive(context, function, message, code);
            if (code > 0)
                g_KivIPError.SetError(function, message, code - 1);
            g_KivIPError.SetListener(Log::Receive, &s_Inner);
            throw std::runtime_error("a listener's own trouble");
        },
        &s_Inner);
    g_KivIPError.SetError(L"f", L"m", 2);
    EXPECT_EQ(s_Inner.m_nReports, 3);
    g_KivIPError.SetError(L"f", L"m", 2);
    EXPECT_EQ(s_Inner.m_nReports, 4) << "the replacement listens";
}

TEST_F(ErrorSink, EndsWhenTwoListenersReplaceEachOtherAtOnce)
{
    static std::atomic<int> s_nInside{0};
    g_KivIPError.SetListener(
        [](void*, const wchar_t*, const wchar_t*, int) {
            ++s_nInside;
            while (s_nInside < 2)
                std::this_thread::yield();
            g_KivIPError.SetListener(nullptr, nullptr);
        },
        nullptr);
    std::thread other([] { g_KivIPError.SetError(L"f", L"m", 0); });
    g_KivIPError.SetError(L"f", L"m", 0);
    other.join();
    EXPECT_EQ(s_nInside, 2);
}

// ---- streams

/// The object's stream in a block of exactly its length, so that a byte too many is noticed.
template <class Object>
std::vector<char> Written(const Object& object)
{
    int announced = -1, size = -1;
    EXPECT_TRUE(object.Serialize(nullptr, &announced));
    std::vector<char> bytes(static_cast<std::size_t>(announced));
    EXPECT_TRUE(object.Serialize(bytes.data(), &size));
    EXPECT_EQ(size, announced);
    EXPECT_FALSE(object.Serialize(bytes.data(), nullptr));
    return bytes;
}

template <class Object>
bool Read(Object& object, const std::vector<char>& bytes, int* size)
{
    return object.Deserialize(bytes.data(), static_cast<int>(bytes.size()), size);
}

void Put(std::vector<char>& stream, std::size_t at, unsigned value)
{
    for (unsigned i = 0; i < 4; ++i)
        stream[at + i] = static_cast<char>(value >> (8 * i));
}

bool IsEmptied(const Range& range)
{
    return range.GetNumberOfFrames() == 0;
}
bool IsEmptied(const Item& item)
{
    return !item.IsGood() && *item.GetUIDPtr() == '\0';
}

// ---- frame ranges

Range ListOf(const std::vector<int>& frames)
{
    Range range;
    EXPECT_TRUE(range.SetFrames(static_cast<int>(frames.size()), frames.data()));
    return range;
}

TEST(FrameRange, GivesAFrameItsFirstPositionInTheList)
{
    std::vector<std::vector<int>> lists = {
        {7}, {INT_MAX - 1, INT_MAX, INT_MIN, INT_MIN + 1}, {INT_MIN, INT_MAX, INT_MAX, INT_MIN}};
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) { // runs that overlap, repeat and contain one another
        std::vector<int>& list = lists.emplace_back();
        while (list.size() < 30)
            for (int next = static_cast<int>(random() % 20), n = static_cast<int>(random() % 8); n > 0; --n)
                list.push_back(next++);
    }
    for (const std::vector<int>& list : lists) {
        SCOPED_TRACE(testing::PrintToString(list));
        const Range range = ListOf(list);
        EXPECT_EQ(range.GetNumberOfFrames(), static_cast<int>(list.size()));
        std::set<int> probes(list.begin(), list.end());
        for (const int frame : list)
            probes.insert({frame == INT_MIN ? frame : frame - 1, frame == INT_MAX ? frame : frame + 1});
        for (const int frame : probes) {
            const auto found = std::find(list.begin(), list.end(), frame);
            int position = -7;
            EXPECT_EQ(range.GetPosition(frame, &position), found != list.end()) << frame;
            EXPECT_EQ(position, found == list.end() ? -7 : found - list.begin()) << frame;
        }
        Range read, assigned = ListOf({1, 9, 1});
        int size = 0;
        EXPECT_TRUE(Read(read, Written(range), &size) && read == range);
        assigned = range;
        const std::unique_ptr<Item> copy(range.Copy());
        EXPECT_TRUE(assigned == range && Range(range) == range && copy->IsEqual(&range));
        int position = -7;
        EXPECT_TRUE(assigned.GetPosition(list.back(), &position) && position < range.GetNumberOfFrames());
    }
}

TEST(FrameRange, EqualsTheSameListHoweverItWasSet)
{
    Range span;
    EXPECT_TRUE(span.SetFrames(-1, 2));
    EXPECT_TRUE(span == ListOf({-1, 0, 1, 2}));
    for (const Range& other : {ListOf({-1, 0, 2, 1}), ListOf({-1, 0, 1}), ListOf({-1, 0, 1, 3}),
                               ListOf({-1, 0, 1, 2, 2}), ListOf({0, 1, 2})})
        EXPECT_FALSE(span == other || other == span);
    std::vector<char> split = Written(ListOf({1, 2, 9, 10}));
    split[36] = 3; // the second run now goes on where the first one ends
    int size = 0;
    EXPECT_TRUE(Read(span, split, &size));
    EXPECT_TRUE(span == ListOf({1, 2, 3, 4}));
}

TEST(FrameRange, CostsTheSameForManyFramesAndRefusesWhatCannotBeCounted)
{
    constexpr int cases[][3] = {
        // first, last, how many; none where they cannot be counted
        {1, 2, 2}, {1, 100000, 100000}, {5, 5, 1},       {1, INT_MAX, INT_MAX}, {INT_MIN, -2, INT_MAX},
        {2, 1, 0}, {0, INT_MAX, 0},     {INT_MIN, 0, 0}, {INT_MIN, INT_MAX, 0}, {INT_MAX, INT_MIN, 0}};
    for (const auto& [first, last, count] : cases) {
        SCOPED_TRACE(last);
        const bool good = count > 0;
        Range range = ListOf({3, 2, 1});
        EXPECT_EQ(range.SetFrames(first, last), good);
        EXPECT_EQ(range.IsGood(), good);
        EXPECT_EQ(range.GetNumberOfFrames(), count);
        int position = -1;
        EXPECT_EQ(range.GetPosition(last, &position), good);
        EXPECT_EQ(position, count - 1);
        EXPECT_EQ(Written(range).size(), good ? 36u : 28u);
        EXPECT_FALSE(good && first > INT_MIN && range.GetPosition(first - 1, nullptr));
    }
    const int frames[] = {1, 2};
    for (const int* const list : {frames, static_cast<const int*>(nullptr)}) {
        Range range = ListOf({3, 2, 1});
        EXPECT_FALSE(range.SetFrames(list == nullptr ? 2 : -1, list));
        EXPECT_TRUE(IsEmptied(range) && !range.IsGood() && !range.GetPosition(3, nullptr));
    }
}

TEST(FrameRange, ReadsOnlySoundStreams)
{
    Range range = ListOf({1, 2, 3, 0, 1, -5});
    constexpr int bad[][4] = {{1, -1, 5, 3}, {1, INT_MAX, 5, 1}, {INT_MIN, INT_MAX, 0, INT_MAX}};
    for (const auto& runs : bad) { // of less than a frame, or more frames together than can be counted
        std::vector<char> bytes = Written(ListOf({1, 5}));
        for (std::size_t i = 0; i < 4; ++i)
            Put(bytes, 28 + 4 * i, static_cast<unsigned>(runs[i]));
        int size = -1;
        EXPECT_FALSE(Read(range, bytes, &size)) << runs[0] << ' ' << runs[1];
        EXPECT_TRUE(size == 0 && IsEmptied(range));
    }
}

// ---- scope items

struct Named
{
    const char* m_pUID;
    int m_nFirst = INT_MIN; // all frames
    int m_nLast = INT_MAX;
};

ItemPtr MakeItem(const _GUID& type, const Named& name)
{
    ItemPtr item(g_pItemFactory->Create(type));
    const auto& [uid, first, last] = name;
    EXPECT_TRUE(first == INT_MIN ? item->SetUID(uid) : item->SetUID(uid, first, last));
    return item;
}

TEST(ScopeItem, StaysFailedUntilItIsSetAgain)
{
    for (const auto& [size, fits] : {std::pair(6, true), {5, false}, {0, false}, {-1, false}}) {
        SCOPED_TRACE(size);
        Item item;
        char text[256] = "before";
        EXPECT_TRUE(!item.IsGood() && item.SetUID("1.2.3") && item.IsGood());
        EXPECT_EQ(item.GetUID(text, size), fits);
        EXPECT_STREQ(text, fits ? "1.2.3" : size > 0 ? "" : "before");
        EXPECT_EQ(Item(item).IsGood(), fits);
        EXPECT_TRUE(item.GetUID(text, 256));
        EXPECT_EQ(item.IsGood(), fits) << "one success does not mend it";
        EXPECT_TRUE(item.SetUID(item.GetUIDPtr(), 4, 4) && item.IsGood());
        EXPECT_STREQ(item.GetUIDPtr(), "1.2.3");
    }
    Item item;
    int first = 0, last = 0;
    EXPECT_TRUE(item.SetUID("1.2", -3, 0) && item.GetFrames(&first, &last) && first == -3 && last == 0);
    EXPECT_TRUE(item.SetUID("1.2") && !item.GetFrames(&first, &last));
    EXPECT_FALSE(item.GetUID(nullptr, 10) || item.IsGood());
    for (const auto& refused :
         {std::tuple("1.2", 2, 1), std::tuple("", 1, 2), std::tuple<const char*, int, int>(nullptr, 1, 2)}) {
        EXPECT_TRUE(item.SetUID("1.2", 1, 1));
        EXPECT_FALSE(std::apply([&](auto... a) { return item.SetUID(a...); }, refused));
        EXPECT_TRUE(IsEmptied(item) && !item.GetFrames(&first, &last));
    }
    Range range = ListOf({1});
    EXPECT_FALSE(range.SetUID("1.2") || range.SetUID("1.2", 1, 2) || !range.IsGood());
}

TEST(ScopeItem, EqualsWhatNamesTheSame)
{
    std::vector<ItemPtr> items;
    for (const _GUID* type : {&g_StudyUID, &g_SeriesUID, &g_ImageUID})
        items.push_back(MakeItem(*type, {"1.2"}));
    for (const Named& image : {Named{"1.22"}, {"1.2", 1, 2}, {"1.2", 1, 3}, {"1.2", 0, 2}})
        items.push_back(MakeItem(g_ImageUID, image));
    items.emplace_back(g_pItemFactory->Create(g_RangeUID));
    items.push_back(std::make_unique<Range>(ListOf({1, 2})));
    for (const ItemPtr& a : items) {
        EXPECT_FALSE(a->IsEqual(nullptr));
        for (const ItemPtr& b : items) {
            const ItemPtr clone(g_pItemFactory->Clone(b.get()));
            EXPECT_EQ(a->IsEqual(clone.get()), a == b);
        }
    }
    EXPECT_EQ(g_pItemFactory->Create(g_ScopeElementType), nullptr);
    EXPECT_EQ(g_pItemFactory->Clone(nullptr), nullptr);
}

// ---- scope elements and collections

template <class Scope>
void Prepare(Scope& scope, const std::vector<const _GUID*>& types)
{
    scope.SetType(std::is_same<Scope, Element>::value ? g_ScopeElementType : g_ScopeCollectionType);
    EXPECT_TRUE(scope.Initialize(static_cast<int>(types.size())));
    for (std::size_t i = 0; i < types.size(); ++i)
        EXPECT_TRUE(scope.SetScopeItemType(static_cast<int>(i), *types[i]));
}

void Add(Element& element, int level, const std::vector<Named>& names)
{
    for (const Named& name : names)
        EXPECT_TRUE(element.AddItem(level, MakeItem(element.GetScopeItemType(level), name).release(), false));
}

std::unique_ptr<Element> MakeElement(const std::vector<Named>& series, const std::vector<Named>& images)
{
    auto element = std::make_unique<Element>();
    Prepare(*element, {&g_SeriesUID, &g_ImageUID});
    Add(*element, 0, series);
    Add(*element, 1, images);
    return element;
}

TEST(ScopeElement, KeepsTheRulesOfItsLevelsAndItems)
{
    Element element;
    for (const int levels : {-1, 0, 17, INT_MAX, 1, 16})
        EXPECT_EQ(element.Initialize(levels), levels == 1 || levels == 16) << levels;
    Prepare(element, {&g_StudyUID, &g_SeriesUID, &g_ImageUID});
    Item* item = MakeItem(g_ImageUID, {"1.2", 1, 9}).release();
    Item* const lent = item;
    for (const int level : {-1, 0, 3})
        EXPECT_FALSE(element.AddItem(level, item, false)) << level;
    EXPECT_FALSE(element.SetScopeItemType(-1, g_ImageUID) || element.SetScopeItemType(3, g_ImageUID));
    EXPECT_FALSE(element.GetItem(2, item, false) || item != nullptr ||
                 element.GetScopeItem(2, true) != nullptr);
    EXPECT_TRUE(element.AddItem(2, lent, false)); // from here on the element's own
    const ItemPtr other = MakeItem(g_ImageUID, {"1.3"});
    Item* some[] = {other.get(), other.get(), nullptr};
    EXPECT_FALSE(element.AddItems(2, 3, some, true) || element.AddItems(2, -1, some, true));
    EXPECT_FALSE(element.AddItem(2, nullptr, true) || element.AddItems(2, 1, nullptr, true));
    EXPECT_EQ(element.GetNumberOfItems(2), 1) << "all or none";
    EXPECT_TRUE(element.AddItems(2, 2, some, true));
    EXPECT_TRUE(element.GetItemPtr(2, 2)->IsEqual(other.get()) && element.GetItemPtr(2, 3) == nullptr);
    EXPECT_FALSE(element.SetScopeItemType(2, g_StudyUID)) << "it holds images";

    EXPECT_TRUE(element.GetItem(2, item, false) && item == lent);
    EXPECT_TRUE(element.GetItem(2, item, true) && item != lent && item->IsEqual(lent));
    const ItemPtr copy(item);
    EXPECT_TRUE(lent->SetUID("1.2", 4, 4)); // narrows the element's own
    EXPECT_FALSE(element.GetItemPtr(2, 0)->IsEqual(copy.get()));

    Element twin;
    EXPECT_TRUE(twin.InitializeFromScope(&element) && kivds::SameGuid(twin.GetType(), g_ScopeElementType));
    EXPECT_TRUE(lent->SetUID("1.9"));
    EXPECT_STREQ(twin.GetItemPtr(2, 0)->GetUIDPtr(), "1.2") << "an independent copy";
    Collection collection;
    Prepare(collection, {&g_StudyUID, &g_SeriesUID, &g_ImageUID});
    EXPECT_FALSE(twin.InitializeFromScope(&collection) || twin.GetLevels() != 0) << "not one element";
    EXPECT_FALSE(collection.AddScopeElement(&twin) || collection.AddScopeElement(nullptr)) << "no levels";
    EXPECT_FALSE(collection.AddScopeElement(MakeElement({}, {}).get())) << "other levels";
    EXPECT_TRUE(collection.AddScopeElement(&element));
    EXPECT_FALSE(collection.SetScopeItemType(0, g_ImageUID));
    EXPECT_TRUE(twin.InitializeFromScope(&collection) && twin.GetNumberOfItems(2) == 3);
    EXPECT_FALSE(collection.InitializeFromScope(nullptr) || collection.GetLevels() != 0);
}

/// The series, image (both with UIDs of one character) and frame of one thing that may be covered. Frames are
/// a few in and around those in use, and the extremes, which only items with all frames cover.
using Cell = std::tuple<char, char, int>;
using Cells = std::set<Cell>;

std::set<std::pair<char, int>> LevelCells(const Element& element, int level)
{
    std::set<std::pair<char, int>> cells;
    for (int i = 0; const Item* const item = element.GetItemPtr(level, i); ++i)
        for (const int frame : {INT_MIN, 0, 1, 2, 3, 4, 5, 6, INT_MAX}) {
            int first = INT_MIN, last = INT_MAX;
            item->GetFrames(&first, &last);
            if (first <= frame && frame <= last)
                cells.insert({*item->GetUIDPtr(), frame});
        }
    return cells;
}

Cells CellsOf(const CKivIPPScopeC* scope)
{
    Cells cells;
    if (const auto* const element = dynamic_cast<const Element*>(scope))
        for (const auto& [series, all] : LevelCells(*element, 0))
            for (const auto& [image, frame] : LevelCells(*element, 1))
                cells.insert({series, image, frame});
    if (const auto* const collection = dynamic_cast<const Collection*>(scope))
        for (int i = 0; i < collection->GetNumberOfScopeElements(); ++i)
            cells.merge(CellsOf(collection->GetScopeElement(i)));
    return cells;
}

/// Whether one element could cover just these cells.
bool IsProduct(const Cells& cells)
{
    std::set<char> series;
    std::set<std::pair<char, int>> images;
    for (const auto& [uid, image, frame] : cells) {
        series.insert(uid);
        images.insert({image, frame});
    }
    return series.size() * images.size() == cells.size();
}

std::unique_ptr<Element> RandomElement(std::mt19937& random)
{
    const auto pick = [&](const char* uid, std::vector<Named>& names) {
        const int first = static_cast<int>(random() % 5) + 1;
        const int last = first + static_cast<int>(random() % 3);
        for (auto n = random() % 3; n > 0; --n)
            names.push_back(random() % 4 == 0 ? Named{uid} : Named{uid, first, std::min(last, 5)});
    };
    std::vector<Named> series, images;
    for (const char* const uid : {"1", "2", "3"})
        if (random() % 2 == 0)
            series.push_back({uid});
    pick("8", images);
    pick("9", images);
    return MakeElement(series, images);
}

ScopePtr RandomScope(std::mt19937& random)
{
    if (random() % 3 == 0)
        return RandomElement(random);
    auto collection = std::make_unique<Collection>();
    Prepare(*collection, {&g_SeriesUID, &g_ImageUID});
    for (auto n = random() % 5; n > 0; --n)
        EXPECT_TRUE(collection->AddScopeElement(RandomElement(random).get()));
    return collection;
}

TEST(ScopeAlgebra, AgreesWithTheSetsOfWhatIsCovered)
{
    std::mt19937 random(2);
    int equal = 0, joined = 0;
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        const ScopePtr a = RandomScope(random);
        const ScopePtr b = RandomScope(random);
        const Cells inA = CellsOf(a.get());
        const Cells inB = CellsOf(b.get());
        Cells common, distinct, both = inA;
        std::set_intersection(inA.begin(), inA.end(), inB.begin(), inB.end(),
                              std::inserter(common, common.end()));
        std::set_difference(inA.begin(), inA.end(), inB.begin(), inB.end(),
                            std::inserter(distinct, distinct.end()));
        both.insert(inB.begin(), inB.end());

        ASSERT_EQ(a->IsEmpty(), inA.empty());
        ASSERT_EQ(a->IsEqual(b.get(), -1), inA == inB);
        ASSERT_EQ(a->IsIncluded(b.get()), distinct.empty());
        ASSERT_EQ(a->HasCommonPart(b.get()), !common.empty());
        const ScopePtr commonPart(a->GetCommonPart(b.get()));
        const ScopePtr distinctPart(a->GetDistinctPart(b.get()));
        ASSERT_TRUE(CellsOf(commonPart.get()) == common && (commonPart == nullptr) == common.empty());
        ASSERT_TRUE(CellsOf(distinctPart.get()) == distinct && (distinctPart == nullptr) == distinct.empty());
        equal += inA == inB;

        const bool empty = inA.empty();
        const bool added = a->AddScope(b.get());
        ASSERT_TRUE(CellsOf(a.get()) == (added ? both : inA));
        const bool single = dynamic_cast<Element*>(a.get()) != nullptr;
        if (!single || !empty) { // a half-filled element may refuse more
            ASSERT_EQ(added, !single || IsProduct(both));
        }
        joined += added;
        ASSERT_TRUE(!added || a->AddScope(b.get()));
        ASSERT_TRUE(!added || CellsOf(a.get()) == both);
    }
    EXPECT_GT(equal, 10);
    EXPECT_GT(joined, 100);
}

TEST(ScopeAlgebra, ComparesLevelsAndTypesFirst)
{
    const auto full = MakeElement({{"1"}}, {{"8", 1, 2}, {"8", 3, 4}});
    const auto joined = MakeElement({{"1"}}, {{"8", 1, 4}});
    const auto fewer = MakeElement({{"1"}, {"1"}}, {{"8", 1, 3}});
    const auto half = MakeElement({{"1"}}, {});
    EXPECT_TRUE(full->IsEqual(joined.get(), -1) && full->IsEqual(joined.get(), 7));
    EXPECT_TRUE(full->IsEqual(fewer.get(), 0) && !full->IsEqual(fewer.get(), 1));
    EXPECT_TRUE(half->IsEqual(full.get(), 0) && half->IsEmpty() && half->IsIncluded(fewer.get()));

    Element other;
    Prepare(other, {&g_SeriesUID, &g_StudyUID});
    Add(other, 0, {{"1"}});
    Add(other, 1, {{"8"}});
    EXPECT_TRUE(full->IsEqual(&other, 0) && !full->IsEqual(&other, 1));
    EXPECT_FALSE(full->IsIncluded(&other) || full->HasCommonPart(&other) || full->AddScope(&other));
    EXPECT_EQ(full->GetCommonPart(&other), nullptr);
    const ScopePtr distinct(full->GetDistinctPart(&other));
    EXPECT_TRUE(distinct->IsEqual(full.get(), -1) &&
                kivds::SameGuid(distinct->GetType(), g_ScopeCollectionType));
    EXPECT_FALSE(full->IsEqual(nullptr, -1) || full->IsIncluded(nullptr) || full->HasCommonPart(nullptr));
    EXPECT_FALSE(full->AddScope(nullptr) || full->GetCommonPart(nullptr) || full->GetDistinctPart(nullptr));

    Element ranges, range; // frame ranges are items like others
    for (Element* const element : {&ranges, &range})
        Prepare(*element, {&g_RangeUID});
    EXPECT_TRUE(ranges.AddItem(0, new Range(ListOf({5, 6, 1, 2, 3})), false));
    EXPECT_TRUE(range.AddItem(0, new Range(ListOf({2, 3, 4, 5})), false));
    const ScopePtr rest(ranges.GetDistinctPart(&range));
    const auto* const element = static_cast<const Collection&>(*rest).GetScopeElement(0);
    EXPECT_EQ(element->GetNumberOfItems(0), 2);
    EXPECT_TRUE(element->GetItemPtr(0, 0)->IsEqual(std::make_unique<Range>(ListOf({1})).get()));
    EXPECT_TRUE(element->GetItemPtr(0, 1)->IsEqual(std::make_unique<Range>(ListOf({6})).get()));
}

// Sound streams are in docs/streams.md and tests/streams.md; CorruptionTest.cpp disturbs them.
TEST(ScopeStream, IsOfItsKindAndOfItemsThatCanBeMade)
{
    Element element, stranger;
    Collection collection;
    Prepare(stranger, {&g_ScopeElementType});
    auto* const item = new Item();
    item->SetType(g_ScopeElementType); // nobody makes items of this type
    EXPECT_TRUE(stranger.AddItem(0, item, false));
    int size = 0;
    EXPECT_FALSE(Read(element, Written(stranger), &size));
    EXPECT_FALSE(Read(element, Written(collection), &size)) << "another kind of stream";
    Range range;
    const auto refusesNull = [&](auto& object) { // Written tries it when writing
        const std::vector<char> bytes = Written(object);
        EXPECT_FALSE(Read(object, bytes, nullptr) || object.Deserialize(nullptr, &size) ||
                     object.Deserialize(nullptr, 99, &size));
    };
    refusesNull(*item), refusesNull(element), refusesNull(collection), refusesNull(range);
}

// ---- events and mutex

/// Threads that wait for one event, and how many the event has let through.
struct Waiters
{
    explicit Waiters(kivds::Event& event, int count)
    {
        for (int i = 0; i < count; ++i)
            m_Threads.emplace_back([&] {
                event.Wait();
                ++m_nThrough;
            });
        EXPECT_TRUE(Reaches(0));
    }
    ~Waiters()
    {
        for (std::thread& thread : m_Threads)
            thread.join();
    }
    bool Reaches(int through) const
    {
        const auto settle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(20)); };
        for (int i = 0; i < 100 && m_nThrough < through; ++i)
            settle();
        settle();
        return m_nThrough == through;
    }

    std::atomic<int> m_nThrough{0};
    std::vector<std::thread> m_Threads;
};

TEST(Synchronization, AnAutomaticEventLetsOneThreadThroughForEachSignal)
{
    kivds::Event event(kivds::EventReset::Automatic, true);
    event.Wait(); // takes the first signal
    event.Set();
    event.Set(); // nobody waits: one signal is kept
    event.Wait();
    event.Set();
    event.Reset();
    Waiters waiters(event, 3);
    event.Set();
    EXPECT_TRUE(waiters.Reaches(1));
    event.Set();
    event.Set(); // a signal each for two that wait
    EXPECT_TRUE(waiters.Reaches(3));
}

TEST(Synchronization, AManualEventLetsAllThroughThatWaitedWhenItWasSet)
{
    kivds::Event event(kivds::EventReset::Manual, false);
    Waiters waiters(event, 3);
    event.Set();
    event.Reset();
    EXPECT_TRUE(waiters.Reaches(3));
    event.Set(); // ends the test also when it has failed
    event.Wait();
    event.Wait(); // the signal stays
}

TEST(Synchronization, AMutexAdmitsItsOwnerAgainAndNobodyElse)
{
    kivds::Mutex mutex;
    mutex.Wait();
    mutex.Wait();
    mutex.Release(); // one hold is left
    std::atomic<bool> inside{false};
    std::thread other([&] {
        mutex.Wait();
        inside = true;
        mutex.Release();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(inside);
    mutex.Release();
    other.join();
    EXPECT_TRUE(inside);
}

} // namespace
