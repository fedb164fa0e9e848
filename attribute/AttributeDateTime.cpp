// Conversion of date, time, date-time and age texts (PS3.5 6.2: DA, TM, DT, AS). Nothing here checks that the
// digits form a real date or time. Every number is read from a fixed run of characters; what the text does
// not reach is 0.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/NumberText.h"
#include "attribute/internal/PieceReader.h"
#include "foundation/internal/Operation.h"

#include <algorithm>

using kivds::IntegerAt;
using kivds::LastPiece;
using kivds::Operation;
using kivds::PieceReader;

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kFractionDigits = 6;

std::string_view TextOf(const char* text, int length)
{
    return text && length > 0 ? std::string_view(text, static_cast<std::size_t>(length)) : std::string_view();
}

int* IntegersOf(const SKivAGAttributeValue& value)
{
    return reinterpret_cast<int*>(value.pData); // aligned: a heap block or the inline data area
}

/// The values of a multi-valued text, separated by backslashes. The text's last byte counts as a pad and
/// belongs to none.
PieceReader SplitDicomString(std::string_view text)
{
    return {text, "\\", LastPiece::WithoutFinal};
}

} // namespace

/// What dates and times differ in.
struct CKivDSDicomAttribute::SPieceFormat
{
    const wchar_t* name;
    const wchar_t* nameOfPieces; // under which what concerns single pieces is reported
    int elements;
    bool (CKivDSDicomAttribute::*convert)(const char*, int, SKivAGAttributeValue&);
};

bool CKivDSDicomAttribute::ConvertPieces(const char* text, int length, int expectedCount,
                                         const SPieceFormat& format)
{
    const Operation op(format.name);
    const Operation pieceOp(format.nameOfPieces);
    if (!text || length < 1)
        return op.Fail(L" Bad input parameters ");
    PieceReader pieces = SplitDicomString(TextOf(text, length));
    const int found = expectedCount == 1 ? 1 : pieces.Count();
    // Without a piece the expected number of values is left, all zero; otherwise that number, which may be
    // any, costs nothing.
    if (!Alloc(found > 0 ? found : expectedCount, eAttrInt, format.elements))
        return op.Fail(L" Unable to allocate attribute values ");
    if (expectedCount == 1)
        return (this->*format.convert)(text, length, m_pValues[0]);
    if (found == 0)
        return pieceOp.Fail(L" Failed to convert the DICOM values ", 1);
    std::string_view piece;
    for (int i = 0; pieces.Next(piece); ++i) {
        if (!(this->*format.convert)(piece.data(), static_cast<int>(piece.size()), m_pValues[i])) {
            pieceOp.Report(L" Failed to convert the DICOM string ", 1);
            break;
        }
    }
    return true;
}

bool CKivDSDicomAttribute::Convert2Date(const char* text, int length, int expectedCount)
{
    return ConvertPieces(text, length, expectedCount,
                         {L"CKivDSDicomAttribute::Convert2Date", L"CKivDSDicomAttribute::Convert2Date ", 3,
                          &CKivDSDicomAttribute::InternalConvert2Date});
}

bool CKivDSDicomAttribute::Convert2Time(const char* text, int length, int expectedCount)
{
    return ConvertPieces(text, length, expectedCount,
                         {L"CKivDSDicomAttribute::Convert2Time", L"CKivDSDicomAttribute::Convert2Time ", 4,
                          &CKivDSDicomAttribute::InternalConvert2Time});
}

bool CKivDSDicomAttribute::InternalConvert2Date(const char* text, int length, SKivAGAttributeValue& value)
{
    const bool dotted = length == 10; // YYYY.MM.DD, of the ACR-NEMA Standard 300
    if ((length != 8 && !dotted) || !text || value.nCount != 3)
        return Operation(L"CKivDSDicomAttribute::InternalConvert2Date ")
            .Fail(L" Unsupported DICOM data format ", 1);
    const std::string_view date = TextOf(text, length);
    int* const elements = IntegersOf(value);
    elements[0] = IntegerAt<4>(date, 0);
    elements[1] = IntegerAt<2>(date, dotted ? 5 : 4);
    elements[2] = IntegerAt<2>(date, dotted ? 8 : 6);
    return true;
}

bool CKivDSDicomAttribute::InternalConvert2Time(const char* text, int length, SKivAGAttributeValue& value)
{
    const Operation op(L"CKivDSDicomAttribute::InternalConvert2Time");
    if (!text || length <= 0 || value.nCount != 4)
        return op.Fail(L" Bad input parameters ");
    const std::string_view time = TextOf(text, length);
    const bool colons = length > 2 && time[2] == ':'; // HH:MM:SS.ffffff, of the ACR-NEMA Standard 300
    int* const elements = IntegersOf(value);
    elements[0] = IntegerAt<2>(time, 0);
    elements[1] = IntegerAt<2>(time, colons ? 3 : 2);
    elements[2] = IntegerAt<2>(time, colons ? 6 : 4);
    elements[3] = 0;
    const int fraction = IntegerAt<kFractionDigits>(time, colons ? 9 : 7);
    if (fraction < 0)
        return op.Fail(L"Signed to Unsigned conversion error");
    elements[3] = fraction;
    return true;
}

bool CKivDSDicomAttribute::Convert2DateTime(const char* text, int length)
{
    const Operation op(L"CKivDSDicomAttribute::Convert2DateTime");
    if (!text || length < 1)
        return op.Fail(L" Bad input parameters ");
    const std::string_view dateTime = TextOf(text, length);
    const std::size_t offset = dateTime.find_first_of("+-");
    const std::size_t point = dateTime.find('.');
    if (!Alloc(1, eAttrInt, 9))
        return op.Fail(L" Unable to allocate attribute values ");
    std::size_t end = std::min<std::size_t>(dateTime.size(), 14);
    for (const std::size_t mark : {offset, point}) {
        if (mark != kNone && mark + 1 < end)
            end = mark + 1;
    }
    if (end < 4)
        return false;
    int* const elements = IntegersOf(m_pValues[0]);
    elements[0] = IntegerAt<4>(dateTime, 0);
    for (std::size_t i = 1, at = 4; i <= 5; ++i, at += 2) { // month, day, hours, minutes, seconds
        if (at + 2 > end)
            return true;
        elements[i] = IntegerAt<2>(dateTime, at);
    }
    if (point != kNone && point < offset)
        elements[6] = IntegerAt<kFractionDigits>(dateTime.substr(0, offset), point + 1);
    if (offset != kNone) {
        const int sign = dateTime[offset] == '-' ? -1 : 1;
        for (std::size_t i = 7, at = offset + 1; i <= 8 && at + 2 <= dateTime.size(); ++i, at += 2)
            elements[i] = sign * std::max(IntegerAt<2>(dateTime, at), 0); // a second sign is none
    }
    return true;
}

bool CKivDSDicomAttribute::Convert2Age(const char* text, int length)
{
    const Operation op(L"CKivDSDicomAttribute::Convert2Age");
    if (!text || length < 1)
        return op.Fail(L" Bad input parameters ");
    const std::string_view age = TextOf(text, length);
    const std::size_t unit = age.find_first_of("DWMYdwmy");
    if (unit == kNone)
        return op.Fail(L" Unsupported DICOM age string ");
    if (!Alloc(1, eAttrInt, 2))
        return op.Fail(L" Unable to allocate attribute values ");
    int* const elements = IntegersOf(m_pValues[0]);
    elements[0] = IntegerAt(age, 0, unit);
    elements[1] = static_cast<unsigned char>(age[unit]);
    return true;
}
