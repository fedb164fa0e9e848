// The platform's stand-ins: error sink, frame ranges, scope items, scopes with their algebra, events. Streams
// are in docs/streams.md and tests/streams.md.
#include "platform/CKivIPBaseError.h"
#include "platform/CKivIPPScopeCollectionC.h"
#include "platform/CKivIPPScopeItemFactory.h"
#include "platform/Synchronization.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <future>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Item = CKivIPPScopeItemC;
using Range = CKivIPPRangeIDC;
using Element = CKivIPPScopeElementC;
using Collection = CKivIPPScopeCollectionC;
using ItemPtr = std::unique_ptr<Item>;
using ScopePtr = std::unique_ptr<CKivIPPScopeC>;
using Wide = const wchar_t*;

// ---- error sink

struct ErrorSink : testing::Test
{
    ~ErrorSink() override { g_KivIPError.SetListener(nullptr, nullptr); }
};

TEST_F(ErrorSink, LetsAListenerReportReplaceItselfAndThrow)
{
    static int s_nReports = 0;
    const auto listen = [](void*, Wide, Wide, int code) {
        ++s_nReports;
        if (code > 0)
            g_KivIPError.SetError(L"f", L"m", code - 1);
        g_KivIPError.SetListener([](void* count, Wide, Wide, int) { ++*static_cast<int*>(count); },
                                 &s_nReports);
        throw std::runtime_error("a listener's own trouble");
    };
    g_KivIPError.SetListener(listen, nullptr);
    for (const int reports : {3, 4, 4}) { // its own, one to the replacement, one to nobody
        g_KivIPError.SetError(L"f", L"m", 2);
        EXPECT_EQ(s_nReports, reports);
        if (reports == 4)
            g_KivIPError.SetListener(nullptr, &s_nReports);
    }
}

TEST_F(ErrorSink, EndsWhenTwoListenersReplaceEachOtherAtOnce)
{
    static std::atomic<int> s_nInside{0};
    const auto listen = [](void*, Wide, Wide, int) {
        ++s_nInside;
        while (s_nInside < 2)
            std::this_thread::yield();
        g_KivIPError.SetListener(nullptr, nullptr);
    };
    g_KivIPError.SetListener(listen, nullptr);
    std::thread other([] { g_KivIPError.SetError(L"f", L"m", 0); });
    g_KivIPError.SetError(L"f", L"m", 0);
    other.join();
    EXPECT_EQ(s_nInside, 2);
}

// ---- frame ranges

Range ListOf(const std::vector<int>& frames)
{
    Range range;
    EXPECT_TRUE(range.SetFrames(static_cast<int>(frames.size()), frames.data()));
    return range;
}

Range Reread(const Range& range)
{
    Range read;
    char bytes[1000];
    int size = 0;
    EXPECT_TRUE(range.Serialize(bytes, &size) && read.Deserialize(bytes, size, &size));
    return read;
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
        Range assigned = ListOf({1, 9, 1});
        const Range& itself = assigned = range;
        assigned = itself;
        const ItemPtr copy(range.Copy());
        EXPECT_TRUE(Reread(range) == range && assigned == range && Range(range) == range &&
                    copy->IsEqual(&range));
        EXPECT_EQ(range.GetNumberOfFrames(), static_cast<int>(list.size()));
        std::set<int> probes(list.begin(), list.end());
        for (const int frame : list)
            probes.insert({frame == INT_MIN ? frame : frame - 1, frame == INT_MAX ? frame : frame + 1});
        for (const int frame : probes) {
            const auto found = std::find(list.begin(), list.end(), frame);
            for (const Range* const asked : {&range, static_cast<const Range*>(&assigned)}) {
                int position = -7;
                EXPECT_EQ(asked->GetPosition(frame, &position), found != list.end()) << frame;
                EXPECT_EQ(position, found == list.end() ? -7 : found - list.begin()) << frame;
            }
        }
    }
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
        EXPECT_TRUE(range.SetFrames(first, last) == good && range.IsGood() == good);
        EXPECT_TRUE(range.GetNumberOfFrames() == count && range.GetNumberOfFrameRuns() == int{good});
        int position = -1;
        EXPECT_TRUE(range.GetPosition(last, &position) == good && position == count - 1);
        EXPECT_FALSE(good && first > INT_MIN && range.GetPosition(first - 1, nullptr));
    }
    const int frames[] = {1, 2};
    for (const int* const list : {frames, static_cast<const int*>(nullptr)}) {
        Range range = ListOf({3, 2, 1});
        EXPECT_FALSE(range.SetFrames(list ? -1 : 2, list) || range.IsGood() || range.GetPosition(3, nullptr));
    }
    Range span;
    EXPECT_TRUE(span.SetFrames(-1, 2) && span == ListOf({-1, 0, 1, 2}));
    for (const Range& other : {ListOf({-1, 0, 2, 1}), ListOf({-1, 0, 1}), ListOf({-1, 0, 1, 3}),
                               ListOf({-1, 0, 1, 2, 2}), ListOf({0, 1, 2})})
        EXPECT_FALSE(span == other || other == span);
}

