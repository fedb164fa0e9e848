// One collection of a CT slice's elements: building, looking up, copying, writing, reading, destroying. Each
// benchmark shows the allocations of one round beside its time; items are elements.
#include "bench/Elements.h"
#include "tests/support/FailingNew.h"

#include <benchmark/benchmark.h>

namespace {

using namespace kivds::bench;
using kivds::test::Allocations;

const std::vector<Element>& Elements()
{
    static const std::vector<Element> elements = CtElements();
    return elements;
}

/// Runs `round` for the benchmark's time, and once more to count its allocations.
template <class Round>
void Measure(benchmark::State& state, Round round)
{
    for (auto _ : state)
        round();
    const Allocations allocations;
    round();
    const auto elements = static_cast<double>(Elements().size());
    state.counters["allocs/element"] = static_cast<double>(allocations.Count()) / elements;
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Elements().size()));
}

void Build(benchmark::State& state)
{
    Measure(state, [] { benchmark::DoNotOptimize(CollectionOf(Elements())); });
}

void Destroy(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto collection = CollectionOf(Elements());
        state.ResumeTiming();
        collection.reset();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Elements().size()));
}

void LookUp(benchmark::State& state)
{
    const auto collection = CollectionOf(Elements());
    Measure(state, [&] {
        for (const Element& element : Elements()) {
            const CKivDSDicomAttribute* found = nullptr;
            collection->GetAttribute(element.m_Tag, &found, true, true);
            benchmark::DoNotOptimize(found);
        }
    });
}

void CopyDeep(benchmark::State& state)
{
    const auto collection = CollectionOf(Elements());
    Measure(state, [&] { benchmark::DoNotOptimize(CKivDSDicomAttributeCollection(*collection, true)); });
}

void Compare(benchmark::State& state)
{
    const auto collection = CollectionOf(Elements());
    const auto other = CollectionOf(Elements());
    Measure(state, [&] { benchmark::DoNotOptimize(*collection == *other); });
}

void WriteStream(benchmark::State& state)
{
    const auto collection = CollectionOf(Elements());
    int size = 0;
    collection->Serialize(nullptr, size);
    std::string stream(static_cast<std::size_t>(size), '\0');
    Measure(state, [&] {
        collection->Serialize(nullptr, size);
        collection->Serialize(stream.data(), size);
    });
}

void ReadStream(benchmark::State& state)
{
    const auto collection = CollectionOf(Elements());
    int size = 0;
    collection->Serialize(nullptr, size);
    std::string stream(static_cast<std::size_t>(size), '\0');
    collection->Serialize(stream.data(), size);
    Measure(state, [&] {
        CKivDSDicomAttributeCollection received;
        benchmark::DoNotOptimize(
            received.Deserialize(stream.data(), static_cast<int>(stream.size()), size, true));
    });
}

BENCHMARK(Build);
BENCHMARK(Destroy);
BENCHMARK(LookUp);
BENCHMARK(CopyDeep);
BENCHMARK(Compare);
BENCHMARK(WriteStream);
BENCHMARK(ReadStream);

} // namespace
