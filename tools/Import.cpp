#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/FileList.h"
#include "tools/Input.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <set>

namespace kivds::tool {
namespace fs = std::filesystem;
namespace {

struct ImportOptions
{
    std::vector<std::string> files;
    std::string out;
};

/// The names of the streams of several files: where each lies below the folder that they share, without .dcm.
/// No two are the same.
class Targets
{
public:
    Targets(fs::path out, fs::path base) : m_Out(std::move(out)), m_Base(std::move(base)) {}

    fs::path For(const fs::path& file)
    {
        std::error_code code;
        fs::path absolute = fs::weakly_canonical(file.parent_path().empty() ? "." : file.parent_path(), code);
        const fs::path folder = m_Out / absolute.lexically_relative(m_Base);
        std::string extension = file.extension().string();
        std::transform(extension.begin(), extension.end(), extension.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const std::string name = file.filename().string();
        const bool isUsual = extension == ".dcm" || extension == ".kds";
        fs::path target = folder / ((isUsual ? file.stem().string() : name) + ".kds");
        for (int i = 1; !m_Taken.insert(target.lexically_normal().string()).second; ++i)
            target = folder / (name + (i > 1 ? "-" + std::to_string(i) : std::string()) + ".kds");
        return target.lexically_normal();
    }

private:
    const fs::path m_Out;
    const fs::path m_Base;
    std::set<std::string> m_Taken;
};

bool SameFile(const fs::path& a, const fs::path& b)
{
    std::error_code code;
    return fs::equivalent(a, b, code) && !code;
}

bool IsStream(const fs::path& path)
{
    const std::string start = ReadStart(path);
    return !BeginsAsDicom(start) && BeginsAsStream(start);
}

int ImportOne(const fs::path& file, const fs::path& target, Console& console, std::string& told)
{
    if (SameFile(file, target)) {
        console.Message(file, "is not written over itself; name another file with -o");
        return kTrouble;
    }
    const Input input = OpenInput(file, console);
    if (!input)
        return input.status;
    std::size_t size = 0;
    std::string error;
    if (!WriteStream(*input.collection, target, size, error)) {
        console.Message(target, error);
        return kTrouble;
    }
    long attributes = 0;
    input.collection->GetNumberOfAttributes(&attributes);
    told = fmt::format("{}: {}, {} bytes", target.string(), Counted(attributes, "attribute"), size);
    return kDone;
}

int Import(const ImportOptions& options, Console& console)
{
    int status = kDone;
    FileList list;
    for (const std::string& file : options.files) {
        if (!list.Add(file, console, options.out))
            status = kTrouble;
    }
    const bool isOne = options.files.size() == 1 && !fs::is_directory(options.files[0]);
    const bool isFileName =
        isOne && !options.out.empty() && !fs::is_directory(options.out) && options.out.back() != '/';
    Targets targets(options.out.empty() ? "." : options.out, list.CommonFolder());
    std::size_t imported = 0;
    std::string told;
    console.StartProgress(list.Files().size());
    for (const auto& [file, isNamed] : list.Files()) {
        console.Step(file.string());
        int result = kNo;
        if (!isNamed && IsStream(file)) // most likely one that was written here before
            console.Message(file, "is a collection stream, skipped");
        else
            result = ImportOne(file, isFileName ? fs::path(options.out) : targets.For(file), console, told);
        Worsen(status, result);
        imported += result == kDone ? 1 : 0;
    }
    console.EndProgress();
    if (!isOne)
        console.Print(fmt::format("{} of {} files imported", imported, list.Files().size()));
    else if (imported > 0)
        console.Print(told);
    return status;
}

} // namespace

void AddImport(CLI::App& app, Console& console, int& status)
{
    const auto options = std::make_shared<ImportOptions>();
    CLI::App* const command = app.add_subcommand("import", "Write the collection streams of DICOM files");
    command->add_option("FILE", options->files, "DICOM files, and folders that are walked recursively")
        ->required();
    command
        ->add_option(
            "-o", options->out,
            "The stream's file; of several files or a folder the folder for their streams (default: the "
            "current folder)")
        ->type_name("OUT");
    command->callback([options, &console, &status] { status = Import(*options, console); });
}

} // namespace kivds::tool
