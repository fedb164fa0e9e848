#include "fuzz/Seeds.h"

#include "KivDSDataU.h"
#include "tests/support/Examples.h"
#include "tests/support/GoldenStreams.h"
#include "tests/support/Hex.h"

#include <initializer_list>
#include <random>

namespace kivds::fuzz {

namespace {

using test::Int;
using test::StreamKind;

std::string Bytes(std::initializer_list<int> numbers)
{
    std::string bytes;
    for (const int number : numbers)
        bytes += static_cast<char>(number);
    return bytes;
}

std::string Repeated(std::string_view bytes, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += bytes;
    return all;
}

/// Adds the golden streams to the seeds of their harnesses, behind the bytes with which a harness chooses a
/// form.
void AddGoldenStreams(std::map<std::string, SInputs>& inputs)
{
    for (const auto& [name, stream, current, kind, form] : test::AllGoldenStreams().m_Streams) {
        const int old = form.m_nVersion == 0, versioned = form.m_bVersioned;
        if (kind == StreamKind::Attribute)
            inputs["AttributeStream"].m_Seeds.push_back(Bytes({old, versioned}) + stream);
        else if (kind == StreamKind::CodeSequence)
            inputs["CodeSequenceStream"].m_Seeds.push_back(Bytes({!old, versioned, 0}) + stream);
        else if (kind == StreamKind::Part || kind == StreamKind::Collection)
            inputs["CollectionStream"].m_Seeds.push_back(Bytes({versioned, kind == StreamKind::Part}) +
                                                         stream);
        else if (kind == StreamKind::Enhanced)
            inputs["EnhancedStream"].m_Seeds.push_back(Bytes({versioned}) + stream);
        else if (kind == StreamKind::ScriptVersions)
            inputs["ScriptVersionStream"].m_Seeds.push_back(stream);
    }
}

/// An old part of empty attributes: no version, no total, no types, and no lengths in the attributes.
std::string OldPart(int count, bool versioned)
{
    std::string part = Int(count);
    for (int i = 0; i < count; ++i)
        part += Int(i) + Int(3) + std::string(2, '\0') + Int(0) + std::string(versioned ? 1 : 0, '\0');
    return part;
}

void AddDenseStreams(std::map<std::string, SInputs>& inputs)
{
    CKivDSDicomAttribute attribute; // with runs of one frame, in no order
    std::vector<int> frames;
    for (int i = 0; i < 10000; ++i)
        frames.push_back(2 * ((i * 7919) % 10000));
    attribute.SetMultiFrameInfo(static_cast<int>(frames.size()), frames.data());
    int size = 0;
    std::string stream(1 << 17, '\0');
    attribute.Serialize(stream.data(), size);
    stream.resize(static_cast<std::size_t>(size));
    const std::string emptyValues = Repeated(Int(1) + Int(0) + Int(0), 10000);
    const std::string tag = Int(0) + Int(0) + std::string(2, '\0');
    inputs["AttributeStream"].m_Dense = {Bytes({0, 1}) + stream,
                                         Bytes({1, 0}) + tag + Int(10000) + emptyValues};

    // Neither the base's length nor its multi-frame part, and codes without texts.
    const std::string codes = tag + Int(0) + Int(2000) + std::string(2000 * 40, '\0');
    inputs["CodeSequenceStream"].m_Dense = {Bytes({0, 0, 0}) + Int(static_cast<int>(codes.size()) + 4) +
                                            codes};
    inputs["CollectionStream"].m_Dense = {Bytes({0, 1}) + OldPart(10000, false)};

    const std::string emptyFrame = Bytes({0}) + Int(0); // the old form of a collection with an empty part
    const auto enhancedOf = [&](const std::string& frame, int count) {
        return emptyFrame + Int(count) + Repeated(frame, count) + Int(0);
    };
    // Small frames, as many as are allowed and more; nested ones, each of as many.
    for (const int count : {400, 2000}) {
        for (const std::string& frame :
             {emptyFrame, Bytes({0}) + OldPart(1, true), "\7\2" + enhancedOf(emptyFrame, 0) + Int(0)})
            inputs["EnhancedStream"].m_Dense.push_back(Bytes({1}) + enhancedOf(frame, count));
    }
    inputs["EnhancedStream"].m_Dense.push_back(
        Bytes({1}) + enhancedOf("\7\2" + enhancedOf(emptyFrame, 350) + Int(0), 100));

    std::string versions = Int(5000);
    for (int i = 0; i < 5000; ++i)
        versions += Int(1) + Int(2) + Int(2) + Bytes({1 + i % 200, 1 + i / 200});
    inputs["ScriptVersionStream"].m_Dense = {versions};
}

/// The elements of docs/attributes.md.
SInputs Elements()
{
    SInputs inputs;
    const auto add = [&](const std::string& representation, const std::string& bytes) {
        for (const int expectedCount : {1, 2})
            inputs.m_Seeds.push_back(Bytes({test::CodeOf(representation) + 2, expectedCount, 1, ' '}) +
                                     bytes);
    };
    for (const auto& cells : test::ExampleCells("conversions"))
        add(cells[0], cells[2]);
    for (const auto& cells : test::ExampleCells("rendering"))
        add(cells[0], test::Bytes(cells[1]));
    return inputs;
}

SInputs Programs()
{
    // Adds an element, under one of the few tags that programs use, to a collection; perhaps with frames 1
    // to 3.
    const auto add = [&](int collection, int tag, int representation, const std::string& bytes, bool frames) {
        return Bytes(
                   {0, collection, 1, tag, 0, 0, representation + 2, 1, 1, static_cast<int>(bytes.size())}) +
               bytes + (frames ? Bytes({1, 3}) : Bytes({0}));
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
        inputs.m_Seeds.push_back(two + Bytes({2, how, 0, 1}));
    for (int what = 4; what < 16; ++what)
        inputs.m_Seeds.push_back(two + Bytes({what, 0, 1, 1, 2, 0, 1, 1, 0, 1, 2, 0}));
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
    std::map<std::string, SInputs> inputs = {{"ElementBytes", Elements()}, {"PublicInterface", Programs()}};
    AddGoldenStreams(inputs);
    AddDenseStreams(inputs);
    return inputs;
}

} // namespace kivds::fuzz
