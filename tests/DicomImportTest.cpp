// The adapter: what becomes of the elements of a file, of coded entries, of frames and functional groups, and
// what is refused.
#include "dicom/DicomImport.h"
#include "dicom/DicomFile.h"
#include "dicom/TextDecoder.h"
#include "dicom/ToolkitMessages.h"
#include "tests/support/Build.h"
#include "tests/support/DicomBytes.h"
#include "tests/support/Reports.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dctk.h>

#include <memory>
#include <thread>
#include <tuple>

namespace kivds::test {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

constexpr unsigned long kTag = 0x00091001; // private, so that any representation goes
const fs::path g_Samples = KIVDS_SAMPLES_DIR;

std::string Uids(const char* series = "1.2.3")
{
    return Element(0x00080018, "UI", "1.2.9") + Element(0x0020000D, "UI", "1.2") +
           Element(0x0020000E, "UI", series);
}

/// "tag text" for each warning.
std::string WarningsOf(const DicomImport& import)
{
    std::string all;
    for (const DicomWarning& warning : import.warnings) {
        char tag[24];
        std::snprintf(tag, sizeof tag, "%08lX ", warning.tag);
        all += (all.empty() ? "" : "; ") + (tag + warning.text);
    }
    return all;
}

class DicomImportTest : public ReportTest
{
protected:
    DicomImportTest() { SetToolkitListener(nullptr, nullptr); }

    /// Imports a data set in Explicit VR Little Endian.
    DicomImport Import(std::string_view dataSet)
    {
        return ImportDicomFile(m_Folder.Write("object", DicomBytes(dataSet)));
    }

    /// The same, that must succeed without a warning.
    CollectionPtr Good(std::string_view dataSet)
    {
        DicomImport import = Import(dataSet);
        EXPECT_EQ(import.error, "");
        EXPECT_EQ(WarningsOf(import), "");
        return std::move(import.collection);
    }

    const CKivDSDicomAttribute& Get(const CKivDSDicomAttributeCollection& collection, unsigned long tag)
    {
        static const CKivDSDicomAttribute none;
        const CKivDSDicomAttribute* attribute = nullptr;
        return collection.GetAttribute(tag, &attribute, true, true) ? *attribute : none;
    }

