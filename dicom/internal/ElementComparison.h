// Compares elements of two data sets as they would be encoded in Explicit VR Little Endian, without encoding
// them.
#pragma once

#include <string>

class DcmDataset;

namespace kivds {

/// Where the elements `tag` differ first, and how; empty when they are the same, or in neither data set.
std::string FirstDifferenceOf(DcmDataset& a, DcmDataset& b, unsigned long tag);

} // namespace kivds
