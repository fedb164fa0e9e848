// One DICOM attribute: its tag, its representation, its typed values, two flags and, when it carries one
// value per frame, a frame range. It owns all of them; one small value lives inside the object, without a
// heap block, and beside an attribute that a collection has made there may be room for more. No operation
// takes a lock: whoever shares an attribute between threads serialises every change with all other use, and a
// change of an attribute that a collection holds is a change of the collection.
#pragma once

#include "foundation/AttributeValue.h"
#include "platform/CKivIPPRangeIDC.h"
#include "platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace kivds {
class AttributeBlock;
struct AttributeRecord;
class BlockAttribute;
class ByteReader;
class ByteWriter;
class GatheredValues;
class Operation;
class PieceReader;
struct InBlock;
} // namespace kivds

/// Failures are reported to the error sink under "CKivDSDicomAttribute::" and the operation's name, with code
/// 0 where nothing else is said; the operation then gives false or null. No exception leaves an operation.
///
/// Representation codes stand for value representations (PS3.5 6.2): 0 AE, 1 AS, 2 AT, 3 CS, 4 DA, 6 DS, 7
/// FD, 8 FL, 9 IS, 10 LO, 11 LT, 12 UT, 14 SH, 15 SL, 16 SQ, 17 SS, 18 ST, 19 TM, 20 UI, 21 UL, 22 US, 23 UN,
/// 26 PN, 27 OB, 28 OW, 30 DT; or for what the standard has no letters for: 5 data set, 13 other binary, 24
/// retired, 25 context sensitive, 32 delimiter. Any other number is kept, and stands for nothing.
class KIVDS_API CKivDSDicomAttribute
{
public:
    /// No values, tag 0, representation code 0.
    explicit CKivDSDicomAttribute(bool bPrivate = false, bool bMustReplicate = false);
    /// A copy of everything but the attribute type, which tells an object's class. " Out of memory ": the
    /// copy then holds no values and no frame range, and both flags are false.
    CKivDSDicomAttribute(const CKivDSDicomAttribute& src);

    // The virtual operations stand in the order of the virtual table.

