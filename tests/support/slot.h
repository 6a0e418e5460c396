// SPDX-License-Identifier: MIT
// Where a virtual operation stands in the table of its class, and a field in its object.
#pragma once

#include <cstddef>
#include <cstring>

#if defined(__GXX_ABI_VERSION)

/// The slot of a virtual member function, -1 for another one. In the Itanium C++ ABI a pointer to
/// a virtual member function holds the offset of its slot, and a flag beside or below it.
template <typename Function>
int slotOf(Function function)
{
    static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t parts[2];
    std::memcpy(parts, &function, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
    const bool isVirtual = parts[1] & 1;
    const std::ptrdiff_t offset = parts[0];
#else
    const bool isVirtual = parts[0] & 1;
    const std::ptrdiff_t offset = parts[0] - 1;
#endif
    return isVirtual ? static_cast<int>(offset / static_cast<std::ptrdiff_t>(sizeof(void*))) : -1;
}

template <typename Class, typename Result, typename... Arguments>
int slot(Result (Class::*function)(Arguments...))
{
    return slotOf(function);
}

/// Picks one of several functions of a name.
template <typename Result, typename... Arguments>
struct With
{
    template <typename Class>
    static int slot(Result (Class::*function)(Arguments...))
    {
        return slotOf(function);
    }
};

/// The distance of a field from the start of its object, in bytes.
template <typename Class, typename Type>
std::ptrdiff_t offsetOf(Type Class::*field)
{
    static_assert(sizeof field == sizeof(std::ptrdiff_t));
    std::ptrdiff_t offset;
    std::memcpy(&offset, &field, sizeof offset);
    return offset;
}

#endif
