// Every report that docs/reports.md names, so that a misspelt or an undocumented report shows; and which of
// them have been made. Any thread.
#pragma once

#include <string>
#include <vector>

namespace kivds::test {

enum class Documented
{
    No,
    Yes,
    WithoutMemory ///< made only when memory cannot be had, or when the platform fails
};

/// What is said about the report `message` with `code` under the function text `function`, which has been
/// made. Allocates nothing after the first call.
Documented Lookup(const wchar_t* function, const wchar_t* message, int code);

/// "function: message has not been made" of each that should have been, or "... has been made" of one that is
/// said not to be possible.
std::vector<std::string> ReportsNotAsDocumented();

/// Listens to the error sink while it lives, for tests that care that reports are made, and not which. Keeps
/// no memory of its own.
class ReportCounter
{
public:
    ReportCounter();
    ~ReportCounter();
    ReportCounter(const ReportCounter&) = delete;
    ReportCounter& operator=(const ReportCounter&) = delete;

    int Count() const { return m_nCount; }
    int Undocumented() const { return m_nUndocumented; }

private:
    static void Listen(void* context, const wchar_t* function, const wchar_t* message, int code);

    int m_nCount = 0;
    int m_nUndocumented = 0;
};

} // namespace kivds::test
