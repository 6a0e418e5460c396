// SPDX-License-Identifier: MIT
// Stage: are the gaps filled with an echo? It is weaker than its mark, and comes with the same
// delay after every mark. Fading makes some marks weak, but they follow no others.
#pragma once

#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

/// Whether the gaps in the last steps are filled where an echo of the marks would be, and only
/// there; where it was so before (`former`), half of that is enough. `powers` are those of the
/// steps, the newest first; `noise` is the variance that noise gives one step.
bool hasEcho(const std::vector<float>& powers, double noise, double step_s, bool former,
             const EchoParameters& parameters);

} // namespace demodulator
