// Copies of attributes as the collections make them: through the factory, so that an attribute keeps its
// class.
#pragma once

#include "attribute/CKivDSDicomAttributeFactory.h"
#include "attribute/internal/AttributeTypes.h"
#include "foundation/internal/Operation.h"

#include <memory>

namespace kivds {

/// A copy of an attribute; null, with a report, when it cannot be had. The factory reports an unknown type
/// itself and is silent when memory runs out.
inline std::unique_ptr<CKivDSDicomAttribute> CopyOf(const CKivDSDicomAttribute& attribute,
                                                    const Operation& op)
{
    std::unique_ptr<CKivDSDicomAttribute> copy(g_DicomAttributeFactory.CreateDicomAttribute(attribute));
    if (!copy && IsAttributeType(attribute.GetType()))
        op.Report(kUnexpectedError);
    return copy;
}

} // namespace kivds