// ---- scope items

TEST(ScopeItem, StaysFailedUntilItIsSetAgain)
{
    char text[256] = "";
    for (const auto& [size, given] :
         {std::pair(6, "1.2.3"), {5, ""}, {1, ""}, {0, "before"}, {-1, "before"}, {256, nullptr}}) {
        SCOPED_TRACE(size);
        Item item;
        const bool fits = size == 6;
        std::string("before").copy(text, 7);
        EXPECT_TRUE(!item.IsGood() && item.SetUID("1.2.3") && item.IsGood());
        EXPECT_EQ(item.GetUID(given ? text : nullptr, size), fits);
        EXPECT_STREQ(text, given ? given : "before");
        EXPECT_EQ(Item(item).IsGood(), fits);
        EXPECT_TRUE(item.GetUID(text, 256));
        EXPECT_EQ(item.IsGood(), fits) << "one success does not mend it";
        EXPECT_TRUE(item.SetUID(item.GetUIDPtr(), 4, 4) && item.IsGood());
        EXPECT_STREQ(item.GetUIDPtr(), "1.2.3");
    }
    Item item;
    int first = 0, last = 0;
    for (const auto& [uid, from, to] : {std::tuple("1.2", 2, 1), {"", 1, 2}, {nullptr, 1, 2}}) {
        EXPECT_TRUE(item.SetUID("1.2", -3, 0) && item.GetFrames(&first, &last) && first == -3 && last == 0);
        EXPECT_FALSE(item.SetUID(uid, from, to) || item.IsGood() || item.GetFrames(&first, &last));
        EXPECT_STREQ(item.GetUIDPtr(), "");
    }
    EXPECT_TRUE(item.SetUID("1.2", 1, 1) && item.SetUID("1.2") && !item.GetFrames(&first, &last));
    Range range = ListOf({1});
    EXPECT_FALSE(range.SetUID("1.2") || range.SetUID("1.2", 1, 2) || !range.IsGood());
}

/// A new item; of all frames where they are not said.
ItemPtr MakeItem(const _GUID& type, const std::string& uid, int first = INT_MIN, int last = INT_MAX)
{
    ItemPtr item(g_pItemFactory->Create(type));
    EXPECT_TRUE(first == INT_MIN ? item->SetUID(uid.c_str()) : item->SetUID(uid.c_str(), first, last));
    return item;
}

TEST(ScopeItem, EqualsWhatNamesTheSame)
{
    std::vector<ItemPtr> items;
    for (const _GUID* type : {&g_StudyUID, &g_SeriesUID, &g_ImageUID})
        items.push_back(MakeItem(*type, "1.2"));
    items.push_back(MakeItem(g_ImageUID, "1.22"));
    for (const auto& [first, last] : {std::pair(1, 2), {1, 3}, {0, 2}})
        items.push_back(MakeItem(g_ImageUID, "1.2", first, last));
    items.emplace_back(g_pItemFactory->Create(g_RangeUID));
    items.push_back(std::make_unique<Range>(ListOf({1, 2})));
    for (const ItemPtr& a : items) {
        EXPECT_FALSE(a->IsEqual(nullptr));
        for (const ItemPtr& b : items)
            EXPECT_EQ(a->IsEqual(ItemPtr(g_pItemFactory->Clone(b.get())).get()), a == b);
    }
    EXPECT_FALSE(g_pItemFactory->Create(g_ScopeElementType) || g_pItemFactory->Clone(nullptr));
}

// ---- scope elements and collections

template <class Scope>
void Prepare(Scope& scope, const _GUID& type, const std::vector<const _GUID*>& itemTypes)
{
    scope.SetType(type);
    EXPECT_TRUE(scope.Initialize(static_cast<int>(itemTypes.size())));
    for (std::size_t i = 0; i < itemTypes.size(); ++i)
        EXPECT_TRUE(scope.SetScopeItemType(static_cast<int>(i), *itemTypes[i]));
}

