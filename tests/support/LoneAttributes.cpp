// Gives each attribute of the test program a heap block of its own, so that tests can count, watch and fail
// it.
#include "attribute/internal/AttributeMemory.h"

namespace {

[[maybe_unused]] const bool kLone = [] {
    kivds::ShareAttributeMemory(false);
    return true;
}();

} // namespace
