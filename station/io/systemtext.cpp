// SPDX-License-Identifier: MIT
#include "station/io/systemtext.h"

#include <cstring>

namespace morsehost {

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

QString counted(long long count, const char* one, const char* several)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : several));
}

} // namespace morsehost
