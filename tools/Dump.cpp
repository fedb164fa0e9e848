#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Input.h"
#include "tools/Json.h"
#include "tools/Print.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace kivds::tool {
namespace {

struct DumpOptions
{
    std::string file;
    bool json = false;
};

int Dump(const DumpOptions& options, Console& console)
{
    const Input input = OpenInput(options.file, console);
    if (!input)
        return kTrouble;
    if (options.json)
        PrintJson(*input.collection);
    else
        PrintCollection(*input.collection, console);
    return kDone;
}

} // namespace

void AddDump(CLI::App& app, Console& console, int& status)
{
    const auto options = std::make_shared<DumpOptions>();
    CLI::App* const command = app.add_subcommand("dump", "Show what the collection of a file holds");
    command->add_option("FILE", options->file, "A DICOM file or a collection stream")->required();
    command->add_flag("--json", options->json, "As JSON: every value in full");
    command->callback([options, &console, &status] { status = Dump(*options, console); });
}

} // namespace kivds::tool