/// An element of series and images: "12/89[1-3]" has the series 1 and 2, the image 8, and the frames 1 to 3
/// of the image 9.
std::unique_ptr<Element> MakeElement(const std::string& text)
{
    auto element = std::make_unique<Element>();
    Prepare(*element, g_ScopeElementType, {&g_SeriesUID, &g_ImageUID});
    for (std::size_t i = 0, images = text.find('/'); i < text.size(); ++i) {
        if (i == images)
            continue;
        const bool some = text.substr(i + 1, 1) == "[";
        const ItemPtr item = MakeItem(i < images ? g_SeriesUID : g_ImageUID, text.substr(i, 1),
                                      some ? text[i + 2] - '0' : INT_MIN, some ? text[i + 4] - '0' : INT_MAX);
        EXPECT_TRUE(element->AddItem(i > images, item.get(), true));
        i += some ? 5 : 0;
    }
    return element;
}

/// An element, or a collection of elements that each end with "+".
ScopePtr MakeScope(const std::string& text)
{
    if (text.find('/') != text.npos && text.find('+') == text.npos)
        return MakeElement(text);
    auto collection = std::make_unique<Collection>();
    Prepare(*collection, g_ScopeCollectionType, {&g_SeriesUID, &g_ImageUID});
    std::istringstream elements(text);
    for (std::string element; std::getline(elements, element, '+');)
        EXPECT_TRUE(collection->AddScopeElement(MakeElement(element).get()));
    return collection;
}

TEST(ScopeElement, KeepsTheRulesOfItsLevelsAndItems)
{
    Element element, twin;
    for (const int levels : {-1, 0, 17, INT_MAX, 1, 16})
        EXPECT_EQ(element.Initialize(levels), levels == 1 || levels == 16) << levels;
    Prepare(element, g_ScopeElementType, {&g_StudyUID, &g_SeriesUID, &g_ImageUID});
    const ItemPtr other = MakeItem(g_ImageUID, "1.3");
    Item* const own = MakeItem(g_ImageUID, "1.2", 1, 9).release();
    Item* item = own;
    for (const int level : {-1, 0, 3}) // the study level is for studies
        EXPECT_FALSE(element.AddItem(level, item, false) ||
                     (level != 0 && element.SetScopeItemType(level, g_ImageUID)));
    EXPECT_FALSE(element.GetItem(2, item, false) || item || element.GetScopeItem(2, true));
    EXPECT_TRUE(element.AddItem(2, own, false)); // the element's from here on
    Item* some[] = {other.get(), other.get(), nullptr};
    EXPECT_FALSE(element.AddItems(2, 3, some, true) || element.AddItems(2, -1, some, true) ||
                 element.AddItem(2, nullptr, true) || element.AddItems(2, 1, nullptr, true));
    EXPECT_EQ(element.GetNumberOfItems(2), 1) << "all or none";
    EXPECT_TRUE(element.AddItems(2, 2, some, true));
    EXPECT_TRUE(element.GetItemPtr(2, 2)->IsEqual(other.get()) && !element.GetItemPtr(2, 3));
    EXPECT_FALSE(element.SetScopeItemType(2, g_StudyUID)) << "it holds images";
    EXPECT_TRUE(element.GetItem(2, item, false) && item == own);
    EXPECT_TRUE(element.GetItem(2, item, true) && item != own);
    const ItemPtr copy(item);
    EXPECT_TRUE(twin.InitializeFromScope(&element) && kivds::SameGuid(twin.GetType(), g_ScopeElementType));
    EXPECT_TRUE(own->IsEqual(copy.get()) && own->SetUID("1.9")); // which no copy notices
    EXPECT_FALSE(own->IsEqual(copy.get()) || own->IsEqual(twin.GetItemPtr(2, 0)));

    Collection collection;
    Prepare(collection, g_ScopeCollectionType, {&g_StudyUID, &g_SeriesUID, &g_ImageUID});
    EXPECT_FALSE(twin.InitializeFromScope(&collection) || twin.GetLevels() != 0) << "not one element";
    EXPECT_FALSE(collection.AddScopeElement(&twin) || collection.AddScopeElement(nullptr)) << "no levels";
    EXPECT_FALSE(collection.AddScopeElement(MakeElement("/").get())) << "other levels";
    EXPECT_TRUE(collection.AddScopeElement(&element) && !collection.SetScopeItemType(0, g_ImageUID));
    EXPECT_TRUE(twin.InitializeFromScope(&collection) && twin.GetNumberOfItems(2) == 3);
    EXPECT_FALSE(collection.InitializeFromScope(nullptr) || collection.GetLevels() != 0);
}

