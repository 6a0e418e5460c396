// SPDX-License-Identifier: MIT
// Reads and writes decoder modules files: the host's decoders, one a line, each with the base
// character set of its output.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/fault.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <vector>

namespace Quillon {

/// One line of the file. The order of the fields, that of the columns, is binary interface.
struct DecoderModule
{
    qint32 id = 0;
    double number = 0;
    char type = 0;
    /// In an order of their own; ask for them by column.
    std::array<bool, 26> flags{};
    /// Base character set: "I" ITA2, "A" ASCII, "B" both, anything else none.
    char charset = 'N';
    QString name;

    /// The flag of a column of the file, 4 to 29.
    bool ColumnFlag(int column) const;
    void SetColumnFlag(int column, bool flag);
};

/// Sorted by name whatever its letter case; equal names in the order of the file.
///
/// The file is Latin-1, one module a line, its columns separated by white space: an id, a number
/// and a letter, 26 flags, the letter of the base character set, and the name up to the end of the
/// line. Lines that hold no such sequence anywhere are skipped; of those that do, the columns are
/// counted from the start of the line.
std::vector<DecoderModule> readDecoderModulesFile(const QByteArray& bytes, Faults& faults);
std::vector<DecoderModule> readDecoderModulesFile(const QByteArray& bytes);

/// The content of a file that reads back to the same modules.
QByteArray decoderModulesFileOf(const std::vector<DecoderModule>& modules);

/// Whether a line of the file holds a module somewhere, that is, the columns of one in a row,
/// whatever stands before and behind. In a single pass, whatever the line holds.
bool holdsDecoderModule(const QString& line);

} // namespace Quillon