    TestFolder m_Folder;
};

TEST_F(DicomImportTest, HoldsEachRepresentationWithoutItsPadding)
{
    const std::string two("\x00\x00\x00\x00\x00\x00\xF0\x3F"
                          "\x00\x00\x00\x00\x00\x00\x00\xC0",
                          16);
    const std::tuple<const char*, std::string, int, const char*> rows[] = {
        {"AE", "NODE1 \\NODE2 ", AE, "[NODE1] [NODE2]"},
        {"AS", "062Y", AS, "[62 89]"},
        {"AT", "\x04\x30\x0C\x00"s, AT, "[12292 12]"},
        {"CS", "DERIVED\\SECONDARY ", CS, "[DERIVED] [SECONDARY]"},
        {"DA", "20240229", DA, "[2024 2 29]"},
        {"DA", "20240101\\20240202", DA, "[2024 1 1] [2024 2 2]"},
        {"DA", "20240101\\2024.02.02 ", DA, "[2024 1 1] [2024 2 2]"},
        {"DS", "1.5 \\ -2.5e1", DS, "[1.5 -25]"},
        {"DS", " 7", DS, "[7]"},
        {"DT", "20240312101905.500+0100 ", DT, "[2024 3 12 10 19 5 500 1 0]"},
        {"FD", two, FD, "[1 -2]"},
        {"FL", two.substr(4, 4), FL, "[1.875]"},
        {"IS", " -3\\ 12 \\40", IS, "[-3 12 40]"},
        {"LO", " A \\B\0"s, LO, "[ A] [B]"},
        {"LT", " one\r\ntwo \0"s, LT, "[ one\r\ntwo]"},
        {"OB", "ab", OB, "[ab]"},
        {"OD", two, FD, "[1 -2]"},
        {"OF", two.substr(4, 4), FL, "[1.875]"},
        {"OL", "\x01\x00\x00\x00"s, UL, "[1]"},
        {"OV", "8 bytes.", 13, "[8 bytes.]"},
        {"OW", "\x01\x00\xFF\xFF"s, OW, "[1 -1]"},
        {"PN", "Sample^Anna^^Dr. ", PN, "[Sample] [Anna] [Dr.]"},
        {"SH", "4711", SH, "[4711]"},
        {"SL", "\xD8\xFF\xFF\xFF"s, SL, "[-40]"},
        {"SS", "\x18\xFC"s, SS, "[-1000]"},
        {"ST", "text \\ ", 18, "[text ]"},
        {"SV", "8 bytes.", 13, "[8 bytes.]"},
        {"TM", "101530.25 ", TM, "[10 15 30 25]"},
        {"TM", "1015\\10:15:31", TM, "[10 15 0 0] [10 15 31 0]"},
        {"UC", "one \\two ", 12, "[one] [two]"},
        {"UI", "1.2.3\0"s, UI, "[1.2.3]"},
        {"UL", "\x01\x00\x00\x00\x02\x00\x00\x00"s, UL, "[1 2]"},
        {"UN", "A\\B ", UN, "[A\\B ]"},
        {"UR", "https://example.org ", 12, "[https://example.org]"},
        {"US", "\x00\x02"s, US, "[512]"},
        {"UT", "a  b  ", 12, "[a  b]"},
        {"UV", "8 bytes.", 13, "[8 bytes.]"},
        // Nothing is left: no values, and no report.
        {"CS", "", CS, ""},
        {"DS", "  ", DS, ""},
        {"DS", "\\ \\", DS, ""},
        {"DA", " \0"s, DA, ""},
        {"TM", "\\ ", TM, ""},
        {"UI", "\0\0"s, UI, ""},
        {"FD", "", FD, ""},
    };
    for (const auto& [vr, bytes, code, text] : rows) {
        SCOPED_TRACE(vr + (" " + bytes));
        const DicomImport import = Import(Element(0x00090010, "LO", "TEST") + Element(kTag, vr, bytes));
        ASSERT_TRUE(import.collection);
        const CKivDSDicomAttribute& attribute = Get(*import.collection, kTag);
        EXPECT_EQ(attribute.GetDicomRepresentation(), code);
        EXPECT_EQ(Text(attribute), text);
        EXPECT_FALSE(attribute.IsPrivate() || attribute.MustReplicate());
        if (const SKivAGAttributeValue* const value = attribute.GetValuePtr(0)) {
            EXPECT_EQ(value->nInSequenceIndex, -1);
        }
        EXPECT_TRUE(NothingReported());
    }
}

TEST_F(DicomImportTest, WarnsOfWhatCannotBeHeld)
{
    const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
        {"DS", "1\\\\3 ", "[1]", "value 2 of 3 is empty; 1 held"},
        {"DS", "1.5\\x\\3", "[1.5]", "value 2 of 3, \"x\", is no decimal number; 1 held"},
        {"IS", "1\\99999999999", "[1 2147483647]",
         "value 2 of 2, \"99999999999\", is beyond 32 bits; 2 held"},
        {"IS", "1A", "[1]", "value 1 of 1, \"1A\", is no integer; 1 held"},
        {"CS", "A\\\\B ", "[A] [B]", "value 2 of 3 is empty; 2 held"},
        {"DA", "20240101\\ ", "[2024 1 1]", "value 2 of 2 is empty; 1 held"},
        {"TM", "10\\11\\", "[10 0 0 0] [11 0 0 0]", "value 3 of 3 is empty; 2 held"},
        {"US", "\x01\x00\x02"s, "[1]",
         "its 3 bytes are not whole elements of 2 bytes; the last 1 are not held"},
        {"FD", "1234", "", "its 4 bytes are not whole elements of 8 bytes; the last 4 are not held"},
        {"PN", "\x1B$B$d$^$@\x1B(B", "[\x1B$B$d$] [$@\x1B(B]",
         "is cut within a character, one byte of which reads as a delimiter"},
    };
    for (const auto& [vr, bytes, text, warning] : rows) {
        SCOPED_TRACE(vr + (" " + bytes));
        const DicomImport import = Import(Element(0x00090010, "LO", "TEST") + Element(kTag, vr, bytes));
        ASSERT_TRUE(import.collection);
        EXPECT_EQ(Text(Get(*import.collection, kTag)), text);
        EXPECT_EQ(WarningsOf(import), "00091001 "s + warning);
        EXPECT_TRUE(NothingReported());
    }
    const DicomImport date = Import(Element(0x00080020, "DA", "202403"));
    EXPECT_EQ(WarningsOf(date), "00080020 value 1 of 1, \"202403\", is no date; 1 held");
    Claim(L"CKivDSDicomAttribute::InternalConvert2Date ", L" Unsupported DICOM data format ", 1);
    // Empty: the default repertoire (PS3.3 C.12.1.1.2).
    EXPECT_EQ(WarningsOf(Import(Element(0x00080005, "CS", "\\ISO 2022 IR 87 "))), "");
}

