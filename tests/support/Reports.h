// The fixture that every test of the library uses: it listens to the error sink, and a test fails on any
// report that it did not claim, and on any claimed report that did not come.
#pragma once

#include "platform/CKivIPBaseError.h"

#include <gtest/gtest.h>

#include <deque>
#include <mutex>
#include <string>

namespace kivds::test {

struct Report
{
    std::wstring m_Function;
    std::wstring m_Message;
    int m_nCode;

    friend bool operator==(const Report& a, const Report& b)
    {
        return a.m_Function == b.m_Function && a.m_Message == b.m_Message && a.m_nCode == b.m_nCode;
    }
    friend std::ostream& operator<<(std::ostream& out, const Report& report);
};

class ReportTest : public ::testing::Test
{
protected:
    ReportTest() { g_KivIPError.SetListener(&ReportTest::Listen, this); }
    ~ReportTest() override { g_KivIPError.SetListener(nullptr, nullptr); }

    void TearDown() override;

    /// Claims the earliest report not claimed yet; it must be this one.
    void Claim(const std::wstring& function, const std::wstring& message, int code = 0);
    /// Expects that an operation has failed, or given nothing, and claims why.
    void Refused(bool done, const std::wstring& function, const std::wstring& message, int code = 0);
    /// Claims all reports made so far, whatever they say; for tests of survival, not of words. Gives their
    /// number.
    std::size_t ClaimAll();
    /// Whether every report made so far has been claimed.
    bool NothingReported();

private:
    static void Listen(void* context, const wchar_t* function, const wchar_t* message, int code);

    std::mutex m_Mutex;
    std::deque<Report> m_Reports;
};

} // namespace kivds::test
