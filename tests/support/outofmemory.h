// SPDX-License-Identifier: MIT
// Memory that runs out for a moment. Include it in one source of a program: it replaces the
// program's operator new, and so that of the libraries it has loaded.
#pragma once

#include <cstdlib>
#include <new>

/// The next allocation with operator new fails while one lives, and only that one.
class OutOfMemory
{
public:
    OutOfMemory() { isDue = true; }
    ~OutOfMemory() { isDue = false; }
    OutOfMemory(const OutOfMemory&) = delete;
    OutOfMemory& operator=(const OutOfMemory&) = delete;

    static bool HasHappened() { return !isDue; }

    static void* Allocate(std::size_t size)
    {
        if (isDue) {
            isDue = false;
            throw std::bad_alloc();
        }
        void* const memory = std::malloc(size > 0 ? size : 1);
        if (!memory)
            throw std::bad_alloc();
        return memory;
    }

private:
    inline static thread_local bool isDue = false;
};

void* operator new(std::size_t size)
{
    return OutOfMemory::Allocate(size);
}

// What it gives is taken back by the operator delete below, so it may not come from elsewhere.
void* operator new(std::size_t size, const std::nothrow_t& /*kind*/) noexcept
{
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
