// The code sequence attribute and its stream; docs/streams.md draws it.
//
//   0   4  total length, this field included
//   4   .. the base's attribute stream
//   ..  4  record count
//   ..  .. a record: seven texts (length, bytes), the extension flag (4), two texts
#include "attribute/CKivDSCodeSequenceAttribute.h"

#include "attribute/internal/AttributeTypes.h"
#include "attribute/internal/Representation.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/Blocks.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

using kivds::ByteReader;
using kivds::ByteWriter;
using kivds::Operation;

using Info = tagSKivDSCodeSequenceAttributeInfo;

namespace {

constexpr int kSmallestRecord = 40; // ten fields of four bytes, every text empty

/// Visits a record's fields in stream order: text(field, its size) and number(field).
template <class Record, class Text, class Number>
void VisitFields(Record& info, Text text, Number number)
{
    text(info.szCodeValue, sizeof info.szCodeValue);
    text(info.szCodingSchemeDesignator, sizeof info.szCodingSchemeDesignator);
    text(info.szCodingSchemeVersion, sizeof info.szCodingSchemeVersion);
    text(info.szCodeMeaning, sizeof info.szCodeMeaning);
    text(info.szContextIdentifier, sizeof info.szContextIdentifier);
    text(info.szMappingResource, sizeof info.szMappingResource);
    text(info.szContextGroupVersion, sizeof info.szContextGroupVersion);
    number(info.nContextGroupExtensionFlag);
    text(info.szContextGroupLocalVersion, sizeof info.szContextGroupLocalVersion);
    text(info.szContextGroupExtensionCreatorUID, sizeof info.szContextGroupExtensionCreatorUID);
}

/// A record as it is kept: every text ends within its field, whatever the caller's held.
Info Terminated(Info info)
{
    VisitFields(
        info, [](char* field, std::size_t size) { field[size - 1] = '\0'; }, [](int) {});
    return info;
}

void WriteRecords(ByteWriter& writer, const std::vector<Info>& codes)
{
    writer.I32(static_cast<int>(codes.size()));
    for (const Info& info : codes) {
        VisitFields(
            info, [&](const char* field, std::size_t) { writer.Text(field); },
            [&](int field) { writer.I32(field); });
    }
}

/// Reads a record; what does not fit its field fails the reader.
Info ReadRecord(ByteReader& reader)
{
    Info info = {};
    VisitFields(
        info,
        [&](char* field, std::size_t size) {
            const int length = reader.I32();
            const bool fits = length >= 0 && static_cast<std::size_t>(length) < size;
            if (const char* text = reader.Take(fits ? length : -1))
                kivds::CopyBytes(field, text, length);
        },
        [&](int& field) { field = reader.I32(); });
    return info;
}

bool SameCode(const Info& a, const Info& b)
{
    constexpr std::size_t identity = 32;
    return std::strncmp(a.szCodeValue, b.szCodeValue, identity) == 0 &&
           std::strncmp(a.szCodingSchemeDesignator, b.szCodingSchemeDesignator, identity) == 0 &&
           std::strncmp(a.szCodingSchemeVersion, b.szCodingSchemeVersion, identity) == 0;
}

} // namespace

CKivDSCodeSequenceAttribute::CKivDSCodeSequenceAttribute(bool bPrivate, bool bMustReplicate)
    : CKivDSDicomAttribute(bPrivate, bMustReplicate)
{
    m_nType = kivds::kCodeSequenceAttribute;
}

CKivDSCodeSequenceAttribute::CKivDSCodeSequenceAttribute(unsigned long tag, const Info& info)
{
    const Operation op(L"CKivDSCodeSequenceAttribute::CKivDSCodeSequenceAttribute");
    SKivAGAttributeValue meaning = {};
    ConvertCodeSequenceInfoToValue(info, 0, meaning);
    if (!InitFromValues(tag, kivds::kControlString, 1, &meaning, false))
        op.Report(L"Failed to initialize DICOM attribute from code sequence values", 1);
    DeleteAttributeValue(meaning);
    m_nType = kivds::kCodeSequenceAttribute;
    op.Guard(kivds::kUnexpectedError, [&] { m_Codes.push_back(Terminated(info)); });
    m_bMustReplicate = true;
}

