// Runs the workload on one toolkit and prints a line a measurement: work, size, fastest and median of the
// nanoseconds a unit (processor time, which other programs disturb less), heap blocks a unit, and what the
// work came to, tabulators between them. The toolkit is a class with static operations:
//
//     Set                            owns a collection; movable
//     Name(), Version()
//     kMostElements                  in a collection of the growth tables
//     Build(dataSet) -> Set          every value stored
//     Fetch(set, digest)             every value, typed, in tag order
//     Find(set, tag) -> tag          of the element found; 0 when there is none
//     Copy(set) -> Set               shares nothing that the holder of either could change
//     Length(set), Write(set, bytes, length), Read(bytes, length) -> Set
//     Equal(set, set)
//     Unite(set, other)              takes in what other has and set lacks; values that differ are appended
//     Gather(sets, count) -> Set     one set of an array: each tag once, with all its different values
//     Frames(shared, own)            an enhanced multi-frame object; Complete(i) -> Set: shared united with
//     own[i]
#pragma once

#include "bench/peers/Workload.h"
#include "tests/support/FailingNew.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>

#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <sys/wait.h>
#include <unistd.h>

namespace kivds::peers {

// Called through these the two are neither left out nor moved out of a loop.
inline void* (*volatile g_Copy)(void*, const void*, std::size_t) = std::memcpy;
inline int (*volatile g_Compare)(const void*, const void*, std::size_t) = std::memcmp;

class Meter
{
public:
    /// Measures those works alone whose names begin with `only`.
    Meter(int repetitions, std::string only) : m_nRepetitions(repetitions), m_Only(std::move(only)) {}

    /// Measures round(state) with a fresh state = prepare() each time; neither making nor destroying it is
    /// measured. outcome(state) says what the round came to.
    template <class Prepare, class Round, class Outcome>
    void Measure(const char* work, std::size_t size, std::size_t units, Prepare prepare, Round round,
                 Outcome outcome) const
    {
        if (m_Only.compare(0, m_Only.size(), work, std::min(m_Only.size(), std::strlen(work))) != 0)
            return;
        std::vector<double> times;
        for (int i = 0; i < m_nRepetitions; ++i) {
            auto state = prepare();
            const std::clock_t start = std::clock();
            round(state);
            const auto ticks = static_cast<double>(std::clock() - start);
            times.push_back(ticks * (1e9 / CLOCKS_PER_SEC) / static_cast<double>(units));
        }
        std::sort(times.begin(), times.end());
        auto state = prepare();
        long blocks = 0;
        {
            const test::Allocations allocations;
            round(state);
            blocks = allocations.Count();
        }
        const std::string came = outcome(state);
        std::printf("%s\t%zu\t%.4f\t%.4f\t%.3f\t%s\n", work, size, times.front(), times[times.size() / 2],
                    static_cast<double>(blocks) / static_cast<double>(units), came.c_str());
        std::fflush(stdout);
    }

private:
    int m_nRepetitions;
    std::string m_Only;
};

template <class Toolkit>
class Driver
{
public:
    using Set = typename Toolkit::Set;
    using Sets = std::vector<Set>;

    Driver(std::vector<DataSet> dataSets, Meter meter, bool isShort)
        : m_DataSets(std::move(dataSets)), m_Meter(std::move(meter)), m_bShort(isShort)
    {
    }

    /// Each group of works in a process of its own, so that none finds the heap as another has left it.
    void Run()
    {
        Apart([this] { Collections(); });
        Apart([this] { SmallValues(); });
        for (const std::size_t size : {16U, 64U, 256U, 1024U, 4096U, 16384U}) {
            if (size <= Toolkit::kMostElements)
                Apart([=] { Growth(size); });
        }
        Apart([this] { Series(); });
        Apart([this] { CompleteFrames(); });
        Apart([this] { Values(); });
        for (const std::size_t kib : {1U, 64U, 4096U, 65536U}) {
            if (kib <= 4096 || !m_bShort)
                Apart([=] { Bytes(kib); });
        }
    }

private:
    struct Streams
    {
        std::vector<std::string> m_Streams;
        Sets m_Sets;
        Digest m_Digest;
    };
    struct Pairs
    {
        Sets m_Left;
        Sets m_Right;
        std::size_t m_nEqual = 0;
    };

