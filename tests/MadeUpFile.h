// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

/// A file that the kernel makes up while it is read: it calls itself a regular one and empty, and has more than 5 MiB
/// as long as this object lives.
class MadeUpFile {
public:
    static constexpr const char* path = "/proc/self/smaps";

    MadeUpFile() {
        m_pages = static_cast<char*>(
            ::mmap(nullptr, count * m_pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        EXPECT_NE(static_cast<void*>(m_pages), MAP_FAILED);
        // Neighbours that differ are told of one by one, with some 600 bytes each.
        for (std::size_t page = 0; page < count; page += 2) {
            EXPECT_EQ(::mprotect(m_pages + page * m_pageSize, m_pageSize, PROT_READ), 0);
        }
    }
    MadeUpFile(const MadeUpFile&) = delete;
    MadeUpFile& operator=(const MadeUpFile&) = delete;
    ~MadeUpFile() { ::munmap(m_pages, count * m_pageSize); }

private:
    static constexpr std::size_t count = 12000; // pages

    const std::size_t m_pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    char* m_pages = nullptr;
};
