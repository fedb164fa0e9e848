// The script version list and its stream; hostile streams are in CollectionStreamTest.cpp, too.
#include "tests/support/Attributes.h"
#include "tests/support/Hex.h"

#include "scriptversion/CKivDSScriptVersion.h"

#include <climits>
#include <cstring>
#include <tuple>

namespace kivds::test {
namespace {

constexpr const wchar_t* kInvalidStream = L"Invalid deserialization stream";

// Version -1; one entry: 3 to 9, CT; total, 26.
constexpr const char* kCtStream = "FFFFFFFF 01000000 03000000 09000000 02000000 4354 1A000000";

class ScriptVersionTest : public ReportTest
{
protected:
    /// "CT 3-9, MR 1-1"
    static std::string Show(const CKivDSScriptVersion& list)
    {
        std::string text;
        for (int i = 0; i < list.GetNumberOfModalities(); ++i) {
            char modality[64];
            unsigned int lowest = 0, highest = 0;
            EXPECT_TRUE(list.GetVersion(i, modality, lowest, highest));
            text += (i > 0 ? ", " : "") + std::string(modality) + " " + std::to_string(lowest) + "-" +
                    std::to_string(highest);
        }
        return text;
    }

    static CKivDSScriptVersion List(std::initializer_list<std::pair<const char*, unsigned int>> versions)
    {
        CKivDSScriptVersion list;
        for (const auto& [modality, version] : versions)
            EXPECT_TRUE(list.AddVersion(modality, version));
        return list;
    }

