// The one splitter of element texts: walks the pieces between separators without copying them. Empty pieces
// are passed over. It borrows the text.
#pragma once

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
        : m_Rest(text), m_Separators(separators), m_Last(last)
    {
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
    // Where the next separator stands; npos when none does. find_first_of would make a call for each
    // character.
    std::size_t EndOfFirst() const noexcept
    {
        if (m_Separators.size() == 1)
            return m_Rest.find(m_Separators.front());
        for (std::size_t i = 0; i < m_Rest.size(); ++i) {
            for (const char separator : m_Separators) {
                if (m_Rest[i] == separator)
                    return i;
            }
        }
        return std::string_view::npos;
    }

    std::string_view m_Rest;
    std::string_view m_Separators;
    LastPiece m_Last;
};

} // namespace kivds
