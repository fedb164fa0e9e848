// The collection of one frame, the scope narrowed to it, splitting a collection into its parts, and merging
// collections.
#include "attribute/internal/Representation.h"
#include "collection/internal/AttributeWalk.h"
#include "collection/internal/PartSharing.h"
#include "foundation/internal/Operation.h"
#include "platform/CKivIPPScopeElementC.h"

#include <memory>

using kivds::AttributeWalk;
using kivds::Operation;
using kivds::PartAccess;
using Facade = CKivDSDicomAttributeCollection;
using Part = CKivDSBaseDicomAttributeCollection;

namespace {

constexpr unsigned long kFrameIndex = 0x37110090; // (3711,0090), bookkeeping of the library's own
constexpr int kImageLevel = 2;                    // of the levels study, series, image

constexpr Operation
    kPartConstructor(L"CKivDSBaseDicomAttributeCollection::CKivDSBaseDicomAttributeCollection");
constexpr Operation kFacadeConstructor(L"CKivDSDicomAttributeCollection::CKivDSDicomAttributeCollection");

/// The attribute that records which frame a part was made for: its low 16 bits.
std::unique_ptr<CKivDSDicomAttribute> NewFrameIndex(int frame)
{
    std::unique_ptr<CKivDSDicomAttribute> attribute(new (std::nothrow) CKivDSDicomAttribute(true, true));
    auto index = static_cast<unsigned short>(frame);
    SKivAGAttributeValue value = {1, eAttrUShort, 0, reinterpret_cast<char*>(&index)};
    if (attribute && !attribute->InitFromValues(kFrameIndex, kivds::kUnsignedShort, 1, &value, false))
        attribute.reset();
    return attribute;
}

} // namespace

Part::CKivDSBaseDicomAttributeCollection(const Part& src, int frame) : CKivDSDicomAttributeCollection(false)
{
    const bool copied = kPartConstructor.Guard(kivds::kUnexpectedError, [&] {
        m_Attributes.Reserve(src.m_Attributes.Size() + 1); // for the frame index as well
        for (const auto [tag, attribute] : AttributeWalk(src.m_Attributes)) {
            CKivDSDicomAttribute* copy = nullptr;
            if (!attribute)
                continue;
            if (!attribute->CreateSingleFrameCopy(frame, &copy))
                return kPartConstructor.Fail(L"Failed to create single frame copy of attribute");
            std::unique_ptr<CKivDSDicomAttribute> owned(copy);
            if (!owned)
                continue; // no value for this frame
            CKivDSDicomAttribute** const place = m_Attributes.PlaceFor(tag).attribute;
            *place = owned.release(); // once there is a place for it
        }
        return true;
    });
    if (!copied)
        return;
    std::unique_ptr<CKivDSDicomAttribute> index = NewFrameIndex(frame);
    if (!index)
        kPartConstructor.Report(L"Failed to intialize frame index attribute");
    else if (AddAttribute(index.get(), true))
        (void)index.release(); // the part's now
    else
        kPartConstructor.Report(L"Failed to add frame index attribute to collection");
}

Facade::CKivDSDicomAttributeCollection(const Facade& src, int frame, bool deep)
{
    if (!src.IsGood())
        return;
    if (src.IsEnhancedMFCollection()) {
        TakeEnhancedFrame(src, frame);
        return;
    }
    if (src.IsCompoundCollection())
        TakeMemberFrames(src, frame, deep);
    else if (!TakePlainFrame(src, frame, deep))
        return;
    if (src.IsMultiFrame())
        UpdateMultiFrameScope(src, frame);
}

// Takes the single-frame part of the plain facade `src` and makes a multi-frame part for one frame; false
// when `src` has no multi-frame part, so that its scope stays as it is.
bool Facade::TakePlainFrame(const Facade& src, int frame, bool deep)
{
    kFacadeConstructor.Guard(kivds::kUnexpectedError, [&] {
        m_pSingleFrameCollection = PartAccess::Share(
            deep ? PartAccess::Copy(src.m_pSingleFrameCollection).release() : src.m_pSingleFrameCollection);
    });
    if (!src.m_pMultiFrameCollection)
        return false;
    m_pMultiFrameCollection = PartAccess::Share(new (std::nothrow) Part(*src.m_pMultiFrameCollection, frame));
    if (!m_pMultiFrameCollection)
        kFacadeConstructor.Report(kivds::kUnexpectedError);
    return true;
}

// Becomes the collection of one frame of the enhanced multi-frame facade `src`.
void Facade::TakeEnhancedFrame(const Facade& src, int frame)
{
    CKivDSEnhancedMFCollection* const enhanced = src.m_pEnhancedMFCollection;
    const std::unique_ptr<Facade> complete(enhanced ? enhanced->GetMFCollection(frame) : nullptr);
    if (!complete)
        return kFacadeConstructor.Report(
            L"Fail to extract the frame collection from the enhanced MF collection");
    m_pSingleFrameCollection = PartAccess::Share(complete->m_pSingleFrameCollection);
    m_pMultiFrameCollection = PartAccess::Share(complete->m_pMultiFrameCollection);
    UpdateMultiFrameScope(*complete, frame);
}