TEST_F(DicomImportTest, HoldsTheObjectsOwnElementsOnceAndInTagOrder)
{
    DicomImport import = Import(Element(0x00080000, "UL", Long(20)) + Element(0x00100010, "PN", "B^A ") +
                                Element(0x00080060, "CS", "CT") + Element(0x00080060, "CS", "MR") +
                                Sequence(0x00400275, Item(Element(0x00080000, "UL", Long(0)))) +
                                Element(0x7FE00010, "OW", "") + Element(0xFFFCFFFC, "OB", ""));
    ASSERT_TRUE(import.collection);
    EXPECT_EQ(Text(*import.collection), "(0008,0060)=[CT] (0010,0010)=[B] [A] (0040,0275)=[4194933] "
                                        "(7fe0,0010)=[\x10] (fffc,fffc)=");
    EXPECT_TRUE(Get(*import.collection, 0x00400275).IsPrivate());
    EXPECT_EQ(Get(*import.collection, 0x00400275).GetDicomRepresentation(), SQ);
    EXPECT_TRUE(Get(*import.collection, 0x7FE00010).IsPrivate());
}

TEST_F(DicomImportTest, GivesTheSameStreamWhateverTheTransferSyntax)
{
    for (const char* const name : {"ct_series/1.dcm", "dose_grid.dcm", "enhanced_ct.dcm", "report.dcm"}) {
        SCOPED_TRACE(name);
        DcmFileFormat file;
        ASSERT_TRUE(file.loadFile((g_Samples / name).c_str()).good());
        const DcmTagKey privates[] = {{0x0009, 0x0010}, {0x0009, 0x1001}, {0x0009, 0x1002}, {0x0009, 0x1003}};
        for (const DcmTagKey& tag : privates) // implicit, they are unknown
            file.getDataset()->findAndDeleteElement(tag);
        std::string expected;
        for (const E_TransferSyntax syntax : {EXS_LittleEndianExplicit, EXS_LittleEndianImplicit,
                                              EXS_BigEndianExplicit, EXS_DeflatedLittleEndianExplicit}) {
            for (const E_EncodingType lengths : {EET_ExplicitLength, EET_UndefinedLength}) {
                ASSERT_TRUE(
                    file.saveFile((m_Folder / "object").c_str(), syntax, lengths, EGL_recalcGL).good());
                const DicomImport import = ImportDicomFile(m_Folder / "object");
                ASSERT_TRUE(import.collection) << import.error;
                const std::string stream = Stream(*import.collection);
                if (expected.empty())
                    expected = stream;
                EXPECT_TRUE(stream == expected) << DcmXfer(syntax).getXferName();
            }
        }
    }
}

TEST_F(DicomImportTest, FollowsPixelRepresentationWhereImplicitFilesDoNotSay)
{
    const auto implicit = [](unsigned long tag, std::string_view value) {
        return (Word(static_cast<unsigned>(tag >> 16)) + Word(tag & 0xFFFF) + Long(value.size()))
            .append(value);
    };
    const std::tuple<unsigned, int, const char*> rows[] = {{0, US, "[64512]"}, {1, SS, "[-1024]"}};
    for (const auto& [representation, code, text] : rows) {
        const DicomImport import =
            ImportDicomFile(m_Folder.Write("object", DicomBytes(implicit(0x00280103, Word(representation)) +
                                                                    implicit(0x00280106, Word(0xFC00)),
                                                                kImplicit)));
        ASSERT_TRUE(import.collection);
        EXPECT_EQ(Get(*import.collection, 0x00280106).GetDicomRepresentation(), code);
        EXPECT_EQ(Text(Get(*import.collection, 0x00280106)), text);
    }
    // A file without preamble and file meta information.
    EXPECT_TRUE(ImportDicomFile(
                    m_Folder.Write("bare", implicit(0x00080060, "CT") + implicit(0x00100010, "Sample^Simon")))
                    .collection);
}

