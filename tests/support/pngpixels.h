// SPDX-License-Identifier: MIT
// The pixels of a PNG file of 16 colours, as app/inspect writes them.
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <vector>

namespace testsupport {

struct PngPixels
{
    int width = 0;
    int height = 0;
    std::vector<int> colours; ///< line by line; empty when the file is no such PNG
};

inline PngPixels pngPixels(const QByteArray& file)
{
    PngPixels result;
    const auto number = [&file](int at) { return qFromBigEndian<quint32>(file.constData() + at); };
    const int data = file.indexOf("IDAT");
    if (!file.startsWith("\x89PNG\r\n\x1A\n") || file.mid(12, 4) != "IHDR" || data < 0)
        return result;
    result.width = static_cast<int>(number(16));
    result.height = static_cast<int>(number(20));
    const int lineBytes = 1 + (result.width + 1) / 2;
    QByteArray length(4, '\0');
    qToBigEndian(static_cast<quint32>(lineBytes * result.height), length.data());
    const QByteArray lines =
        qUncompress(length + file.mid(data + 4, static_cast<int>(number(data - 4))));
    if (lines.size() != lineBytes * result.height)
        return result;
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; ++x) {
            const auto pair = static_cast<unsigned char>(lines.at(y * lineBytes + 1 + x / 2));
            result.colours.push_back(x % 2 == 0 ? pair >> 4 : pair & 15);
        }
    }
    return result;
}

} // namespace testsupport
