// SPDX-License-Identifier: MIT
// The lines of codec files and map files, and the numbers in them.
// No API: used inside the library only.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

/// The text of a file, line by line. It is UTF-8, with or without a byte order mark; a file that is
/// not valid UTF-8 is Latin-1 from its first byte. Lines end at LF or CR LF.
class TableText
{
public:
    explicit TableText(const QByteArray& bytes);

    /// Whether every line has been read.
    bool AtEnd() const { return m_position == m_text.size(); }

    /// The next line without its end, which lives as long as this object; empty at the end.
    QStringView ReadLine();

private:
    QString m_text;
    int m_position = 0;
};

/// The number that the whole text stands for, as `QString::toInt` reads it.
std::optional<int> numberIn(QStringView text, int base);

/// Code units above U+00FF have no byte and count as 0.
signed char byteOf(QChar character);