TEST_F(DicomImportTest, HoldsCodedEntriesWholeOrNotAtAll)
{
    const std::string many = Element(0x00080103, "SH", "1.0 ") + Element(0x00080105, "CS", "DCMR") +
                             Element(0x00080106, "DT", "20230101") + Element(0x00080107, "DT", "20240101") +
                             Element(0x0008010B, "CS", "Y ") + Element(0x0008010D, "UI", "1.2.3\0"s) +
                             Element(0x0008010F, "CS", "101 ");
    const CollectionPtr collection =
        Good(Sequence(0x00081032, CodeItem("A ", "DCM ", "Chest ") + CodeItem("B\0"s, "99X ", "Head", many)));
    const auto& codes = dynamic_cast<const CKivDSCodeSequenceAttribute&>(Get(*collection, 0x00081032));
    ASSERT_EQ(codes.GetNumberOfCodes(), 2);
    EXPECT_EQ(Text(codes), "[Chest] [Head]");
    EXPECT_FALSE(codes.IsPrivate());
    const tagSKivDSCodeSequenceAttributeInfo& first = *codes.GetCodePtr(0);
    const tagSKivDSCodeSequenceAttributeInfo& second = *codes.GetCodePtr(1);
    EXPECT_EQ(first.szCodeValue + "/"s + first.szCodingSchemeDesignator + "/" + first.szCodeMeaning,
              "A/DCM/Chest");
    EXPECT_EQ(first.nContextGroupExtensionFlag, 0);
    EXPECT_EQ(second.szCodeValue + "/"s + second.szCodingSchemeVersion + "/" + second.szMappingResource +
                  "/" + second.szContextGroupVersion + "/" + second.szContextGroupLocalVersion + "/" +
                  second.szContextIdentifier + "/" + second.szContextGroupExtensionCreatorUID,
              "B/1.0/DCMR/20230101/20240101/101/1.2.3");
    EXPECT_EQ(second.nContextGroupExtensionFlag, 1);

    const std::string good = CodeItem("A", "DCM", "Chest");
    const std::string fits(64, 'm'), tooLong(65, 'm');
    EXPECT_EQ(Get(*Good(Sequence(0x00081032, CodeItem("A", "B", fits))), 0x00081032).GetType(), 1);
    for (const std::string& items :
         {""s, Item(""), good + CodeItem("", "DCM", "x"), good + CodeItem("A", "  ", "x"),
          good + CodeItem("A", "DCM", ""), good + CodeItem("A", "DCM", tooLong),
          good + CodeItem("A", "DCM", "x", Element(0x0008010F, "CS", std::string(18, '1')))}) {
        const CollectionPtr plain = Good(Sequence(0x00081032, items));
        EXPECT_EQ(Get(*plain, 0x00081032).GetType(), 0);
        EXPECT_EQ(Text(Get(*plain, 0x00081032)), "[528434]");
        EXPECT_TRUE(Get(*plain, 0x00081032).IsPrivate());
    }
}

