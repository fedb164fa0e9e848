// Memory for the attributes that a part makes itself, in copying, in reading and of elements: several side by
// side, each followed by the data of its values, with one allocation. Each is an attribute like any other,
// deleted like any other; a block goes with the last of its attributes, and no longer than it is being
// filled. Counting them takes neither lock nor atomic operation, since all attributes of a block are one
// part's, which one thread at a time may change; taking room relies on the same. Data that is replaced leaves
// its room unused.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/GatheredValues.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define KIVDS_WATCH_BLOCKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KIVDS_WATCH_BLOCKS
#endif
#endif
#ifdef KIVDS_WATCH_BLOCKS
#include <sanitizer/asan_interface.h>
#endif

namespace kivds {

class AttributeBlock
{
public:
    /// Memory for one attribute: in `block`, or when that is full or null, in a new block, which takes its
    /// place; `block` is null again after the last one of those expected. So many attributes are `expected`,
    /// this one included; when that is not known, with 0, blocks grow with what has been taken. Null when
    /// memory runs out.
    static void* Take(AttributeBlock*& block, std::size_t expected) noexcept
    {
        if ((!block || block->Room() < sizeof(Slot)) && !Begin(block, expected))
            return nullptr;
        void* const memory = block->TakeSlot();
        if (expected == 1)
            LetGo(std::exchange(block, nullptr));
        return memory;
    }
    /// Gives back what Take has given.
    static void Return(void* memory) noexcept;
    /// Ends the filling of a block, which may be null.
    static void LetGo(AttributeBlock* block) noexcept;

    /// Memory for a value's data, or for records, behind an attribute that lies in a block; null unless it is
    /// the newest one, the size small, and room left.
    static char* TakeData(const CKivDSDicomAttribute& attribute, std::int64_t bytes) noexcept;
    /// Gives back what TakeData has given; false when `data` lies elsewhere.
    static bool ReturnData(const CKivDSDicomAttribute& attribute, const void* data,
                           std::int64_t bytes) noexcept;

private:
    struct Slot
    {
        // cppcheck-suppress uninitMemberVar // the attribute that comes here makes it
        explicit Slot(AttributeBlock* itsBlock) noexcept : block(itsBlock) {}

        AttributeBlock* block;
        alignas(CKivDSDicomAttribute) unsigned char memory[sizeof(CKivDSDicomAttribute)];
    };

    explicit AttributeBlock(std::uint32_t size) noexcept : m_nSize(size) {}

    static std::size_t SizeAfter(const AttributeBlock* block, std::size_t expected) noexcept;
    static bool Begin(AttributeBlock*& block, std::size_t expected) noexcept;
    static void Watch(const void* memory, std::size_t size, bool inUse) noexcept;
    static Slot* SlotOf(const void* attribute) noexcept;
    char* At(std::size_t offset) noexcept { return reinterpret_cast<char*>(this) + offset; }
    std::size_t Room() const noexcept { return m_nSize - m_nTaken; }
    // There must be room.
    char* TakeRoom(std::size_t size) noexcept
    {
        char* const taken = At(m_nTaken);
        m_nTaken += static_cast<std::uint32_t>(size);
        return taken;
    }
    void* TakeSlot() noexcept
    {
        ++m_nHolds;
        m_nNewest = m_nTaken;
        char* const memory = TakeRoom(sizeof(Slot));
        Watch(memory, sizeof(Slot), true);
        return (new (memory) Slot(this))->memory;
    }

    // Sizes and places in bytes, from where this record begins. It is small, since walks are the faster the
    // fewer pages they pass.
    std::uint32_t m_nSize;
    std::uint32_t m_nTaken = sizeof(AttributeBlock);
    std::uint32_t m_nNewest = 0; // the newest slot, until its attribute has gone
    std::uint32_t m_nHolds = 1;  // its attributes, and whoever fills it
};

/// Tells the address sanitizer, where there is one, which memory is in use; it knows of whole blocks only.
inline void AttributeBlock::Watch([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size,
                                  [[maybe_unused]] bool inUse) noexcept
{
#ifdef KIVDS_WATCH_BLOCKS
    if (inUse)
        ASAN_UNPOISON_MEMORY_REGION(memory, size);
    else
        ASAN_POISON_MEMORY_REGION(memory, size);
#endif
}

/// Selects the constructor of an attribute in a block.
struct InBlock
{
};

/// A plain attribute in a block: `new (block, expected) BlockAttribute(...)`, which is null when memory runs
/// out.
class BlockAttribute final : public CKivDSDicomAttribute
{
public:
    BlockAttribute() noexcept : CKivDSDicomAttribute(InBlock()) {}
    explicit BlockAttribute(const CKivDSDicomAttribute& src) : CKivDSDicomAttribute(src, true) {}

    static void* operator new(std::size_t, AttributeBlock*& block, std::size_t expected) noexcept
    {
        return AttributeBlock::Take(block, expected);
    }
    // NOLINTNEXTLINE(misc-new-delete-overloads): what is made in a block is deleted like any attribute
    static void operator delete(void* memory) noexcept { AttributeBlock::Return(memory); }
    static void operator delete(void* memory, AttributeBlock*&, std::size_t) noexcept
    {
        AttributeBlock::Return(memory);
    }
};

} // namespace kivds

inline CKivDSDicomAttribute::CKivDSDicomAttribute(kivds::InBlock) noexcept : m_bInBlock(true) {}

namespace kivds {

static_assert(sizeof(BlockAttribute) == sizeof(CKivDSDicomAttribute));

} // namespace kivds
