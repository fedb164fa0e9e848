// Adds an attribute made of bytes, finds it, writes the stream and reads it back.
#include "KivDSDataU.h"

#include <iostream>
#include <string>

int main()
{
    const unsigned long patientID = 0x00100020; // (0010,0020) Patient ID
    const int LO = 10;                          // the code of its representation, LO
    const std::string bytes = "P-007";

    CKivDSDicomAttributeCollection collection;
    collection.AddElement(patientID, LO, int(bytes.size()), bytes.data());

    int size = 0;
    collection.Serialize(nullptr, size); // a null buffer asks for the length
    std::string stream(size_t(size), '\0');
    collection.Serialize(stream.data(), size);

    CKivDSDicomAttributeCollection received;
    const CKivDSDicomAttribute* found = nullptr;
    if (!received.Deserialize(stream.data(), int(stream.size()), size, true) ||
        !received.GetAttribute(patientID, &found, true, true))
        return 1;
    std::cout << "Patient ID " << found->GetValuePtr(0)->pData << ", a stream of " << size << " bytes\n";
}
