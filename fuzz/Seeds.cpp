#include "fuzz/Seeds.h"

#include "KivDSDataU.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace kivds::fuzz {

namespace {

using Facade = CKivDSDicomAttributeCollection;
using AttributePtr = std::unique_ptr<CKivDSDicomAttribute>;

// The bytes with which the harnesses choose a form.
const std::string kVersion7("\0", 1);
const std::string kVersion0("\1", 1);
const std::string kNo("\0", 1);
const std::string kYes("\1", 1);

std::string Int(int number)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(static_cast<unsigned int>(number) >> (8 * i));
    return bytes;
}

template <class Object>
std::string Stream(Object& object)
{
    int size = 0;
    object.Serialize(nullptr, size);
    std::string stream(static_cast<std::size_t>(size), '\0');
    object.Serialize(stream.data(), size);
    return stream;
}

std::string Repeated(std::string_view bytes, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += bytes;
    return all;
}

AttributePtr Element(unsigned long tag, int representation, std::string_view bytes)
{
    auto attribute = std::make_unique<CKivDSDicomAttribute>();
    attribute->InitFromDicomData(tag, representation, static_cast<int>(bytes.size()), bytes.data(), nullptr,
                                 false, false, 0, 1);
    return attribute;
}

AttributePtr Codes()
{
    tagSKivDSCodeSequenceAttributeInfo info = {"T-04000", "SRT",      "", "Breast", "4031",
                                               "DCMR",    "20020904", 1,  "",       "1.2"};
    auto codes = std::make_unique<CKivDSCodeSequenceAttribute>(0x00082218, info);
    *codes += CKivDSCodeSequenceAttribute(0x00082218, info);
    return codes;
}

AttributePtr PerFrame()
{
    AttributePtr attribute = Element(0x00181063, 22, std::string_view("\1\0\2\0\3\0", 6));
    attribute->SetMultiFrameInfo(1, 3);
    return attribute;
}

void Add(Facade& collection, AttributePtr attribute)
{
    if (collection.AddAttribute(attribute.get(), true))
        (void)attribute.release(); // the collection's now
}

std::unique_ptr<Facade> Collection(bool multi)
{
    auto collection = std::make_unique<Facade>();
    Add(*collection, Element(0x00080060, 3, "CT"));
    Add(*collection, Element(0x00280008, 9, "3"));
    Add(*collection, Codes());
    if (multi)
        Add(*collection, PerFrame());
    return collection;
}

/// An enhanced multi-frame collection of two frames.
CKivDSEnhancedMFCollection* Enhanced()
{
    auto* const enhanced = new CKivDSEnhancedMFCollection;
    enhanced->AddCollection(Collection(true).get(), true);
    for (const char* position : {"0\\0\\-5", "0\\0\\5"}) {
        Facade frame;
        Add(frame, Element(0x00200032, 6, position));
        enhanced->AddMFCollection(&frame, true);
    }
    return enhanced;
}

/// An old part of empty attributes: no version, no total, no types, and no lengths in the attributes.
std::string OldPart(int count, bool versioned)
{
    std::string part = Int(count);
    for (int i = 0; i < count; ++i)
        part += Int(i) + Int(3) + std::string(2, '\0') + Int(0) + std::string(versioned ? 1 : 0, '\0');
    return part;
}

SInputs AttributeStreams()
{
    SInputs inputs;
    const AttributePtr attributes[] = {Element(0x00100010, 26, "Yamada^Tarou=Ymd"),
                                       Element(0x00280030, 6, "0.5\\0.25"), Element(0x7FE00010, 28, ""),
                                       PerFrame()};
    for (const AttributePtr& attribute : attributes) {
        const std::string stream = Stream(*attribute);
        inputs.m_Seeds.push_back(kVersion7 + kYes + stream);
        inputs.m_Seeds.push_back(kVersion0 + kNo + stream.substr(4));
    }

    std::vector<int> frames;
    for (int i = 0; i < 10000; ++i)
        frames.push_back(2 * ((i * 7919) % 10000)); // runs of one frame, in no order
    CKivDSDicomAttribute attribute;
    attribute.SetMultiFrameInfo(static_cast<int>(frames.size()), frames.data());
    inputs.m_Dense.push_back(kVersion7 + kYes + Stream(attribute));
    const std::string emptyValue = Int(1) + Int(0) + Int(0);
    inputs.m_Dense.push_back(kVersion0 + kNo + Int(0) + Int(0) + std::string(2, '\0') + Int(10000) +
                             Repeated(emptyValue, 10000));
    return inputs;
}

