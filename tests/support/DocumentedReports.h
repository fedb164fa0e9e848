// Every report that the library's documentation names, as one table that is kept apart from the library's own
// texts, so that a misspelt or an undocumented report shows. Constant data; any thread may look it up.
#pragma once

namespace kivds::test {

enum class Documented
{
    No,
    Yes,
    WithoutMemory ///< made only when memory cannot be had, or when the platform fails
};

/// What is said about the report `message` with `code` under the function text `function`.
Documented Lookup(const wchar_t* function, const wchar_t* message, int code);

} // namespace kivds::test
