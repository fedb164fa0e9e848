// kivds: DICOM files and collection streams on the command line.
#include "tools/Command.h"
#include "tools/Console.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <cstdio>
#include <exception>

using namespace kivds::tool;

namespace {

int Run(int argc, char** argv, Console& console)
{
    int status = kDone;
    CLI::App app("DICOM files and collection streams (.kds): import, show, compare and check them.\n"
                 "Exit status: 0 done or the same, 1 different, unsound or skipped, 2 trouble.",
                 "kivds");
    app.require_subcommand(1);
    app.option_defaults()->always_capture_default(false);
    AddImport(app, console, status);
    AddDump(app, console, status);
    AddDiff(app, console, status);
    AddFrames(app, console, status);
    AddSeries(app, console, status);
    AddCheck(app, console, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kTrouble; // --help is an error to the parser, with status 0
    }
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    Console console;
    int status = kTrouble;
    try {
        status = Run(argc, argv, console);
    } catch (const std::exception& error) {
        fmt::print(stderr, "kivds: {}\n", error.what());
    }
    if (!console.Flush()) {
        fmt::print(stderr, "kivds: standard output cannot be written\n");
        status = kTrouble;
    }
    return status;
}
