// Input: the version handed to the reader (7, 0, 1 or -7), whether the multi-frame part is read, an attribute
// stream.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"

void kivds::fuzz::AttributeStream(std::string_view bytes)
{
    constexpr int versions[] = {7, 0, 1, -7};
    ReportWatch reports;
    Input input(bytes);
    const int version = versions[input.Below(4)];
    const bool versioned = input.Flag();
    const auto make = [] { return std::make_unique<CKivDSDicomAttribute>(); };
    const auto attribute = CheckRead(reports, make, input.Rest(), versioned, version);
    CheckAttribute(*attribute, reports);
}
