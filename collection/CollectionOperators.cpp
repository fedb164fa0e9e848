// The set operators, comparison and assignment, on parts and on facades. The parts carry the algorithms; the
// facade applies them part by part.
#include "collection/internal/AttributeCopy.h"
#include "collection/internal/AttributeWalk.h"
#include "collection/internal/PartSharing.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <memory>
#include <utility>

using kivds::AttributeEdit;
using kivds::AttributeWalk;
using kivds::Operation;
using kivds::PartAccess;
using Facade = CKivDSDicomAttributeCollection;
using Part = CKivDSBaseDicomAttributeCollection;

// ---- parts

namespace {

/// Stores a copy of an attribute under a tag that `edit` has leapt to, in place of what is held there. When
/// it cannot be copied, which is reported, nothing changes. May throw; then nothing changes either.
void PutCopy(AttributeEdit& edit, unsigned long tag, const CKivDSDicomAttribute& attribute,
             const Operation& op)
{
    if (std::unique_ptr<CKivDSDicomAttribute> copy = kivds::CopyOf(attribute, edit.Map(), op))
        edit.Put(tag, std::move(copy));
}

} // namespace

Part& Part::operator+=(const Part& b)
{
    if (this == &b)
        return *this;
    m_bMultiFrame = m_bMultiFrame || b.m_bMultiFrame;
    const Operation op(L"CKivDSBaseDicomAttributeCollection::operator +=");
    op.Guard(kivds::kUnexpectedError, [&] {
        AttributeEdit edit(m_Attributes, b.m_Attributes.Size());
        for (const auto [tag, theirs] : AttributeWalk(b.m_Attributes)) {
            if (!theirs)
                continue;
            CKivDSDicomAttribute* const mine = edit.LeapTo(tag) ? edit.Attribute() : nullptr;
            if (!mine)
                PutCopy(edit, tag, *theirs, op);
            else if (theirs->MustReplicate() || *mine != *theirs)
                *mine += *theirs;
        }
    });
    return *this;
}

Part& Part::operator*=(const Part& b)
{
    return Overwrite(b, Operation(L"CKivDSBaseDicomAttributeCollection::operator *="),
                     [](const CKivDSDicomAttribute&) { return true; });
}

Part& Part::operator|=(const Part& b)
{
    return Overwrite(b, Operation(L"CKivDSBaseDicomAttributeCollection::operator |="),
                     [](const CKivDSDicomAttribute& attribute) { return !attribute.IsPrivate(); });
}

// Stores copies of b's attributes that meet a condition, in place of what is held under their tags.
template <class Condition>
Part& Part::Overwrite(const Part& b, const Operation& op, Condition condition)
{
    if (this == &b)
        return *this;
    m_bMultiFrame = m_bMultiFrame || b.m_bMultiFrame;
    op.Guard(kivds::kUnexpectedError, [&] {
        AttributeEdit edit(m_Attributes, b.m_Attributes.Size());
        for (const auto [tag, theirs] : AttributeWalk(b.m_Attributes)) {
            if (theirs && condition(*theirs)) {
                edit.LeapTo(tag);
                PutCopy(edit, tag, *theirs, op);
            }
        }
    });
    return *this;
}

Part& Part::operator-=(const Part& b)
{
    return Remove(b, [](const CKivDSDicomAttribute* mine, const CKivDSDicomAttribute& theirs) {
        return mine && *mine == theirs;
    });
}

Part& Part::operator/=(const Part& b)
{
    return Remove(b, [](const CKivDSDicomAttribute*, const CKivDSDicomAttribute& theirs) {
        return !theirs.IsPrivate();
    });
}

// Erases the entries at b's tags whose attribute (or null) and b's meet a condition.
template <class Condition>
Part& Part::Remove(const Part& b, Condition condition)
{
    if (this == &b) {
        Clean();
        return *this;
    }
    AttributeEdit edit(m_Attributes, b.m_Attributes.Size());
    for (const auto [tag, theirs] : AttributeWalk(b.m_Attributes)) {
        if (theirs && edit.LeapTo(tag) && condition(edit.Attribute(), *theirs))
            edit.Drop();
    }
    return *this;
}

Part& Part::operator^=(const Part& b)
{
    if (this == &b)
        return *this;
    m_bMultiFrame = m_bMultiFrame || b.m_bMultiFrame;
    AttributeWalk theirs(b.m_Attributes);
    for (AttributeEdit edit(m_Attributes, m_Attributes.Size()); !edit.AtEnd();) {
        const CKivDSDicomAttribute* const mine = edit.Attribute();
        const CKivDSDicomAttribute* const other = theirs.AttributeOf(edit.Tag());
        if (mine && !(other && *mine == *other))
            edit.Drop();
        else
            edit.Keep();
    }
    return *this;
}

