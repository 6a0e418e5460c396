// SPDX-License-Identifier: MIT
#include "station/archive/record.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

namespace morsehost {

namespace {

/// Of all keys that are made here.
const QUuid& keyNamespace()
{
    static const QUuid NAMESPACE(QStringLiteral("{7d1f3c52-6a57-4c0b-9a9e-0d7a5b1c2e44}"));
    return NAMESPACE;
}

// One row a field: what it is called in a line, and how it gets in and out.
using Object = QJsonObject;

void put(Object& object, const char* name, const QString& text)
{
    if (!text.isEmpty())
        object.insert(QLatin1String(name), text);
}

void put(Object& object, const char* name, const std::optional<double>& number)
{
    if (number)
        object.insert(QLatin1String(name), *number);
}

void put(Object& object, const char* name, const QStringList& list)
{
    if (!list.isEmpty())
        object.insert(QLatin1String(name), QJsonArray::fromStringList(list));
}

void put(Object& object, const char* name, const std::optional<bool>& flag)
{
    if (flag)
        object.insert(QLatin1String(name), *flag);
}

// Microseconds of today need more digits than a number of JSON keeps in other programs.
void put(Object& object, const char* name, qint64 number)
{
    object.insert(QLatin1String(name), QString::number(number));
}

void get(const Object& object, const char* name, QString& text)
{
    text = object.value(QLatin1String(name)).toString();
}

void get(const Object& object, const char* name, std::optional<double>& number)
{
    const QJsonValue value = object.value(QLatin1String(name));
    if (value.isDouble())
        number = value.toDouble();
}

void get(const Object& object, const char* name, QStringList& list)
{
    const QJsonArray values = object.value(QLatin1String(name)).toArray();
    for (const QJsonValue& value : values)
        list += value.toString();
}

void get(const Object& object, const char* name, std::optional<bool>& flag)
{
    const QJsonValue value = object.value(QLatin1String(name));
    if (value.isBool())
        flag = value.toBool();
}

void get(const Object& object, const char* name, qint64& number)
{
    number = object.value(QLatin1String(name)).toString().toLongLong();
}

template <typename Record, typename Visit>
void visitFields(Record& record, Visit visit)
{
    auto& transmission = record.transmission;
    visit("key", record.key);
    visit("station", record.station);
    visit("receiver", transmission.receiver);
    visit("source", transmission.source);
    visit("decoder", transmission.decoder);
    visit("tone_Hz", transmission.tone_Hz);
    visit("frequency_Hz", transmission.frequency_Hz);
    visit("speed_wpm", transmission.speed_wpm);
    visit("baud_rate", transmission.baudRate);
    visit("shift_Hz", transmission.shift_Hz);
    visit("reversed", transmission.isReversed);
    visit("snr_dB", transmission.snr_dB);
    visit("start_us", transmission.start_us);
    visit("stop_us", transmission.stop_us);
    visit("text", transmission.text);
    visit("raw_text", transmission.rawText);
    visit("map", transmission.map);
    visit("unknown_codes", transmission.unknownCodes);
    visit("files", transmission.files);
}

} // namespace

QString keyOfHeard()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

QString keyOfRecorded(const QString& place, const Transmission& transmission)
{
    const QString tone =
        transmission.tone_Hz ? QString::number(*transmission.tone_Hz, 'g', 17) : QString();
    // Lengths keep fields apart whatever they hold.
    QString all;
    for (const QString& field : {place, transmission.decoder, QString::number(transmission.number),
                                 tone, QString::number(transmission.start_us), transmission.text})
        all += QString::number(field.size()) + QLatin1Char(':') + field;
    return QUuid::createUuidV5(keyNamespace(), all).toString(QUuid::WithoutBraces);
}

QByteArray toLine(const ArchiveRecord& record)
{
    Object object;
    visitFields(record,
                [&object](const char* name, const auto& field) { put(object, name, field); });
    object.insert(QStringLiteral("number"), record.transmission.number);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<ArchiveRecord> archiveRecordOf(const QByteArray& line)
{
    const QJsonDocument document = QJsonDocument::fromJson(line);
    if (!document.isObject())
        return std::nullopt;
    const Object object = document.object();
    ArchiveRecord record;
    visitFields(record, [&object](const char* name, auto& field) { get(object, name, field); });
    record.transmission.number = object.value(QLatin1String("number")).toInt();
    if (record.key.isEmpty())
        return std::nullopt;
    return record;
}

QStringList archiveWords(const QString& text)
{
    QStringList words;
    QString word;
    for (const QChar c : text + QLatin1Char(' ')) {
        if (c.isLetterOrNumber() || c.isMark()) {
            word += c.toUpper();
        } else if (!word.isEmpty()) {
            words += word;
            word.clear();
        }
    }
    words.removeDuplicates();
    return words;
}

QStringList archiveWords(const ArchiveRecord& record)
{
    return archiveWords(record.transmission.text + QLatin1Char(' ') + record.transmission.rawText);
}

} // namespace morsehost
