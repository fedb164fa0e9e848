// The array in which a part keeps its attributes, in ascending tag order, and beside it, in the same block of
// memory, an index by which a tag is found in a step or two. It is public because parts hold one; it is used
// inside the library alone.
#pragma once

#include <cstddef>
#include <cstdint>

class CKivDSDicomAttribute;

namespace kivds {

/// Entries of tag and attribute, which it does not own. The index is there while entries come in tag order,
/// as from files, streams and other parts. It goes with the first change in the middle, from where on a tag
/// is found by halving, until a set operator that has gone through a good part of the array makes it anew.
class AttributeArray
{
public:
    /// A tag and its attribute.
    struct Entry
    {
        unsigned long tag = 0;                     ///< group and element, 0xggggeeee
        CKivDSDicomAttribute* attribute = nullptr; ///< null when it could not be copied
    };

    AttributeArray() = default;
    ~AttributeArray() { Clear(); }
    AttributeArray(const AttributeArray&) = delete;
    AttributeArray& operator=(const AttributeArray&) = delete;

    /// The entries, side by side; null when no memory is held.
    Entry* Data() { return m_pEntries; }
    const Entry* Data() const { return m_pEntries; }          ///< the same
    Entry* End() { return m_pEntries + m_nSize; }             ///< behind the last entry
    const Entry* End() const { return m_pEntries + m_nSize; } ///< the same
    std::size_t Size() const { return m_nSize; }              ///< the number of entries
    std::size_t Capacity() const { return m_nCapacity; }      ///< entries that the memory held is enough for
    /// The last entry; there must be one.
    Entry& Last() { return m_pEntries[m_nSize - 1]; }

    /// Adds an entry behind all others. False, with nothing changed, when the tag does not belong there or
    /// the array is full.
    bool Append(unsigned long tag, CKivDSDicomAttribute* attribute) noexcept
    {
        if (m_nSize == m_nCapacity || (m_nSize > 0 && !(Last().tag < tag)))
            return false;
        Entry& entry = m_pEntries[m_nSize++];
        entry.tag = tag;
        entry.attribute = attribute;
        if (m_nSlots > 0)
            AddToIndex(m_nSize);
        return true;
    }
    /// The entry of a tag; null when there is none.
    const Entry* Find(unsigned long tag) const noexcept;
    /// The first entry whose tag is not below `tag`; the end when there is none.
    const Entry* LowerBound(unsigned long tag) const noexcept;
    Entry* LowerBound(unsigned long tag) noexcept; ///< the same
    /// Puts an entry in front of another one or of the end; gives its place. May throw; then nothing has
    /// changed.
    Entry* Insert(const Entry* before, const Entry& entry);
    /// Takes an entry out.
    void Erase(const Entry* place) noexcept;
    /// Makes room for so many entries. May throw; then nothing has changed.
    void Reserve(std::size_t count);
    /// Sets the number of entries, for which there must be room, and lets the index go; new ones are empty,
    /// and to be filled before the index is made.
    void Resize(std::size_t count) noexcept;
    /// Drops all entries and the memory.
    void Clear() noexcept;
    /// Makes the index anew, for entries that were moved, or lets it go while they are being moved.
    void MakeIndex() noexcept;
    void DropIndex() noexcept { m_nSlots = 0; } ///< see MakeIndex

private:
    using Slot = std::uint16_t; // 1 and the position of an entry; 0: free

    static constexpr int kMostSteps = 64; // that an entry may lie behind the slot its search begins at

    Slot* Slots() const noexcept { return reinterpret_cast<Slot*>(m_pEntries + m_nCapacity); }
    // Where the search for a tag begins: the tag times the golden ratio, modulo 2^32, scaled to the slots.
    std::uint32_t FirstSlot(unsigned long tag) const noexcept
    {
        const std::uint32_t product = static_cast<std::uint32_t>(tag) * 0x9E3779B1U;
        const std::uint64_t scaled = std::uint64_t{m_nSlots} * product;
        return static_cast<std::uint32_t>(scaled >> 32U);
    }
    std::uint32_t NextSlot(std::uint32_t slot) const noexcept { return slot + 1 < m_nSlots ? slot + 1 : 0; }
    // Enters the entry before `end`. Tags that crowd, as they hardly do by chance, end the index.
    void AddToIndex(std::uint32_t end) noexcept
    {
        Slot* const slots = Slots();
        std::uint32_t slot = FirstSlot(m_pEntries[end - 1].tag);
        for (int i = 0; slots[slot] != 0; ++i) {
            if (i == kMostSteps)
                return DropIndex();
            slot = NextSlot(slot);
        }
        slots[slot] = static_cast<Slot>(end);
    }

    Entry* m_pEntries = nullptr; // the slots follow behind the last one that there is room for
    std::uint32_t m_nSize = 0;
    std::uint32_t m_nCapacity = 0;
    std::uint32_t m_nSlots = 0; // 0: no index
};

} // namespace kivds
