// SPDX-License-Identifier: MIT
// Where the files that ship with the program lie.
#pragma once

#include <QString>

namespace morsehost {

/// The file or folder `name` of the installed data, else of the source tree that the program was
/// built in.
QString dataDirectory(const QString& name);

} // namespace morsehost