// Becomes a compound facade of the collections of one frame of the members of the compound facade `src`.
void Facade::TakeMemberFrames(const Facade& src, int frame, bool deep)
{
    m_pCompoundCollection = PartAccess::Share(new (std::nothrow) CKivDSCompoundCollection);
    if (!m_pCompoundCollection)
        return kFacadeConstructor.Report(kivds::kUnexpectedError);
    std::unique_ptr<CKivIPPScopeC> scope(src.GetScope());
    if (m_pCompoundCollection->SetScope(scope.get(), false))
        (void)scope.release(); // the compound collection's now
    CKivDSCompoundCollection* const members = src.Members();
    const int count = members ? members->GetNumberOfCollections() : 0;
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<Facade> member(members->GetCollection(i, false));
        const std::unique_ptr<Facade> perFrame(member ? new (std::nothrow) Facade(*member, frame, deep)
                                                      : nullptr);
        if (!m_pCompoundCollection->AddCollection(perFrame.get(), false))
            kFacadeConstructor.Report(L"Unable to add coll");
    }
}

bool Facade::UpdateMultiFrameScope(const Facade& src, int frame)
{
    const Operation op(L"CKivDSDicomAttributeCollection::UpdateMultiFrameScope");
    const std::unique_ptr<CKivIPPScopeC> scope(src.GetScope());
    if (!scope)
        return false;
    const auto* const element = dynamic_cast<const CKivIPPScopeElementC*>(scope.get());
    CKivIPPScopeItemC* image = nullptr; // the scope's own
    if (!element || !element->GetItem(kImageLevel, image, false) || !image)
        return op.Fail(L"Unable to retrieve the image scope item ");
    if (!image->IsGood())
        return op.Fail(L"Inconsistent image scope item for multiframe collection");
    char uid[256] = {};
    image->GetUID(uid, sizeof uid);
    if (!image->IsGood())
        return op.Fail(L"Fail to retrieve image UID");
    image->SetUID(uid, frame, frame);
    const bool set = (!m_pSingleFrameCollection || m_pSingleFrameCollection->SetScope(scope.get(), true)) &&
                     (!m_pCompoundCollection || m_pCompoundCollection->SetScope(scope.get(), true));
    return set || op.Fail(L"Failed to set scope of original collection");
}

bool Facade::Split(Facade*& single, Facade*& multi, bool deep)
{
    const Operation op(L"CKivDSDicomAttributeCollection::Split");
    single = nullptr;
    multi = nullptr;
    if (RefuseCompoundAndEnhanced(op))
        return false;
    if (!m_pSingleFrameCollection)
        return op.Fail(L"Attempt to split an uninitialized object ");
    return op.Guard(kivds::kUnexpectedError, [&] {
        const auto newFacade = [deep](Part* singlePart, Part* multiPart) {
            std::unique_ptr<Part> singleCopy = deep ? PartAccess::Copy(singlePart) : nullptr;
            std::unique_ptr<Part> multiCopy = deep ? PartAccess::Copy(multiPart) : nullptr;
            auto facade = deep ? std::make_unique<Facade>(singleCopy.get(), multiCopy.get())
                               : std::make_unique<Facade>(singlePart, multiPart);
            (void)singleCopy.release(); // the facade's now
            (void)multiCopy.release();
            return facade;
        };
        auto ofSingle = newFacade(m_pSingleFrameCollection, nullptr);
        if (m_pMultiFrameCollection)
            multi = newFacade(nullptr, m_pMultiFrameCollection).release();
        single = ofSingle.release();
        return true;
    });
}

bool Facade::RefuseCompoundAndEnhanced(const Operation& op) const
{
    return RefuseCompound(op) ||
           (IsEnhancedMFCollection() && !op.Fail(L"Operation not supported on enhanced MF collections "));
}

bool Facade::UpdateSingleFrameCollection(const Facade& src, bool deep)
{
    const Operation op(L"CKivDSDicomAttributeCollection::UpdateSingleFrameCollection");
    if (RefuseCompoundAndEnhanced(op))
        return false;
    Part* const theirs = src.Regular().m_pSingleFrameCollection;
    if (!m_pSingleFrameCollection) {
        m_pSingleFrameCollection = PartAccess::Share(theirs);
        return true;
    }
    if (!deep) {
        if (theirs)
            *m_pSingleFrameCollection += *theirs;
        return true;
    }
    return op.Guard(kivds::kUnexpectedError, [&] {
        std::unique_ptr<Part> merged = theirs ? PartAccess::Copy(theirs) : std::make_unique<Part>();
        *merged += *m_pSingleFrameCollection;
        std::unique_ptr<CKivIPPScopeC> scope(m_pSingleFrameCollection->GetScope());
        if (scope && merged->SetScope(scope.get(), false))
            (void)scope.release(); // the part's now
        PartAccess::Replace(m_pSingleFrameCollection, merged.release());
        return true;
    });
}

bool Facade::MergeCollections(const Facade& first, const Facade& second, Facade& merged)
{
    // A compound collection is merged as a flat one.
    std::unique_ptr<Facade> flatFirst;
    std::unique_ptr<Facade> flatSecond;
    const auto flatten = [](const Facade& facade, std::unique_ptr<Facade>& flat) -> const Facade* {
        if (!facade.IsCompoundCollection())
            return &facade;
        flat.reset(ConvertCompoundToFlatCollection(facade));
        return flat.get();
    };
    const Facade* const left = flatten(first, flatFirst);
    const Facade* const right = left ? flatten(second, flatSecond) : nullptr;
    if (!right)
        return false;
    long held = 0;
    if (!merged.GetNumberOfAttributes(&held) || held == 0)
        merged *= *left;
    merged |= *right;
    std::unique_ptr<CKivIPPScopeC> scope(left->GetScope());
    if (!merged.SetScope(scope.get(), false))
        return Operation(L"CKivDSDicomAttributeCollection::MergeCollections")
            .Fail(L"Failed to set scope on merged collection");
    (void)scope.release(); // the collection's now
    return true;
}
