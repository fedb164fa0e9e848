// Writes a DICOM file in Explicit VR Little Endian, exactly as a text says, to standard output:
//     dicom_bytes < TEXT > FILE
// An element is a tag, a value representation and a value: "0008,0060 CS "CT"", with \xHH for any byte, or
// items between brackets, each of them elements between braces: "0008,1140 SQ [{0020,4000 LT "a "} {}]".
// Values are not padded, and nothing is checked. "raw "BYTES"" stands for itself. A first word "syntax UID"
// names another transfer syntax in the file meta information.
#include "tests/support/DicomBytes.h"

#include <iomanip>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace {

using namespace kivds::test;

/// A quoted value at the text's front, which it takes.
std::string TakeValue(std::istream& text)
{
    std::string quoted, value;
    text >> std::quoted(quoted, '"', '\0'); // escapes are ours
    for (std::size_t i = 0; i < quoted.size(); ++i) {
        if (quoted.compare(i, 2, "\\x") == 0) {
            value += static_cast<char>(std::stoi(quoted.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            value += quoted[i];
        }
    }
    return value;
}

char Take(std::istream& text)
{
    char next = '\0';
    text >> next;
    return next;
}

std::string TakeElements(std::istream& text)
{
    std::string elements, tag, representation;
    while ((text >> std::ws).peek() != '}' && text >> tag) {
        if (tag == "raw") {
            elements += TakeValue(text);
            continue;
        }
        const unsigned long number = std::stoul(tag.substr(0, 4) + tag.substr(5), nullptr, 16);
        text >> representation >> std::ws;
        if (text.peek() == '"') {
            elements += Element(number, representation, TakeValue(text));
            continue;
        }
        std::string items;
        for (char next = Take(text); next != ']'; next = Take(text)) {
            if (next == '{') {
                items += Item(TakeElements(text));
                next = Take(text);
            } else if (next != '[') {
                throw std::invalid_argument("no value behind " + tag);
            }
        }
        elements += Element(number, representation, items);
    }
    return elements;
}

} // namespace

int main()
{
    try {
        std::string word, syntax = kExplicit;
        if ((std::cin >> std::ws).peek() == 's')
            std::cin >> word >> syntax;
        const std::string file = DicomBytes(TakeElements(std::cin), syntax);
        std::cout.write(file.data(), static_cast<std::streamsize>(file.size()));
        return 0;
    } catch (const std::exception& wrong) {
        std::cerr << wrong.what() << '\n';
        return 2;
    }
}
