// Subscriptions: order, repetition, failures. Several threads at once: ThreadsTest.cpp.
#include "foundation/CKivDSSubscriber.h"

#include "tests/support/Attributes.h"

#include <functional>
#include <stdexcept>

namespace kivds::test {
namespace {

/// Does `m_OnNotify` when it is notified.
struct Subject : CKivDSSubscriber
{
    using CKivDSSubscriber::NotifySubscribers;
    using CKivDSSubscriber::NotifySubscribers2;
    void Notify(CKivDSBase* const source, int event, long param1, long param2) override
    {
        m_OnNotify(source, event, param1, param2);
    }
    std::function<void(CKivDSBase*, int, long, long)> m_OnNotify;
};

struct SubscriberTest : AttributeTest
{
    SubscriberTest()
    {
        for (auto* subject : {&m_Subject, &m_A, &m_B, &m_C})
            subject->m_OnNotify = [=](CKivDSBase* source, int event, long param1, long param2) {
                m_Log += subject == &m_A ? "a" : subject == &m_B ? "b" : subject == &m_C ? "c" : "s";
                m_Log += source == &m_Subject && event == 16 && param1 == -2 && param2 == 3 ? "" : "?";
            };
    }
    std::string Notified()
    {
        m_Log.clear();
        m_Subject.NotifySubscribers(16, -2, 3);
        return m_Log;
    }

    std::string m_Log;
    Subject m_Subject, m_A, m_B, m_C;
};

TEST_F(SubscriberTest, SubscribersAreNotifiedInOrderAsOftenAsTheySubscribed)
{
    EXPECT_EQ(Notified(), "");
    for (Subject* subscriber : {&m_A, &m_B, &m_A, &m_Subject})
        EXPECT_TRUE(m_Subject.Subscribe(subscriber));
    EXPECT_EQ(Notified(), "abas");
    EXPECT_TRUE(m_Subject.Unsubscribe(&m_A)); // the earlier entry
    EXPECT_EQ(Notified(), "bas");
    EXPECT_TRUE(m_Subject.Unsubscribe(&m_A));
    EXPECT_FALSE(m_Subject.Unsubscribe(&m_A) || m_Subject.Unsubscribe(nullptr) ||
                 m_Subject.Subscribe(nullptr));
    EXPECT_EQ(Notified(), "bs");
    CKivDSBase origin;
    const CKivDSBase* received = &m_C;
    m_B.m_OnNotify = [&](CKivDSBase* source, int event, long, long) {
        received = source;
        if (event > 0)
            m_Subject.NotifySubscribers2(source, event - 1, 0, 0); // from within, with the same source
    };
    for (CKivDSBase* source : {&origin, static_cast<CKivDSBase*>(nullptr)}) {
        m_Subject.NotifySubscribers2(source, 1, 0, 0);
        EXPECT_EQ(received, source);
    }
}

TEST_F(SubscriberTest, AFailureEndsTheSubscriptionOrTheWalkAndTheLockIsFreeAgain)
{
    const auto trouble = [](CKivDSBase*, int, long, long) {
        throw std::runtime_error("a subscriber's own trouble");
    };
    m_Subject.Subscribe(&m_A);
    EXPECT_EQ(Notified(), "a");
    m_Subject.Subscribe(&m_B);
    m_Subject.Subscribe(&m_C);
    m_B.m_OnNotify = trouble;
    EXPECT_EQ(Notified(), "a");
    m_Subject.NotifySubscribers2(nullptr, 1, 0, 0);
    ClaimEach(
        {{L"CKivDSSubscriber::NotifySubscribers", L"Unexpected error while notifying the subscribers ", 0},
         {L"CKivDSSubscriber::NotifySubscribers2", L"Unexpected error while notifying the subscribers ", 0}});
    EXPECT_TRUE(m_Subject.Unsubscribe(&m_B));
    EXPECT_EQ(Notified(), "ac");
}

} // namespace
} // namespace kivds::test
