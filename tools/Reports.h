// What the library reported to the error sink while one of these objects lives; only one lives at a time.
#pragma once

#include <string>
#include <vector>

namespace kivds::tool {

class Reports
{
public:
    Reports();
    ~Reports();
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    /// The first report, which is the innermost operation's, as "function: message"; empty when there is
    /// none.
    const std::string& First() const { return m_First; }

private:
    static void Receive(void* context, const wchar_t* function, const wchar_t* message, int code);

    std::string m_First;
};

} // namespace kivds::tool
