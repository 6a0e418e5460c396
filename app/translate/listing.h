// SPDX-License-Identifier: MIT
// What there is to choose from, one line each, the fields separated by tabs: of a file its name,
// path, direction and number of entries, of a decoder its name and base character set. Each list
// returns what went wrong; nothing, where it was written.
#pragma once

#include <QString>
#include <QTextStream>

namespace translate {

/// The Morse alphabets of a folder, and the one that is built in.
QString listAlphabets(const QString& directory, QTextStream& out);

/// The codec and map files of a folder: all of them, or those that fit `decoder` where it is given.
/// The decoder modules file has to have a base character set for the decoder.
QString listMaps(const QString& directory, const QString& decoder, QTextStream& out);

/// The decoders of a decoder modules file that can be read.
QString listDecoders(const QString& modulesFile, QTextStream& out);

} // namespace translate
