// The program's operator new and delete: allocations are counted, and fail on purpose. Linking this in
// replaces them. Built with KIVDS_COUNT_BY_HOOKS the sanitizer's own stay in place (they tell new from
// new[]), and what is allocated is only counted, through its hooks.
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
    /// Bytes asked for.
    long long Bytes() const;
    /// Whether the failing allocation was reached.
    bool Failed() const;

    /// The blocks that this thread has allocated and not released; what it does for itself between two calls
    /// leaves their difference 0. Always 0 on Windows, where each module has allocation functions of its own,
    /// and a block may come from one and go to another.
    static long Live();
};

} // namespace kivds::test
