// Finds where a collection stream breaks: walks its layout (docs/streams.md) and reads every attribute within
// its bounds. It is stricter than the library's readers, which pass over what they do not need: totals, kinds
// and versions must be right, too.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kivds::tool {

struct StreamFault
{
    std::size_t offset = 0; // of the field or attribute that is wrong
    std::string text;       // what is wrong; empty when nothing is
};

StreamFault FindFault(std::string_view stream);

} // namespace kivds::tool
