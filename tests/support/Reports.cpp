#include "tests/support/Reports.h"

#include "tests/support/DocumentedReports.h"

#include <ostream>

namespace kivds::test {

std::ostream& operator<<(std::ostream& out, const Report& report)
{
    // The library's report texts are plain ASCII.
    const auto narrow = [](const std::wstring& text) { return std::string(text.begin(), text.end()); };
    return out << '"' << narrow(report.m_Function) << "\", \"" << narrow(report.m_Message) << "\", "
               << report.m_nCode;
}

void ReportTest::Listen(void* context, const wchar_t* function, const wchar_t* message, int code)
{
    auto& test = *static_cast<ReportTest*>(context);
    const bool documented = Lookup(function, message, code) != Documented::No;
    const std::lock_guard<std::mutex> lock(test.m_Mutex);
    test.m_Reports.push_back({function, message, code});
    if (!documented)
        ADD_FAILURE() << "not documented: " << test.m_Reports.back();
}

void ReportTest::TearDown()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    for (const Report& report : m_Reports)
        ADD_FAILURE() << "unclaimed report: " << report;
}

void ReportTest::Claim(const std::wstring& function, const std::wstring& message, int code)
{
    const Report claimed = {function, message, code};
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Reports.empty()) {
        ADD_FAILURE() << "claimed but not reported: " << claimed;
        return;
    }
    EXPECT_EQ(m_Reports.front(), claimed);
    m_Reports.pop_front();
}

void ReportTest::Refused(bool done, const std::wstring& function, const std::wstring& message, int code)
{
    EXPECT_FALSE(done);
    Claim(function, message, code);
}

std::size_t ReportTest::ClaimAll()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const std::size_t count = m_Reports.size();
    m_Reports.clear();
    return count;
}

bool ReportTest::NothingReported()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Reports.empty();
}

} // namespace kivds::test
