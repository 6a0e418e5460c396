// SPDX-License-Identifier: MIT
// Values that the tree refuses are used outside it and never freed, by the host's contract.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
/// What is allocated while it lives is no leak to the address sanitizer.
using IntendedLeak = __lsan::ScopedDisabler;
#else
struct IntendedLeak
{
    IntendedLeak() {}
};
#endif
