// An attribute as text for people: one line of tag, representation, name, count and values.
#pragma once

#include "dicom/TextDecoder.h"
#include "tools/Console.h"
#include "tools/Walk.h"

#include <string>
#include <string_view>

namespace kivds::tool {

class TextForm
{
public:
    /// For the attributes of `collection`, and of its frames: its Specific Character Set and private creators
    /// count.
    explicit TextForm(const Collection& collection);

    /// The columns of an attribute's line. `count` is the number of values, for a value of several numbers
    /// with their number (1x3).
    Line LineOf(const Attribute& attribute, std::string_view mark = {}, Style markStyle = Style::Plain);
    /// The same without the values, for a line that says something else about them.
    Line Head(const Attribute& attribute, std::string_view mark, Style markStyle,
              std::string_view count) const;
    /// The values, and what else there is to know about them.
    std::string Values(const Attribute& attribute);
    std::string NameOf(unsigned long tag) const;
    /// Text as UTF-8 on one line; control characters stand as \x and two hex digits.
    std::string Decode(std::string_view text, bool localized);

    /// Text as UTF-8 as it is.
    TextDecoder& Decoder() { return m_Decoder; }

private:
    std::string ValueText(const Attribute& attribute, const SKivAGAttributeValue& value);
    std::string CodeText(const Code& code);

    const Collection* m_pCollection; // borrowed, for its private creators
    TextDecoder m_Decoder;
};

/// (gggg,eeee)
std::string TagText(unsigned long tag);
/// The value representation of a code, as DICOM names it, or the code's number.
std::string VrText(int code);

} // namespace kivds::tool
