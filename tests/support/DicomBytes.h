// DICOM files written byte by byte, so that a test says exactly what stands in them, and a folder that lives
// as long as a test.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kivds::test {

/// An element in Explicit VR Little Endian with this value field as it stands.
std::string Element(unsigned long tag, std::string_view vr, std::string_view value);
/// An item of these elements with its length, for the value of a sequence.
std::string Item(std::string_view elements);
/// Little-endian numbers.
std::string Word(unsigned number);
std::string Long(unsigned long number);

constexpr const char* kExplicit = "1.2.840.10008.1.2.1";

/// A file of preamble, file meta information and this data set.
std::string DicomBytes(std::string_view dataSet, std::string_view syntax = kExplicit);

class TestFolder
{
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::filesystem::path operator/(const std::filesystem::path& name) const { return m_Path / name; }
    /// Writes a file, and the folders above it; gives its path.
    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes) const;

private:
    std::filesystem::path m_Path;
};

} // namespace kivds::test
