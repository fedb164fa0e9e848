// Values as text for display, and the diagnostic dump. Numbers are written without the locale.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/DumpChannel.h"
#include "attribute/internal/Representation.h"
#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

using kivds::Operation;

namespace {

/// A text of limited length, to which pieces are appended as long as they fit whole.
class TextWindow
{
public:
    TextWindow(char* text, int room) noexcept : m_Text(text), m_Room(static_cast<std::size_t>(room)) {}

    bool Append(std::string_view piece) noexcept
    {
        if (piece.size() > m_Room - m_Used)
            return false;
        std::copy(piece.begin(), piece.end(), m_Text + m_Used);
        m_Used += piece.size();
        return true;
    }

    std::size_t Used() const noexcept { return m_Used; }

private:
    char* m_Text;
    std::size_t m_Room;
    std::size_t m_Used = 0;
};

/// Appends one integer by a printf format.
template <class T>
bool AppendInteger(TextWindow& window, const char* format, T value) noexcept
{
    char piece[32];
    const int length = std::snprintf(piece, sizeof piece, format, value);
    return window.Append({piece, static_cast<std::size_t>(length)});
}

/// Appends one number as "%f " writes it, but always with the point.
bool AppendDecimal(TextWindow& window, double value) noexcept
{
    char piece[320]; // the largest double: a sign, 309 digits, the point, 6 decimals, the blank
    char* const end = std::to_chars(piece, piece + sizeof piece - 1, value, std::chars_format::fixed, 6).ptr;
    *end = ' ';
    return window.Append({piece, static_cast<std::size_t>(end + 1 - piece)});
}

/// Appends the first `count` elements, each a piece of its own, up to the first that does not fit.
template <class T>
void RenderNumbers(TextWindow& window, const T* elements, int count, int representation) noexcept
{
    const bool isTag = representation == kivds::kAttributeTag || representation == kivds::kSequence;
    const auto append = [&](T element) {
        if constexpr (std::is_floating_point_v<T>)
            return AppendDecimal(window, element);
        else if constexpr (std::is_same_v<T, unsigned short>)
            return AppendInteger(window, isTag ? "%04x(h) " : "%2u ", element);
        else if constexpr (std::is_same_v<T, unsigned int>)
            return AppendInteger(window, isTag ? "%08x(h) " : "%u ", element);
        else if constexpr (std::is_same_v<T, short>)
            return AppendInteger(window, "%2d ", element);
        else
            return AppendInteger(window, "%d ", element);
    };
    for (int i = 0; i < count && append(elements[i]); ++i) {
    }
}

void RenderCharacters(TextWindow& window, const char* characters, int count, int representation) noexcept
{
    if (representation == kivds::kOtherBinary || representation == kivds::kByte) {
        for (int i = 0; i < std::min(count, 10); ++i) {
            if (!AppendInteger(window, "%02d ", static_cast<signed char>(characters[i])))
                return;
        }
        return;
    }
    const std::string_view text(characters, static_cast<std::size_t>(count));
    window.Append(text.substr(0, text.find('\0')));
}

const char* TypeName(tagEKivAGAttributeType type)
{
    constexpr const char* names[] = {"N/A",  "char ",  "short ", "u short ",
                                     "int ", "u int ", "float ", "double "};
    return names[type >= eAttrNone && type <= eAttrDouble ? type : eAttrNone];
}

} // namespace

void CKivDSDicomAttribute::GetValueAsString(int index, int bufferSize, unsigned char* text) const
{
    const SKivAGAttributeValue* const value = GetValuePtr(index);
    if (!value)
        return Operation(L"CKivDSDicomAttribute::GetValueAsString").Report(L"Invalid input attribute index");
    if (!text || bufferSize < 1)
        return;
    TextWindow window(reinterpret_cast<char*>(text), bufferSize - 1);
    const int count = value->pData ? std::clamp(value->nCount, 0, bufferSize - 1) : 0;
    kivds::WithNumericType(
        value->eType,
        [&](auto* scalar) {
            RenderNumbers(window, reinterpret_cast<decltype(scalar)>(value->pData), count, m_nRepresentation);
        },
        [&] {
            if (value->eType == eAttrChar)
                RenderCharacters(window, value->pData, count, m_nRepresentation);
            else
                window.Append(std::string_view("N/A ").substr(0, static_cast<std::size_t>(bufferSize - 1)));
        });
    text[window.Used()] = '\0';
    text[bufferSize - 1] = '\0';
}

void CKivDSDicomAttribute::Dump()
{
    DumpDicomInfo();
    DumpValuesInfo();
    if (IsMultiFrame())
        m_pFrameRange->Dump();
}

void CKivDSDicomAttribute::DumpDicomInfo()
{
    char line[300];
    (void)std::snprintf(line, sizeof line, "\n Attribute:  Group: %d, Element %d, Repr: %s Values: %d \n",
                        static_cast<int>(m_ulTag >> 16), static_cast<int>(m_ulTag & 0xFFFF),
                        kivds::RepresentationOf(m_nRepresentation).description, m_nNumberOfValues);
    kivds::SendDumpLine(line);
}

bool CKivDSDicomAttribute::DumpValuesInfo()
{
    if (!m_pValues)
        return false;
    if (!kivds::DumpIsHeard())
        return true;
    return Operation(L"CKivDSDicomAttribute::DumpValuesInfo").Guard(kivds::kUnexpectedError, [&] {
        std::string line = TypeName(m_pValues[0].eType);
        line += "/ " + std::to_string(m_nNumberOfValues) + ' ';
        unsigned char rendering[200];
        for (int i = 0; i < m_nNumberOfValues; ++i) {
            GetValueAsString(i, sizeof rendering, rendering);
            line += reinterpret_cast<const char*>(rendering);
        }
        kivds::SendDumpLine(line.c_str());
        return true;
    });
}