SInputs CodeSequenceStreams()
{
    // The dense one has neither the base's length nor its multi-frame part, and codes without texts.
    const std::string base = Int(0x00082218) + Int(3) + std::string(2, '\0') + Int(0);
    const std::string codes = Int(2000) + std::string(2000 * 40, '\0');
    const int total = static_cast<int>(4 + base.size() + codes.size());
    const auto fill = [](auto& field) { std::fill_n(field, sizeof field - 1, 'x'); };
    tagSKivDSCodeSequenceAttributeInfo longest = {};
    fill(longest.szCodeValue);
    fill(longest.szCodingSchemeDesignator);
    fill(longest.szCodingSchemeVersion);
    fill(longest.szCodeMeaning);
    fill(longest.szContextIdentifier);
    fill(longest.szMappingResource);
    fill(longest.szContextGroupVersion);
    fill(longest.szContextGroupLocalVersion);
    fill(longest.szContextGroupExtensionCreatorUID);
    const CKivDSCodeSequenceAttribute full(0x00082218, longest);
    const std::string fits = Stream(full);
    std::string tooLong = fits;
    tooLong.replace(tooLong.find(Int(32)), 4, Int(33) + "x");
    return {{kYes + kYes + kNo + Stream(*Codes()), kYes + kYes + kYes + fits, kYes + kYes + kYes + tooLong},
            {kNo + kNo + kNo + Int(total) + base + codes}};
}

SInputs CollectionStreams()
{
    SInputs inputs;
    for (const bool multi : {false, true})
        inputs.m_Seeds.push_back(kYes + kNo + Stream(*Collection(multi)));
    Facade enhanced(Enhanced());
    inputs.m_Seeds.push_back(kYes + kNo + Stream(enhanced));
    // A part, and the collection's total behind it.
    inputs.m_Seeds.push_back(kYes + kYes + Stream(*Collection(false)).substr(2));
    inputs.m_Seeds.push_back(kNo + kNo + OldPart(3, false));
    inputs.m_Seeds.push_back(kYes + kNo + kYes + OldPart(2, true) + OldPart(2, true));
    inputs.m_Dense.push_back(kNo + kYes + OldPart(10000, false));
    return inputs;
}

SInputs EnhancedStreams()
{
    const std::unique_ptr<CKivDSEnhancedMFCollection> enhanced(Enhanced());
    const std::string emptyFrame = kNo + Int(0); // the old form of a collection with an empty part
    const std::string nestedFrame = "\7\2" + emptyFrame + Int(0) + Int(0) + Int(0);
    SInputs inputs;
    inputs.m_Seeds = {kYes + Stream(*enhanced),
                      kNo + OldPart(1, false) + Int(2) + OldPart(1, false) + OldPart(0, false) + Int(0),
                      kYes + emptyFrame + Int(2) + emptyFrame + nestedFrame + Int(0)};
    const std::string smallFrame = kNo + OldPart(1, true);
    const auto enhancedOf = [&](const std::string& frame, int count) {
        return emptyFrame + Int(count) + Repeated(frame, count) + Int(0);
    };
    // Of small frames, of as many as are allowed and of more; of nested ones, each of as many.
    for (const int count : {400, 2000}) {
        for (const std::string& frame : {emptyFrame, smallFrame, nestedFrame})
            inputs.m_Dense.push_back(kYes + enhancedOf(frame, count));
    }
    inputs.m_Dense.push_back(kYes + enhancedOf("\7\2" + enhancedOf(emptyFrame, 350) + Int(0), 100));
    return inputs;
}

SInputs ScriptVersionStreams()
{
    CKivDSScriptVersion versions;
    versions.AddVersion("CT", 3);
    versions.AddVersion("CT", 9);
    versions.AddVersion("MR", 4);
    std::string stream(static_cast<std::size_t>(versions.GetSerializationSize()), '\0');
    versions.Serialize(stream.data());
    std::string dense = Int(5000);
    for (int i = 0; i < 5000; ++i)
        dense += Int(1) + Int(2) + Int(2) + static_cast<char>(1 + i % 200) + static_cast<char>(1 + i / 200);
    const auto ofLength = [](int length) {
        return Int(1) + Int(1) + Int(2) + Int(length) + std::string(static_cast<std::size_t>(length), 'x');
    };
    return {{stream, stream.substr(4, stream.size() - 8), ofLength(64), ofLength(65)}, {dense}};
}

