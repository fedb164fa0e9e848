// Loads the structure of a DICOM file; values above DCMTK's usual limit stay in the file.
#pragma once

#include "dicom/DicomImport.h"

#include <filesystem>
#include <memory>
#include <string>

class DcmFileFormat;

namespace kivds {

struct LoadedFile
{
    std::unique_ptr<DcmFileFormat> file; // null when it failed
    DicomFailure failure = DicomFailure::None;
    std::string error;
};

LoadedFile LoadFile(const std::filesystem::path& path);

} // namespace kivds
