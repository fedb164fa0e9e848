// What the tool says: lines on standard output, messages on standard error, a progress bar between them.
// Colours and the terminal's width count only where the output is a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kivds::tool {

enum class Style
{
    Plain,
    Faint,
    Bold,
    Red,
    Green,
    Yellow,
    Cyan
};

/// A line of output, piece by piece.
class Line
{
public:
    Line& Add(std::string_view text, Style style = Style::Plain);
    /// The same, filled with blanks up to `width` columns.
    Line& AddColumn(std::string_view text, std::size_t width, Style style = Style::Plain);

private:
    friend class Console;

    struct Piece
    {
        std::string text;
        Style style;
    };
    std::vector<Piece> m_Pieces;
};

class Console
{
public:
    Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console();

    /// A line on standard output; on a terminal it is cut at the right edge.
    void Print(const Line& line);
    void Print(std::string_view text);
    /// A message about a file on standard error: the file's name, then the text.
    void Message(const std::filesystem::path& file, std::string_view text);
    bool HasTerminal() const { return m_nWidth > 0; }

    /// A bar for `total` steps on standard error, when that is a terminal; the next message puts it aside.
    void StartProgress(std::size_t total);
    void Step(std::string_view what);
    void EndProgress();

    /// Whether everything printed so far has been written.
    bool Flush();

private:
    void ClearBar();

    const std::size_t m_nWidth;      // of standard output; 0: no terminal
    const std::size_t m_nErrorWidth; // of standard error; 0: no terminal
    const bool m_bColours;
    std::size_t m_nTotal = 0;
    std::size_t m_nDone = 0;
    bool m_bBarShown = false;
    std::chrono::steady_clock::time_point m_NextDraw;
};

/// A number of things: "1 attribute", "2 attributes".
std::string Counted(long long count, std::string_view thing);

/// The columns that a UTF-8 text fills, and the longest start of it that fills no more than `columns`.
std::size_t ColumnsOf(std::string_view text);
std::string_view CutAt(std::string_view text, std::size_t columns);

} // namespace kivds::tool
