#include "tools/Print.h"

#include "tools/Console.h"
#include "tools/Text.h"

#include <fmt/core.h>

namespace kivds::tool {

void PrintCollection(const Collection& collection, Console& console, const std::string& indent)
{
    TextForm form(collection);
    PrintCollection(collection, form, console, indent);
}

void PrintCollection(const Collection& collection, TextForm& form, Console& console,
                     const std::string& indent)
{
    for (const Attribute* const attribute : SortedAttributesOf(collection))
        console.Print(form.LineOf(*attribute, indent));
    int number = 0;
    for (const Collection* const frame : FramesOf(collection)) {
        console.Print(Line().Add(indent).Add(fmt::format("Frame {}", ++number), Style::Bold));
        PrintCollection(*frame, form, console, indent + "  ");
    }
}

} // namespace kivds::tool
