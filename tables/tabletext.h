// SPDX-License-Identifier: MIT
// The lines of table files, and the numbers in them.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/fault.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

/// How the bytes of a file are read. In either way a byte order mark of UTF-8 is skipped.
enum class TableEncoding {
    Utf8OrLatin1, ///< a file that is not valid UTF-8 is Latin-1 from its first byte
    Utf8OrMarked, ///< marks of UTF-16 and UTF-32 are obeyed; bytes that are no UTF-8 become U+FFFD
};

/// The text of a file, line by line, beginning with the first. Lines end at LF or CR LF. What
/// follows the last line end is a line of its own only if it is not empty.
class TableText
{
public:
    /// Notes in `faults`, which must outlive this, what is wrong with encoding and line ends.
    TableText(const QByteArray& bytes, TableEncoding encoding, Faults& faults);

    /// The current line without its end, which lives as long as this object. Empty behind the last.
    QStringView Line() const { return m_line; }
    /// From 1.
    int Number() const { return m_number; }
    /// Whether no line follows the current one. A loop that ends here and reads before Next()
    /// leaves out the last line, even one that ends in LF: alphabets and maps do so on purpose.
    bool AtEnd() const { return m_position == m_text.size(); }

    /// Goes to the next line.
    void Next();

private:
    QString m_text;
    Faults& m_faults;
    int m_position = 0; ///< behind the end of the current line
    QStringView m_line;
    int m_number = 0;
};

/// The number that the whole text stands for, as `QString::toInt` reads it.
std::optional<int> numberIn(QStringView text, int base);

/// Code units above U+00FF have no byte and count as 0.
signed char byteOf(QChar character);
