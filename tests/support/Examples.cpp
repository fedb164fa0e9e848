#include "tests/support/Examples.h"

#include <fstream>
#include <map>
#include <regex>

namespace kivds::test {

namespace {

using ExampleTables = std::map<std::string, std::vector<std::vector<std::string>>>;

void ReadExamples(const char* path, ExampleTables& examples)
{
    std::ifstream file(path);
    const std::regex fence("```examples (.*)"), comment("(^|  +)//.*"),
        cell("\"([^\"]*)\"|[^ ](?:[^ ]| (?! ))*");
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
        if (!std::regex_match(line, match, fence))
            continue;
        auto& rows = examples[match[1]];
        while (std::getline(file, line) && line != "```") {
            line = std::regex_replace(line, comment, "");
            std::vector<std::string> cells;
            for (std::sregex_iterator i(line.begin(), line.end(), cell), end; i != end; ++i)
                cells.push_back((*i)[0].str()[0] == '"' ? (*i)[1] : (*i)[0]);
            if (!cells.empty())
                rows.push_back(cells);
        }
    }
}

} // namespace

int CodeOf(std::string_view representation)
{
    constexpr std::string_view names =
        "AE AS AT CS DA ?? DS FD FL IS LO LT UT ?? SH SL SQ SS ST TM UI UL US UN ?? ?? PN OB OW ?? DT";
    const std::size_t at = names.find(representation);
    return at == names.npos ? std::stoi(std::string(representation)) : static_cast<int>(at / 3);
}

const std::vector<std::vector<std::string>>& ExampleCells(const std::string& name)
{
    static const ExampleTables examples = [] {
        ExampleTables read;
        ReadExamples(KIVDS_DOCS_DIR "/attributes.md", read);
        ReadExamples(KIVDS_DOCS_DIR "/collections.md", read);
        return read;
    }();
    return examples.at(name);
}

} // namespace kivds::test
