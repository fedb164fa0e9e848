// The attribute's byte stream; docs/streams.md draws it.
//
//   attribute stream          value stream
//   0   4  total length       0   4  element type
//   4   4  tag                4   4  element count k
//   8   4  representation     8   n  k elements
//   12  1  private flag       8+n 4  in-sequence index
//   13  1  must-replicate
//   14  4  number of values N
//   18  .. N value streams
//   ..  1  multi-frame flag, and if it is 1 the frame range's own stream
//
// The old form has no total length (version 0); without the versioned flag the multi-frame part is not read.
#include "attribute/internal/AttributeBlock.h"
#include "attribute/internal/AttributeRecord.h"
#include "attribute/internal/FrameRange.h"
#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/ExactType.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/Blocks.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"

using kivds::AttributeRecord;
using kivds::ByteReader;
using kivds::ByteWriter;
using kivds::Operation;

namespace {

constexpr int kFixedLength = 19; // of an attribute stream without values and frames
constexpr int kValueOverhead = 12;
constexpr const wchar_t* kInvalidValue = L"Invalid input parameter";

} // namespace

/// The fields of a value stream. The reader fails when it stands at no such stream (an unknown type, a
/// negative count) or when that reaches past the limit.
struct CKivDSDicomAttribute::SValueStream
{
    tagEKivAGAttributeType type;
    int count;
    std::int64_t bytes;
    const char* elements;
    int inSequenceIndex;
    bool isWhole;

    explicit SValueStream(ByteReader& reader)
        : type(static_cast<tagEKivAGAttributeType>(reader.I32())), count(reader.I32()),
          bytes(kivds::ByteSize(type, count))
    {
        if (kivds::ElementSize(type) == 0 || count < 0)
            reader.Fail();
        elements = reader.Take(bytes);
        inSequenceIndex = reader.I32();
        isWhole = reader.Ok();
    }
};

int CKivDSDicomAttribute::GetSize(const SKivAGAttributeValue& value) const
{
    return kivds::StreamLength(kValueOverhead + kivds::ByteSize(value.eType, value.nCount));
}

bool CKivDSDicomAttribute::Serialize(const SKivAGAttributeValue& value, char* buffer, int& size) const
{
    if (!buffer) {
        size = GetSize(value);
        return true;
    }
    ByteWriter writer(buffer);
    if (!WriteValue(value, writer))
        return false;
    size = kivds::StreamLength(writer.Written());
    return true;
}

bool CKivDSDicomAttribute::WriteValue(const SKivAGAttributeValue& value, ByteWriter& writer)
{
    writer.I32(value.eType);
    writer.I32(value.nCount);
    if (!value.pData || value.nCount < 0)
        return Operation(L"CKivDSDicomAttribute::Serialize")
            .Fail(L"Attempt to serialize attribute value with null data pointer");
    writer.Elements(value.pData, value.nCount, kivds::ElementSize(value.eType));
    writer.I32(value.nInSequenceIndex);
    return true;
}

// Whether the object is of exactly this class, wherever it lies. Its operations are then the ones in this
// file, and are called without the virtual table: a collection asks for the length and the bytes of thousands
// of values.
bool CKivDSDicomAttribute::IsPlain() const
{
    return kivds::IsExactly<CKivDSDicomAttribute>(*this) || kivds::IsExactly<kivds::BlockAttribute>(*this);
}

int CKivDSDicomAttribute::GetSize() const
{
    return IsPlain() ? Measure<true>() : Measure<false>();
}

template <bool plain>
int CKivDSDicomAttribute::Measure() const
{
    std::int64_t length = kFixedLength;
    for (int i = 0; i < m_nNumberOfValues; ++i) {
        const int value = plain ? CKivDSDicomAttribute::GetSize(m_pValues[i]) : GetSize(m_pValues[i]);
        if (value <= 0) // a value that is too long to have a length leaves none to the stream
            return 0;
        length += value;
    }
    if (plain ? CKivDSDicomAttribute::IsMultiFrame() : IsMultiFrame()) {
        int frames = 0;
        if (!kivds::WriteFrameRange(*m_pFrameRange, nullptr, frames)) {
            Operation(L"CKivDSDicomAttribute::GetSize")
                .Report(L"Failed to obtain serialization size of frame range collection");
            return 0;
        }
        length += frames;
    }
    return kivds::StreamLength(length);
}

