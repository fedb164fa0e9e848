// Work that must grow in proportion to what it is done on: set operators over two maps, a series gathered and
// flattened, the complete collections of all frames. Items are elements, images or frames, so that "items per
// second" stays the same down a column when the growth is linear.
#include "bench/Elements.h"
#include "tests/support/FailingNew.h"

#include <benchmark/benchmark.h>

namespace {

using namespace kivds::bench;
using kivds::test::Allocations;
using CollectionPtr = std::unique_ptr<CKivDSDicomAttributeCollection>;

Element Text(unsigned long tag, std::string text)
{
    return {tag, 10, std::move(text)}; // LO
}

/// `count` attributes from `first` on, two tags apart; every value says its tag and `variant`.
CollectionPtr Attributes(unsigned long first, int count, int variant = 0)
{
    std::vector<Element> elements;
    for (int i = 0; i < count; ++i) {
        const unsigned long tag = first + static_cast<unsigned long>(i) * 2;
        elements.push_back(Text(tag, std::to_string(tag) + '-' + std::to_string(variant)));
    }
    return CollectionOf(elements);
}

void Report(benchmark::State& state, const Allocations& allocations)
{
    state.counters["allocs/item"] =
        static_cast<double>(allocations.Count()) / static_cast<double>(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

/// A operator B, half of the tags in both; making A anew for each round is not measured.
template <class Apply>
void Operator(benchmark::State& state, Apply apply)
{
    const int count = static_cast<int>(state.range(0));
    const CollectionPtr a = Attributes(0x00100000, count);
    const CollectionPtr b = Attributes(0x00100000 + static_cast<unsigned long>(count / 2) * 2, count);
    for (auto _ : state) {
        state.PauseTiming();
        CKivDSDicomAttributeCollection left(*a, true);
        state.ResumeTiming();
        apply(left, *b);
        state.PauseTiming();
        left = CKivDSDicomAttributeCollection(true);
        state.ResumeTiming();
    }
    CKivDSDicomAttributeCollection left(*a, true);
    const Allocations allocations;
    apply(left, *b);
    Report(state, allocations);
}

/// A series of images with 250 attributes that all share and 8 that vary, gathered in a compound collection
/// and flattened.
void GatherAndFlatten(benchmark::State& state)
{
    const int images = static_cast<int>(state.range(0));
    const CollectionPtr shared = Attributes(0x00100000, 250);
    std::vector<CollectionPtr> series;
    for (int i = 0; i < images; ++i) {
        series.push_back(std::make_unique<CKivDSDicomAttributeCollection>(*shared, true));
        *series.back() += *Attributes(0x00200000, 8, i);
    }
    const auto round = [&] {
        auto* compound = new CKivDSCompoundCollection;
        const CKivDSDicomAttributeCollection facade(compound);
        for (const CollectionPtr& image : series)
            compound->AddCollection(image.get(), false);
        const CollectionPtr flat(CKivDSDicomAttributeCollection::ConvertCompoundToFlatCollection(facade));
        benchmark::DoNotOptimize(flat.get());
    };
    for (auto _ : state)
        round();
    const Allocations allocations;
    round();
    Report(state, allocations);
}

/// The complete collection of each frame: 50 attributes that all frames share, 20 of each frame's own.
void CompleteFrames(benchmark::State& state)
{
    const int frames = static_cast<int>(state.range(0));
    CKivDSEnhancedMFCollection enhanced;
    enhanced.AddCollection(Attributes(0x00100000, 50).get(), false);
    for (int i = 0; i < frames; ++i)
        enhanced.AddMFCollection(Attributes(0x00200000, 20, i).get(), false);
    const auto round = [&] {
        for (int i = 0; i < frames; ++i)
            benchmark::DoNotOptimize(CollectionPtr(enhanced.GetMFCollection(i)).get());
    };
    for (auto _ : state)
        round();
    const Allocations allocations;
    round();
    Report(state, allocations);
}

using Facade = CKivDSDicomAttributeCollection;

BENCHMARK_CAPTURE(Operator, Union, [](Facade& a, const Facade& b) { a += b; })
    ->Range(16, 1 << 14)
    ->Complexity();
BENCHMARK_CAPTURE(Operator, Subtract, [](Facade& a, const Facade& b) { a -= b; })
    ->Range(16, 1 << 14)
    ->Complexity();
BENCHMARK_CAPTURE(Operator, Intersect, [](Facade& a, const Facade& b) { a ^= b; })
    ->Range(16, 1 << 14)
    ->Complexity();
BENCHMARK_CAPTURE(Operator, Changed, [](Facade& a, const Facade& b) { CollectionPtr(a / b); })
    ->Range(16, 1 << 14)
    ->Complexity();
BENCHMARK_CAPTURE(Operator, Agreed, [](Facade& a, const Facade& b) { CollectionPtr(a ^ b); })
    ->Range(16, 1 << 14)
    ->Complexity();
BENCHMARK(GatherAndFlatten)
    ->Arg(250)
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(4000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(CompleteFrames)
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(4000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

} // namespace
