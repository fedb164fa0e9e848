// The tool as its users run it: what it writes, says and answers.
#include "tests/support/DicomBytes.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>
#include <vector>

namespace kivds::test {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

const fs::path g_Samples = KIVDS_SAMPLES_DIR;

struct Result
{
    int status;
    std::string out;
    std::string errors;
};

std::size_t Count(std::string_view text, std::string_view wanted)
{
    std::size_t count = 0;
    for (auto at = text.find(wanted); at != std::string_view::npos;
         at = text.find(wanted, at + wanted.size()))
        ++count;
    return count;
}

bool Has(std::string_view text, std::string_view wanted)
{
    return Count(text, wanted) > 0;
}

/// The same with every run of blanks as one blank.
std::string Squeezed(std::string text)
{
    text.erase(std::unique(text.begin(), text.end(), [](char a, char b) { return a == ' ' && b == ' '; }),
               text.end());
    return text;
}

/// The number behind a text; -1 when it is not there.
long NumberAfter(const std::string& text, const std::string& before)
{
    const auto at = text.find(before);
    return at == std::string::npos ? -1 : std::stol(text.substr(at + before.size()));
}

class ToolTest : public ::testing::Test
{
protected:
    /// Runs the tool in the test's folder; its standard output goes to a file there, or to `device`.
    Result Run(const std::vector<std::string>& arguments, const char* device = nullptr)
    {
        std::string command = "cd '" + (m_Folder / "").string() + "' && '" KIVDS_TOOL "'";
        for (const std::string& argument : arguments)
            command += " '" + argument + "'";
        const fs::path out = device ? device : m_Folder / ".out";
        const fs::path errors = m_Folder / ".errors";
        const int status =
            std::system((command + " >'" + out.string() + "' 2>'" + errors.string() + "'").c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, device ? "" : ReadBytes(out),
                ReadBytes(errors)};
    }

    /// Runs it, expects this status, and gives what it wrote to standard output.
    std::string Out(int status, const std::vector<std::string>& arguments)
    {
        const Result result = Run(arguments);
        EXPECT_EQ(result.status, status) << result.errors << result.out;
        EXPECT_FALSE(Has(result.out + result.errors, "\x1b")) << "colours or a bar without a terminal";
        EXPECT_TRUE(status == 0 || !result.errors.empty() || arguments[0] == "diff") << "no message";
        return result.out;
    }

    std::string Errors(int status, const std::vector<std::string>& arguments)
    {
        const Result result = Run(arguments);
        EXPECT_EQ(result.status, status) << result.errors;
        return result.errors;
    }

    static std::string Sample(const char* name) { return (g_Samples / name).string(); }

