// SPDX-License-Identifier: MIT
// Lines of a decoder modules file.
#pragma once

#include <QByteArray>
#include <QSet>

/// A line with the flags of the given columns (4 to 29) set.
inline QByteArray moduleLine(const QByteArray& name, char charset, const QSet<int>& columns = {},
                             int id = 1, const QByteArray& number = "2", char type = 'T')
{
    QByteArray line = QByteArray::number(id) + " " + number + " " + type;
    for (int column = 4; column <= 29; ++column)
        line += columns.contains(column) ? " 1" : " 0";
    return line + " " + charset + " " + name + "\n";
}
