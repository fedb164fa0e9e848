// Memory whose end cannot be read past: bytes are placed so that the byte behind them lies on a page that may
// not be touched. A read there ends the program, sanitizers or not.
#pragma once

#include <cstddef>
#include <string_view>

namespace kivds::test {

class GuardedBytes
{
public:
    /// Room for `most` bytes at once.
    explicit GuardedBytes(std::size_t most);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    /// A copy of `bytes` in front of the guard page; lent until the next call.
    const char* Put(std::string_view bytes);

private:
    std::size_t m_nSize; // of the pages that can be touched
    char* m_pPages;
};

} // namespace kivds::test
