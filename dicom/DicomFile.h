// An open DICOM file. It owns DCMTK's data set, whose large values stay in the file until they are asked for,
// so that what a collection does not keep can still be looked at. One thread at a time.
#pragma once

#include "dicom/DicomImport.h"

#include <filesystem>
#include <memory>
#include <string>

namespace kivds {

/// Reading needs the file as long as the object is open.
class KIV_DICOM_API DicomFile
{
public:
    DicomFile(); ///< nothing is open
    ~DicomFile();
    DicomFile(DicomFile&&) noexcept; ///< the other has nothing open then
    /// Closes what is open and takes the other's file over.
    DicomFile& operator=(DicomFile&&) noexcept;

    /// Loads the structure of a file. On failure nothing is open, and `error` says where the file breaks and
    /// why.
    DicomFailure Open(const std::filesystem::path& path, std::string& error);
    /// Whether a file is open.
    bool IsOpen() const noexcept { return m_pContent != nullptr; }

    /// The collection of the file, as ImportDicomFile gives it.
    DicomImport Import();

    /// Compares a top-level element of two open files as both are encoded in Explicit VR Little Endian: value
    /// representation, length and bytes, item by item where it is a sequence. Group lengths, data set padding
    /// and how lengths are encoded take no part, of pixel data neither does the value representation (OB or
    /// OW); encapsulated pixel data is compared fragment by fragment. Empty when the element is the same in
    /// both or in neither; else where the first difference is.
    std::string FirstDifference(unsigned long tag, DicomFile& other);

private:
    struct Content;
    std::unique_ptr<Content> m_pContent;
};

} // namespace kivds
