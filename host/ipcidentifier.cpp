// SPDX-License-Identifier: MIT
#include "host/ipcidentifier.h"

QString ipcIdentifier(const QString& id)
{
    QString tail = id.right(2);
    if (tail.startsWith(QLatin1Char('0')))
        tail = tail.right(1);
    return QStringLiteral("__SG") + id.leftRef(1) + QStringLiteral("_IPC") + tail;
}