    /// Initialises from a DICOM toolkit's element record, of which four fields are read: at byte offset 0 the
    /// tag, at 4 the representation code, at 152 the value's length in bytes, each of 32 bits in the
    /// machine's byte order, and at 156 the address of its bytes: a pointer of this process, so that a 64-bit
    /// process reads eight bytes there. Converts as InitFromDicomData does with an expected count of 1, but
    /// - length and address are left to the conversion to refuse, which does not fail the initialisation;
    /// - a sequence (code 16) gets no placeholder: the values stay as they are;
    /// - the values' in-sequence index is what the conversion gives, 0;
    /// - the must-replicate flag becomes `mustReplicate` for Pixel Data, too.
    ///
    /// `n` must be positive; the third argument is not used. The private flag becomes false, for Pixel Data
    /// true. " Bad input parameters " (`n`, a null `element`), " Unable to initialize the attribute object "
    /// (a derived class's conversion gave false, or memory ran out).
    virtual bool InitFromDicomElement(int n, char* element, bool, bool mustReplicate);
    /// Initialises an attribute without values from an element's value field: `length` bytes at `data`, text
    /// as it stands (PS3.5 6.2), numbers little-endian. Each representation code has its conversion
    /// (Convert2String and what follows it for text, Convert2VectOfScalars for the rest); what a conversion
    /// cannot read it reports itself, and the initialisation succeeds all the same. Codes without a
    /// conversion, and AS text that begins with a NUL, leave the values as they are. Every value gets
    /// `inSequenceIndex`. `expectedCount` (not negative) counts for DA and TM alone: 1 when the whole text is
    /// one value, else backslash-separated values. The private flag becomes false, the must-replicate flag
    /// `mustReplicate`.
    ///
    /// Pixel Data (7FE0,0010) and sequences (code 16) become a private placeholder whose in-sequence index is
    /// 0; `length` and `data` are not read. Of Pixel Data that is one value of four characters, the tag's
    /// bytes in little-endian order, and the must-replicate flag stays as it is; of a sequence one unsigned
    /// integer, the tag. " Bad input parameters " (no bytes), " Unable to initialize the attribute object "
    /// (as for InitFromDicomElement).
    virtual bool InitFromDicomData(unsigned long tag, int representation, int length, const char* data,
                                   const char*, bool, bool mustReplicate, int inSequenceIndex,
                                   int expectedCount);
    /// Replaces the values by copies of `count` records; the records stay the caller's, the flags stay as
    /// they are. A record that cannot be copied is reported and leaves an empty value. With `toDicom`
    /// Attribute2Dicom is called. " Bad input parameters ", " Sequence type DICOM data values not supported "
    /// (code 16; tag and code are stored), "Failed to allocate attribute value array".
    virtual bool InitFromValues(unsigned long tag, int representation, int count,
                                SKivAGAttributeValue* values, bool toDicom);
    /// The attribute as it stands for one frame, as a new plain attribute that the caller owns: a copy when
    /// this one is not multi-frame, else one value, the frame's; null, and true, when the frame range does
    /// not hold `frame`. "Failed to create new DICOM attribute object", "Attempt to use invalid value index
    /// to access multiframe attribute non-character value" or "... character value", "Failed to initialize
    /// single frame copy from data values".
    virtual bool CreateSingleFrameCopy(int frame, CKivDSDicomAttribute** out) const;
    virtual ~CKivDSDicomAttribute();

protected:
    /// Writes one value stream (docs/streams.md) at `buffer` and sets `size`; with a null `buffer` only sets
    /// `size`. "Attempt to serialize attribute value with null data pointer".
    virtual bool Serialize(const SKivAGAttributeValue& value, char* buffer, int& size) const;

public:
    /// Writes the attribute stream (docs/streams.md) at `buffer`, which has room for the length that a call
    /// with a null `buffer` gives in `size`. " Unable to serialize the attribute value ", " Inconsistent
    /// attribute format: serialization aborted" (`size` becomes 0).
    virtual bool Serialize(char* buffer, int& size) const;

protected:
    /// Reads one value stream, whose length is not checked; the data goes inside the attribute when
    /// `inlineAllowed` and it is shorter than 16 bytes. "Invalid input parameter", "Failed to allocate
    /// attribute value data buffer".
    virtual bool Deserialize(const char* buffer, int& size, SKivAGAttributeValue& value, bool inlineAllowed);

public:
    /// Reads an attribute stream into an attribute without values, trusting the lengths that the stream
    /// declares; `size` receives the bytes that the stream occupies. `version` above 0: the stream begins
    /// with its length; `versioned`: it ends with the multi-frame part. For bytes from elsewhere use the
    /// overload with a length. " Bad input parameters ", "Failed to allocate attribute value array", " Unable
    /// to deserialize the attribute value ", "Failed to allocate new frame range collection". The values read
    /// before a failure stay.
    virtual bool Deserialize(const char* buffer, int& size, bool versioned, int version);
    /// The private flag: a placeholder for data that is not kept, or bookkeeping; such attributes survive the
    /// removal of all attributes from a collection.
    virtual bool IsPrivate() const;
    /// The must-replicate flag: accumulation of this attribute keeps repeated values.
    virtual bool MustReplicate() const;
    /// " Nul output parameter pointer ".
    virtual bool GetTag(unsigned long* out) const;
    /// Always null: no description is kept.
    virtual char* GetDescription() const;
    /// The representation code; see the list at the top of the class.
    virtual int GetDicomRepresentation() const;
    /// " Nul output parameter pointer ".
    virtual bool GetNumberOfValues(int* out) const;
    /// A copy of value `i` in a new heap block, which the caller releases with DeleteAttributeValue;
    /// GetValuePtr lends the value without a copy. " Bad input / output parameters "; under
    /// "CopyAttributeValue" what that reports.
    virtual bool GetValue(int i, SKivAGAttributeValue* out) const;
    /// Replaces value `i` by a copy of `*in` in a new heap block; the former block is released.
    /// " Bad input / output parameters "; under CopyAttributeValue "Invalid input buffer " when `*in` has no
    /// data, and "Failed to allocate destination buffer". The former value stays then.
    virtual bool SetValue(int i, SKivAGAttributeValue* in);
    /// Renders value `index` as NUL-terminated text of at most `bufferSize - 1` characters; `bufferSize` is
    /// at least 1. "Invalid input attribute index": `text` is then not touched.
    virtual void GetValueAsString(int index, int bufferSize, unsigned char* text) const;
    /// The number of values that belong to a sequence item (index 0 or more). "Invalid null output pointer".
    virtual bool GetNumberOfInSequenceValues(int* out) const;
    /// A copy of the first value of sequence item `index`, as GetValue gives it; false without a report when
    /// there is none. "Invalid null output value pointer".
    virtual bool GetInSequenceValue(int index, SKivAGAttributeValue* out) const;
    /// A new plain copy, owned by the caller, whose values are numbered 0, 1, 2, ... as sequence items,
    /// unless one of them has an index other than 0 already. "Failed to create new DICOM attribute".
    virtual bool CreateInSequenceInitializedCopy(CKivDSDicomAttribute*& out) const;
    /// Makes the attribute multi-frame with the `count` frames at `frames`, and clears both flags. One value
    /// then holds an element a frame (of one element: for every frame), several values are one a frame.
    /// Whether the values suffice is not checked. Frames that the frame range refuses
    /// (CKivIPPRangeIDC::SetFrames) are no failure: the attribute is then multi-frame without a frame.
    /// "Failed to allocate frame range": single-frame then.
    virtual bool SetMultiFrameInfo(int count, int* frames);
    /// The same with the frames `first` to `second`, inclusive; `first` above `second` is refused as above.
    virtual bool SetMultiFrameInfo(int first, int second);
    /// Makes the attribute single-frame; always true.
    virtual bool ResetMultiFrameInfo();
    /// Whether the attribute has a frame range.
    virtual bool IsMultiFrame() const;
    /// A new copy of the frame range, owned by the caller; null when not multi-frame. "Failed to create new
    /// CKivIPPRangeIDC object".
    virtual CKivIPPRangeIDC* GetFrameRangeCollection() const;
    /// Releases a record's heap block and nulls its pointer; a record whose data lies inside this attribute
    /// is left alone, one whose data lies beside it loses its pointer. Always true.
    virtual bool DeleteAttributeValue(SKivAGAttributeValue& v) const;
    /// 0 for this class, 1 for CKivDSCodeSequenceAttribute.
    virtual int GetType() const;
    /// Sends the attribute's lines to the dump listener (attribute/DumpListener.h): those of the two
    /// operations that follow, then the frame range's.
    virtual void Dump();
    /// The line of tag (two decimal numbers), representation and number of values.
    virtual void DumpDicomInfo();
    /// The line of the values as text. False when the attribute has no values.
    virtual bool DumpValuesInfo();

protected:
    /// Bytes of a value stream; 0 when an int cannot hold the length.
    virtual int GetSize(const SKivAGAttributeValue& value) const;
    /// Bytes of the attribute stream; 0 when the frame range cannot tell its size ("Failed to obtain
    /// serialization size of frame range collection") or an int cannot hold the length.
    virtual int GetSize() const;
    /// The dispatch from representation code to conversion. Always true: a conversion's result does not
    /// count.
    virtual bool Dicom2Attribute(int representation, int length, const char* data, int expectedCount);
    /// A hook for subclasses; does nothing and gives false.
    virtual bool Attribute2Dicom();
    /// Character strings: one NUL-terminated value for each piece between separators that is not empty,
    /// blanks included; a text of separators alone gives none, and true.
    /// "Failed to allocate attribute value array". This conversion and those that follow replace the values,
    /// read no byte at or past `text + length`, and report " Bad input parameters " for a null text or a
    /// `length` below 1.
    virtual bool Convert2String(const char* text, int length, const char* separators, int separatorCount);
    /// DA: year, month, day; one value a date. `expectedCount` 1: the whole text is one date; else a date for
    /// each piece between backslashes that is not empty, where the text's last byte counts as its padding and
    /// belongs to no piece. " Unable to allocate attribute values "; with code 1 and a blank after the
    /// operation's name: " Failed to convert the DICOM values " (no piece), " Failed to convert the DICOM
    /// string " (a piece; true, and the values from it on stay 0).
    virtual bool Convert2Date(const char* text, int length, int expectedCount);
    /// One date of 8 (YYYYMMDD, PS3.5 6.2) or 10 (YYYY.MM.DD) characters into a value of three integers;
    /// whether it is in the calendar is not checked. " Unsupported DICOM data format " with code 1 and a
    /// blank after the operation's name (another length, no text, another value).
    virtual bool InternalConvert2Date(const char* text, int length, SKivAGAttributeValue& value);
    /// TM: hours, minutes, seconds, fraction; one value a time, with pieces and reports as for Convert2Date.
    virtual bool Convert2Time(const char* text, int length, int expectedCount);
    /// One time (HHMMSS.FFFFFF, PS3.5 6.2, or HH:MM:SS.FFFFFF) into a value of four integers. The fraction is
    /// the number that its digits make (six at most): .5 gives 5, .500 gives 500. What the text does not
    /// reach is 0. " Bad input parameters " (also another value), "Signed to Unsigned conversion error" (a
    /// fraction below 0; the other three stand).
    virtual bool InternalConvert2Time(const char* text, int length, SKivAGAttributeValue& value);
    /// DT: one value of nine integers: year, month, day, hours, minutes, seconds, fraction as in TM, then
    /// hours and minutes of the offset from UTC, both with its sign (PS3.5 6.2). What the text does not say
    /// is 0; fraction and offset are read only after seconds. A text without a whole year gives nine zeros,
    /// and false without a report. " Unable to allocate attribute values ".
    virtual bool Convert2DateTime(const char* text, int length);
    /// AS: one value of two integers: the number, and the character code of its unit (D, W, M or Y, or the
    /// same in lower case; PS3.5 6.2). " Unsupported DICOM age string " (no unit), " Unable to allocate
    /// attribute values ".
    virtual bool Convert2Age(const char* text, int length);
    /// PN: one NUL-terminated value for each name component that is not empty, of all names and groups
    /// (PS3.5 6.2). "Failed to allocate new attribute value array".
    virtual bool Convert2PersonName(const char* text, int length);
    /// DS: one value of as many doubles as there are numbers (PS3.5 6.2), read as strtod reads them in the C
    /// locale. One character is skipped between two numbers; what is no number ends the reading.
    /// " Unsupported DICOM decimal string format " (no number; no values are left),
    /// " Unable to allocate the attribute values  ".
    virtual bool Convert2Double(const char* text, int length);
    /// IS: the same with integers (PS3.5 6.2); one beyond 32 bits becomes the nearest that fits.
    /// " Unsupported DICOM integer string format ", " Unable to allocat the attribute values ".
    virtual bool Convert2Int(const char* text, int length);
    /// Copies a whole value into a record of this attribute; `valueIndex` is the record's position. At
    /// position 0 data of fewer than 16 bytes goes inside the attribute. "Invalid input parameter", "Invalid
    /// input buffer ", "Failed to allocate destination buffer".
    virtual bool CopyAttributeValue(const SKivAGAttributeValue* const src, SKivAGAttributeValue* const dst,
                                    int valueIndex);
    /// Cleans, then makes `nValues` zeroed values of `nElements` elements each; one value of up to 16 bytes
    /// inside the attribute. With `nValues` 0 or less there are no values, which is no failure. "Failed to
    /// allocate new attribute value array", "Invalid byte size" (a negative `nElements`), "Failed to allocate
    /// attribute buffer"; after a failure there are no values.
    virtual bool Alloc(int nValues, tagEKivAGAttributeType type, int nElements);
    /// Gives every record the type `t`.
    virtual void SetDataElementType(tagEKivAGAttributeType t);
    /// The placeholder for Pixel Data: one value of the tag's four bytes, and the private flag. Always true.
    virtual bool MakePixelDataAttribute(int representation, const char* data);
    /// Whether `p` is the address of the data area inside this attribute.
    virtual bool IsPreallocatedData(const char* p) const;

public:
    /// Provides records for `n` values: the one inside the attribute for one or less, an array for more.
    /// It changes no count and releases nothing; callers clean first.
    virtual bool AllocAttributeValue(int n);
    /// Releases the values. Tag, representation, flags, type and frame range stay.
    virtual void Clean();

