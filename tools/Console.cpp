#include "tools/Console.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#if defined(__unix__) || defined(__APPLE__)
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace kivds::tool {
namespace {

/// The width of a terminal; 0 when the stream is none.
std::size_t TerminalWidth(std::FILE* stream)
{
#if defined(__unix__) || defined(__APPLE__)
    const int descriptor = fileno(stream);
    if (!isatty(descriptor))
        return 0;
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
#else
    static_cast<void>(stream);
    return 0;
#endif
}

bool WantsColours()
{
    // NOLINTBEGIN(concurrency-mt-unsafe): nothing here changes the environment
    const char* const terminal = std::getenv("TERM");
    const char* const refused = std::getenv("NO_COLOR"); // https://no-color.org
    // NOLINTEND(concurrency-mt-unsafe)
    return !(refused && *refused) && terminal && std::strcmp(terminal, "dumb") != 0;
}

const char* CodeOf(Style style)
{
    switch (style) {
    case Style::Faint:
        return "\x1b[2m";
    case Style::Bold:
        return "\x1b[1m";
    case Style::Red:
        return "\x1b[31m";
    case Style::Green:
        return "\x1b[32m";
    case Style::Yellow:
        return "\x1b[33m";
    case Style::Cyan:
        return "\x1b[36m";
    case Style::Plain:
        break;
    }
    return "";
}

/// The first character of a UTF-8 text: its bytes and columns (Unicode's East Asian wide characters fill
/// two).
struct Character
{
    std::size_t bytes;
    std::size_t columns;
};

Character FirstOf(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t code = length == 1 ? lead : lead & (0x7FU >> length);
    const std::size_t bytes = std::min(length, text.size());
    for (std::size_t i = 1; i < bytes; ++i)
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
    struct Range
    {
        char32_t first;
        char32_t last;
    };
    static constexpr Range wide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF},  {0xAC00, 0xD7A3},
                                     {0xF900, 0xFAFF}, {0xFE30, 0xFE6F},  {0xFF01, 0xFF60},
                                     {0xFFE0, 0xFFE6}, {0x20000, 0x3FFFD}};
    const bool isWide = std::any_of(std::begin(wide), std::end(wide), [&](const Range& range) {
        return code >= range.first && code <= range.last;
    });
    return {bytes, isWide ? 2U : 1U};
}

} // namespace

std::string Counted(long long count, std::string_view thing)
{
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

std::size_t ColumnsOf(std::string_view text)
{
    std::size_t columns = 0;
    while (!text.empty()) {
        const Character first = FirstOf(text);
        columns += first.columns;
        text.remove_prefix(first.bytes);
    }
    return columns;
}

std::string_view CutAt(std::string_view text, std::size_t columns)
{
    std::size_t bytes = 0;
    while (bytes < text.size()) {
        const Character next = FirstOf(text.substr(bytes));
        if (next.columns > columns)
            break;
        columns -= next.columns;
        bytes += next.bytes;
    }
    return text.substr(0, bytes);
}

Line& Line::Add(std::string_view text, Style style)
{
    m_Pieces.push_back({std::string(text), style});
    return *this;
}

Line& Line::AddColumn(std::string_view text, std::size_t width, Style style)
{
    const std::size_t columns = ColumnsOf(text);
    return Add(text, style).Add(std::string(width > columns ? width - columns : 0, ' '));
}

Console::Console()
    : m_nWidth(TerminalWidth(stdout)), m_nErrorWidth(TerminalWidth(stderr)),
      m_bColours(m_nWidth > 0 && WantsColours())
{
}

Console::~Console()
{
    ClearBar();
}

void Console::Print(const Line& line)
{
    ClearBar();
    std::size_t room = m_nWidth;
    std::string out;
    for (const Line::Piece& piece : line.m_Pieces) {
        std::string_view text = piece.text;
        if (HasTerminal()) {
            const std::string_view cut = CutAt(text, room);
            const bool isCut = cut.size() < text.size();
            text = isCut ? CutAt(cut, room - std::min<std::size_t>(room, 1)) : cut;
            room -= ColumnsOf(text);
            if (isCut && room > 0) {
                out.append(text).append("\u2026");
                break;
            }
        }
        const bool isColoured = m_bColours && piece.style != Style::Plain && !text.empty();
        out.append(isColoured ? CodeOf(piece.style) : "").append(text).append(isColoured ? "\x1b[0m" : "");
    }
    if (!HasTerminal())
        out.erase(out.find_last_not_of(' ') + 1);
    out += '\n';
    (void)std::fwrite(out.data(), 1, out.size(), stdout);
}

void Console::Print(std::string_view text)
{
    Print(Line().Add(text));
}

void Console::Message(const std::filesystem::path& file, std::string_view text)
{
    ClearBar();
    (void)std::fflush(stdout); // so that both stand in order when they go to the same place
    fmt::print(stderr, "{}: {}\n", file.string(), text);
}

void Console::StartProgress(std::size_t total)
{
    m_nTotal = total;
    m_nDone = 0;
    m_NextDraw = {};
}

void Console::Step(std::string_view what)
{
    ++m_nDone;
    const auto now = std::chrono::steady_clock::now();
    if (m_nErrorWidth < 40 || m_nTotal < 2 || now < m_NextDraw)
        return;
    m_NextDraw = now + std::chrono::milliseconds(50);
    constexpr std::size_t kCells = 24;
    const std::size_t cells = std::min(kCells, kCells * m_nDone / m_nTotal);
    std::string bar =
        fmt::format("[{:#<{}}{:.<{}}] {}/{} ", "", cells, "", kCells - cells, m_nDone, m_nTotal);
    bar += CutAt(what, m_nErrorWidth - std::min(m_nErrorWidth, bar.size() + 1));
    fmt::print(stderr, "\r\x1b[K{}", bar);
    m_bBarShown = true;
}

void Console::EndProgress()
{
    ClearBar();
    m_nTotal = 0;
}

void Console::ClearBar()
{
    if (m_bBarShown)
        fmt::print(stderr, "\r\x1b[K");
    m_bBarShown = false;
}

bool Console::Flush()
{
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

} // namespace kivds::tool
