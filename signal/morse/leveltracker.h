// SPDX-License-Identifier: MIT
// Stage: follow the level. How strong the next mark will be, from how strong the last ones were.
#pragma once

#include "signal/morse/heardmark.h"
#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

/// The power of a step with the key down, once `elapsed_s` have passed since it was `signal`. It
/// stays when there is no mark. `noise` is the variance that noise gives one step.
double trackLevel(const std::vector<HeardMark>& marks, double signal, double noise,
                  double elapsed_s, const LevelParameters& parameters);

} // namespace demodulator
