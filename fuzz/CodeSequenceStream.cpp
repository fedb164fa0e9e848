// Input: the version handed to the reader (7 or 0), whether the multi-frame part is read, a code sequence
// stream.
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"

void kivds::fuzz::CodeSequenceStream(std::string_view bytes)
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