SInputs Elements()
{
    const std::multimap<int, std::string> elements = {{0, "STORE_SCP"},
                                                      {1, "045Y"},
                                                      {2, std::string("\x08\0\x60\0", 4)},
                                                      {3, "ORIGINAL\\PRIMARY"},
                                                      {4, "20240229"},
                                                      {4, "2024.02.29"},
                                                      {4, "20240101\\20240202 "},
                                                      {6, " 1.5\\-2.25e1"},
                                                      {6, "0x1p3\\inf"},
                                                      {7, std::string(16, '\1')},
                                                      {8, std::string(8, '\2')},
                                                      {9, "-3\\12\\99999999999"},
                                                      {10, "a\\\\b\\"},
                                                      {11, "text"},
                                                      {14, "SH "},
                                                      {15, "1234"},
                                                      {16, ""},
                                                      {17, "12"},
                                                      {19, "101530.25"},
                                                      {19, "10:15:30.250"},
                                                      {19, "1015\\10 "},
                                                      {20, "1.2.840.10008.1.1"},
                                                      {22, std::string("\0\2", 2)},
                                                      {23, "?"},
                                                      {26, "Yamada^Tarou=Ymd^Tr\\Doe^Jane"},
                                                      {26, "^^^"},
                                                      {27, std::string(20, '\xFF')},
                                                      {28, std::string(20, '\x80')},
                                                      {30, "20240229101530.125-0330"},
                                                      {30, "2024"}};
    SInputs inputs;
    for (const auto& [representation, bytes] : elements) {
        for (const char expectedCount : {'\1', '\2'})
            inputs.m_Seeds.push_back(
                std::string({static_cast<char>(representation + 2), expectedCount, '\1', '\x20'}) + bytes);
    }
    return inputs;
}

SInputs Programs()
{
    const auto step = [](std::initializer_list<int> numbers) {
        std::string bytes;
        for (const int number : numbers)
            bytes += static_cast<char>(number);
        return bytes;
    };
    // Adds an element, under one of the few tags that programs use, to a collection; perhaps with frames 1
    // to 3.
    const auto add = [&](int collection, int tag, int representation, const std::string& bytes, bool frames) {
        return step({0, collection, 1, tag, 0, 0, representation + 2, 1, 1, static_cast<int>(bytes.size())}) +
               bytes + (frames ? step({1, 3}) : step({0}));
    };
    // Two collections that agree at one tag, differ at others, and hold some that the other does not: among
    // them a sequence's placeholder, which is private, and values for each frame.
    std::string two;
    for (const int collection : {0, 1}) {
        two += add(collection, 0, 3, "CT", false) +
               add(collection, 3, 9, collection == 0 ? "3" : "4", false) +
               add(collection, 4 + collection, 16, "", false) +
               add(collection, 1 + collection, 22, "aabbcc", true) +
               add(collection, 6, collection == 0 ? 22 : 16, "aa", false);
    }
    SInputs inputs;
    for (int how = 0; how < 9; ++how)
        inputs.m_Seeds.push_back(two + step({2, how, 0, 1}));
    for (int what = 4; what < 16; ++what)
        inputs.m_Seeds.push_back(two + step({what, 0, 1, 1, 2, 0, 1, 1, 0, 1, 2, 0}));
    std::mt19937 random(1); // the same programs every time
    for (int i = 0; i < 32; ++i) {
        std::string program;
        for (int k = 0; k < 160; ++k)
            program += static_cast<char>(random() % (k % 3 == 0 ? 256 : 16));
        inputs.m_Seeds.push_back(program);
    }
    return inputs;
}

} // namespace

std::map<std::string, SInputs> MakeInputs()
{
    return {
        {"AttributeStream", AttributeStreams()},
        {"CodeSequenceStream", CodeSequenceStreams()},
        {"CollectionStream", CollectionStreams()},
        {"EnhancedStream", EnhancedStreams()},
        {"ScriptVersionStream", ScriptVersionStreams()},
        {"ElementBytes", Elements()},
        {"PublicInterface", Programs()},
    };
}

} // namespace kivds::fuzz
