#include "tools/Text.h"

#include "dicom/DicomNames.h"
#include "tools/Numbers.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace kivds::tool {
namespace {

constexpr int kAge = 1;
constexpr int kAttributeTag = 2;
constexpr int kDate = 4;
constexpr int kTime = 19;
constexpr int kDateTime = 30;
constexpr int kFewBytes = 24; // of binary data that a line shows

/// The elements of a value of `N` ints, as dates, times and ages have them; false for anything else.
template <std::size_t N>
bool IntsOf(const SKivAGAttributeValue& value, std::array<int, N>& ints)
{
    if (value.eType != eAttrInt || ReadableCount(value) != static_cast<int>(N))
        return false;
    for (std::size_t i = 0; i < N; ++i)
        ints[i] = ElementAt<int>(value, static_cast<int>(i));
    return true;
}

/// A time of day; its fraction is held as the digits' number, without the zeros that they begin with.
std::string ClockText(int hours, int minutes, int seconds, int fraction)
{
    return fmt::format("{:02}:{:02}:{:02}", hours, minutes, seconds) +
           (fraction ? fmt::format(" fraction {}", fraction) : "");
}

/// Dates, times and ages as people write them; false for other representations and for values that are none.
bool CalendarText(int representation, const SKivAGAttributeValue& value, std::string& text)
{
    std::array<int, 2> age{};
    std::array<int, 3> date{};
    std::array<int, 4> time{};
    std::array<int, 9> moment{};
    if (representation == kAge && IntsOf(value, age) && age[1] > ' ' && age[1] <= '~')
        text = fmt::format("{}{}", age[0], static_cast<char>(age[1]));
    else if (representation == kDate && IntsOf(value, date))
        text = fmt::format("{:04}-{:02}-{:02}", date[0], date[1], date[2]);
    else if (representation == kTime && IntsOf(value, time))
        text = ClockText(time[0], time[1], time[2], time[3]);
    else if (representation == kDateTime && IntsOf(value, moment)) {
        text = fmt::format("{:04}-{:02}-{:02} ", moment[0], moment[1], moment[2]) +
               ClockText(moment[3], moment[4], moment[5], moment[6]);
        if (moment[7] || moment[8])
            text += fmt::format(" offset {}{:02}:{:02}", moment[7] < 0 || moment[8] < 0 ? '-' : '+',
                                std::abs(moment[7]), std::abs(moment[8]));
    } else {
        return false;
    }
    return true;
}

std::string NumbersText(const Attribute& attribute, const SKivAGAttributeValue& value)
{
    const int count = ReadableCount(value);
    if (attribute.GetDicomRepresentation() == kAttributeTag && value.eType == eAttrUShort && count % 2 == 0) {
        std::string tags;
        for (int i = 0; i < count; i += 2)
            tags += fmt::format("{}({:04x},{:04x})", i ? "\\" : "", ElementAt<std::uint16_t>(value, i),
                                ElementAt<std::uint16_t>(value, i + 1));
        return tags;
    }
    const char* const vr = VrOfRepresentation(attribute.GetDicomRepresentation());
    const bool isBulk = value.eType == eAttrChar || (vr && std::string_view(vr) == "OW");
    const int shown = isBulk ? std::min(count, kFewBytes) : count;
    std::string text;
    for (int i = 0; i < shown; ++i)
        WithElement(value, i, [&](auto number) {
            fmt::format_to(std::back_inserter(text), i ? "\\{}" : "{}", number);
        });
    if (shown < count)
        text += fmt::format("\\... {} more", count - shown);
    return text;
}

} // namespace

std::string TagText(unsigned long tag)
{
    return fmt::format("({:04x},{:04x})", tag >> 16, tag & 0xFFFF);
}

std::string VrText(int code)
{
    const char* const vr = VrOfRepresentation(code);
    return vr ? vr : std::to_string(code);
}

TextForm::TextForm(const Collection& collection)
    : m_pCollection(&collection), m_Decoder(TextOf(collection, 0x00080005))
{
}

