// The reader/writer lock, on several threads. What must not happen is looked for in plain, unsynchronised
// data, so that a thread sanitizer sees it too.
#include "foundation/CRWLock.h"

#include "tests/support/Reports.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace kivds::test {
namespace {

struct LockTest : ReportTest
{
    static void Elsewhere(const std::function<void()>& work) { std::thread(work).join(); }
    /// Long enough for a thread that is not held up to get on.
    static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

    CRWLock m_Lock;
};

TEST_F(LockTest, ReadersShareAndAWriterWaitsForAllOfThem)
{
    m_Lock.EnterReadLock();
    Elsewhere([&] { m_Lock.EnterReadLock(); }); // its hold outlives its thread
    std::atomic<bool> written{false};
    std::thread writer([&] {
        m_Lock.EnterWriteLock();
        written = true;
        m_Lock.LeaveWriteLock();
    });
    Pause();
    m_Lock.EnterReadLock(); // holds nest, also while a writer waits
    Elsewhere([&] {
        m_Lock.EnterReadLock(); // and readers on other threads come in as well
        m_Lock.LeaveReadLock();
    });
    m_Lock.LeaveReadLock();
    m_Lock.LeaveReadLock();
    Pause();
    EXPECT_FALSE(written);
    Elsewhere([&] { m_Lock.LeaveReadLock(); }); // ends a hold that another thread took
    writer.join();
    EXPECT_TRUE(written);
}

TEST_F(LockTest, AWriterKeepsReadersOutAndThenAllEnterTogether)
{
    constexpr int count = 4;
    std::atomic<int> inside{0};
    std::vector<std::thread> readers;
    m_Lock.EnterWriteLock();
    for (int i = 0; i < count; ++i)
        readers.emplace_back([&] {
            m_Lock.EnterReadLock();
            ++inside;
            while (inside < count) // none leaves before all are in
                std::this_thread::yield();
            m_Lock.LeaveReadLock();
        });
    Pause();
    EXPECT_EQ(inside, 0);
    m_Lock.LeaveWriteLock();
    for (std::thread& reader : readers)
        reader.join();
    m_Lock.EnterWriteLock(); // free again
    m_Lock.LeaveWriteLock();
}

// Readers come and go so fast that groups dissolve all the time: a reader that slipped in beside a writer, or
// a writer beside another, would see the two numbers differ.
TEST_F(LockTest, NobodyEverMeetsAWriter)
{
    constexpr int rounds = 1000;
    long first = 0, second = 0; // guarded by the lock
    std::atomic<int> torn{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                m_Lock.EnterReadLock();
                const long seen = first;
                std::this_thread::yield();
                torn += seen != second;
                m_Lock.LeaveReadLock();
            }
        });
    for (int i = 0; i < 2; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                m_Lock.EnterWriteLock();
                torn += first++ != second;
                std::this_thread::yield();
                ++second;
                m_Lock.LeaveWriteLock();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(torn == 0 && first == 2 * rounds && second == 2 * rounds);
}

} // namespace
} // namespace kivds::test
