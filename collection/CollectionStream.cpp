// The streams of collections; docs/streams.md draws them.
//
//   collection stream               part stream                 attribute record
//   0   1  version, 7               0   4  -7                   0  4  attribute type
//   1   1  kind                     4   4  total length         4  .. the attribute's own stream
//   2   .. parts                    8   4  count of records
//   ..  4  total length             12  .. the records
//
// Kind 0: the single-frame part; 1: the single-frame and the multi-frame part; 2: the enhanced multi-frame
// stream. Old forms, read alone: a part that begins with its count has no version, no total and no types, and
// its attributes have no length; a collection that begins with kind 0 or 1 has no version and no total;
// without the versioned flag a collection is one old part.
#include "attribute/CKivDSDicomAttributeFactory.h"
#include "attribute/internal/AttributeRecord.h"
#include "attribute/internal/AttributeTypes.h"
#include "collection/internal/AttributeWalk.h"
#include "collection/internal/PartSharing.h"
#include "foundation/internal/ExactType.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"

#include <algorithm>
#include <limits>
#include <utility>

using kivds::AttributeRecord;
using kivds::AttributeWalk;
using kivds::ByteReader;
using kivds::ByteWriter;
using kivds::Operation;
using kivds::PartAccess;
using Part = CKivDSBaseDicomAttributeCollection;

const char CKivDSDicomAttributeCollection::ms_nVersion = 7;
const int CKivDSBaseDicomAttributeCollection::ms_nAttrVersion = 7;

namespace {

enum Kind : int
{
    kSingleFrame = 0,
    kMultiFrame = 1,
    kEnhanced = 2
};

constexpr const wchar_t* kFacadeDeserialize = L"CKivDSDicomAttributeCollection::Deserialize";
constexpr const wchar_t* kPartDeserialize = L"CKivDSBaseDicomAttributeCollection::Deserialize";
constexpr const wchar_t* kInvalidInput = L" Invalid input parameters ";
constexpr int kHeaderSize = 2; // of a collection stream: version and kind
constexpr int kLengthSize = 4;
constexpr int kPartHeaderSize = 12; // of a part's stream: version, total, count
constexpr int kTypeSize = 4;
constexpr int kSmallestRecord = 14; // in the oldest form: an attribute without values

} // namespace

// ---- parts

// The length of a part's stream, 0 when an attribute cannot tell its own or it is too long; and the number of
// records.
CKivDSBaseDicomAttributeCollection::SMeasure CKivDSBaseDicomAttributeCollection::Measure() const
{
    SMeasure measure;
    std::int64_t total = kPartHeaderSize;
    for (const auto [tag, attribute] : AttributeWalk(m_Attributes)) {
        if (!attribute)
            continue;
        const int length = AttributeRecord::Length(*attribute);
        if (length == 0)
            return measure;
        total += kTypeSize + length;
        ++measure.records;
    }
    measure.length = kivds::StreamLength(total);
    return measure;
}

bool CKivDSBaseDicomAttributeCollection::WriteRecords(ByteWriter& writer) const
{
    for (const auto [tag, attribute] : AttributeWalk(m_Attributes)) {
        if (!attribute)
            continue;
        writer.I32(attribute->GetType());
        if (!AttributeRecord::Write(*attribute, writer))
            return false;
    }
    return true;
}

bool CKivDSBaseDicomAttributeCollection::Serialize(char* buffer, int& size) const
{
    const SMeasure measure = Measure();
    if (!buffer) {
        size = measure.length;
        return true;
    }
    return WriteMeasured(buffer, size, measure);
}

bool CKivDSBaseDicomAttributeCollection::WriteMeasured(char* buffer, int& size, const SMeasure& measure) const
{
    size = 0;
    if (measure.length > 0) { // without a length the caller's buffer has no size, and nothing is written
        ByteWriter writer(buffer);
        writer.I32(-ms_nAttrVersion);
        writer.I32(measure.length);
        writer.I32(measure.records);
        if (WriteRecords(writer) && writer.Written() == measure.length)
            size = measure.length;
    }
    return size > 0 || Operation(L"CKivDSBaseDicomAttributeCollection::Serialize")
                           .Fail(L"Inconsistent serialization format: serialization aborted");
}

bool CKivDSBaseDicomAttributeCollection::Deserialize(const char* buffer, int& size, bool versioned)
{
    if (!buffer)
        return Operation(kPartDeserialize).Fail(kInvalidInput);
    ByteReader reader = ByteReader::Unbounded(buffer);
    return ReadPart(reader, size, versioned);
}

