// Gathers the images of a series in a compound collection and lists what varies from image to image.
#include "KivDSDataU.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

void AddText(CKivDSDicomAttributeCollection& image, unsigned long tag, const std::string& text)
{
    const int LO = 10;
    image.AddElement(tag, LO, int(text.size()), text.data());
}

} // namespace

int main()
{
    // The compound collection belongs to the facade that holds it.
    auto* const series = new CKivDSCompoundCollection;
    CKivDSDicomAttributeCollection facade(series);
    for (int number = 1; number <= 3; ++number) {
        CKivDSDicomAttributeCollection image;
        AddText(image, 0x00080060, "CT");
        AddText(image, 0x00100020, "P-007");
        AddText(image, 0x00200013, std::to_string(number));
        AddText(image, 0x00201041, "-" + std::to_string(5 * number) + ".0");
        series->AddCollection(&image, false); // shares the image's attributes, which outlive the image
    }

    // Flattened, each tag holds every value that some image has, once: one value, and it does not vary.
    std::unique_ptr<CKivDSDicomAttributeCollection> flat(
        CKivDSDicomAttributeCollection::ConvertCompoundToFlatCollection(facade));
    if (!flat)
        return 1;
    CKivDSDicomAttributeCollectionIterator attributes(*flat, true, true);
    for (auto* attribute = attributes.GetFirstAttribute(); attribute;
         attribute = attributes.GetNextAttribute()) {
        unsigned long tag = 0;
        int values = 0;
        attribute->GetTag(&tag);
        attribute->GetNumberOfValues(&values);
        if (values > 1)
            std::printf("(%04lx,%04lx) varies: %d values\n", tag >> 16, tag & 0xFFFF, values);
    }
}
