#include "tests/support/Hex.h"

#include <stdexcept>

namespace kivds::test {

std::string Bytes(std::string_view hex)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string bytes;
    int pending = -1; // the high digit of a pair, once it has been read
    for (std::size_t i = 0; i < hex.size(); ++i) {
        if (hex.substr(i, 2) == "//") {
            i = hex.find('\n', i);
            if (i == std::string_view::npos)
                break;
            continue;
        }
        if (hex[i] == ' ' || hex[i] == '\n')
            continue;
        const std::size_t digit = digits.find(hex[i]);
        if (digit == std::string_view::npos)
            throw std::invalid_argument("not hexadecimal: " + std::string(hex.substr(i)));
        if (pending >= 0)
            bytes.push_back(
                static_cast<char>(static_cast<unsigned char>(pending * 16 + static_cast<int>(digit))));
        pending = pending >= 0 ? -1 : static_cast<int>(digit);
    }
    if (pending >= 0)
        throw std::invalid_argument("half a byte at the end");
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
