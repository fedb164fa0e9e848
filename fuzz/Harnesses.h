// The fuzz harnesses. Each takes bytes that anybody may have made, and aborts when the library breaks one of
// its promises on them. The first bytes choose what is done, the rest is what it is done with; each harness
// says how. One thread at a time.
#pragma once

#include <string_view>

namespace kivds::fuzz {

void AttributeStream(std::string_view bytes);
void CodeSequenceStream(std::string_view bytes);
void CollectionStream(std::string_view bytes);
void EnhancedStream(std::string_view bytes);
void ScriptVersionStream(std::string_view bytes);
void ElementBytes(std::string_view bytes);
void PublicInterface(std::string_view bytes);

} // namespace kivds::fuzz
