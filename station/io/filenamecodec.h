// SPDX-License-Identifier: MIT
// Words and file names as bytes of any kind, without loss.
#pragma once

namespace morsehost {

/// From now on local text is UTF-8 whatever the locale says, and a byte that is no UTF-8 becomes a
/// lone surrogate (0xFF: U+DCFF), which is written as that byte again. To be called once, before
/// the application's words are looked at.
void useFileNameCodec();

} // namespace morsehost
