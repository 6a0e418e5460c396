// SPDX-License-Identifier: MIT
// The table of transmissions: which field of a record stands in which column.
#pragma once

#include "station/archive/record.h"

#include <QString>
#include <QVariant>

#include <vector>

namespace morsehost {

struct ArchiveColumn
{
    const char* name;
    QVariant (*get)(const ArchiveRecord&);
    void (*set)(ArchiveRecord&, const QVariant&);
};

/// In the order in which they are read and written.
const std::vector<ArchiveColumn>& archiveColumns();

/// What a database that speaks SQL can keep and compare: no NUL, and no null text.
QString storable(QString text);

} // namespace morsehost
