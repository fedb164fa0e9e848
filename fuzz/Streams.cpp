// The harnesses that read streams.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"
#include "tests/support/Versions.h"

namespace kivds::fuzz {

// Input: the version handed to the reader (7, 0, 1 or -7), whether the multi-frame part is read, an attribute
// stream.
void AttributeStream(std::string_view bytes)
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

// Input: the version handed to the reader (7 or 0), whether the multi-frame part is read, a code sequence
// stream.
void CodeSequenceStream(std::string_view bytes)
{
    ReportWatch reports;
    Input input(bytes);
    const int version = input.Flag() ? 7 : 0;
    const bool versioned = input.Flag();
    const bool sound = input.Flag();
    std::string stream(input.Rest());
    for (std::size_t i = 0; i < 4 && sound && stream.size() >= 4; ++i)
        stream[i] = static_cast<char>(stream.size() >> (8 * i));
    const auto make = [] { return std::make_unique<CKivDSCodeSequenceAttribute>(); };
    const auto codes = CheckRead(reports, make, stream, versioned, version);
    CheckAttribute(*codes, reports);

    CKivDSCodeSequenceAttribute copy(*codes);
    Require(copy == *codes, "a copy holds the same codes");
    CKivDSCodeSequenceAttribute twice(*codes);
    twice += copy;
    const int count = codes->GetNumberOfCodes();
    Require(twice.GetNumberOfCodes() == 2 * count, "merging keeps all codes");
    for (int i = 0; i < 2 * count; ++i) {
        const SKivAGAttributeValue* const value = twice.GetValuePtr(i);
        Require(value && value->nInSequenceIndex == i &&
                    value->pData == std::string(twice.GetCodePtr(i)->szCodeMeaning),
                "merging makes a value of each code's meaning");
    }
    CheckAttribute(twice, reports);
}

// Input: the versioned flag, whether a part or a whole collection is read, its stream.
void CollectionStream(std::string_view bytes)
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

// Input: the versioned flag, an enhanced multi-frame stream.
void EnhancedStream(std::string_view bytes)
{
    ReportWatch reports;
    Input input(bytes);
    const bool versioned = input.Flag();
    const auto make = [] { return std::make_unique<CKivDSEnhancedMFCollection>(); };
    const auto enhanced = CheckRead(reports, make, input.Rest(), versioned);
    CheckRoundTrip(reports, make, *enhanced, true);

    const int count = enhanced->GetNumberOfMFCollections();
    int frames = 0;
    Require(enhanced->GetNumberOfFrames(&frames) == (count > 0) && frames == count, "frames are counted");
    if (count > 0) {
        const FacadePtr complete(enhanced->GetMFCollection(count - 1));
        CheckFacade(*complete);
        CheckFacadeStream(*complete, reports);
    }
}

// Input: a script version stream.
void ScriptVersionStream(std::string_view bytes)
{
    ReportWatch reports;
    const auto make = [] { return std::make_unique<test::Versions>(); };
    const auto versions = CheckRead(reports, make, bytes);
    Require(reports.Count() == 0 || versions->GetNumberOfModalities() == 0, "a refusal leaves nothing");
    std::string former;
    for (int i = 0; i < versions->GetNumberOfModalities(); ++i) {
        char modality[64];
        unsigned int lowest = 0, highest = 0, sameLowest = 0, sameHighest = 0;
        Require(versions->GetVersion(i, modality, lowest, highest), "every entry can be had by its position");
        Require(i == 0 || former < modality, "entries are in the order of their modalities");
        former = modality;
        if (former.size() == sizeof modality - 1)
            break; // perhaps cut to the room that there is
        Require(versions->GetVersion(modality, sameLowest, sameHighest) && sameLowest == lowest &&
                    sameHighest == highest,
                "every entry can be had by its modality");
    }
    Require(versions->GetSerializationSize() <= 12 + versions->GetNumberOfModalities() * (12 + 64),
            "no modality is longer than allowed");
    CheckRoundTrip(reports, make, *versions);
}

} // namespace kivds::fuzz
