// SPDX-License-Identifier: MIT
#include "tables/displayname.h"

#include <QObject>

namespace {

const QString SEPARATOR = QStringLiteral(" - ");

} // namespace

bool isDefaultMap(const QString& name)
{
    return name.startsWith(defaultMapName());
}

QString defaultMapName()
{
    return QStringLiteral("Default");
}

QString displayName(const QString& name, eBASE_CHARSET charset)
{
    switch (charset) {
    case eCHARSET_ITA2:
        return name + QObject::tr(" - ITA2");
    case eCHARSET_ASCII:
        return name + QObject::tr(" - ASCII");
    default:
        return name + QObject::tr(" - UNKNOWN");
    }
}

eBASE_CHARSET charsetOfDisplayName(const QString& display)
{
    const int separator = display.indexOf(SEPARATOR);
    if (separator < 0)
        return eCHARSET_NONE;
    const QStringRef suffix = display.midRef(separator + SEPARATOR.size());
    for (const eBASE_CHARSET charset : {eCHARSET_ITA2, eCHARSET_ASCII}) {
        if (suffix.startsWith(baseCharsetName(charset)))
            return charset;
    }
    return eCHARSET_NONE;
}

QString nameOfDisplayName(const QString& display)
{
    const int separator = display.lastIndexOf(SEPARATOR);
    return separator < 0 ? display : display.left(separator);
}
