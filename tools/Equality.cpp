#include "tools/Equality.h"

#include "tools/Numbers.h"

#include <algorithm>
#include <cstring>

namespace kivds::tool {
namespace {

bool SameCode(const Code& a, const Code& b)
{
    return a.nContextGroupExtensionFlag == b.nContextGroupExtensionFlag &&
           std::all_of(std::begin(g_CodeFields), std::end(g_CodeFields), [&](const CodeField& field) {
               return std::strcmp(field.text(a), field.text(b)) == 0;
           });
}

bool SameCodes(const Attribute& a, const Attribute& b)
{
    const CKivDSCodeSequenceAttribute* const codesA = AsCodes(a);
    const CKivDSCodeSequenceAttribute* const codesB = AsCodes(b);
    if (!codesA || !codesB)
        return !codesA && !codesB;
    if (codesA->GetNumberOfCodes() != codesB->GetNumberOfCodes())
        return false;
    for (int i = 0; i < codesA->GetNumberOfCodes(); ++i) {
        if (!SameCode(*codesA->GetCodePtr(i), *codesB->GetCodePtr(i)))
            return false;
    }
    return true;
}

bool SameItems(const Attribute& a, const Attribute& b)
{
    for (int i = 0; i < std::min(NumberOfValues(a), NumberOfValues(b)); ++i) {
        if (a.GetValuePtr(i)->nInSequenceIndex != b.GetValuePtr(i)->nInSequenceIndex)
            return false;
    }
    return true;
}

} // namespace

bool HaveSameDetails(const Attribute& a, const Attribute& b)
{
    // Pixel data is OB or OW as its transfer syntax has it.
    const bool isPixelData = IsPlaceholder(a) && IsPlaceholder(b) && TagOf(a) == kPixelData;
    return (isPixelData || a.GetDicomRepresentation() == b.GetDicomRepresentation()) && SameItems(a, b) &&
           SameCodes(a, b);
}

std::size_t AttributeHash::operator()(const Attribute* attribute) const
{
    auto hash = static_cast<std::size_t>(NumberOfValues(*attribute));
    for (int i = 0; i < NumberOfValues(*attribute); ++i) {
        const SKivAGAttributeValue& value = *attribute->GetValuePtr(i);
        const auto bytes = static_cast<std::size_t>(ReadableCount(value)) *
                           static_cast<std::size_t>(GetElementSize(value.eType));
        hash = hash * 31 + std::hash<std::string_view>()(std::string_view(value.pData, bytes));
    }
    return hash;
}

} // namespace kivds::tool