TEST_F(DicomImportTest, MakesMultiFrameWhatFrameIncrementPointerNames)
{
    const std::string pointer = Element(0x00280009, "AT",
                                        Word(0x0018) + Word(0x1063) + Word(0x0018) + Word(0x1065) +
                                            Word(0x0008) + Word(0x0022) + Word(0x0028) + Word(0x0008));
    const auto object = [&](const char* frames, const char* dates, const char* times,
                            std::string_view more = {}) {
        return Uids() + Element(0x00080022, "DA", dates) + Element(0x00181063, "DS", "1\\2") +
               Element(0x00181065, "DS", times) +
               Element(0x00280008, "IS", frames).append(pointer).append(more);
    };
    const std::tuple<const char*, const char*, const char*, long> rows[] = {
        {"3 ", "20240101\\20240102\\20240103", "0\\10\\20", 2},
        {"3 ", "20240101", "0\\10\\20", 1}, // three numbers, but one date
        {"3 ", "20240101\\20240102", "0\\10", 0},
        {"1 ", "20240101", "0", 0},
        {"", "20240101", "0", 0},
    };
    for (const auto& [frames, dates, times, multiFrame] : rows) {
        SCOPED_TRACE(frames + " "s + dates + " " + times);
        const CollectionPtr collection = Good(object(frames, dates, times));
        long count = -1;
        EXPECT_TRUE(collection->GetNumberOfMultiFrameAttributes(&count));
        EXPECT_EQ(count, multiFrame);
    }
    const CollectionPtr collection = Good(object("3 ", "20240101\\20240102\\20240103", "0\\10\\20"));
    int frames = 0;
    EXPECT_TRUE(collection->GetNumberOfFrames(&frames));
    EXPECT_EQ(frames, 3);
    CKivDSDicomAttributeCollection frame(*collection, 2, true);
    EXPECT_EQ(Text(Get(frame, 0x00181065)) + Text(Get(frame, 0x00080022)), "[10][2024 1 2]");
    // An object with functional groups keeps its attributes whole.
    const CollectionPtr grouped =
        Good(object("2 ", "20240101", "0\\10", Sequence(0x52009230, Item("") + Item(""))));
    EXPECT_FALSE(Get(*grouped, 0x00181065).IsMultiFrame());
    EXPECT_TRUE(grouped->IsEnhancedMFCollection());
}

TEST_F(DicomImportTest, PutsTheLeavesOfFunctionalGroupsWhereTheyBelong)
{
    const std::string leaf = Element(0x00180060, "DS", "120 ");
    const std::string code = Sequence(0x00082218, CodeItem("T1", "SCT ", "Chest "));
    const std::string otherCode = Sequence(0x00082218, CodeItem("T2", "SCT ", "Head"));
    const std::string group1 = Item(Sequence(0x00189301, Item(leaf + Element(0x00189302, "CS", ""))) +
                                    Sequence(0x00209071, Item(code) + Item(otherCode)) +
                                    Sequence(0x00209113, Item(Element(0x00200032, "DS", "1\\2\\3 ")) +
                                                             Item(Element(0x00180060, "DS", "") +
                                                                  Element(0x00200032, "DS", "4\\5\\6 "))) +
                                    Sequence(0x00209172, Item(Element(0x00180060, "DS", "90"))));
    const std::string group2 = Item(
        Sequence(0x00189301, Item(Element(0x00189302, "CS", "") + Element(0x00189302, "CS", "ignored"))) +
        Element(0x00200013, "IS", "7 "));
    const std::string shared =
        Item(Sequence(0x00189329, Item(Element(0x00080000, "UL", Long(2)) + Element(0x00080060, "CS", "MR") +
                                       Element(0x00200011, "LO", "text"))));
    DicomImport import = Import(Uids() + Element(0x00080060, "CS", "CT") + Element(0x00200011, "IS", "5 ") +
                                Element(0x00280008, "IS", "2 ") + Sequence(0x52009229, shared) +
                                Sequence(0x52009230, group1 + group2));
    ASSERT_TRUE(import.collection) << import.error;
    EXPECT_EQ(WarningsOf(import),
              "00200011 stands in a functional group with another value representation than before; "
              "it is not held");
    const CKivDSDicomAttribute& modality = Get(*import.collection, 0x00080060);
    EXPECT_EQ(Text(modality), "[CT] [MR]");
    EXPECT_EQ(modality.GetValuePtr(1)->nInSequenceIndex, 0);
    EXPECT_EQ(Text(Get(*import.collection, 0x52009230)), "[1375769136]");

    const CKivDSDicomAttributeCollection first(*import.collection, 0, true);
    const CKivDSDicomAttribute& kvp = Get(first, 0x00180060);
    EXPECT_EQ(Text(kvp), "[120] [90]"); // the empty one between them counts, and holds nothing
    EXPECT_EQ(kvp.GetValuePtr(0)->nInSequenceIndex, 0);
    EXPECT_EQ(kvp.GetValuePtr(1)->nInSequenceIndex, 2);
    EXPECT_TRUE(kvp.MustReplicate());
    EXPECT_EQ(Text(Get(first, 0x00200032)), "[1 2 3] [4 5 6]");
    const auto& codes = dynamic_cast<const CKivDSCodeSequenceAttribute&>(Get(first, 0x00082218));
    EXPECT_EQ(codes.GetNumberOfCodes(), 2);
    EXPECT_EQ(Text(codes), "[Chest] [Head]");
    EXPECT_EQ(Text(Get(first, 0x00189302)), "");
    EXPECT_EQ(Text(Get(first, 0x00280008)), "[1]");
    EXPECT_FALSE(first.HasAttribute(0x00200013, true, true));

    const CKivDSDicomAttributeCollection second(*import.collection, 1, true);
    EXPECT_EQ(Text(Get(second, 0x00200013)), "[7]");
    EXPECT_FALSE(second.HasAttribute(0x00180060, true, true));
    int frames = 0;
    EXPECT_TRUE(import.collection->GetNumberOfFrames(&frames));
    EXPECT_EQ(frames, 2);

    // Tiles that fill their matrix have frames without groups of their own, as many as there can be pixels
    // for.
    const auto tiles = [&](const char* number) {
        return Uids() + Element(0x00209311, "CS", "TILED_FULL") + Element(0x00280008, "IS", number) +
               Sequence(0x52009229, Item(Sequence(0x00189329, Item(leaf)))) + Element(0x7FE00010, "OB", "12");
    };
    const CollectionPtr tiled = Good(tiles("4 "));
    EXPECT_TRUE(tiled->GetNumberOfFrames(&frames));
    EXPECT_EQ(frames, 4);
    EXPECT_EQ(Text(Get(CKivDSDicomAttributeCollection(*tiled, 3, true), 0x00180060)), "[120]");
    EXPECT_FALSE(Good(tiles("2000000000"))->IsEnhancedMFCollection());
}

