// The platform's error sink. Every failing operation of the library reports here, once, before it returns.
// One sink serves the whole process; any thread may report, and set the listener, at any time.
#pragma once

#include "platform/Export.h"

/// Passes reports on to one listener; without one they go nowhere.
class KIV_BASEERROR_API CKivIPBaseError
{
public:
    /// Receives each report on the thread that makes it. The texts are valid only during the call.
    using Listener = void (*)(void* context, const wchar_t* function, const wchar_t* message, int code);

    /// Passes a report on to the listener, if there is one. `function` names the operation, for instance
    /// L"CKivDSDicomAttribute::GetTag". A listener's exception is swallowed: a report never fails.
    void SetError(const wchar_t* function, const wchar_t* message, int code);

    /// Replaces the listener; null: nobody listens. When the call returns, the former listener is no longer
    /// running on any other thread, so its context may be destroyed. A listener may call this itself; it then
    /// does not wait for others that do so at the same time.
    void SetListener(Listener listener, void* context);
};

/// The process's error sink. It holds no state of its own and is usable from load to unload.
extern KIV_BASEERROR_API CKivIPBaseError g_KivIPError;
