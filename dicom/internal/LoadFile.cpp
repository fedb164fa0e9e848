#include "dicom/internal/LoadFile.h"

#include "dicom/internal/ElementValue.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcdict.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcistrmf.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <system_error>

namespace kivds {
namespace {

/// The depth of the stack where this is called, as a number to compare with another one of the same thread.
#if defined(__GNUC__)
__attribute__((noinline)) std::uintptr_t StackPosition()
{
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}
#else
std::uintptr_t StackPosition()
{
    volatile char here = 0;
    return reinterpret_cast<std::uintptr_t>(&here);
}
#endif

/// A file as DCMTK reads it, that ends where the sequences nest too deeply. DCMTK descends into a sequence by
/// recursion and knows no limit, so that a file of a few hundred kilobytes could exhaust the stack.
class GuardedFileStream final : public DcmInputFileStream
{
public:
    explicit GuardedFileStream(const OFFilename& name) : DcmInputFileStream(name), m_nStart(StackPosition())
    {
    }

    bool IsTooDeep() const { return m_bTooDeep; }

    OFCondition status() const override
    {
        return m_bTooDeep ? EC_CorruptedData : DcmInputFileStream::status();
    }
    OFBool good() const override { return !m_bTooDeep && DcmInputFileStream::good(); }
    OFBool eos() override { return m_bTooDeep || DcmInputFileStream::eos(); }
    offile_off_t avail() override { return Guard() ? DcmInputFileStream::avail() : 0; }
    offile_off_t read(void* buffer, offile_off_t length) override
    {
        return Guard() ? DcmInputFileStream::read(buffer, length) : 0;
    }

private:
    // Some hundred levels of DCMTK's frames, which is more than objects have and less than any thread's
    // stack.
    static constexpr std::uintptr_t kMaxStack = std::uintptr_t{192} * 1024;

    bool Guard()
    {
        const std::uintptr_t here = StackPosition();
        const std::uintptr_t used = here < m_nStart ? m_nStart - here : here - m_nStart;
        m_bTooDeep = m_bTooDeep || used > kMaxStack;
        return !m_bTooDeep;
    }

    const std::uintptr_t m_nStart;
    bool m_bTooDeep = false;
};

LoadedFile Failed(DicomFailure failure, std::string error)
{
    LoadedFile result;
    result.failure = failure;
    result.error = std::move(error);
    return result;
}

/// Whether a file without the prefix of PS3.10 7.1 may be a bare data set: its first element is of the groups
/// that such files begin with (0002 or 0008), in either byte order.
bool MayBeDataSet(std::string_view start)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(start[i]); };
    const auto isGroup = [](unsigned low, unsigned high) { return high == 0 && (low == 2 || low == 8); };
    return start.size() >= 8 && (isGroup(byte(0), byte(1)) || isGroup(byte(1), byte(0)));
}

/// Where DCMTK stopped reading.
std::string Place(DcmDataset& dataSet, offile_off_t offset)
{
    std::string place = "breaks off at byte " + std::to_string(offset);
    const DcmElement* last = nullptr;
    if (const unsigned long count = dataSet.card())
        last = dataSet.getElement(count - 1);
    if (last)
        place += ", in or after " + TagText(TagOf(*last));
    return place;
}

} // namespace

LoadedFile LoadFile(const std::filesystem::path& path)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        return Failed(DicomFailure::CannotRead, "is a folder");
    std::array<char, 132> head{};
    std::ifstream probe(path, std::ios::binary);
    if (!probe)
        return Failed(DicomFailure::CannotRead,
                      std::string("cannot be opened: ") + std::generic_category().message(errno));
    probe.read(head.data(), static_cast<std::streamsize>(head.size()));
    if (probe.bad())
        return Failed(DicomFailure::CannotRead,
                      std::string("cannot be read: ") + std::generic_category().message(errno));
    const std::string_view start(head.data(), static_cast<std::size_t>(probe.gcount()));
    if (start.empty())
        return Failed(DicomFailure::NotDicom, "is empty");
    if (start.substr(std::min<std::size_t>(start.size(), 128)) != "DICM" && !MayBeDataSet(start))
        return Failed(DicomFailure::NotDicom,
                      "is no DICOM file: neither the prefix DICM nor a data set at its start");
    if (!dcmDataDict.isDictionaryLoaded())
        return Failed(DicomFailure::CannotRead,
                      "DCMTK has not found its data dictionary (environment variable DCMDICTPATH)");

    LoadedFile result;
    result.file = std::make_unique<DcmFileFormat>();
    GuardedFileStream stream(OFFilename(path.c_str()));
    if (stream.status().bad())
        return Failed(DicomFailure::CannotRead, std::string("cannot be opened: ") + stream.status().text());
    result.file->transferInit();
    const OFCondition read = result.file->read(stream);
    result.file->transferEnd();
    DcmDataset& dataSet = *result.file->getDataset();
    if (stream.IsTooDeep())
        return Failed(DicomFailure::Broken,
                      Place(dataSet, stream.tell()) + ": sequences are nested too deeply");
    if (read.bad())
        return Failed(DicomFailure::Broken, Place(dataSet, stream.tell()) + ": " + read.text());
    return result;
}

} // namespace kivds
