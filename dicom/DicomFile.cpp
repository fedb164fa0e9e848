#include "dicom/DicomFile.h"

#include "dicom/internal/ElementComparison.h"
#include "dicom/internal/InputCorrection.h"
#include "dicom/internal/LoadFile.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcfilefo.h>

#include <new>

namespace kivds {

struct DicomFile::Content
{
    std::unique_ptr<DcmFileFormat> file;

    DcmDataset& DataSet() const { return *file->getDataset(); }
};

DicomFile::DicomFile() = default;
DicomFile::~DicomFile() = default;
DicomFile::DicomFile(DicomFile&&) noexcept = default;
DicomFile& DicomFile::operator=(DicomFile&&) noexcept = default;

DicomFailure DicomFile::Open(const std::filesystem::path& path, std::string& error)
{
    m_pContent.reset();
    const InputCorrectionOff correctionOff;
    try {
        LoadedFile loaded = LoadFile(path);
        error = std::move(loaded.error);
        if (loaded.failure == DicomFailure::None)
            m_pContent = std::make_unique<Content>(Content{std::move(loaded.file)});
        return loaded.failure;
    } catch (const std::bad_alloc&) {
        error = "is too large for the memory that there is";
        return DicomFailure::CannotRead;
    }
}

DicomImport DicomFile::Import()
{
    if (m_pContent)
        return ImportDicomDataSet(m_pContent->DataSet());
    DicomImport result;
    result.failure = DicomFailure::CannotRead;
    result.error = "is not open";
    return result;
}

std::string DicomFile::FirstDifference(unsigned long tag, DicomFile& other)
{
    if (!m_pContent || !other.m_pContent)
        return m_pContent == other.m_pContent ? std::string() : "one of the files is not open";
    const InputCorrectionOff correctionOff;
    return FirstDifferenceOf(m_pContent->DataSet(), other.m_pContent->DataSet(), tag);
}

} // namespace kivds
