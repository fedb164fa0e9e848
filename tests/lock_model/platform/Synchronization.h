// Stands in for the header of the same path when the lock's source is compiled into its model: the same
// primitives, whose operations are steps that the model orders.
#pragma once

namespace kivds {

namespace model {

enum class Action
{
    Take, ///< waits for a signal or a free mutex, and takes it away
    Pass, ///< waits for a signal, which stays
    Give, ///< signals, or frees a mutex
    Withdraw,
    Add, ///< gives the new value
    Subtract
};

/// A primitive that stands at `value` (1: signalled or free) when the lock is new; gives its number.
int NewPrimitive(int value);
/// Does the next step of the thread whose turn it is.
int Step(Action action, int primitive);

} // namespace model

// NOLINTBEGIN(readability-make-member-function-const): what changes is the model's

enum class EventReset
{
    Automatic,
    Manual
};

class Event
{
public:
    Event(EventReset reset, bool signalled)
        : m_Wait(reset == EventReset::Automatic ? model::Action::Take : model::Action::Pass),
          m_Number(model::NewPrimitive(signalled ? 1 : 0))
    {
    }
    void Wait() { model::Step(m_Wait, m_Number); }
    void Set() { model::Step(model::Action::Give, m_Number); }
    void Reset() { model::Step(model::Action::Withdraw, m_Number); }
    void Close() {}

private:
    const model::Action m_Wait;
    const int m_Number;
};

class Mutex
{
public:
    void Wait() { model::Step(model::Action::Take, m_Number); }
    void Release() { model::Step(model::Action::Give, m_Number); }
    void Close() {}

private:
    const int m_Number = model::NewPrimitive(1);
};

class Counter
{
public:
    explicit Counter(int value) : m_Number(model::NewPrimitive(value)) {}
    int Increment() { return model::Step(model::Action::Add, m_Number); }
    int Decrement() { return model::Step(model::Action::Subtract, m_Number); }

private:
    const int m_Number;
};

// NOLINTEND(readability-make-member-function-const)

} // namespace kivds
