// Every order in which the steps of a few threads can fall that use the reader/writer lock. The lock is the
// library's own source, compiled over the primitives of lock_model/platform/Synchronization.h: each of their
// operations is one step. A thread's turn runs the operation under way from its beginning, gives it the
// results of the steps that it has done, does one more and leaves by an exception at the next; so a state is
// a few numbers, and each is looked at once.
//
// An event is the weakest that platforms give: who waits goes on only while the signal stands, even when it
// came while it waited. What goes wrong with other events goes wrong with this one, too.
#include "foundation/CRWLock.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace kivds::model {
namespace {

struct Thread
{
    int m_nOperation; // its place in the script
    int m_nSteps;     // done of the operation under way
    std::array<int, 6> m_Results;
};

struct State // numbers alone, so that its bytes can be compared
{
    std::array<int, 5> m_Primitives; // in the order in which the lock makes them
    int m_nReading, m_nWriting;      // holds
    int m_nHanded;                   // read holds that another thread is to end
    std::array<Thread, 5> m_Threads;
};
constexpr int kCountMutex = 4;

struct TurnEnds
{
    bool m_bStepped;
};

// The turn that is on.
State* s_pState = nullptr;
Thread* s_pThread = nullptr;
std::size_t s_nReplayed = 0;
bool s_bStepped = false;
bool s_bGivenTwice = false;
int s_nPrimitives = 0;
int s_nBroken = -1; // a primitive that holds nobody up

} // namespace

int NewPrimitive(int value)
{
    s_pState->m_Primitives.at(static_cast<std::size_t>(s_nPrimitives)) = value;
    return s_nPrimitives++;
}

int Step(Action action, int primitive)
{
    if (s_nReplayed < static_cast<std::size_t>(s_pThread->m_nSteps))
        return s_pThread->m_Results.at(s_nReplayed++);
    int& value = s_pState->m_Primitives.at(static_cast<std::size_t>(primitive));
    const bool waits = action == Action::Take || action == Action::Pass;
    if (s_bStepped || (waits && value == 0 && primitive != s_nBroken))
        throw TurnEnds{s_bStepped};
    if (action == Action::Add)
        ++value;
    else if (action == Action::Subtract)
        --value;
    else if (action == Action::Give) {
        s_bGivenTwice = s_bGivenTwice || (value == 1 && primitive != s_nBroken);
        value = 1;
    } else if (action != Action::Pass)
        value = 0;
    s_bStepped = true;
    s_pThread->m_Results.at(s_nReplayed++) = value;
    ++s_pThread->m_nSteps;
    return value;
}

namespace {

// What each thread does: R enters and r leaves the read lock, W and w the write lock; "!" hands a read hold
// on, "?" waits for one, which a later r ends.
using Scripts = std::vector<std::string>;

class LockModelTest : public ::testing::Test
{
protected:
    /// Walks through all states; gives what is wrong in one of them.
    std::set<std::string> Explore(const Scripts& scripts, int broken = -1)
    {
        std::set<std::string> wrong;
        State start{};
        s_pState = &start;
        s_nPrimitives = 0;
        s_nBroken = broken;
        s_bGivenTwice = false;
        CRWLock lock;
        std::unordered_set<std::string> seen;
        std::vector<State> open{start};
        while (!open.empty()) {
            const State state = open.back();
            open.pop_back();
            if (!seen.emplace(reinterpret_cast<const char*>(&state), sizeof state).second)
                continue;
            bool moved = false, done = true;
            for (std::size_t i = 0; i < scripts.size(); ++i) {
                State next = state;
                const char operation = OperationOf(state.m_Threads[i], scripts[i]);
                done = done && operation == '\0';
                if (operation == '\0' || !Turn(lock, next, next.m_Threads[i], operation))
                    continue;
                moved = true;
                open.push_back(next);
                if (s_bGivenTwice)
                    wrong.insert("a token was given twice");
                if (next.m_nWriting > (next.m_nReading == 0 ? 1 : 0))
                    wrong.insert("a writer is not alone");
                if (next.m_nWriting > state.m_nWriting && AnyLeaving(next, scripts))
                    wrong.insert("a writer may destroy the lock under somebody who leaves");
            }
            if (!moved && !done)
                wrong.insert("nobody gets on");
            if (done && state.m_Primitives != start.m_Primitives)
                wrong.insert("the lock is not as new");
        }
        m_nStates = seen.size();
        return wrong;
    }

    std::size_t m_nStates = 0;

private:
    static char OperationOf(const Thread& thread, const std::string& script)
    {
        return script.c_str()[thread.m_nOperation];
    }

    static bool AnyLeaving(const State& state, const Scripts& scripts)
    {
        for (std::size_t i = 0; i < scripts.size(); ++i) {
            const char operation = OperationOf(state.m_Threads[i], scripts[i]);
            if ((operation == 'r' || operation == 'w') && state.m_Threads[i].m_nSteps > 0)
                return true;
        }
        return false;
    }

    /// One step of a thread; false when it is held up.
    static bool Turn(CRWLock& lock, State& state, Thread& thread, char operation)
    {
        s_pState = &state;
        s_pThread = &thread;
        s_nReplayed = 0;
        s_bStepped = false;
        if (thread.m_nSteps == 0) { // a hold ends as soon as its end begins
            state.m_nReading -= operation == 'r';
            state.m_nWriting -= operation == 'w';
        }
        state.m_nHanded += (operation == '!') - (operation == '?');
        if (state.m_nHanded < 0)
            return false;
        try {
            if (operation == 'R')
                lock.EnterReadLock();
            else if (operation == 'r')
                lock.LeaveReadLock();
            else if (operation == 'W')
                lock.EnterWriteLock();
            else if (operation == 'w')
                lock.LeaveWriteLock();
        } catch (const TurnEnds& end) {
            return end.m_bStepped;
        }
        state.m_nReading += operation == 'R';
        state.m_nWriting += operation == 'W';
        thread = {thread.m_nOperation + 1, 0, {}};
        return true;
    }
};

TEST_F(LockModelTest, NoOrderOfStepsLetsAWriterMeetAnybodyHoldsAnybodyUpOrLosesTheToken)
{
    for (const Scripts& scripts : {
             Scripts{"RrRr", "RrRr", "WwWw", "WwWw"},
             Scripts{"RRrr", "RrRr", "WwWw", "Ww"}, // nested
             Scripts{"RRrRrr", "RRrr", "Ww", "Ww"}, // nested, one group that may outlive another
             Scripts{"R!Rr", "?rRr", "WwWw", "Ww"}, // ended on another thread
             Scripts{"R!R!", "R??rrr", "Ww", "Ww"}, // all of them
             Scripts{"Rr", "Rr", "Rr", "Ww"},       // the interval of the last reader
             Scripts{"RrRr", "Rr", "Rr", "Ww", "Ww"},
         }) {
        EXPECT_EQ(Explore(scripts), std::set<std::string>{}) << scripts[0] << ' ' << scripts[1];
        EXPECT_GT(m_nStates, 1000U);
    }
}

// What the model must not pass: without the count mutex a reader slips in while its group is being dissolved.
TEST_F(LockModelTest, AndWouldFindTheIntervalOfTheLastReader)
{
    EXPECT_EQ(Explore({"Rr", "Rr", "Rr", "Ww"}, kCountMutex).count("a writer is not alone"), 1U);
}

} // namespace
} // namespace kivds::model
