// SPDX-License-Identifier: MIT
// The header lines that alphabet files and map files share: "@ name value anything".
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/tabletext.h"

#include <QStringView>

#include <optional>

/// Views into the line that was matched.
struct HeaderLine
{
    QStringView name;
    QStringView value;

    /// Whether the line says that the text runs right to left. Every other header line says that
    /// it does not, so the last header line of a file decides.
    bool declaresRightToLeft() const;
    /// Whether the author means the direction, in whatever spelling.
    bool concernsDirection() const;
};

/// Matches a whole line, without its line end: "@", a word, white space, a word, anything. In a
/// single pass, whatever the line holds.
std::optional<HeaderLine> matchHeaderLine(QStringView line);

/// Reads the header lines at the top of a file, up to the first other line, which `text` stands at
/// then. Returns whether the text of the table runs from right to left.
bool readHeader(TableText& text, Faults& faults);
