#include "attribute/internal/DumpChannel.h"

#include "attribute/DumpListener.h"
#include "platform/internal/ListenerSlot.h"

namespace {

kivds::ListenerSlot<const char*> s_DumpListener;

} // namespace

bool kivds::DumpIsHeard() noexcept
{
    return s_DumpListener.IsSet();
}

void kivds::SendDumpLine(const char* line) noexcept
{
    s_DumpListener.Call(line);
}

void SetDumpListener(void (*listener)(void* context, const char* line), void* context)
{
    s_DumpListener.Set(listener, context);
}
