// Tables of cases: the blocks "```examples NAME" of docs/attributes.md and docs/collections.md, and those in
// a test's own text.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace kivds::test {

/// The rows of a table, for a loop with structured bindings.
template <class... Column>
using Rows = std::initializer_list<std::tuple<Column...>>;
using Txt = const char*;
using Wide = const wchar_t*;

/// The representation code of "AE" to "DT", or of a number.
int CodeOf(std::string_view representation);

/// The rows of a block "```examples NAME" in docs/attributes.md or docs/collections.md, for good:
/// columns between two blanks or more, texts between quotes where they are empty or hold such, null.
const std::vector<std::vector<std::string>>& ExampleCells(const std::string& name);
template <class T>
T CellAs(const std::string& cell)
{
    if constexpr (std::is_same_v<T, bool>)
        return cell == "true";
    else if constexpr (std::is_same_v<T, char>)
        return cell.at(0);
    else if constexpr (std::is_same_v<T, Txt>)
        return cell == "null" ? nullptr : cell.c_str();
    else if constexpr (std::is_same_v<T, std::wstring>)
        return {cell.begin(), cell.end()};
    else
        return static_cast<T>(std::stol(cell));
}
template <class... Column>
std::vector<std::tuple<Column...>> Examples(const std::string& name)
{
    std::vector<std::tuple<Column...>> rows;
    for (const std::vector<std::string>& cells : ExampleCells(name)) {
        std::size_t column = 0;
        const auto next = [&]() -> const std::string& { return cells.at(column++); };
        rows.push_back(std::tuple<Column...>{CellAs<Column>(next())...}); // from left to right, in braces
    }
    return rows;
}

} // namespace kivds::test
