#include "tests/support/DicomBytes.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace kivds::test {

namespace fs = std::filesystem;

std::string Word(unsigned number)
{
    return {static_cast<char>(number & 0xFF), static_cast<char>(number >> 8 & 0xFF)};
}

std::string Long(unsigned long number)
{
    return Word(static_cast<unsigned>(number & 0xFFFF)) + Word(static_cast<unsigned>(number >> 16 & 0xFFFF));
}

std::string Element(unsigned long tag, std::string_view vr, std::string_view value)
{
    std::string bytes = Word(static_cast<unsigned>(tag >> 16)) + Word(static_cast<unsigned>(tag & 0xFFFF));
    bytes += vr;
    for (const std::string_view longVr :
         {"OB", "OD", "OF", "OL", "OV", "OW", "SQ", "SV", "UC", "UN", "UR", "UT", "UV"}) {
        if (vr == longVr)
            return bytes.append(Word(0)).append(Long(value.size())).append(value);
    }
    return bytes.append(Word(static_cast<unsigned>(value.size()))).append(value);
}

std::string Item(std::string_view elements)
{
    return (Word(0xFFFE) + Word(0xE000) + Long(elements.size())).append(elements);
}

std::string DicomBytes(std::string_view dataSet, std::string_view syntax)
{
    std::string uid(syntax);
    if (uid.size() % 2 == 1)
        uid += '\0';
    const std::string meta = Element(0x00020010, "UI", uid);
    return (std::string(128, '\0') + "DICM" + Element(0x00020000, "UL", Long(meta.size())) + meta)
        .append(dataSet);
}

TestFolder::TestFolder()
{
    std::random_device random;
    do {
        m_Path = fs::temp_directory_path() / ("kivds-test-" + std::to_string(random()));
    } while (!fs::create_directory(m_Path));
}

TestFolder::~TestFolder()
{
    std::error_code ignored;
    fs::remove_all(m_Path, ignored);
}

fs::path TestFolder::Write(const fs::path& name, std::string_view bytes) const
{
    const fs::path path = m_Path / name;
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
        throw std::runtime_error("cannot be written: " + path.string());
    return path;
}

} // namespace kivds::test
