// Input: a script version stream.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"
#include "tests/support/Versions.h"

namespace kivds::fuzz {

namespace {

void CheckQueries(CKivDSScriptVersion& versions)
{
    std::string former;
    for (int i = 0; i < versions.GetNumberOfModalities(); ++i) {
        char modality[64];
        unsigned int lowest = 0, highest = 0, sameLowest = 0, sameHighest = 0;
        Require(versions.GetVersion(i, modality, lowest, highest), "every entry can be had by its position");
        Require(i == 0 || former < modality, "entries are in the order of their modalities");
        former = modality;
        if (former.size() == sizeof modality - 1)
            return; // perhaps cut to the room that there is
        Require(versions.GetVersion(modality, sameLowest, sameHighest) && sameLowest == lowest &&
                    sameHighest == highest,
                "every entry can be had by its modality");
    }
}

} // namespace

void ScriptVersionStream(std::string_view bytes)
{
    ReportWatch reports;
    const auto make = [] { return std::make_unique<test::Versions>(); };
    const auto versions = CheckRead(reports, make, bytes);
    Require(reports.Count() == 0 || versions->GetNumberOfModalities() == 0,
            "a refused stream leaves nothing");
    CheckQueries(*versions);
    Require(versions->GetSerializationSize() <= 12 + versions->GetNumberOfModalities() * (12 + 64),
            "no modality is longer than allowed");
    CheckRoundTrip(reports, make, *versions);
}

} // namespace kivds::fuzz