bool CKivDSBaseDicomAttributeCollection::ReadPart(ByteReader& reader, int& size, bool versioned)
{
    const Operation op(kPartDeserialize);
    Clean();
    int version = 0;
    int total = 0;
    ByteReader fields = reader.Part(reader.Left());
    if (versioned && reader.PeekI32() < 0) {
        const int marker = fields.I32();
        version = marker == std::numeric_limits<int>::min() ? std::numeric_limits<int>::max() : -marker;
        total = fields.I32();
        if (total > 0) { // the declared total narrows what may be read
            const int header = fields.Consumed();
            fields = reader.Part(total);
            fields.Take(header);
        }
    }
    const int count = fields.I32();
    if (!fields.Ok())
        return op.Fail(kInvalidInput);
    // As many records as are announced, and as there can be in what is left.
    const auto expected = [&fields](int announced) {
        return static_cast<std::size_t>(
            std::max(std::min(announced, fields.Left() / kSmallestRecord + 1), 0));
    };
    const bool hasRoom = op.Guard(L"Failed to add attribute to collection", [&] {
        m_Attributes.Reserve(expected(std::min(count, 64))); // an unbounded stream may announce anything
        return true;
    });
    if (!hasRoom)
        return false;
    for (int left = count; left > 0; --left) {
        const int type = version > 0 ? fields.I32() : kivds::kPlainAttribute;
        std::unique_ptr<CKivDSDicomAttribute> attribute(
            fields.Ok() ? m_Attributes.NewAttribute(type, expected(left)) : nullptr);
        if (fields.Ok() && !attribute && !kivds::IsAttributeType(type)) {
            const int length = fields.PeekI32(); // an unknown class's stream is passed over by its own length
            fields.Take(length >= kLengthSize ? length : -1);
            if (!fields.Ok())
                return op.Fail(L"Failed to deserialize attribute");
            continue;
        }
        int length = 0;
        if (!attribute ||
            !attribute->Deserialize(fields.Position(), fields.Left(), length, versioned, version))
            return op.Fail(L"Failed to deserialize attribute");
        fields.Take(length);
        if (!AddAttribute(attribute.get(), false))
            return op.Fail(L"Failed to add attribute to collection");
        (void)attribute.release(); // the collection's now
    }
    size = total > 0 ? total : fields.Consumed();
    reader.Take(size);
    return true;
}

// ---- facade

// Measures the part of a facade, as its class does; false when it cannot tell its length.
bool CKivDSBaseDicomAttributeCollection::MeasureAsPart(SMeasure& measure) const
{
    if (kivds::IsExactly<CKivDSBaseDicomAttributeCollection>(*this))
        measure = Measure();
    else if (!Serialize(nullptr, measure.length))
        return false;
    return measure.length > 0;
}

// Writes what MeasureAsPart has measured.
bool CKivDSBaseDicomAttributeCollection::WriteAsPart(ByteWriter& writer, const SMeasure& measure) const
{
    int length = 0;
    const bool plain = kivds::IsExactly<CKivDSBaseDicomAttributeCollection>(*this);
    if (!(plain ? WriteMeasured(writer.Position(), length, measure) : Serialize(writer.Position(), length)))
        return false;
    writer.Advance(length);
    return true;
}

int CKivDSDicomAttributeCollection::GetSize() const
{
    std::int64_t total = kHeaderSize + kLengthSize;
    if (m_pEnhancedMFCollection) {
        int length = 0;
        if (!m_pEnhancedMFCollection->Serialize(nullptr, length) || length <= 0)
            return 0;
        return kivds::StreamLength(total + length);
    }
    for (const Part* const part : {m_pSingleFrameCollection, m_pMultiFrameCollection}) {
        Part::SMeasure measure;
        if (part && !part->MeasureAsPart(measure))
            return 0;
        total += measure.length;
    }
    return m_pSingleFrameCollection ? kivds::StreamLength(total) : 0;
}

// Writes the parts and gives the length of the whole stream, which `writer` stands at the first part of: 0
// when it has none. False when a part cannot be written: it has said so.
bool CKivDSDicomAttributeCollection::WriteParts(ByteWriter& writer, int& total)
{
    if (m_pEnhancedMFCollection) {
        int length = 0;
        if (!m_pEnhancedMFCollection->Serialize(writer.Position(), length))
            return false;
        writer.Advance(length);
        total = kivds::StreamLength(std::int64_t{writer.Written()} + kLengthSize);
        return true;
    }
    const Part* const parts[] = {m_pSingleFrameCollection, m_pMultiFrameCollection};
    Part::SMeasure measures[2];
    std::int64_t sum = writer.Written() + kLengthSize;
    for (int i = 0; i < 2; ++i) {
        // What cannot tell its length reports that itself when it is to write, and writes nothing. That comes
        // first: without a length the caller's buffer has no size to speak of.
        int length = 0;
        if (parts[i] && !parts[i]->MeasureAsPart(measures[i]))
            return parts[i]->Serialize(writer.Position(), length);
        sum += measures[i].length;
    }
    total = kivds::StreamLength(sum);
    for (int i = 0; i < 2 && total > 0; ++i) {
        if (parts[i] && !parts[i]->WriteAsPart(writer, measures[i]))
            return false;
    }
    return true;
}

