#include "attribute/internal/AttributeBlock.h"

#include <algorithm>

namespace kivds {

namespace {

// So that an attribute that stays long keeps little memory from being released. The address sanitizer is to
// see every attribute by itself.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kMostSlots = 1;
#elif defined(__has_feature)
constexpr std::size_t kMostSlots = __has_feature(address_sanitizer) ? 1 : 64;
#else
constexpr std::size_t kMostSlots = 64;
#endif

} // namespace

std::size_t AttributeBlock::SizeAfter(const AttributeBlock* block, std::size_t expected) noexcept
{
    if (expected == 0)
        return block ? std::min(block->m_nSize * 2, kMostSlots) : std::min<std::size_t>(2, kMostSlots);
    const std::size_t blocks = (expected + kMostSlots - 1) / kMostSlots; // alike, rather than a small rest
    return (expected + blocks - 1) / blocks;
}

void* AttributeBlock::Take(AttributeBlock*& block, std::size_t expected) noexcept
{
    constexpr std::size_t header =
        (sizeof(AttributeBlock) + alignof(Slot) - 1) / alignof(Slot) * alignof(Slot);
    if (!block || block->m_pNext == block->m_pEnd) {
        const std::size_t size = SizeAfter(block, expected);
        auto* const memory = static_cast<char*>(::operator new(header + size * sizeof(Slot), std::nothrow));
        if (!memory)
            return nullptr;
        LetGo(block);
        block = new (memory) AttributeBlock(reinterpret_cast<Slot*>(memory + header), size);
    }
    ++block->m_nHolds;
    return (new (block->m_pNext++) Slot(block))->memory;
}

void AttributeBlock::Return(void* memory) noexcept
{
    LetGo(reinterpret_cast<Slot*>(static_cast<char*>(memory) - offsetof(Slot, memory))->block);
}

void AttributeBlock::LetGo(AttributeBlock* block) noexcept
{
    if (block && --block->m_nHolds == 0)
        ::operator delete(block);
}

} // namespace kivds