    TestFolder m_Folder;
};

TEST_F(ToolTest, WritesStreamsThatHoldWhatTheFilesHold)
{
    for (const char* const name : {"ct_series/2.dcm", "dose_grid.dcm", "enhanced_ct.dcm", "greek_name.dcm",
                                   "report.dcm", "rt_structures.dcm"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(Has(Out(0, {"import", Sample(name), "-o", "x.kds"}), "x.kds: "));
        EXPECT_EQ(Out(0, {"dump", "--json", Sample(name)}), Out(0, {"dump", "--json", "x.kds"}));
        EXPECT_EQ(Out(0, {"dump", Sample(name)}), Out(0, {"dump", "x.kds"}));
        EXPECT_TRUE(Has(Out(0, {"check", "x.kds"}),
                        "x.kds: sound: " + std::to_string(fs::file_size(m_Folder / "x.kds"))));
        EXPECT_TRUE(Has(Out(0, {"check", Sample(name)}), "sound"));
        EXPECT_EQ(Out(0, {"import", "x.kds", "-o", "again.kds"}).find("again.kds"), 0u);
        EXPECT_EQ(ReadBytes(m_Folder / "x.kds"), ReadBytes(m_Folder / "again.kds"));
    }
}

TEST_F(ToolTest, ShowsExactlyWhatACollectionHoldsAsJson)
{
    const std::string frame = Item(Sequence(0x00209071, Item(Element(0x00200012, "IS", "4 "))));
    const std::string object =
        Element(0x00080005, "CS", "ISO_IR 100") + Element(0x00080020, "DA", "20240312") +
        Element(0x00080060, "CS", "CT") + Element(0x00081030, "LO", "M\xFC \"x\"\n") +
        Element(0x00081140, "SQ", "") + Element(0x00090010, "LO", "TEST") +
        Element(0x00091001, "OB", "\x01\xFF"s) +
        Element(0x00091002, "FL", "\x00\x00\x80\x7F\x00\x00\xC0\x3F"s) +
        Element(0x00091003, "OV", "\x01\x02\x03\x04\x05\x06\x07\x08") + Element(0x00091004, "CS", "") +
        Element(0x00091005, "CS", "\xFC ") +
        Sequence(0x00400260, CodeItem("A", "DCM", "Chest", Element(0x0008010B, "CS", "Y ")));
    m_Folder.Write("plain", DicomBytes(object));
    EXPECT_EQ(Out(0, {"dump", "--json", "plain"}), R"({
  "attributes": {
    "00080005": {"vr":"CS","values":["ISO_IR 100"]},
    "00080020": {"vr":"DA","values":[[2024,3,12]]},
    "00080060": {"vr":"CS","values":["CT"]},
    "00081030": {"vr":"LO","values":["Mü \"x\"\n"]},
    "00081140": {"vr":"SQ","values":[[528704]],"inSequence":[0],"private":true},
    "00090010": {"vr":"LO","values":["TEST"]},
    "00091001": {"vr":"OB","values":[[1,255]]},
    "00091002": {"vr":"FL","values":[[null,1.5]]},
    "00091003": {"vr":null,"representation":13,"values":[[1,2,3,4,5,6,7,8]]},
    "00091004": {"vr":"CS","values":[]},
    "00091005": {"vr":"CS","values":["\\xFC"]},
    "00400260": {"vr":"CS","values":["Chest"],"inSequence":[0],"codes":[{"CodeValue":"A","CodingSchemeDesignator":"DCM","CodeMeaning":"Chest","ContextGroupExtensionFlag":1}],"mustReplicate":true}
  }
}
)");
    m_Folder.Write("frames",
                   DicomBytes(Element(0x00280008, "IS", "2 ") + Sequence(0x52009230, frame + Item(""))));
    EXPECT_EQ(Out(0, {"dump", "--json", "frames"}), R"({
  "attributes": {
    "00280008": {"vr":"IS","values":[[2]]},
    "52009230": {"vr":"SQ","values":[[1375769136]],"inSequence":[0],"private":true}
  },
  "frames": [{
    "attributes": {
      "00200012": {"vr":"IS","values":[[4]],"inSequence":[0],"mustReplicate":true}
    }
  }, {
    "attributes": {}
  }]
}
)");
    EXPECT_TRUE(Has(Out(0, {"dump", "--json", Sample("dose_grid.dcm")}), R"(  "multiFrameAttributes": {
    "3004000C": {"vr":"DS","values":[[0.0,2.5,5.0,7.5]],"frames":[[1,4]]}
  })"));
}

TEST_F(ToolTest, DumpsALineForEachAttribute)
{
    const std::tuple<const char*, const char*> rows[] = {
        {"ct_series/1.dcm", "(0008,0060) CS Modality 1 CT"},
        {"ct_series/1.dcm", "(0008,0008) CS ImageType 3 ORIGINAL\\PRIMARY\\AXIAL"},
        {"ct_series/1.dcm",
         "(0008,002a) DT AcquisitionDateTime 1 2024-03-12 10:19:05 fraction 500 offset +01:00"},
        {"ct_series/1.dcm", "(0009,0010) LO PrivateCreator 1 EXAMPLE IMAGING 1"},
        {"ct_series/1.dcm", "(0010,1010) AS PatientAge 1 62Y"},
        {"ct_series/1.dcm", "(0020,0032) DS ImagePositionPatient 1x3 -125\\-287.5\\-5"},
        {"ct_series/1.dcm", "(7fe0,0010) OW PixelData 1 pixel data, not kept"},
        {"dose_grid.dcm", "(0028,0009) AT FrameIncrementPointer 1x2 (3004,000c)"},
        {"dose_grid.dcm", "(3004,000c) DS GridFrameOffsetVector 1x4 0\\2.5\\5\\7.5 frames 1-4"},
        {"enhanced_ct.dcm", "Frame 3\n (0008,0032) TM AcquisitionTime 1 10:19:06 fraction 500"},
        {"enhanced_ct.dcm", "(0008,2218) CS AnatomicRegionSequence 1 (51185008, SCT, \"Chest\")"},
        {"greek_name.dcm", "(0008,0090) PN ReferringPhysicianName 0"},
        {"greek_name.dcm", "(0010,0010) PN PatientName 2 Παπαδόπουλος\\Νίκος"},
    };
    for (const auto& [name, line] : rows) {
        const std::string out = Squeezed(Out(0, {"dump", Sample(name)}));
        EXPECT_TRUE(Has("\n" + out, "\n"s + line + "\n")) << line << "\n" << out;
    }
    m_Folder.Write("controls", DicomBytes(Element(0x00204000, "LT", "a\r\n\x1B[31mb")));
    EXPECT_TRUE(Has(Out(0, {"dump", "controls"}), R"(a\x0D\x0A\x1B[31mb)"));
}

