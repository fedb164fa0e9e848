// Walks the frames of an enhanced multi-frame object, and the attributes of each frame with an iterator that
// is told when the collection under it changes.
#include "KivDSDataU.h"

#include <cstdio>
#include <memory>

namespace {

void AddNumber(CKivDSDicomAttributeCollection& collection, unsigned long tag, unsigned short number)
{
    const int US = 22;
    const char bytes[] = {char(number & 0xFF), char(number >> 8)};
    collection.AddElement(tag, US, int(sizeof bytes), bytes);
}

// Whoever changes a collection while iterators walk it derives a subject, and notifies.
class Editor : public CKivDSSubscriber
{
public:
    void Notify(CKivDSBase*, int, long, long) override {}

    void Remove(CKivDSDicomAttributeCollection& collection, unsigned long tag)
    {
        collection.RemoveAttribute(tag);
        NotifySubscribers(eNotifyInvalidateIterator, 0, 0);
    }
};

} // namespace

int main()
{
    CKivDSEnhancedMFCollection object;
    CKivDSDicomAttributeCollection shared;
    AddNumber(shared, 0x00280010, 512); // Rows
    AddNumber(shared, 0x00280011, 512); // Columns
    object.AddCollection(&shared, false);
    for (unsigned short frame = 0; frame < 3; ++frame) {
        CKivDSDicomAttributeCollection ownOfFrame;
        AddNumber(ownOfFrame, 0x00209157, frame); // Dimension Index Values
        object.AddMFCollection(&ownOfFrame, false);
    }

    Editor editor;
    for (int frame = 0; frame < object.GetNumberOfMFCollections(); ++frame) {
        const std::unique_ptr<CKivDSDicomAttributeCollection> complete(object.GetMFCollection(frame));
        if (!complete)
            return 1;
        CKivDSDicomAttributeCollectionIterator attributes(*complete, true, true);
        editor.Subscribe(&attributes);
        int walked = 0;
        for (auto* attribute = attributes.GetFirstAttribute(); attribute;
             attribute = attributes.GetNextAttribute())
            ++walked;

        attributes.GetFirstAttribute();
        editor.Remove(*complete, 0x00280011);
        const bool ended = attributes.GetNextAttribute() == nullptr; // rather than walk through what is gone
        editor.Unsubscribe(&attributes);
        std::printf("frame %d: %d attributes; after the change the walk %s\n", frame, walked,
                    ended ? "ended" : "went on");
    }
}
