#include "dicom/internal/ElementValue.h"

#include <dcmtk/dcmdata/dcelem.h>
#include <dcmtk/dcmdata/dcpixel.h>
#include <dcmtk/dcmdata/dcpixseq.h>
#include <dcmtk/dcmdata/dcvr.h>
#include <dcmtk/dcmdata/dcxfer.h>

#include <algorithm>
#include <limits>

namespace kivds {
namespace {

DcmTagKey KeyOf(unsigned long tag)
{
    return {static_cast<Uint16>(tag >> 16), static_cast<Uint16>(tag & 0xFFFF)};
}

} // namespace

unsigned long TagOf(const DcmObject& object)
{
    return (static_cast<unsigned long>(object.getGTag()) << 16) | object.getETag();
}

std::string TagText(unsigned long tag)
{
    const OFString text = KeyOf(tag).toString();
    return {text.data(), text.size()};
}

bool IsOutsideObject(unsigned long tag)
{
    const unsigned long group = tag >> 16;
    return (tag & 0xFFFF) == 0 || group == 0x0002 || group == 0xFFFE;
}

std::vector<DcmItem*> ItemsOf(DcmSequenceOfItems& sequence)
{
    std::vector<DcmItem*> items;
    items.reserve(sequence.card());
    for (DcmObject* object = sequence.nextInContainer(nullptr); object;
         object = sequence.nextInContainer(object)) {
        if (auto* const item = dynamic_cast<DcmItem*>(object))
            items.push_back(item);
    }
    return items;
}

std::vector<DcmElement*> ElementsOf(DcmItem& item)
{
    std::vector<DcmElement*> elements;
    elements.reserve(item.card());
    for (DcmObject* object = item.nextInContainer(nullptr); object; object = item.nextInContainer(object)) {
        if (auto* const element = dynamic_cast<DcmElement*>(object);
            element && !IsOutsideObject(TagOf(*element)))
            elements.push_back(element);
    }
    return elements;
}

DcmElement* FindElement(DcmItem& item, unsigned long tag)
{
    DcmElement* element = nullptr;
    return item.findAndGetElement(KeyOf(tag), element).good() ? element : nullptr;
}

DcmSequenceOfItems* AsSequence(DcmElement& element)
{
    return dynamic_cast<DcmSequenceOfItems*>(&element);
}

const Vr& VrOf(DcmElement& element, bool signedPixels)
{
    if (AsSequence(element))
        return VrOf("SQ");
    if (element.getVR() == EVR_xs)
        return VrOf(signedPixels ? "SS" : "US");
    return VrOf(DcmVR(element.getVR()).getValidVRName());
}

bool HasSignedPixels(DcmItem& item, bool inherited)
{
    Uint16 representation = 0;
    return item.findAndGetUint16(KeyOf(kPixelRepresentation), representation).good() ? representation == 1
                                                                                     : inherited;
}

DcmPixelSequence* FragmentsOf(DcmElement& element)
{
    auto* const pixels = dynamic_cast<DcmPixelData*>(&element);
    if (!pixels)
        return nullptr;
    E_TransferSyntax syntax = EXS_Unknown;
    const DcmRepresentationParameter* parameter = nullptr;
    DcmPixelSequence* fragments = nullptr;
    pixels->getOriginalRepresentationKey(syntax, parameter);
    if (!DcmXfer(syntax).isEncapsulated() ||
        pixels->getEncapsulatedRepresentation(syntax, parameter, fragments).bad())
        return nullptr;
    return fragments;
}

unsigned long MostFramesOf(DcmElement& pixelData)
{
    if (DcmPixelSequence* const fragments = FragmentsOf(pixelData))
        return std::max(fragments->card(), 1UL) - 1;
    return 8UL * pixelData.getLengthField();
}

bool ValueReader::Read(DcmElement& element, std::string& bytes, std::string& error)
{
    const Uint32 length = element.getLengthField(); // getLength may count without the padding
    if (length > static_cast<Uint32>(std::numeric_limits<int>::max() - 1)) {
        error = "its " + std::to_string(length) + " bytes are more than an attribute can hold";
        return false;
    }
    bytes.resize(length);
    return length == 0 || ReadPart(element, 0, length, bytes.data(), error);
}

bool ValueReader::ReadPart(DcmElement& element, Uint32 offset, Uint32 length, char* bytes, std::string& error)
{
    const OFCondition read = element.getPartialValue(bytes, offset, length, &m_Cache, EBO_LittleEndian);
    if (read.bad())
        error = std::string("its value cannot be read: ") + read.text();
    return read.good();
}

std::string ValueReader::ReadText(DcmItem& item, unsigned long tag)
{
    DcmElement* const element = FindElement(item, tag);
    std::string text, ignored;
    if (!element || AsSequence(*element) || !Read(*element, text, ignored))
        return {};
    RemovePadding(text, VrOf("ST"));
    return text;
}

void RemovePadding(std::string& text, const Vr& vr)
{
    const auto isPadding = [](char c) { return c == ' ' || c == '\0'; };
    std::string kept;
    kept.reserve(text.size());
    const auto keepValue = [&](std::string_view value) {
        while (!value.empty() && isPadding(value.back()))
            value.remove_suffix(1);
        if (vr.form == VrForm::Numbers)
            value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        kept += value;
    };
    std::string_view rest = text;
    if (vr.form != VrForm::Text) {
        for (auto end = rest.find('\\'); end != std::string_view::npos; end = rest.find('\\')) {
            keepValue(rest.substr(0, end));
            kept += '\\';
            rest.remove_prefix(end + 1);
        }
    }
    keepValue(rest);
    text.swap(kept);
}

std::vector<std::string_view> SplitValues(std::string_view text)
{
    std::vector<std::string_view> values;
    for (;;) {
        const auto end = text.find('\\');
        values.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return values;
        text.remove_prefix(end + 1);
    }
}

} // namespace kivds
