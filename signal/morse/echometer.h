// SPDX-License-Identifier: MIT
// Stage: are the gaps filled with an echo? It is weaker than its mark in much the same measure
// every time, and most gaps have it, while fading makes some marks weak and leaves the gaps empty.
#pragma once

#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

/// Whether most of the gaps are filled, of so many of the last steps; `former`, what it was before,
/// is given up less easily. `powers` are those of the steps in either order, `noise` is the
/// variance that noise gives one step.
bool hasEcho(const std::vector<float>& powers, double noise, double step_s, bool former,
             const EchoParameters& parameters);

} // namespace demodulator
