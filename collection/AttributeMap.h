// The attributes of a part, by tag. It is public because parts hold one; it is used inside the library alone.
#pragma once

#include "collection/AttributeArray.h"

#include <cstddef>
#include <map>
#include <memory>

class CKivDSDicomAttribute;

namespace kivds {

class AttributeBlock;

/// Owns attributes, one a tag, in ascending tag order. They lie in a sorted array with an index, so that
/// walks and look-ups wait for memory as little as can be: data sets are filled in tag order, copied and
/// walked far more often than they are changed in the middle. The array becomes a std::map, for good, when
/// the map itself is asked for, or when a change in the middle of a large array would have to move too many
/// entries.
class AttributeMap
{
public:
    /// The form that GetMapPtr lends.
    using Map = std::map<unsigned long, CKivDSDicomAttribute*>;

    /// A tag and its attribute, which the map owns.
    using Entry = AttributeArray::Entry;

    /// The place of a tag's attribute; valid until the map changes.
    struct Place
    {
        CKivDSDicomAttribute** attribute = nullptr; ///< where the pointer lies
        bool isNew = false;                         ///< made by this call, and still null
    };

    /// A position in a walk that may see the map change: it knows its entry by the tag.
    struct Position
    {
        Entry entry;           ///< as it was when the walk came to it
        std::size_t index = 0; ///< of the entry in the array, if nothing has moved it
    };

    AttributeMap() = default;
    ~AttributeMap();
    AttributeMap(const AttributeMap&) = delete;
    AttributeMap& operator=(const AttributeMap&) = delete;

    /// The number of entries.
    std::size_t Size() const { return m_pMap ? m_pMap->size() : m_Entries.Size(); }
    /// The attribute of a tag, which may be null; null when the tag is not held.
    CKivDSDicomAttribute* const* Find(unsigned long tag) const;
    /// Takes over an attribute whose tag lies behind all others, as elements come from files and streams.
    /// False, with nothing changed, when it does not, or there is no room yet: PlaceFor makes it.
    bool Append(unsigned long tag, CKivDSDicomAttribute* attribute) noexcept
    {
        return m_Entries.Append(tag, attribute);
    }
    /// The place of a tag's attribute, made where there is none. May throw; then nothing has changed.
    Place PlaceFor(unsigned long tag)
    {
        return Append(tag, nullptr) ? Place{&m_Entries.Last().attribute, true} : FindPlace(tag);
    }
    /// Deletes the attribute of a tag; false when the tag is not held.
    bool Erase(unsigned long tag);
    /// Deletes all attributes.
    void Clear();
    /// A copy of an attribute for this map, as the factory makes it, but side by side with others in memory
    /// where that can be; null when it cannot be had. So many are `expected`, this one included; 0 when that
    /// is not known.
    std::unique_ptr<CKivDSDicomAttribute> NewCopy(const CKivDSDicomAttribute& attribute,
                                                  std::size_t expected = 0);
    /// The same of an empty attribute of a type.
    std::unique_ptr<CKivDSDicomAttribute> NewAttribute(int type, std::size_t expected);
    /// An empty plain attribute, side by side with others where so many are to come; null when it cannot be
    /// had.
    std::unique_ptr<CKivDSDicomAttribute> NewElement();
    /// Makes room for so many entries more, as far as that is a sensible number, and lets as many attributes
    /// of NewElement lie side by side. May throw; then nothing has changed.
    void Expect(std::size_t count);
    /// Makes room for so many entries. May throw; then nothing has changed.
    void Reserve(std::size_t count);
    /// Puts a position on the first entry; false when there is none.
    bool First(Position& position) const;
    /// Puts a position on the entry after its own; false when there is none.
    bool Next(Position& position) const;
    /// Whether it is a std::map by now.
    bool IsMap() const { return m_pMap != nullptr; }
    /// The map itself, to be changed at will. May throw; then nothing has changed.
    Map& AsMap();

private:
    friend class AttributeWalk;
    friend class AttributeEdit;

    Place FindPlace(unsigned long tag);
    bool UsesBlock(int type, std::size_t expected) const;
    void GrowFor(std::size_t count);
    bool BecomesMap() noexcept;

    AttributeArray m_Entries; // empty when there is a map
    std::unique_ptr<Map> m_pMap;
    AttributeBlock* m_pBlock = nullptr; // the one being filled
    std::size_t m_nExpected = 0;        // attributes of NewElement still to come
};

} // namespace kivds
