// The root of the scope classes: an object that knows its type and can write itself to bytes and read itself.
// It is header-only so that scopes and scope items, which live in different modules, can both derive from it.
// Objects are not synchronised: one thread at a time, or the caller's lock.
#pragma once

#include "platform/Guid.h"

/// An object with a type and a byte stream.
class CKivIPPSerialFormC
{
public:
    CKivIPPSerialFormC() = default;
    /// An object of the same type.
    CKivIPPSerialFormC(const CKivIPPSerialFormC&) = default;
    /// Takes the other's type over.
    CKivIPPSerialFormC& operator=(const CKivIPPSerialFormC&) = default;
    virtual ~CKivIPPSerialFormC() = default;

    /// The type given with SetType; before, all bytes zero (a frame range: g_RangeUID).
    virtual const _GUID& GetType() const { return m_Type; }
    /// Records what kind of object this is; nothing is checked.
    virtual void SetType(const _GUID& type) { m_Type = type; }

    /// Writes the object at `buffer` and sets `*size` to the bytes written; with a null `buffer` only sets
    /// `*size` to the length. False when `size` is null or the object cannot be written.
    virtual bool Serialize(char* buffer, int* size) const = 0;
    /// Reads what Serialize wrote, type included, and sets `*size` to the bytes consumed. The total length
    /// that the stream declares at its start is trusted and kept to. False on a null pointer or malformed
    /// bytes; the object is then empty and keeps its type.
    virtual bool Deserialize(const char* buffer, int* size) = 0;
    /// Passes the object's diagnostic text to the platform's trace; true on success. The stand-ins have no
    /// trace.
    virtual bool Dump() const = 0;

private:
    _GUID m_Type = {};
};