TEST(ScopeStream, NothingToReadFromOrToAnswerInIsRefused)
{
    const auto element = MakeElement("1/8");
    const ScopePtr collection = MakeScope("1/8+");
    Range range = ListOf({1, 2, 3});
    const ItemPtr study = MakeItem(g_StudyUID, "1.2");
    char buffer[1000];
    int size = 0;
    for (CKivIPPSerialFormC* const object :
         std::initializer_list<CKivIPPSerialFormC*>{collection.get(), &range, study.get(), element.get()}) {
        EXPECT_TRUE(object->Dump() && object->Serialize(buffer, &size) && object->Serialize(nullptr, &size));
        EXPECT_FALSE(object->Serialize(buffer, nullptr) || object->Deserialize(buffer, nullptr) ||
                     object->Deserialize(nullptr, &size));
    }
    EXPECT_FALSE(element->Deserialize(nullptr, 99, &size) || range.Deserialize(nullptr, 99, &size));
    struct : CKivIPPScopeItemFactory
    {
        Item* Create(const _GUID&) override { return nullptr; }
    } barren;
    CKivIPPScopeItemFactory* const factory = g_pItemFactory;
    for (CKivIPPScopeItemFactory* const other :
         std::vector<CKivIPPScopeItemFactory*>{&barren, nullptr, factory}) {
        g_pItemFactory = other;
        EXPECT_EQ(element->Deserialize(buffer, &size), other == factory);
    }
}

/// The series, image and frame of each thing that is covered. Frames are a few in and around those in use,
/// and the extremes, which only items with all frames cover.
using Cells = std::set<std::tuple<char, char, int>>;

