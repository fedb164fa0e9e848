// What the benchmarks work on: the elements of a CT slice, as a file holds them, and collections made of
// them.
#pragma once

#include "KivDSDataU.h"

#include <memory>
#include <string>
#include <vector>

namespace kivds::bench {

struct Element
{
    unsigned long m_Tag;
    int m_nCode; // the representation code
    std::string m_Bytes;
};

std::vector<Element> CtElements();

std::unique_ptr<CKivDSDicomAttributeCollection> CollectionOf(const std::vector<Element>& elements);

} // namespace kivds::bench
