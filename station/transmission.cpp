// SPDX-License-Identifier: MIT
#include "station/transmission.h"

#include <QDateTime>
#include <QJsonArray>

#include <cmath>

namespace morsehost {

namespace {

// To so many decimals, as the double that is written with no more: a product with 0.1 would not be.
double rounded(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

} // namespace

QString isoTime(qint64 time_us)
{
    return QDateTime::fromMSecsSinceEpoch(time_us / 1000, Qt::UTC).toString(Qt::ISODateWithMs);
}

QJsonObject toJson(const Transmission& transmission)
{
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("transmission")},
                       {QStringLiteral("number"), transmission.number},
                       {QStringLiteral("start"), isoTime(transmission.start_us)},
                       {QStringLiteral("stop"), isoTime(transmission.stop_us)},
                       {QStringLiteral("text"), transmission.text}};
    const auto addText = [&object](const char* name, const QString& text) {
        if (!text.isEmpty())
            object.insert(QLatin1String(name), text);
    };
    const auto addNumber = [&object](const char* name, const std::optional<double>& number,
                                     int decimals) {
        if (number)
            object.insert(QLatin1String(name), rounded(*number, decimals));
    };
    addText("receiver", transmission.receiver);
    addText("source", transmission.source);
    addText("decoder", transmission.decoder);
    addText("map", transmission.map);
    addText("raw_text", transmission.rawText);
    addNumber("tone_Hz", transmission.tone_Hz, 1);
    addNumber("frequency_Hz", transmission.frequency_Hz, 1);
    addNumber("speed_wpm", transmission.speed_wpm, 1);
    addNumber("baud_rate", transmission.baudRate, 2);
    addNumber("shift_Hz", transmission.shift_Hz, 1);
    addNumber("snr_dB", transmission.snr_dB, 1);
    if (transmission.isReversed)
        object.insert(QStringLiteral("reversed"), *transmission.isReversed);
    if (!transmission.unknownCodes.isEmpty())
        object.insert(QStringLiteral("unknown_codes"),
                      QJsonArray::fromStringList(transmission.unknownCodes));
    if (!transmission.files.isEmpty())
        object.insert(QStringLiteral("files"), QJsonArray::fromStringList(transmission.files));
    return object;
}

Transmission transmissionOf(const QJsonObject& object)
{
    const auto text = [&object](const char* name) {
        return object.value(QLatin1String(name)).toString();
    };
    const auto number = [&object](const char* name) {
        const QJsonValue value = object.value(QLatin1String(name));
        return value.isDouble() ? std::optional<double>(value.toDouble()) : std::nullopt;
    };
    const auto time_us = [&text](const char* name) {
        return QDateTime::fromString(text(name), Qt::ISODateWithMs).toMSecsSinceEpoch() * 1000;
    };
    Transmission transmission;
    transmission.number = object.value(QLatin1String("number")).toInt();
    transmission.receiver = text("receiver");
    transmission.source = text("source");
    transmission.decoder = text("decoder");
    transmission.tone_Hz = number("tone_Hz");
    transmission.frequency_Hz = number("frequency_Hz");
    transmission.speed_wpm = number("speed_wpm");
    transmission.baudRate = number("baud_rate");
    transmission.shift_Hz = number("shift_Hz");
    if (object.value(QLatin1String("reversed")).isBool())
        transmission.isReversed = object.value(QLatin1String("reversed")).toBool();
    transmission.snr_dB = number("snr_dB");
    transmission.start_us = time_us("start");
    transmission.stop_us = time_us("stop");
    transmission.text = text("text");
    transmission.rawText = text("raw_text");
    transmission.map = text("map");
    const auto list = [&object](const char* name) {
        QStringList texts;
        const QJsonArray values = object.value(QLatin1String(name)).toArray();
        for (const QJsonValue& value : values)
            texts += value.toString();
        return texts;
    };
    transmission.unknownCodes = list("unknown_codes");
    transmission.files = list("files");
    return transmission;
}

} // namespace morsehost
