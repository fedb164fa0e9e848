// The adapter where the transcripts in tests/tool do not reach it: scopes, threads, and what it leaves alone.
#include "dicom/DicomImport.h"
#include "dicom/ToolkitMessages.h"
#include "tests/support/Build.h"
#include "tests/support/DicomBytes.h"
#include "tests/support/Reports.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dctk.h>

#include <memory>
#include <thread>

namespace kivds::test {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

const fs::path g_Samples = KIVDS_SAMPLES_DIR;

std::string Uids(const char* series = "1.2.3")
{
    return Element(0x00080018, "UI", "1.2.9") + Element(0x0020000D, "UI", "1.2") +
           Element(0x0020000E, "UI", series);
}

class DicomImportTest : public ReportTest
{
protected:
    DicomImportTest() { SetToolkitListener(nullptr, nullptr); }

    /// Imports a data set in Explicit VR Little Endian, which must succeed without a warning.
    CollectionPtr Good(std::string_view dataSet)
    {
        DicomImport import = ImportDicomFile(m_Folder.Write("object", DicomBytes(dataSet)));
        EXPECT_EQ(import.error, "");
        EXPECT_TRUE(import.warnings.empty());
        return std::move(import.collection);
    }

    TestFolder m_Folder;
};

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
    EXPECT_EQ(scopeOf(*Good(Uids() + Element(0x00280008, "IS", "2 ") +
                            Element(0x52009230, "SQ", Item("") + Item("")))),
              "1.2 1.2.3 1.2.9[1-2] ");
    EXPECT_EQ(scopeOf(*Good(Element(0x00080060, "CS", "CT"))), "");
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

} // namespace
} // namespace kivds::test
