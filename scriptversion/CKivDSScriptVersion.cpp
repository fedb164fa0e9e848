// The script version list and its stream; docs/streams.md draws it.
//
//   0  4  -1, the version marker          an entry:  4  lowest version
//   4  4  count of entries                           4  highest version
//   8  .. entries                                    4  length of the modality
//   .. 4  total length, this field included          .. its characters
//
// The old form begins with the count and has no total.
#include "scriptversion/CKivDSScriptVersion.h"

#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <cstring>
#include <iterator>

using kivds::ByteReader;
using kivds::ByteWriter;
using kivds::Operation;

const int CKivDSScriptVersion::ms_nVersion = 1;

namespace {

constexpr int kFrame = 12; // marker, count, total
constexpr int kEntry = 12; // an entry but for its modality
constexpr std::size_t kLongest =
    64; // the longest modality that a stream may hold, and the room of a caller's buffer

} // namespace

CKivDSScriptVersion::CKivDSScriptVersion() = default;
CKivDSScriptVersion::~CKivDSScriptVersion() = default;

CKivDSScriptVersion::CKivDSScriptVersion(const CKivDSScriptVersion& src)
{
    Operation(L"CKivDSScriptVersion::CKivDSScriptVersion").Guard(kivds::kUnexpectedError, [&] {
        m_Versions = src.m_Versions;
    });
}

CKivDSScriptVersion& CKivDSScriptVersion::operator=(const CKivDSScriptVersion& src)
{
    Operation(L"CKivDSScriptVersion::operator =").Guard(kivds::kUnexpectedError, [&] {
        auto copy = src.m_Versions; // made before the own entries go
        m_Versions.swap(copy);
    });
    return *this;
}

bool CKivDSScriptVersion::AddVersion(const char* modality, unsigned int version)
{
    const Operation op(L"CKivDSScriptVersion::AddVersion");
    if (!modality)
        return op.Fail(L"Invalid modality string");
    return op.Guard(kivds::kUnexpectedError, [&] {
        tagVersion& entry = m_Versions.try_emplace(modality, tagVersion{version, version}).first->second;
        entry.nLowestVersion = std::min(entry.nLowestVersion, version);
        entry.nHighestVersion = std::max(entry.nHighestVersion, version);
        return true;
    });
}

int CKivDSScriptVersion::GetNumberOfModalities() const
{
    return static_cast<int>(m_Versions.size());
}

bool CKivDSScriptVersion::GetVersion(int index, char* const modality, unsigned int& lowest,
                                     unsigned int& highest) const
{
    lowest = 0;
    highest = 0;
    if (index < 0 || index >= GetNumberOfModalities() || !modality)
        return Operation(L"CKivDSScriptVersion::GetVersion").Fail(L"Invalid index ");
    const auto entry = std::next(m_Versions.begin(), index);
    std::fill_n(modality, kLongest, '\0');
    std::copy_n(entry->first.begin(), std::min(entry->first.size(), kLongest - 1), modality);
    lowest = entry->second.nLowestVersion;
    highest = entry->second.nHighestVersion;
    return true;
}

bool CKivDSScriptVersion::GetVersion(const char* modality, unsigned int& lowest, unsigned int& highest) const
{
    const Operation op(L"CKivDSScriptVersion::GetVersion");
    if (!modality)
        return op.Fail(L"Invalid modality string");
    lowest = 0;
    highest = 0;
    return op.Guard(kivds::kUnexpectedError, [&] {
        const auto entry = m_Versions.find(modality);
        if (entry == m_Versions.end())
            return false;
        lowest = entry->second.nLowestVersion;
        highest = entry->second.nHighestVersion;
        return true;
    });
}

int CKivDSScriptVersion::GetVersionSize(const tagVersion&, const char* modality) const
{
    return kEntry + static_cast<int>(std::strlen(modality));
}

int CKivDSScriptVersion::GetSerializationSize() const
{
    std::int64_t size = kFrame;
    for (const auto& [modality, version] : m_Versions)
        size += GetVersionSize(version, modality.c_str());
    return kivds::StreamLength(size);
}

int CKivDSScriptVersion::Serialize(char* const stream) const
{
    const Operation op(L"CKivDSScriptVersion::Serialize");
    if (!stream)
        return op.Fail(L"Invalid serialization stream");
    const int total = GetSerializationSize();
    ByteWriter writer(stream);
    writer.I32(-ms_nVersion);
    writer.I32(GetNumberOfModalities());
    for (const auto& [modality, version] : m_Versions) {
        writer.U32(version.nLowestVersion);
        writer.U32(version.nHighestVersion);
        writer.Text(modality);
    }
    writer.I32(total);
    if (writer.Written() != total)
        return op.Fail(L"Inconsistent serialization format: serialization aborted ");
    return total;
}

int CKivDSScriptVersion::Deserialize(const char* const stream)
{
    return Read(stream, std::numeric_limits<int>::max());
}

int CKivDSScriptVersion::Deserialize(const char* stream, int length)
{
    return Read(stream, length);
}

int CKivDSScriptVersion::Read(const char* stream, int length)
{
    const Operation op(L"CKivDSScriptVersion::Deserialize");
    constexpr const wchar_t* invalid = L"Invalid deserialization stream";
    if (!stream)
        return op.Fail(invalid);
    m_Versions.clear();
    ByteReader reader(stream, length);
    const bool marked = reader.PeekI32() < 0;
    if (marked)
        reader.I32();
    const int count = reader.I32();
    const bool read = op.Guard(kivds::kUnexpectedError, [&] {
        for (int i = 0; i < count && reader.Ok(); ++i) {
            const std::uint32_t lowest = reader.U32();
            const std::uint32_t highest = reader.U32();
            const int size = reader.I32();
            const char* const text = reader.Take(size <= static_cast<int>(kLongest) ? size : -1);
            if (text) // up to its first NUL
                m_Versions[std::string(text, static_cast<std::size_t>(std::find(text, text + size, '\0') -
                                                                      text))] = {lowest, highest};
        }
        return true;
    });
    const int total = marked ? reader.I32() : reader.Consumed();
    if (read && reader.Ok())
        return total;
    m_Versions.clear();
    if (read)
        op.Report(invalid);
    return 0;
}

bool operator==(const CKivDSScriptVersion::tagVersion& a, const CKivDSScriptVersion::tagVersion& b)
{
    return a.nLowestVersion == b.nLowestVersion && a.nHighestVersion == b.nHighestVersion;
}

bool operator!=(const CKivDSScriptVersion::tagVersion& a, const CKivDSScriptVersion::tagVersion& b)
{
    return !(a == b);
}

bool operator==(const CKivDSScriptVersion& a, const CKivDSScriptVersion& b)
{
    return &a == &b || a.m_Versions == b.m_Versions;
}

bool operator!=(const CKivDSScriptVersion& a, const CKivDSScriptVersion& b)
{
    return !(a == b);
}
