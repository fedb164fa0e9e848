// A DICOM code sequence (PS3.3 8.8): an ordered list of coded entries, the code records, beside the
// attribute's ordinary values, which are the entries' meanings as text. The attribute owns its records.
// Threads as for CKivDSDicomAttribute.
#pragma once

#include "attribute/CKivDSDicomAttribute.h"
#include "platform/Export.h"

#include <vector>

/// One coded entry; every text is NUL-terminated within its field (PS3.3 Table 8.8-1).
struct tagSKivDSCodeSequenceAttributeInfo
{
    char szCodeValue[33];                       ///< (0008,0100)
    char szCodingSchemeDesignator[33];          ///< (0008,0102)
    char szCodingSchemeVersion[33];             ///< (0008,0103)
    char szCodeMeaning[65];                     ///< (0008,0104)
    char szContextIdentifier[17];               ///< (0008,010F)
    char szMappingResource[17];                 ///< (0008,0105)
    char szContextGroupVersion[27];             ///< (0008,0106)
    int nContextGroupExtensionFlag;             ///< (0008,010B): 1 for Y, else 0
    char szContextGroupLocalVersion[27];        ///< (0008,0107)
    char szContextGroupExtensionCreatorUID[65]; ///< (0008,010D)
};

/// Failures are reported under "CKivDSCodeSequenceAttribute::" and the operation's name.
class KIVDS_API CKivDSCodeSequenceAttribute : public CKivDSDicomAttribute
{
public:
    /// No records, no values.
    explicit CKivDSCodeSequenceAttribute(bool bPrivate = false, bool bMustReplicate = false);
    /// One record and its meaning as the one value (representation code 3, CS); must-replicate. "Failed to
    /// initialize DICOM attribute from code sequence values" (code 1).
    CKivDSCodeSequenceAttribute(unsigned long tag, const tagSKivDSCodeSequenceAttributeInfo& info);
    /// A copy of values and records. When memory runs out for the records: "Unexpected error", and the copy
    /// holds none.
    CKivDSCodeSequenceAttribute(const CKivDSCodeSequenceAttribute& src);
    ~CKivDSCodeSequenceAttribute() override;
    /// Takes over values and records of `src`; "Unexpected error" as above.
    CKivDSCodeSequenceAttribute& operator=(const CKivDSCodeSequenceAttribute& src);

    /// Equality of the record lists, in order: code value, coding scheme designator and version, 32
    /// characters each. This stands on objects that are not const; const ones compare by their values, as the
    /// base does.
    bool operator==(const CKivDSCodeSequenceAttribute& other);
    /// The negation of ==.
    bool operator!=(const CKivDSCodeSequenceAttribute& other);
    /// Appends the other's records, repeated ones too, and makes the values anew from all records: each
    /// record's meaning, with its position as in-sequence index. Nothing happens with itself. "Attempt to add
    /// code sequence attributes of different DICOM tags"; "Failed to allocate new attribute value array" (the
    /// records are appended, the old values stay).
    CKivDSCodeSequenceAttribute& operator+=(const CKivDSCodeSequenceAttribute& other);

    /// The code sequence stream (docs/streams.md), otherwise as the base's. "Failed to serialize base class
    /// attribute data", "Inconsistent serialization procedure: number of bytes written to buffer does not
    /// equal expected serialization size" (`size` becomes 0).
    bool Serialize(char* buffer, int& size) const override;
    /// Reads the code sequence stream, as the base's. "Failed to deserialize base class data", "Inconsistent
    /// deserialization procedure: number of bytes read from deserialization buffer does not equal expected
    /// number of bytes read" (`size` becomes 0; also for a text that does not fit its field). The records
    /// read before a failure stay.
    bool Deserialize(const char* buffer, int& size, bool versioned, int version) override;
    /// The bounded read, as the base's.
    bool Deserialize(const char* buffer, int length, int& size, bool versioned, int version);

    /// The number of records.
    int GetNumberOfCodes() const noexcept;
    /// The record at `index`, lent until the records change; null, without a report, out of range.
    const tagSKivDSCodeSequenceAttributeInfo* GetCodePtr(int index) const noexcept;

protected:
    using CKivDSDicomAttribute::Deserialize;
    using CKivDSDicomAttribute::Serialize;
    /// Bytes of the stream; 0 when an int cannot hold the length.
    int GetSizeOfSerializedCodeSequenceAttribute() const;
    /// Appends copies of the other's records.
    void CopyLocal(const CKivDSCodeSequenceAttribute& other);
    /// Empties the record list, keeping its room.
    void CleanLocal();
    /// Fills `value` with the record's meaning in a new heap block that the caller releases with
    /// DeleteAttributeValue; without data when no memory can be had.
    void ConvertCodeSequenceInfoToValue(const tagSKivDSCodeSequenceAttributeInfo& info, int index,
                                        SKivAGAttributeValue& value) const;
    /// The same with any NUL-terminated text.
    void ConvertSynonymToValue(const char* text, int index, SKivAGAttributeValue& value) const;

    /// The readers' hook, as the base's.
    bool ReadStream(kivds::ByteReader& reader, int& size, bool versioned, int version) override;

private:
    void RemakeValues(const kivds::Operation& op);

    std::vector<tagSKivDSCodeSequenceAttributeInfo> m_Codes;
};
