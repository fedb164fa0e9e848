// Text of a DICOM object as UTF-8. A collection holds text as the object encodes it, and the name of the
// encoding in Specific Character Set (0008,0005); this class converts it. One thread at a time.
#pragma once

#include "dicom/Export.h"

#include <memory>
#include <string>
#include <string_view>

namespace kivds {

/// Converts with DCMTK's tables; no byte is lost.
class KIV_DICOM_API TextDecoder
{
public:
    /// `characterSet`: the values of Specific Character Set, backslashes between them (PS3.3 C.12.1.1.2).
    /// Empty or unknown: ASCII.
    explicit TextDecoder(const std::string& characterSet = {});
    ~TextDecoder();
    /// The other is only to be destroyed or assigned to then.
    TextDecoder(TextDecoder&&) noexcept;
    /// Takes the other's character set over.
    TextDecoder& operator=(TextDecoder&&) noexcept;

    /// Valid UTF-8. Each byte that cannot be converted stands as `\x` and two hex digits. `localized` false:
    /// the value is not subject to the character set, hence ASCII.
    std::string ToUtf8(std::string_view text, bool localized = true);

private:
    struct Converter;
    std::unique_ptr<Converter> m_pConverter; // null: ASCII
    bool m_bUtf8 = false;
};

} // namespace kivds
