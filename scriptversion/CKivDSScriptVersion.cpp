// The script version list and its stream; docs/streams.md draws it.
//
//   0  4  -1, the version marker          an entry:  4  lowest version
//   4  4  count of entries                           4  highest version
//   8  .. entries                                    4  length of the modality
//   .. 4  total length, this field included          .. its characters
//
// The old form begins with the count and has no total.
#include "scriptversion/CKivDSScriptVersion.h"

#include "foundation/internal/Operation.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

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
    const auto entry = m_Versions.find(std::string_view(modality));
    if (entry == m_Versions.end())
        return false;
    lowest = entry->second.nLowestVersion;
    highest = entry->second.nHighestVersion;
    return true;
}

int CKivDSScriptVersion::GetVersionSize(const tagVersion&, const char* modality) const
{
    // A text too long to be counted gives a size that leaves the stream none.
    constexpr std::size_t longest = std::numeric_limits<int>::max() - kEntry;
    return kEntry + static_cast<int>(std::min(std::strlen(modality), longest));
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
    if (!stream) {
        op.Report(L"Invalid serialization stream");
        return 0;
    }
    const int total = GetSerializationSize();
    ByteWriter writer(stream);
    if (total > 0) { // else the caller's buffer has no size to speak of, and nothing is written
        writer.I32(-ms_nVersion);
        writer.I32(GetNumberOfModalities());
        for (const auto& [modality, version] : m_Versions) {
            writer.U32(version.nLowestVersion);
            writer.U32(version.nHighestVersion);
            writer.Text(modality);
        }
        writer.I32(total);
    }
    if (total > 0 && writer.Written() == total)
        return total;
    op.Report(L"Inconsistent serialization format: serialization aborted ");
    return 0;
}

int CKivDSScriptVersion::Deserialize(const char* const stream)
{
    ByteReader reader = ByteReader::Unbounded(stream);
    int total = 0;
    return Read(reader, total) ? total : 0;
}

int CKivDSScriptVersion::Deserialize(const char* stream, int length)
{
    ByteReader reader(stream, length);
    int total = 0; // as the stream states it, unchecked; the result is what was read
    return Read(reader, total) ? reader.Consumed() : 0;
}

bool CKivDSScriptVersion::Read(ByteReader& reader, int& total)
{
    const Operation op(L"CKivDSScriptVersion::Deserialize");
    constexpr const wchar_t* invalid = L"Invalid deserialization stream";
    if (!reader.Position())
        return op.Fail(invalid);
    m_Versions.clear();
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
                m_Versions[std::string(text, std::find(text, text + size, '\0'))] = {lowest, highest};
        }
        return true;
    });
    total = marked ? reader.I32() : reader.Consumed();
    if (read && reader.Ok())
        return true;
    m_Versions.clear();
    return read && op.Fail(invalid);
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
