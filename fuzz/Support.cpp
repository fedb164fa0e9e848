#include "fuzz/Support.h"

#include "platform/CKivIPPScopeElementC.h"
#include "platform/CKivIPPScopeItemFactory.h"
#include "tests/support/DocumentedReports.h"

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace kivds::fuzz {

void Require(bool kept, const char* promise)
{
    if (kept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

int Input::Byte()
{
    if (m_Rest.empty())
        return 0;
    const auto byte = static_cast<unsigned char>(m_Rest.front());
    m_Rest.remove_prefix(1);
    return byte;
}

int Input::Number()
{
    unsigned int number = 0;
    for (int i = 0; i < 4; ++i)
        number |= static_cast<unsigned int>(Byte()) << (8 * i);
    return static_cast<int>(number);
}

std::string_view Input::Text(int longest)
{
    const auto length = static_cast<std::size_t>(Below(longest + 1));
    const std::string_view text = m_Rest.substr(0, length);
    m_Rest.remove_prefix(text.size());
    return text;
}

ReportWatch::ReportWatch()
{
    test::Lookup(L"", L"", 0); // makes the table now, so that its memory is not counted as the library's
    g_KivIPError.SetListener(&ReportWatch::Listen, this);
}

ReportWatch::~ReportWatch()
{
    g_KivIPError.SetListener(nullptr, nullptr);
}

bool ReportWatch::TakeUnwritable()
{
    return std::exchange(m_bUnwritable, false);
}

void ReportWatch::Listen(void* context, const wchar_t* function, const wchar_t* message, int code)
{
    if (test::Lookup(function, message, code) != test::Documented::Yes) {
        std::fprintf(stderr, "report not documented, or only for want of memory: \"%ls\", \"%ls\", %d\n",
                     function, message, code);
        std::abort();
    }
    const std::wstring_view text = message;
    auto& watch = *static_cast<ReportWatch*>(context);
    ++watch.m_nCount;
    if (text == L"Attempt to serialize attribute value with null data pointer" ||
        text == L"Failed to retrieve the size of the regular collection")
        watch.m_bUnwritable = true;
}

// -----------------------------------------------------------------------------------------------------------
// building

namespace {

AttributePtr BuildFromElement(Input& input, unsigned long tag, bool mustReplicate)
{
    return AttributeOf(SElement(input, tag, mustReplicate));
}

AttributePtr BuildFromValues(Input& input, unsigned long tag, bool mustReplicate)
{
    auto attribute = std::make_unique<CKivDSDicomAttribute>(input.Flag(), mustReplicate);
    std::vector<ExactBlock> blocks;
    std::vector<SKivAGAttributeValue> values(static_cast<std::size_t>(input.Below(4)));
    for (SKivAGAttributeValue& value : values) {
        const auto type = static_cast<tagEKivAGAttributeType>(input.Below(8));
        const int index = input.Below(4) - 1;
        const ExactBlock& block = blocks.emplace_back(input.Text(24));
        const int elementSize = GetElementSize(type);
        value = {elementSize > 0 ? block.Size() / elementSize : 0, type, index,
                 block.Size() > 0 ? block.Data() : nullptr};
    }
    attribute->InitFromValues(tag, input.Below(33), static_cast<int>(values.size()), values.data(),
                              input.Flag());
    return attribute;
}

AttributePtr BuildCodeSequence(Input& input, unsigned long tag, bool)
{
    tagSKivDSCodeSequenceAttributeInfo info = {};
    input.Text(32).copy(info.szCodeValue, 32);
    input.Text(32).copy(info.szCodingSchemeDesignator, 32);
    input.Text(64).copy(info.szCodeMeaning, 64);
    info.nContextGroupExtensionFlag = input.Number();
    return std::make_unique<CKivDSCodeSequenceAttribute>(tag, info);
}

AttributePtr BuildEmpty(Input& input, unsigned long tag, bool mustReplicate)
{
    auto attribute = std::make_unique<CKivDSDicomAttribute>();
    attribute->InitEmpty(tag, input.Below(33), mustReplicate);
    return attribute;
}

} // namespace

SElement::SElement(Input& input, unsigned long itsTag, bool isReplicated)
    : tag(itsTag), representation(input.Below(36) - 2), index(input.Below(3) - 1),
      expectedCount(input.Below(3)), mustReplicate(isReplicated), bytes(input.Text(40))
{
}

AttributePtr AttributeOf(const SElement& element)
{
    auto attribute = std::make_unique<CKivDSDicomAttribute>();
    attribute->InitFromDicomData(element.tag, element.representation, element.bytes.Size(),
                                 element.bytes.Data(), nullptr, false, element.mustReplicate, element.index,
                                 element.expectedCount);
    return attribute;
}

// Few tags, so that attributes meet; those that the library treats in a way of their own are among them.
unsigned long TakeTag(Input& input)
{
    constexpr unsigned long tags[] = {0x00080060, 0x00100010, 0x00180050, 0x00280008,
                                      0x00280010, 0x00540220, 0x37110090, 0x7FE00010};
    return tags[input.Below(8)];
}

AttributePtr BuildAttribute(Input& input)
{
    const unsigned long tag = TakeTag(input);
    const bool mustReplicate = input.Flag();
    constexpr AttributePtr (*builders[])(Input&, unsigned long, bool) = {BuildFromElement, BuildFromValues,
                                                                         BuildCodeSequence, BuildEmpty};
    AttributePtr attribute = builders[input.Below(4)](input, tag, mustReplicate);
    const int frames = input.Below(4);
    if (frames == 1)
        attribute->SetMultiFrameInfo(1, input.Below(8));
    else if (frames == 2)
        attribute->SetMultiFrameInfo(input.Number(), input.Number());
    else if (frames == 3) {
        int list[3] = {input.Below(4), input.Below(4), input.Number()};
        attribute->SetMultiFrameInfo(input.Below(4), list);
    }
    return attribute;
}

std::unique_ptr<CKivIPPScopeElementC> BuildScope(Input& input)
{
    auto scope = std::make_unique<CKivIPPScopeElementC>();
    scope->SetType(g_ScopeElementType);
    scope->Initialize(3);
    const _GUID* const types[] = {&g_StudyUID, &g_SeriesUID, &g_ImageUID};
    for (int level = 0; level < 3; ++level) {
        scope->SetScopeItemType(level, *types[level]);
        const std::unique_ptr<CKivIPPScopeItemC> item(g_pItemFactory->Create(*types[level]));
        const std::string uid(input.Text(20));
        if (level == 2 && input.Flag())
            item->SetUID(uid.c_str(), 1, input.Below(8));
        else
            item->SetUID(uid.c_str());
        scope->AddItem(level, item.get(), true);
    }
    return scope;
}

// -----------------------------------------------------------------------------------------------------------
// checking

namespace {

unsigned char s_Rendering[200];

/// Whether every value has data, so that a copy holds the same values.
bool CheckValues(const CKivDSDicomAttribute& attribute)
{
    bool whole = true;
    int count = 0, inSequence = 0, said = 0;
    Require(attribute.GetNumberOfValues(&count) && !attribute.GetValuePtr(-1) &&
                !attribute.GetValuePtr(count),
            "there are as many values as said");
    for (int i = 0; i < count; ++i) {
        const SKivAGAttributeValue& value = *attribute.GetValuePtr(i);
        inSequence += value.nInSequenceIndex >= 0 ? 1 : 0;
        attribute.GetValueAsString(i, sizeof s_Rendering, s_Rendering);
        if (!value.pData) {
            Require(value.nCount == 0, "elements are somewhere");
            whole = false;
            continue;
        }
        SKivAGAttributeValue copy = {};
        Require(attribute.GetValue(i, &copy) && copy == value &&
                    copy.nInSequenceIndex == value.nInSequenceIndex,
                "a value is given as it is held");
        attribute.DeleteAttributeValue(copy);
    }
    Require(attribute.GetNumberOfInSequenceValues(&said) && said == inSequence, "items' values are counted");
    return whole;
}

void CheckFrames(const CKivDSDicomAttribute& attribute, bool whole)
{
    const std::unique_ptr<CKivIPPRangeIDC> range(attribute.GetFrameRangeCollection());
    Require((range != nullptr) == attribute.IsMultiFrame(), "a multi-frame attribute has a frame range");
    int first = 0, last = 0;
    if (range)
        range->GetFrameRun(range->GetNumberOfFrameRuns() - 1, &first, &last);
    for (const int frame : {first, last}) {
        CKivDSDicomAttribute* taken = nullptr;
        const bool made = attribute.CreateSingleFrameCopy(frame, &taken);
        const AttributePtr copy(taken);
        Require(made || !copy, "a frame that cannot be had leaves no copy");
        if (!copy)
            continue;
        int count = 0;
        copy->GetNumberOfValues(&count);
        Require(!copy->IsMultiFrame() && TagOf(*copy) == TagOf(attribute) && copy->GetType() == 0,
                "the attribute of a frame is a plain one");
        Require(range ? count == 1 : !whole || *copy == attribute, "a frame's attribute holds its value");
    }
}

} // namespace

unsigned long TagOf(const CKivDSDicomAttribute& attribute)
{
    unsigned long tag = 0;
    attribute.GetTag(&tag);
    return tag;
}

void CheckAttribute(const CKivDSDicomAttribute& attribute, ReportWatch& reports)
{
    const bool whole = CheckValues(attribute);
    CheckFrames(attribute, whole);

    const AttributePtr copy(g_DicomAttributeFactory.CreateDicomAttribute(attribute));
    Require(copy->GetType() == attribute.GetType() && TagOf(*copy) == TagOf(attribute) &&
                copy->GetDicomRepresentation() == attribute.GetDicomRepresentation() &&
                copy->IsPrivate() == attribute.IsPrivate() &&
                copy->MustReplicate() == attribute.MustReplicate(),
            "a copy is of the same kind");
    const std::optional<std::string> stream = Write(*copy, reports);
    Require(!whole || (*copy == attribute && (!stream || stream == Write(attribute, reports))),
            "a copy holds the same values");
    (void)(attribute < *copy);
    copy->Dump();
    CKivDSDicomAttribute* numbered = nullptr;
    Require(attribute.CreateInSequenceInitializedCopy(numbered) && (!whole || *numbered == attribute),
            "numbering the values changes none");
    delete numbered;

    const auto make = [&] {
        return AttributePtr(g_DicomAttributeFactory.CreateDicomAttribute(attribute.GetType()));
    };
    CheckRoundTrip(reports, make, attribute, true, 7);
}

void CheckFacade(Facade& facade)
{
    long all = 0;
    if (facade.GetNumberOfAttributes(&all) && !facade.IsCompoundCollection()) {
        long single = 0, multi = 0;
        Require(facade.GetNumberOfSingleFrameAttributes(&single) &&
                    facade.GetNumberOfMultiFrameAttributes(&multi) && single + multi == all,
                "the counts of the parts add up");
        for (const bool inMulti : {false, true}) {
            unsigned long next = 0; // the smallest tag that may follow
            const auto check = [&](const CKivDSDicomAttribute& attribute) {
                const unsigned long tag = TagOf(attribute);
                const CKivDSDicomAttribute* found = nullptr;
                Require(tag >= next, "the walk is in the order of the tags");
                next = tag + 1;
                Require(facade.GetAttribute(tag, &found, !inMulti, inMulti) && found == &attribute &&
                            facade.HasAttribute(tag, !inMulti, inMulti),
                        "an attribute that is walked is found under its tag");
            };
            Require(Walk({facade, !inMulti, inMulti}, check) == (inMulti ? multi : single), "all is walked");
        }
        Require(Walk({facade, true, true}, [](const CKivDSDicomAttribute&) {}) == all, "all are walked");
    }
    int frames = 0;
    facade.GetNumberOfFrames(&frames);
    facade.Dump();
    Require(!facade.IsGood() || facade.IsCompoundCollection() || facade == facade, "it equals itself");
}

void CheckFacadeStream(Facade& facade, ReportWatch& reports)
{
    if (facade.IsGood() && !facade.IsCompoundCollection())
        CheckRoundTrip(
            reports, [] { return std::make_unique<Facade>(true); }, facade, true);
}

} // namespace kivds::fuzz
