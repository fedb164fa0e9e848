// What fuzzing begins with, and every input with which it ever found something, through the harnesses. A
// harness ends the program when the library breaks a promise, and names it.
#include "fuzz/Harnesses.h"
#include "fuzz/Seeds.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace kivds::fuzz;

struct SHarness
{
    const char* m_Name;
    void (*m_Run)(std::string_view bytes);
};

class Fuzz : public testing::TestWithParam<SHarness>
{
};

TEST_P(Fuzz, FindsNothingInWhatItBeginsWith)
{
    const std::map<std::string, SInputs> made = MakeInputs();
    for (const std::string& input : made.at(GetParam().m_Name).m_Seeds)
        GetParam().m_Run(input);
    for (const std::string& input : made.at(GetParam().m_Name).m_Dense)
        GetParam().m_Run(input);
}

TEST_P(Fuzz, FindsNothingAgain)
{
    const std::filesystem::path folder = std::filesystem::path(KIVDS_REGRESSIONS_DIR) / GetParam().m_Name;
    if (!std::filesystem::exists(folder))
        return;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        std::printf("%s\n",
                    file.path().string().c_str()); // the last one named is the one that ended the program
        std::ifstream stream(file.path(), std::ios::binary);
        GetParam().m_Run(std::string(std::istreambuf_iterator<char>(stream), {}));
    }
}

constexpr SHarness kHarnesses[] = {
    {"AttributeStream", &AttributeStream},         {"CodeSequenceStream", &CodeSequenceStream},
    {"CollectionStream", &CollectionStream},       {"EnhancedStream", &EnhancedStream},
    {"ScriptVersionStream", &ScriptVersionStream}, {"ElementBytes", &ElementBytes},
    {"PublicInterface", &PublicInterface},
};

INSTANTIATE_TEST_SUITE_P(Harnesses, Fuzz, testing::ValuesIn(kHarnesses),
                         [](const auto& test) { return std::string(test.param.m_Name); });

} // namespace
