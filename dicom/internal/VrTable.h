// The value representations (PS3.5 6.2): how each is held in a collection and how its padding is told from
// its value.
#pragma once

#include <string_view>

namespace kivds {

enum class VrForm
{
    Binary,
    Sequence,
    Strings, // values separated by backslashes
    Text,    // one value, in which a backslash is a character
    Name,    // as Strings; a value has components
    Numbers,
    Dates,
    Times,
    DateTimes,
    Ages
};

struct Vr
{
    std::string_view name;
    int code; // representation code
    VrForm form;
    unsigned unit;    // bytes of one element of a binary value
    bool isCodesOwn;  // the code stands for this representation
    bool isLocalized; // in the object's character set
};

/// The row of a value representation; that of UN for unknown names.
const Vr& VrOf(std::string_view name) noexcept;
/// The row of the representation that a code stands for; null when there is none.
const Vr* VrOfCode(int code) noexcept;

inline bool IsBinary(const Vr& vr) noexcept
{
    return vr.form == VrForm::Binary || vr.form == VrForm::Sequence;
}

} // namespace kivds
