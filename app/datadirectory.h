// SPDX-License-Identifier: MIT
// Where the files that ship with the program lie.
#pragma once

#include <QString>

namespace morsehost {

/// The file or folder `name` of the data, which lies in ../share/morsehandler beside the program:
/// installed there, or linked there by the build.
QString dataDirectory(const QString& name);

} // namespace morsehost
