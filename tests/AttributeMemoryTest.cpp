// Attributes that share memory: where they lie, when it is used anew, and who may release them.
#include "attribute/internal/AttributeMemory.h"
#include "attribute/CKivDSCodeSequenceAttribute.h"

#include "tests/support/FailingNew.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kivds::test {
namespace {

using Attributes = std::vector<std::unique_ptr<CKivDSDicomAttribute>>;

/// Threads whose attributes share memory, whatever those of the other tests do.
class AttributeMemoryTest : public testing::Test
{
protected:
    AttributeMemoryTest() { ShareAttributeMemory(true); }
    ~AttributeMemoryTest() override { ShareAttributeMemory(false); }

    template <class Work>
    static void OnAThread(Work work)
    {
        std::thread(work).join();
    }

    static Attributes Make(int count)
    {
        Attributes made;
        made.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            made.push_back(std::make_unique<CKivDSDicomAttribute>());
            made.back()->InitEmpty(static_cast<unsigned long>(i), i, false);
        }
        return made;
    }

    static void ExpectWhole(const Attributes& attributes)
    {
        std::vector<std::uintptr_t> places;
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            EXPECT_EQ(attributes[i]->GetDicomRepresentation(), static_cast<int>(i));
            places.push_back(reinterpret_cast<std::uintptr_t>(attributes[i].get()));
        }
        std::sort(places.begin(), places.end());
        for (std::size_t i = 0; i < places.size(); ++i) {
            EXPECT_EQ(places[i] % alignof(CKivDSDicomAttribute), 0U);
            EXPECT_TRUE(i == 0 || places[i] - places[i - 1] >= sizeof(CKivDSDicomAttribute))
                << "they overlap";
        }
    }
};

TEST_F(AttributeMemoryTest, IsTakenForManyAndUsedAnewWhicheverThreadReleasesThem)
{
    constexpr int many = 5000;
    Attributes attributes;
    const auto make = [&](int count, long blocks) {
        const Allocations allocations;
        attributes = Make(count);
#if !defined(_WIN32) // each module has allocation functions of its own there
        EXPECT_LE(allocations.Count(), blocks);
#endif
        ExpectWhole(attributes);
    };
    OnAThread([&] { make(many, many / 100); });
    ExpectWhole(attributes); // their thread has ended
    Attributes survivors;
    for (std::size_t i = 0; i < attributes.size(); i += 300)
        survivors.push_back(std::move(attributes[i]));
    attributes.clear();
    OnAThread([&] { make(many / 2, 1); }); // the vector's own
}

TEST_F(AttributeMemoryTest, HoldsObjectsOfDerivedClassesAndThoseThatFail)
{
    struct alignas(16) Larger : CKivDSDicomAttribute
    {
        char m_Data[500] = {};
    };
    struct Failing : CKivDSDicomAttribute
    {
        Failing() { throw std::runtime_error("no"); }
    };
    OnAThread([] {
        std::vector<std::unique_ptr<CKivDSDicomAttribute>> mixed;
        for (int i = 0; i < 100; ++i) {
            mixed.push_back(std::make_unique<Larger>());
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(mixed.back().get()) % 16, 0U);
            mixed.push_back(std::make_unique<CKivDSCodeSequenceAttribute>());
            mixed.push_back(std::make_unique<CKivDSDicomAttribute>());
            EXPECT_THROW(Failing(), std::runtime_error);
            EXPECT_THROW(new Failing, std::runtime_error);
            EXPECT_THROW(new (std::nothrow) Failing, std::runtime_error);
            alignas(CKivDSDicomAttribute) char place[sizeof(CKivDSDicomAttribute)];
            (new (place) CKivDSDicomAttribute)->~CKivDSDicomAttribute();
        }
    });
}

TEST_F(AttributeMemoryTest, IsPassedBetweenThreads)
{
    // Each thread makes attributes, releases half of them, and leaves the others to the next.
    constexpr int threads = 4, rounds = 50;
    std::vector<Attributes> left(threads * rounds);
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread)
        running.emplace_back([&left, thread] {
            for (int round = 0; round < rounds; ++round) {
                Attributes made = Make(200);
                made.resize(100);
                ExpectWhole(made);
                left[static_cast<std::size_t>(thread * rounds + round)] = std::move(made);
            }
        });
    for (std::thread& thread : running)
        thread.join();
    running.clear();
    for (int thread = 0; thread < threads; ++thread)
        running.emplace_back([&left, thread] {
            for (std::size_t i = static_cast<std::size_t>(thread); i < left.size(); i += threads) {
                const Attributes made = Make(150);
                ExpectWhole(left[i]);
                left[i].clear();
                ExpectWhole(made);
            }
        });
    for (std::thread& thread : running)
        thread.join();
}

} // namespace
} // namespace kivds::test
