#include "bench/Elements.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kivds::bench {

namespace {

struct Row
{
    unsigned long m_Tag;
    std::string_view m_VR;
    std::string_view m_Text; // a number for US and SS
};

// The elements with a value of a CT slice, but for sequences and pixel data.
constexpr Row rows[] = {
    // clang-format off
    {0x00080005, "CS", "ISO_IR 100"},
    {0x00080008, "CS", "ORIGINAL\\PRIMARY\\AXIAL"},
    {0x00080012, "DA", "20040119"},
    {0x00080013, "TM", "072731"},
    {0x00080014, "UI", "1.2.826.0.1.3680043.10.511.3"},
    {0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.2"},
    {0x00080018, "UI", "1.2.826.0.1.3680043.10.511.1.1.1.1.1.20040119072730.12322"},
    {0x00080020, "DA", "20040119"},
    {0x00080021, "DA", "19970430"},
    {0x00080022, "DA", "19970430"},
    {0x00080023, "DA", "19970430"},
    {0x00080030, "TM", "072730"},
    {0x00080031, "TM", "112749"},
    {0x00080032, "TM", "112936"},
    {0x00080033, "TM", "113008"},
    {0x00080060, "CS", "CT"},
    {0x00080070, "LO", "Manufacturer"},
    {0x00080080, "LO", "Institution"},
    {0x00080201, "SH", "-0500"},
    {0x00081010, "SH", "STATION"},
    {0x00081030, "LO", "Study"},
    {0x00081090, "LO", "Model"},
    {0x00100010, "PN", "Example^Patient"},
    {0x00100020, "LO", "1CT1"},
    {0x00100040, "CS", "O"},
    {0x00101010, "AS", "000Y"},
    {0x00101030, "DS", "0.000000"},
    {0x00180010, "LO", "ISOVUE300/100"},
    {0x00180022, "CS", "HELICAL MODE"},
    {0x00180050, "DS", "5.000000"},
    {0x00180060, "DS", "120"},
    {0x00180088, "DS", "5.000000"},
    {0x00180090, "DS", "480.000000"},
    {0x00181020, "LO", "1.0"},
    {0x00181040, "LO", "IV"},
    {0x00181100, "DS", "338.671600"},
    {0x00181110, "DS", "1099.3100585938"},
    {0x00181111, "DS", "630.000000"},
    {0x00181120, "DS", "0.000000"},
    {0x00181130, "DS", "133.699997"},
    {0x00181150, "IS", "1601"},
    {0x00181151, "IS", "170"},
    {0x00181152, "IS", "170"},
    {0x00181160, "SH", "LARGE BOWTIE FIL"},
    {0x00181190, "DS", "0.700000"},
    {0x00181210, "SH", "STANDARD"},
    {0x00185100, "CS", "FFS"},
    {0x0020000D, "UI", "1.2.826.0.1.3680043.10.511.1.2.1.20040119072730.12322"},
    {0x0020000E, "UI", "1.2.826.0.1.3680043.10.511.1.3.1.1.20040119072730.12322"},
    {0x00200010, "SH", "1CT1"},
    {0x00200011, "IS", "1"},
    {0x00200012, "IS", "2"},
    {0x00200013, "IS", "1"},
    {0x00200032, "DS", "-158.135803\\-179.035797\\-75.699997"},
    {0x00200037, "DS", "1.000000\\0.000000\\0.000000\\0.000000\\1.000000\\0.000000"},
    {0x00200052, "UI", "1.2.826.0.1.3680043.10.511.1.4.1.1.20040119072730.12322"},
    {0x00201040, "LO", "SN"},
    {0x00201041, "DS", "-77.2040634155"},
    {0x00204000, "LT", "Uncompressed"},
    {0x00280002, "US", "1"},
    {0x00280004, "CS", "MONOCHROME2"},
    {0x00280010, "US", "128"},
    {0x00280011, "US", "128"},
    {0x00280030, "DS", "0.661468\\0.661468"},
    {0x00280100, "US", "16"},
    {0x00280101, "US", "16"},
    {0x00280102, "US", "15"},
    {0x00280103, "US", "1"},
    {0x00280120, "SS", "-2000"},
    {0x00281052, "DS", "-1024"},
    {0x00281053, "DS", "1"},
    // clang-format on
};

/// The library's representation codes by value representation.
int CodeOf(std::string_view vr)
{
    constexpr std::string_view names[] = {"AE", "AS", "AT", "CS", "DA", "",   "DS", "FD",
                                          "FL", "IS", "LO", "LT", "UT", "",   "SH", "SL",
                                          "SQ", "SS", "ST", "TM", "UI", "UL", "US"};
    const auto* const name = std::find(std::begin(names), std::end(names), vr);
    return name != std::end(names) ? static_cast<int>(name - names) : 26; // PN
}

/// The bytes of a value field (PS3.5 7.1): numbers little-endian, text as it is.
std::string BytesOf(const Row& row)
{
    if (row.m_VR != "US" && row.m_VR != "SS")
        return std::string(row.m_Text);
    const int number = std::stoi(std::string(row.m_Text));
    return {static_cast<char>(number & 0xFF), static_cast<char>((number >> 8) & 0xFF)};
}

} // namespace

std::vector<Element> CtElements()
{
    std::vector<Element> elements;
    for (const Row& row : rows)
        elements.push_back({row.m_Tag, CodeOf(row.m_VR), BytesOf(row)});
    return elements;
}

std::unique_ptr<CKivDSDicomAttributeCollection> CollectionOf(const std::vector<Element>& elements)
{
    auto collection = std::make_unique<CKivDSDicomAttributeCollection>();
    for (const Element& element : elements)
        collection->AddElement(element.m_Tag, element.m_nCode, static_cast<int>(element.m_Bytes.size()),
                               element.m_Bytes.data());
    return collection;
}

} // namespace kivds::bench
