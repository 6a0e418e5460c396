// SPDX-License-Identifier: MIT
#include "station/decoders.h"

namespace morsehost {

namespace {

using teleprinter::Code;

struct DecoderRow
{
    const char* decoder;
    Code code;
};

constexpr DecoderRow TELEPRINTERS[] = {
    {"Baudot", Code::Ita2},
    {"ASCII RTTY", Code::Ascii},
    {"Sitor-B", Code::Ccir476},
};

} // namespace

QString decoderOf(Code code)
{
    for (const DecoderRow& row : TELEPRINTERS) {
        if (row.code == code)
            return QLatin1String(row.decoder);
    }
    return QString();
}

std::optional<Code> codeOfDecoder(const QString& decoder)
{
    for (const DecoderRow& row : TELEPRINTERS) {
        if (decoder == QLatin1String(row.decoder))
            return row.code;
    }
    return std::nullopt;
}

QStringList teleprinterDecoders()
{
    QStringList names;
    for (const DecoderRow& row : TELEPRINTERS)
        names += QLatin1String(row.decoder);
    return names;
}

} // namespace morsehost
