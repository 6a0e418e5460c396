// SPDX-License-Identifier: MIT
// Large amounts of input.
#pragma once

namespace testsupport {

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MORSEHANDLER_TEST_IS_SANITIZED
#endif
#endif

/// As many, or a sixteenth of them under the address sanitizer: that takes ten times as long, and
/// finds nothing in millions that it does not find in their first.
constexpr int largeAmount(int count)
{
#ifdef MORSEHANDLER_TEST_IS_SANITIZED
    return count / 16;
#else
    return count;
#endif
}

} // namespace testsupport
