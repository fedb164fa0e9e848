// An operation's voice: its name, stated once, and the ways in which it reports to the error sink.
// Reporting and returning the failure are one statement: `return op.Fail(L"Invalid byte size");`
#pragma once

#include "platform/CKivIPBaseError.h"

namespace kivds {

/// The report of a failure that has no words of its own, such as memory running out inside a container.
inline constexpr const wchar_t* kUnexpectedError = L"Unexpected error";

class Operation
{
public:
    constexpr explicit Operation(const wchar_t* name) noexcept : m_Name(name) {}

    void Report(const wchar_t* message, int code = 0) const noexcept
    {
        g_KivIPError.SetError(m_Name, message, code);
    }

    bool Fail(const wchar_t* message, int code = 0) const noexcept
    {
        Report(message, code);
        return false;
    }

    /// Runs `body` and gives its result. Any exception ends here: it is reported as `message`, unless that is
    /// null, and the result is false, null or zero.
    template <class Body>
    auto Guard(const wchar_t* message, Body&& body) const noexcept -> decltype(body())
    {
        using Result = decltype(body());
        try {
            return body();
        } catch (...) {
            if (message)
                Report(message);
            return Result();
        }
    }

private:
    const wchar_t* m_Name;
};

} // namespace kivds
