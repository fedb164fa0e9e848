// A collection as JSON: exactly what it holds.
#pragma once

#include "tools/Walk.h"

#include <string>

namespace kivds::tool {

/// Writes the collection to standard output, an attribute a line:
///   {"attributes": {"00080060": {"vr": "CS", "values": ["CT"]}, ...}, "multiFrameAttributes": {...},
///    "frames": [{"attributes": ...}, ...]}
/// Text is UTF-8 by the collection's Specific Character Set.
void PrintJson(const Collection& collection);

} // namespace kivds::tool