    // What follows is not virtual, or stands after the fixed virtual operations.

    /// The bounded read, for bytes from elsewhere: as Deserialize above, but it reads no byte at or past
    /// `buffer + length`, allocates no more than a small multiple of `length`, and refuses malformed input.
    bool Deserialize(const char* buffer, int length, int& size, bool versioned, int version);
    /// Lends value `index` in place until the attribute's values change; null, without a report, out of
    /// range.
    const SKivAGAttributeValue* GetValuePtr(int index) const noexcept
    {
        return m_pValues && index >= 0 && index < m_nNumberOfValues ? &m_pValues[index] : nullptr;
    }
    /// Makes this an attribute without values: tag and code as given, private flag false, no report.
    void InitEmpty(unsigned long tag, int representation, bool mustReplicate);

    /// Takes over everything of `src` but the attribute type. "Failed to allocate new attribute value array"
    /// under "CKivDSDicomAttribute::operator =": the attribute then holds no values.
    CKivDSDicomAttribute& operator=(const CKivDSDicomAttribute& src);
    /// Equality of values and frame ranges; tag, representation, flags and type take no part.
    bool operator==(const CKivDSDicomAttribute& other);
    /// The negation of ==.
    bool operator!=(const CKivDSDicomAttribute& other);
    /// Appends `b`'s values: all of them when `b` must be replicated, else those that were not held before
    /// the call (`b`'s values are not compared with one another). Nothing happens when tags or
    /// representations differ, one side is multi-frame, `b` has no values or `b` is this.
    ///
    /// The values held keep their data where it is, while their records may move, so what GetValuePtr lent is
    /// no longer valid. Each value appended is copied to new memory, with its in-sequence index; the
    /// first value of an attribute without values goes inside the attribute when it has fewer than 16 bytes.
    ///
    /// Reports, and leaves the attribute as it was: "Failed to allocate new array of attribute values" or
    /// "Failed to allocate new attribute value array" under "CKivDSDicomAttribute::operator +=", "Failed to
    /// allocate destination buffer" under CopyAttributeValue.
    CKivDSDicomAttribute& operator+=(const CKivDSDicomAttribute& b);

protected:
    std::uint32_t m_ulTag = 0;                 ///< group in the high 16 bits, element in the low ones
    std::int32_t m_nRepresentation = 0;        ///< the representation code
    bool m_bPrivate = false;                   ///< see IsPrivate
    bool m_bMustReplicate = false;             ///< see MustReplicate
    CKivIPPRangeIDC* m_pFrameRange = nullptr;  ///< owned; null: single-frame
    std::int32_t m_nNumberOfValues = 0;        ///< records in use
    SKivAGAttributeValue* m_pValues = nullptr; ///< &m_InlineValue, an owned array, or an array beside
    alignas(8) char m_InlineData[16] = {};     ///< the data of one small value; aligned for doubles
    SKivAGAttributeValue m_InlineValue = {};   ///< the record of a single value
    bool m_bPreallocatedData = false;          ///< the single value's data lies in m_InlineData

private:
    // It lies among others in a block of a part's, and so may the data of its values
    // (attribute/internal/AttributeBlock.h).
    bool m_bInBlock = false;

protected:
    std::int32_t m_nType = 0; ///< see GetType

