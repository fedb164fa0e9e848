#include "attribute/internal/AttributeBlock.h"

#include <algorithm>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define KIVDS_WATCH_SLOTS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KIVDS_WATCH_SLOTS
#endif
#endif
#ifdef KIVDS_WATCH_SLOTS
#include <sanitizer/asan_interface.h>
#endif

namespace kivds {

namespace {

constexpr std::size_t kMostSlots = 64; // so that one attribute that stays keeps little memory

/// Tells the address sanitizer, where there is one, which memory is in use; it knows of whole blocks only.
void Watch([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size, [[maybe_unused]] bool inUse)
{
#ifdef KIVDS_WATCH_SLOTS
    if (inUse)
        ASAN_UNPOISON_MEMORY_REGION(memory, size);
    else
        ASAN_POISON_MEMORY_REGION(memory, size);
#endif
}

} // namespace

std::size_t AttributeBlock::SizeAfter(const AttributeBlock* block, std::size_t expected) noexcept
{
    if (expected == 0)
        return block ? std::min(block->m_nSize * 2, kMostSlots) : 2;
    const std::size_t blocks = (expected + kMostSlots - 1) / kMostSlots; // alike, rather than a small rest
    return (expected + blocks - 1) / blocks;
}

void* AttributeBlock::Take(AttributeBlock*& block, std::size_t expected) noexcept
{
    constexpr std::size_t header =
        (sizeof(AttributeBlock) + alignof(Slot) - 1) / alignof(Slot) * alignof(Slot);
    static_assert(alignof(Slot) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    if (!block || block->m_pNext == block->m_pEnd) {
        const std::size_t size = SizeAfter(block, expected);
        auto* const memory = static_cast<char*>(::operator new(header + size * sizeof(Slot), std::nothrow));
        if (!memory)
            return nullptr;
        LetGo(block);
        Watch(memory + header, size * sizeof(Slot), false);
        block = new (memory) AttributeBlock(reinterpret_cast<Slot*>(memory + header), size);
    }
    ++block->m_nHolds;
    Watch(block->m_pNext, sizeof(Slot), true);
    Slot* const slot = new (block->m_pNext++) Slot(block);
    if (expected > 0 && block->m_pNext == block->m_pEnd)
        LetGo(std::exchange(block, nullptr));
    return slot->memory;
}

void AttributeBlock::Return(void* memory) noexcept
{
    auto* const slot = reinterpret_cast<Slot*>(static_cast<char*>(memory) - offsetof(Slot, memory));
    Watch(slot->memory, sizeof slot->memory, false);
    LetGo(slot->block);
}

void AttributeBlock::LetGo(AttributeBlock* block) noexcept
{
    if (!block || --block->m_nHolds > 0)
        return;
    Watch(block->m_pEnd - block->m_nSize, block->m_nSize * sizeof(Slot), true);
    ::operator delete(block);
}

} // namespace kivds
