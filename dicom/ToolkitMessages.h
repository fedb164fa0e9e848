// What DCMTK has to say about a file while it reads it: elements out of order, odd lengths, where a value
// breaks off.
#pragma once

#include "dicom/Export.h"

namespace kivds {

/// Sends the warnings and errors of DCMTK's log to `listener`, on the thread that causes them, instead of
/// where the log was going; null: nowhere. This changes the log of the whole process, and there is no way
/// back to its former output. `message` is valid only during the call.
KIV_DICOM_API void SetToolkitListener(void (*listener)(void* context, const char* message), void* context);

} // namespace kivds
