#include "dicom/DicomImport.h"

#include "collection/CKivDSEnhancedMFCollection.h"
#include "dicom/DicomFile.h"
#include "dicom/internal/AttributeMaker.h"
#include "dicom/internal/InputCorrection.h"
#include "platform/CKivIPPScopeElementC.h"
#include "platform/CKivIPPScopeItemFactory.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcdatset.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <new>

namespace kivds {
namespace {

constexpr unsigned long kDimensionOrganizationType = 0x00209311;

using Collection = CKivDSDicomAttributeCollection;

int NumberOfValues(const CKivDSDicomAttribute& attribute)
{
    int count = 0;
    attribute.GetNumberOfValues(&count);
    return count;
}

/// Whether an attribute holds one element (numbers) or one value (texts) for each of `frames` frames.
bool HoldsOneEach(const CKivDSDicomAttribute& attribute, int frames)
{
    const int values = NumberOfValues(attribute);
    if (attribute.IsPrivate())
        return false; // a placeholder
    const Vr* const vr = VrOfCode(attribute.GetDicomRepresentation());
    const bool isNumbers = !vr || IsBinary(*vr) || vr->form == VrForm::Numbers;
    return isNumbers ? values == 1 && attribute.GetValuePtr(0)->nCount == frames : values == frames;
}

/// One import: the data set's elements go into the regular collection, those of functional groups also into
/// one collection a frame.
class Importer
{
public:
    Importer(DcmDataset& dataSet, DicomImport& result)
        : m_DataSet(dataSet), m_Result(result), m_Maker(dataSet, result.warnings)
    {
    }

    void Run();

private:
    void FindFrames();
    void AddTopLevel(DcmElement& element, bool signedPixels);
    bool HasImpliedFrames();
    void AddFrames(DcmSequenceOfItems* perFrame, bool signedPixels);
    void AddLeaves(DcmItem& groupItem, bool signedPixels, Collection& collection);
    void AddLeavesOf(DcmItem& item, bool inherited, Collection& collection,
                     std::map<unsigned long, int>& counts);
    void AddLeaf(std::unique_ptr<CKivDSDicomAttribute> leaf, Collection& collection);
    void SetScope();
    DcmSequenceOfItems* FindGroups(unsigned long tag);