    static std::string DigestOf(Sets& sets)
    {
        Digest digest;
        for (Set& set : sets)
            Toolkit::Fetch(set, digest);
        return digest.ToString();
    }
    static std::string DigestOf(Set& set)
    {
        Digest digest;
        Toolkit::Fetch(set, digest);
        return digest.ToString();
    }
    static std::size_t Count(const std::vector<DataSet>& dataSets)
    {
        std::size_t count = 0;
        for (const DataSet& dataSet : dataSets)
            count += dataSet.size();
        return count;
    }
    static Sets Built(const std::vector<DataSet>& dataSets)
    {
        Sets sets;
        sets.reserve(dataSets.size());
        for (const DataSet& dataSet : dataSets)
            sets.push_back(Toolkit::Build(dataSet));
        return sets;
    }
    static std::string StreamOf(Set& set)
    {
        std::string stream(Toolkit::Length(set), '\0');
        Toolkit::Write(set, stream.data(), stream.size());
        return stream;
    }

    /// About 1,000 collections as files have them, too many for the caches.
    void Collections()
    {
        const std::size_t elements = Count(m_DataSets);
        const auto none = [&] {
            Streams state;
            state.m_Sets.reserve(m_DataSets.size());
            return state;
        };
        const auto built = [&] { return Built(m_DataSets); };
        const auto digestOfSets = [](Streams& state) { return DigestOf(state.m_Sets); };
        m_Meter.Measure(
            "build", 0, elements, none,
            [&](Streams& state) {
                for (const DataSet& dataSet : m_DataSets)
                    state.m_Sets.push_back(Toolkit::Build(dataSet));
            },
            digestOfSets);
        m_Meter.Measure(
            "build and fetch", 0, elements, none,
            [&](Streams& state) {
                for (const DataSet& dataSet : m_DataSets) {
                    state.m_Sets.push_back(Toolkit::Build(dataSet));
                    Toolkit::Fetch(state.m_Sets.back(), state.m_Digest);
                }
            },
            [](Streams& state) { return state.m_Digest.ToString(); });
        m_Meter.Measure(
            "destroy", 0, elements, built, [](Sets& sets) { sets.clear(); },
            [](Sets& sets) { return std::to_string(sets.size()); });
        LookUp();

        Sets originals = built();
        m_Meter.Measure(
            "copy", 0, elements, none,
            [&](Streams& state) {
                for (const Set& set : originals)
                    state.m_Sets.push_back(Toolkit::Copy(set));
            },
            digestOfSets);
        m_Meter.Measure(
            "compare", 0, elements,
            [&] {
                return Pairs{Built(m_DataSets), {}, 0};
            },
            [&](Pairs& pairs) {
                for (std::size_t i = 0; i < originals.size(); ++i)
                    pairs.m_nEqual += Toolkit::Equal(originals[i], pairs.m_Left[i]) ? 1 : 0;
            },
            [](Pairs& pairs) { return std::to_string(pairs.m_nEqual) + " equal"; });
        std::vector<std::string> streams;
        std::size_t longest = 0;
        for (Set& set : originals) {
            streams.push_back(StreamOf(set));
            longest = std::max(longest, streams.back().size());
        }
        m_Meter.Measure(
            "write", 0, elements, [&] { return std::string(longest, '\0'); },
            [&](std::string& bytes) {
                for (Set& set : originals)
                    Toolkit::Write(set, bytes.data(), Toolkit::Length(set));
            },
            [&](std::string& bytes) {
                const std::string& last = streams.back();
                return std::string(bytes.compare(0, last.size(), last) == 0 ? "as read" : "not as read");
            });
        m_Meter.Measure(
            "read", 0, elements, none,
            [&](Streams& state) {
                for (const std::string& stream : streams)
                    state.m_Sets.push_back(Toolkit::Read(stream.data(), stream.size()));
            },
            digestOfSets);
        m_Meter.Measure(
            "read and fetch", 0, elements, none,
            [&](Streams& state) {
                for (const std::string& stream : streams) {
                    state.m_Sets.push_back(Toolkit::Read(stream.data(), stream.size()));
                    Toolkit::Fetch(state.m_Sets.back(), state.m_Digest);
                }
            },
            [](Streams& state) { return state.m_Digest.ToString(); });
    }

