#include "attribute/internal/NumberText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace kivds {

namespace {

/// The digit that a character stands for; above 9 when it is none.
unsigned DigitOf(char c) noexcept
{
    return static_cast<unsigned char>(c) - unsigned{'0'};
}

bool IsDigit(char c) noexcept
{
    return DigitOf(c) <= 9;
}

bool IsHexDigit(char c) noexcept
{
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Passes white space and a sign; gives the sign.
bool PassSign(const char*& p, const char* end) noexcept
{
    if (p != end && IsDigit(*p)) // mostly
        return false;
    while (p != end && (*p == ' ' || (*p >= '\t' && *p <= '\r')))
        ++p;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    return negative;
}

/// Whether a hexadecimal number follows: 0x and a digit, perhaps behind the point.
bool IsHexadecimal(const char* p, const char* end) noexcept
{
    if (end - p < 3 || p[0] != '0' || (p[1] != 'x' && p[1] != 'X'))
        return false;
    return IsHexDigit(p[2]) || (p[2] == '.' && end - p > 3 && IsHexDigit(p[3]));
}

/// Reads a number that is nothing but digits, as half of all decimal strings are, and so few of them that a
/// double holds it exactly. False, with nothing changed, when it may go on or begins otherwise.
bool ReadWhole(const char*& position, const char* end, double& value) noexcept
{
    constexpr std::ptrdiff_t most = 15;
    std::int64_t number = 0;
    const char* p = position;
    for (unsigned digit = 0; p != end && p - position < most && (digit = DigitOf(*p)) <= 9; ++p)
        number = number * 10 + digit;
    const bool goesOn = p != end && (*p == '.' || IsHexDigit(*p) || *p == 'x' || *p == 'X');
    if (p == position || goesOn)
        return false;
    value = static_cast<double>(number);
    position = p;
    return true;
}

/// Whether the number first..last, known to be out of a double's range, is too large rather than too small:
/// whether its first significant digit stands, exponent included, in front of the point.
bool IsTooLarge(const char* first, const char* last, bool hexadecimal) noexcept
{
    const char* const exponentMark = std::find_if(
        first, last, [&](char c) { return hexadecimal ? c == 'p' || c == 'P' : c == 'e' || c == 'E'; });
    const char* const point = std::find(first, exponentMark, '.');
    const char* const digit = std::find_if(first, exponentMark, [](char c) { return c != '0' && c != '.'; });
    const std::int64_t digitScale = hexadecimal ? 4 : 1;
    const std::int64_t magnitude = (point - digit) * digitScale;
    int exponent = 0;
    if (exponentMark != last) {
        const char* p = exponentMark + 1;
        ReadInteger(p, last, exponent);
    }
    return magnitude + exponent > 0;
}

} // namespace

bool ReadInteger(const char*& position, const char* end, int& value) noexcept
{
    constexpr std::int64_t limit = std::int64_t{std::numeric_limits<int>::max()} + 1;
    const char* p = position;
    const bool negative = PassSign(p, end);
    if (p == end || !IsDigit(*p))
        return false;
    std::int64_t number = 0;
    for (unsigned digit = 0; p != end && (digit = DigitOf(*p)) <= 9; ++p)
        number = std::min(number * 10 + digit, limit);
    value = static_cast<int>(negative ? -number : std::min(number, limit - 1));
    position = p;
    return true;
}

bool ReadDecimal(const char*& position, const char* end, double& value) noexcept
{
    const char* p = position;
    const bool negative = PassSign(p, end);
    if (p == end || *p == '-')
        return false; // from_chars would take a second sign
    if (ReadWhole(p, end, value)) {
        value = negative ? -value : value;
        position = p;
        return true;
    }
    const bool hexadecimal = IsHexadecimal(p, end);
    if (hexadecimal)
        p += 2;
    double number = 0;
    const auto [behind, error] =
        std::from_chars(p, end, number, hexadecimal ? std::chars_format::hex : std::chars_format::general);
    if (error == std::errc::invalid_argument)
        return false;
    if (error == std::errc::result_out_of_range)
        number = IsTooLarge(p, behind, hexadecimal) ? std::numeric_limits<double>::infinity() : 0.0;
    value = negative ? -number : number;
    position = behind;
    return true;
}

int IntegerAtStart(std::string_view run) noexcept
{
    // Runs are mostly a few digits, and nothing else.
    constexpr std::size_t most = 9;
    int number = 0;
    std::size_t digits = 0;
    for (; digits < run.size() && digits < most && IsDigit(run[digits]); ++digits)
        number = number * 10 + static_cast<int>(DigitOf(run[digits]));
    if (digits == run.size())
        return number;
    const char* position = run.data();
    int value = 0;
    ReadInteger(position, run.data() + run.size(), value);
    return value;
}

int IntegerAt(std::string_view text, std::size_t start, std::size_t count) noexcept
{
    return start < text.size() ? IntegerAtStart(text.substr(start, count)) : 0;
}

} // namespace kivds