TEST_F(DicomImportTest, NamesTheObjectInItsScope)
{
    const auto scopeOf = [](const CKivDSDicomAttributeCollection& collection) {
        std::string text;
        const std::unique_ptr<CKivIPPScopeC> scope(collection.GetScope());
        for (int level = 0; scope && level < 3; ++level) {
            CKivIPPScopeItemC* item = nullptr;
            int first = 0, last = 0;
            if (!static_cast<CKivIPPScopeElementC&>(*scope).GetItem(level, item, false)) {
                text += "- ";
                continue;
            }
            text += item->GetUIDPtr();
            text += item->GetFrames(&first, &last)
                        ? "[" + std::to_string(first) + "-" + std::to_string(last) + "] "
                        : " ";
        }
        return text;
    };
    EXPECT_EQ(scopeOf(*Good(Uids())), "1.2 1.2.3 1.2.9 ");
    EXPECT_EQ(scopeOf(*Good(Uids("") + Element(0x00280008, "IS", "5 "))), "1.2 - 1.2.9[1-5] ");
    EXPECT_EQ(scopeOf(*Good(Uids() + Element(0x00280008, "IS", "1 "))), "1.2 1.2.3 1.2.9 ");
    EXPECT_EQ(
        scopeOf(*Good(Uids() + Element(0x00280008, "IS", "2 ") + Sequence(0x52009230, Item("") + Item("")))),
        "1.2 1.2.3 1.2.9[1-2] ");
    EXPECT_EQ(scopeOf(*Good(Element(0x00080060, "CS", "CT"))), "");
}

