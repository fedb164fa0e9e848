#include "tests/support/Notation.h"

#include "collection/internal/AttributeWalk.h"
#include "collection/internal/FrameCount.h"
#include "platform/CKivIPPScopeItemFactory.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>

namespace kivds::test {

namespace {

constexpr unsigned long kFrameIndexTag = 0x37110090;
constexpr unsigned long kFirstLetterTag = 0x00110000; // (0011,00LL), LL the letter's code

/// Opens protected members for their addresses to be taken.
struct OpenAttribute : CKivDSDicomAttribute
{
    using CKivDSDicomAttribute::m_bMustReplicate;
    using CKivDSDicomAttribute::m_bPrivate;
};
struct OpenCollection : CKivDSEnhancedMFCollection
{
    using CKivDSEnhancedMFCollection::GetCollectionVect;
    using Facade::m_pEnhancedMFCollection;
};

bool Has(std::string_view text, char flag)
{
    return text.find(flag) != std::string_view::npos;
}

/// Cuts `text` at the separators that stand outside brackets.
std::vector<std::string_view> Cut(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        depth += Has("{<", text[i]) ? 1 : Has("}>", text[i]) ? -1 : 0;
        if (text[i] == separator && depth == 0) {
            pieces.push_back(text.substr(begin, i - begin));
            begin = i + 1;
        }
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

void Fill(CKivDSDicomAttribute& attribute, std::string_view text, bool multiFrame)
{
    std::size_t end = 1;
    while (end < text.size() && !std::isalpha(static_cast<unsigned char>(text[end])))
        ++end;
    std::vector<std::vector<int>> values;
    std::vector<SKivAGAttributeValue> records;
    for (const std::string_view value : Cut(text.substr(1, end - 1), '+')) {
        values.emplace_back();
        for (const std::string_view element : Cut(value, ','))
            values.back().push_back(std::stoi(std::string(element)));
        records.push_back({static_cast<int>(values.back().size()), eAttrInt, 0,
                           reinterpret_cast<char*>(values.back().data())});
    }
    const int count = static_cast<int>(records.size());
    EXPECT_TRUE(attribute.InitFromValues(Tag(text[0]), IS, count, records.data(), false));
    const std::string_view flags = text.substr(end);
    if (Has(flags, 'm') || (multiFrame && !Has(flags, 's')))
        attribute.SetMultiFrameInfo(1, count == 1 ? records[0].nCount : count);
    attribute.*(&OpenAttribute::m_bPrivate) = Has(flags, 'p'); // which the frame range has cleared
    attribute.*(&OpenAttribute::m_bMustReplicate) = Has(flags, 'r');
}

void FillPart(Part& part, std::string_view text, bool multiFrame)
{
    for (const std::string_view piece : Cut(text, ' ')) {
        if (piece.empty())
            continue;
        EXPECT_TRUE(part.AddAttribute(MakeAttribute(piece, multiFrame).release(), false));
    }
}

CollectionPtr MakeGroup(std::string_view text)
{
    std::vector<std::string_view> pieces = Cut(text.substr(1, text.size() - 2), ';');
    if (text[0] == '{') {
        auto compound = std::make_unique<CKivDSCompoundCollection>();
        for (const std::string_view member : pieces) {
            if (text != "{}")
                compound->AddCollection(Make(member).get(), false);
        }
        return std::make_unique<Facade>(compound.release());
    }
    auto enhanced = std::make_unique<CKivDSEnhancedMFCollection>();
    enhanced->AddCollection(Make(pieces[0]).get(), false);
    for (std::size_t i = 1; i < pieces.size(); ++i)
        enhanced->AddMFCollection(Make(pieces[i]).get(), false);
    return std::make_unique<Facade>(enhanced.release());
}

/// Whether all collections that are made are to hold maps, the other of their two forms. The tests are run
/// once with it.
bool WithMaps()
{
    static const bool withMaps = std::getenv("KIVDS_TEST_WITH_MAPS") != nullptr;
    return withMaps;
}

} // namespace

unsigned long Tag(char letter)
{
    return letter == 'N'   ? kNumberOfFrames
           : letter == '#' ? kFrameIndexTag
                           : kFirstLetterTag + static_cast<unsigned char>(letter);
}

AttributePtr MakeAttribute(std::string_view text, bool multiFrame)
{
    auto attribute = std::make_unique<CKivDSDicomAttribute>(false, false);
    Fill(*attribute, text, multiFrame);
    return attribute;
}

CollectionPtr Make(std::string_view text)
{
    const std::size_t group = text.find_first_of("{<");
    if (group == 0)
        return MakeGroup(text);
    if (text == "-")
        return std::make_unique<Facade>(false);
    const std::vector<std::string_view> parts = Cut(text.substr(0, group), '|');
    auto single = std::make_unique<Part>();
    auto multi = parts.size() > 1 ? std::make_unique<Part>() : nullptr;
    FillPart(*single, parts[0], false);
    if (multi)
        FillPart(*multi, parts[1], true);
    auto facade = std::make_unique<Facade>(single.release(), multi.release());
    if (WithMaps()) {
        PartAccess::MapOf(*facade);
        PartAccess::MultiFrameMapOf(*facade);
    }
    if (group != std::string_view::npos)
        *facade = *MakeGroup(text.substr(group)); // stands beside the plain parts then
    return facade;
}

std::string Show(unsigned long tag, const CKivDSDicomAttribute& attribute, bool multiFrameExpected)
{
    std::string shown(1, tag == kNumberOfFrames  ? 'N'
                         : tag == kFrameIndexTag ? '#'
                                                 : static_cast<char>(tag & 0xFF));
    const std::string values = Text(attribute); // "[1 2] [3]"
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool between = values.compare(i, 3, "] [") == 0;
        if (between || !Has("[]", values[i]))
            shown += between ? '+' : values[i] == ' ' ? ',' : values[i];
        i += between ? 2 : 0;
    }
    shown += attribute.IsPrivate() ? "p" : "";
    shown += attribute.MustReplicate() ? "r" : "";
    if (attribute.IsMultiFrame() != multiFrameExpected)
        shown += attribute.IsMultiFrame() ? 'm' : 's';
    return shown;
}

std::string Show(const Part& part, bool multiFrame)
{
    std::string shown;
    for (const auto [tag, attribute] : kivds::AttributeWalk(PartAccess::AttributesOf(part))) {
        shown += shown.empty() ? "" : " ";
        shown += attribute ? Show(tag, *attribute, multiFrame) : std::string(1, static_cast<char>(tag)) + "?";
    }
    return shown;
}

std::string Show(const Facade& facade)
{
    std::string shown = facade.IsGood() ? "" : "-";
    if (const Part* const single = SinglePart(facade))
        shown = Show(*single);
    if (const Part* const multi = MultiPart(facade))
        shown += "|" + Show(*multi, true);
    if (CKivDSCompoundCollection* const compound = Compound(facade)) {
        shown += "{";
        for (int i = 0; i < compound->GetNumberOfCollections(); ++i)
            shown += (i > 0 ? ";" : "") + Show(*CollectionPtr(compound->GetCollection(i, false)));
        shown += "}";
    }
    if (CKivDSEnhancedMFCollection* const enhanced = Enhanced(facade)) {
        shown += "<" + Show(static_cast<const Facade&>(*enhanced));
        for (const Facade* const frame : (enhanced->*(&OpenCollection::GetCollectionVect))())
            shown += ";" + Show(*frame);
        shown += ">";
    }
    return shown;
}

CKivDSEnhancedMFCollection* Enhanced(const Facade& facade)
{
    return facade.*(&OpenCollection::m_pEnhancedMFCollection);
}

CountedAttribute::CountedAttribute(std::string_view text, int* deleted, int type) : m_pDeleted(deleted)
{
    m_nType = type;
    Fill(*this, text, false);
}

std::unique_ptr<CKivIPPScopeElementC> Scope(std::string_view uid)
{
    auto scope = std::make_unique<CKivIPPScopeElementC>();
    scope->SetType(g_ScopeElementType);
    EXPECT_TRUE(scope->Initialize(3));
    int level = 0;
    for (const auto& [type, text] :
         {std::pair(g_StudyUID, std::string("1")), {g_SeriesUID, "1.2"}, {g_ImageUID, std::string(uid)}}) {
        std::unique_ptr<CKivIPPScopeItemC> item(g_pItemFactory->Create(type));
        item->SetType(type);
        EXPECT_TRUE(item->SetUID(text.c_str()));
        EXPECT_TRUE(scope->SetScopeItemType(level, type));
        EXPECT_TRUE(scope->AddItem(level++, item.release(), false));
    }
    return scope;
}

void SetScope(Facade& collection, std::string_view uid)
{
    collection.SetScope(Scope(uid).get(), true);
}

std::string ScopeOf(const Facade& collection)
{
    const std::unique_ptr<CKivIPPScopeC> scope(collection.GetScope());
    const auto* const element = dynamic_cast<const CKivIPPScopeElementC*>(scope.get());
    const CKivIPPScopeItemC* const image = element ? element->GetItemPtr(2, 0) : nullptr;
    int first = 0, last = 0;
    if (image && image->GetFrames(&first, &last))
        return image->GetUIDPtr() + ("[" + std::to_string(first)) + "-" + std::to_string(last) + "]";
    return image ? image->GetUIDPtr() : element ? "no image" : "none";
}

} // namespace kivds::test
