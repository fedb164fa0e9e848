// Allocations that fail on purpose, and a count of them. Linking this in replaces the program's operator new.
#pragma once

namespace kivds::test {

/// While it lives, on this thread: counts allocations, and fails the n-th one (from 0), alone or with all
/// later ones.
class Allocations
{
public:
    enum class Later
    {
        Succeed,
        Fail
    };

    /// Counts only.
    Allocations();
    Allocations(long failing, Later later);
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    long Count() const;
    /// Bytes asked for, and the largest single request.
    long long Bytes() const;
    long long Largest() const;
    /// Whether the failing allocation was reached.
    bool Failed() const;
};

} // namespace kivds::test