bool Part::operator==(const Part& b)
{
    if (this == &b)
        return true;
    if (m_bMultiFrame != b.m_bMultiFrame || m_Attributes.Size() != b.m_Attributes.Size())
        return false;
    AttributeWalk walk(b.m_Attributes);
    for (const auto [tag, mine] : AttributeWalk(m_Attributes)) {
        const CKivDSDicomAttribute* const theirs = walk.Attribute();
        if (tag != walk.Tag() || !mine != !theirs || (mine && theirs && *mine != *theirs))
            return false;
        walk.Next();
    }
    return true;
}

bool Part::operator!=(const Part& b)
{
    return !operator==(b);
}

namespace {

/// Runs `fill` on a new part, into which it puts copies of attributes; null when no memory can be had for the
/// part.
template <class Fill>
Part* NewPart(const wchar_t* operation, Fill fill)
{
    const Operation op(operation);
    std::unique_ptr<Part> result(new (std::nothrow) Part);
    if (!result) {
        op.Report(kivds::kUnexpectedError);
        return nullptr;
    }
    fill([&](const CKivDSDicomAttribute& attribute) {
        std::unique_ptr<CKivDSDicomAttribute> copy = PartAccess::CopyFor(*result, attribute, op);
        if (copy && result->AddAttribute(copy.get(), true))
            (void)copy.release(); // the part's now
    });
    return result.release();
}

} // namespace

Part* operator/(const Part& a, const Part& b)
{
    return NewPart(L"operator /", [&](auto add) {
        AttributeWalk walk(b.m_Attributes);
        for (const auto [tag, mine] : AttributeWalk(a.m_Attributes)) {
            const CKivDSDicomAttribute* const theirs = walk.AttributeOf(tag);
            if (mine && theirs && !mine->IsPrivate() && *theirs != *mine)
                add(*theirs);
        }
    });
}

Part* operator^(const Part& a, const Part& b)
{
    return NewPart(L"operator ^", [&](auto add) {
        AttributeWalk walk(b.m_Attributes);
        for (const auto [tag, mine] : AttributeWalk(a.m_Attributes)) {
            const CKivDSDicomAttribute* const theirs = walk.AttributeOf(tag);
            if (mine && theirs && *mine == *theirs)
                add(*mine);
        }
    });
}

Part* operator|(const Part& a, const Part& b)
{
    return NewPart(L"operator |", [&](auto add) {
        AttributeWalk walk(b.m_Attributes);
        for (const auto [tag, mine] : AttributeWalk(a.m_Attributes)) {
            const CKivDSDicomAttribute* const theirs = walk.AttributeOf(tag);
            if (mine && theirs && *theirs == *mine)
                add(*theirs);
        }
    });
}

// ---- facades

/// What one compound assignment of facades differs in from another.
struct Facade::SSetOperator
{
    const wchar_t* name;
    Part& (Part::*apply)(const Part&);
    // For an enhanced multi-frame collection on the right; null where the operand then stands for its regular
    // collection.
    CKivDSEnhancedMFCollection& (CKivDSEnhancedMFCollection::*applyEnhanced)(
        const CKivDSEnhancedMFCollection&);
};

// The facade whose parts stand for this one in a set operation: for one that holds nothing but an enhanced
// multi-frame collection, that collection, whose own parts are the regular ones.
const Facade& Facade::Regular() const
{
    return m_pEnhancedMFCollection && !m_pSingleFrameCollection ? *m_pEnhancedMFCollection : *this;
}

Facade& Facade::Regular()
{
    return const_cast<Facade&>(
        std::as_const(*this).Regular()); // either this, which is not const, or owned by it
}

// Applies an operator of parts to one pair of parts: the left one is made when it is absent and the right one
// is not.
void Facade::CombinePart(Part* Facade::*part, const Facade& b, Part& (Part::*apply)(const Part&))
{
    const Part* const theirs = b.*part;
    if (!theirs || this->*part == theirs)
        return;
    if (!(this->*part))
        this->*part = CreateCollection();
    if (this->*part)
        ((this->*part)->*apply)(*theirs);
}

