// SPDX-License-Identifier: MIT
#include "tables/displayname.h"

#include "tables/tableformat.h"

#include <QObject>

namespace {

/// Whether a file of the format can lie behind this full name.
bool canBeChosen(const TableFormat& format, const QString& base, const QString& charset)
{
    if (format.kind != TableKind::Characters)
        return false;
    if (!format.onlyBase.isEmpty())
        return base == format.onlyBase;
    return format.NamesCharset() || charset == baseCharsetName(format.charset);
}

} // namespace

QString nameSeparator()
{
    return QStringLiteral(" - ");
}

QString fullName(const QString& base, eBASE_CHARSET charset)
{
    return base + nameSeparator() + baseCharsetName(charset);
}

bool isNoAlphabet(const QString& name)
{
    return name.compare(baseCharsetName(eCHARSET_NONE), Qt::CaseInsensitive) == 0;
}

QStringList filesOfFullName(const QString& name)
{
    if (!name.contains(nameSeparator()))
        return {};
    const QString base = name.section(nameSeparator(), 0, 0);
    const QString charset = name.section(nameSeparator(), 1, 1);
    QStringList files;
    // What is loaded later takes the place of what has the same name, so it comes first here.
    for (auto format = TABLE_FORMATS.rbegin(); format != TABLE_FORMATS.rend(); ++format) {
        const QString file =
            format->NamesCharset() ? base + QLatin1Char('.') + charset : QString(base);
        if (canBeChosen(*format, base, charset) && !files.contains(file + format->ending))
            files += file + format->ending;
    }
    return files;
}

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
    const int separator = display.indexOf(nameSeparator());
    if (separator < 0)
        return eCHARSET_NONE;
    const QStringRef suffix = display.midRef(separator + nameSeparator().size());
    for (const eBASE_CHARSET charset : {eCHARSET_ITA2, eCHARSET_ASCII}) {
        if (suffix.startsWith(baseCharsetName(charset)))
            return charset;
    }
    return eCHARSET_NONE;
}

QString nameOfDisplayName(const QString& display)
{
    const int separator = display.lastIndexOf(nameSeparator());
    return separator < 0 ? display : display.left(separator);
}
