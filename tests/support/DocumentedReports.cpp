#include "tests/support/DocumentedReports.h"

#include "platform/CKivIPBaseError.h"

#include <atomic>
#include <fstream>
#include <map>
#include <regex>
#include <stdexcept>
#include <string_view>
#include <tuple>

namespace kivds::test {

namespace {

/// Function, message, code; views of them find it, too.
using Key = std::tuple<std::wstring, std::wstring, int>;

struct Entry
{
    Documented m_Said = Documented::No;
    bool m_bNever = false; ///< the document says that it cannot be made
    std::atomic<bool> m_bMade{false};
};
using Table = std::map<Key, Entry, std::less<>>;

std::wstring Wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// Reads the page: "## CLASS" (or a heading of several words), "| `FUNCTION`, `FUNCTION` | CODE | `"MESSAGE"`
/// | WHEN |", and at its end
/// "- `CLASS::FUNCTION` `"MESSAGE"`: WHY NOT".
void Read(Table& table)
{
    std::ifstream file(KIVDS_DOCS_DIR "/reports.md");
    const std::regex row(R"re(\| (`.*`) \| (1?) \| `"(.*)"` \| (.*) \|)re"), name("`([^`]+)`");
    const std::regex never(R"re(- `([^`]+)` `"(.*)"`: .*)re");
    std::smatch match;
    std::string owner;
    for (std::string line; std::getline(file, line);) {
        line = std::regex_replace(line, std::regex(R"(\\\|)"), "|");
        if (line.rfind("## ", 0) == 0)
            owner = line.find(' ', 3) != std::string::npos ? "" : line.substr(3) + "::";
        else if (std::regex_match(line, match, never))
            for (auto& [key, entry] : table)
                entry.m_bNever = entry.m_bNever ||
                                 (std::get<0>(key) == Wide(match[1]) && std::get<1>(key) == Wide(match[2]));
        else if (std::regex_match(line, match, row)) {
            const std::string functions = match[1], when = match[4];
            const bool poor = when.rfind("no memory", 0) == 0 || when.rfind("the platform", 0) == 0;
            for (std::sregex_iterator i(functions.begin(), functions.end(), name), end; i != end; ++i)
                table[Key(Wide(owner + (*i)[1].str()), Wide(match[3]), match[2].length() > 0)].m_Said =
                    poor ? Documented::WithoutMemory : Documented::Yes;
        }
    }
    if (table.empty())
        throw std::runtime_error("docs/reports.md cannot be read");
}

Table& All()
{
    static Table table;
    static const bool read = (Read(table), true);
    return read ? table : throw std::logic_error("not reached");
}

} // namespace

Documented Lookup(const wchar_t* function, const wchar_t* message, int code)
{
    const auto row = All().find(std::tuple(std::wstring_view(function), std::wstring_view(message), code));
    if (row == All().end())
        return Documented::No;
    row->second.m_bMade = true;
    return row->second.m_Said;
}

std::vector<std::string> ReportsNotAsDocumented()
{
    std::vector<std::string> wrong;
    for (const auto& [key, entry] : All()) {
        const auto& [function, message, code] = key;
        if (entry.m_bMade == entry.m_bNever)
            wrong.push_back(std::string(function.begin(), function.end()) + ": " +
                            std::string(message.begin(), message.end()) +
                            (entry.m_bMade ? " has been made" : " has not been made"));
    }
    return wrong;
}

ReportCounter::ReportCounter()
{
    All(); // which takes memory
    g_KivIPError.SetListener(&ReportCounter::Listen, this);
}

ReportCounter::~ReportCounter()
{
    g_KivIPError.SetListener(nullptr, nullptr);
}

void ReportCounter::Listen(void* context, const wchar_t* function, const wchar_t* message, int code)
{
    auto& counter = *static_cast<ReportCounter*>(context);
    ++counter.m_nCount;
    counter.m_nUndocumented += Lookup(function, message, code) == Documented::No;
}

} // namespace kivds::test