    /// The readers' hook behind all forms of Deserialize: reads the attribute's stream through `reader`,
    /// which bounds it, and leaves the reader behind the stream. `size` is set as the public forms set it.
    virtual bool ReadStream(kivds::ByteReader& reader, int& size, bool versioned, int version);

    /// Takes over an array of `count` records with their blocks in place of the values, which are released.
    void AdoptValues(std::unique_ptr<SKivAGAttributeValue[]> values, int count);

private:
    friend class CKivDSDicomAttributeCollection; // calls InitFromElement
    friend KIVDS_API bool operator==(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b);
    friend KIVDS_API bool operator<(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b);
    friend struct kivds::AttributeRecord;
    friend class kivds::BlockAttribute;
    template <class T>
    friend bool Convert2VectOfScalars(const char* data, int byteLength, CKivDSDicomAttribute* attribute,
                                      T* typeTag);

    struct SPieceFormat;
    struct SNumberFormat;
    struct SValueStream;

    inline explicit CKivDSDicomAttribute(kivds::InBlock) noexcept;
    CKivDSDicomAttribute(const CKivDSDicomAttribute& src, bool inBlock);
    char* NewData(std::int64_t bytes);
    SKivAGAttributeValue* NewRecords(int n);
    void ReleaseRecords();
    void ReleaseValues();
    bool FillValues(const SKivAGAttributeValue* values, int count);
    void AppendValues(const CKivDSDicomAttribute& b);
    bool ReserveRecords(std::int64_t total);
    std::unique_ptr<CKivDSDicomAttribute> NewPlainCopy() const;
    template <class SetFrames>
    bool MakeMultiFrame(SetFrames setFrames);
    bool LendFrameValue(int position, SKivAGAttributeValue& value, const kivds::Operation& op) const;
    bool InitFromElement(unsigned long tag, int representation, int length, const char* data,
                         int expectedCount, bool mustReplicate, int inSequenceIndex);
    bool HoldsBytes(const char* data) const;
    bool ConvertElement(int representation, int length, const char* data, int expectedCount);
    bool ConvertAgain(int representation, int length, const char* data, int expectedCount);
    void ConvertRaw(tagEKivAGAttributeType type, int length, const char* data);
    bool SetText(SKivAGAttributeValue& value, std::string_view text);
    bool KeepEachPiece(const kivds::Operation& op, kivds::PieceReader pieces, const wchar_t* noMemory);
    bool KeepPieces(const kivds::Operation& op, const kivds::PieceReader& pieces, const wchar_t* noMemory);
    bool ConvertPieces(const char* text, int length, int expectedCount, const SPieceFormat& format);
    template <class T>
    bool ConvertNumbers(const char* text, int length, const SNumberFormat& format,
                        bool (*read)(const char*&, const char*, T&));
    bool IsPlain() const;
    template <bool plain>
    int Measure() const;
    static bool WriteValue(const SKivAGAttributeValue& value, kivds::ByteWriter& writer);
    template <bool plain>
    bool WriteFields(kivds::ByteWriter& out, int total) const;
    template <bool plain>
    bool ReadFields(kivds::ByteReader reader, bool versioned, int& consumed, const kivds::Operation& op);
    bool KeepValue(const SValueStream& stream, SKivAGAttributeValue& value, bool inlineAllowed,
                   const kivds::Operation& op);
    bool ReadOverriddenValue(kivds::ByteReader& reader, SKivAGAttributeValue& value,
                             const kivds::Operation& op);

    // The records' capacity and index while values are being gathered from many attributes; null otherwise.
    std::unique_ptr<kivds::GatheredValues> m_pGathered;
};

/// The same as the member operators.
KIVDS_API bool operator==(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b);
/// The negation of ==.
KIVDS_API bool operator!=(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b);
/// Orders value by value, then by the number of values. Under "operator <" with code 1: "Attempt to
/// quantitatively compare multiframe attributes" (the comparison goes on), and the values' own report when
/// their types differ.
KIVDS_API bool operator<(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b);
/// The negation of `<`, with its reports.
KIVDS_API bool operator>=(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b);

/// Replaces the attribute's values by one value: `byteLength` bytes at `data`, taken over as they stand,
/// counted in whole elements of T (char, short, unsigned short, int, unsigned int, float, double). `typeTag`
/// selects T and is not read. Under "Convert2VectOfScalars": "Invalid input parameter" (null, or shorter than
/// one element), "Failed to allocate destination buffer"; the attribute is then unchanged.
template <class T>
KIVDS_API bool Convert2VectOfScalars(const char* data, int byteLength, CKivDSDicomAttribute* attribute,
                                     T* typeTag);
