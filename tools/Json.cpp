#include "tools/Json.h"

#include "dicom/DicomNames.h"
#include "tools/Numbers.h"
#include "tools/Text.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace kivds::tool {
namespace {

using Json = nlohmann::ordered_json;

class JsonForm
{
public:
    explicit JsonForm(const Collection& collection) : m_Text(collection) {}

    void Print(const Collection& collection, const std::string& indent);

private:
    void PrintAttributes(const char* name, const std::vector<const Attribute*>& attributes,
                         const std::string& indent);
    Json AttributeJson(const Attribute& attribute);
    Json ValueJson(const Attribute& attribute, const SKivAGAttributeValue& value);
    Json CodesJson(const CKivDSCodeSequenceAttribute& codes);

    TextForm m_Text;
};

Json JsonForm::ValueJson(const Attribute& attribute, const SKivAGAttributeValue& value)
{
    const int representation = attribute.GetDicomRepresentation();
    if (value.eType == eAttrChar && IsText(representation))
        return m_Text.Decoder().ToUtf8(TextOf(value), IsLocalizedText(representation));
    Json numbers = Json::array();
    for (int i = 0; i < ReadableCount(value); ++i)
        WithElement(value, i,
                    [&](auto number) { numbers.push_back(number); }); // what is not finite becomes null
    return numbers;
}

Json JsonForm::CodesJson(const CKivDSCodeSequenceAttribute& codes)
{
    Json array = Json::array();
    for (int i = 0; i < codes.GetNumberOfCodes(); ++i) {
        const Code& code = *codes.GetCodePtr(i);
        Json record = Json::object();
        for (const CodeField& field : g_CodeFields) {
            if (*field.text(code))
                record[field.keyword] = m_Text.Decoder().ToUtf8(field.text(code));
        }
        if (code.nContextGroupExtensionFlag != 0)
            record["ContextGroupExtensionFlag"] = code.nContextGroupExtensionFlag;
        array.push_back(std::move(record));
    }
    return array;
}

Json JsonForm::AttributeJson(const Attribute& attribute)
{
    Json json;
    const int representation = attribute.GetDicomRepresentation();
    if (const char* const vr = VrOfRepresentation(representation)) {
        json["vr"] = vr;
    } else { // the library's codes are more than DICOM's representations
        json["vr"] = nullptr;
        json["representation"] = representation;
    }
    Json values = Json::array();
    Json indices = Json::array();
    bool isInSequence = false;
    for (int i = 0; i < NumberOfValues(attribute); ++i) {
        const SKivAGAttributeValue& value = *attribute.GetValuePtr(i);
        values.push_back(ValueJson(attribute, value));
        indices.push_back(value.nInSequenceIndex);
        isInSequence = isInSequence || value.nInSequenceIndex >= 0;
    }
    json["values"] = std::move(values);
    if (isInSequence)
        json["inSequence"] = std::move(indices);
    if (const CKivDSCodeSequenceAttribute* const codes = AsCodes(attribute))
        json["codes"] = CodesJson(*codes);
    for (const auto& [first, last] : FrameRunsOf(attribute))
        json["frames"].push_back({first, last});
    if (attribute.IsPrivate())
        json["private"] = true;
    if (attribute.MustReplicate())
        json["mustReplicate"] = true;
    return json;
}

void JsonForm::PrintAttributes(const char* name, const std::vector<const Attribute*>& attributes,
                               const std::string& indent)
{
    fmt::print("{}  \"{}\": {{", indent, name);
    const char* separator = "\n";
    for (const Attribute* const attribute : attributes) {
        fmt::print("{}{}    \"{:08X}\": {}", separator, indent, TagOf(*attribute),
                   AttributeJson(*attribute).dump());
        separator = ",\n";
    }
    fmt::print("{}{}}}", attributes.empty() ? "" : "\n", attributes.empty() ? "" : indent + "  ");
}

void JsonForm::Print(const Collection& collection, const std::string& indent)
{
    fmt::print("{{\n");
    PrintAttributes("attributes", AttributesOf(collection, Part::SingleFrame), indent);
    if (collection.IsMultiFrame()) {
        fmt::print(",\n");
        PrintAttributes("multiFrameAttributes", AttributesOf(collection, Part::MultiFrame), indent);
    }
    if (collection.IsEnhancedMFCollection()) {
        fmt::print(",\n{}  \"frames\": [", indent);
        const char* separator = "";
        for (const Collection* const frame : FramesOf(collection)) {
            fmt::print("{}", separator);
            Print(*frame, indent + "  ");
            separator = ", ";
        }
        fmt::print("]");
    }
    fmt::print("\n{}}}", indent);
}

} // namespace

void PrintJson(const Collection& collection)
{
    JsonForm(collection).Print(collection, "");
    fmt::print("\n");
}

} // namespace kivds::tool
