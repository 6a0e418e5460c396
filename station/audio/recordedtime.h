// SPDX-License-Identifier: MIT
// When a recording began, from its name or its broadcast chunk.
#pragma once

#include <QString>

#include <optional>

namespace morsehost {

/// Microseconds since 1970-01-01 00:00 UTC from a date and time within a file's name, such as
/// "20260512_101500", "20260512T101500Z" or "2026-05-12_10-15-00"; the first one counts, as UTC.
std::optional<unsigned long long> timeInName(const QString& fileName);

/// The same from "yyyy-MM-dd" and "hh:mm:ss"; what separates the numbers does not matter.
std::optional<unsigned long long> timeInBroadcastChunk(const QString& date, const QString& time);

} // namespace morsehost
