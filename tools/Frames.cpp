#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Input.h"
#include "tools/Print.h"
#include "tools/Text.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <limits>
#include <memory>

namespace kivds::tool {
namespace {

struct FramesOptions
{
    std::string file;
    int frame = 0; // 0: all
    std::string folder;
};

/// The number of frames: of per-frame collections, or as Number of Frames says.
int NumberOfFrames(const Collection& collection)
{
    if (collection.IsEnhancedMFCollection())
        return static_cast<int>(FramesOf(collection).size());
    constexpr unsigned long kNumberOfFrames = 0x00280008;
    return NumberOf(collection, kNumberOfFrames, 0);
}

/// The complete collection of a frame, counted from 1. Per-frame collections count from 0, the frames of
/// multi-frame attributes from 1.
Collection FrameOf(const Collection& collection, int frame)
{
    return {collection, collection.IsEnhancedMFCollection() ? frame - 1 : frame, true};
}

int Frames(const FramesOptions& options, Console& console)
{
    const Input input = OpenInput(options.file, console);
    if (!input)
        return kTrouble;
    const int frames = NumberOfFrames(*input.collection);
    constexpr int kMostFrames = 1000000; // so that a damaged count ends with a message, not with a full disk
    if (frames < 1) {
        console.Message(input.path, "has no frames");
        return kNo;
    }
    if (options.frame > frames || (options.frame == 0 && frames > kMostFrames)) {
        console.Message(input.path, "has " + Counted(frames, "frame") +
                                        (options.frame ? fmt::format(", no frame {}", options.frame)
                                                       : "; name one with --frame"));
        return kTrouble;
    }
    const int first = options.frame ? options.frame : 1;
    const int last = options.frame ? options.frame : frames;
    TextForm form(*input.collection);
    console.StartProgress(options.folder.empty() ? 0 : static_cast<std::size_t>(last - first + 1));
    for (int number = first; number <= last; ++number) {
        Collection frame = FrameOf(*input.collection, number);
        if (options.folder.empty()) {
            console.Print(Line().Add(fmt::format("Frame {}", number), Style::Bold));
            PrintCollection(frame, form, console, "  ");
            continue;
        }
        const auto path = std::filesystem::path(options.folder) / fmt::format("frame{:04}.kds", number);
        std::size_t size = 0;
        std::string error;
        if (!WriteStream(frame, path, size, error)) {
            console.Message(path, error);
            return kTrouble;
        }
        console.Step(path.string());
    }
    console.EndProgress();
    return kDone;
}

} // namespace

void AddFrames(CLI::App& app, Console& console, int& status)
{
    const auto options = std::make_shared<FramesOptions>();
    CLI::App* const command =
        app.add_subcommand("frames", "Show or write the complete collection of each frame");
    command->add_option("FILE", options->file, "A DICOM file or a collection stream")->required();
    command->add_option("--frame", options->frame, "Only frame N, counted from 1")
        ->type_name("N")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    command->add_option("-o", options->folder, "Write streams frame0001.kds, ... to the folder DIR instead")
        ->type_name("DIR");
    command->callback([options, &console, &status] { status = Frames(*options, console); });
}

} // namespace kivds::tool
