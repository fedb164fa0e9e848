#include "dicom/DicomNames.h"

#include "dicom/internal/VrTable.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcdicent.h>
#include <dcmtk/dcmdata/dcdict.h>

#include <algorithm>
#include <iterator>

namespace kivds {
namespace {

const Vr g_Vrs[] = {
    {"AE", 0, VrForm::Strings, 1, true, false},    {"AS", 1, VrForm::Ages, 1, true, false},
    {"AT", 2, VrForm::Binary, 2, true, false},     {"CS", 3, VrForm::Strings, 1, true, false},
    {"DA", 4, VrForm::Dates, 1, true, false},      {"DS", 6, VrForm::Numbers, 1, true, false},
    {"DT", 30, VrForm::DateTimes, 1, true, false}, {"FD", 7, VrForm::Binary, 8, true, false},
    {"FL", 8, VrForm::Binary, 4, true, false},     {"IS", 9, VrForm::Numbers, 1, true, false},
    {"LO", 10, VrForm::Strings, 1, true, true},    {"LT", 11, VrForm::Text, 1, true, true},
    {"OB", 27, VrForm::Binary, 1, true, false},    {"OD", 7, VrForm::Binary, 8, false, false},
    {"OF", 8, VrForm::Binary, 4, false, false},    {"OL", 21, VrForm::Binary, 4, false, false},
    {"OV", 13, VrForm::Binary, 1, false, false},   {"OW", 28, VrForm::Binary, 2, true, false},
    {"PN", 26, VrForm::Name, 1, true, true},       {"SH", 14, VrForm::Strings, 1, true, true},
    {"SL", 15, VrForm::Binary, 4, true, false},    {"SQ", 16, VrForm::Sequence, 1, true, false},
    {"SS", 17, VrForm::Binary, 2, true, false},    {"ST", 18, VrForm::Text, 1, true, true},
    {"SV", 13, VrForm::Binary, 1, false, false},   {"TM", 19, VrForm::Times, 1, true, false},
    {"UC", 12, VrForm::Strings, 1, false, true},   {"UI", 20, VrForm::Strings, 1, true, false},
    {"UL", 21, VrForm::Binary, 4, true, false},    {"UN", 23, VrForm::Binary, 1, true, false},
    {"UR", 12, VrForm::Text, 1, false, false},     {"US", 22, VrForm::Binary, 2, true, false},
    {"UT", 12, VrForm::Text, 1, true, true},       {"UV", 13, VrForm::Binary, 1, false, false},
};

} // namespace

const Vr& VrOf(std::string_view name) noexcept
{
    const auto named = [](std::string_view wanted) {
        return std::find_if(std::begin(g_Vrs), std::end(g_Vrs),
                            [&](const Vr& vr) { return vr.name == wanted; });
    };
    const auto* const found = named(name);
    return found != std::end(g_Vrs) ? *found : *named("UN");
}

const Vr* VrOfCode(int code) noexcept
{
    const auto* const found = std::find_if(std::begin(g_Vrs), std::end(g_Vrs),
                                           [&](const Vr& vr) { return vr.isCodesOwn && vr.code == code; });
    return found != std::end(g_Vrs) ? found : nullptr;
}

const char* VrOfRepresentation(int code) noexcept
{
    const Vr* const vr = VrOfCode(code);
    return vr ? vr->name.data() : nullptr;
}

int RepresentationOfVr(std::string_view vr) noexcept
{
    return VrOf(vr).code;
}

bool IsText(int code) noexcept
{
    const Vr* const vr = VrOfCode(code);
    return vr && (vr->form == VrForm::Strings || vr->form == VrForm::Text || vr->form == VrForm::Name);
}

bool IsLocalizedText(int code) noexcept
{
    const Vr* const vr = VrOfCode(code);
    return vr && vr->isLocalized;
}

std::string AttributeKeyword(unsigned long tag, const std::string& privateCreator)
{
    const auto group = static_cast<Uint16>(tag >> 16);
    const auto element = static_cast<Uint16>(tag & 0xFFFF);
    if (group % 2 == 1 && element >= 0x10 && element <= 0xFF)
        return "PrivateCreator";
    std::string keyword;
    const DcmDataDictionary& dictionary = dcmDataDict.rdlock();
    if (const DcmDictEntry* const entry = dictionary.findEntry(
            DcmTagKey(group, element), privateCreator.empty() ? nullptr : privateCreator.c_str()))
        keyword = entry->getTagName();
    dcmDataDict.rdunlock();
    return keyword;
}

} // namespace kivds
