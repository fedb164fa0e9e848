// kivds_peer_elements OUT FILE-OR-FOLDER...: takes the elements out of DICOM files, once, for all programs
// that measure. Sequences, pixel data and elements without a value are left out, and so is what a toolkit
// would refuse or read differently from others: text is taken without its inner padding.
#include "bench/peers/Workload.h"

#include <dcmtk/dcmdata/dctk.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace {

using namespace kivds::peers;
namespace fs = std::filesystem;

std::vector<fs::path> FilesBelow(const fs::path& path)
{
    std::vector<fs::path> files;
    if (!fs::is_directory(path))
        return {path};
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// The text without the blanks and NULs around its values (PS3.5 6.2).
std::string Trimmed(std::string_view text)
{
    const std::string_view pads(" \0", 2);
    std::string trimmed;
    for (;;) {
        const std::size_t end = text.find('\\');
        const std::string_view value = text.substr(0, end);
        const std::size_t first = value.find_first_not_of(pads);
        if (first != std::string_view::npos)
            trimmed += value.substr(first, value.find_last_not_of(pads) + 1 - first);
        if (end == std::string_view::npos)
            return trimmed;
        trimmed += '\\';
        text.remove_prefix(end + 1);
    }
}

bool Take(DcmElement& source, Element& element)
{
    const std::uint32_t tag = std::uint32_t{source.getGTag()} << 16 | source.getETag();
    const Uint32 length = source.getLengthField();
    constexpr std::uint32_t pixelData = 0x7FE00010;
    if ((tag & 0xFFFF) == 0 || tag == pixelData || length == 0 || length > 65534 ||
        !VrNamed(DcmVR(source.getVR()).getValidVRName(), element.m_Vr))
        return false;
    element.m_Tag = tag;
    std::string& field = element.m_Field;
    field.resize(length);
    if (source.getPartialValue(field.data(), 0, length, nullptr, EBO_LittleEndian).bad())
        return false;
    if (!IsText(element.m_Vr))
        return length % std::max<std::size_t>(2, UnitOf(element.m_Vr)) == 0;
    field = Trimmed(field);
    const bool isWhole = element.m_Vr == Vr::LT || element.m_Vr == Vr::ST || element.m_Vr == Vr::UT;
    const bool hasSeparators = field.find('\\') != std::string::npos;
    const bool hasEmptyValues = field.empty() || field.front() == '\\' || field.back() == '\\' ||
                                field.find("\\\\") != std::string::npos;
    if (hasEmptyValues || (isWhole && hasSeparators))
        return false;
    if (field.size() % 2 != 0)
        field += element.m_Vr == Vr::UI ? '\0' : ' ';
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: kivds_peer_elements OUT FILE-OR-FOLDER...\n";
        return 2;
    }
    OFLog::configure(OFLogger::OFF_LOG_LEVEL);
    std::vector<DataSet> dataSets;
    for (int i = 2; i < argc; ++i) {
        for (const fs::path& path : FilesBelow(argv[i])) {
            DcmFileFormat file;
            if (file.loadFile(path.c_str()).bad())
                continue; // no DICOM
            DataSet dataSet;
            DcmDataset& objects = *file.getDataset();
            for (DcmObject* at = objects.nextInContainer(nullptr); at; at = objects.nextInContainer(at)) {
                Element element{};
                if (at->isLeaf() && Take(static_cast<DcmElement&>(*at), element))
                    dataSet.push_back(std::move(element));
            }
            if (!dataSet.empty())
                dataSets.push_back(std::move(dataSet));
        }
    }
    std::size_t elements = 0;
    for (const DataSet& dataSet : dataSets)
        elements += dataSet.size();
    std::cerr << dataSets.size() << " data sets of " << elements << " elements\n";
    if (dataSets.empty())
        return 1;
    SaveDataSets(argv[1], dataSets);
    return 0;
}
