#include "attribute/CKivDSDicomAttributeFactory.h"

#include "attribute/CKivDSCodeSequenceAttribute.h"
#include "attribute/internal/AttributeTypes.h"
#include "foundation/internal/Operation.h"

#include <new>

using kivds::Operation;

CKivDSDicomAttributeFactory g_DicomAttributeFactory;

namespace {

constexpr Operation kCreate(L"CKivDSDicomAttributeFactory::CreateDicomAttribute");

} // namespace

CKivDSDicomAttribute* CKivDSDicomAttributeFactory::CreateDicomAttribute(const CKivDSDicomAttribute& src)
{
    const int type = src.GetType();
    if (type == kivds::kPlainAttribute)
        return new (std::nothrow) CKivDSDicomAttribute(src);
    const auto* codes = type == kivds::kCodeSequenceAttribute
                            ? dynamic_cast<const CKivDSCodeSequenceAttribute*>(&src)
                            : nullptr;
    if (codes)
        return new (std::nothrow) CKivDSCodeSequenceAttribute(*codes);
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
