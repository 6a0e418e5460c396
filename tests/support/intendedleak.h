// SPDX-License-Identifier: MIT
// Values that the tree refuses are used outside it and never freed, by the host's contract.
#pragma once

// GCC defines a macro under the address sanitizer, clang answers a question.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LEAKS_ARE_LOOKED_FOR
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define LEAKS_ARE_LOOKED_FOR
#endif

#ifdef LEAKS_ARE_LOOKED_FOR
#include <sanitizer/lsan_interface.h>
/// What is allocated while it lives is no leak to the address sanitizer.
using IntendedLeak = __lsan::ScopedDisabler;
#else
struct IntendedLeak
{
    IntendedLeak() {}
};
#endif
