// Input: a script version stream.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"

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
    const ExactBlock block(bytes);
    CKivDSScriptVersion versions;
    int read = 0;
    {
        const test::Allocations allocations;
        read = versions.Deserialize(block.Data(), block.Size());
        Require(allocations.Bytes() <= AllocationLimit(block.Size()),
                "reading takes memory in proportion to the input");
    }
    if (reports.Count() > 0) {
        Require(read == 0 && versions.GetNumberOfModalities() == 0, "a refused stream leaves nothing");
    } else {
        Require(read > 0 && read <= block.Size(), "no more is taken than is there");
        CKivDSScriptVersion trusting;
        trusting.Deserialize(block.Data());
        Require(trusting == versions, "a sound stream gives the same list without its length");
    }
    CheckQueries(versions);

    const int size = versions.GetSerializationSize();
    Require(size <= 12 + versions.GetNumberOfModalities() * (12 + 64), "no modality is longer than allowed");
    const ExactBlock stream(std::string(static_cast<std::size_t>(size), '?'));
    Require(versions.Serialize(stream.Data()) == size, "the bytes written are as many as announced");
    CKivDSScriptVersion back;
    Require(back.Deserialize(stream.Data(), size) == size && back == versions, "what is written can be read");
    const ExactBlock again(std::string(static_cast<std::size_t>(size), '?'));
    back.Serialize(again.Data());
    Require(std::string_view(again.Data(), static_cast<std::size_t>(size)) ==
                std::string_view(stream.Data(), static_cast<std::size_t>(size)),
            "what is read back writes the same bytes");
    Require(back.Deserialize(stream.Data(), size - 1) == 0 && reports.Count() > 0,
            "a stream cut short is refused");
}

} // namespace kivds::fuzz
