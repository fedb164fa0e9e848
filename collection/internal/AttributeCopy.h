// Copies of attributes as the collections make them: an attribute keeps its class.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/AttributeTypes.h"
#include "collection/AttributeMap.h"
#include "foundation/internal/Operation.h"

#include <memory>

namespace kivds {

/// A copy of an attribute for a map; null, with a report, when it cannot be had. The factory reports an
/// unknown type itself and is silent when memory runs out.
inline std::unique_ptr<CKivDSDicomAttribute> CopyOf(const CKivDSDicomAttribute& attribute, AttributeMap& map,
                                                    const Operation& op, std::size_t expected = 0)
{
    std::unique_ptr<CKivDSDicomAttribute> copy = map.NewCopy(attribute, expected);
    if (!copy && IsAttributeType(attribute.GetType()))
        op.Report(kUnexpectedError);
    return copy;
}

} // namespace kivds
