// The commands of the tool. Each adds itself to the program's command line with its help, and when it is
// chosen and the command line is right, runs and leaves its exit status.
#pragma once

namespace CLI {
class App;
}

namespace kivds::tool {

class Console;

/// Exit statuses: done, or the same; the answer is no (different, unsound, something skipped); trouble.
enum Status : int
{
    kDone = 0,
    kNo = 1,
    kTrouble = 2
};

/// The worse of two.
inline void Worsen(int& status, int other)
{
    if (other > status)
        status = other;
}

void AddImport(CLI::App& app, Console& console, int& status);
void AddDump(CLI::App& app, Console& console, int& status);
void AddDiff(CLI::App& app, Console& console, int& status);
void AddFrames(CLI::App& app, Console& console, int& status);
void AddSeries(CLI::App& app, Console& console, int& status);
void AddCheck(CLI::App& app, Console& console, int& status);

} // namespace kivds::tool
