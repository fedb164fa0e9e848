// The 16-byte type identifier with which the platform names kinds of scopes and scope items.
// On Windows it is the system's own; elsewhere the same layout is declared here.
#pragma once

#if defined(_WIN32)
#include <guiddef.h>
#else
#include <cstdint>

/// Sixteen bytes, compared whole (SameGuid).
struct _GUID
{
    std::uint32_t Data1;   ///< the first of the four groups that a GUID is written in
    std::uint16_t Data2;   ///< the second
    std::uint16_t Data3;   ///< the third
    std::uint8_t Data4[8]; ///< the rest
};
#endif

#include <cstring>

namespace kivds {

/// Whether two type identifiers are the same 16 bytes.
inline bool SameGuid(const _GUID& a, const _GUID& b) noexcept
{
    return std::memcmp(&a, &b, sizeof(_GUID)) == 0;
}

} // namespace kivds