void Facade::CombineParts(const Facade& b, Part& (Part::*apply)(const Part&))
{
    CombinePart(&Facade::m_pSingleFrameCollection, b, apply);
    CombinePart(&Facade::m_pMultiFrameCollection, b, apply);
}

// The frame that the compound assignments share.
Facade& Facade::Combine(const Facade& b, const SSetOperator& how)
{
    const Operation op(how.name);
    if (RefuseCompound(op) || b.RefuseCompound(op) || this == &b || !IsGood() || !b.IsGood())
        return *this;
    const bool enhancedStep = how.applyEnhanced && b.m_pEnhancedMFCollection;
    Regular().CombineParts(enhancedStep ? b : b.Regular(), how.apply);
    if (!enhancedStep || m_pEnhancedMFCollection == b.m_pEnhancedMFCollection)
        return *this;
    if (m_pEnhancedMFCollection) {
        (m_pEnhancedMFCollection->*how.applyEnhanced)(*b.m_pEnhancedMFCollection);
        return *this;
    }
    std::unique_ptr<CKivDSEnhancedMFCollection> enhanced(new (std::nothrow) CKivDSEnhancedMFCollection);
    if (!enhanced) {
        op.Report(kivds::kUnexpectedError);
        return *this;
    }
    ((*enhanced).*how.applyEnhanced)(*b.m_pEnhancedMFCollection);
    op.Guard(kivds::kUnexpectedError, [&] {
        if (PartAccess::FramesReach(*enhanced, *this)) // this is a frame of what b holds
            return op.Fail(L"Operation not supported on enhanced MF collections ");
        m_pEnhancedMFCollection = PartAccess::Share(enhanced.release());
        return true;
    });
    return *this;
}

Facade& Facade::operator+=(const Facade& b)
{
    return Combine(b, {L"CKivDSDicomAttributeCollection::operator +=", &Part::operator+=, nullptr});
}

Facade& Facade::operator*=(const Facade& b)
{
    return Combine(b, {L"CKivDSDicomAttributeCollection::operator *=", &Part::operator*=, nullptr});
}

Facade& Facade::operator/=(const Facade& b)
{
    return Combine(b, {L"CKivDSDicomAttributeCollection::operator /=", &Part::operator/=, nullptr});
}

Facade& Facade::operator-=(const Facade& b)
{
    return Combine(b, {L"CKivDSDicomAttributeCollection::operator -=", &Part::operator-=,
                       &CKivDSEnhancedMFCollection::operator-=});
}

Facade& Facade::operator|=(const Facade& b)
{
    return Combine(b, {L"CKivDSDicomAttributeCollection::operator |=", &Part::operator|=,
                       &CKivDSEnhancedMFCollection::operator|=});
}

// The compound collection that this facade holds, or that this object is itself; null for any other.
CKivDSCompoundCollection* Facade::Members() const
{
    if (m_pCompoundCollection)
        return m_pCompoundCollection;
    return const_cast<CKivDSCompoundCollection*>(
        dynamic_cast<const CKivDSCompoundCollection*>(this)); // its members are shared, not changed
}

// Calls `use` for each member of the compound collection `b`, as a facade that shares the member's parts.
template <class Use>
void Facade::ForEachMember(const Facade& b, const Operation& op, Use use)
{
    CKivDSCompoundCollection* const compound = b.Members();
    const int count = compound ? compound->GetNumberOfCollections() : 0;
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<Facade> member(compound->GetCollection(i, false));
        if (member)
            use(*member);
        else
            op.Report(L"Invalid null DICOM attribute collection in compound attribute collection", 1);
    }
}

Facade& Facade::operator^=(const Facade& b)
{
    const SSetOperator how = {L"CKivDSDicomAttributeCollection::operator ^=", &Part::operator^=, nullptr};
    if (!b.IsCompoundCollection())
        return Combine(b, how);
    const Operation op(how.name);
    if (RefuseCompound(op) || this == &b || !IsGood() || !b.IsGood())
        return *this;
    Facade agreed(true);
    ForEachMember(b, op, [&](const Facade& member) {
        const std::unique_ptr<Facade> agreedWithMember(*this ^ member);
        if (agreedWithMember)
            agreed += *agreedWithMember;
        else
            op.Report(kivds::kUnexpectedError);
    });
    Regular().AssignParts(agreed);
    return *this;
}

