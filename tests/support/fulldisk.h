// SPDX-License-Identifier: MIT
// A disk that is full for a while.
#pragma once

#include <csignal>
#include <sys/resource.h>

// No file of this process can grow beyond a size while one of these lives: a disk that is full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t size_bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small = {size_bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before = {};
};
