#include "attribute/internal/NumberText.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <limits>
#include <system_error>

namespace kivds {

namespace {

bool IsDigit(char c) noexcept
{
    return DigitOf(c) <= 9;
}

bool IsHexDigit(char c) noexcept
{
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Passes the digits from `p` on and appends them to `number`, which must have room for them.
const char* PassDigits(const char* p, const char* end, std::int64_t& number) noexcept
{
    for (unsigned digit = 0; p != end && (digit = DigitOf(*p)) <= 9; ++p)
        number = number * 10 + digit;
    return p;
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

/// 1, 10, 100 and so on: powers of ten that a double holds exactly.
constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::ptrdiff_t kExactDigits = 15; // of which a double holds every number exactly

/// Reads digits with perhaps a point among them, as nearly all decimal strings are. They make a whole number
/// divided by a power of ten, which is rounded once, so that the result is the nearest double (were the
/// division's precision another, it would be rounded twice). False, with nothing changed, when there are too
/// many digits for that, or something else.
bool ReadPlainDecimal(const char*& position, const char* end, double& value) noexcept
{
    const char* const limit = position + std::min(end - position, kExactDigits + 1);
    std::int64_t number = 0;
    const char* p = PassDigits(position, limit, number);
    std::ptrdiff_t digits = p - position;
    std::ptrdiff_t decimals = 0;
    if (p != limit && *p == '.' && FLT_EVAL_METHOD == 0) {
        const char* const fraction = p + 1;
        p = PassDigits(fraction, limit, number);
        decimals = p - fraction;
        digits += decimals;
    }
    const bool goesOn = p != end && (*p == '.' || IsHexDigit(*p) || *p == 'x' || *p == 'X');
    if (digits == 0 || digits > kExactDigits || goesOn)
        return false;
    value = static_cast<double>(number);
    if (decimals > 0)
        value /= kPowersOfTen[decimals];
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
    if (ReadPlainDecimal(p, end, value)) {
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

int IntegerAt(std::string_view text, std::size_t start, std::size_t count) noexcept
{
    int value = 0;
    if (start < text.size()) {
        const std::string_view run = text.substr(start, count);
        const char* position = run.data();
        ReadInteger(position, run.data() + run.size(), value);
    }
    return value;
}

} // namespace kivds
