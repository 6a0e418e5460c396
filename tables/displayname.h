// SPDX-License-Identifier: MIT
// The names under which codec and map files are offered: "Greek - ITA2".
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/basecharset.h"

#include <QString>
#include <QStringList>

/// What stands between the base name of a file and its character set.
QString nameSeparator();

/// "Greek - ITA2", for the base name and the set of a file.
QString fullName(const QString& base, eBASE_CHARSET charset);

/// "None", the name of the empty alphabet, in any letter case.
bool isNoAlphabet(const QString& name);

/// The names that the file behind a full name may have, in the order in which they are looked for,
/// whatever the letter case. None for a name without a separator.
QStringList filesOfFullName(const QString& name);

/// "Default", the entry that stands for no translation, and whatever begins like it.
bool isDefaultMap(const QString& name);
QString defaultMapName();

/// As the mapping directory offers a map: the name with the suffix of its base character set, in
/// the language of the program; " - UNKNOWN" where that is neither ITA2 nor ASCII.
QString displayName(const QString& name, eBASE_CHARSET charset);

/// The set that the text behind the first " - " begins with. So a name that has " - " in itself has
/// none.
eBASE_CHARSET charsetOfDisplayName(const QString& display);

/// The text before the last " - ", or all of it.
QString nameOfDisplayName(const QString& display);
