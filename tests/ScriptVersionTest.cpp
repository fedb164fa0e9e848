// The script version list and its stream.
#include "tests/support/FailingNew.h"
#include "tests/support/Hex.h"
#include "tests/support/Reports.h"

#include "scriptversion/CKivDSScriptVersion.h"

#include <climits>
#include <cstring>
#include <memory>

namespace kivds::test {
namespace {

constexpr const wchar_t* kInvalidStream = L"Invalid deserialization stream";

constexpr const char* kCtStream = R"(
    FFFFFFFF    // version marker, -1
    01000000    // one entry
    03000000    //   lowest version 3
    09000000    //   highest version 9
    02000000    //   2 bytes of modality
    43 54       //   CT
    1A000000    // total, 26)";

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
        const auto exact = std::make_unique<char[]>(bytes.size());
        bytes.copy(exact.get(), bytes.size());
        return list.Deserialize(exact.get(), static_cast<int>(bytes.size()));
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

TEST_F(ScriptVersionTest, TheStreamIsTheseBytes)
{
    char buffer[64];
    EXPECT_EQ(List({}).Serialize(buffer), 12);
    EXPECT_EQ(Hex({buffer, 12}), Hex(Bytes("FFFFFFFF 00000000 0C000000")));
    const CKivDSScriptVersion list = List({{"CT", 3}, {"CT", 9}});
    EXPECT_EQ(list.GetSerializationSize(), 26);
    EXPECT_EQ(list.Serialize(buffer), 26);
    EXPECT_EQ(Hex({buffer, 26}), Hex(Bytes(kCtStream)));
    EXPECT_EQ(list.Serialize(nullptr), 0);
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
    struct Case
    {
        std::string hex;
        int result; // of the unbounded form: what a stream states; bounded, the bytes read
        std::string expected;
    };
    const Case cases[] = {
        {kCtStream, 26, "CT 3-9"},
        {"FEFFFFFF 00000000 07000000", 7, ""}, // another version, a total that is wrong
        {"FFFFFFFF FFFFFFFF FBFFFFFF", -5, ""},
        {"00000000", 4, ""},
        {"01000000 03000000 09000000 02000000 4354", 18, "CT 3-9"},
        {"02000000 03000000 09000000 02000000 4354 05000000 04000000 02000000 4354", 32, "CT 5-4"},
        {"01000000 03000000 09000000 04000000 43005441", 20, "C 3-9"},
        {"01000000 03000000 09000000 00000000", 16, " 3-9"},
        {"01000000 01000000 01000000 40000000" + longest + longest, 80, std::string(63, 'U') + " 1-1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.hex);
        const std::string bytes = Bytes(c.hex);
        for (const bool bounded : {true, false}) {
            CKivDSScriptVersion list = List({{"XA", 1}});
            EXPECT_EQ(bounded ? Read(list, bytes) : list.Deserialize(bytes.data()),
                      bounded ? static_cast<int>(bytes.size()) : c.result);
            EXPECT_EQ(Show(list), c.expected);
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
    for (std::size_t at = 0; at + 4 <= stream.size(); ++at) {
        for (const char* const field : {"00000000", "01000000", "FFFFFFFF", "00000080", "FFFFFF7F"}) {
            CKivDSScriptVersion list;
            const Allocations allocations;
            Read(list, std::string(stream).replace(at, 4, Bytes(field)));
            EXPECT_LE(allocations.Bytes(), 4096);
        }
    }
    ClaimAll();
    CKivDSScriptVersion kept = List({{"XA", 1}});
    EXPECT_EQ(kept.Deserialize(nullptr) + kept.Deserialize(nullptr, 9), 0);
    Claim(L"CKivDSScriptVersion::Deserialize", kInvalidStream);
    Claim(L"CKivDSScriptVersion::Deserialize", kInvalidStream);
    EXPECT_EQ(Show(kept), "XA 1-1");
    for (const int length : {0, -1, INT_MIN}) {
        EXPECT_EQ(kept.Deserialize(stream.data(), length), 0);
        Claim(L"CKivDSScriptVersion::Deserialize", kInvalidStream);
    }
}

} // namespace
} // namespace kivds::test
