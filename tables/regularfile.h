// SPDX-License-Identifier: MIT
// Opens the small files that an operator supplies, and nothing that merely bears such a name.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include <QFile>

/// Larger files are none of ours. Far above any real table, and low enough for the text of the
/// whole file to fit into one string.
constexpr qint64 MAX_FILE_BYTES = qint64(256) * 1024 * 1024;

/// Opens `file` for reading, without translation of line ends. False for whatever is no regular
/// file (a folder, a pipe that nobody writes to, a device without end), for one that is larger
/// than MAX_FILE_BYTES, and for one that cannot be opened.
bool openRegularFile(QFile& file);
