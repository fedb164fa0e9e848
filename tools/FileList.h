// The files that a command line names: files as they are, folders walked recursively.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace kivds::tool {

class Console;

struct ListedFile
{
    std::filesystem::path path;
    bool isNamed; // on the command line; else found in a folder
};

class FileList
{
public:
    /// Adds a file, or all files below a folder in the order of their names, but for those below `except`. A
    /// file that is there already is not added again. False, with a message, when there is nothing of that
    /// name or a folder cannot be read.
    bool Add(const std::filesystem::path& path, Console& console, const std::filesystem::path& except = {});

    const std::vector<ListedFile>& Files() const { return m_Files; }
    /// The deepest folder that all files lie below; of the paths as they were given, made absolute.
    std::filesystem::path CommonFolder() const;

private:
    void AddOnce(const std::filesystem::path& file, bool isNamed);

    std::vector<ListedFile> m_Files;
    std::set<std::string> m_Seen;
    std::vector<std::filesystem::path> m_Roots; // the folder of each file given, and each folder given
};

} // namespace kivds::tool
