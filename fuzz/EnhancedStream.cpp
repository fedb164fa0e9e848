// Input: the versioned flag, an enhanced multi-frame stream.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"

void kivds::fuzz::EnhancedStream(std::string_view bytes)
{
    ReportWatch reports;
    Input input(bytes);
    const bool versioned = input.Flag();
    const auto make = [] { return std::make_unique<CKivDSEnhancedMFCollection>(); };
    const auto enhanced = CheckRead(reports, make, input.Rest(), versioned);
    CheckRoundTrip(reports, make, *enhanced, true);

    const int count = enhanced->GetNumberOfMFCollections();
    int frames = 0;
    Require(enhanced->GetNumberOfFrames(&frames) == (count > 0) && frames == count,
            "a frame is a per-frame collection");
    if (count > 0) {
        const FacadePtr complete(enhanced->GetMFCollection(count - 1));
        CheckFacade(*complete);
        CheckFacadeStream(*complete, reports);
    }
}
