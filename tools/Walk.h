// The attributes and frames of collections.
#pragma once

#include "attribute/CKivDSCodeSequenceAttribute.h"
#include "collection/CKivDSDicomAttributeCollection.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kivds::tool {

using Attribute = CKivDSDicomAttribute;
using Collection = CKivDSDicomAttributeCollection;
using Code = tagSKivDSCodeSequenceAttributeInfo;

constexpr unsigned long kPixelData = 0x7FE00010;

enum class Part
{
    SingleFrame,
    MultiFrame,
    Both
};

/// The attributes of a collection, those of a part each in tag order, lent; of an enhanced multi-frame
/// collection those of its regular collection.
std::vector<const Attribute*> AttributesOf(const Collection& collection, Part part = Part::Both);
/// All of them in tag order.
std::vector<const Attribute*> SortedAttributesOf(const Collection& collection);

/// The per-frame collections of an enhanced multi-frame collection as they are held, lent; else none.
std::vector<const Collection*> FramesOf(const Collection& collection);
/// The collection itself, or the regular collection of an enhanced multi-frame collection; shares the parts.
std::unique_ptr<Collection> RegularOf(const Collection& collection);

unsigned long TagOf(const Attribute& attribute);
int NumberOfValues(const Attribute& attribute);
/// Whether the attribute stands for data that a collection does not keep: a sequence or pixel data.
bool IsPlaceholder(const Attribute& attribute);
/// The code records; null for an attribute that is no code sequence.
const CKivDSCodeSequenceAttribute* AsCodes(const Attribute& attribute);
/// The frames of a multi-frame attribute as runs from first to last; none when it is not multi-frame.
std::vector<std::pair<int, int>> FrameRunsOf(const Attribute& attribute);

/// The text fields of a code record by their keywords (PS3.6), in the record's order.
struct CodeField
{
    const char* keyword;
    const char* (*text)(const Code& code);
};
extern const CodeField g_CodeFields[9];

/// The text of all values of an attribute of a collection, backslashes between them; empty when there is
/// none.
std::string TextOf(const Collection& collection, unsigned long tag);
/// The characters of a value of character elements, without the NUL that ends them.
std::string_view TextOf(const SKivAGAttributeValue& value);
/// The first number of an attribute; `otherwise` when there is none.
int NumberOf(const Collection& collection, unsigned long tag, int otherwise);

} // namespace kivds::tool
