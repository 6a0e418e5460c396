// SPDX-License-Identifier: MIT
// Formats of the printf family, for messages that may come from anywhere. No API.
#pragma once

#include <QString>

#include <cstdarg>

/// Text of `format` with its placeholders filled in. "%s" takes UTF-8, "%ls" wide characters; a
/// null string shows as "(null)". "%n" writes nothing. Widths and precisions are cut to 1000. From
/// a placeholder that no argument type is known for, the format is kept as it stands.
QString formatPrintf(const QString& format, va_list arguments);
