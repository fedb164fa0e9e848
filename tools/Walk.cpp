#include "tools/Walk.h"

#include "collection/CKivDSDicomAttributeCollectionIterator.h"
#include "collection/CKivDSEnhancedMFCollection.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kivds::tool {
namespace {

/// The library shows the parts of an enhanced multi-frame collection to derived classes alone.
struct FacadeParts : Collection
{
    static CKivDSEnhancedMFCollection* EnhancedOf(const Collection& collection)
    {
        return collection.*(&FacadeParts::m_pEnhancedMFCollection);
    }
};

struct EnhancedParts : CKivDSEnhancedMFCollection
{
    static std::vector<Collection*>& FramesOf(CKivDSEnhancedMFCollection& enhanced)
    {
        return (enhanced.*(&EnhancedParts::GetCollectionVect))();
    }
};

} // namespace

const CodeField g_CodeFields[9] = {
    {"CodeValue", [](const Code& code) { return &code.szCodeValue[0]; }},
    {"CodingSchemeDesignator", [](const Code& code) { return &code.szCodingSchemeDesignator[0]; }},
    {"CodingSchemeVersion", [](const Code& code) { return &code.szCodingSchemeVersion[0]; }},
    {"CodeMeaning", [](const Code& code) { return &code.szCodeMeaning[0]; }},
    {"ContextIdentifier", [](const Code& code) { return &code.szContextIdentifier[0]; }},
    {"MappingResource", [](const Code& code) { return &code.szMappingResource[0]; }},
    {"ContextGroupVersion", [](const Code& code) { return &code.szContextGroupVersion[0]; }},
    {"ContextGroupLocalVersion", [](const Code& code) { return &code.szContextGroupLocalVersion[0]; }},
    {"ContextGroupExtensionCreatorUID",
     [](const Code& code) { return &code.szContextGroupExtensionCreatorUID[0]; }},
};

std::vector<const Attribute*> AttributesOf(const Collection& collection, Part part)
{
    Collection shared(collection); // the iterator asks for a collection that may change
    std::vector<const Attribute*> attributes;
    const auto walk = [&](bool single, bool multi) {
        CKivDSDicomAttributeCollectionIterator iterator(shared, single, multi);
        for (auto* attribute = iterator.GetFirstAttribute(); attribute;
             attribute = iterator.GetNextAttribute())
            attributes.push_back(attribute);
    };
    if (part != Part::MultiFrame)
        walk(true, false);
    if (part != Part::SingleFrame && shared.IsMultiFrame())
        walk(false, true);
    return attributes;
}

std::vector<const Attribute*> SortedAttributesOf(const Collection& collection)
{
    std::vector<const Attribute*> attributes = AttributesOf(collection);
    std::stable_sort(attributes.begin(), attributes.end(),
                     [](const Attribute* a, const Attribute* b) { return TagOf(*a) < TagOf(*b); });
    return attributes;
}

std::vector<const Collection*> FramesOf(const Collection& collection)
{
    CKivDSEnhancedMFCollection* const enhanced = FacadeParts::EnhancedOf(collection);
    if (!enhanced)
        return {};
    const std::vector<Collection*>& frames = EnhancedParts::FramesOf(*enhanced);
    return {frames.begin(), frames.end()};
}

std::unique_ptr<Collection> RegularOf(const Collection& collection)
{
    if (CKivDSEnhancedMFCollection* const enhanced = FacadeParts::EnhancedOf(collection)) {
        if (std::unique_ptr<Collection> regular{enhanced->GetCollection(false)})
            return regular;
        return std::make_unique<Collection>();
    }
    return std::make_unique<Collection>(collection, false);
}

unsigned long TagOf(const Attribute& attribute)
{
    unsigned long tag = 0;
    attribute.GetTag(&tag);
    return tag;
}

int NumberOfValues(const Attribute& attribute)
{
    int count = 0;
    attribute.GetNumberOfValues(&count);
    return count;
}

bool IsPlaceholder(const Attribute& attribute)
{
    constexpr int kSequence = 16;
    return attribute.IsPrivate() &&
           (attribute.GetDicomRepresentation() == kSequence || TagOf(attribute) == kPixelData);
}

const CKivDSCodeSequenceAttribute* AsCodes(const Attribute& attribute)
{
    // An attribute's type tells its class.
    return attribute.GetType() == 1 ? static_cast<const CKivDSCodeSequenceAttribute*>(&attribute) : nullptr;
}

std::vector<std::pair<int, int>> FrameRunsOf(const Attribute& attribute)
{
    std::vector<std::pair<int, int>> runs;
    const std::unique_ptr<CKivIPPRangeIDC> range(attribute.GetFrameRangeCollection());
    int first = 0, last = 0;
    for (int i = 0; range && range->GetFrameRun(i, &first, &last); ++i)
        runs.emplace_back(first, last);
    return runs;
}

std::string_view TextOf(const SKivAGAttributeValue& value)
{
    if (value.eType != eAttrChar || value.nCount <= 0 || !value.pData)
        return {};
    const std::string_view text(value.pData, static_cast<std::size_t>(value.nCount));
    return text.back() == '\0' ? text.substr(0, text.size() - 1) : text;
}

std::string TextOf(const Collection& collection, unsigned long tag)
{
    const Attribute* attribute = nullptr;
    std::string text;
    if (!collection.GetAttribute(tag, &attribute, true, false))
        return text;
    for (int i = 0; i < NumberOfValues(*attribute); ++i) {
        if (i > 0)
            text += '\\';
        text += TextOf(*attribute->GetValuePtr(i));
    }
    return text;
}

int NumberOf(const Collection& collection, unsigned long tag, int otherwise)
{
    const Attribute* attribute = nullptr;
    if (!collection.GetAttribute(tag, &attribute, true, false))
        return otherwise;
    const SKivAGAttributeValue* const value = attribute->GetValuePtr(0);
    int number = otherwise;
    if (value && value->eType == eAttrInt && value->nCount > 0 && value->pData)
        std::memcpy(&number, value->pData, sizeof number);
    return number;
}

} // namespace kivds::tool
