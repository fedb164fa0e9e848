// Conversion of character strings, person names and number strings (PS3.5 6.2) into values.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/NumberText.h"
#include "attribute/internal/PieceReader.h"
#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/Blocks.h"

#include <limits>
#include <vector>

using kivds::LastPiece;
using kivds::Operation;
using kivds::PieceReader;

// Makes `value` a NUL-terminated copy of a text. A single short text goes inside the attribute.
bool CKivDSDicomAttribute::SetText(SKivAGAttributeValue& value, std::string_view text)
{
    const auto bytes = static_cast<std::int64_t>(text.size()) + 1;
    const bool inside = m_nNumberOfValues == 1 && bytes <= static_cast<std::int64_t>(sizeof m_InlineData);
    char* const data = inside ? m_InlineData : NewData(bytes);
    if (!data)
        return false;
    kivds::CopyBytes(data, text.data(), bytes - 1);
    data[bytes - 1] = '\0';
    value = {static_cast<int>(bytes), eAttrChar, 0, data};
    m_bPreallocatedData = inside;
    return true;
}

// Makes each piece of a text a value; most texts are one piece.
bool CKivDSDicomAttribute::KeepPieces(const Operation& op, const PieceReader& pieces, const wchar_t* noMemory)
{
    if (!pieces.IsOnePiece())
        return KeepEachPiece(op, pieces, noMemory);
    Clean();
    if (!AllocAttributeValue(1))
        return op.Fail(noMemory);
    m_nNumberOfValues = 1;
    if (SetText(m_pValues[0], pieces.Rest()))
        return true;
    Clean();
    return op.Fail(noMemory);
}

bool CKivDSDicomAttribute::KeepEachPiece(const Operation& op, PieceReader pieces, const wchar_t* noMemory)
{
    // Texts mostly have a few pieces; these are looked for once, not twice. Clearing places for them would
    // take longer than that.
    constexpr int most = 8;
    struct SPiece
    {
        const char* text;
        std::size_t size;
    };
    SPiece few[most];
    int found = 0;
    std::string_view piece;
    for (; found < most && pieces.Next(piece); ++found)
        few[found] = {piece.data(), piece.size()};
    const int count = found < most ? found : most + pieces.Count();
    Clean();
    if (count > 0 && !AllocAttributeValue(count))
        return op.Fail(noMemory);
    m_nNumberOfValues = count;
    for (int i = 0; i < count; ++i) {
        if (i < found)
            piece = {few[i].text, few[i].size};
        else
            pieces.Next(piece);
        if (!SetText(m_pValues[i], piece)) {
            Clean();
            return op.Fail(noMemory);
        }
    }
    return true;
}

bool CKivDSDicomAttribute::Convert2String(const char* text, int length, const char* separators,
                                          int separatorCount)
{
    const Operation op(L"CKivDSDicomAttribute::Convert2String");
    if (!text || length < 1 || length == std::numeric_limits<int>::max()) // no room to count the NUL
        return op.Fail(L" Bad input parameters ");
    const std::string_view whole(text, static_cast<std::size_t>(length));
    const std::string_view marks(
        separators, separators && separatorCount > 0 ? static_cast<std::size_t>(separatorCount) : 0);
    return KeepPieces(op, {whole, marks, LastPiece::Whole}, L"Failed to allocate attribute value array");
}

// Names (\), component groups (=) and components (^) leave one flat list, and nothing that is empty leaves a
// value: the three separators are alike.
bool CKivDSDicomAttribute::Convert2PersonName(const char* text, int length)
{
    const Operation op(L"CKivDSDicomAttribute::Convert2PersonName");
    if (!text || length < 1 || length == std::numeric_limits<int>::max())
        return op.Fail(L" Bad input parameters ");
    return KeepPieces(op, {{text, static_cast<std::size_t>(length)}, "\\=^", LastPiece::Whole},
                      L"Failed to allocate new attribute value array");
}

/// What decimal and integer strings differ in.
struct CKivDSDicomAttribute::SNumberFormat
{
    const wchar_t* name;
    const wchar_t* noNumber;
    const wchar_t* noMemory;
};

template <class T>
bool CKivDSDicomAttribute::ConvertNumbers(const char* text, int length, const SNumberFormat& format,
                                          bool (*read)(const char*&, const char*, T&))
{
    const Operation op(format.name);
    if (!text || length <= 0)
        return op.Fail(L" Bad input parameters ");
    // The first few numbers are read on the stack: most texts hold no more.
    constexpr int few = 16;
    T first[few];
    std::vector<T> rest;
    int count = 0;
    const char* const end = text + length;
    const bool collected = op.Guard(format.noMemory, [&] {
        T number{};
        for (const char* position = text; position < end && read(position, end, number); ++count) {
            if (count < few)
                first[count] = number;
            else
                rest.push_back(number);
            if (position < end)
                ++position; // the one character between two numbers
        }
        return true;
    });
    if (!collected)
        return false;
    if (count == 0) {
        Clean();
        return op.Fail(format.noNumber);
    }
    if (!Alloc(1, kivds::ElementTypeOf<T>::value, count))
        return op.Fail(format.noMemory);
    const auto bytesOf = [](std::size_t numbers) { return static_cast<std::int64_t>(numbers * sizeof(T)); };
    const auto head = static_cast<std::size_t>(count) - rest.size();
    kivds::CopyBytes(m_pValues[0].pData, first, bytesOf(head));
    kivds::CopyBytes(m_pValues[0].pData + bytesOf(head), rest.data(), bytesOf(rest.size()));
    return true;
}

bool CKivDSDicomAttribute::Convert2Double(const char* text, int length)
{
    return ConvertNumbers<double>(text, length,
                                  {L"CKivDSDicomAttribute::Convert2Double",
                                   L" Unsupported DICOM decimal string format ",
                                   L" Unable to allocate the attribute values  "},
                                  &kivds::ReadDecimal);
}

bool CKivDSDicomAttribute::Convert2Int(const char* text, int length)
{
    return ConvertNumbers<int>(text, length,
                               {L"CKivDSDicomAttribute::Convert2Int",
                                L" Unsupported DICOM integer string format ",
                                L" Unable to allocat the attribute values "},
                               &kivds::ReadInteger);
}
