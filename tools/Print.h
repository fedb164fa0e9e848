// Whole collections on standard output, one line an attribute.
#pragma once

#include "tools/Walk.h"

#include <string>

namespace kivds::tool {

class Console;
class TextForm;

/// The attributes in tag order, those of per-frame collections below a line that names their frame.
void PrintCollection(const Collection& collection, Console& console, const std::string& indent = {});
/// The same for a collection whose text is encoded as another one says.
void PrintCollection(const Collection& collection, TextForm& form, Console& console,
                     const std::string& indent = {});

} // namespace kivds::tool