Cells CellsOf(const CKivIPPScopeC* scope)
{
    Cells cells;
    if (const auto* const collection = dynamic_cast<const Collection*>(scope))
        for (int i = 0; const Element* const element = collection->GetScopeElement(i); ++i)
            cells.merge(CellsOf(element));
    const auto* const element = dynamic_cast<const Element*>(scope);
    for (int s = 0; const Item* const series = element ? element->GetItemPtr(0, s) : nullptr; ++s)
        for (int i = 0; const Item* const image = element->GetItemPtr(1, i); ++i)
            for (const int frame : {INT_MIN, 0, 1, 2, 3, 4, 5, 6, INT_MAX}) {
                int first = INT_MIN, last = INT_MAX;
                image->GetFrames(&first, &last);
                if (first <= frame && frame <= last)
                    cells.insert({*series->GetUIDPtr(), *image->GetUIDPtr(), frame});
            }
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

std::string RandomElement(std::mt19937& random)
{
    std::string text;
    for (const char series : {'1', '2', '3'})
        text += random() % 2 == 0 ? std::string(1, series) : "";
    text += '/';
    for (const char image : {'8', '9'})
        for (auto n = random() % 3; n > 0; --n) {
            const auto first = random() % 5 + 1, last = std::min<std::size_t>(first + random() % 3, 5UL);
            text += image;
            text += random() % 4 == 0 ? "" : "[" + std::to_string(first) + "-" + std::to_string(last) + "]";
        }
    return text;
}

std::string RandomScope(std::mt19937& random)
{
    if (random() % 3 == 0)
        return RandomElement(random);
    std::string text;
    for (auto n = random() % 5; n > 0; --n)
        text += RandomElement(random) + '+';
    return text;
}

TEST(ScopeAlgebra, AgreesWithTheSetsOfWhatIsCovered)
{
    std::mt19937 random(2);
    int equal = 0, joined = 0;
    for (int round = 0; round < 1000; ++round) {
        const std::string left = RandomScope(random), right = RandomScope(random);
        SCOPED_TRACE(left + "  " + right);
        const ScopePtr a = MakeScope(left), b = MakeScope(right);
        const Cells inA = CellsOf(a.get()), inB = CellsOf(b.get());
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

        const bool added = a->AddScope(b.get());
        const bool single = dynamic_cast<Element*>(a.get()) != nullptr;
        ASSERT_TRUE(CellsOf(a.get()) == (added ? both : inA));
        ASSERT_TRUE((single && inA.empty()) || added == (!single || IsProduct(both)))
            << "a half-filled element may refuse more";
        ASSERT_TRUE(!added || (a->AddScope(b.get()) && CellsOf(a.get()) == both));
        joined += added;
    }
    EXPECT_GT(equal, 10);
    EXPECT_GT(joined, 100);
}

TEST(ScopeAlgebra, ComparesLevelsAndTypesFirst)
{
    const auto full = MakeElement("1/8[1-2]8[3-4]"), joined = MakeElement("1/8[1-4]");
    const auto fewer = MakeElement("11/8[1-3]"), half = MakeElement("1/");
    EXPECT_TRUE(full->IsEqual(joined.get(), 7) && full->IsEqual(fewer.get(), 0) &&
                !full->IsEqual(fewer.get(), 1));
    EXPECT_TRUE(half->IsEqual(full.get(), 0) && half->IsEmpty() && half->IsIncluded(fewer.get()));

    Element other;
    Prepare(other, g_ScopeElementType, {&g_SeriesUID, &g_StudyUID});
    EXPECT_TRUE(other.AddItem(0, MakeItem(g_SeriesUID, "1").get(), true) &&
                other.AddItem(1, MakeItem(g_StudyUID, "8").get(), true));
    EXPECT_TRUE(full->IsEqual(&other, 0));
    for (Element* const unlike : {&other, static_cast<Element*>(nullptr)}) {
        EXPECT_FALSE(full->IsEqual(unlike, 1) || full->IsIncluded(unlike) || full->HasCommonPart(unlike) ||
                     full->AddScope(unlike) || full->GetCommonPart(unlike));
        const ScopePtr distinct(full->GetDistinctPart(unlike));
        EXPECT_EQ(distinct && distinct->IsEqual(full.get(), -1), unlike != nullptr);
    }

    Element ranges, range; // frame ranges are items like others
    for (Element* const element : {&ranges, &range})
        Prepare(*element, g_ScopeElementType, {&g_RangeUID});
    EXPECT_TRUE(ranges.AddItem(0, new Range(ListOf({5, 6, 1, 2, 3})), false));
    EXPECT_TRUE(range.AddItem(0, new Range(ListOf({2, 3, 4, 5})), false));
    const ScopePtr rest(ranges.GetDistinctPart(&range));
    EXPECT_TRUE(kivds::SameGuid(rest->GetType(), g_ScopeCollectionType));
    const auto* const element = static_cast<const Collection&>(*rest).GetScopeElement(0);
    EXPECT_EQ(element->GetNumberOfItems(0), 2);
    for (const int i : {0, 1})
        EXPECT_TRUE(dynamic_cast<const Range&>(*element->GetItemPtr(0, i)) == ListOf({i == 0 ? 1 : 6}));
}

// ---- events and mutex

TEST(Synchronization, AnEventLetsOneThroughForEachSignalOrAllThatWait)
{
    for (const auto reset : {kivds::EventReset::Automatic, kivds::EventReset::Manual}) {
        const bool manual = reset == kivds::EventReset::Manual;
        kivds::Event event(reset, true);
        event.Wait();
        event.Set();
        event.Set(); // nobody waits: one signal is kept
        event.Wait();
        if (manual)
            event.Wait(); // and stays
        event.Set();
        event.Reset();
        std::atomic<int> started{0}, through{0};
        std::vector<std::thread> threads;
        const auto reaches = [&](int count) {
            while (started < static_cast<int>(threads.size()))
                std::this_thread::yield();
            for (int i = 0; i < 100 && through < count; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            return through == count;
        };
        const auto startOne = [&] {
            threads.emplace_back([&] {
                ++started;
                event.Wait();
                ++through;
            });
        };
        startOne(), startOne(), startOne();
        EXPECT_TRUE(reaches(0));
        event.Set();
        if (manual)
            event.Reset(); // too late for who has waited
        EXPECT_TRUE(reaches(manual ? 3 : 1));
        startOne();
        EXPECT_TRUE(reaches(manual ? 3 : 1)) << "no signal is left";
        event.Set(), event.Set(), event.Set(); // a signal each for three that wait
        EXPECT_TRUE(reaches(4));
        for (std::thread& thread : threads)
            thread.join();
    }
}

TEST(Synchronization, AMutexAdmitsItsOwnerAgainAndNobodyElse)
{
    kivds::Mutex mutex;
    mutex.Wait();
    mutex.Wait();
    mutex.Release(); // one hold is left
    auto other = std::async(std::launch::async, [&] {
        mutex.Wait();
        mutex.Release();
    });
    EXPECT_EQ(other.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    mutex.Release();
    other.get();
}

} // namespace
