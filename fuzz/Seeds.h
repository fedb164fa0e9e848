// The inputs with which the harnesses begin, made with the library itself.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace kivds::fuzz {

struct SInputs
{
    std::vector<std::string> m_Seeds; ///< small ones, of every form that the harness reads
    std::vector<std::string> m_Dense; ///< large ones, in which the fewest bytes ask for the most objects
};

/// By the name of the harness.
std::map<std::string, SInputs> MakeInputs();

} // namespace kivds::fuzz
