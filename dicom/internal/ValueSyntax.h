// Whether a value of text reads as its value representation says (PS3.5 6.2), as far as an attribute can hold
// it.
#pragma once

#include "dicom/internal/VrTable.h"

#include <string_view>

namespace kivds {

/// Why an attribute cannot hold `value`, one of the backslash-separated values of a text; null when it can.
const char* FaultOf(std::string_view value, const Vr& vr);

/// Whether a byte of a character of several bytes reads as one of `delimiters`: in ISO 2022 sets of two 7-bit
/// bytes (PS3.3 Table C.12-4), and, with `isChinese`, in GB18030 and GBK. The text is parted there all the
/// same.
bool CutsCharacters(std::string_view text, std::string_view delimiters, bool isChinese);

} // namespace kivds