    /// Bounded, from a block of exact size.
    static int Read(CKivDSScriptVersion& list, std::string_view bytes)
    {
        const Exact exact(bytes);
        return list.Deserialize(exact.Data(), exact.Size());
    }
};

TEST_F(ScriptVersionTest, RangesWidenAndModalitiesAreOrderedByByte)
{
    EXPECT_EQ(Show(List({{"CT", 5}, {"CT", 3}, {"CT", 9}, {"CT", 4}})), "CT 3-9");
    EXPECT_EQ(Show(List({{"US", 1}, {"CTA", 2}, {"ct", 3}, {"CT", 0xFFFFFFFF}, {"", 7}, {"CT", 0x80000000}})),
              " 7-7, CT 2147483648-4294967295, CTA 2-2, US 1-1, ct 3-3");
    CKivDSScriptVersion list = List({{"CT", 3}, {"MR", 1}});
    unsigned int lowest = 77, highest = 77;
    EXPECT_TRUE(list.GetVersion("CT", lowest, highest));
    EXPECT_EQ(lowest + highest, 6u);
    EXPECT_FALSE(list.GetVersion("XA", lowest, highest));
    EXPECT_EQ(lowest + highest, 0u);
    EXPECT_TRUE(NothingReported());
    lowest = highest = 77;
    EXPECT_FALSE(list.GetVersion(nullptr, lowest, highest));
    Claim(L"CKivDSScriptVersion::GetVersion", L"Invalid modality string");
    EXPECT_EQ(lowest + highest, 154u);
    EXPECT_FALSE(list.AddVersion(nullptr, 1));
    Claim(L"CKivDSScriptVersion::AddVersion", L"Invalid modality string");
    char modality[64];
    for (const auto& [index, buffer] : {std::pair(-1, modality), {2, modality}, {0, nullptr}}) {
        lowest = highest = 77;
        EXPECT_FALSE(list.GetVersion(index, buffer, lowest, highest));
        Claim(L"CKivDSScriptVersion::GetVersion", L"Invalid index ");
        EXPECT_EQ(lowest + highest, 0u);
    }
    char room[65];
    std::memset(room, '?', sizeof room);
    const std::string modalityOf70(70, 'A');
    EXPECT_TRUE(List({{modalityOf70.c_str(), 1}}).GetVersion(0, room, lowest, highest));
    EXPECT_EQ(std::string(room, 65), std::string(63, 'A') + '\0' + '?');
}

TEST_F(ScriptVersionTest, ListsAreCopiedAndComparedWhole)
{
    const CKivDSScriptVersion list = List({{"CT", 3}, {"MR", 1}});
    CKivDSScriptVersion copy(list), other = List({{"US", 1}});
    other = copy;
    const CKivDSScriptVersion& itself = other;
    other = itself;
    EXPECT_TRUE(copy.AddVersion("CT", 4));
    EXPECT_EQ(Show(other), "CT 3-3, MR 1-1");
    EXPECT_TRUE(other == list && list == list && List({}) == List({}));
    EXPECT_TRUE(List({{"MR", 1}, {"CT", 3}}) == list);
    for (const CKivDSScriptVersion& different : {copy, List({{"CT", 3}}), List({{"CT", 3}, {"MS", 1}})})
        EXPECT_TRUE(different != list && !(different == list));
}

TEST_F(ScriptVersionTest, WhatCannotBeWrittenIsReported)
{
    char buffer[64];
    EXPECT_EQ(List({}).Serialize(buffer), 12);
    EXPECT_EQ(Hex({buffer, 12}), Hex(Bytes("FFFFFFFF 00000000 0C000000")));
    EXPECT_EQ(List({}).Serialize(nullptr), 0);
    Claim(L"CKivDSScriptVersion::Serialize", L"Invalid serialization stream");
    struct Lying : CKivDSScriptVersion
    {
        int GetSerializationSize() const override { return 13; }
    };
    EXPECT_EQ(Lying().Serialize(buffer), 0);
    Claim(L"CKivDSScriptVersion::Serialize", L"Inconsistent serialization format: serialization aborted ");
}

TEST_F(ScriptVersionTest, CurrentAndOldStreamsAreRead)
{
    const std::string longest(64, '5'); // as hexadecimal digits, 32 times U
    const std::tuple<std::string, int, std::string> cases[] = {
        // the stream; the result of the unbounded form, what a stream states (bounded: the bytes read)
        {kCtStream, 26, "CT 3-9"},
        {"FEFFFFFF 00000000 07000000", 7, ""}, // another version, a total that is wrong
        {"FFFFFFFF FFFFFFFF FBFFFFFF", -5, ""},
        {"00000000", 4, ""},
        {"02000000 03000000 09000000 02000000 4354 05000000 04000000 02000000 4354", 32, "CT 5-4"},
        {"01000000 03000000 09000000 04000000 43005441", 20, "C 3-9"},
        {"01000000 03000000 09000000 00000000", 16, " 3-9"},
        {"01000000 01000000 01000000 40000000" + longest + longest, 80, std::string(63, 'U') + " 1-1"},
    };
    for (const auto& [hex, stated, expected] : cases) {
        SCOPED_TRACE(hex);
        const std::string bytes = Bytes(hex);
        for (const bool bounded : {true, false}) {
            CKivDSScriptVersion list = List({{"XA", 1}});
            EXPECT_EQ(bounded ? Read(list, bytes) : list.Deserialize(bytes.data()),
                      bounded ? static_cast<int>(bytes.size()) : stated);
            EXPECT_EQ(Show(list), expected);
        }
    }
}

TEST_F(ScriptVersionTest, MalformedStreamsLeaveAnEmptyList)
{
    const auto expectRefused = [this](std::string_view bytes, bool bounded) {
        CKivDSScriptVersion list = List({{"XA", 1}});
        EXPECT_EQ(bounded ? Read(list, bytes) : list.Deserialize(bytes.data()), 0);
        Claim(L"CKivDSScriptVersion::Deserialize", kInvalidStream);
        EXPECT_EQ(list.GetNumberOfModalities(), 0);
    };
    for (const char* const length : {"41000000", "FFFFFFFF", "00000080", "FFFFFF7F"}) {
        for (const bool bounded : {true, false})
            expectRefused(Bytes("01000000 01000000 01000000") + Bytes(length) + std::string(80, 'U'),
                          bounded);
    }
    const std::string stream = Bytes(kCtStream);
    for (std::size_t length = 0; length < stream.size(); ++length)
        expectRefused(stream.substr(0, length), true);
    CKivDSScriptVersion kept = List({{"XA", 1}});
    EXPECT_EQ(kept.Deserialize(nullptr) + kept.Deserialize(nullptr, 9), 0);
    EXPECT_EQ(Show(kept), "XA 1-1");
    EXPECT_EQ(kept.Deserialize(stream.data(), -1) + kept.Deserialize(stream.data(), INT_MIN), 0);
    for (int i = 0; i < 4; ++i)
        Claim(L"CKivDSScriptVersion::Deserialize", kInvalidStream);
}

} // namespace
} // namespace kivds::test
