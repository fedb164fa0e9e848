#include "attribute/internal/AttributeBlock.h"

#include <algorithm>
#include <functional>

namespace kivds {

namespace {

constexpr std::size_t kMostBytes = 8192; // so that one attribute that stays keeps little memory
constexpr std::size_t kMostAhead = 2048; // where more may never come, since room that stays empty slows walks
constexpr std::size_t kMostData = 256;   // larger data is worth a heap block of its own
constexpr std::size_t kUsualData = 24;   // what data sets have beside an attribute, on the average
constexpr std::size_t kAlignment = 8;    // of all that lies in a block

} // namespace

// The size of a whole block.
std::size_t AttributeBlock::SizeAfter(const AttributeBlock* block, std::size_t expected) noexcept
{
    constexpr std::size_t each = sizeof(Slot) + kUsualData;
    if (expected == 0)
        return block ? std::min(std::size_t{block->m_nSize} * 2, kMostAhead) : 2 * each;
    constexpr std::size_t most = kMostBytes / each;
    const std::size_t blocks = (expected + most - 1) / most; // alike, rather than a small rest
    return sizeof(AttributeBlock) + (expected + blocks - 1) / blocks * each;
}

AttributeBlock::Slot* AttributeBlock::SlotOf(const void* attribute) noexcept
{
    auto* const memory = static_cast<char*>(const_cast<void*>(attribute));
    return reinterpret_cast<Slot*>(memory - offsetof(Slot, memory));
}

// Puts a new block in the place of one that is full, or null. False, with nothing changed, when memory runs
// out.
bool AttributeBlock::Begin(AttributeBlock*& block, std::size_t expected) noexcept
{
    static_assert(sizeof(AttributeBlock) % kAlignment == 0 && sizeof(Slot) % kAlignment == 0);
    static_assert(alignof(Slot) <= kAlignment && kAlignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    const std::size_t size = SizeAfter(block, expected);
    void* const memory = ::operator new(size, std::nothrow);
    if (!memory)
        return false;
    LetGo(block);
    block = new (memory) AttributeBlock(static_cast<std::uint32_t>(size));
    Watch(block + 1, block->Room(), false);
    return true;
}

void AttributeBlock::Return(void* memory) noexcept
{
    Slot* const slot = SlotOf(memory);
    AttributeBlock* const block = slot->block;
    const auto place = static_cast<std::size_t>(reinterpret_cast<char*>(slot) - block->At(0));
    Watch(slot, sizeof(Slot), false);
    if (place == block->m_nNewest) { // the next one comes to lie where this one was
        block->m_nTaken = block->m_nNewest;
        block->m_nNewest = 0;
    }
    LetGo(block);
}

void AttributeBlock::LetGo(AttributeBlock* block) noexcept
{
    if (!block || --block->m_nHolds > 0)
        return;
    Watch(block, block->m_nSize, true);
    ::operator delete(block);
}

char* AttributeBlock::TakeData(const CKivDSDicomAttribute& attribute, std::int64_t bytes) noexcept
{
    Slot* const slot = SlotOf(&attribute);
    AttributeBlock& block = *slot->block;
    const bool isNewest = reinterpret_cast<char*>(slot) == block.At(block.m_nNewest);
    if (!isNewest || bytes < 0 || bytes > static_cast<std::int64_t>(kMostData))
        return nullptr;
    // Data without bytes also has a place of its own, which lies in the block.
    const std::size_t size = (std::max(static_cast<std::size_t>(bytes), std::size_t{1}) + kAlignment - 1) /
                             kAlignment * kAlignment;
    if (size > block.Room())
        return nullptr;
    char* const data = block.TakeRoom(size);
    Watch(data, static_cast<std::size_t>(bytes), true);
    return data;
}

bool AttributeBlock::ReturnData(const CKivDSDicomAttribute& attribute, const void* data,
                                std::int64_t bytes) noexcept
{
    AttributeBlock& block = *SlotOf(&attribute)->block;
    const std::less<> isBefore;
    if (isBefore(data, &block) || !isBefore(data, block.At(block.m_nSize)))
        return false;
    Watch(data, static_cast<std::size_t>(std::max<std::int64_t>(bytes, 0)), false);
    return true;
}

} // namespace kivds