TEST_F(ToolTest, KeepsTheStructureOfFoldersAndNamesWhatItSkips)
{
    const std::string one = ReadBytes(Sample("ct_series/1.dcm"));
    for (const char* const name : {"in/a/1.dcm", "in/a/1", "in/b/1.dcm", "in/b/1.2.840.5", "other/a/1.dcm"})
        m_Folder.Write(name, one);
    m_Folder.Write("in/b/notes.txt", "no DICOM, but a text that is long enough");
    Out(0, {"import", "in/a/1", "-o", "in/b/before.kds"});
    m_Folder.Write("in/b/cut.dcm", std::string_view(one).substr(0, 1000));
    const auto streams = [this](const char* folder) {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_Folder / folder)) {
            if (entry.is_regular_file())
                names.insert(entry.path().lexically_relative(m_Folder / folder).generic_string());
        }
        return names;
    };
    using Names = std::set<std::string>;
    const Result result = Run({"import", "in", "-o", "out"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "4 of 7 files imported\n");
    EXPECT_TRUE(Has(result.errors, "in/b/notes.txt: is neither a DICOM file nor a collection stream"))
        << result.errors;
    EXPECT_TRUE(Has(result.errors, "in/b/before.kds: is a collection stream, skipped")) << result.errors;
    EXPECT_GT(NumberAfter(result.errors, "in/b/cut.dcm: breaks off at byte "), 500) << result.errors;
    EXPECT_EQ(streams("out"), (Names{"a/1.kds", "a/1.dcm.kds", "b/1.kds", "b/1.2.840.5.kds"}));

    Out(0, {"import", "in/a", "other", "-o", "two"});
    EXPECT_EQ(streams("two"), (Names{"in/a/1.kds", "in/a/1.dcm.kds", "other/a/1.kds"}));
    Out(0, {"import", "in/a/1.dcm", "in/b/1.dcm", "in/a/1.dcm", "-o", "files"});
    EXPECT_EQ(streams("files"), (Names{"a/1.kds", "b/1.kds"}));
    // Below the folder itself, and again: the streams of the first time are no input.
    for (int i = 0; i < 2; ++i) {
        Out(0, {"import", "other", "-o", "other/streams"});
        EXPECT_EQ(streams("other/streams"), (Names{"a/1.kds"}));
    }
    Out(0, {"import", "in/a/1.dcm"});
    EXPECT_TRUE(fs::exists(m_Folder / "1.kds"));
    Out(0, {"import", "in/a/1.dcm", "-o", "new/folder/name"});
    EXPECT_TRUE(fs::exists(m_Folder / "new/folder/name"));

    EXPECT_TRUE(Has(Errors(2, {"import", "in/a/1.dcm", "-o", "in/a/1.dcm"}), "not written over itself"));
    EXPECT_EQ(ReadBytes(m_Folder / "in/a/1.dcm"), one);
    EXPECT_TRUE(Has(Errors(2, {"import", "in/a/1.dcm", "-o", "in/b/notes.txt/x"}),
                    "in/b/notes.txt/x: cannot be written"));
    EXPECT_TRUE(Has(Errors(2, {"import", "missing", "in/a", "-o", "rest"}), "missing: cannot be opened"));
    EXPECT_EQ(streams("rest").size(), 2u);
}

