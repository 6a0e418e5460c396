// SPDX-License-Identifier: MIT
// What our own search for marks and spaces would read if everything but the text were known.
#pragma once

#include "reception/corpus.h"

#include <vector>

namespace reception {

/// Symbol codes of a recording whose tone, phase, level, noise and keying are steady: all of these
/// are known, also that a machine keys, the speed to within 20 %, and each decision waits for
/// `late_s`. `clean` is the same recording without noise.
std::vector<int> boundOf(const Recording& recording, const Recording& clean, double late_s);

} // namespace reception
