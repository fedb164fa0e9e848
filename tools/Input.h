// What the tool works on: DICOM files and collection streams (.kds), told apart by their content.
#pragma once

#include "dicom/DicomFile.h"
#include "tools/Walk.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kivds::tool {

class Console;

struct Input
{
    std::filesystem::path path;
    std::unique_ptr<Collection> collection; // null when the file cannot be used; why has been said
    DicomFile file;                         // open when it is a DICOM file
    std::vector<DicomWarning> warnings;     // of the import
    int status = 0; // what the failure means: kNo for the content, kTrouble for the file

    explicit operator bool() const { return collection != nullptr; }
};

/// Reads a file. Failures and warnings go to the console.
Input OpenInput(const std::filesystem::path& path, Console& console);

/// The bytes of a file; false with the cause in `error`.
bool ReadFile(const std::filesystem::path& path, std::string& bytes, std::string& error);
/// The first bytes of a file, as many as tell what it is; empty when it cannot be read.
std::string ReadStart(const std::filesystem::path& path);
/// Whether a file begins as a collection stream does (docs/streams.md).
bool BeginsAsStream(std::string_view bytes);
/// Whether it begins as a DICOM file does (PS3.10 7.1).
bool BeginsAsDicom(std::string_view bytes);

/// A collection read from all the bytes of a stream; null with the cause in `error`.
std::unique_ptr<Collection> ReadStream(std::string_view bytes, std::string& error);
/// Writes a collection's stream to a file, whole or not at all; false with the cause in `error`.
bool WriteStream(Collection& collection, const std::filesystem::path& path, std::size_t& size,
                 std::string& error);

} // namespace kivds::tool
