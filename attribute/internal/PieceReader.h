// The one splitter of element texts: walks the pieces between separators without copying them. Empty pieces
// are passed over. It borrows the text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kivds {

/// What the last piece, the one that no separator ends, is made of.
enum class LastPiece
{
    Whole,       // the rest of the text
    WithoutFinal // the rest but for the text's final byte, a pad by convention; handed out even when nothing
                 // is left
};

class PieceReader
{
public:
    PieceReader(std::string_view text, std::string_view separators, LastPiece last) noexcept
        : m_Rest(text), m_Last(last), m_bOneSeparator(separators.size() == 1)
    {
        if (m_bOneSeparator)
            m_cSeparator = separators.front();
        else
            m_Separators = SetOf(separators);
    }

    /// Gives the next piece; false when there is none.
    bool Next(std::string_view& piece) noexcept
    {
        while (!m_Rest.empty()) {
            const std::size_t end = EndOfFirst();
            if (end == std::string_view::npos) {
                piece = m_Last == LastPiece::Whole ? m_Rest : m_Rest.substr(0, m_Rest.size() - 1);
                m_Rest = {};
                return true;
            }
            piece = m_Rest.substr(0, end);
            m_Rest.remove_prefix(end + 1);
            if (!piece.empty())
                return true;
        }
        return false;
    }

    /// The text that has not been read yet.
    std::string_view Rest() const noexcept { return m_Rest; }
    /// Whether no separator stands in it.
    bool IsOnePiece() const noexcept { return EndOfFirst() == std::string_view::npos; }

    /// The number of pieces still to come. An int holds it: a text is at most an int long.
    int Count() const noexcept
    {
        PieceReader ahead = *this;
        std::string_view piece;
        int count = 0;
        while (ahead.Next(piece))
            ++count;
        return count;
    }

private:
    using Set = std::array<std::uint32_t, 8>; // a bit for each character

    static std::size_t Word(char c) noexcept { return static_cast<unsigned char>(c) / 32U; }
    static std::uint32_t Bit(char c) noexcept { return 1U << (static_cast<unsigned char>(c) % 32U); }

    static Set SetOf(std::string_view characters) noexcept
    {
        Set set{};
        for (const char c : characters)
            set[Word(c)] |= Bit(c);
        return set;
    }

    // Where the next separator stands; npos when none does. find_first_of would make a call for each
    // character, and comparing it with each separator takes twice as long as looking into the set.
    std::size_t EndOfFirst() const noexcept
    {
        if (m_bOneSeparator)
            return m_Rest.find(m_cSeparator);
        for (std::size_t i = 0; i < m_Rest.size(); ++i) {
            if (m_Separators[Word(m_Rest[i])] & Bit(m_Rest[i]))
                return i;
        }
        return std::string_view::npos;
    }

    std::string_view m_Rest;
    LastPiece m_Last;
    bool m_bOneSeparator;
    char m_cSeparator = '\0'; // the one separator
    Set m_Separators{};       // all of them, when they are not one
};

} // namespace kivds
