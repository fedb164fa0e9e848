// The attribute factory: creates attributes by type number or as copies, so that code that does not know an
// attribute's class can make one. It has no state; the global is usable from load to unload, on any thread.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "platform/Export.h"

class KIVDS_API CKivDSDicomAttributeFactory
{
public:
    constexpr CKivDSDicomAttributeFactory() noexcept {}
    constexpr CKivDSDicomAttributeFactory(const CKivDSDicomAttributeFactory&) noexcept {}
    CKivDSDicomAttributeFactory& operator=(const CKivDSDicomAttributeFactory&) noexcept { return *this; }

    /// A new copy of `src`, of `src`'s class, that the caller owns. "Unknown DICOM attribute type" under
    /// "CKivDSDicomAttributeFactory::CreateDicomAttribute": null. Null without a report when no memory can be
    /// had.
    virtual CKivDSDicomAttribute* CreateDicomAttribute(const CKivDSDicomAttribute& src);
    /// A new attribute without values that the caller owns: type 0 CKivDSDicomAttribute, type 1
    /// CKivDSCodeSequenceAttribute. "Unknown input DICOM attribute type" under the same name: null. Null
    /// without a report when no memory can be had.
    virtual CKivDSDicomAttribute* CreateDicomAttribute(int type);
};

extern KIVDS_API CKivDSDicomAttributeFactory g_DicomAttributeFactory;
