// DICOM files into collections. The toolkit DCMTK reads the files, in all its transfer syntaxes; pixel data
// is never decoded. What these functions return belongs to the caller. Any thread may import, also several at
// once. While an import runs, DCMTK's automatic correction of input data
// (dcmEnableAutomaticInputDataCorrection, a switch of the whole process) is off: it rewrites values. It is
// restored when the last import ends; other uses of DCMTK on other threads meet it switched off in between.
#pragma once

#include "collection/CKivDSDicomAttributeCollection.h"
#include "dicom/Export.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class DcmDataset; // DCMTK's

namespace kivds {

/// Something that the collection cannot hold as the object says it.
struct DicomWarning
{
    unsigned long tag; ///< the element; 0: the object as a whole
    std::string text;  ///< the cause, without the tag
};

/// Why there is no collection.
enum class DicomFailure
{
    None,       ///< there is one
    CannotRead, ///< the file cannot be opened or read
    NotDicom,   ///< neither a DICOM file (PS3.10 7.1) nor a bare data set
    Broken      ///< DICOM, but cut off, damaged or without any element
};

/// What an import gives.
struct DicomImport
{
    std::unique_ptr<CKivDSDicomAttributeCollection> collection; ///< null when the import failed
    std::vector<DicomWarning> warnings;                         ///< what the collection does not hold
    DicomFailure failure = DicomFailure::None;                  ///< why there is no collection
    std::string error; ///< where the file breaks and why; empty when nothing failed
};

/// The collection of a DICOM file, or of a file that holds a bare data set.
///
/// The collection holds the data set's top-level elements without group lengths; text without its padding
/// (PS3.5 6.2), in the object's character set (TextDecoder.h). Pixel Data and sequences become placeholders,
/// a sequence of coded entries (PS3.3 8.8) a CKivDSCodeSequenceAttribute. Attributes of a multi-frame image
/// that Frame Increment Pointer (0028,0009) names are multi-frame, frames 1..N. An object with Per-frame
/// Functional Groups (PS3.3 C.7.6.16) becomes an enhanced multi-frame collection: the leaves of the shared
/// groups stand with the top-level attributes, those of item i in per-frame collection i. The scope names
/// study, series and image, of a multi-frame image the frames 1..N.
KIV_DICOM_API DicomImport ImportDicomFile(const std::filesystem::path& path);

/// The same for a data set in memory. Its values may be loaded on the way, nothing else in it changes.
KIV_DICOM_API DicomImport ImportDicomDataSet(DcmDataset& dataSet);

} // namespace kivds
