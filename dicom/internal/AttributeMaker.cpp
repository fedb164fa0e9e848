#include "dicom/internal/AttributeMaker.h"

#include "dicom/internal/ValueSyntax.h"

#include <algorithm>
#include <cstring>

namespace kivds {
namespace {

using Code = tagSKivDSCodeSequenceAttributeInfo;

/// A text in quotes for a message: printable ASCII, not too long.
std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text.substr(0, 40))
        quoted += c >= ' ' && c <= '~' ? c : '.';
    return quoted + (text.size() > 40 ? "...\"" : "\"");
}

int NumberOfValues(const CKivDSDicomAttribute& attribute)
{
    int count = 0;
    attribute.GetNumberOfValues(&count);
    return count;
}

/// An attribute of codes first to last. Halves are joined, since each joining makes the values anew.
std::unique_ptr<CKivDSCodeSequenceAttribute> JoinCodes(unsigned long tag, const Code* first, const Code* last)
{
    if (last - first == 1)
        return std::make_unique<CKivDSCodeSequenceAttribute>(tag, *first);
    const Code* const middle = first + (last - first) / 2;
    auto joined = JoinCodes(tag, first, middle);
    *joined += *JoinCodes(tag, middle, last);
    return joined;
}

} // namespace

AttributeMaker::AttributeMaker(DcmItem& object, std::vector<DicomWarning>& warnings) : m_Warnings(warnings)
{
    const std::string characterSet = m_Reader.ReadText(object, kSpecificCharacterSet);
    m_bChinese = characterSet == "GB18030" || characterSet == "GBK";
}

void AttributeMaker::Warn(unsigned long tag, std::string text)
{
    if (m_Said.emplace(tag, text).second)
        m_Warnings.push_back({tag, std::move(text)});
}

std::unique_ptr<CKivDSDicomAttribute> AttributeMaker::Make(DcmElement& element, bool signedPixels,
                                                           bool mustReplicate, int index)
{
    const unsigned long tag = TagOf(element);
    const Vr& vr = VrOf(element, signedPixels);
    if (DcmSequenceOfItems* const sequence = AsSequence(element)) {
        if (auto codes = MakeCodes(tag, *sequence))
            return codes;
    }
    auto attribute = std::make_unique<CKivDSDicomAttribute>();
    std::string error;
    if (tag == kPixelData || vr.form == VrForm::Sequence) {
        attribute->InitFromDicomData(tag, vr.code, 0, nullptr, nullptr, false, mustReplicate, index, 1);
    } else if (!m_Reader.Read(element, m_Bytes, error)) {
        attribute->InitEmpty(tag, vr.code, mustReplicate);
        Warn(tag, error);
    } else if (IsBinary(vr)) {
        InitFromBinary(*attribute, tag, vr, mustReplicate, index);
    } else {
        InitFromText(*attribute, tag, vr, mustReplicate, index);
    }
    return attribute;
}

void AttributeMaker::InitFromBinary(CKivDSDicomAttribute& attribute, unsigned long tag, const Vr& vr,
                                    bool mustReplicate, int index)
{
    const std::size_t rest = m_Bytes.size() % vr.unit;
    if (rest != 0) {
        Warn(tag, "its " + std::to_string(m_Bytes.size()) + " bytes are not whole elements of " +
                      std::to_string(vr.unit) + " bytes; the last " + std::to_string(rest) + " are not held");
        m_Bytes.resize(m_Bytes.size() - rest);
    }
    if (m_Bytes.empty())
        attribute.InitEmpty(tag, vr.code, mustReplicate);
    else
        attribute.InitFromDicomData(tag, vr.code, static_cast<int>(m_Bytes.size()), m_Bytes.data(), nullptr,
                                    false, mustReplicate, index, 1);
}

