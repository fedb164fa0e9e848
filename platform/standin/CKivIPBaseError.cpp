#include "platform/CKivIPBaseError.h"

#include "platform/internal/ListenerSlot.h"

namespace {

kivds::ListenerSlot<const wchar_t*, const wchar_t*, int> s_Listener;

} // namespace

CKivIPBaseError g_KivIPError;

void CKivIPBaseError::SetError(const wchar_t* function, const wchar_t* message, int code)
{
    s_Listener.Call(function, message, code);
}

void CKivIPBaseError::SetListener(Listener listener, void* context)
{
    s_Listener.Set(listener, context);
}
