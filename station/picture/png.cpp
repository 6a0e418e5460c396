// SPDX-License-Identifier: MIT
#include "station/picture/png.h"

#include <QtEndian>

namespace inspect {

namespace {

constexpr char BITS_PER_PIXEL = 4;
constexpr char PALETTE_COLOURS = 3;
constexpr int LENGTH_BYTES = 4; // qCompress puts the length before the stream

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

// The cyclic redundancy check that PNG shares with Ethernet.
quint32 checksum(const QByteArray& bytes)
{
    quint32 sum = 0xFFFFFFFFU;
    for (const char byte : bytes) {
        sum ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return sum ^ 0xFFFFFFFFU;
}

QByteArray chunk(const char* type, const QByteArray& data)
{
    const QByteArray body = type + data;
    return bigEndian(static_cast<quint32>(data.size())) + body + bigEndian(checksum(body));
}

} // namespace

QByteArray png(const std::vector<std::uint8_t>& pixels, int width, const Palette& palette)
{
    const auto columns = static_cast<std::size_t>(width);
    QByteArray lines;
    for (std::size_t at = 0; at + columns <= pixels.size(); at += columns) {
        lines += '\0'; // no filter
        for (std::size_t x = 0; x < columns; x += 2) {
            const int left = pixels[at + x] % COLOURS;
            const int right = x + 1 < columns ? pixels[at + x + 1] % COLOURS : 0;
            lines += static_cast<char>(left << 4 | right);
        }
    }
    QByteArray header = bigEndian(static_cast<quint32>(width)) +
                        bigEndian(static_cast<quint32>(pixels.size() / columns));
    header += BITS_PER_PIXEL;
    header += PALETTE_COLOURS;
    header += QByteArray(3, '\0'); // the only compression and filters there are, no interlace
    QByteArray colours;
    for (const Colour& colour : palette) {
        colours += static_cast<char>(colour.red);
        colours += static_cast<char>(colour.green);
        colours += static_cast<char>(colour.blue);
    }
    return QByteArray("\x89PNG\r\n\x1A\n") + chunk("IHDR", header) + chunk("PLTE", colours) +
           chunk("IDAT", qCompress(lines, 9).mid(LENGTH_BYTES)) + chunk("IEND", QByteArray());
}

} // namespace inspect
