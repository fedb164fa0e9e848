// The attribute factory: creates attributes by type number or as copies, so that code that does not know an
// attribute's class can make one. It has no state; the global is usable from load to unload, on any thread.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "platform/Export.h"

/// Makes attributes for code that does not know their classes. A caller's own subclasses are made by the
/// caller: the factory knows two classes, and copies everything else as one of them or not at all.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): the virtual table is fixed
class KIVDS_API CKivDSDicomAttributeFactory
{
public:
    // NOLINTBEGIN(modernize-use-equals-default): fixed, and not trivial
    constexpr CKivDSDicomAttributeFactory() noexcept {}
    /// Copies nothing.
    constexpr CKivDSDicomAttributeFactory(const CKivDSDicomAttributeFactory&) noexcept {}
    /// Copies nothing.
    CKivDSDicomAttributeFactory& operator=(const CKivDSDicomAttributeFactory&) noexcept { return *this; }
    // NOLINTEND(modernize-use-equals-default)

    /// A new copy of `src`, that the caller owns, of the class that its type (GetType) names: 0
    /// CKivDSDicomAttribute, 1 CKivDSCodeSequenceAttribute. A caller's subclass of type 0 is copied as a
    /// plain attribute, one of type 1 with the records and nothing of its own; so are they by collections,
    /// which copy through the factory. "Unknown DICOM attribute type" under
    /// "CKivDSDicomAttributeFactory::CreateDicomAttribute" for any other type, and for type 1 where `src` is
    /// no code sequence attribute: null. Null without a report when no memory can be had.
    virtual CKivDSDicomAttribute* CreateDicomAttribute(const CKivDSDicomAttribute& src);
    /// A new attribute without values that the caller owns: type 0 CKivDSDicomAttribute, type 1
    /// CKivDSCodeSequenceAttribute. "Unknown input DICOM attribute type" under the same name: null. Null
    /// without a report when no memory can be had.
    virtual CKivDSDicomAttribute* CreateDicomAttribute(int type);
};

/// The factory of the process.
extern KIVDS_API CKivDSDicomAttributeFactory g_DicomAttributeFactory;