TEST_F(ToolTest, TellsWhereAStreamBreaks)
{
    const auto put = [](std::string bytes, std::size_t offset, std::string_view value) {
        return bytes.replace(offset, value.size(), value);
    };
    m_Folder.Write("object",
                   DicomBytes(Element(0x00080060, "CS", "CT") + Element(0x00280010, "US", Word(512))));
    Out(0, {"import", "object", "-o", "x.kds"});
    const std::string plain = ReadBytes(m_Folder / "x.kds");
    ASSERT_EQ(plain.size(), 93u);
    // 0 version and kind, 2 part: -7, total, count; 14 record: type, length, tag, ...; 52 the second; 88
    // total
    const std::tuple<std::string, std::size_t, const char*> rows[] = {
        {put(plain, 0, "\x08"), 0, "version 8 is not known"},
        {put(plain, 1, "\x03"), 1, "kind 3 is none of 0, 1 and 2"},
        {put(plain, 2, Long(0xFFFFFFF8)), 2, "a part's version is -8"},
        {put(plain, 6, Long(88)), 6, "a part's total is 88, it should be 87"},
        {put(plain, 10, Long(3)), 93, "the stream ends within an attribute's length"},
        {put(plain, 10, Long(0xFFFFFFFF)), 10, "a part's number of attributes is -1"},
        {put(plain, 18, Long(200)), 18, "attribute 1 of 2"},
        {put(plain, 36, Long(0)), 18,
         "attribute 1 of 2, (0008,0060): CKivDSDicomAttribute::Deserialize: Invalid input parameter"},
        {put(plain, 89, Long(94)), 89, "a collection's total is 94, it should be 93"},
        {plain + "x", 93, "1 byte more after the end of the stream"},
    };
    for (const auto& [bytes, offset, text] : rows) {
        SCOPED_TRACE(text);
        m_Folder.Write("bad.kds", bytes);
        const std::string errors = Errors(1, {"check", "bad.kds"});
        EXPECT_TRUE(Has(errors, "bad.kds: breaks at byte " + std::to_string(offset) + ": ")) << errors;
        EXPECT_TRUE(Has(errors, text)) << errors;
    }
    // The oldest form: kind, count, and attributes without type, length and frames.
    m_Folder.Write("old.kds", std::string(1, '\0') + Long(0));
    EXPECT_TRUE(Has(Out(0, {"check", "old.kds"}), "sound"));
    Out(0, {"dump", "old.kds"});

    Out(0, {"import", Sample("enhanced_ct.dcm"), "-o", "x.kds"});
    const std::string enhanced = ReadBytes(m_Folder / "x.kds");
    for (std::size_t length = 0; length < enhanced.size(); length += 97) {
        m_Folder.Write("cut.kds", std::string_view(enhanced).substr(0, length));
        const std::string errors = Errors(1, {"check", "cut.kds"});
        const long offset = NumberAfter(errors, "cut.kds: breaks at byte ");
        EXPECT_TRUE(offset >= 0 && offset <= static_cast<long>(length)) << errors;
        EXPECT_EQ(Run({"dump", "cut.kds"}).status, 2);
    }
}

