// Makes the attribute of an element, and says what of the element an attribute cannot hold.
#pragma once

#include "attribute/CKivDSCodeSequenceAttribute.h"
#include "dicom/DicomImport.h"
#include "dicom/internal/ElementValue.h"

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kivds {

class AttributeMaker
{
public:
    /// For elements of `object`. Warnings go to `warnings`.
    AttributeMaker(DcmItem& object, std::vector<DicomWarning>& warnings);

    /// `index`: the in-sequence index of the values, negative for none. Pixel Data and sequences give
    /// placeholders, a code sequence its records, an element without value an attribute without values.
    std::unique_ptr<CKivDSDicomAttribute> Make(DcmElement& element, bool signedPixels, bool mustReplicate,
                                               int index);
    /// The attribute of a code sequence; null when the sequence is none.
    std::unique_ptr<CKivDSCodeSequenceAttribute> MakeCodes(unsigned long tag, DcmSequenceOfItems& sequence);
    /// The text of an element of an item; see ValueReader.
    std::string ReadText(DcmItem& item, unsigned long tag) { return m_Reader.ReadText(item, tag); }

    /// Says once that `tag` is not wholly held.
    void Warn(unsigned long tag, std::string text);

private:
    bool ReadCode(DcmItem& item, tagSKivDSCodeSequenceAttributeInfo& code);
    void InitFromText(CKivDSDicomAttribute& attribute, unsigned long tag, const Vr& vr, bool mustReplicate,
                      int index);
    void InitFromBinary(CKivDSDicomAttribute& attribute, unsigned long tag, const Vr& vr, bool mustReplicate,
                        int index);
    void WarnOfLostValues(const CKivDSDicomAttribute& attribute, unsigned long tag, const Vr& vr);

    std::vector<DicomWarning>& m_Warnings;
    std::set<std::pair<unsigned long, std::string>> m_Said;
    ValueReader m_Reader;
    bool m_bChinese;     // the object's character set is GB18030 or GBK
    std::string m_Bytes; // of the element at hand; kept for its room
};

} // namespace kivds
