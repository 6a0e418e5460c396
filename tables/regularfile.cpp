// SPDX-License-Identifier: MIT
#include "tables/regularfile.h"

#include <QFileInfo>

bool openRegularFile(QFile& file)
{
    const QFileInfo info(file);
    return info.isFile() && info.size() <= MAX_FILE_BYTES && file.open(QIODevice::ReadOnly);
}
