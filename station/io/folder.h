// SPDX-License-Identifier: MIT
// A folder for what is kept, tried before hours of reception depend on it.
#pragma once

#include <QString>

namespace morsehost {

/// Creates the folder, with those above it. Returns why no file can be written there; empty when
/// one can, which only writing one shows: the system may refuse for many reasons.
QString makeWritable(const QString& folder);

} // namespace morsehost
