// SPDX-License-Identifier: MIT
// What our own search for marks and spaces would read if everything but the text were known.
#pragma once

#include "reception/corpus.h"

#include <vector>

namespace reception {

/// Symbol codes of a recording: level, phase and tone are known at every moment, also the noise,
/// that a machine keys, and the speed to within 20 %; each decision waits for `late_s`. `clean` is
/// the same recording without noise, `carrier` that one with the key held down.
std::vector<int> boundOf(const Recording& recording, const Recording& clean,
                         const Recording& carrier, double late_s);

} // namespace reception
