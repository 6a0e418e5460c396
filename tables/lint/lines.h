// SPDX-License-Identifier: MIT
// The lines of a table file as the library's readers see them.
#pragma once

#include "tables/lint/lint.h"

namespace lint {

/// Collects findings, of which it keeps a bounded number: a file of garbage has millions.
class Notes
{
public:
    void add(int line, Severity severity, const QString& message);
    /// What was collected, by ascending line. A last finding tells how many were not kept.
    QVector<Finding> take();

private:
    QVector<Finding> m_findings;
    int m_omitted = 0;
};

struct Line
{
    int number = 0; ///< from 1
    QString text;
    bool damaged = false; ///< held bytes that are no UTF-8
};

/// How a file without (or with invalid) UTF-8 is taken.
enum class Damage {
    Replaced, ///< each bad byte becomes U+FFFD: alphabets
    Latin1,   ///< the whole file is Latin-1: codecs and maps
};

/// Splits at LF and CR LF; what follows the last line end is a line of its own only if it is not
/// empty. Findings about the encoding and the line ends go to `notes`.
QVector<Line> splitLines(const QByteArray& bytes, Damage damage, Notes& notes);

/// Reads the header at the top of an alphabet or map file: the index of the first line behind it.
/// Sets `rightToLeft` as the last header line decides.
int readHeader(const QVector<Line>& lines, bool& rightToLeft, Notes& notes);

/// A key or value as a message shows it: printable characters in quotes, all with code points.
QString shown(const QString& text);
QString shown(QChar character);

} // namespace lint