    void LookUp()
    {
        struct Probe
        {
            std::size_t m_nSet;
            std::uint32_t m_Tag;
        };
        std::vector<Probe> probes;
        for (std::size_t i = 0; i < m_DataSets.size(); ++i) {
            for (std::size_t j = i % 4; j < m_DataSets[i].size(); j += 4)
                probes.push_back({i, m_DataSets[i][j].m_Tag});
        }
        std::shuffle(probes.begin(), probes.end(), std::mt19937(1));
        Sets sets = Built(m_DataSets);
        m_Meter.Measure(
            "look up", 0, probes.size(), [] { return std::uint64_t{0}; },
            [&](std::uint64_t& sum) {
                for (const Probe& probe : probes)
                    sum += Toolkit::Find(sets[probe.m_nSet], probe.m_Tag);
            },
            [](std::uint64_t& sum) { return "tags found, sum " + std::to_string(sum); });
    }

    /// Elements with one small value each.
    void SmallValues()
    {
        DataSet dataSet;
        for (std::uint32_t i = 0; i < 256; ++i) {
            dataSet.push_back(MakeValues(Vr::IS, 1));
            dataSet.back().m_Tag = 0x00100010 + i * 2;
        }
        const std::size_t count = 256;
        const std::size_t elements = count * dataSet.size();
        const auto measure = [&](const char* work, auto make) {
            m_Meter.Measure(
                work, 0, elements, [] { return Sets(); },
                [&](Sets& sets) {
                    sets.reserve(count);
                    for (std::size_t i = 0; i < count; ++i)
                        sets.push_back(make());
                },
                [](Sets& sets) { return DigestOf(sets); });
        };
        measure("small build", [&] { return Toolkit::Build(dataSet); });
        Set original = Toolkit::Build(dataSet);
        measure("small copy", [&] { return Toolkit::Copy(original); });
        const std::string stream = StreamOf(original);
        measure("small read", [&] { return Toolkit::Read(stream.data(), stream.size()); });
    }

    /// Runs `work` in a process of its own, which begins with this one's heap; for a profiler in this one.
    template <class Work>
    void Apart(Work work) const
    {
        if (m_bShort)
            return work();
        std::fflush(stdout);
        const pid_t child = fork();
        if (child == 0) {
            work();
            std::fflush(stdout);
            _exit(0);
        }
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
            throw std::runtime_error("a part of the measurement has failed");
    }

    /// Collections of `size` elements, so many of each size that they hold about the same.
    void Growth(std::size_t size)
    {
        const std::size_t total = m_bShort ? 1U << 14 : 1U << 16;
        const std::size_t count = std::max<std::size_t>(1, total / size);
        const std::size_t elements = count * size;
        const DataSet left = MakeElements(0x00100010, size);
        const DataSet right = MakeElements(0x00100010 + static_cast<std::uint32_t>(size / 2) * 2, size);
        // The shared tags hold the same values on both sides.
        DataSet other(left.begin() + static_cast<std::ptrdiff_t>(size / 2), left.end());
        for (const Element& element : right) {
            if (element.m_Tag > left.back().m_Tag)
                other.push_back(element);
        }
        const auto build = [&](const DataSet& dataSet) {
            Sets sets;
            for (std::size_t i = 0; i < count; ++i)
                sets.push_back(Toolkit::Build(dataSet));
            return sets;
        };
        m_Meter.Measure(
            "build n", size, elements, [&] { return Sets(); }, [&](Sets& sets) { sets = build(left); },
            [](Sets& sets) { return DigestOf(sets); });
        Sets sets = build(left);
        Sets equals = build(left);
        m_Meter.Measure(
            "compare n", size, elements, [] { return std::size_t{0}; },
            [&](std::size_t& equal) {
                for (std::size_t i = 0; i < count; ++i)
                    equal += Toolkit::Equal(sets[i], equals[i]) ? 1 : 0;
            },
            [](std::size_t& equal) { return std::to_string(equal) + " equal"; });
        std::vector<std::uint32_t> tags;
        for (const Element& element : left)
            tags.push_back(element.m_Tag);
        std::shuffle(tags.begin(), tags.end(), std::mt19937(1));
        const std::size_t probes = std::min<std::size_t>(elements, m_bShort ? 4096 : 16384);
        m_Meter.Measure(
            "look up n", size, probes, [] { return std::uint64_t{0}; },
            [&](std::uint64_t& sum) {
                for (std::size_t i = 0; i < probes; ++i)
                    sum += Toolkit::Find(sets[i % count], tags[(i / count) % size]);
            },
            [](std::uint64_t& sum) { return "tags found, sum " + std::to_string(sum); });
        const Sets others = build(other);
        m_Meter.Measure(
            "unite n", size, elements, [&] { return build(left); },
            [&](Sets& united) {
                for (std::size_t i = 0; i < count; ++i)
                    Toolkit::Unite(united[i], others[i]);
            },
            [](Sets& united) { return DigestOf(united); });
    }

