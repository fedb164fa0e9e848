// Hands libFuzzer's inputs to one harness; the build says which.
#include "fuzz/Harnesses.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kivds::fuzz::KIVDS_HARNESS({reinterpret_cast<const char*>(data), size});
    return 0;
}
