// Whether a copy of an attribute is all there. A copy constructor cannot fail; when memory runs out it leaves
// a copy that lacks something, which whoever can give null in its place does not hand out.
#pragma once

#include "attribute/CKivDSCodeSequenceAttribute.h"

namespace kivds {

inline bool IsWhole(const CKivDSDicomAttribute& copy, const CKivDSDicomAttribute& src)
{
    // The values are those of the base class, whatever a derived class says of them.
    using Attribute = CKivDSDicomAttribute;
    int copied = 0;
    int values = 0;
    copy.Attribute::GetNumberOfValues(&copied);
    src.Attribute::GetNumberOfValues(&values);
    return copied == values && copy.Attribute::IsMultiFrame() == src.IsMultiFrame();
}

inline bool IsWhole(const CKivDSCodeSequenceAttribute& copy, const CKivDSCodeSequenceAttribute& src)
{
    const CKivDSDicomAttribute& plainCopy = copy;
    const CKivDSDicomAttribute& plainSrc = src;
    return IsWhole(plainCopy, plainSrc) && copy.GetNumberOfCodes() == src.GetNumberOfCodes();
}

} // namespace kivds
