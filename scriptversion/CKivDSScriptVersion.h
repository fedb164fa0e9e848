// The script versions registered for each modality (a text such as "CT"): the lowest and the highest number.
// The list is ordered by modality, byte by byte, and travels between processes as a stream. It owns its
// entries; one thread at a time, or the caller's lock.
#pragma once

#include "platform/Export.h"

#include <functional>
#include <map>
#include <string>

namespace kivds {
class ByteReader;
} // namespace kivds

/// Failures are reported under "CKivDSScriptVersion::" and the operation's name; no exception leaves an
/// operation.
class KIVDS_API CKivDSScriptVersion
{
public:
    /// What is registered for one modality.
    struct tagVersion
    {
        unsigned int nLowestVersion;  ///< the lowest number registered
        unsigned int nHighestVersion; ///< the highest
    };

    CKivDSScriptVersion();
    /// A copy of the list. "Unexpected error" (no memory): an empty list.
    CKivDSScriptVersion(const CKivDSScriptVersion& src);
    /// Becomes a copy of the list. "Unexpected error" under "CKivDSScriptVersion::operator =" (no memory):
    /// the list stays as it was.
    CKivDSScriptVersion& operator=(const CKivDSScriptVersion& src);

    virtual ~CKivDSScriptVersion();
    /// Registers a version of a modality. "Invalid modality string" (null).
    virtual bool AddVersion(const char* modality, unsigned int version);
    /// The number of entries.
    virtual int GetNumberOfModalities() const;
    /// The entry at `index`, counted from 0; `modality` has room for 64 bytes and receives at most 63
    /// characters and a NUL. "Invalid index " (also a null buffer): both numbers are 0.
    virtual bool GetVersion(int index, char* const modality, unsigned int& lowest,
                            unsigned int& highest) const;
    /// The entry of a modality; both numbers 0 and false, without a report, when there is none. "Invalid
    /// modality string" (null; the numbers are not touched).
    virtual bool GetVersion(const char* modality, unsigned int& lowest, unsigned int& highest) const;
    /// Bytes of the stream.
    virtual int GetSerializationSize() const;
    /// Writes the stream (docs/streams.md) at `stream`, which has room for it, and gives its length, 0 on
    /// failure: "Invalid serialization stream" (null), "Inconsistent serialization format: serialization
    /// aborted ".
    virtual int Serialize(char* const stream) const;
    /// Replaces the entries by those of a stream, trusting the lengths that it declares; gives the total that
    /// it states, or in the old form, which states none, the bytes read. 0 on failure: "Invalid
    /// deserialization stream"; the list is then empty. For bytes from elsewhere use the overload with a
    /// length.
    virtual int Deserialize(const char* const stream);

    /// The bounded read: reads no byte at or past `stream + length`, allocates no more than a small multiple
    /// of `length`, and refuses malformed input. Gives the bytes read.
    int Deserialize(const char* stream, int length);

    friend KIVDS_API bool operator==(const CKivDSScriptVersion& a, const CKivDSScriptVersion& b);

private:
    static const int ms_nVersion;

    int GetVersionSize(const tagVersion& version, const char* modality) const;
    bool Read(kivds::ByteReader& reader, int& total);

    std::map<std::string, tagVersion, std::less<>> m_Versions;
};

/// Both numbers alike.
KIVDS_API bool operator==(const CKivDSScriptVersion::tagVersion& a, const CKivDSScriptVersion::tagVersion& b);
/// The negation of ==.
KIVDS_API bool operator!=(const CKivDSScriptVersion::tagVersion& a, const CKivDSScriptVersion::tagVersion& b);
/// The same modalities with the same numbers.
KIVDS_API bool operator==(const CKivDSScriptVersion& a, const CKivDSScriptVersion& b);
/// The negation of ==.
KIVDS_API bool operator!=(const CKivDSScriptVersion& a, const CKivDSScriptVersion& b);
