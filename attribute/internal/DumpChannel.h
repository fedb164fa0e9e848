// Where the diagnostic dump's lines go: to the listener set with SetDumpListener, if there is one.
#pragma once

namespace kivds {

void SendDumpLine(const char* line) noexcept;

} // namespace kivds
