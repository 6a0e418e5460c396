// SPDX-License-Identifier: MIT
// Latin-1 texts that stand ready when the program is loaded, with every compiler.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include <QLatin1String>

/// QLatin1String counts the characters itself only where the compiler can do so beforehand.
template <int Size>
constexpr QLatin1String literal(const char (&text)[Size])
{
    return QLatin1String(text, Size - 1);
}
