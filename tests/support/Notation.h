// Collections as short texts, so that the tests of operators, frames and streams can be tables.
//
//   "X1 Y2,3"         a plain collection: under the tag of letter X one value of one element, 1; under Y one
//                     value of two elements
//   "X1+2"            two values
//   "X1pr"            private, must be replicated
//   "X1|M1,2"         the multi-frame part behind a bar (in "X1|" it is there and empty); its attributes are
//                     multi-frame, frames 1 to the number of elements
//   "|M2s", "M1m"     a single-frame attribute in the multi-frame part, a multi-frame one in the other
//   "N3", "#2prs"     Number of Frames (0028,0008) as IS; the frame index attribute (3711,0090)
//   "X?"              an entry without an attribute (shown only)
//   "{X1;Y1}"         a compound collection of two members
//   "<X1;Y1;Y2>"      an enhanced multi-frame collection: the regular one, then one for each frame
//   "Z1<X1;Y1>"       the same beside a single-frame part
//   "-"               no part at all; as the regular collection of an enhanced one: none
#pragma once

#include "collection/internal/PartSharing.h"
#include "tests/support/Build.h"

#include <tuple>

namespace kivds::test {

using Facade = CKivDSDicomAttributeCollection;
using Part = CKivDSBaseDicomAttributeCollection;

constexpr const wchar_t* kCompoundRefused = L"Operation not supported on compound collections ";
constexpr const wchar_t* kEnhancedRefused = L"Operation not supported on enhanced MF collections ";

/// The rows of a table, for a loop with structured bindings.
template <class... Column>
using Rows = std::initializer_list<std::tuple<Column...>>;
using Txt = const char*;
using Wide = const wchar_t*;

/// The tag of a letter.
unsigned long Tag(char letter);

/// The attribute or the collection that a text says.
AttributePtr MakeAttribute(std::string_view text, bool multiFrame = false);
CollectionPtr Make(std::string_view text);

/// What a collection, a part or an attribute holds, in the same notation.
std::string Show(const Facade& collection);
std::string Show(const Part& part, bool multiFrame = false);
std::string Show(unsigned long tag, const CKivDSDicomAttribute& attribute, bool multiFrameExpected);

/// Applies the compound assignment of that name ("+=", "*=", "|=", "-=", "/=", "^=") to facades or parts.
constexpr Txt kAssignments[] = {"+=", "*=", "|=", "-=", "/=", "^="};
template <class Collection>
Collection& Apply(std::string_view name, Collection& a, const Collection& b)
{
    return name == "+="   ? a += b
           : name == "*=" ? a *= b
           : name == "|=" ? a |= b
           : name == "-=" ? a -= b
           : name == "/=" ? a /= b
                          : a ^= b;
}

/// A facade's parts, lent; null where there is none.
constexpr auto SinglePart = PartAccess::SinglePart;
constexpr auto MultiPart = PartAccess::MultiPart;
constexpr auto Compound = PartAccess::Compound;
CKivDSEnhancedMFCollection* Enhanced(const Facade& facade);

/// An attribute that counts its deletion, and may be of a type that the factory does not know (it cannot
/// copy it then).
class CountedAttribute : public CKivDSDicomAttribute
{
public:
    CountedAttribute(std::string_view text, int* deleted, int type = 0);
    ~CountedAttribute() override { ++*m_pDeleted; }

private:
    int* m_pDeleted;
};

/// A scope element of study "1", series "1.2" and the image `uid`.
std::unique_ptr<CKivIPPScopeElementC> Scope(std::string_view uid);
/// Gives a collection a copy of that scope, where it takes one.
void SetScope(Facade& collection, std::string_view uid);
/// The image that a collection's scope says, with its frames where it names them: "9", "9[3-3]"; "none".
std::string ScopeOf(const Facade& collection);

} // namespace kivds::test