    /// A series of images that share 250 elements and have 8 of their own.
    void Series()
    {
        const DataSet shared = MakeElements(0x00100010, 250);
        const std::size_t most = m_bShort ? 500 : 4000;
        Sets images;
        for (std::size_t i = 0; i < most; ++i) {
            DataSet image = shared;
            for (Element& element : MakeVaryingElements(static_cast<int>(i)))
                image.push_back(std::move(element));
            images.push_back(Toolkit::Build(image));
        }
        // So many series of each size that all sizes go through the same images: a small series alone would
        // stay in the caches.
        for (std::size_t count = 250; count <= most; count *= 2) {
            m_Meter.Measure(
                "series", count, most, [] { return Sets(); },
                [&](Sets& flat) {
                    for (std::size_t first = 0; first < most; first += count)
                        flat.push_back(Toolkit::Gather(&images[first], count));
                },
                [](Sets& flat) { return DigestOf(flat); });
        }
    }

    /// The complete collection of each frame: 50 elements that all frames share, 20 of each frame's own.
    void CompleteFrames()
    {
        for (const std::size_t count : {10U, 100U, 1000U, 4000U}) {
            if (m_bShort && count > 1000)
                continue;
            Sets own;
            for (std::size_t i = 0; i < count; ++i)
                own.push_back(Toolkit::Build(MakeElements(0x00200010, 20, static_cast<int>(i))));
            typename Toolkit::Frames frames(Toolkit::Build(MakeElements(0x00100010, 50)), std::move(own));
            const std::size_t rounds = std::max<std::size_t>(1, 1000 / count);
            m_Meter.Measure(
                "frames", count, count * rounds, [] { return Sets(1); },
                [&](Sets& last) {
                    for (std::size_t i = 0; i < count * rounds; ++i)
                        last[0] = frames.Complete(i % count);
                },
                [&](Sets& last) {
                    Digest digest;
                    for (std::size_t i = 0; i < count; ++i) {
                        last[0] = frames.Complete(i);
                        Toolkit::Fetch(last[0], digest);
                    }
                    return digest.ToString();
                });
        }
    }

    /// One element of many values, built and fetched.
    void Values()
    {
        for (const Vr vr : {Vr::DS, Vr::IS, Vr::DA, Vr::TM, Vr::PN, Vr::UI}) {
            for (const std::size_t size : {1U, 16U, 256U, 4096U, 65536U}) {
                if (size > 4096 && m_bShort)
                    continue;
                const DataSet dataSet{MakeValues(vr, size)};
                const std::size_t rounds = std::max<std::size_t>(1, (m_bShort ? 4096U : 16384U) / size);
                const std::string work = "values " + std::string(NameOf(vr));
                m_Meter.Measure(
                    work.c_str(), size, rounds * size, [] { return Digest(); },
                    [&](Digest& digest) {
                        for (std::size_t i = 0; i < rounds; ++i) {
                            Set set = Toolkit::Build(dataSet);
                            Toolkit::Fetch(set, digest);
                        }
                    },
                    [](Digest& digest) { return digest.ToString(); });
            }
        }
    }