bool CKivDSDicomAttributeCollection::Serialize(char* buffer, int& size)
{
    const Operation op(L"CKivDSDicomAttributeCollection::Serialize");
    if (!IsGood() || RefuseCompound(op))
        return false;
    if (!buffer) {
        size = GetSize();
        return true;
    }
    ByteWriter writer(buffer);
    writer.Advance(kHeaderSize);
    int total = 0;
    if (!WriteParts(writer, total))
        return false;
    if (total > 0) {
        ByteWriter header(buffer);
        header.U8(static_cast<std::uint8_t>(ms_nVersion));
        header.U8(m_pEnhancedMFCollection ? kEnhanced : m_pMultiFrameCollection ? kMultiFrame : kSingleFrame);
        writer.I32(total);
    }
    size = writer.Written() == total ? total : 0;
    return size > 0 || op.Fail(L"Inconsistent serialization format: serialization aborted ");
}

bool CKivDSDicomAttributeCollection::Deserialize(const char* buffer, int& size, bool versioned)
{
    if (!IsGood() || !buffer)
        return false;
    ByteReader reader = ByteReader::Unbounded(buffer);
    return ReadFacade(reader, size, versioned);
}

// Not virtual, since nothing may be inserted into the virtual table; so it asks for the object's class.
bool CKivDSDicomAttributeCollection::Deserialize(const char* buffer, int length, int& size, bool versioned)
{
    if (!buffer) // each class reports a missing buffer in its own way
        return Deserialize(buffer, size, versioned);
    ByteReader reader(buffer, length);
    if (auto* const part = dynamic_cast<CKivDSBaseDicomAttributeCollection*>(this))
        return PartAccess::Read(*part, reader, size, versioned);
    if (auto* const enhanced = dynamic_cast<CKivDSEnhancedMFCollection*>(this)) {
        if (!PartAccess::Read(*enhanced, reader, size, versioned))
            return false;
        size = reader.Consumed(); // rather than the total that the stream states, which nothing has checked
        return true;
    }
    return IsGood() && ReadFacade(reader, size, versioned);
}

bool CKivDSDicomAttributeCollection::ReadFacade(ByteReader& reader, int& size, bool versioned)
{
    const Operation op(kFacadeDeserialize);
    const int start = reader.Consumed();
    std::int8_t version = 0;
    int kind = kSingleFrame;
    if (versioned) {
        const std::uint8_t first = reader.U8();
        const bool old = first == kSingleFrame || first == kMultiFrame;
        version = old ? std::int8_t{0} : static_cast<std::int8_t>(first);
        kind = old ? first : reader.U8();
    }
    if (!reader.Ok())
        return op.Fail(kInvalidInput);

    int length = 0;
    if (kind == kEnhanced) {
        if (RefuseCompound(op))
            return false;
        if (IsEnhancedMFCollection() &&
            !m_pEnhancedMFCollection) // an enhanced collection's own regular stream
            return op.Fail(L"Operation not supported on enhanced MF collections ");
        if (!m_pEnhancedMFCollection)
            m_pEnhancedMFCollection = PartAccess::Share(new (std::nothrow) CKivDSEnhancedMFCollection);
        if (!m_pEnhancedMFCollection)
            return op.Fail(kivds::kUnexpectedError);
        if (!PartAccess::Read(*m_pEnhancedMFCollection, reader, length, versioned))
            return false;
    } else {
        if (!m_pSingleFrameCollection)
            return op.Fail(IsCompoundCollection() ? L"Operation not supported on compound collections "
                                                  : L"Operation not supported on enhanced MF collections ");
        if (!PartAccess::Read(*m_pSingleFrameCollection, reader, length, versioned))
            return false;
        if (kind == kMultiFrame) {
            if (!m_pMultiFrameCollection)
                m_pMultiFrameCollection = CreateCollection();
            if (!m_pMultiFrameCollection ||
                !PartAccess::Read(*m_pMultiFrameCollection, reader, length, versioned))
                return false;
        }
    }
    if (version > 1)
        reader.Take(kLengthSize); // the total, which is compared with nothing
    if (!reader.Ok())
        return op.Fail(kInvalidInput);
    size = reader.Consumed() - start;
    return true;
}