    DcmDataset& m_DataSet;
    DicomImport& m_Result;
    AttributeMaker m_Maker;
    Collection m_Regular;
    std::unique_ptr<CKivDSEnhancedMFCollection> m_pEnhanced;
    int m_nFrames = 0;                         // as Number of Frames says; 0 when it does not
    std::vector<unsigned long> m_PerFrameTags; // as Frame Increment Pointer names them
};

void Importer::Run()
{
    const std::vector<DcmElement*> elements = ElementsOf(m_DataSet);
    if (elements.empty()) {
        m_Result.failure = DicomFailure::Broken;
        m_Result.error = "holds no element";
        return;
    }
    DcmSequenceOfItems* const shared = FindGroups(kSharedFunctionalGroups);
    DcmSequenceOfItems* const perFrame = FindGroups(kPerFrameFunctionalGroups);
    FindFrames();
    if (shared || perFrame)
        m_PerFrameTags.clear();
    const bool signedPixels = HasSignedPixels(m_DataSet, false);
    for (DcmElement* const element : elements)
        AddTopLevel(*element, signedPixels);
    if (perFrame || (shared && HasImpliedFrames())) {
        for (DcmItem* const item : shared ? ItemsOf(*shared) : std::vector<DcmItem*>())
            AddLeaves(*item, signedPixels, m_Regular);
        AddFrames(perFrame, signedPixels);
        m_Result.collection = std::make_unique<Collection>(m_pEnhanced.get());
        (void)m_pEnhanced.release(); // the facade's, by its count
    } else {
        m_Result.collection = std::make_unique<Collection>(m_Regular, false);
    }
    SetScope();
}

/// The sequence when it has items.
DcmSequenceOfItems* Importer::FindGroups(unsigned long tag)
{
    DcmElement* const element = FindElement(m_DataSet, tag);
    DcmSequenceOfItems* const sequence = element ? AsSequence(*element) : nullptr;
    return sequence && sequence->card() > 0 ? sequence : nullptr;
}

void Importer::FindFrames()
{
    std::string text = m_Maker.ReadText(m_DataSet, kNumberOfFrames);
    RemovePadding(text, VrOf("IS"));
    std::from_chars(text.data(), text.data() + text.size(), m_nFrames);
    if (m_nFrames <= 1)
        return;
    DcmElement* const pointer = FindElement(m_DataSet, kFrameIncrementPointer);
    std::string bytes, ignored;
    if (!pointer || AsSequence(*pointer) || !ValueReader().Read(*pointer, bytes, ignored))
        return;
    const auto word = [&](std::size_t i) {
        return static_cast<unsigned long>(static_cast<unsigned char>(bytes[i])) |
               static_cast<unsigned long>(static_cast<unsigned char>(bytes[i + 1])) << 8;
    };
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4)
        m_PerFrameTags.push_back(word(i) << 16 | word(i + 2));
}

void Importer::AddTopLevel(DcmElement& element, bool signedPixels)
{
    const unsigned long tag = TagOf(element);
    auto attribute = m_Maker.Make(element, signedPixels, false, -1);
    const bool isPerFrame =
        tag != kNumberOfFrames && // it is looked for among the single-frame attributes
        std::find(m_PerFrameTags.begin(), m_PerFrameTags.end(), tag) != m_PerFrameTags.end();
    if (isPerFrame && HoldsOneEach(*attribute, m_nFrames))
        attribute->SetMultiFrameInfo(1, m_nFrames);
    if (m_Regular.AddAttribute(attribute.get(), false))
        (void)attribute.release();
}

/// Tiles that fill their matrix need no groups of their own (PS3.3 C.7.6.17.3): their frames are those of
/// Number of Frames. It is believed as far as there can be pixels for it.
bool Importer::HasImpliedFrames()
{
    DcmElement* const pixels = FindElement(m_DataSet, kPixelData);
    return m_nFrames >= 1 && pixels &&
           m_Maker.ReadText(m_DataSet, kDimensionOrganizationType) == "TILED_FULL" &&
           static_cast<unsigned long>(m_nFrames) <= MostFramesOf(*pixels);
}

/// The frames of items of the Per-Frame Functional Groups; without these, frames that have nothing of their
/// own.
void Importer::AddFrames(DcmSequenceOfItems* perFrame, bool signedPixels)
{
    m_pEnhanced = std::make_unique<CKivDSEnhancedMFCollection>();
    m_pEnhanced->AddCollection(&m_Regular, false);
    if (!perFrame) {
        for (int i = 0; i < m_nFrames; ++i) {
            Collection frame;
            m_pEnhanced->AddMFCollection(&frame, false);
        }
        return;
    }
    for (DcmItem* const item : ItemsOf(*perFrame)) {
        Collection frame;
        AddLeaves(*item, signedPixels, frame);
        m_pEnhanced->AddMFCollection(&frame, false);
    }
    const int frames = m_pEnhanced->GetNumberOfMFCollections();
    if (frames != m_nFrames)
        m_Maker.Warn(kNumberOfFrames,
                     (m_nFrames > 0 ? "says " + std::to_string(m_nFrames) : "does not say a number") +
                         ", but there are functional groups for " + std::to_string(frames) + " frames");
    m_nFrames = frames;
}

void Importer::AddLeaves(DcmItem& groupItem, bool signedPixels, Collection& collection)
{
    std::map<unsigned long, int> counts;
    AddLeavesOf(groupItem, signedPixels, collection, counts);
}

void Importer::AddLeavesOf(DcmItem& item, bool inherited, Collection& collection,
                           std::map<unsigned long, int>& counts)
{
    const bool signedPixels = HasSignedPixels(item, inherited);
    for (DcmElement* const element : ElementsOf(item)) {
        const unsigned long tag = TagOf(*element);
        if (DcmSequenceOfItems* const sequence = AsSequence(*element)) {
            if (auto codes = m_Maker.MakeCodes(tag, *sequence)) {
                ++counts[tag];
                AddLeaf(std::move(codes), collection);
                continue;
            }
            for (DcmItem* const inner : ItemsOf(*sequence))
                AddLeavesOf(*inner, signedPixels, collection, counts);
        } else {
            AddLeaf(m_Maker.Make(*element, signedPixels, true, counts[tag]++), collection);
        }
    }
}

void Importer::AddLeaf(std::unique_ptr<CKivDSDicomAttribute> leaf, Collection& collection)
{
    unsigned long tag = 0;
    leaf->GetTag(&tag);
    CKivDSDicomAttribute* held = nullptr;
    if (collection.GetAttributePtr(tag, &held, true, true)) {
        if (NumberOfValues(*leaf) == 0)
            return;
        if (held->GetType() != leaf->GetType() ||
            held->GetDicomRepresentation() != leaf->GetDicomRepresentation()) {
            m_Maker.Warn(tag,
                         "stands in a functional group with another value representation than before; it is "
                         "not held");
            return;
        }
        if (leaf->GetType() == 1) { // with the records, which the collection's merging leaves out
            static_cast<CKivDSCodeSequenceAttribute&>(*held) +=
                static_cast<CKivDSCodeSequenceAttribute&>(*leaf);
            return;
        }
    }
    if (collection.AddAttribute(leaf.get(), true))
        (void)leaf.release();
}

void Importer::SetScope()
{
    struct Level
    {
        unsigned long tag;
        const _GUID& type;
    };
    const Level levels[] = {{0x0020000D, g_StudyUID}, {0x0020000E, g_SeriesUID}, {0x00080018, g_ImageUID}};
    auto scope = std::make_unique<CKivIPPScopeElementC>();
    scope->SetType(g_ScopeElementType);
    scope->Initialize(3);
    bool isEmpty = true;
    for (int i = 0; i < 3; ++i) {
        scope->SetScopeItemType(i, levels[i].type);
        const std::string uid = m_Maker.ReadText(m_DataSet, levels[i].tag);
        const std::unique_ptr<CKivIPPScopeItemC> item(g_pItemFactory->Create(levels[i].type));
        if (uid.empty() || !item)
            continue;
        const bool hasFrames = i == 2 && m_nFrames > 1;
        const bool isNamed = hasFrames ? item->SetUID(uid.c_str(), 1, m_nFrames) : item->SetUID(uid.c_str());
        if (isNamed && scope->AddItem(i, item.get(), true))
            isEmpty = false;
    }
    if (!isEmpty && m_Result.collection->SetScope(scope.get(), false))
        (void)scope.release();
}

} // namespace

DicomImport ImportDicomDataSet(DcmDataset& dataSet)
{
    const InputCorrectionOff correctionOff;
    DicomImport result;
    try {
        Importer(dataSet, result).Run();
    } catch (const std::bad_alloc&) {
        result.collection.reset();
        result.failure = DicomFailure::CannotRead;
        result.error = "is too large for the memory that there is";
    }
    return result;
}

DicomImport ImportDicomFile(const std::filesystem::path& path)
{
    DicomFile file;
    DicomImport result;
    result.failure = file.Open(path, result.error);
    return result.failure == DicomFailure::None ? file.Import() : std::move(result);
}

} // namespace kivds
