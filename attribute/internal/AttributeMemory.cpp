#include "attribute/internal/AttributeMemory.h"

#include "attribute/CKivDSDicomAttribute.h"
#include "platform/internal/StaticLock.h"

#include <atomic>
#include <mutex>
#include <new>

namespace kivds {

namespace {

struct Slab;

/// An attribute's place. The pointer is null where an object has a heap block of its own.
struct Slot
{
    Slab* m_pSlab;
    alignas(8) char m_Object[sizeof(CKivDSDicomAttribute)];
};
constexpr std::size_t kBefore = offsetof(Slot, m_Object);

struct Region;

struct Slab
{
    static constexpr int kSlots = 72; // of 64-bit attributes, in 8 KiB

    std::atomic<int> m_nKept; // slots that hold an attribute, or have not been handed out
    Region* m_pRegion;
    Slab* m_pNextFree;
    Slot m_Slots[kSlots];
};

/// The heap block that slabs are cut from.
struct Region
{
    static constexpr int kSlabs = 8;

    Slab* m_pFree = nullptr;
    int m_nFree = 0;
    Region* m_pNext = nullptr; // of the pool's regions, while a slab is free
    Region* m_pPrevious = nullptr;
    Slab m_Slabs[kSlabs];

    Region()
    {
        for (Slab& slab : m_Slabs) {
            slab.m_pRegion = this;
            Put(slab);
        }
    }
    void Put(Slab& slab) noexcept
    {
        slab.m_pNextFree = m_pFree;
        m_pFree = &slab;
        ++m_nFree;
    }
    Slab& Take() noexcept
    {
        Slab& slab = *m_pFree;
        m_pFree = slab.m_pNextFree;
        --m_nFree;
        return slab;
    }
};

/// The regions in which slabs are free. One that is wholly free is released, unless it is the only one.
class Pool
{
public:
    Slab* Take() noexcept
    {
        if (Slab* const slab = TakeFree(nullptr))
            return slab;
        // Not under the lock: the heap may call a handler of the application's.
        Region* const region = new (std::nothrow) Region;
        return region ? TakeFree(region) : nullptr;
    }

    void Put(Slab& slab) noexcept
    {
        Region* released = nullptr;
        {
            const std::lock_guard<StaticLock> guard(m_Lock);
            Region& region = *slab.m_pRegion;
            region.Put(slab);
            if (region.m_nFree == 1)
                Link(region);
            if (region.m_nFree == Region::kSlabs && (region.m_pNext || region.m_pPrevious)) {
                Unlink(region);
                released = &region;
            }
        }
        delete released;
    }

private:
    Slab* TakeFree(Region* added) noexcept
    {
        const std::lock_guard<StaticLock> guard(m_Lock);
        if (added)
            Link(*added);
        Region* const region = m_pFirst;
        if (!region)
            return nullptr;
        Slab& slab = region->Take();
        if (region->m_nFree == 0)
            Unlink(*region);
        return &slab;
    }

    void Link(Region& region) noexcept
    {
        region.m_pPrevious = nullptr;
        region.m_pNext = m_pFirst;
        if (m_pFirst)
            m_pFirst->m_pPrevious = &region;
        m_pFirst = &region;
    }

    void Unlink(Region& region) noexcept
    {
        (region.m_pPrevious ? region.m_pPrevious->m_pNext : m_pFirst) = region.m_pNext;
        if (region.m_pNext)
            region.m_pNext->m_pPrevious = region.m_pPrevious;
        region.m_pNext = region.m_pPrevious = nullptr;
    }

    StaticLock m_Lock;
    Region* m_pFirst = nullptr;
};
Pool g_Pool; // constant-initialised, never destroyed: attributes may go after everything else

void Release(Slab& slab, int slots) noexcept
{
    if (slab.m_nKept.fetch_sub(slots, std::memory_order_acq_rel) == slots)
        g_Pool.Put(slab);
}

/// What its thread has not handed out of its slab.
struct Free
{
    Slot* m_pNext;
    Slot* m_pEnd;
    Slab* m_pSlab;
};
thread_local Free t_Free = {nullptr, nullptr, nullptr};
thread_local bool t_bThreadEnds = false;

/// Lets that go when the thread ends.
struct ThreadEnd
{
    bool m_bExpected = false;

    ~ThreadEnd()
    {
        t_bThreadEnds = true;
        if (t_Free.m_pNext != t_Free.m_pEnd)
            Release(*t_Free.m_pSlab, static_cast<int>(t_Free.m_pEnd - t_Free.m_pNext));
        t_Free = {nullptr, nullptr, nullptr};
    }
};
thread_local ThreadEnd t_ThreadEnd;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kShareAtStart = false; // so that the sanitizer sees where each attribute begins, ends and goes
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kShareAtStart = false;
#else
constexpr bool kShareAtStart = true;
#endif
#else
constexpr bool kShareAtStart = true;
#endif
std::atomic<bool> g_bShare{kShareAtStart};

constexpr std::size_t kLoneHeader = 16; // keeps the alignment of heap blocks
static_assert(kLoneHeader >= kBefore && kLoneHeader % __STDCPP_DEFAULT_NEW_ALIGNMENT__ == 0);

void* NewLone(std::size_t bytes) noexcept
{
    auto* const block = static_cast<char*>(::operator new(kLoneHeader + bytes, std::nothrow));
    if (!block)
        return nullptr;
    ::new (block + kLoneHeader - kBefore) Slab*(nullptr);
    return block + kLoneHeader;
}

/// The next slot of the thread's slab, which has one.
void* NextSlot(Free& slots) noexcept
{
    Slot& slot = *slots.m_pNext++;
    slot.m_pSlab = slots.m_pSlab;
    return slot.m_Object;
}

void* NewFromNewSlab(Free& slots, std::size_t bytes) noexcept
{
    const bool share =
        bytes == sizeof(CKivDSDicomAttribute) && !t_bThreadEnds && g_bShare.load(std::memory_order_relaxed);
    Slab* const slab = share ? g_Pool.Take() : nullptr;
    if (!slab)
        return NewLone(bytes);
    slab->m_nKept.store(Slab::kSlots, std::memory_order_relaxed);
    slots = {slab->m_Slots, slab->m_Slots + Slab::kSlots, slab};
    t_ThreadEnd.m_bExpected = true; // the first use on a thread makes it
    return NextSlot(slots);
}

} // namespace

void* NewAttributeMemory(std::size_t bytes) noexcept
{
    Free& slots = t_Free;
    if (bytes != sizeof(CKivDSDicomAttribute) || slots.m_pNext == slots.m_pEnd)
        return NewFromNewSlab(slots, bytes);
    return NextSlot(slots);
}

void DeleteAttributeMemory(void* memory) noexcept
{
    if (!memory)
        return;
    char* const object = static_cast<char*>(memory);
    if (Slab* const slab = *reinterpret_cast<Slab**>(object - kBefore))
        Release(*slab, 1);
    else
        ::operator delete(object - kLoneHeader);
}

void ShareAttributeMemory(bool share) noexcept
{
    g_bShare.store(share, std::memory_order_relaxed);
}

} // namespace kivds
