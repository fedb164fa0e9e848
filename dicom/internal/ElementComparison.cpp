#include "dicom/internal/ElementComparison.h"

#include "dicom/internal/ElementValue.h"

#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcpixseq.h>

#include <algorithm>

namespace kivds {
namespace {

constexpr unsigned long kDataSetPadding = 0xFFFCFFFC;

class Comparison
{
public:
    std::string Elements(DcmElement& a, bool signedA, DcmElement& b, bool signedB);

private:
    std::string Items(DcmSequenceOfItems& a, bool signedA, DcmSequenceOfItems& b, bool signedB);
    std::string Item(DcmItem& a, bool inheritedA, DcmItem& b, bool inheritedB);
    std::string Values(DcmElement& a, DcmElement& b);
    std::string Fragments(DcmPixelSequence& a, DcmPixelSequence& b);

    ValueReader m_ReaderA;
    ValueReader m_ReaderB;
    std::vector<char> m_BytesA;
    std::vector<char> m_BytesB;
};

/// The elements of an item in the order in which they would be encoded.
std::vector<DcmElement*> EncodedElementsOf(DcmItem& item)
{
    std::vector<DcmElement*> elements = ElementsOf(item);
    elements.erase(std::remove_if(elements.begin(), elements.end(),
                                  [](DcmElement* element) { return TagOf(*element) == kDataSetPadding; }),
                   elements.end());
    std::stable_sort(elements.begin(), elements.end(),
                     [](DcmElement* a, DcmElement* b) { return TagOf(*a) < TagOf(*b); });
    return elements;
}

std::string Comparison::Elements(DcmElement& a, bool signedA, DcmElement& b, bool signedB)
{
    const std::string place = TagText(TagOf(a));
    DcmSequenceOfItems* const itemsA = AsSequence(a);
    DcmSequenceOfItems* const itemsB = AsSequence(b);
    const Vr& vrA = VrOf(a, signedA);
    const Vr& vrB = VrOf(b, signedB);
    const bool isPixelData = TagOf(a) == kPixelData;
    if (&vrA != &vrB && !isPixelData)
        return place + " is " + std::string(vrA.name) + " and " + std::string(vrB.name);
    std::string difference;
    if (itemsA && itemsB) {
        difference = Items(*itemsA, signedA, *itemsB, signedB);
    } else if (isPixelData) {
        DcmPixelSequence* const fragmentsA = FragmentsOf(a);
        DcmPixelSequence* const fragmentsB = FragmentsOf(b);
        if (!fragmentsA != !fragmentsB)
            return place + " is encapsulated in one alone";
        difference = fragmentsA ? Fragments(*fragmentsA, *fragmentsB) : Values(a, b);
    } else {
        difference = Values(a, b);
    }
    return difference.empty() ? difference : place + difference;
}

std::string Comparison::Items(DcmSequenceOfItems& a, bool signedA, DcmSequenceOfItems& b, bool signedB)
{
    const std::vector<DcmItem*> itemsA = ItemsOf(a);
    const std::vector<DcmItem*> itemsB = ItemsOf(b);
    for (std::size_t i = 0; i < std::min(itemsA.size(), itemsB.size()); ++i) {
        const std::string difference = Item(*itemsA[i], signedA, *itemsB[i], signedB);
        if (!difference.empty())
            return " item " + std::to_string(i + 1) + " " + difference;
    }
    if (itemsA.size() != itemsB.size())
        return " has " + std::to_string(itemsA.size()) + " and " + std::to_string(itemsB.size()) + " items";
    return {};
}

std::string Comparison::Item(DcmItem& a, bool inheritedA, DcmItem& b, bool inheritedB)
{
    const bool signedA = HasSignedPixels(a, inheritedA);
    const bool signedB = HasSignedPixels(b, inheritedB);
    const std::vector<DcmElement*> elementsA = EncodedElementsOf(a);
    const std::vector<DcmElement*> elementsB = EncodedElementsOf(b);
    for (std::size_t i = 0; i < std::max(elementsA.size(), elementsB.size()); ++i) {
        const unsigned long tagA = i < elementsA.size() ? TagOf(*elementsA[i]) : ~0UL;
        const unsigned long tagB = i < elementsB.size() ? TagOf(*elementsB[i]) : ~0UL;
        if (tagA != tagB)
            return TagText(std::min(tagA, tagB)) + " is in one alone";
        std::string difference = Elements(*elementsA[i], signedA, *elementsB[i], signedB);
        if (!difference.empty())
            return difference;
    }
    return {};
}

std::string Comparison::Values(DcmElement& a, DcmElement& b)
{
    const Uint32 length = a.getLengthField();
    if (b.getLengthField() != length)
        return " has " + std::to_string(length) + " and " + std::to_string(b.getLengthField()) + " bytes";
    constexpr Uint32 kChunk = 1U << 20; // a multiple of every element size
    std::string error;
    for (Uint32 offset = 0; offset < length; offset += std::min(kChunk, length - offset)) {
        const Uint32 size = std::min(kChunk, length - offset);
        m_BytesA.resize(size);
        m_BytesB.resize(size);
        if (!m_ReaderA.ReadPart(a, offset, size, m_BytesA.data(), error) ||
            !m_ReaderB.ReadPart(b, offset, size, m_BytesB.data(), error))
            return " " + error;
        const auto [first, second] = std::mismatch(m_BytesA.begin(), m_BytesA.end(), m_BytesB.begin());
        if (first != m_BytesA.end())
            return " differs from byte " + std::to_string(offset + (first - m_BytesA.begin())) + " on";
    }
    return {};
}

std::string Comparison::Fragments(DcmPixelSequence& a, DcmPixelSequence& b)
{
    if (a.card() != b.card())
        return " has " + std::to_string(a.card()) + " and " + std::to_string(b.card()) + " fragments";
    DcmObject* fragmentA = nullptr;
    DcmObject* fragmentB = nullptr;
    for (unsigned long i = 0; i < a.card(); ++i) {
        fragmentA = a.nextInContainer(fragmentA);
        fragmentB = b.nextInContainer(fragmentB);
        auto* const elementA = dynamic_cast<DcmElement*>(fragmentA);
        auto* const elementB = dynamic_cast<DcmElement*>(fragmentB);
        if (!elementA || !elementB)
            return " has fragments that cannot be read";
        const std::string difference = Values(*elementA, *elementB);
        if (!difference.empty())
            return " fragment " + std::to_string(i) + difference;
    }
    return {};
}

} // namespace

std::string FirstDifferenceOf(DcmDataset& a, DcmDataset& b, unsigned long tag)
{
    DcmElement* const elementA = FindElement(a, tag);
    DcmElement* const elementB = FindElement(b, tag);
    if (!elementA && !elementB)
        return {};
    if (!elementA || !elementB)
        return "is in one alone";
    const std::string difference =
        Comparison().Elements(*elementA, HasSignedPixels(a, false), *elementB, HasSignedPixels(b, false));
    return difference.substr(std::min(difference.size(), TagText(tag).size() + 1));
}

} // namespace kivds
