// What threads share, used by many at once for a fixed number of rounds: the lock, a subject's subscribers,
// the parts of collections, the listener of reports. What the lock guards is plain data, so that a thread
// sanitizer sees a fault that no count shows.
#include "foundation/CKivDSSubscriber.h"
#include "foundation/CRWLock.h"

#include "tests/support/Notation.h"
#include "tests/support/Reports.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace kivds::test {
namespace {

class ThreadsTest : public ReportTest
{
protected:
    ~ThreadsTest() override { Join(); }
    /// Starts `count` threads that each call `work` for the rounds 0, 1, ...
    void Start(int count, int rounds, const std::function<void(int)>& work)
    {
        for (int i = 0; i < count; ++i)
            m_Threads.emplace_back([=] {
                for (int round = 0; round < rounds; ++round)
                    work(round);
            });
    }
    void Join()
    {
        for (std::thread& thread : m_Threads)
            thread.join();
        m_Threads.clear();
    }

private:
    std::vector<std::thread> m_Threads;
};

TEST_F(ThreadsTest, ALockWithEveryKindOfHoldNeverLetsAReaderSeeHalfAChange)
{
    constexpr int rounds = 2000;
    CRWLock lock;
    std::array<long, 8> numbers{}; // guarded by the lock: all equal
    std::atomic<int> torn{0}, handed{0};
    const auto look = [&] {
        for (const long& number : numbers)
            torn += number != numbers[0];
    };
    Start(2, rounds, [&](int) {
        lock.EnterReadLock();
        look();
        lock.LeaveReadLock();
    });
    Start(2, rounds, [&](int round) {
        lock.EnterReadLock();
        lock.EnterReadLock(); // nested, most often while a writer waits
        look();
        lock.LeaveReadLock();
        look();
        if (round % 2 == 0)
            ++handed; // another thread ends it
        else
            lock.LeaveReadLock();
    });
    Start(1, rounds, [&](int) {
        while (handed == 0)
            std::this_thread::yield();
        look(); // under the hold that another thread took
        --handed;
        lock.LeaveReadLock();
    });
    Start(2, rounds, [&](int) {
        lock.EnterWriteLock();
        for (long& number : numbers)
            ++number;
        look();
        lock.LeaveWriteLock();
    });
    Join();
    lock.EnterWriteLock(); // free again
    EXPECT_TRUE(torn == 0 && numbers[0] == 2 * rounds);
    lock.LeaveWriteLock();
}

/// Counts what it is told, and tells its own subscribers.
struct Station : CKivDSSubscriber
{
    using CKivDSSubscriber::NotifySubscribers;
    void Notify(CKivDSBase* const source, int event, long, long) override
    {
        ++m_nNotified;
        NotifySubscribers2(source, event, 0, 0);
    }
    std::atomic<int> m_nNotified{0};
};

TEST_F(ThreadsTest, NoNotificationIsLostWhileSubscribersComeAndGo)
{
    constexpr int rounds = 1000;
    Station subject, middle, last;
    subject.Subscribe(&middle);
    middle.Subscribe(&last);
    std::atomic<int> missed{0}, late{0};
    Start(2, rounds, [&](int round) { subject.NotifySubscribers(round, 0, 0); });
    for (Station* const at : {&subject, &middle})
        Start(2, rounds, [&, at](int round) {
            Station passing; // gone at once when it has unsubscribed
            at->Subscribe(&passing);
            subject.NotifySubscribers(round, 0, 0);
            missed += passing.m_nNotified == 0;
            at->Unsubscribe(&passing);
            const int notified = passing.m_nNotified;
            if (round % 8 == 0)
                std::this_thread::yield();
            late += passing.m_nNotified != notified;
        });
    Join();
    EXPECT_TRUE(missed == 0 && late == 0);
    EXPECT_EQ(middle.m_nNotified, 6 * rounds);
    EXPECT_EQ(last.m_nNotified, 6 * rounds);
    EXPECT_FALSE(middle.Unsubscribe(&subject) || !subject.Unsubscribe(&middle));
}

TEST_F(ThreadsTest, ADestructorWaitsForWhoeverStillNotifies)
{
    struct Slow : Station
    {
        void Notify(CKivDSBase* const, int, long, long) override
        {
            ++m_nNotified;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            ++m_nDone;
        }
        int m_nDone = 0; // plain: the destructor's lock orders it before it is looked at
    } slow;
    for (int round = 1; round <= 50; ++round) { // the notifier's last steps run beside the destructor's
        auto subject = std::make_unique<Station>();
        subject->Subscribe(&slow);
        Start(1, 1, [at = subject.get()](int) { at->NotifySubscribers(1, 0, 0); });
        while (slow.m_nNotified < round)
            std::this_thread::yield();
        subject.reset();
        EXPECT_EQ(slow.m_nDone, round);
        Join();
    }
}

// Collections are taken out of slots, copied, and put back there and next door, where they push others out;
// at last they are only taken out.
TEST_F(ThreadsTest, PartsThatCollectionsShareAreDeletedOnceByWhoeverLetsGoLast)
{
    constexpr int rounds = 2000;
    for (const Txt form : {"X1|M1,2", "{X1;Y1}", "<X1;Y1>"}) {
        int deleted = 0; // plain: the last release comes behind all others
        CollectionPtr first = Make(form);
        CollectionPtr part = Compound(*first)   ? CollectionPtr(Compound(*first)->GetCollection(0, false))
                             : Enhanced(*first) ? CollectionPtr(Enhanced(*first)->GetCollection(false))
                                                : std::make_unique<Facade>(*first);
        Add(*part, std::make_unique<CountedAttribute>("Z1", &deleted), false);
        part.reset();
        std::array<std::atomic<Facade*>, 4> slots{};
        for (std::atomic<Facade*>& slot : slots)
            slot = new Facade(*first);
        std::atomic<int> bad{0};
        Start(4, rounds, [&](int round) {
            auto& slot = slots[static_cast<std::size_t>(round) % slots.size()];
            auto& next = slots[static_cast<std::size_t>(round + 1) % slots.size()];
            const CollectionPtr taken(slot.exchange(nullptr));
            if (!taken || round + 4 > rounds)
                return;
            const Facade copy(*taken);
            bad += !copy.IsGood();
            for (auto* const place : {&slot, &next})
                delete place->exchange(new Facade(copy));
        });
        first.reset();
        Join();
        for (std::atomic<Facade*>& slot : slots)
            delete slot.exchange(nullptr);
        EXPECT_TRUE(bad == 0 && deleted == 1) << form;
    }
}

TEST_F(ThreadsTest, EachReportReachesOneListenerWhoeverIsSetMeanwhile)
{
    constexpr int rounds = 5000;
    using Counter = std::atomic<int>;
    const auto listen = [](void* reports, Wide, Wide, int) { ++*static_cast<Counter*>(reports); };
    int reports = 0; // of the listeners that are gone
    auto listening = std::make_unique<Counter>(0);
    g_KivIPError.SetListener(listen, listening.get());
    const auto replace = [&](std::unique_ptr<Counter> with) {
        if (with)
            g_KivIPError.SetListener(listen, with.get());
        else
            g_KivIPError.SetListener(nullptr, nullptr);
        reports += *listening; // nobody calls it any more
        listening = std::move(with);
    };
    Start(3, rounds, [&](int) { g_KivIPError.SetError(L"f", L"m", 1); });
    Start(2, rounds, [&](int) { CKivDSDicomAttribute().GetTag(nullptr); });
    Start(1, rounds / 5, [&](int) { replace(std::make_unique<Counter>(0)); });
    Join();
    replace(nullptr);
    EXPECT_EQ(reports, 5 * rounds);
}

} // namespace
} // namespace kivds::test