bool Facade::operator==(const Facade& b)
{
    const Operation op(L"CKivDSDicomAttributeCollection::operator ==");
    if (RefuseCompound(op) || b.RefuseCompound(op))
        return false;
    if (this == &b)
        return true;
    if (!IsGood() || !b.IsGood())
        return false;
    if (m_pEnhancedMFCollection || b.m_pEnhancedMFCollection) {
        if (m_pEnhancedMFCollection == b.m_pEnhancedMFCollection)
            return true;
        return m_pEnhancedMFCollection && b.m_pEnhancedMFCollection &&
               PartAccess::SameFrames(*m_pEnhancedMFCollection, *b.m_pEnhancedMFCollection) &&
               m_pEnhancedMFCollection->Facade::SameParts(*b.m_pEnhancedMFCollection);
    }
    return SameParts(b);
}

bool Facade::operator!=(const Facade& b)
{
    return !operator==(b);
}

bool Facade::SameParts(const Facade& b) const
{
    const auto same = [](Part* mine, const Part* theirs) {
        return mine == theirs || (mine && theirs && *mine == *theirs);
    };
    return same(m_pSingleFrameCollection, b.m_pSingleFrameCollection) &&
           same(m_pMultiFrameCollection, b.m_pMultiFrameCollection);
}

Facade& Facade::operator=(const Facade& b)
{
    const Operation op(L"CKivDSDicomAttributeCollection::operator =");
    if (RefuseCompound(op))
        return *this;
    if (IsEnhancedMFCollection()) {
        op.Report(L"Operation not supported on enhanced MF collections ");
        return *this;
    }
    if (this == &b || !IsGood() || !b.IsGood())
        return *this;
    if (b.m_pEnhancedMFCollection) {
        m_pEnhancedMFCollection = PartAccess::Share(
            new (std::nothrow) CKivDSEnhancedMFCollection(*b.m_pEnhancedMFCollection, false));
        if (!m_pEnhancedMFCollection)
            op.Report(kivds::kUnexpectedError);
        return *this;
    }
    if (b.IsCompoundCollection()) {
        Facade flat(true);
        ForEachMember(b, op, [&](const Facade& member) { flat += member; });
        AssignParts(flat);
    } else {
        AssignParts(b);
    }
    return *this;
}

// In place, so that facades that share the parts see the new content; a multi-frame part that `b` lacks
// stays.
void Facade::AssignParts(const Facade& b)
{
    const auto assign = [](Part& mine, const Part& theirs) { mine = theirs; };
    if (m_pSingleFrameCollection && b.m_pSingleFrameCollection)
        assign(*m_pSingleFrameCollection, *b.m_pSingleFrameCollection);
    if (!b.m_pMultiFrameCollection)
        return;
    if (!m_pMultiFrameCollection)
        m_pMultiFrameCollection = CreateCollection();
    if (m_pMultiFrameCollection)
        assign(*m_pMultiFrameCollection, *b.m_pMultiFrameCollection);
}

namespace {

// The frame that the free operators of facades share.
Facade* CombineFreely(const Facade& a, const Facade& b, const wchar_t* name,
                      Part* (*apply)(const Part&, const Part&))
{
    const Operation op(name);
    std::unique_ptr<Part> single;
    std::unique_ptr<Part> multi;
    if (a.IsCompoundCollection() || b.IsCompoundCollection()) {
        op.Report(L"Operation not supported on compound collections ");
    } else if (!a.IsGood() || !b.IsGood()) {
        op.Report(L"Attribute collection not properly initialized");
    } else {
        const Facade& left = PartAccess::Regular(a);
        const Facade& right = PartAccess::Regular(b);
        const auto combine = [&](const Part* mine, const Part* theirs) {
            return std::unique_ptr<Part>(mine && theirs ? apply(*mine, *theirs) : nullptr);
        };
        single = combine(PartAccess::SinglePart(left), PartAccess::SinglePart(right));
        multi = combine(PartAccess::MultiPart(left), PartAccess::MultiPart(right));
    }
    auto* const result = new (std::nothrow) Facade(single.get(), multi.get());
    if (result) { // the parts are the facade's now
        (void)single.release();
        (void)multi.release();
    }
    return result;
}

} // namespace

Facade* operator/(const Facade& a, const Facade& b)
{
    return CombineFreely(a, b, L"operator /", [](const Part& x, const Part& y) { return x / y; });
}

Facade* operator^(const Facade& a, const Facade& b)
{
    return CombineFreely(a, b, L"operator ^", [](const Part& x, const Part& y) { return x ^ y; });
}

Facade* operator|(const Facade& a, const Facade& b)
{
    return CombineFreely(a, b, L"operator |", [](const Part& x, const Part& y) { return x | y; });
}