bool CKivDSDicomAttribute::Serialize(char* buffer, int& size) const
{
    const int expected = GetSize();
    if (!buffer) {
        size = expected;
        return true;
    }
    ByteWriter writer(buffer);
    // Without a length the caller's buffer has no size to speak of, and nothing is written.
    if (expected > 0 &&
        !(IsPlain() ? WriteFields<true>(writer, expected) : WriteFields<false>(writer, expected)))
        return false;
    size = writer.Written() == expected ? expected : 0;
    return size > 0 || Operation(L"CKivDSDicomAttribute::Serialize")
                           .Fail(L" Inconsistent attribute format: serialization aborted");
}

template <bool plain>
bool CKivDSDicomAttribute::WriteFields(ByteWriter& out, int total) const
{
    ByteWriter writer = out; // of its own, which can stay in registers
    writer.I32(total);
    writer.U32(m_ulTag);
    writer.I32(m_nRepresentation);
    writer.U8(m_bPrivate);
    writer.U8(m_bMustReplicate);
    writer.I32(m_nNumberOfValues);
    for (int i = 0; i < m_nNumberOfValues; ++i) {
        int length = 0;
        if (!(plain ? WriteValue(m_pValues[i], writer) : Serialize(m_pValues[i], writer.Position(), length)))
            return Operation(L"CKivDSDicomAttribute::Serialize")
                .Fail(L" Unable to serialize the attribute value ");
        writer.Advance(length);
    }
    const bool multiFrame = plain ? CKivDSDicomAttribute::IsMultiFrame() : IsMultiFrame();
    writer.U8(multiFrame);
    if (multiFrame) {
        int length = 0;
        kivds::WriteFrameRange(*m_pFrameRange, writer.Position(), length);
        writer.Advance(length);
    }
    out = writer;
    return true;
}

int AttributeRecord::Length(const CKivDSDicomAttribute& attribute)
{
    if (attribute.IsPlain())
        return attribute.Measure<true>();
    int length = 0;
    return attribute.Serialize(nullptr, length) ? length : 0;
}

bool AttributeRecord::Write(const CKivDSDicomAttribute& attribute, ByteWriter& writer)
{
    if (attribute.IsPlain() && !attribute.m_pFrameRange) {
        // Its values come to what they came to when they were measured, which need not be known beforehand. A
        // frame range is another module's, and is not trusted to.
        ByteWriter total(writer.Position());
        const std::int64_t start = writer.Written();
        if (!attribute.WriteFields<true>(writer, 0))
            return false;
        total.I32(kivds::StreamLength(writer.Written() - start));
        return true;
    }
    int length = 0;
    if (!attribute.Serialize(writer.Position(), length) || length == 0)
        return false;
    writer.Advance(length);
    return true;
}

bool CKivDSDicomAttribute::Deserialize(const char* buffer, int& size, SKivAGAttributeValue& value,
                                       bool inlineAllowed)
{
    const Operation op(L"CKivDSDicomAttribute::Deserialize");
    if (!buffer)
        return op.Fail(kInvalidValue);
    ByteReader reader = ByteReader::Unbounded(buffer);
    if (!KeepValue(SValueStream(reader), value, inlineAllowed, op))
        return false;
    size = reader.Consumed();
    return true;
}

bool CKivDSDicomAttribute::KeepValue(const SValueStream& stream, SKivAGAttributeValue& value,
                                     bool inlineAllowed, const Operation& op)
{
    if (!stream.isWhole)
        return op.Fail(kInvalidValue);
    const bool inside = inlineAllowed && stream.bytes < static_cast<std::int64_t>(sizeof m_InlineData);
    char* const data = inside ? m_InlineData : NewData(stream.bytes);
    if (!data)
        return op.Fail(L"Failed to allocate attribute value data buffer");
    kivds::CopyLittleEndian(data, stream.elements, stream.count, kivds::ElementSize(stream.type));
    value = {stream.count, stream.type, stream.inSequenceIndex, data};
    m_bPreallocatedData = inside;
    return true;
}