TEST_F(DicomImportTest, RefusesWhatIsNoWholeObjectAndSaysWhere)
{
    const std::string object =
        DicomBytes(Element(0x00080060, "CS", "CT") + Element(0x00100010, "PN", "Sample^Simon"));
    std::string nested = Element(0x00080060, "CS", "CT");
    for (int i = 0; i < 20000; ++i) // undefined lengths: a level costs a few bytes
        nested += Word(0x0008) + Word(0x1140) + "SQ" + Word(0) + Long(0xFFFFFFFF) + Word(0xFFFE) +
                  Word(0xE000) + Long(0xFFFFFFFF);
    const std::tuple<std::string, DicomFailure, const char*> rows[] = {
        {"", DicomFailure::NotDicom, "is empty"},
        {std::string(5000, '\0'), DicomFailure::NotDicom, "is no DICOM file"},
        {"# A text, and a long one at that", DicomFailure::NotDicom, "is no DICOM file"},
        {DicomBytes(""), DicomFailure::Broken, "holds no element"},
        {DicomBytes(std::string(1000, '\0')), DicomFailure::Broken, "holds no element"},
        {object.substr(0, object.size() - 3), DicomFailure::Broken,
         "breaks off at byte 199, in or after (0010,0010): "},
        {DicomBytes(nested), DicomFailure::Broken, "sequences are nested too deeply"},
    };
    for (const auto& [bytes, failure, error] : rows) {
        SCOPED_TRACE(error);
        const DicomImport import = ImportDicomFile(m_Folder.Write("object", bytes));
        EXPECT_FALSE(import.collection);
        EXPECT_EQ(import.failure, failure);
        EXPECT_NE(import.error.find(error), std::string::npos) << import.error;
        EXPECT_NE(import.error, "");
    }
    EXPECT_EQ(ImportDicomFile(m_Folder / "missing").error, "cannot be opened: No such file or directory");
    EXPECT_EQ(ImportDicomFile(m_Folder / "").error, "is a folder");
    // Cut anywhere, a file imports or is refused.
    const std::string whole = ReadBytes(g_Samples / "enhanced_ct.dcm");
    for (std::size_t length = 0; length < whole.size(); length += 61) {
        const DicomImport import =
            ImportDicomFile(m_Folder.Write("object", std::string_view(whole).substr(0, length)));
        EXPECT_EQ(import.collection == nullptr, import.failure != DicomFailure::None) << length;
        EXPECT_EQ(import.error.empty(), import.collection != nullptr) << length;
    }
}

TEST_F(DicomImportTest, LeavesTheToolkitAndTheDataSetAsTheyWere)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int k = 0; k < 5; ++k)
                EXPECT_TRUE(ImportDicomFile(g_Samples / "report.dcm").collection);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(dcmEnableAutomaticInputDataCorrection.get());

    DcmFileFormat file;
    const fs::path path =
        m_Folder.Write("object", DicomBytes(Uids() + Element(0x7FE00010, "OW", std::string(100000, 'x'))));
    ASSERT_TRUE(file.loadFile(path.c_str()).good());
    DcmElement* pixels = nullptr;
    ASSERT_TRUE(file.getDataset()->findAndGetElement(DCM_PixelData, pixels).good());
    ASSERT_FALSE(pixels->valueLoaded());
    EXPECT_TRUE(ImportDicomDataSet(*file.getDataset()).collection);
    EXPECT_FALSE(pixels->valueLoaded());
}

