// Input: the versioned flag, whether a part or a whole collection is read, its stream.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"

void kivds::fuzz::CollectionStream(std::string_view bytes)
{
    ReportWatch reports;
    Input input(bytes);
    const bool versioned = input.Flag();
    if (input.Flag()) {
        const auto make = [] { return std::make_unique<CKivDSBaseDicomAttributeCollection>(); };
        const auto part = CheckRead(reports, make, input.Rest(), versioned);
        CheckRoundTrip(reports, make, *part, true);
        return;
    }
    const auto make = [] { return std::make_unique<Facade>(true); };
    const auto facade = CheckRead(reports, make, input.Rest(), versioned);
    CheckFacade(*facade);
    CheckFacadeStream(*facade, reports);
}
