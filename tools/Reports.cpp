#include "tools/Reports.h"

#include "platform/CKivIPBaseError.h"

#include <string_view>

namespace kivds::tool {
namespace {

/// The library's texts are ASCII.
std::string Narrow(std::wstring_view text)
{
    std::string narrow;
    for (const wchar_t c : text)
        narrow += c >= L' ' && c <= L'~' ? static_cast<char>(c) : '?';
    return narrow;
}

std::string Trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

Reports::Reports()
{
    g_KivIPError.SetListener(&Reports::Receive, this);
}

Reports::~Reports()
{
    g_KivIPError.SetListener(nullptr, nullptr);
}

void Reports::Receive(void* context, const wchar_t* function, const wchar_t* message, int)
{
    std::string& first = static_cast<Reports*>(context)->m_First;
    if (first.empty())
        first = Trimmed(Narrow(function)) + ": " + Trimmed(Narrow(message));
}

} // namespace kivds::tool
