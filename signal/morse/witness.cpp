// SPDX-License-Identifier: MIT
#include "signal/morse/witness.h"

namespace demodulator {

Witness::~Witness() = default;

} // namespace demodulator
