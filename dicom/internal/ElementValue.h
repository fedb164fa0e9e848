// What an element's value field holds: its value representation, its bytes, its text without padding.
#pragma once

#include "dicom/internal/VrTable.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcfcache.h>
#include <dcmtk/dcmdata/dcitem.h>
#include <dcmtk/dcmdata/dcsequen.h>

#include <string>
#include <string_view>
#include <vector>

class DcmPixelSequence; // DCMTK's

namespace kivds {

constexpr unsigned long kSpecificCharacterSet = 0x00080005;
constexpr unsigned long kPixelData = 0x7FE00010;
constexpr unsigned long kNumberOfFrames = 0x00280008;
constexpr unsigned long kFrameIncrementPointer = 0x00280009;
constexpr unsigned long kPixelRepresentation = 0x00280103;
constexpr unsigned long kSharedFunctionalGroups = 0x52009229;
constexpr unsigned long kPerFrameFunctionalGroups = 0x52009230;

unsigned long TagOf(const DcmObject& object);
/// (gggg,eeee)
std::string TagText(unsigned long tag);
/// Group lengths (PS3.5 7.2), delimiters and file meta information are no elements of an object.
bool IsOutsideObject(unsigned long tag);

/// The items of a sequence, the elements of an item, in document order.
std::vector<DcmItem*> ItemsOf(DcmSequenceOfItems& sequence);
std::vector<DcmElement*> ElementsOf(DcmItem& item);
DcmElement* FindElement(DcmItem& item, unsigned long tag);
/// The element as a sequence; null when it has a value field.
DcmSequenceOfItems* AsSequence(DcmElement& element);

/// The value representation; where the data set does not say whether it is US or SS, `signedPixels` does
/// (PS3.5 A.1).
const Vr& VrOf(DcmElement& element, bool signedPixels);
/// Whether Pixel Representation (0028,0103) of an item says signed; `inherited` when the item has none.
bool HasSignedPixels(DcmItem& item, bool inherited);

/// The fragments of encapsulated pixel data, the offset table first; null when it is native.
DcmPixelSequence* FragmentsOf(DcmElement& element);
/// How many frames its bytes can hold: at least a fragment each, or a bit.
unsigned long MostFramesOf(DcmElement& pixelData);

/// Reads values, those that are still in the file without keeping them in the data set.
class ValueReader
{
public:
    /// The value field's bytes, little-endian. False with the cause in `error`.
    bool Read(DcmElement& element, std::string& bytes, std::string& error);
    /// `length` of these bytes from `offset` on.
    bool ReadPart(DcmElement& element, Uint32 offset, Uint32 length, char* bytes, std::string& error);
    /// The text of an element of an item as one value, without trailing padding; empty when it is absent.
    std::string ReadText(DcmItem& item, unsigned long tag);

private:
    DcmFileCache m_Cache; // keeps the file open between values
};

/// Removes the padding (PS3.5 6.2): trailing blanks and NULs of each backslash-separated value, leading
/// blanks too of numbers, of whole texts (LT, ST, UT, UR) at the end alone.
void RemovePadding(std::string& text, const Vr& vr);

/// The backslash-separated values of a text.
std::vector<std::string_view> SplitValues(std::string_view text);

} // namespace kivds