CKivDSCodeSequenceAttribute::CKivDSCodeSequenceAttribute(const CKivDSCodeSequenceAttribute& src)
    : CKivDSDicomAttribute(src)
{
    m_nType = kivds::kCodeSequenceAttribute;
    Operation(L"CKivDSCodeSequenceAttribute::CKivDSCodeSequenceAttribute")
        .Guard(kivds::kUnexpectedError, [&] { CopyLocal(src); });
}

CKivDSCodeSequenceAttribute::~CKivDSCodeSequenceAttribute() = default;

CKivDSCodeSequenceAttribute& CKivDSCodeSequenceAttribute::operator=(const CKivDSCodeSequenceAttribute& src)
{
    if (this == &src)
        return *this;
    CKivDSDicomAttribute::operator=(src);
    CleanLocal();
    Operation(L"CKivDSCodeSequenceAttribute::operator =").Guard(kivds::kUnexpectedError, [&] {
        CopyLocal(src);
    });
    return *this;
}

void CKivDSCodeSequenceAttribute::CopyLocal(const CKivDSCodeSequenceAttribute& other)
{
    if (this == &other) // a vector is not inserted into itself
        return CopyLocal(CKivDSCodeSequenceAttribute(other));
    m_Codes.insert(m_Codes.end(), other.m_Codes.begin(), other.m_Codes.end());
}

void CKivDSCodeSequenceAttribute::CleanLocal()
{
    m_Codes.clear();
}

int CKivDSCodeSequenceAttribute::GetNumberOfCodes() const noexcept
{
    return static_cast<int>(m_Codes.size());
}

const Info* CKivDSCodeSequenceAttribute::GetCodePtr(int index) const noexcept
{
    return index >= 0 && index < GetNumberOfCodes() ? &m_Codes[static_cast<std::size_t>(index)] : nullptr;
}

void CKivDSCodeSequenceAttribute::ConvertCodeSequenceInfoToValue(const Info& info, int index,
                                                                 SKivAGAttributeValue& value) const
{
    ConvertSynonymToValue(Terminated(info).szCodeMeaning, index, value);
}

void CKivDSCodeSequenceAttribute::ConvertSynonymToValue(const char* text, int index,
                                                        SKivAGAttributeValue& value) const
{
    const std::size_t bytes = text ? std::strlen(text) + 1 : 1;
    kivds::Block block = kivds::NewBlock(static_cast<std::int64_t>(bytes));
    if (block)
        std::memcpy(block.get(), text ? text : "", bytes);
    value = {block ? static_cast<int>(bytes) : 0, eAttrChar, index, block.release()};
}

bool CKivDSCodeSequenceAttribute::operator==(const CKivDSCodeSequenceAttribute& other)
{
    return this == &other ||
           std::equal(m_Codes.begin(), m_Codes.end(), other.m_Codes.begin(), other.m_Codes.end(), SameCode);
}

bool CKivDSCodeSequenceAttribute::operator!=(const CKivDSCodeSequenceAttribute& other)
{
    return !(*this == other);
}

CKivDSCodeSequenceAttribute& CKivDSCodeSequenceAttribute::operator+=(const CKivDSCodeSequenceAttribute& other)
{
    const Operation op(L"CKivDSCodeSequenceAttribute::operator +=");
    if (this == &other)
        return *this;
    if (m_ulTag != other.m_ulTag) {
        op.Report(L"Attempt to add code sequence attributes of different DICOM tags");
        return *this;
    }
    const bool appended = op.Guard(kivds::kUnexpectedError, [&] {
        CopyLocal(other);
        return true;
    });
    if (appended)
        RemakeValues(op);
    return *this;
}

