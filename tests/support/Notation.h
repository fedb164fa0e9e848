// Collections as short texts, so that the tests of operators, frames and streams can be tables, and the
// tables of docs/collections.md, which explains the notation. Beyond it, in what is shown, "X?" is an entry
// without an attribute.
#pragma once

#include "collection/internal/PartSharing.h"
#include "tests/support/Build.h"
#include "tests/support/Examples.h"

namespace kivds::test {

using Facade = CKivDSDicomAttributeCollection;
using Part = CKivDSBaseDicomAttributeCollection;

/// What the reports' functions begin with.
inline const std::wstring kFacade = L"CKivDSDicomAttributeCollection::",
                          kPart = L"CKivDSBaseDicomAttributeCollection::",
                          kCompound = L"CKivDSCompoundCollection::",
                          kEnhanced = L"CKivDSEnhancedMFCollection::";
constexpr const wchar_t* kCompoundRefused = L"Operation not supported on compound collections ";
constexpr const wchar_t* kEnhancedRefused = L"Operation not supported on enhanced MF collections ";

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
