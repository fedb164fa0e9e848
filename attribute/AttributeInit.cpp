// Initialisation from DICOM elements and from value records: the dispatch by representation code,
// placeholders for what is not kept, and raw binary values.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/Representation.h"
#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/Blocks.h"

#include <algorithm>
#include <cstring>
#include <functional>

using kivds::Operation;

namespace {

constexpr std::uint32_t kPixelData = 0x7FE00010; // PS3.6

template <class T>
T ReadField(const char* record, int offset)
{
    T value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

} // namespace

bool CKivDSDicomAttribute::InitFromDicomElement(int n, char* element, bool, bool mustReplicate)
{
    const Operation op(L"CKivDSDicomAttribute::InitFromDicomElement");
    if (n <= 0 || !element)
        return op.Fail(L" Bad input parameters ");
    // The toolkit's element record; nothing else of it is read.
    m_ulTag = ReadField<std::uint32_t>(element, 0);
    m_nRepresentation = ReadField<std::int32_t>(element, 4);
    const auto length = ReadField<std::int32_t>(element, 152);
    const char* const data = ReadField<const char*>(element, 156);
    m_bMustReplicate = mustReplicate;
    m_bPrivate = false;
    const bool ok = m_ulTag == kPixelData ? MakePixelDataAttribute(m_nRepresentation, data)
                                          : ConvertElement(m_nRepresentation, length, data, 1);
    return ok || op.Fail(L" Unable to initialize the attribute object ");
}

bool CKivDSDicomAttribute::InitFromDicomData(unsigned long tag, int representation, int length,
                                             const char* data, const char*, bool, bool mustReplicate,
                                             int inSequenceIndex, int expectedCount)
{
    return InitFromElement(tag, representation, length, data, expectedCount, mustReplicate, inSequenceIndex);
}

bool CKivDSDicomAttribute::InitFromElement(unsigned long tag, int representation, int length,
                                           const char* data, int expectedCount, bool mustReplicate,
                                           int inSequenceIndex)
{
    const Operation op(L"CKivDSDicomAttribute::InitFromDicomData");
    m_ulTag = static_cast<std::uint32_t>(tag);
    m_nRepresentation = representation;
    if (m_ulTag == kPixelData)
        return MakePixelDataAttribute(representation, data);
    const bool sequence = representation == kivds::kSequence;
    if ((length <= 0 || !data) && !sequence)
        return op.Fail(L" Bad input parameters ");
    m_bPrivate = false;
    m_bMustReplicate = mustReplicate;
    if (sequence) {
        const std::uint32_t placeholder = m_ulTag;
        Convert2VectOfScalars<unsigned int>(reinterpret_cast<const char*>(&placeholder), sizeof placeholder,
                                            this, nullptr);
        SetDataElementType(eAttrUInt);
        m_bPrivate = true;
        return true;
    }
    const bool ok = ConvertElement(representation, length, data, expectedCount);
    for (int i = 0; i < m_nNumberOfValues; ++i)
        m_pValues[i].nInSequenceIndex = inSequenceIndex;
    return ok || op.Fail(L" Unable to initialize the attribute object ");
}

bool CKivDSDicomAttribute::HoldsBytes(const char* data) const
{
    const auto within = [data](const char* first, std::int64_t bytes) {
        return first && !std::less<>()(data, first) &&
               std::less<>()(data, first + std::max<std::int64_t>(bytes, 0));
    };
    return within(m_InlineData, sizeof m_InlineData) ||
           std::any_of(m_pValues, m_pValues + m_nNumberOfValues, [&](const SKivAGAttributeValue& value) {
               return within(value.pData, kivds::ByteSize(value.eType, value.nCount));
           });
}

// Hands an element to its conversion. Its bytes may be those of a value of this attribute, which the
// conversion would release before it reads them: then it reads a copy.
bool CKivDSDicomAttribute::ConvertElement(int representation, int length, const char* data, int expectedCount)
{
    return m_nNumberOfValues > 0 ? ConvertAgain(representation, length, data, expectedCount)
                                 : Dicom2Attribute(representation, length, data, expectedCount);
}

bool CKivDSDicomAttribute::ConvertAgain(int representation, int length, const char* data, int expectedCount)
{
    if (!data || length <= 0 || !HoldsBytes(data))
        return Dicom2Attribute(representation, length, data, expectedCount);
    const kivds::Block copy = kivds::NewBlock(length);
    if (!copy)
        return false;
    kivds::CopyBytes(copy.get(), data, length);
    return Dicom2Attribute(representation, length, copy.get(), expectedCount);
}

bool CKivDSDicomAttribute::InitFromValues(unsigned long tag, int representation, int count,
                                          SKivAGAttributeValue* values, bool toDicom)
{
    const Operation op(L"CKivDSDicomAttribute::InitFromValues");
    if (count <= 0 || !values)
        return op.Fail(L" Bad input parameters ");
    m_ulTag = static_cast<std::uint32_t>(tag);
    m_nRepresentation = representation;
    if (representation == kivds::kSequence)
        return op.Fail(L" Sequence type DICOM data values not supported ");
    Clean();
    if (!AllocAttributeValue(count))
        return op.Fail(L"Failed to allocate attribute value array");
    FillValues(values, count);
    if (toDicom)
        Attribute2Dicom();
    return true;
}

void CKivDSDicomAttribute::InitEmpty(unsigned long tag, int representation, bool mustReplicate)
{
    Clean();
    m_ulTag = static_cast<std::uint32_t>(tag);
    m_nRepresentation = representation;
    m_bPrivate = false;
    m_bMustReplicate = mustReplicate;
}

bool CKivDSDicomAttribute::Dicom2Attribute(int representation, int length, const char* data,
                                           int expectedCount)
{
    const kivds::Representation& row = kivds::RepresentationOf(representation);
    switch (row.conversion) {
    case kivds::Conversion::None:
        break;
    case kivds::Conversion::Text:
        Convert2String(data, length, "\\", 1);
        break;
    case kivds::Conversion::PersonName:
        Convert2PersonName(data, length);
        break;
    case kivds::Conversion::Age:
        if (data && (length < 1 || *data != '\0'))
            Convert2Age(data, length);
        break;
    case kivds::Conversion::Date:
        Convert2Date(data, length, expectedCount);
        break;
    case kivds::Conversion::Time:
        Convert2Time(data, length, expectedCount);
        break;
    case kivds::Conversion::DateTime:
        Convert2DateTime(data, length);
        break;
    case kivds::Conversion::DecimalString:
        Convert2Double(data, length);
        break;
    case kivds::Conversion::IntegerString:
        Convert2Int(data, length);
        break;
    case kivds::Conversion::Raw:
        ConvertRaw(row.elementType, length, data);
        break;
    }
    return true;
}

void CKivDSDicomAttribute::ConvertRaw(tagEKivAGAttributeType type, int length, const char* data)
{
    const bool converted = kivds::WithNumericType(
        type, [&](auto* scalar) { return Convert2VectOfScalars(data, length, this, scalar); },
        [&] { return Convert2VectOfScalars<char>(data, length, this, nullptr); });
    if (converted)
        SetDataElementType(type);
}

bool CKivDSDicomAttribute::Attribute2Dicom()
{
    return false;
}

bool CKivDSDicomAttribute::MakePixelDataAttribute(int, const char*)
{
    Clean();
    for (int i = 0; i < 4; ++i)
        m_InlineData[i] = static_cast<char>(static_cast<unsigned char>(kPixelData >> (8 * i)));
    m_pValues = &m_InlineValue;
    m_nNumberOfValues = 1;
    m_InlineValue = {4, eAttrChar, 0, m_InlineData};
    m_bPreallocatedData = true;
    m_bPrivate = true;
    return true;
}

template <class T>
bool Convert2VectOfScalars(const char* data, int byteLength, CKivDSDicomAttribute* attribute, T*)
{
    const Operation op(L"Convert2VectOfScalars");
    if (!data || !attribute || byteLength < static_cast<int>(sizeof(T)))
        return op.Fail(L"Invalid input parameter");
    const bool inside = byteLength < static_cast<int>(sizeof attribute->m_InlineData);
    char* const destination = inside ? attribute->m_InlineData : attribute->NewData(byteLength);
    if (!destination)
        return op.Fail(L"Failed to allocate destination buffer");
    // Copied before the attribute is cleaned, and with memmove: `data` may lie in the attribute's own values.
    std::memmove(destination, data, static_cast<std::size_t>(byteLength));
    attribute->Clean();
    attribute->AllocAttributeValue(1);
    attribute->m_nNumberOfValues = 1;
    attribute->m_InlineValue = {byteLength / static_cast<int>(sizeof(T)), kivds::ElementTypeOf<T>::value, 0,
                                destination};
    attribute->m_bPreallocatedData = inside;
    return true;
}

template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, char*);
template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, short*);
template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, unsigned short*);
template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, int*);
template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, unsigned int*);
template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, float*);
template KIVDS_API bool Convert2VectOfScalars(const char*, int, CKivDSDicomAttribute*, double*);
