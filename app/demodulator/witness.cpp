// SPDX-License-Identifier: MIT
#include "app/demodulator/witness.h"

namespace demodulator {

Witness::~Witness() = default;

} // namespace demodulator
