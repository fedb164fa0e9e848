// Writes the inputs with which fuzzing begins, as seeds/HARNESS and dense/HARNESS below the folder named.
#include "fuzz/Seeds.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

void WriteFiles(const std::filesystem::path& folder, const std::vector<std::string>& contents)
{
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const std::string& content : contents)
        std::ofstream(folder / std::to_string(number++), std::ios::binary) << content;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    const std::filesystem::path root = arguments[1];
    for (const auto& [harness, inputs] : kivds::fuzz::MakeInputs()) {
        WriteFiles(root / "seeds" / harness, inputs.m_Seeds);
        WriteFiles(root / "dense" / harness, inputs.m_Dense);
    }
    return 0;
}
