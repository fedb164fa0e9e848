// Names from the DICOM standard: value representations (PS3.5 6.2) and the data dictionary's keywords
// (PS3.6).
#pragma once

#include "dicom/Export.h"

#include <string>
#include <string_view>

namespace kivds {

/// The two-letter value representation of a representation code; null for the codes that DICOM has none for.
KIV_DICOM_API const char* VrOfRepresentation(int code) noexcept;

/// The representation code of a value representation. UC and UR count as UT, OF, OD and OL as FL, FD and UL,
/// OV, SV and UV as "other binary" (13); unknown names as UN.
KIV_DICOM_API int RepresentationOfVr(std::string_view vr) noexcept;

/// Whether values of a code are character text.
KIV_DICOM_API bool IsText(int code) noexcept;
/// Whether values of a code are text in the object's character set (PS3.5 6.1.2.3).
KIV_DICOM_API bool IsLocalizedText(int code) noexcept;

/// The keyword of a tag in DCMTK's dictionary, "PrivateCreator" for a private creator; empty when there is
/// none. `privateCreator` is the creator's text for a private tag.
KIV_DICOM_API std::string AttributeKeyword(unsigned long tag, const std::string& privateCreator = {});

} // namespace kivds
