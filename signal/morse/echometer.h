// SPDX-License-Identifier: MIT
// Stage: are the gaps filled with an echo? It is weaker than its mark in much the same measure
// every time, and a good part of the gaps has it, while fading makes some marks weak and leaves
// the gaps empty.
#pragma once

#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

/// Whether a good part of the gaps in the last steps is filled; where it was so before (`former`),
/// a smaller part is enough. `powers` are those of the steps in either order, `noise` is the
/// variance that noise gives one step.
bool hasEcho(const std::vector<float>& powers, double noise, double step_s, bool former,
             const EchoParameters& parameters);

} // namespace demodulator
