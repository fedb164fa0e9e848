#include "tests/support/Hex.h"

#include <algorithm>
#include <stdexcept>

namespace kivds::test {

std::string Bytes(std::string_view hex)
{
    std::string digits;
    for (std::size_t i = 0; i < hex.size(); ++i) {
        if (hex.substr(i, 2) == "//")
            i = std::min(hex.find('\n', i), hex.size());
        else if (hex[i] != ' ' && hex[i] != '\n')
            digits += hex[i];
    }
    if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        throw std::invalid_argument("not pairs of hexadecimal digits: " + digits);
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

std::string Int(long long number)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(number >> shift & 0xFF);
    return bytes;
}

std::string Hex(std::string_view bytes)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string hex;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        hex += digits[byte / 16];
        hex += digits[byte % 16];
        hex += (i + 1) % 16 == 0 ? '\n' : ' ';
    }
    return hex;
}

} // namespace kivds::test
