// What a collection asks of its attributes when it writes its own stream: the length of each one's stream,
// then its bytes. Plain attributes are asked without the virtual table, and are not measured a second time in
// order to be written.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"

namespace kivds {

struct AttributeRecord
{
    /// The length of the attribute's stream; 0 when it cannot tell it.
    static int Length(const CKivDSDicomAttribute& attribute);
    /// Writes the stream of an attribute whose length the same operation has asked for, and that has one.
    /// False when the attribute cannot write it, which it has reported.
    static bool Write(const CKivDSDicomAttribute& attribute, ByteWriter& writer);
};

} // namespace kivds
