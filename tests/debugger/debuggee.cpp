// Objects for a debugger to look at, from Look's caller.
#include "KivDSDataU.h"

#include <initializer_list>
#include <string>

namespace {

void Look() {}

void Add(CKivDSDicomAttributeCollection& collection, unsigned long tag, int code, const std::string& bytes,
         int lastFrame = 0)
{
    CKivDSDicomAttribute* const attribute = g_DicomAttributeFactory.CreateDicomAttribute(0);
    attribute->InitFromDicomData(tag, code, int(bytes.size()), bytes.data(), nullptr, false, false, -1, 1);
    if (lastFrame > 0)
        attribute->SetMultiFrameInfo(1, lastFrame);
    collection.AddAttribute(attribute, true);
}

} // namespace

int main()
{
    constexpr int CS = 3, DS = 6, LO = 10, SQ = 16, US = 22, UN = 23;

    CKivDSDicomAttributeCollection plain;
    Add(plain, 0x00100020, LO, "P-007\\M\xFCller");
    Add(plain, 0x00180050, DS, "-1.5\\20");
    Add(plain, 0x00089215, SQ, "");
    Add(plain, 0x00280010, US, {2, 2}); // 514
    Add(plain, 0x00091001, UN, {1, 127});
    Add(plain, 0x00201041, DS, "1\\2\\3", 3);
    tagSKivDSCodeSequenceAttributeInfo chest = {"51185008", "SCT", "", "Chest", "", "", "", 0, "", ""};
    plain.AddAttribute(new CKivDSCodeSequenceAttribute(0x00082218, chest), true);
    const CKivDSDicomAttribute* number = nullptr;
    plain.GetAttribute(0x00280010, &number, true, true);

    struct Member : CKivDSDicomAttributeCollection
    {
        using CKivDSDicomAttributeCollection::GetMapPtr;
    } member;
    Add(member, 0x00080060, CS, "CT");
    member.GetMapPtr(); // which makes a map of the array
    auto* const series = new CKivDSCompoundCollection;
    const CKivDSDicomAttributeCollection compound(series);
    series->AddCollection(&member, false);
    series->AddCollection(&member, true);

    auto* const object = new CKivDSEnhancedMFCollection;
    const CKivDSDicomAttributeCollection enhanced(object);
    object->AddCollection(&member, false);
    for (const char* position : {"1", "2"}) {
        CKivDSDicomAttributeCollection frame;
        Add(frame, 0x00201041, DS, position);
        object->AddMFCollection(&frame, false);
    }
    const CKivDSDicomAttributeCollection none(false);
    Look();
}
