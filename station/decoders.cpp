// SPDX-License-Identifier: MIT
#include "station/decoders.h"

namespace morsehost {

namespace {

using teleprinter::Code;

constexpr TeleprinterDecoder TELEPRINTERS[] = {
    {"Baudot", Code::Ita2, teleprinter::LOWEST_BAUD, 150.0, true},
    {"ASCII RTTY", Code::Ascii, teleprinter::LOWEST_BAUD, teleprinter::HIGHEST_BAUD, false},
    {"Sitor-B", Code::Ccir476, 100.0, 100.0, true},
};

} // namespace

QString decoderOf(Code code)
{
    for (const TeleprinterDecoder& row : TELEPRINTERS) {
        if (row.code == code)
            return QLatin1String(row.name);
    }
    return QString();
}

std::optional<Code> codeOfDecoder(const QString& decoder)
{
    const TeleprinterDecoder* const row = teleprinterDecoder(decoder);
    return row ? std::optional<Code>(row->code) : std::nullopt;
}

const TeleprinterDecoder* teleprinterDecoder(const QString& decoder)
{
    for (const TeleprinterDecoder& row : TELEPRINTERS) {
        if (decoder == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

QString decoderSpelled(const QString& name)
{
    for (const QString& known : teleprinterDecoders() + QStringList(QLatin1String(MORSE_DECODER))) {
        if (known.compare(name, Qt::CaseInsensitive) == 0)
            return known;
    }
    return name;
}

QStringList teleprinterDecoders()
{
    QStringList names;
    for (const TeleprinterDecoder& row : TELEPRINTERS)
        names += QLatin1String(row.name);
    return names;
}

} // namespace morsehost