TEST_F(DicomImportTest, ComparesWhatACollectionDoesNotKeep)
{
    const auto pixels = [](std::string_view bytes, const char* vr = "OW") {
        return Element(0x7FE00010, vr, bytes);
    };
    const auto nested = [](std::string_view elements) {
        return Sequence(0x00081140,
                        Item(Element(0x00081150, "UI", "1.2")) + Item(Sequence(0x0040A170, Item(elements))));
    };
    const std::string big(3 << 20, 'x');
    const std::string other = big.substr(1) + "y";
    const std::tuple<std::string, std::string, unsigned long, std::string> rows[] = {
        {pixels("1234"), pixels("1234", "OB"), 0x7FE00010, ""},
        {pixels("1234"), pixels("12"), 0x7FE00010, "has 4 and 2 bytes"},
        {pixels(big), pixels(other), 0x7FE00010, "differs from byte 3145727 on"},
        {pixels("12"), Element(0x00080060, "CS", "CT"), 0x7FE00010, "is in one alone"},
        {nested(Element(0x00180050, "DS", "1 ")),
         nested(Element(0x00180000, "UL", Long(10)) + Element(0x00180050, "DS", "1 ")), 0x00081140, ""},
        {nested(Element(0x00180050, "DS", "1 ")), nested(Element(0x00180050, "DS", "2 ")), 0x00081140,
         "item 2 (0040,a170) item 1 (0018,0050) differs from byte 0 on"},
        {nested(Element(0x00180050, "DS", "1 ")), nested(Element(0x00180050, "IS", "1 ")), 0x00081140,
         "item 2 (0040,a170) item 1 (0018,0050) is DS and IS"},
        {nested(Element(0x00180050, "DS", "1 ")), nested(""), 0x00081140,
         "item 2 (0040,a170) item 1 (0018,0050) is in one alone"},
        {Sequence(0x00081140, Item("")), Sequence(0x00081140, Item("") + Item("")), 0x00081140,
         "has 1 and 2 items"},
    };
    for (const auto& [bytesA, bytesB, tag, difference] : rows) {
        SCOPED_TRACE(difference);
        DicomFile a, b;
        std::string error;
        ASSERT_EQ(a.Open(m_Folder.Write("a", DicomBytes(bytesA)), error), DicomFailure::None) << error;
        ASSERT_EQ(b.Open(m_Folder.Write("b", DicomBytes(bytesB)), error), DicomFailure::None) << error;
        EXPECT_EQ(a.FirstDifference(tag, b), difference);
        EXPECT_EQ(b.FirstDifference(tag, a).empty(), difference.empty());
    }
    const auto encapsulated = [](std::string_view fragment) {
        const std::string bytes = Word(0x7FE0) + Word(0x0010) + "OB" + Word(0) + Long(0xFFFFFFFF) + Item("") +
                                  Item(fragment) + Word(0xFFFE) + Word(0xE0DD) + Long(0);
        return DicomBytes(bytes, "1.2.840.10008.1.2.5");
    };
    const std::tuple<std::string, std::string> fragments[] = {
        {encapsulated("rle!"), ""},
        {encapsulated("rle?"), "fragment 1 differs from byte 3 on"},
        {DicomBytes(pixels("rle!")), "is encapsulated in one alone"},
    };
    for (const auto& [bytes, difference] : fragments) {
        DicomFile a, b;
        std::string error;
        ASSERT_EQ(a.Open(m_Folder.Write("a", encapsulated("rle!")), error), DicomFailure::None) << error;
        ASSERT_EQ(b.Open(m_Folder.Write("b", bytes), error), DicomFailure::None) << error;
        EXPECT_EQ(a.FirstDifference(0x7FE00010, b), difference);
    }
}

TEST(TextDecoderTest, GivesUtf8AndEscapesTheRest)
{
    const std::tuple<const char*, std::string, bool, std::string> rows[] = {
        {"", "Smith", true, "Smith"},
        {"", "M\xFCller", true, "M\\xFCller"},
        {"unheard of", "M\xFCller", true, "M\\xFCller"},
        {"ISO_IR 100", "M\xFCller", true, "M\u00FCller"},
        {"ISO_IR 100", "M\xFCller", false, "M\\xFCller"},
        {" ISO_IR 126", "\xC4\xE9\xEF\xED", true, "\u0394\u03B9\u03BF\u03BD"},
        {"ISO_IR 192", "M\xC3\xBCller", true, "M\u00FCller"},
        {"ISO_IR 192", "\xC3\xBC\xC3 \xE2\x82 \xED\xA0\x80 \xC0\xAF \xF4\x90\x80\x80", true,
         "\u00FC\\xC3 \\xE2\\x82 \\xED\\xA0\\x80 \\xC0\\xAF \\xF4\\x90\\x80\\x80"},
        {"ISO_IR 126", "\xC4\xFF", true, "\u0394\\xFF"}, // FF stands for nothing in it
        {"GB18030", "\xCD\xF5^\xD0\xA1", true, "\u738B^\u5C0F"},
        {"\\ISO 2022 IR 87", "\x1B$B;3ED\x1B(B", true, "\u5C71\u7530"},
        {"ISO 2022 IR 87", "\x1B$B;3ED\x1B(B", true, "\u5C71\u7530"}, // as a collection holds it
        {"\\ISO 2022 IR 149", "\x1B$)C\xB1\xE8", true, "\uAE40"},
    };
    for (const auto& [characterSet, text, localized, utf8] : rows)
        EXPECT_EQ(TextDecoder(characterSet).ToUtf8(text, localized), utf8) << characterSet;
}

} // namespace
} // namespace kivds::test
