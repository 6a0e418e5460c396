// SPDX-License-Identifier: MIT
// The codec and map files of a folder under the names by which they are chosen.
#pragma once

#include "tables/tableformat.h"

#include <QDir>
#include <QString>
#include <QVector>

namespace translate {

struct MapFile
{
    QString name; ///< as it is chosen: "Greek - ASCII"
    QString base; ///< its short form: "Greek"
    QString file; ///< within its folder
    eBASE_CHARSET charset = eCHARSET_NONE;
};

/// All of them, by name.
QVector<MapFile> mapFilesIn(const QDir& folder);

} // namespace translate