    /// One value; units are kibibytes. Beside it what copying and comparing such bytes costs.
    void Bytes(std::size_t kib)
    {
        const std::size_t rounds = std::max<std::size_t>(1, 4096 / kib);
        const std::size_t size = kib * 1024;
        const DataSet dataSet{MakeBytes(size)};
        const std::string& bytes = dataSet[0].m_Field;
        const std::string equalBytes = bytes;
        const auto times = [rounds](auto work) {
            for (std::size_t i = 0; i < rounds; ++i)
                work();
        };
        const auto no = [](auto&) { return std::string(); };
        const auto none = [] { return 0; };
        using Blocks = std::vector<std::unique_ptr<char[]>>;
        const auto noBlocks = [&] {
            Blocks blocks;
            blocks.reserve(rounds);
            return blocks;
        };
        const auto noSets = [&] {
            Sets sets;
            sets.reserve(rounds);
            return sets;
        };
        const auto digest = [](Sets& sets) { return DigestOf(sets); };
        m_Meter.Measure(
            "memcpy fresh", kib, kib * rounds, noBlocks,
            [&](Blocks& blocks) {
                times([&] {
                    blocks.emplace_back(new char[size]);
                    g_Copy(blocks.back().get(), bytes.data(), size);
                });
            },
            no);
        m_Meter.Measure(
            "bytes build", kib, kib * rounds, noSets,
            [&](Sets& sets) { times([&] { sets.push_back(Toolkit::Build(dataSet)); }); }, digest);
        Set original = Toolkit::Build(dataSet);
        m_Meter.Measure(
            "bytes copy", kib, kib * rounds, noSets,
            [&](Sets& sets) { times([&] { sets.push_back(Toolkit::Copy(original)); }); }, digest);
        std::string stream = StreamOf(original);
        m_Meter.Measure(
            "bytes read", kib, kib * rounds, noSets,
            [&](Sets& sets) { times([&] { sets.push_back(Toolkit::Read(stream.data(), stream.size())); }); },
            digest);
        m_Meter.Measure(
            "memcpy warm", kib, kib * rounds, none,
            [&](int&) { times([&] { g_Copy(stream.data(), bytes.data(), size); }); }, no);
        m_Meter.Measure(
            "bytes write", kib, kib * rounds, none,
            [&](int&) { times([&] { Toolkit::Write(original, stream.data(), Toolkit::Length(original)); }); },
            [&](int&) {
                return std::string(stream.find(bytes) != std::string::npos ? "bytes found"
                                                                           : "bytes not found");
            });
        m_Meter.Measure(
            "memcmp", kib, kib * rounds, none,
            [&](int& equal) {
                times([&] { equal += g_Compare(bytes.data(), equalBytes.data(), size) == 0 ? 1 : 0; });
            },
            [](int& equal) { return std::to_string(equal); });
        Set other = Toolkit::Build(dataSet);
        m_Meter.Measure(
            "bytes compare", kib, kib * rounds, none,
            [&](int& equal) { times([&] { equal += Toolkit::Equal(original, other) ? 1 : 0; }); },
            [](int& equal) { return std::to_string(equal); });
    }

    std::vector<DataSet> m_DataSets;
    Meter m_Meter;
    bool m_bShort;
};

/// Memory that is given back stays with the process, as in a program that runs for long. Otherwise rows would
/// depend on which of them leaves the end of the heap free, for glibc to give back to the system and to fault
/// in again. Blocks of more than 32 MiB, which glibc never keeps, come fresh from the system.
inline void KeepMemory()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
#endif
}

/// The program: ELEMENTS [REPETITIONS [WORK [full]]]. With a work, also an empty one, only the works are done
/// whose names begin so, and the sizes are small, for profilers, unless `full` follows.
template <class Toolkit>
int Main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s ELEMENTS [REPETITIONS [WORK]]\n", argv[0]);
        return 2;
    }
    KeepMemory();
    try {
        const bool isShort = argc == 4;
        std::printf("# %s\t%s\n", Toolkit::Name(), Toolkit::Version().c_str());
        Meter meter(argc > 2 ? std::max(1, std::atoi(argv[2])) : 3, argc > 3 ? argv[3] : "");
        Driver<Toolkit>(Cycle(LoadDataSets(argv[1]), isShort ? 200 : 1000), std::move(meter), isShort).Run();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
        return 1;
    }
    return 0;
}

} // namespace kivds::peers
