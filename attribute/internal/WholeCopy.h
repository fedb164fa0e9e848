// Whether a copy of an attribute is all there. A copy constructor cannot fail; when memory runs out it leaves
// a copy that lacks something, which whoever can give null in its place does not hand out.
#pragma once

#include "attribute/CKivDSCodeSequenceAttribute.h"

namespace kivds {

inline bool IsWhole(const CKivDSDicomAttribute& copy, const CKivDSDicomAttribute& src)
{
    int copied = 0;
    int values = 0;
    return copy.GetNumberOfValues(&copied) && src.GetNumberOfValues(&values) && copied == values &&
           copy.IsMultiFrame() == src.IsMultiFrame();
}

inline bool IsWhole(const CKivDSCodeSequenceAttribute& copy, const CKivDSCodeSequenceAttribute& src)
{
    const CKivDSDicomAttribute& plainCopy = copy;
    const CKivDSDicomAttribute& plainSrc = src;
    return IsWhole(plainCopy, plainSrc) && copy.GetNumberOfCodes() == src.GetNumberOfCodes();
}

} // namespace kivds