// Makes the values anew from all records. Where many attributes are merged into one, most values are what
// they were before: these keep their blocks.
void CKivDSCodeSequenceAttribute::RemakeValues(const Operation& op)
{
    const wchar_t* const noMemory = L"Failed to allocate new attribute value array";
    if (m_Codes.empty())
        return Clean();
    const int count = GetNumberOfCodes();
    std::unique_ptr<SKivAGAttributeValue[]> made(GetNewAttributeValueArray(count));
    SKivAGAttributeValue* const values = made.get();
    if (!values)
        return op.Report(noMemory);
    const auto keeps = [&](int i) {
        const SKivAGAttributeValue* const held = GetValuePtr(i);
        const char* const text = m_Codes[static_cast<std::size_t>(i)].szCodeMeaning;
        const std::size_t bytes = std::strlen(text) + 1;
        return held && held->eType == eAttrChar && held->nInSequenceIndex == i &&
               !IsPreallocatedData(held->pData) && held->nCount == static_cast<int>(bytes) &&
               std::memcmp(held->pData, text, bytes) == 0;
    };
    for (int i = 0; i < count; ++i) {
        if (keeps(i))
            continue;
        ConvertCodeSequenceInfoToValue(*GetCodePtr(i), i, values[i]);
        if (!values[i].pData) {
            std::for_each(values, values + i, FreeAttributeValue);
            return op.Report(noMemory);
        }
    }
    for (int i = 0; i < count; ++i) {
        if (!values[i].pData)
            std::swap(values[i], m_pValues[i]);
    }
    AdoptValues(std::move(made), count);
}

int CKivDSCodeSequenceAttribute::GetSizeOfSerializedCodeSequenceAttribute() const
{
    const int base = GetSize();
    ByteWriter counter(nullptr);
    counter.I32(0);
    counter.Advance(base);
    WriteRecords(counter, m_Codes);
    return base > 0 ? kivds::StreamLength(counter.Written()) : 0;
}

bool CKivDSCodeSequenceAttribute::Serialize(char* buffer, int& size) const
{
    const Operation op(L"CKivDSCodeSequenceAttribute::Serialize");
    const int expected = GetSizeOfSerializedCodeSequenceAttribute();
    if (!buffer) {
        size = expected;
        return true;
    }
    constexpr const wchar_t* inconsistent = L"Inconsistent serialization procedure: number of bytes written "
                                            L"to buffer does not equal expected serialization "
                                            L"size";
    ByteWriter writer(buffer);
    int length = 0;
    // Without a length the caller's buffer has no size to speak of, and nothing is written. Where the base
    // has none it says so itself.
    if (expected == 0 && GetSize() > 0) {
        size = 0;
        return op.Fail(inconsistent);
    }
    if (expected > 0)
        writer.I32(expected);
    if (!CKivDSDicomAttribute::Serialize(writer.Position(), length))
        return op.Fail(L"Failed to serialize base class attribute data");
    writer.Advance(length);
    WriteRecords(writer, m_Codes);
    size = writer.Written() == expected ? expected : 0;
    return size > 0 || op.Fail(inconsistent);
}

bool CKivDSCodeSequenceAttribute::Deserialize(const char* buffer, int& size, bool versioned, int version)
{
    return CKivDSDicomAttribute::Deserialize(buffer, size, versioned, version);
}

bool CKivDSCodeSequenceAttribute::Deserialize(const char* buffer, int length, int& size, bool versioned,
                                              int version)
{
    return CKivDSDicomAttribute::Deserialize(buffer, length, size, versioned, version);
}

bool CKivDSCodeSequenceAttribute::ReadStream(ByteReader& reader, int& size, bool versioned, int version)
{
    const Operation op(L"CKivDSCodeSequenceAttribute::Deserialize");
    // The declared length narrows what may be read. Where it says more than is there it narrows nothing, and
    // the comparison at the end refuses the stream.
    const int declared = reader.PeekI32();
    ByteReader fields = reader.Part(declared > 0 && declared < reader.Left() ? declared : reader.Left());
    fields.U32();
    int length = 0;
    if (!CKivDSDicomAttribute::ReadStream(fields, length, versioned, version))
        return op.Fail(L"Failed to deserialize base class data");
    const int count = fields.I32();
    bool consistent = fields.Ok() && count <= fields.Left() / kSmallestRecord;
    if (consistent && count > 0) {
        consistent = op.Guard(kivds::kUnexpectedError, [&] {
            m_Codes.reserve(m_Codes.size() + static_cast<std::size_t>(count));
            for (int i = 0; i < count && fields.Ok(); ++i) {
                const Info info = ReadRecord(fields);
                if (fields.Ok())
                    m_Codes.push_back(info);
            }
            return fields.Ok();
        });
    }
    consistent = consistent && fields.Consumed() == declared;
    size = consistent ? declared : 0;
    reader.Take(size);
    return consistent ||
           op.Fail(L"Inconsistent deserialization procedure: number of bytes read from deserialization "
                   L"buffer does not equal expected number of bytes read");
}
