// Numbers in element text, read by the rules of the standard's atoi, strtol and strtod, but within given
// bounds and always with the point as decimal separator, whatever the process's locale. Nothing is copied or
// allocated.
#pragma once

#include <cstddef>
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

/// The integer that up to `count` characters from `start` begin with, as far as the text has them; 0 when
/// they begin with none.
int IntegerAt(std::string_view text, std::size_t start, std::size_t count) noexcept;

/// The digit that a character stands for; above 9 when it is none.
constexpr unsigned DigitOf(char c) noexcept
{
    return static_cast<unsigned char>(c) - unsigned{'0'};
}

/// The same for a number of characters that is known beforehand, and that are digits as a rule.
template <std::size_t count>
int IntegerAt(std::string_view text, std::size_t start) noexcept
{
    static_assert(count <= 9, "an int holds the number");
    if (start > text.size() || text.size() - start < count)
        return IntegerAt(text, start, count);
    int number = 0;
    for (std::size_t i = start; i < start + count; ++i) {
        const unsigned digit = DigitOf(text[i]);
        if (digit > 9)
            return IntegerAt(text, start, count);
        number = number * 10 + static_cast<int>(digit);
    }
    return number;
}

} // namespace kivds