TEST_F(ToolTest, ComparesEverythingOrSaysWhatItDidNotCompare)
{
    const auto object = [](std::string_view more, const char* kvp = "120 ", const char* pixels = "1234") {
        return DicomBytes(Element(0x00080060, "CS", "CT").append(more) + Element(0x00180060, "DS", kvp) +
                          Element(0x7FE00010, "OW", pixels));
    };
    const auto code = [](const char* meaning) {
        return Sequence(0x00081032, CodeItem("A ", "DCM ", meaning));
    };
    const auto nested = [](const char* text) {
        return Sequence(0x00081140, Item(Element(0x00204000, "LT", text)));
    };
    const auto name = [](const char* text) { return Element(0x00100010, "PN", text); };
    const auto grouped = [](const char* second) {
        return Element(0x00280008, "IS", "2 ") +
               Sequence(0x52009230, Item(Sequence(0x00209113, Item(Element(0x00200032, "DS", "1 ")))) +
                                        Item(Sequence(0x00209113, Item(Element(0x00200032, "DS", second)))));
    };
    const auto offsets = [](const char* text) {
        return Element(0x00280008, "IS", "3 ") + Element(0x00280009, "AT", Word(0x3004) + Word(0x000C)) +
               Element(0x3004000C, "DS", text);
    };
    const std::tuple<std::string, std::string, std::vector<std::string>> rows[] = {
        {object(""), object(""), {}},
        {object(""), object("", "90"), {"< (0018,0060) DS KVP 1 120", "> (0018,0060) DS KVP 1 90"}},
        {object("", "120.0 "), object("", "120 "), {}},
        {object(name("A ")), object(""), {"- (0010,0010) PN PatientName 1 A"}},
        {object(""), object(name("A ")), {"+ (0010,0010) PN PatientName 1 A"}},
        {object(name("")), object(""), {"- (0010,0010) PN PatientName 0"}},
        {object(nested("a ")),
         object(""),
         {"- (0008,1140) SQ ReferencedImageSequence 1 a sequence, not kept"}},
        {object(nested("a ")),
         object(nested("b ")),
         {"! (0008,1140) SQ ReferencedImageSequence item 1 (0020,4000) differs from byte 0 on"}},
        {object("", "120 ", "1234"),
         object("", "120 ", "1239"),
         {"! (7fe0,0010) OW PixelData differs from byte 3 on"}},
        // The values are the meanings: what else the records hold counts, too, and what they do not.
        {object(code("Chest ")),
         object(Sequence(0x00081032, CodeItem("B ", "DCM ", "Chest "))),
         {"< (0008,1032) CS ProcedureCodeSequence 1 (A, DCM, \"Chest\")",
          "> (0008,1032) CS ProcedureCodeSequence 1 (B, DCM, \"Chest\")"}},
        {object(code("Chest ")),
         object(Sequence(0x00081032, CodeItem("A ", "DCM ", "Chest ", Element(0x00080106, "DT", "2023")))),
         {"< (0008,1032) CS ProcedureCodeSequence 1 (A, DCM, \"Chest\")",
          "> (0008,1032) CS ProcedureCodeSequence 1 (A, DCM, \"Chest\")"}},
        {object(code("Chest ")),
         object(Sequence(0x00081032, CodeItem("A ", "DCM ", "Chest ", Element(0x00080119, "UC", "long")))),
         {"! (0008,1032) CS ProcedureCodeSequence item 1 (0008,0119) is in one alone"}},
        {object(name("A^^B")), object(name("A^B ")), {"! (0010,0010) PN PatientName differs from byte 2 on"}},
        {object("", "1\\\\2"), object("", "1\\\\3"), {"! (0018,0060) DS KVP differs from byte 3 on"}},
        {object(Element(0x00181030, "LO", "x ")),
         object(Element(0x00181030, "SH", "x ")),
         {"< (0018,1030) LO ProtocolName 1 x", "> (0018,1030) SH ProtocolName 1 x"}},
        {object(grouped("2 ")),
         object(grouped("3 ")),
         {"! (5200,9230) SQ PerFrameFunctionalGroupsSequence item 2 (0020,9113) item 1 (0020,0032) differs "
          "from byte 0 on",
          "Frame 2", " < (0020,0032) DS ImagePositionPatient 1 2",
          " > (0020,0032) DS ImagePositionPatient 1 3"}},
        {object(offsets("0\\5\\10")),
         object(offsets("0\\6\\10")),
         {"Frame 2", " < (3004,000c) DS GridFrameOffsetVector 1 5",
          " > (3004,000c) DS GridFrameOffsetVector 1 6"}},
    };
    for (const auto& [a, b, lines] : rows) {
        m_Folder.Write("a", a);
        m_Folder.Write("b", b);
        const int status = lines.empty() ? 0 : 1;
        std::string expected;
        for (const std::string& line : lines)
            expected += line + "\n";
        EXPECT_EQ(Squeezed(Out(status, {"diff", "a", "b"})), expected);
        EXPECT_EQ(Run({"diff", "b", "a"}).status, status);
    }
    // A stream does not hold what the file says beyond the collection.
    m_Folder.Write("a", object(nested("a ")));
    m_Folder.Write("b", object(nested("b ")));
    Out(0, {"import", "a", "-o", "a.kds"});
    EXPECT_TRUE(Has(Out(0, {"diff", "a.kds", "b"}), "! 2 elements were not compared"));
    EXPECT_TRUE(Has(Out(0, {"diff", "a.kds", "a.kds"}), "! 2 elements were not compared"));
    m_Folder.Write("b", object(grouped("2 ")));
    EXPECT_TRUE(Has(Out(1, {"diff", "b", "a.kds"}), "! 2 and 0 per-frame collections"));
    EXPECT_TRUE(Has(Errors(2, {"diff", "a.kds", "missing"}), "missing: cannot be opened"));
}

