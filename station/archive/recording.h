// SPDX-License-Identifier: MIT
// A recording as the archive knows it, so that it is archived once however often it is tried.
#pragma once

#include <QString>
#include <QStringList>

namespace morsehost {

struct RecordingKeys
{
    /// The same for the same content decoded in the same way, whatever its file is called: from its
    /// size, all of its bytes where they are few (16 MiB), else 64 pieces spread over them.
    QString content;
    /// The same for the same file decoded in the same way, whatever it holds by now: one that was
    /// still growing may be decoded again when it is whole.
    QString place;
};

/// `decoding` are words for all that changes what is decoded. Both are empty when the file cannot
/// be read.
RecordingKeys recordingKeys(const QString& path, const QStringList& decoding);

} // namespace morsehost
