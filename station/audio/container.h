// SPDX-License-Identifier: MIT
// What the bytes of a recording's file say that its reader does not: which kind it is, and whether
// its end is missing.
#pragma once

#include <QByteArray>
#include <QString>

namespace morsehost {

/// This many bytes show the kind, except that of an MP3 without a tag before it.
constexpr int CONTAINER_MARK_BYTES = 12;

enum class Container {
    None,     ///< raw samples
    Streamed, ///< can be read as it arrives: WAV, AIFF, AU, Ogg
    Whole,    ///< has to be there as a file: FLAC, MP3
};

/// How many bytes from the beginning containerOf() needs, by the first CONTAINER_MARK_BYTES of
/// them; where fewer are there, all.
int bytesForKind(const QByteArray& begin);
Container containerOf(const QByteArray& begin);

/// The size in the header of a WAV or AIFF file that begins so; -1 for another kind, and where the
/// writer did not know it, as it writes into a pipe.
qint64 declaredSize(const QByteArray& begin);

/// This many bytes at its end show whether it is complete.
constexpr int CONTAINER_END_BYTES = 65536;

/// Why `size` bytes that begin and end so are not all of what was recorded; empty when nothing
/// shows that. `begin` has CONTAINER_MARK_BYTES, `end` CONTAINER_END_BYTES or more, fewer where all
/// of it is shorter.
QString whyCut(const QByteArray& begin, const QByteArray& end, qint64 size);

} // namespace morsehost
