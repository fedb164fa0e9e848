#include "tests/support/FailingNew.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>
#if defined(KIVDS_COUNT_BY_HOOKS)
#include <sanitizer/allocator_interface.h>
#endif

namespace {

struct State
{
    bool m_bWatching = false;
    bool m_bLaterFail = false;
    bool m_bFailed = false;
    long m_nFailing = -1;
    long m_nCount = 0;
    long long m_nBytes = 0;
};

thread_local State t_State;
thread_local long t_nLive = 0;

/// Counts an allocation; whether it is to fail.
bool Fails(std::size_t size) noexcept
{
    State& state = t_State;
    if (!state.m_bWatching)
        return false;
    const long number = state.m_nCount++;
    constexpr auto most = static_cast<std::size_t>(std::numeric_limits<long long>::max() / 4);
    state.m_nBytes += static_cast<long long>(std::min(size, most));
    const bool later = state.m_bLaterFail && number > state.m_nFailing;
    const bool fails = state.m_nFailing >= 0 && (number == state.m_nFailing || later);
    state.m_bFailed = state.m_bFailed || fails;
    return fails;
}

} // namespace

#if defined(KIVDS_COUNT_BY_HOOKS)

[[maybe_unused]] static const int s_nInstalled = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t size) { Fails(size); }, [](const volatile void*) {});

#else

namespace {

void* Allocate(std::size_t size) noexcept
{
    void* const memory = Fails(size) ? nullptr : std::malloc(size > 0 ? size : 1);
    t_nLive += memory != nullptr;
    return memory;
}

void* AllocateOrThrow(std::size_t size)
{
    if (void* const memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}

void Free(void* memory) noexcept
{
    t_nLive -= memory != nullptr;
    std::free(memory);
}

} // namespace

// clang-format off
void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }
// clang-format on

#endif

namespace kivds::test {

Allocations::Allocations() : Allocations(-1, Later::Succeed) {}

Allocations::Allocations(long failing, Later later)
{
    t_State = State();
    t_State.m_nFailing = failing;
    t_State.m_bLaterFail = later == Later::Fail;
    t_State.m_bWatching = true;
}

Allocations::~Allocations()
{
    t_State.m_bWatching = false;
}

// clang-format off
long Allocations::Count() const { return t_State.m_nCount; }
long long Allocations::Bytes() const { return t_State.m_nBytes; }
bool Allocations::Failed() const { return t_State.m_bFailed; }
// clang-format on

long Allocations::Live()
{
#if defined(_WIN32)
    return 0;
#else
    return t_nLive;
#endif
}

} // namespace kivds::test
