// SPDX-License-Identifier: MIT
#include "station/archive/recording.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace morsehost {

namespace {

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
    addText(hash, QString::number(file.size()));
    if (!hash.addData(&file) || file.error() != QFileDevice::NoError)
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
