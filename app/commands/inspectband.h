// SPDX-License-Identifier: MIT
// `morsehost inspect --band`: a whole band as a picture.
#pragma once

#include "app/options/arguments.h"

namespace morsehost {

/// As the run() of a command; `from_s` and `length_s` have been read from `arguments`.
int inspectBand(Arguments& arguments, double from_s, double length_s);

} // namespace morsehost
