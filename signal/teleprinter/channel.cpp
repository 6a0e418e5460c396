// SPDX-License-Identifier: MIT
#include "signal/teleprinter/channel.h"

namespace teleprinter {

Channel::~Channel() = default;

} // namespace teleprinter
