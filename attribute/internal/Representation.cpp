#include "attribute/internal/Representation.h"

#include <iterator>

namespace kivds {

const Representation& RepresentationOf(int code) noexcept
{
    using C = Conversion;
    // clang-format off
    static constexpr Representation rows[] = {
        /* -1 */ {nullptr, " N/A ",              C::None,          eAttrNone},
        /*  0 */ {"AE",    "Application entity", C::Text,          eAttrNone},
        /*  1 */ {"AS",    "Age string",         C::Age,           eAttrNone},
        /*  2 */ {"AT",    "Attribute tag",      C::Raw,           eAttrUShort},
        /*  3 */ {"CS",    "Control string",     C::Text,          eAttrNone},
        /*  4 */ {"DA",    "Date",               C::Date,          eAttrNone},
        /*  5 */ {nullptr, "Data set",           C::Raw,           eAttrChar},
        /*  6 */ {"DS",    "Decimal string",     C::DecimalString, eAttrNone},
        /*  7 */ {"FD",    "Double",             C::Raw,           eAttrDouble},
        /*  8 */ {"FL",    "Float",              C::Raw,           eAttrFloat},
        /*  9 */ {"IS",    "Integer string",     C::IntegerString, eAttrNone},
        /* 10 */ {"LO",    "Long string",        C::Text,          eAttrNone},
        /* 11 */ {"LT",    "Long text",          C::Text,          eAttrNone},
        /* 12 */ {"UT",    "Unlimited text",     C::Text,          eAttrNone},
        /* 13 */ {nullptr, "Other binary value", C::Raw,           eAttrChar},
        /* 14 */ {"SH",    "Short string",       C::Text,          eAttrNone},
        /* 15 */ {"SL",    "Signed long",        C::Raw,           eAttrInt},
        /* 16 */ {"SQ",    "Sequence of items",  C::None,          eAttrNone},
        /* 17 */ {"SS",    "Signed short",       C::Raw,           eAttrShort},
        /* 18 */ {"ST",    "Short text",         C::Text,          eAttrNone},
        /* 19 */ {"TM",    "Time",               C::Time,          eAttrNone},
        /* 20 */ {"UI",    "UID",                C::Text,          eAttrNone},
        /* 21 */ {"UL",    "Unsigned long",      C::Raw,           eAttrUInt},
        /* 22 */ {"US",    "Unsigned short",     C::Raw,           eAttrUShort},
        /* 23 */ {"UN",    "Unknown",            C::Raw,           eAttrChar},
        /* 24 */ {nullptr, "Retired",            C::Raw,           eAttrChar},
        /* 25 */ {nullptr, "Context sensitive",  C::Raw,           eAttrChar},
        /* 26 */ {"PN",    "Person Name",        C::PersonName,    eAttrNone},
        /* 27 */ {"OB",    "Byte",               C::Raw,           eAttrChar},
        /* 28 */ {"OW",    "Word",               C::Raw,           eAttrShort},
        /* 29 */ {nullptr, "",                   C::None,          eAttrNone},
        /* 30 */ {"DT",    "Date/Time",          C::DateTime,      eAttrNone},
        /* 31 */ {nullptr, "",                   C::None,          eAttrNone},
        /* 32 */ {nullptr, "Delimeter",          C::None,          eAttrNone},
    };
    // clang-format on
    constexpr int last = static_cast<int>(std::size(rows)) - 2;
    return code >= -1 && code <= last ? rows[code + 1] : rows[29 + 1];
}

} // namespace kivds
