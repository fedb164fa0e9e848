#include "tests/support/FailingNew.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

struct State
{
    bool m_bWatching = false;
    bool m_bLaterFail = false;
    bool m_bFailed = false;
    long m_nFailing = -1;
    long m_nCount = 0;
    long long m_nBytes = 0;
    long long m_nLargest = 0;
};

thread_local State t_State;

void* Allocate(std::size_t size) noexcept
{
    State& state = t_State;
    if (state.m_bWatching) {
        const long number = state.m_nCount++;
        constexpr auto most = static_cast<std::size_t>(std::numeric_limits<long long>::max() / 4);
        const auto bytes = static_cast<long long>(std::min(size, most));
        state.m_nBytes += bytes;
        state.m_nLargest = std::max(state.m_nLargest, bytes);
        if (state.m_nFailing >= 0 &&
            (state.m_bLaterFail ? number >= state.m_nFailing : number == state.m_nFailing)) {
            state.m_bFailed = true;
            return nullptr;
        }
    }
    return std::malloc(size > 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size)
{
    if (void* const memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

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

long Allocations::Count() const
{
    return t_State.m_nCount;
}

long long Allocations::Bytes() const
{
    return t_State.m_nBytes;
}

long long Allocations::Largest() const
{
    return t_State.m_nLargest;
}

bool Allocations::Failed() const
{
    return t_State.m_bFailed;
}

} // namespace kivds::test
