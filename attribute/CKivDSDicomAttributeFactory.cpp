#include "attribute/CKivDSDicomAttributeFactory.h"

#include "attribute/CKivDSCodeSequenceAttribute.h"
#include "attribute/internal/AttributeTypes.h"
#include "attribute/internal/WholeCopy.h"
#include "foundation/internal/Operation.h"

#include <memory>
#include <new>

using kivds::Operation;

CKivDSDicomAttributeFactory g_DicomAttributeFactory;

namespace {

template <class Attribute>
CKivDSDicomAttribute* NewCopy(const Attribute& src)
{
    std::unique_ptr<Attribute> copy(new (std::nothrow) Attribute(src));
    return copy && kivds::IsWhole(*copy, src) ? copy.release() : nullptr;
}

constexpr Operation kCreate(L"CKivDSDicomAttributeFactory::CreateDicomAttribute");

} // namespace

CKivDSDicomAttribute* CKivDSDicomAttributeFactory::CreateDicomAttribute(const CKivDSDicomAttribute& src)
{
    const int type = src.GetType();
    if (type == kivds::kPlainAttribute)
        return NewCopy(src);
    const auto* codes = type == kivds::kCodeSequenceAttribute
                            ? dynamic_cast<const CKivDSCodeSequenceAttribute*>(&src)
                            : nullptr;
    if (codes)
        return NewCopy(*codes);
    kCreate.Report(L"Unknown DICOM attribute type");
    return nullptr;
}

CKivDSDicomAttribute* CKivDSDicomAttributeFactory::CreateDicomAttribute(int type)
{
    if (type == kivds::kPlainAttribute)
        return new (std::nothrow) CKivDSDicomAttribute(false, false);
    if (type == kivds::kCodeSequenceAttribute)
        return new (std::nothrow) CKivDSCodeSequenceAttribute(false, false);
    kCreate.Report(L"Unknown input DICOM attribute type");
    return nullptr;
}
