// The root of the library's object classes: a virtual destructor and a common pointer type with which a
// notification names its source. It has no state.
#pragma once

#include "platform/Export.h"

/// Nothing but a virtual destructor.
class KIVDS_API CKivDSBase
{
public:
    CKivDSBase();
    /// Copies nothing.
    CKivDSBase(const CKivDSBase&);
    /// Copies nothing.
    CKivDSBase& operator=(const CKivDSBase&);
    virtual ~CKivDSBase();
};
