// Counts allocations for the fuzzing programs through the sanitizers' hooks instead of an operator new of our
// own: AddressSanitizer's stays in place, and tells new from new[]. Nothing is made to fail here, so that of
// Allocations only what counts is defined.
#include "tests/support/FailingNew.h"

#include <algorithm>
#include <sanitizer/allocator_interface.h>

namespace {

thread_local bool t_bWatching = false;
thread_local long t_nCount = 0;
thread_local long long t_nBytes = 0;
thread_local long long t_nLargest = 0;

void OnAllocation(const volatile void*, std::size_t size)
{
    if (!t_bWatching)
        return;
    const auto bytes = static_cast<long long>(size);
    ++t_nCount;
    t_nBytes += bytes;
    t_nLargest = std::max(t_nLargest, bytes);
}

[[maybe_unused]] const int s_nInstalled =
    __sanitizer_install_malloc_and_free_hooks(&OnAllocation, [](const volatile void*) {});

} // namespace

namespace kivds::test {

Allocations::Allocations()
{
    t_nCount = 0;
    t_nBytes = 0;
    t_nLargest = 0;
    t_bWatching = true;
}

Allocations::~Allocations()
{
    t_bWatching = false;
}

long Allocations::Count() const
{
    return t_nCount;
}

long long Allocations::Bytes() const
{
    return t_nBytes;
}

long long Allocations::Largest() const
{
    return t_nLargest;
}

} // namespace kivds::test
