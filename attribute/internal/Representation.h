// The representation codes: what each stands for in DICOM, how the dump names it, and how an element's bytes
// become values. The one place that knows them.
#pragma once

#include "foundation/AttributeValue.h"

namespace kivds {

/// The codes that the library itself gives a meaning beyond the table's.
enum RepresentationCode : int
{
    kAttributeTag = 2,
    kControlString = 3,
    kOtherBinary = 13,
    kSequence = 16,
    kUnsignedShort = 22,
    kByte = 27
};

enum class Conversion
{
    None,
    Text,
    PersonName,
    Age,
    Date,
    Time,
    DateTime,
    DecimalString,
    IntegerString,
    Raw // the element's bytes as they stand
};

struct Representation
{
    const char* vr;          // PS3.5 6.2; null where the standard has none
    const char* description; // as the dump prints it
    Conversion conversion;
    tagEKivAGAttributeType elementType; // of raw values
};

/// The row of a code; a code without one has an empty description and no conversion.
const Representation& RepresentationOf(int code) noexcept;

} // namespace kivds
