#include "tests/support/GuardedBytes.h"

#include <new>
#include <stdexcept>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace kivds::test {

namespace {

#if defined(_WIN32)
std::size_t PageSize()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}
void* NewPages(std::size_t size, std::size_t guard)
{
    auto* const pages =
        static_cast<char*>(VirtualAlloc(nullptr, size + guard, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD former = 0;
    return pages && VirtualProtect(pages + size, guard, PAGE_NOACCESS, &former) ? pages : nullptr;
}
void DeletePages(void* pages, std::size_t)
{
    VirtualFree(pages, 0, MEM_RELEASE);
}
#else
std::size_t PageSize()
{
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
void* NewPages(std::size_t size, std::size_t guard)
{
    void* const pages =
        mmap(nullptr, size + guard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const bool guarded =
        pages != MAP_FAILED && mprotect(static_cast<char*>(pages) + size, guard, PROT_NONE) == 0;
    return guarded ? pages : nullptr;
}
void DeletePages(void* pages, std::size_t size)
{
    munmap(pages, size);
}
#endif

} // namespace

GuardedBytes::GuardedBytes(std::size_t most)
    : m_nSize((most / PageSize() + 1) * PageSize()),
      m_pPages(static_cast<char*>(NewPages(m_nSize, PageSize())))
{
    if (!m_pPages)
        throw std::bad_alloc();
}

GuardedBytes::~GuardedBytes()
{
    DeletePages(m_pPages, m_nSize + PageSize());
}

const char* GuardedBytes::Put(std::string_view bytes)
{
    if (bytes.size() > m_nSize)
        throw std::length_error("more bytes than there is room for");
    char* const begin = m_pPages + (m_nSize - bytes.size());
    bytes.copy(begin, bytes.size());
    return begin;
}

} // namespace kivds::test
