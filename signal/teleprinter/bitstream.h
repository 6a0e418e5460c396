// SPDX-License-Identifier: MIT
// Stage: how well what was heard is explained by data without characters: elements of either tone
// at a steady pace. What a start-stop line gains by its form has to be more than that.
#pragma once

#include "signal/teleprinter/evidence.h"
#include "signal/teleprinter/parameters.h"

namespace teleprinter {

/// Logarithm of the likelihood against noise alone, of the best such stream: it may begin and end
/// anywhere, rest on one tone, and its clock may differ a little. For every element it pays that it
/// may be either. Cost grows linearly with the nodes.
float bitStreamScore(const Evidence& evidence, const BitStreamParameters& parameters = {});

} // namespace teleprinter
