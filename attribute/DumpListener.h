// The channel of the diagnostic dump: attributes and collections compose lines and send them here.
#pragma once

#include "platform/Export.h"

/// Replaces the listener of the process; null: the lines go nowhere. Each line is NUL-terminated and valid
/// only during the call, which comes on the thread that dumps. When this returns, the former listener is no
/// longer running on any other thread. A listener may call this itself.
KIVDS_API void SetDumpListener(void (*listener)(void* context, const char* line), void* context);
