#include "dicom/TextDecoder.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcspchrs.h>
#include <dcmtk/ofstd/ofchrenc.h>

#include <algorithm>
#include <cstddef>

namespace kivds {
namespace {

unsigned Byte(char c)
{
    return static_cast<unsigned char>(c);
}

/// The length of the well-formed UTF-8 sequence (Unicode table 3-7) that `text` begins with; 0 when there is
/// none.
std::size_t Utf8Length(std::string_view text)
{
    const unsigned lead = Byte(text[0]);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || text.size() < length)
        return 0;
    const unsigned second = Byte(text[1]);
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (second < lowest || second > highest)
        return 0;
    const auto isContinuation = [](char c) { return (Byte(c) & 0xC0) == 0x80; };
    return std::all_of(text.begin() + 2, text.begin() + static_cast<std::ptrdiff_t>(length), isContinuation)
               ? length
               : 0;
}

void AppendEscaped(std::string& out, char c)
{
    static const char digits[] = "0123456789ABCDEF";
    out += "\\x";
    out += digits[Byte(c) >> 4];
    out += digits[Byte(c) & 0xF];
}

/// Copies what is well-formed UTF-8 and escapes every other byte.
std::string EscapeInvalid(std::string_view text, bool asciiOnly)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = asciiOnly && Byte(text[0]) >= 0x80 ? 0 : Utf8Length(text);
        if (length == 0)
            AppendEscaped(out, text[0]);
        out += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

} // namespace

struct TextDecoder::Converter
{
    DcmSpecificCharacterSet characterSet;
    OFCharacterEncoding japanese;
    bool isJapanese = false;

    bool Select(const OFString& terms)
    {
        if (characterSet.selectCharacterSet(terms).good())
            return true;
        // The Japanese sets are unknown to DCMTK where the C library converts for it, but their escape
        // sequences are those of ISO-2022-JP-2 (RFC 1554).
        isJapanese =
            terms.find("ISO 2022 IR 87") != OFString_npos || terms.find("ISO 2022 IR 159") != OFString_npos;
        return isJapanese && japanese.selectEncoding("ISO-2022-JP-2", "UTF-8").good();
    }

    bool Convert(std::string_view text, std::string& out)
    {
        OFString converted;
        // The delimiters at which code extensions end (PS3.5 6.1.2.5.3) have parted the values already, but
        // for PN.
        const OFCondition result =
            isJapanese ? japanese.convertString(text.data(), text.size(), converted, OFTrue)
                       : characterSet.convertString(text.data(), text.size(), converted, "\\^=");
        if (result.good())
            out += EscapeInvalid(std::string_view(converted.data(), converted.size()), false);
        return result.good();
    }
};

TextDecoder::TextDecoder(const std::string& characterSet)
{
    std::string terms =
        characterSet.substr(std::min(characterSet.find_first_not_of(' '), characterSet.size()));
    if (terms.empty())
        return;
    if (terms == "ISO_IR 192") {
        m_bUtf8 = true; // DCMTK takes UTF-8 for UTF-8 unseen
        return;
    }
    // A collection drops an empty first value, which stands for ASCII. These terms cannot be the first value.
    const std::string first = terms.substr(0, terms.find('\\'));
    for (const char* const second :
         {"ISO 2022 IR 58", "ISO 2022 IR 87", "ISO 2022 IR 149", "ISO 2022 IR 159"}) {
        if (first == second)
            terms.insert(0, "\\");
    }
    auto converter = std::make_unique<Converter>();
    if (converter->Select(OFString(terms.data(), terms.size())))
        m_pConverter = std::move(converter);
}

TextDecoder::~TextDecoder() = default;
TextDecoder::TextDecoder(TextDecoder&&) noexcept = default;
TextDecoder& TextDecoder::operator=(TextDecoder&&) noexcept = default;

std::string TextDecoder::ToUtf8(std::string_view text, bool localized)
{
    if (!localized || !m_pConverter)
        return EscapeInvalid(text, !localized || !m_bUtf8);
    std::string out;
    if (m_pConverter->Convert(text, out))
        return out;
    if (text.find('\x1B') != std::string_view::npos)
        return out + EscapeInvalid(text, true); // its parts do not stand by themselves
    // Character by character, so that what can be converted is.
    while (!text.empty()) {
        std::size_t length = 1;
        while (length <= std::min<std::size_t>(text.size(), 4) &&
               !m_pConverter->Convert(text.substr(0, length), out))
            ++length;
        if (length > std::min<std::size_t>(text.size(), 4)) {
            length = 1;
            AppendEscaped(out, text[0]);
        }
        text.remove_prefix(length);
    }
    return out;
}

} // namespace kivds