void AttributeMaker::InitFromText(CKivDSDicomAttribute& attribute, unsigned long tag, const Vr& vr,
                                  bool mustReplicate, int index)
{
    RemovePadding(m_Bytes, vr);
    if (m_Bytes.find_first_not_of('\\') == std::string::npos) {
        attribute.InitEmpty(tag, vr.code, mustReplicate);
        return;
    }
    const bool isSplitByCount = vr.form == VrForm::Dates || vr.form == VrForm::Times;
    const std::size_t written = m_Bytes.size();
    if (isSplitByCount) // an empty value at the end would be held as zeros
        m_Bytes.erase(m_Bytes.find_last_not_of('\\') + 1);
    const auto separators = std::count(m_Bytes.begin(), m_Bytes.end(), '\\');
    if (isSplitByCount && separators > 0)
        m_Bytes += ' '; // the splitting drops the last byte
    attribute.InitFromDicomData(tag, vr.code, static_cast<int>(m_Bytes.size()), m_Bytes.data(), nullptr,
                                false, mustReplicate, index, static_cast<int>(separators) + 1);
    if (isSplitByCount && separators > 0)
        m_Bytes.pop_back();
    m_Bytes.resize(written, '\\');
    WarnOfLostValues(attribute, tag, vr);
}

void AttributeMaker::WarnOfLostValues(const CKivDSDicomAttribute& attribute, unsigned long tag, const Vr& vr)
{
    if (tag == kSpecificCharacterSet)
        return; // that its first value is empty shows in the others (PS3.3 C.12.1.1.2)
    if (vr.isLocalized && CutsCharacters(m_Bytes, vr.form == VrForm::Name ? "\\^=" : "\\", m_bChinese))
        Warn(tag, "is cut within a character, one byte of which reads as a delimiter");
    const std::vector<std::string_view> values = SplitValues(m_Bytes);
    const auto fault = std::find_if(values.begin(), values.end(),
                                    [&](std::string_view value) { return FaultOf(value, vr) != nullptr; });
    if (fault == values.end())
        return;
    int held = NumberOfValues(attribute);
    if (vr.form == VrForm::Numbers)
        held = held > 0 ? attribute.GetValuePtr(0)->nCount : 0;
    std::string text =
        "value " + std::to_string(fault - values.begin() + 1) + " of " + std::to_string(values.size());
    if (!fault->empty())
        text += ", " + Quoted(*fault) + ",";
    Warn(tag, text + " " + FaultOf(*fault, vr) + "; " + std::to_string(held) + " held");
}

bool AttributeMaker::ReadCode(DcmItem& item, Code& code)
{
    bool fits = true;
    const auto read = [&](unsigned long tag, auto& field) {
        const std::string text = ReadText(item, tag);
        if (text.size() < sizeof(field) && text.find('\0') == std::string::npos)
            std::memcpy(field, text.data(), text.size());
        else
            fits = false;
        return !text.empty();
    };
    const bool hasValue = read(0x00080100, code.szCodeValue);
    const bool hasScheme = read(0x00080102, code.szCodingSchemeDesignator);
    const bool hasMeaning = read(0x00080104, code.szCodeMeaning);
    if (!hasValue || !hasScheme || !hasMeaning)
        return false;
    read(0x00080103, code.szCodingSchemeVersion);
    read(0x0008010F, code.szContextIdentifier);
    read(0x00080105, code.szMappingResource);
    read(0x00080106, code.szContextGroupVersion);
    read(0x00080107, code.szContextGroupLocalVersion);
    read(0x0008010D, code.szContextGroupExtensionCreatorUID);
    code.nContextGroupExtensionFlag = ReadText(item, 0x0008010B) == "Y" ? 1 : 0;
    return fits;
}

std::unique_ptr<CKivDSCodeSequenceAttribute> AttributeMaker::MakeCodes(unsigned long tag,
                                                                       DcmSequenceOfItems& sequence)
{
    std::vector<Code> codes;
    for (DcmItem* const item : ItemsOf(sequence)) {
        if (!ReadCode(*item, codes.emplace_back()))
            return nullptr;
    }
    return codes.empty() ? nullptr : JoinCodes(tag, codes.data(), codes.data() + codes.size());
}

} // namespace kivds
