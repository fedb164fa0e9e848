// Short ways to make attributes, values and collections, and to look into them.
#pragma once

#include "KivDSDataU.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kivds::test {

using AttributePtr = std::unique_ptr<CKivDSDicomAttribute>;
using CollectionPtr = std::unique_ptr<CKivDSDicomAttributeCollection>;

constexpr int AE = 0, AS = 1, AT = 2, CS = 3, DA = 4, DS = 6, FD = 7, FL = 8, IS = 9, LO = 10, LT = 11,
              SH = 14, SL = 15, SQ = 16, SS = 17, TM = 19, UI = 20, UL = 21, US = 22, UN = 23, PN = 26,
              OB = 27, OW = 28, DT = 30;

/// An attribute initialised from an element's bytes, as files hold them.
AttributePtr Attribute(unsigned long tag, int representation, std::string_view bytes,
                       bool mustReplicate = false, int inSequenceIndex = 0, int expectedCount = 1);

/// A US attribute with one value of these elements.
AttributePtr Numbers(unsigned long tag, std::initializer_list<unsigned short> elements,
                     bool mustReplicate = false);

/// A multi-frame attribute (frames 1 to the number of elements) with one element a frame.
AttributePtr PerFrame(unsigned long tag, std::initializer_list<unsigned short> elements);

/// A code record with these three texts.
tagSKivDSCodeSequenceAttributeInfo Code(std::string_view value, std::string_view scheme,
                                        std::string_view meaning);

/// An attribute for each kind of storage, all under one tag: some inside the object or not, of several
/// values, with frames, code sequences (the last two).
constexpr int kKinds = 9;
constexpr unsigned long kKindTag = 0x00091001;
AttributePtr OfKind(int kind);

/// Adds an attribute that the collection is to own; fails the test when it is refused.
void Add(CKivDSDicomAttributeCollection& collection, AttributePtr attribute, bool merge = true);

/// A collection of US attributes: {tag, element}.
CollectionPtr Collection(std::initializer_list<std::pair<unsigned long, unsigned short>> attributes);

/// Every value as text, for comparison and for messages: "[1 2] [3]" for numbers, "[CT]" for characters
/// without their NUL. Elements are separated by blanks, values by blanks between brackets.
std::string Text(const CKivDSDicomAttribute& attribute);

/// Every attribute as "(gggg,eeee)=text", single-frame part first, a multi-frame attribute with "/mf" behind
/// its tag.
std::string Text(CKivDSDicomAttributeCollection& collection);

/// What Serialize writes, after asking for the length.
std::string Stream(const CKivDSDicomAttribute& attribute);
std::string Stream(CKivDSDicomAttributeCollection& collection);
std::string Stream(const CKivDSBaseDicomAttributeCollection& part);

} // namespace kivds::test
