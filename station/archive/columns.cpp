// SPDX-License-Identifier: MIT
#include "station/archive/columns.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morsehost {

namespace {

QVariant variantOf(const std::optional<double>& number)
{
    return number ? QVariant(*number) : QVariant(QVariant::Double);
}

std::optional<double> numberOf(const QVariant& value)
{
    return value.isNull() ? std::nullopt : std::optional<double>(value.toDouble());
}

QString jsonOf(const QStringList& list)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromStringList(list)).toJson(QJsonDocument::Compact));
}

QStringList listOf(const QVariant& json)
{
    QStringList list;
    const QJsonArray values = QJsonDocument::fromJson(json.toString().toUtf8()).array();
    for (const QJsonValue& value : values)
        list += value.toString();
    return list;
}

} // namespace

QString storable(QString text)
{
    return text.isNull() ? QStringLiteral("")
                         : text.replace(QChar(QChar::Null), QChar(QChar::ReplacementCharacter));
}

// clang-format off
#define TEXT_COLUMN(name, field) \
    ArchiveColumn{name, [](const ArchiveRecord& r) { return QVariant(storable(r.field)); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = v.toString(); }}
#define NUMBER_COLUMN(name, field) \
    ArchiveColumn{name, [](const ArchiveRecord& r) { return variantOf(r.field); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = numberOf(v); }}
#define TIME_COLUMN(name, field) \
    ArchiveColumn{name, [](const ArchiveRecord& r) { return QVariant(r.field); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = v.toLongLong(); }}
#define LIST_COLUMN(name, field) \
    ArchiveColumn{name, [](const ArchiveRecord& r) { return QVariant(storable(jsonOf(r.field))); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = listOf(v); }}

const std::vector<ArchiveColumn>& archiveColumns()
{
    static const std::vector<ArchiveColumn> columns = {
        TEXT_COLUMN("key", key),
        TEXT_COLUMN("station", station),
        TEXT_COLUMN("receiver", transmission.receiver),
        TEXT_COLUMN("source", transmission.source),
        TEXT_COLUMN("decoder", transmission.decoder),
        ArchiveColumn{"number", [](const ArchiveRecord& r) { return QVariant(r.transmission.number); },
               [](ArchiveRecord& r, const QVariant& v) { r.transmission.number = v.toInt(); }},
        NUMBER_COLUMN("tone_hz", transmission.tone_Hz),
        NUMBER_COLUMN("frequency_hz", transmission.frequency_Hz),
        NUMBER_COLUMN("speed_wpm", transmission.speed_wpm),
        NUMBER_COLUMN("baud_rate", transmission.baudRate),
        NUMBER_COLUMN("shift_hz", transmission.shift_Hz),
        ArchiveColumn{"reversed",
               [](const ArchiveRecord& r) {
                   return r.transmission.isReversed ? QVariant(int(*r.transmission.isReversed))
                                                    : QVariant(QVariant::Int);
               },
               [](ArchiveRecord& r, const QVariant& v) {
                   if (!v.isNull())
                       r.transmission.isReversed = v.toInt() != 0;
               }},
        NUMBER_COLUMN("snr_db", transmission.snr_dB),
        TIME_COLUMN("start_us", transmission.start_us),
        TIME_COLUMN("stop_us", transmission.stop_us),
        TEXT_COLUMN("text", transmission.text),
        TEXT_COLUMN("raw_text", transmission.rawText),
        TEXT_COLUMN("map", transmission.map),
        LIST_COLUMN("unknown_codes", transmission.unknownCodes),
        LIST_COLUMN("files", transmission.files),
    };
    return columns;
}
// clang-format on
#undef TEXT_COLUMN
#undef NUMBER_COLUMN
#undef TIME_COLUMN
#undef LIST_COLUMN

} // namespace morsehost