// The value's operation is given no length, so the value is measured before it is called.
bool CKivDSDicomAttribute::ReadOverriddenValue(ByteReader& reader, SKivAGAttributeValue& value,
                                               const Operation& op)
{
    int length = 0;
    ByteReader ahead = reader;
    if (!SValueStream(ahead).isWhole)
        return op.Fail(kInvalidValue);
    return Deserialize(reader.Position(), length, value, false) && reader.Take(length);
}

bool CKivDSDicomAttribute::Deserialize(const char* buffer, int& size, bool versioned, int version)
{
    if (!buffer)
        return Operation(L"CKivDSDicomAttribute::Deserialize").Fail(L" Bad input parameters ");
    ByteReader reader = ByteReader::Unbounded(buffer);
    return ReadStream(reader, size, versioned, version);
}

bool CKivDSDicomAttribute::Deserialize(const char* buffer, int length, int& size, bool versioned, int version)
{
    if (!buffer)
        return Operation(L"CKivDSDicomAttribute::Deserialize").Fail(L" Bad input parameters ");
    ByteReader reader(buffer, length);
    return ReadStream(reader, size, versioned, version);
}

bool CKivDSDicomAttribute::ReadStream(ByteReader& reader, int& size, bool versioned, int version)
{
    const Operation op(L"CKivDSDicomAttribute::Deserialize");
    // The declared length may be larger than the fields, and narrows what may be read; the old form declares
    // none.
    const int declared = version > 0 ? reader.PeekI32() : reader.Left();
    ByteReader fields = reader.Part(declared);
    if (version > 0)
        fields.U32();
    int consumed = 0;
    if (!(IsPlain() ? ReadFields<true>(fields, versioned, consumed, op)
                    : ReadFields<false>(fields, versioned, consumed, op)))
        return false;
    size = version > 0 ? declared : consumed;
    reader.Take(size);
    return true;
}

// The plain one hands its reader to nothing that is not inlined, so that it stays in registers.
template <bool plain>
bool CKivDSDicomAttribute::ReadFields(ByteReader reader, bool versioned, int& consumed, const Operation& op)
{
    const std::uint32_t tag = reader.U32();
    const int representation = reader.I32();
    const bool isPrivate = reader.U8() != 0;
    const bool mustReplicate = reader.U8() != 0;
    const int count = reader.I32();
    if (!reader.Ok())
        return op.Fail(L" Bad input parameters ");
    Clean();
    m_ulTag = tag;
    m_nRepresentation = representation;
    m_bPrivate = isPrivate;
    m_bMustReplicate = mustReplicate;

    // More values than there are bytes for: the first one that is not there would be refused in these words.
    if (count > reader.Left() / kValueOverhead) {
        op.Report(kInvalidValue);
        return op.Fail(L" Unable to deserialize the attribute value ");
    }
    if (count > 0 && !AllocAttributeValue(count))
        return op.Fail(L"Failed to allocate attribute value array");
    for (; m_nNumberOfValues < count; ++m_nNumberOfValues) {
        SKivAGAttributeValue& value = m_pValues[m_nNumberOfValues];
        if (!(plain ? KeepValue(SValueStream(reader), value, false, op)
                    : ReadOverriddenValue(reader, value, op)))
            return op.Fail(L" Unable to deserialize the attribute value ");
    }
    if (versioned) {
        const bool multiFrame = reader.U8() != 0;
        if (!reader.Ok())
            return op.Fail(L" Bad input parameters ");
        ResetMultiFrameInfo();
        if (multiFrame) {
            std::unique_ptr<CKivIPPRangeIDC> range = kivds::NewFrameRange();
            if (!range)
                return op.Fail(L"Failed to allocate new frame range collection");
            int length = 0;
            if (!kivds::ReadFrameRange(*range, reader.Position(), reader.Left(), length) ||
                !reader.Take(length))
                return op.Fail(L" Bad input parameters ");
            m_pFrameRange = range.release();
        }
    }
    consumed = reader.Consumed();
    return true;
}
