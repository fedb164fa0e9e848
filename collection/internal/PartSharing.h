// Reference counts of collection parts, and what else the collection classes may do to one another's insides.
// Counts move here and nowhere else.
#pragma once

#include "collection/CKivDSBaseDicomAttributeCollection.h"
#include "collection/CKivDSCompoundCollection.h"
#include "collection/CKivDSEnhancedMFCollection.h"
#include "collection/internal/AttributeCopy.h"

#include "foundation/internal/Operation.h"

#include <algorithm>
#include <memory>
#include <new>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kivds {

struct PartAccess
{
    /// Takes a share in `part`, which may be null.
    template <class Part>
    static Part* Share(Part* part) noexcept
    {
        if (part)
            static_cast<CKivDSDicomAttributeCollection*>(part)->m_nRefCount.Increment();
        return part;
    }

    /// Lets a share go and nulls the pointer; the last share deletes the part.
    template <class Part>
    static void Release(Part*& part) noexcept
    {
        Part* const released = std::exchange(part, nullptr);
        if (released && static_cast<CKivDSDicomAttributeCollection*>(released)->m_nRefCount.Decrement() == 0)
            delete released;
    }

    /// Puts a part in the place of another. `with` may be the same part, null, or held by nobody yet.
    template <class Part>
    static void Replace(Part*& part, Part* with) noexcept
    {
        Part* former = std::exchange(part, Share(with));
        Release(former);
    }

    /// A copy of a part, or null for null; held by nobody yet. May throw, where the copy constructor reports.
    static std::unique_ptr<CKivDSBaseDicomAttributeCollection>
    Copy(const CKivDSBaseDicomAttributeCollection* src)
    {
        if (!src)
            return nullptr;
        auto copy = std::make_unique<CKivDSBaseDicomAttributeCollection>();
        copy->CopyFrom(*src,
                       Operation(L"CKivDSBaseDicomAttributeCollection::CKivDSBaseDicomAttributeCollection"));
        return copy;
    }

    static CKivDSBaseDicomAttributeCollection*
    SinglePart(const CKivDSDicomAttributeCollection& facade) noexcept
    {
        return facade.m_pSingleFrameCollection;
    }

    static CKivDSBaseDicomAttributeCollection*
    MultiPart(const CKivDSDicomAttributeCollection& facade) noexcept
    {
        return facade.m_pMultiFrameCollection;
    }

    /// Whether a facade holds `target`, directly or in a member or a frame. What holds a collection is never
    /// put into it: it would keep itself alive, and every walk over it would have no end. May throw.
    static bool Reaches(const CKivDSDicomAttributeCollection& facade,
                        const CKivDSDicomAttributeCollection& target)
    {
        Holders seen;
        return Reaches(facade, target, seen);
    }

    /// The same of an enhanced multi-frame collection.
    static bool FramesReach(const CKivDSEnhancedMFCollection& enhanced,
                            const CKivDSDicomAttributeCollection& target)
    {
        Holders seen;
        return AnyReaches(enhanced, Frames(enhanced), target, seen);
    }

    static CKivDSCompoundCollection* Compound(const CKivDSDicomAttributeCollection& facade) noexcept
    {
        return facade.m_pCompoundCollection;
    }

    static CKivDSEnhancedMFCollection* Enhanced(const CKivDSDicomAttributeCollection& facade) noexcept
    {
        return facade.m_pEnhancedMFCollection;
    }

    static const std::vector<CKivDSDicomAttributeCollection*>&
    Members(const CKivDSCompoundCollection& compound) noexcept
    {
        return compound.m_Collections;
    }

    static const std::vector<CKivDSDicomAttributeCollection*>&
    Frames(const CKivDSEnhancedMFCollection& enhanced) noexcept
    {
        return enhanced.m_MFCollections;
    }

    /// The facade whose parts stand for `facade` in set operations.
    static const CKivDSDicomAttributeCollection& Regular(const CKivDSDicomAttributeCollection& facade)
    {
        return facade.Regular();
    }

    /// Applies an operator to both pairs of parts of two facades.
    static void CombineParts(CKivDSDicomAttributeCollection& a, const CKivDSDicomAttributeCollection& b,
                             CKivDSBaseDicomAttributeCollection& (CKivDSBaseDicomAttributeCollection::*apply)(
                                 const CKivDSBaseDicomAttributeCollection&))
    {
        a.CombineParts(b, apply);
    }

    static bool SameFrames(const CKivDSEnhancedMFCollection& a, const CKivDSEnhancedMFCollection& b)
    {
        return a.SameFrames(b);
    }

    static const AttributeMap& AttributesOf(const CKivDSBaseDicomAttributeCollection& part) noexcept
    {
        return part.m_Attributes;
    }

    static std::unique_ptr<CKivDSDicomAttribute> CopyFor(CKivDSBaseDicomAttributeCollection& part,
                                                         const CKivDSDicomAttribute& attribute,
                                                         const Operation& op)
    {
        return CopyOf(attribute, part.m_Attributes, op);
    }

    static std::map<unsigned long, CKivDSDicomAttribute*>* MapOf(CKivDSDicomAttributeCollection& collection)
    {
        return collection.GetMapPtr();
    }

    static std::map<unsigned long, CKivDSDicomAttribute*>*
    MultiFrameMapOf(CKivDSDicomAttributeCollection& collection)
    {
        return collection.GetMultiFrameMapPtr();
    }

    static bool Read(CKivDSDicomAttributeCollection& facade, ByteReader& reader, int& size, bool versioned)
    {
        return facade.ReadFacade(reader, size, versioned);
    }

    static bool Read(CKivDSBaseDicomAttributeCollection& part, ByteReader& reader, int& size, bool versioned)
    {
        return part.ReadPart(reader, size, versioned);
    }

    static bool Read(CKivDSEnhancedMFCollection& enhanced, ByteReader& reader, int& size, bool versioned)
    {
        return enhanced.ReadEnhanced(reader, size, versioned);
    }

private:
    // Those that have been looked into: many may share one.
    using Holders = std::unordered_set<const CKivDSDicomAttributeCollection*>;

    static bool Reaches(const CKivDSDicomAttributeCollection& facade,
                        const CKivDSDicomAttributeCollection& target, Holders& seen)
    {
        const CKivDSCompoundCollection* const compound = facade.m_pCompoundCollection;
        const CKivDSEnhancedMFCollection* const enhanced = facade.m_pEnhancedMFCollection;
        return &facade == &target || (compound && AnyReaches(*compound, Members(*compound), target, seen)) ||
               (enhanced && AnyReaches(*enhanced, Frames(*enhanced), target, seen));
    }

    static bool AnyReaches(const CKivDSDicomAttributeCollection& holder,
                           const std::vector<CKivDSDicomAttributeCollection*>& held,
                           const CKivDSDicomAttributeCollection& target, Holders& seen)
    {
        return &holder == &target ||
               (seen.insert(&holder).second && std::any_of(held.begin(), held.end(), [&](const auto* next) {
                    return Reaches(*next, target, seen);
                }));
    }
};

} // namespace kivds
