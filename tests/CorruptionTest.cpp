// Bytes that nobody may trust: every golden stream cut at each byte, with each byte and each 32-bit field
// disturbed, through the bounded reads, in each form that its kind can be told. The bytes end where memory
// ends.
#include "KivDSDataU.h"
#include "tests/support/DocumentedReports.h"
#include "tests/support/FailingNew.h"
#include "tests/support/GoldenStreams.h"
#include "tests/support/GuardedBytes.h"
#include "tests/support/Hex.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace kivds::test {
namespace {

std::uint32_t IntAt(std::string_view bytes, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

struct CorruptionTest : testing::Test
{
    /// Reads bytes and checks all that a bounded read promises; whether they were read.
    bool Read(const GoldenStream& golden, StreamForm form, std::string_view bytes)
    {
        const bool silent = golden.m_Kind >= StreamKind::FrameRange; // the platform's
        const int length = static_cast<int>(bytes.size()), reported = m_Reports.Count();
        const long live = Allocations::Live();
        const auto keeps = [&](const StreamReading& reading) {
            if (reading.m_nAllocated > 20LL * length + 64 * 1024)
                return false;
            if (!reading.m_bRead)
                return silent ? reading.m_nSize == 0 && reading.m_bAsNew : m_Reports.Count() > reported;
            if (reading.m_nSize < 0 || reading.m_nSize > length || !reading.m_Written)
                return false;
            const std::string& written = *reading.m_Written; // reads as the same object
            const int size = static_cast<int>(written.size());
            return ReadStream(golden.m_Kind, {}, m_Memory.Put(written), size).m_Written == written;
        };
        bool read = false, kept = false;
        {
            const StreamReading reading = ReadStream(golden.m_Kind, form, m_Memory.Put(bytes), length, true);
            read = reading.m_bRead;
            kept = keeps(reading);
        }
        EXPECT_TRUE(kept && m_Reports.Undocumented() == 0) << golden.m_Name << '\n' << Hex(bytes);
        EXPECT_EQ(Allocations::Live(), live) << "leaked: " << golden.m_Name << '\n' << Hex(bytes);
        return read;
    }

    /// Calls disturb(golden stream, form) for each stream in each form that its kind can be told.
    template <class Disturb>
    void ForEach(Disturb disturb)
    {
        for (const GoldenStream& golden : AllGoldenStreams().m_Streams) {
            if (golden.m_Kind == StreamKind::Value) // has no bounded read of its own
                continue;
            Read(golden, {}, golden.m_Bytes); // what is made once, is made now
            for (const bool versioned : {true, false}) {
                disturb(golden, StreamForm{versioned, 7});
                if (golden.m_Kind <= StreamKind::CodeSequence)
                    disturb(golden, StreamForm{versioned, 0});
                else if (golden.m_Kind >= StreamKind::ScriptVersions)
                    break;
            }
        }
    }

    GuardedBytes m_Memory{1 << 18};
    ReportCounter m_Reports;
};

TEST_F(CorruptionTest, AStreamCutAnywhereIsRefused)
{
    int forms = 0;
    ForEach([&](const GoldenStream& golden, StreamForm form) {
        const bool own =
            form.m_bVersioned == golden.m_Form.m_bVersioned &&
            (form.m_nVersion == golden.m_Form.m_nVersion || golden.m_Kind > StreamKind::CodeSequence);
        forms += own;
        for (std::size_t length = 0; length < golden.m_Bytes.size(); ++length) {
            const bool read = Read(golden, form, std::string_view(golden.m_Bytes).substr(0, length));
            EXPECT_FALSE(own && read) << golden.m_Name << ' ' << length;
        }
    });
    EXPECT_GE(forms, 70) << "each stream in its own form";
}

TEST_F(CorruptionTest, NoDisturbedByteDoesHarm)
{
    ForEach([&](const GoldenStream& golden, StreamForm form) {
        for (std::size_t at = 0; at < golden.m_Bytes.size(); ++at) {
            std::string bytes = golden.m_Bytes;
            const char was = bytes[at];
            for (const int instead : {0, 0xFF, was ^ 1, was ^ 0x80}) {
                bytes[at] = static_cast<char>(instead);
                Read(golden, form, bytes);
            }
        }
    });
}

TEST_F(CorruptionTest, NoDisturbedFieldDoesHarm)
{
    ForEach([&](const GoldenStream& golden, StreamForm form) {
        for (std::size_t at = 0; at + 4 <= golden.m_Bytes.size(); ++at) {
            std::string bytes = golden.m_Bytes;
            const std::uint32_t was = IntAt(bytes, at);
            for (const std::uint32_t instead :
                 {0U, 1U, ~0U, was + 1, was - 1, std::uint32_t{1} << 31, ~0U >> 1})
                Read(golden, form, bytes.replace(at, 4, Int(instead)));
        }
    });
}

// An enhanced multi-frame stream whose one frame is another, and so on.
GoldenStream Nested(int levels)
{
    GoldenStream nested = AllGoldenStreams().Named("collection-empty");
    const std::string regular = nested.m_Bytes;
    for (int i = 0; i < levels; ++i) {
        std::string enhanced = regular + Int(1) + nested.m_Bytes;
        enhanced += Int(static_cast<std::uint32_t>(enhanced.size()) + 4);
        nested.m_Bytes = "\7\2" + enhanced + Int(static_cast<std::uint32_t>(enhanced.size()) + 6);
    }
    nested.m_Name = std::to_string(levels) + " levels";
    return nested;
}

TEST_F(CorruptionTest, StreamsNestedTooDeeplyOrOfTooManySmallFramesAreRefused)
{
    for (const int levels : {1, 64, 65, 5000}) {
        const GoldenStream nested = Nested(levels);
        EXPECT_EQ(Read(nested, {}, nested.m_Bytes), levels <= 64) << levels;
    }
    const std::string empty = Bytes("07 00 F9FFFFFF 0C000000 00000000 12000000");
    const std::string oldEmpty = Bytes("00 00000000");
    for (const auto& [frame, accepted] : std::initializer_list<std::pair<std::string, bool>>{
             {"\7\2" + empty + Int(0) + Int(26) + Int(32), true}, // an enhanced one, as it is written
             {oldEmpty, false},
             {Bytes("01 00000000 00000000"), false},
             {"\7\2" + oldEmpty + Int(0) + Int(0) + Int(0), false}}) {
        std::string enhanced = "\7\2" + empty + Int(4096);
        for (int i = 0; i < 4096; ++i)
            enhanced += frame;
        enhanced += Int(0) + Int(0);
        EXPECT_EQ(Read(AllGoldenStreams().Named("collection-empty"), {}, enhanced), accepted) << Hex(frame);
    }
}

// The smallest records there are, in frames of all sizes: where objects take the most, for what they are made
// of.
TEST_F(CorruptionTest, ManySmallAttributesTakeNoMoreThanTheirShare)
{
    const std::string record(14, '\0');
    for (const int records : {1, 2, 3, 4, 5, 9, 33, 64, 65, 300}) {
        const int frames = 8000 / records;
        std::string stream = Int(0) + Int(frames);
        for (int i = 0; i < frames; ++i) {
            stream += Int(records);
            for (int k = 0; k < records; ++k)
                stream += record;
        }
        stream += Int(0);
        CKivDSEnhancedMFCollection enhanced;
        int size = 0;
        const Allocations allocations;
        EXPECT_TRUE(enhanced.Deserialize(stream.data(), static_cast<int>(stream.size()), size, false));
        EXPECT_LE(allocations.Bytes(), 20LL * static_cast<long long>(stream.size()) + 64 * 1024) << records;
    }
}

} // namespace
} // namespace kivds::test
