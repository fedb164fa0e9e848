// Script versions that are written and read through the operations of attributes and collections.
#pragma once

#include "scriptversion/CKivDSScriptVersion.h"

namespace kivds::test {

struct Versions : CKivDSScriptVersion
{
    bool Serialize(char* buffer, int& size) const
    {
        size = GetSerializationSize();
        return !buffer || CKivDSScriptVersion::Serialize(buffer) == size;
    }
    bool Deserialize(const char* buffer, int& size)
    {
        size = CKivDSScriptVersion::Deserialize(buffer);
        return size > 0;
    }
    bool Deserialize(const char* buffer, int length, int& size)
    {
        size = CKivDSScriptVersion::Deserialize(buffer, length);
        return size > 0;
    }
};

} // namespace kivds::test
