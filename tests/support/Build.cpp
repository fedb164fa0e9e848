#include "tests/support/Build.h"

#include "foundation/internal/ElementTypes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

namespace kivds::test {

AttributePtr Attribute(unsigned long tag, int representation, std::string_view bytes, bool mustReplicate,
                       int inSequenceIndex, int expectedCount)
{
    AttributePtr attribute(g_DicomAttributeFactory.CreateDicomAttribute(0));
    EXPECT_TRUE(attribute->InitFromDicomData(tag, representation, static_cast<int>(bytes.size()),
                                             bytes.data(), nullptr, false, mustReplicate, inSequenceIndex,
                                             expectedCount));
    return attribute;
}

AttributePtr Numbers(unsigned long tag, std::initializer_list<unsigned short> elements, bool mustReplicate)
{
    const std::string_view bytes(reinterpret_cast<const char*>(elements.begin()), elements.size() * 2);
    return Attribute(tag, US, bytes, mustReplicate);
}

AttributePtr PerFrame(unsigned long tag, std::initializer_list<unsigned short> elements)
{
    AttributePtr attribute = Numbers(tag, elements);
    EXPECT_TRUE(attribute->SetMultiFrameInfo(1, static_cast<int>(elements.size())));
    return attribute;
}

tagSKivDSCodeSequenceAttributeInfo Code(std::string_view value, std::string_view scheme,
                                        std::string_view meaning)
{
    tagSKivDSCodeSequenceAttributeInfo info = {};
    value.copy(info.szCodeValue, sizeof info.szCodeValue - 1);
    scheme.copy(info.szCodingSchemeDesignator, sizeof info.szCodingSchemeDesignator - 1);
    meaning.copy(info.szCodeMeaning, sizeof info.szCodeMeaning - 1);
    return info;
}

AttributePtr OfKind(int kind)
{
    int frames[] = {5, 3, 9};
    const auto info = Code("1", "DCM", "A meaning that is longer");
    AttributePtr made = kind == 0   ? Attribute(kKindTag, OB, std::string(100, 'y'), false, 3)
                        : kind == 1 ? Attribute(kKindTag, CS, "B\\another text that is longer\\C", true, -1)
                        : kind <= 3 ? Attribute(kKindTag, CS, "A\\B\\a text that is longer")
                        : kind == 4 ? Numbers(kKindTag, {1, 2, 3})
                        : kind == 5 ? std::make_unique<CKivDSDicomAttribute>(true, true)
                        : kind == 6 ? Attribute(kKindTag, SQ, "")
                                    : std::make_unique<CKivDSCodeSequenceAttribute>(kKindTag, info);
    if (kind == 8)
        static_cast<CKivDSCodeSequenceAttribute&>(*made) +=
            CKivDSCodeSequenceAttribute(kKindTag, Code("2", "DCM", "Left"));
    if (kind == 3 || kind == 4)
        made->SetMultiFrameInfo(3, frames);
    return made;
}

void Add(CKivDSDicomAttributeCollection& collection, AttributePtr attribute, bool merge)
{
    ASSERT_TRUE(collection.AddAttribute(attribute.get(), merge));
    (void)attribute.release(); // the collection's now
}

CollectionPtr Collection(std::initializer_list<std::pair<unsigned long, unsigned short>> attributes)
{
    auto collection = std::make_unique<CKivDSDicomAttributeCollection>();
    for (const auto& [tag, element] : attributes)
        Add(*collection, Numbers(tag, {element}));
    return collection;
}

std::string Text(const CKivDSDicomAttribute& attribute)
{
    std::ostringstream text;
    const char* separator = "";
    for (int i = 0; const SKivAGAttributeValue* value = attribute.GetValuePtr(i); ++i) {
        text << separator << '[';
        separator = " ";
        WithNumericType(
            value->eType,
            [&](auto* scalar) {
                scalar = reinterpret_cast<decltype(scalar)>(value->pData);
                for (int k = 0; k < value->nCount; ++k)
                    text << (k > 0 ? " " : "") << scalar[k];
            },
            [&] { text << std::string(value->pData, static_cast<std::size_t>(value->nCount)).c_str(); });
        text << ']';
    }
    return text.str();
}

std::string Text(CKivDSDicomAttributeCollection& collection)
{
    std::string text;
    CKivDSDicomAttributeCollectionIterator iterator(collection, true, true);
    for (auto* attribute = iterator.GetFirstAttribute(); attribute; attribute = iterator.GetNextAttribute()) {
        unsigned long tag = 0;
        attribute->GetTag(&tag);
        char name[24];
        std::snprintf(name, sizeof name, "(%04lx,%04lx)%s=", tag >> 16, tag & 0xFFFF,
                      attribute->IsMultiFrame() ? "/mf" : "");
        text += (text.empty() ? "" : " ") + (name + Text(*attribute));
    }
    return text;
}

namespace {

template <class Object>
std::string StreamOf(Object& object)
{
    int size = -1;
    EXPECT_TRUE(object.Serialize(nullptr, size));
    std::string stream(static_cast<std::size_t>(size), '?');
    int written = -1;
    EXPECT_TRUE(object.Serialize(stream.data(), written));
    EXPECT_EQ(written, size);
    return stream;
}

} // namespace

std::string Stream(const CKivDSDicomAttribute& attribute)
{
    return StreamOf(attribute);
}

std::string Stream(CKivDSDicomAttributeCollection& collection)
{
    return StreamOf(collection);
}

std::string Stream(const CKivDSBaseDicomAttributeCollection& part)
{
    return StreamOf(part);
}

} // namespace kivds::test