std::string TextForm::Decode(std::string_view text, bool localized)
{
    std::string line;
    for (const char c : m_Decoder.ToUtf8(text, localized)) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            line += fmt::format("\\x{:02X}", c);
        else
            line += c;
    }
    return line;
}

std::string TextForm::NameOf(unsigned long tag) const
{
    if (tag == 0x37110090)
        return "FrameIndex"; // the library's own, in the collection of one frame
    const unsigned long group = tag >> 16;
    const unsigned long block = (tag & 0xFFFF) >> 8;
    const bool isPrivate = group % 2 == 1 && block >= 0x10;
    return AttributeKeyword(tag, isPrivate ? TextOf(*m_pCollection, group << 16 | block) : std::string());
}

std::string TextForm::ValueText(const Attribute& attribute, const SKivAGAttributeValue& value)
{
    const int representation = attribute.GetDicomRepresentation();
    std::string text;
    if (value.eType == eAttrChar && IsText(representation))
        return Decode(TextOf(value), IsLocalizedText(representation));
    if (CalendarText(representation, value, text))
        return text;
    return NumbersText(attribute, value);
}

std::string TextForm::CodeText(const Code& code)
{
    std::string text =
        fmt::format("({}, {}", Decode(code.szCodeValue, true), Decode(code.szCodingSchemeDesignator, true));
    if (code.szCodingSchemeVersion[0])
        text += fmt::format(" [{}]", Decode(code.szCodingSchemeVersion, true));
    return text + fmt::format(", \"{}\")", Decode(code.szCodeMeaning, true));
}

std::string TextForm::Values(const Attribute& attribute)
{
    if (IsPlaceholder(attribute))
        return TagOf(attribute) == kPixelData ? "pixel data, not kept" : "a sequence, not kept";
    std::string text;
    const auto add = [&](const std::string& value) { text += (text.empty() ? "" : "\\") + value; };
    std::string items;
    const int count = NumberOfValues(attribute);
    if (const CKivDSCodeSequenceAttribute* const codes = AsCodes(attribute)) {
        for (int i = 0; i < codes->GetNumberOfCodes(); ++i)
            add(CodeText(*codes->GetCodePtr(i)));
    } else {
        for (int i = 0; i < count; ++i) {
            const SKivAGAttributeValue& value = *attribute.GetValuePtr(i);
            add(ValueText(attribute, value));
            items += fmt::format("{}{}", i ? "," : "", value.nInSequenceIndex);
        }
        // Values of several items are told apart by their index.
        if (items.find_first_not_of("0,-") != std::string::npos && attribute.MustReplicate())
            text += "  item " + items;
    }
    for (const auto& [first, last] : FrameRunsOf(attribute))
        text += first == last ? fmt::format("  frame {}", first) : fmt::format("  frames {}-{}", first, last);
    return text;
}

Line TextForm::Head(const Attribute& attribute, std::string_view mark, Style markStyle,
                    std::string_view count) const
{
    Line line;
    const unsigned long tag = TagOf(attribute);
    line.Add(mark, markStyle).Add(TagText(tag), Style::Cyan).Add(" ");
    line.AddColumn(VrText(attribute.GetDicomRepresentation()), 3, Style::Faint);
    line.AddColumn(NameOf(tag), 36, Style::Bold).Add(" ");
    line.AddColumn(count, 4, Style::Faint).Add(" ");
    return line;
}

Line TextForm::LineOf(const Attribute& attribute, std::string_view mark, Style markStyle)
{
    const int values = NumberOfValues(attribute);
    std::string count = std::to_string(values);
    const int representation = attribute.GetDicomRepresentation();
    std::string calendar;
    if (values == 1 && !IsText(representation) && !IsPlaceholder(attribute)) {
        const SKivAGAttributeValue& value = *attribute.GetValuePtr(0);
        if (value.nCount != 1 && !CalendarText(representation, value, calendar) && !AsCodes(attribute))
            count += fmt::format("x{}", value.nCount);
    }
    return Head(attribute, mark, markStyle, count).Add(Values(attribute));
}

} // namespace kivds::tool
