#include "dicom/internal/ValueSyntax.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

namespace kivds {
namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether `text` is as `pattern`: 0 stands for a digit, everything else for itself.
bool Matches(std::string_view text, std::string_view pattern)
{
    return text.size() == pattern.size() &&
           std::equal(text.begin(), text.end(), pattern.begin(),
                      [](char c, char wanted) { return wanted == '0' ? IsDigit(c) : c == wanted; });
}

/// sign? digits (. digits)? ((E|e) sign? digits)?, with digits on at least one side of the point
bool IsDecimal(std::string_view text)
{
    const auto skip = [&](auto isSkipped) {
        std::size_t count = 0;
        while (count < text.size() && isSkipped(text[count]))
            ++count;
        text.remove_prefix(count);
        return count;
    };
    const auto skipOne = [&](std::string_view choice) {
        const bool found = !text.empty() && choice.find(text.front()) != std::string_view::npos;
        text.remove_prefix(found ? 1 : 0);
        return found;
    };
    skipOne("+-");
    std::size_t digits = skip(IsDigit);
    if (skipOne("."))
        digits += skip(IsDigit);
    if (digits == 0)
        return false;
    if (skipOne("Ee")) {
        skipOne("+-");
        if (skip(IsDigit) == 0)
            return false;
    }
    return text.empty();
}

const char* IntegerFault(std::string_view text)
{
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument || end != text.data() + text.size())
        return "is no integer";
    const bool fits = error == std::errc() && number >= std::numeric_limits<std::int32_t>::min() &&
                      number <= std::numeric_limits<std::int32_t>::max();
    return fits ? nullptr : "is beyond 32 bits";
}

/// HH, HHMM, HHMMSS or HHMMSS.F to .FFFFFF, also with colons as in older objects.
bool IsTime(std::string_view text)
{
    const std::string_view clock = text.substr(0, text.find('.'));
    if (clock.size() == text.size())
        return Matches(text, "00") || Matches(text, "0000") || Matches(text, "000000") ||
               Matches(text, "00:00") || Matches(text, "00:00:00");
    const std::string_view fraction = text.substr(clock.size() + 1);
    return (Matches(clock, "000000") || Matches(clock, "00:00:00")) &&
           std::all_of(fraction.begin(), fraction.end(), IsDigit) && !fraction.empty() &&
           fraction.size() <= 6;
}

/// YYYY[MM[DD[HH[MM[SS[.F to .FFFFFF]]]]]][&ZZXX]
bool IsDateTime(std::string_view text)
{
    const auto sign = text.find_first_of("+-");
    if (sign != std::string_view::npos && !Matches(text.substr(sign + 1), "0000"))
        return false;
    const std::string_view local = text.substr(0, sign);
    const std::string_view whole = local.substr(0, local.find('.'));
    if (whole.size() < local.size() && (whole.size() != 14 || !IsTime(local.substr(8))))
        return false;
    return whole.size() >= 4 && whole.size() <= 14 && whole.size() % 2 == 0 &&
           std::all_of(whole.begin(), whole.end(), IsDigit);
}

} // namespace

const char* FaultOf(std::string_view value, const Vr& vr)
{
    if (vr.form == VrForm::Name)
        return nullptr; // empty components are never held
    if (value.empty())
        return "is empty";
    switch (vr.form) {
    case VrForm::Numbers:
        return vr.name == "IS" ? IntegerFault(value) : IsDecimal(value) ? nullptr : "is no decimal number";
    case VrForm::Dates:
        return Matches(value, "00000000") || Matches(value, "0000.00.00") ? nullptr : "is no date";
    case VrForm::Times:
        return IsTime(value) ? nullptr : "is no time";
    case VrForm::DateTimes:
        return IsDateTime(value) ? nullptr : "is no date and time";
    case VrForm::Ages:
        return value.find_first_of("DWMYdwmy") != std::string_view::npos ? nullptr : "is no age";
    default:
        return nullptr;
    }
}

bool CutsCharacters(std::string_view text, std::string_view delimiters, bool isChinese)
{
    const auto isDelimiter = [&](std::size_t i) {
        return delimiters.find(text[i]) != std::string_view::npos;
    };
    bool isWide = false; // two 7-bit bytes a character
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead == 0x1B) { // ESC $ B, ESC $ ( D and their like begin, ESC ( B and its like end
            if (text[i + 1] == '$')
                isWide = i + 2 < text.size() && text[i + 2] != ')';
            else if (text[i + 1] == '(')
                isWide = false;
            i += text[i + 1] == '$' && i + 2 < text.size() && (text[i + 2] == '(' || text[i + 2] == ')') ? 3
                                                                                                         : 2;
        } else if (isWide || (isChinese && lead >= 0x81)) {
            if ((isWide && isDelimiter(i)) || isDelimiter(i + 1))
                return true;
            ++i;
        }
    }
    return false;
}

} // namespace kivds
