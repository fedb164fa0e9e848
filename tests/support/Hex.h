// Bytes as hexadecimal text, for golden streams: pairs of digits, blanks and line breaks between them as one
// likes, and a comment from // to the end of a line.
#pragma once

#include <string>
#include <string_view>

namespace kivds::test {

/// The bytes of a hexadecimal text.
std::string Bytes(std::string_view hex);

/// The four bytes of a number, the low one first.
std::string Int(long long number);

/// Bytes as text, sixteen to a line.
std::string Hex(std::string_view bytes);

} // namespace kivds::test
