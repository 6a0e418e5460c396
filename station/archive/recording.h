// SPDX-License-Identifier: MIT
// A recording as the archive knows it, so that it is archived once however often it is tried.
#pragma once

#include <QString>
#include <QStringList>

namespace morsehost {

/// The same for the same content decoded in the same way, whatever its file is called: from its
/// size, all of its bytes where they are few (16 MiB), else 64 pieces spread over them, and the
/// words of `decoding`. Empty when the file cannot be read.
QString recordingKey(const QString& path, const QStringList& decoding);

} // namespace morsehost
