// SPDX-License-Identifier: MIT
#include "tables/basecharset.h"

namespace {

const QString ITA2_NAME = QStringLiteral("ITA2");
const QString ASCII_NAME = QStringLiteral("ASCII");
const QString NONE_NAME = QStringLiteral("None");

} // namespace

const QString& baseCharsetName(eBASE_CHARSET charset)
{
    switch (charset) {
    case eCHARSET_ITA2:
        return ITA2_NAME;
    case eCHARSET_ASCII:
        return ASCII_NAME;
    default:
        return NONE_NAME;
    }
}

eBASE_CHARSET baseCharsetOfLetter(char letter)
{
    switch (letter) {
    case 'I':
        return eCHARSET_ITA2;
    case 'A':
        return eCHARSET_ASCII;
    case 'B':
        return eCHARSET_BOTH;
    default:
        return eCHARSET_NONE;
    }
}
