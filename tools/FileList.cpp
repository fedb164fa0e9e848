#include "tools/FileList.h"

#include "tools/Console.h"

#include <algorithm>
#include <system_error>

namespace kivds::tool {
namespace fs = std::filesystem;
namespace {

fs::path Normal(const fs::path& path)
{
    std::error_code code;
    fs::path normal = fs::weakly_canonical(path, code);
    if (code)
        normal = fs::absolute(path).lexically_normal();
    return normal;
}

/// Whether both name the same folder.
bool SameFolder(const fs::path& a, const fs::path& b)
{
    std::error_code code;
    return !b.empty() && fs::equivalent(a, b, code) && !code;
}

} // namespace

bool FileList::Add(const fs::path& path, Console& console, const fs::path& except)
{
    std::error_code code;
    const fs::file_status status = fs::status(path, code);
    if (status.type() == fs::file_type::not_found || code) {
        console.Message(path, "cannot be opened: " + (code ? code.message() : std::string("no such file")));
        return false;
    }
    if (!fs::is_directory(status)) {
        m_Roots.push_back(Normal(path.parent_path().empty() ? "." : path.parent_path()));
        AddOnce(path, true);
        return true;
    }
    m_Roots.push_back(Normal(path));
    bool isWhole = true;
    std::vector<fs::path> found;
    fs::recursive_directory_iterator entry(path, code);
    for (; !code && entry != fs::recursive_directory_iterator(); entry.increment(code)) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) {
            if (SameFolder(entry->path(), except))
                entry.disable_recursion_pending();
        } else if (entry->is_regular_file(ignored)) {
            found.push_back(entry->path());
        }
    }
    if (code) {
        console.Message(path, "cannot be read whole: " + code.message());
        isWhole = false;
    }
    std::sort(found.begin(), found.end());
    for (const fs::path& file : found)
        AddOnce(file, false);
    return isWhole;
}

void FileList::AddOnce(const fs::path& file, bool isNamed)
{
    if (m_Seen.insert(Normal(file).string()).second)
        m_Files.push_back({file, isNamed});
}

fs::path FileList::CommonFolder() const
{
    fs::path common;
    bool isFirst = true;
    for (const fs::path& root : m_Roots) {
        if (isFirst) {
            common = root;
            isFirst = false;
            continue;
        }
        fs::path shared;
        auto a = common.begin();
        for (auto b = root.begin(); a != common.end() && b != root.end() && *a == *b; ++a, ++b)
            shared /= *b;
        common = shared;
    }
    return common;
}

} // namespace kivds::tool
