// SPDX-License-Identifier: MIT
// The formats of table files that are known by their names: one row each, from which files are
// listed, found, read and checked.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/basecharset.h"
#include "tables/charactertable.h"
#include "tables/literal.h"

#include <QByteArray>
#include <QLatin1String>
#include <QString>

#include <array>
#include <cstddef>

/// What a file holds.
enum class TableKind {
    Alphabet,       ///< what `readAlphabetFile` reads
    Characters,     ///< a `CharacterTable`, for which each format has a reader
    DecoderModules, ///< what `readDecoderModulesFile` reads; the configuration names the file
};

inline constexpr QLatin1String ALPHABET_ENDING = literal(".mal");

struct TableFormat
{
    TableKind kind;
    /// Of the decoders that a file fits; none where no decoder is concerned.
    eBASE_CHARSET charset;
    /// The end of a name that is listed, in any letter case.
    QLatin1String suffix;
    /// The end of a name that is read, in exactly this letter case. A suffix that is longer begins
    /// with "." and the name of the character set.
    QLatin1String ending;
    /// The one base name under which a file can be chosen; empty for any.
    QLatin1String onlyBase = literal("");
    /// Null but for tables of characters.
    CharacterTable (*readCharacters)(const QByteArray& bytes, Faults& faults) = nullptr;

    /// Whether the name of a file holds that of the character set.
    bool NamesCharset() const { return suffix.size() > ending.size(); }
};

/// In the order in which the mapping directory loads them: of two tables of one name and character
/// set the later one stays.
inline constexpr std::size_t TABLE_FORMAT_COUNT = 5;
extern const std::array<TableFormat, TABLE_FORMAT_COUNT> TABLE_FORMATS;

/// The format as which a file of that name is listed; null for every other file.
const TableFormat* formatOfFile(const QString& fileName);

/// The format as which a file of that name is read, in exactly that letter case; null for every
/// other file.
const TableFormat* formatReadFrom(const QString& fileName);

/// The format that a file of that name is meant to have, in any letter case and also where it would
/// not be listed; null for every other file.
const TableFormat* formatMeantBy(const QString& fileName);
