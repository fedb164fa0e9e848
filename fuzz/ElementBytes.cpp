// Input: a representation code (-2 to 33), how many values are expected, the in-sequence index, the room for
// rendering values, an element's bytes.
#include "attribute/internal/Representation.h"
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"

#include <cstring>

namespace kivds::fuzz {

namespace {

constexpr unsigned long kTag = 0x00181234;

bool IsText(int representation)
{
    const Conversion conversion = RepresentationOf(representation).conversion;
    return conversion == Conversion::Text || conversion == Conversion::PersonName;
}

void CheckValues(const CKivDSDicomAttribute& attribute, int representation, int index, int room)
{
    for (int i = 0; const SKivAGAttributeValue* const value = attribute.GetValuePtr(i); ++i) {
        Require(value->nInSequenceIndex == index, "every value is of the sequence item named");
        Require(value->pData && value->nCount > 0, "no value is without elements");
        if (IsText(representation)) {
            const std::string_view text(value->pData, static_cast<std::size_t>(value->nCount));
            Require(value->eType == eAttrChar && text.size() > 1 && text.back() == '\0' &&
                        text.find('\\') == std::string_view::npos,
                    "a text is split at backslashes and ends with a NUL");
        }
        const ExactBlock rendering(std::string(static_cast<std::size_t>(room), '?'));
        attribute.GetValueAsString(i, room, reinterpret_cast<unsigned char*>(rendering.Data()));
        Require(std::memchr(rendering.Data(), '\0', static_cast<std::size_t>(room)) != nullptr,
                "a rendering ends within its buffer");
    }
}

} // namespace

void ElementBytes(std::string_view bytes)
{
    ReportWatch reports;
    Input input(bytes);
    const int representation = input.Below(36) - 2;
    const int expectedCount = input.Below(4);
    const int index = input.Below(3) - 1;
    const int room = 1 + input.Byte();
    const ExactBlock element(input.Rest());

    CKivDSDicomAttribute attribute;
    const bool sequence = representation == kSequence;
    Require(attribute.InitFromDicomData(kTag, representation, element.Size(), element.Data(), nullptr, false,
                                        true, index, expectedCount) == (element.Size() > 0 || sequence),
            "an element with bytes can be read");
    Require(attribute.IsPrivate() == sequence && TagOf(attribute) == kTag &&
                attribute.GetDicomRepresentation() == representation,
            "an element keeps its tag and code");
    if (sequence)
        return;
    CheckValues(attribute, representation, index, room);
    CheckAttribute(attribute, reports);
}

} // namespace kivds::fuzz
