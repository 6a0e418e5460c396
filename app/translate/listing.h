// SPDX-License-Identifier: MIT
// What there is to choose from, one line each, the fields separated by tabs: of a file its name,
// path, direction and number of entries, of a decoder its name and base character set.
#pragma once

#include <QString>
#include <QTextStream>

namespace translate {

/// The Morse alphabets of a folder. 0, or 1 with one line to `err` when there is no such folder.
int listAlphabets(const QString& directory, QTextStream& out, QTextStream& err);

/// The codec and map files of a folder: all of them, or those that fit `decoder` where it is given.
/// 0, or 1 with one line to `err` when there is no such folder, or when the decoder modules file
/// has no base character set for the decoder.
int listMaps(const QString& directory, const QString& decoder, QTextStream& out, QTextStream& err);

/// The decoders of a decoder modules file that can be read. 0, or 1 with one line to `err` when it
/// names none.
int listDecoders(const QString& modulesFile, QTextStream& out, QTextStream& err);

} // namespace translate
