// SPDX-License-Identifier: MIT
// The formats of table files that are known by their names: one row each, from which files are
// listed, read, named and checked.
// No API: used inside the library only.
#pragma once

#include "tables/basecharset.h"
#include "tables/literal.h"

#include <QLatin1String>
#include <QString>

#include <array>

/// Which reader a file is for.
enum class TableKind {
    Alphabet,       ///< `readAlphabetFile`
    Codec,          ///< `readCodecFile`
    Map,            ///< `readMapFile`
    DecoderModules, ///< `readDecoderModulesFile`; the configuration names the file
};

inline constexpr QLatin1String ALPHABET_ENDING = literal(".mal");
inline constexpr QLatin1String CODEC_ENDING = literal(".codec");
inline constexpr QLatin1String MAP_ENDING = literal(".map");

struct TableFormat
{
    TableKind kind;
    /// Of the decoders that a file fits; none where no decoder is concerned.
    eBASE_CHARSET charset;
    /// The end of a name that is listed, in any letter case.
    QLatin1String suffix;
    /// The end of a name that is read, in exactly this letter case.
    QLatin1String ending;
};

/// In the order in which the mapping directory loads them: of two tables of one name and character
/// set the later one stays.
inline constexpr std::array<TableFormat, 4> TABLE_FORMATS = {{
    {TableKind::Alphabet, eCHARSET_NONE, ALPHABET_ENDING, ALPHABET_ENDING},
    {TableKind::Codec, eCHARSET_ITA2, CODEC_ENDING, CODEC_ENDING},
    {TableKind::Map, eCHARSET_ITA2, literal(".ita2.map"), MAP_ENDING},
    {TableKind::Map, eCHARSET_ASCII, literal(".ascii.map"), MAP_ENDING},
}};

/// The format as which a file of that name is listed; null for every other file.
const TableFormat* formatOfFile(const QString& fileName);

/// Whether the name is that of a file that is read as `kind`.
bool isReadAs(const QString& fileName, TableKind kind);
