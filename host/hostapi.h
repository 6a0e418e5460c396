// SPDX-License-Identifier: MIT
// Marks what the host's libraries export. The plug-in keeps such symbols undefined; whichever
// host loads it supplies them.
#pragma once

#if defined(_WIN32)
#define HOST_API
#else
#define HOST_API __attribute__((visibility("default")))
#endif
