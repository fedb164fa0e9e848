// Memory for the attributes that a part makes itself, in copying and in reading: several side by side, with
// one allocation. Each is an attribute like any other, deleted like any other; a block goes with the last of
// its attributes, and no longer than it is being filled. Counting them takes neither lock nor atomic
// operation, since all attributes of a block are one part's, which one thread at a time may change.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"

#include <cstddef>
#include <new>

namespace kivds {

class AttributeBlock
{
public:
    /// Memory for one attribute: in `block`, or when that is full or null, in a new block, which takes its
    /// place; `block` is null again after the last one of those expected. So many attributes are `expected`,
    /// this one included; when that is not known, with 0, blocks grow with what has been taken. Null when
    /// memory runs out.
    static void* Take(AttributeBlock*& block, std::size_t expected) noexcept;
    /// Gives back what Take has given.
    static void Return(void* memory) noexcept;
    /// Ends the filling of a block, which may be null.
    static void LetGo(AttributeBlock* block) noexcept;

private:
    struct Slot
    {
        // cppcheck-suppress uninitMemberVar // the attribute that comes here makes it
        explicit Slot(AttributeBlock* itsBlock) noexcept : block(itsBlock) {}

        AttributeBlock* block;
        alignas(CKivDSDicomAttribute) unsigned char memory[sizeof(CKivDSDicomAttribute)];
    };

    AttributeBlock(Slot* slots, std::size_t size) noexcept
        : m_pNext(slots), m_pEnd(slots + size), m_nSize(size)
    {
    }

    static std::size_t SizeAfter(const AttributeBlock* block, std::size_t expected) noexcept;

    Slot* m_pNext;
    Slot* m_pEnd;
    std::size_t m_nSize;
    std::size_t m_nHolds = 1; // its attributes, and whoever fills it
};

/// A plain attribute in a block: `new (block, expected) BlockAttribute(...)`, which is null when memory runs
/// out.
class BlockAttribute final : public CKivDSDicomAttribute
{
public:
    using CKivDSDicomAttribute::CKivDSDicomAttribute;
    explicit BlockAttribute(const CKivDSDicomAttribute& src) : CKivDSDicomAttribute(src) {}

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

static_assert(sizeof(BlockAttribute) == sizeof(CKivDSDicomAttribute));

} // namespace kivds
