// The script version list; its streams are in docs/streams.md and tests/streams.md.
#include "tests/support/GoldenStreams.h"
#include "tests/support/Hex.h"
#include "tests/support/Reports.h"

#include "scriptversion/CKivDSScriptVersion.h"

#include <climits>
#include <cstring>
#include <tuple>

namespace kivds::test {
namespace {

const std::wstring kList = L"CKivDSScriptVersion::";

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
    Refused(list.GetVersion(nullptr, lowest, highest), kList + L"GetVersion", L"Invalid modality string");
    EXPECT_EQ(lowest + highest, 154u);
    Refused(list.AddVersion(nullptr, 1), kList + L"AddVersion", L"Invalid modality string");
    char modality[64];
    for (const auto& [index, buffer] : {std::pair(-1, modality), {2, modality}, {0, nullptr}}) {
        lowest = highest = 77;
        Refused(list.GetVersion(index, buffer, lowest, highest), kList + L"GetVersion", L"Invalid index ");
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
    Claim(kList + L"Serialize", L"Invalid serialization stream");
    struct Lying : CKivDSScriptVersion
    {
        int GetSerializationSize() const override { return 13; }
    };
    EXPECT_EQ(Lying().Serialize(buffer), 0);
    Claim(kList + L"Serialize", L"Inconsistent serialization format: serialization aborted ");
}

TEST_F(ScriptVersionTest, ReadingReplacesTheListAndRefusingEmptiesIt)
{
    const std::string stream = AllGoldenStreams().Named("script-versions-2").m_Bytes; // whose total is wrong
    const int length = static_cast<int>(stream.size());
    CKivDSScriptVersion list = List({{"XA", 1}});
    EXPECT_EQ(list.Deserialize(nullptr) + list.Deserialize(nullptr, 9), 0);
    EXPECT_EQ(Show(list), "XA 1-1");
    EXPECT_EQ(list.Deserialize(stream.data()), 7) << "what the stream states";
    EXPECT_EQ(Show(list), "");
    EXPECT_EQ(list.Deserialize(stream.data(), length), length) << "what was read";
    for (const int tooShort : {length - 1, 0, -1, INT_MIN}) {
        list = List({{"XA", 1}});
        EXPECT_EQ(list.Deserialize(stream.data(), tooShort), 0);
        EXPECT_EQ(Show(list), "");
    }
    EXPECT_EQ(ClaimAll(), 6u); // words: tests/streams.md
}

} // namespace
} // namespace kivds::test
