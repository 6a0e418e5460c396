// SPDX-License-Identifier: MIT
// A recording as the archive knows it, so that it is archived once however often it is tried.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace morsehost {

struct RecordingKeys
{
    /// The same for the same content decoded in the same way, whatever its file is called: from all
    /// of its bytes, which are read for it.
    QString content;
    /// The same for the same channel of the same file, whatever it holds by now, and however it is
    /// decoded: what is found again is known.
    QString place;
};

/// `decoding` are words for all that changes what is decoded, `channel` is the one that is heard.
/// Both keys are empty when the file cannot be read.
RecordingKeys recordingKeys(const QString& path, const QStringList& decoding,
                            std::optional<int> channel = {});

} // namespace morsehost