TEST_F(ToolTest, GivesTheCompleteCollectionOfEachFrame)
{
    const std::string enhanced = Out(0, {"frames", Sample("enhanced_ct.dcm")});
    EXPECT_EQ(Count(enhanced, "Frame "), 3u);
    EXPECT_EQ(Count(enhanced, "  (0028,0008) IS NumberOfFrames                       1    1\n"), 3u)
        << enhanced;
    const std::string third = Out(0, {"frames", "--frame", "3", Sample("enhanced_ct.dcm")});
    EXPECT_TRUE(Has(third, "Frame 3\n"));
    for (const char* const line : {"KVP                                  1    100\n",
                                   "ConvolutionKernel                    1    SOFT\n",
                                   "ImagePositionPatient                 1x3  -125\\-287.5\\5\n"})
        EXPECT_TRUE(Has(third, line)) << third;
    EXPECT_TRUE(Has(Out(0, {"frames", "--frame", "4", Sample("dose_grid.dcm")}),
                    "GridFrameOffsetVector                1    7.5\n"));
    Out(0, {"frames", Sample("dose_grid.dcm"), "-o", "frames"});
    for (const char* const name : {"frames/frame0001.kds", "frames/frame0004.kds"})
        EXPECT_TRUE(Has(Out(0, {"check", name}), "sound"));
    EXPECT_FALSE(fs::exists(m_Folder / "frames/frame0005.kds"));
    EXPECT_TRUE(
        Has(Errors(2, {"frames", "--frame", "5", Sample("dose_grid.dcm")}), "has 4 frames, no frame 5"));
    EXPECT_TRUE(Has(Errors(1, {"frames", Sample("report.dcm")}), "has no frames"));
    m_Folder.Write("many", DicomBytes(Element(0x00280008, "IS", "2000000000")));
    EXPECT_TRUE(Has(Errors(2, {"frames", "many"}), "has 2000000000 frames"));
}

TEST_F(ToolTest, ShowsWhatVariesInASeries)
{
    fs::create_directory(m_Folder / "in");
    for (const char* const name : {"1.dcm", "2.dcm", "3.dcm"})
        fs::copy(g_Samples / "ct_series" / name, m_Folder / "in" / name);
    const std::string out = Out(0, {"series", "in"});
    EXPECT_TRUE(Has(out, "Series 2.25.297389402372756180545341689988040267705: 3 objects\n")) << out;
    const auto section = [&](const char* from, const char* to) {
        const auto begin = out.find(from);
        return out.substr(begin, out.find(to, begin) - begin);
    };
    const std::string constant = section("Constant", "Varying");
    const std::string varying = section("Varying", "Not compared");
    EXPECT_TRUE(Has(constant, "(0018,0060) DS KVP")) << out;
    EXPECT_TRUE(Has(varying, "(0020,0013) IS InstanceNumber                       3    1, 2, 3\n")) << out;
    EXPECT_FALSE(Has(constant, "(0020,1041)"));
    EXPECT_TRUE(Has(out, "(7fe0,0010) OW PixelData                            1    pixel data, not kept\n"));

    m_Folder.Write("in/text", "no DICOM, but a text that is long enough");
    m_Folder.Write("in/lone", DicomBytes(Element(0x00080060, "CS", "CT") + Element(0x00100010, "PN", "A ")));
    m_Folder.Write("in/other",
                   DicomBytes(Element(0x00080060, "CS", "MR") + Element(0x0020000E, "UI", "1.2 ")));
    const Result result = Run({"series", "in"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Count(result.out, "Series "), 2u) << result.out;
    EXPECT_TRUE(Has(result.errors, "in/text: is neither")) << result.errors;
    EXPECT_TRUE(Has(result.errors, "in/lone: skipped: belongs to no series")) << result.errors;
    EXPECT_EQ(Run({"series", "nowhere"}).status, 2);
}

TEST_F(ToolTest, HelpsAndRefusesWrongUse)
{
    for (const char* const command : {"import", "dump", "diff", "frames", "series", "check"}) {
        EXPECT_TRUE(Has(Out(0, {"--help"}), command));
        EXPECT_TRUE(Has(Out(0, {command, "--help"}), "Usage: kivds "s + command));
        EXPECT_NE(Errors(2, {command}), "");
        EXPECT_NE(Errors(2, {command, "--unheard-of", "x"}), "");
        EXPECT_TRUE(Has(Errors(2, {command, "missing", "missing"}), "missing"));
    }
    EXPECT_NE(Errors(2, {}), "");
    EXPECT_NE(Errors(2, {"frames", "--frame", "0", Sample("dose_grid.dcm")}), "");
    const Result full = Run({"dump", Sample("dose_grid.dcm")}, "/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_TRUE(Has(full.errors, "cannot be written"));
}

} // namespace
} // namespace kivds::test
