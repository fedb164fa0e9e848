#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Input.h"
#include "tools/StreamCheck.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <memory>
#include <string>

namespace kivds::tool {
namespace {

std::string Summary(const Collection& collection)
{
    long attributes = 0;
    collection.GetNumberOfAttributes(&attributes);
    const std::size_t frames = FramesOf(collection).size();
    return Counted(attributes, "attribute") +
           (frames > 0 ? ", " + Counted(static_cast<long long>(frames), "per-frame collection")
                       : std::string());
}

int CheckDicom(const std::string& file, Console& console)
{
    const Input input = OpenInput(file, console);
    if (!input)
        return input.status;
    console.Print(fmt::format("{}: sound: DICOM, {}", file, Summary(*input.collection)));
    return kDone;
}

int Check(const std::string& file, Console& console)
{
    std::string bytes, error;
    if (!ReadFile(file, bytes, error)) {
        console.Message(file, error);
        return kTrouble;
    }
    // A damaged stream may look like anything; a file without DICOM's prefix is DICOM when it can be read as
    // such.
    if (BeginsAsDicom(bytes) ||
        (!BeginsAsStream(bytes) && DicomFile().Open(file, error) == DicomFailure::None))
        return CheckDicom(file, console);
    const StreamFault fault = FindFault(bytes);
    if (!fault.text.empty()) {
        console.Message(file, fmt::format("breaks at byte {}: {}", fault.offset, fault.text));
        return kNo;
    }
    const std::unique_ptr<Collection> collection = ReadStream(bytes, error);
    if (!collection) {
        console.Message(file, error);
        return kNo;
    }
    console.Print(fmt::format("{}: sound: {}, {}", file,
                              Counted(static_cast<long long>(bytes.size()), "byte"), Summary(*collection)));
    return kDone;
}

} // namespace

void AddCheck(CLI::App& app, Console& console, int& status)
{
    const auto file = std::make_shared<std::string>();
    CLI::App* const command = app.add_subcommand(
        "check", "Read a file within its bounds and say whether it is sound, or where it breaks");
    command->add_option("FILE", *file, "A collection stream or a DICOM file")->required();
    command->callback([file, &console, &status] { status = Check(*file, console); });
}

} // namespace kivds::tool
