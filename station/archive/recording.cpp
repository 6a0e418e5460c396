// SPDX-License-Identifier: MIT
#include "station/archive/recording.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace morsehost {

namespace {

constexpr qint64 READ_WHOLE_BYTES = qint64{16} << 20;
constexpr qint64 PIECES = 64;
constexpr qint64 FINGERPRINT_BYTES = qint64{64} << 10;

void addText(QCryptographicHash& hash, const QString& text)
{
    // Lengths keep texts apart whatever they hold.
    const QByteArray bytes = text.toUtf8();
    hash.addData(QByteArray::number(bytes.size()) + ':' + bytes);
}

} // namespace

RecordingKeys recordingKeys(const QString& path, const QStringList& decoding,
                            std::optional<int> channel)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const qint64 size = file.size();
    addText(hash, QString::number(size));
    if (size <= READ_WHOLE_BYTES) {
        hash.addData(&file);
    } else {
        for (qint64 piece = 0; piece < PIECES; ++piece) {
            const qint64 begin = (size - FINGERPRINT_BYTES) * piece / (PIECES - 1);
            if (!file.seek(begin))
                return {};
            hash.addData(file.read(FINGERPRINT_BYTES));
        }
    }
    if (file.error() != QFileDevice::NoError)
        return {};
    for (const QString& word : decoding)
        addText(hash, word);
    QCryptographicHash place(QCryptographicHash::Sha256);
    addText(place, QFileInfo(path).absoluteFilePath());
    addText(place, channel ? QString::number(*channel) : QString());
    return {QString::fromLatin1(hash.result().toHex()),
            QString::fromLatin1(place.result().toHex())};
}

} // namespace morsehost
