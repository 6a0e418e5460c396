// SPDX-License-Identifier: MIT
// A process that has nearly all the files open that it may.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

// This process can open only so many files more while one of these lives.
class FewDescriptors
{
public:
    explicit FewDescriptors(rlim_t left)
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit limit = m_before;
        const int next = open("/dev/null", O_RDONLY);
        close(next);
        limit.rlim_cur = static_cast<rlim_t>(next) + left;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit m_before = {};
};
