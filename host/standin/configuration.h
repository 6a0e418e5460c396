// SPDX-License-Identifier: MIT
// What the configuration centre of the stand-in host knows. Safe for use from several threads.
#pragma once

#include "host/hostapi.h"

#include <QString>

/// Reads an INI file in UTF-8: "[group]" lines and "key=value" lines, those before the first group
/// line being in the group "". In a value a backslash is written "\\", and a value with a comma or
/// semicolon in it stands in double quotes. What an earlier file said is forgotten; keys set
/// directly stay. False, with the configuration as it was, for a file that cannot be read.
HOST_API bool setConfigurationFile(const QString& path);

/// Sets one key, which goes before the file's.
HOST_API void setConfigurationValue(const QString& group, const QString& key, const QString& value);

/// Forgets the file and every key.
HOST_API void clearConfiguration();
