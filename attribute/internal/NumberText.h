// Numbers in element text, read by the rules of the standard's atoi, strtol and strtod, but within given
// bounds and always with the point as decimal separator, whatever the process's locale. Nothing is copied or
// allocated.
#pragma once

#include <cstdint>
#include <string_view>

namespace kivds {

/// Reads one integer at `position` (white space, sign, digits; PS3.5 6.2 IS). On success `position` moves
/// behind it and `value` receives it, clamped to 32 bits; false, with nothing changed, when there is no digit
/// before `end`.
bool ReadInteger(const char*& position, const char* end, int& value) noexcept;

/// Reads one decimal number at `position` (PS3.5 6.2 DS), as above. Beyond the range of a double it is an
/// infinity or 0 with the number's sign.
bool ReadDecimal(const char*& position, const char* end, double& value) noexcept;

/// The integer that a run of characters begins with; 0 when it begins with none.
int IntegerAtStart(std::string_view run) noexcept;

/// The same for up to `count` characters from `start`, as far as the text has them.
int IntegerAt(std::string_view text, std::size_t start, std::size_t count) noexcept;

} // namespace kivds
