// SPDX-License-Identifier: MIT
// The names under which the mapping directory offers maps: "Greek - ITA2".
// No API: used inside the library only.
#pragma once

#include "tables/basecharset.h"

#include <QString>

/// "Default", the entry that stands for no translation, and whatever begins like it.
bool isDefaultMap(const QString& name);
QString defaultMapName();

/// The name with the suffix of its base character set, " - UNKNOWN" where that is neither ITA2 nor
/// ASCII.
QString displayName(const QString& name, eBASE_CHARSET charset);

/// As QRegExp matches ".* - (.*)": the set that the text behind the first " - " begins with. So a
/// name that has " - " in itself has none.
eBASE_CHARSET charsetOfDisplayName(const QString& display);

/// As QRegExp matches "(.*) - .*": the text before the last " - ", or all of it.
QString nameOfDisplayName(const QString& display);
