#include "tools/Input.h"

#include "dicom/ToolkitMessages.h"
#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Numbers.h"
#include "tools/Reports.h"
#include "tools/Text.h"

#include <fmt/core.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <fstream>
#include <set>
#include <system_error>

namespace kivds::tool {
namespace {

/// The toolkit's messages while a file is read; each is kept once.
class ToolkitMessages
{
public:
    ToolkitMessages() { SetToolkitListener(&ToolkitMessages::Receive, this); }
    ~ToolkitMessages() { SetToolkitListener(nullptr, nullptr); }
    ToolkitMessages(const ToolkitMessages&) = delete;
    ToolkitMessages& operator=(const ToolkitMessages&) = delete;

    const std::vector<std::string>& All() const { return m_Messages; }

private:
    static void Receive(void* context, const char* message)
    {
        auto& self = *static_cast<ToolkitMessages*>(context);
        constexpr std::size_t kEnough = 20; // a damaged file may give one an element
        if (self.m_Messages.size() < kEnough && self.m_Seen.insert(message).second)
            self.m_Messages.emplace_back(message);
    }

    std::vector<std::string> m_Messages;
    std::set<std::string> m_Seen;
};

int StatusOf(DicomFailure failure)
{
    return failure == DicomFailure::None ? kDone : failure == DicomFailure::CannotRead ? kTrouble : kNo;
}

void OpenStream(Input& input, Console& console)
{
    std::string bytes, error;
    input.status = kTrouble;
    if (ReadFile(input.path, bytes, error)) {
        input.collection = ReadStream(bytes, error);
        input.status = input.collection ? kDone : kNo;
    }
    if (!input.collection)
        console.Message(input.path, error);
}

void OpenDicom(Input& input, Console& console)
{
    const ToolkitMessages messages;
    std::string error;
    DicomFailure failure = input.file.Open(input.path, error);
    DicomImport import;
    if (failure == DicomFailure::None) {
        import = input.file.Import();
        failure = import.failure;
        error = import.error;
    }
    input.status = StatusOf(failure);
    if (failure != DicomFailure::NotDicom) {
        for (const std::string& message : messages.All())
            console.Message(input.path, "warning: " + message);
    }
    for (const DicomWarning& warning : import.warnings)
        console.Message(input.path, fmt::format("warning: {} {}", TagText(warning.tag), warning.text));
    if (failure == DicomFailure::NotDicom)
        error = error == "is empty" ? error : "is neither a DICOM file nor a collection stream";
    if (failure != DicomFailure::None)
        console.Message(input.path, error);
    input.collection = std::move(import.collection);
    input.warnings = std::move(import.warnings);
}

} // namespace

bool ReadFile(const std::filesystem::path& path, std::string& bytes, std::string& error)
{
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) {
        error = "is a folder";
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = std::string("cannot be opened: ") + std::generic_category().message(errno);
        return false;
    }
    const std::uintmax_t size = std::filesystem::file_size(path, code);
    if (!code && size > static_cast<std::uintmax_t>(INT_MAX)) {
        error = "is too long for a collection stream";
        return false;
    }
    bytes.resize(code ? 0 : static_cast<std::size_t>(size));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    if (file.bad())
        error = std::string("cannot be read: ") + std::generic_category().message(errno);
    return !file.bad();
}

std::string ReadStart(const std::filesystem::path& path)
{
    std::string start(132, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    return start;
}

bool BeginsAsDicom(std::string_view bytes)
{
    return bytes.size() >= 132 && bytes.substr(128, 4) == "DICM";
}

bool BeginsAsStream(std::string_view bytes)
{
    if (bytes.empty())
        return false;
    // Version and kind, or in older streams the kind alone, then a part's negated version; the marker of an
    // enhanced multi-frame stream is that of the collection stream it begins with.
    const auto first = static_cast<unsigned char>(bytes[0]);
    const std::size_t header = first <= 1 ? 1 : 2;
    if (first > SCHAR_MAX || bytes.size() < header + 4)
        return false;
    const unsigned kind = header == 1 ? first : static_cast<unsigned char>(bytes[1]);
    if (kind == 2)
        return BeginsAsStream(bytes.substr(header));
    constexpr std::int32_t kHighestVersion = 64;
    const std::int32_t marker = Int32At(bytes, header);
    return kind <= 1 && marker < 0 && marker >= -kHighestVersion;
}

std::unique_ptr<Collection> ReadStream(std::string_view bytes, std::string& error)
{
    auto collection = std::make_unique<Collection>();
    const Reports reports;
    int size = 0;
    if (!collection->Deserialize(bytes.data(), static_cast<int>(bytes.size()), size, true)) {
        error = "is no sound collection stream (" + reports.First() + "); kivds check says where it breaks";
        return nullptr;
    }
    if (static_cast<std::size_t>(size) != bytes.size()) {
        error = fmt::format("goes on after the end of its stream, at byte {}", size);
        return nullptr;
    }
    return collection;
}

bool WriteStream(Collection& collection, const std::filesystem::path& path, std::size_t& size,
                 std::string& error)
{
    int length = 0;
    const Reports reports;
    std::string bytes;
    if (!collection.Serialize(nullptr, length) || length <= 0) {
        error = "cannot be written as a stream: " +
                (reports.First().empty() ? "it is too long" : reports.First());
        return false;
    }
    bytes.resize(static_cast<std::size_t>(length));
    if (!collection.Serialize(bytes.data(), length)) {
        error = "cannot be written as a stream: " + reports.First();
        return false;
    }
    std::error_code code;
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path(), code);
    std::filesystem::path draft = path;
    draft += ".part";
    std::ofstream file(draft, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        error = std::string("cannot be written: ") + std::generic_category().message(errno);
        std::filesystem::remove(draft, code);
        return false;
    }
    std::filesystem::rename(draft, path, code);
    if (code) {
        error = "cannot be written: " + code.message();
        std::filesystem::remove(draft, code);
        return false;
    }
    size = bytes.size();
    return true;
}

namespace {

/// Whether a file is a stream without any version, which begins with its kind and a count; if so it is read.
bool IsOldStream(Input& input, std::string_view start)
{
    std::string bytes, ignored;
    if (start.empty() || static_cast<unsigned char>(start[0]) > 1 || !ReadFile(input.path, bytes, ignored))
        return false;
    input.collection = ReadStream(bytes, ignored);
    return input.collection != nullptr;
}

} // namespace

Input OpenInput(const std::filesystem::path& path, Console& console)
{
    Input input;
    input.path = path;
    const std::string start = ReadStart(path);
    if (BeginsAsDicom(start) || (!BeginsAsStream(start) && !IsOldStream(input, start)))
        OpenDicom(input, console);
    else if (!input)
        OpenStream(input, console);
    return input;
}

} // namespace kivds::tool
