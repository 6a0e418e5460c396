// SPDX-License-Identifier: MIT
#include "signal/morse/symbolsink.h"

#include "signal/morse/observer.h"

namespace demodulator {

SymbolSink::~SymbolSink() = default;

Observer::~Observer() = default;

} // namespace demodulator
