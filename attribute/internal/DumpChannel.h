// Where the diagnostic dump's lines go: to the listener set with SetDumpListener, if there is one. Any thread
// may send at any time.
#pragma once

namespace kivds {

/// Whether there is a listener; without one no line need be composed.
bool DumpIsHeard() noexcept;

void SendDumpLine(const char* line) noexcept;

} // namespace kivds
