// The export macro of KivDSDicom, the adapter for DICOM files; see platform/Export.h.
#pragma once

#include "platform/Export.h"

#if defined(KIV_BUILD_DICOM)
/// Marks what KivDSDicom exports.
#define KIV_DICOM_API KIV_EXPORT
#else
#define KIV_DICOM_API KIV_IMPORT
#endif
