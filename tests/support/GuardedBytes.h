// Bytes whose end cannot be read past unnoticed.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace kivds::test {

/// In a heap block of exactly their length, for sanitizers to notice.
class Exact
{
public:
    explicit Exact(std::string_view bytes)
        : m_Block(new char[bytes.size()]), m_Size(static_cast<int>(bytes.size()))
    {
        bytes.copy(m_Block.get(), bytes.size());
    }
    char* Data() const { return m_Block.get(); }
    int Size() const { return m_Size; }

private:
    std::unique_ptr<char[]> m_Block;
    int m_Size;
};

/// Placed so that the byte behind them lies on a page that may not be touched. A read there ends the program,
/// sanitizers or not.
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
