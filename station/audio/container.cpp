// SPDX-License-Identifier: MIT
#include "station/audio/container.h"

#include <QtEndian>

#include <algorithm>

namespace morsehost {

namespace {

// Who writes into a pipe says the largest size that a program may read, or none.
constexpr quint32 UNKNOWN_SIZE = 0x7FFFF000U;

// The largest page of an Ogg file has 65307 bytes.
static_assert(CONTAINER_END_BYTES >= 65307, "the last page has to be whole");
constexpr int OGG_HEADER_BYTES = 27;
constexpr int OGG_FLAGS = 5;
constexpr int OGG_SEGMENTS = 26;
constexpr char OGG_LAST_PAGE = 4;

struct ContainerRow
{
    const char* mark;
    int place;
    Container container;
};

// Those that cannot be read are named by the reader of files, which is better than to take them for
// samples.
constexpr ContainerRow rows[] = {
    {"RIFF", 0, Container::Streamed},
    {"RF64", 0, Container::Streamed},
    {"FORM", 0, Container::Streamed},
    {".snd", 0, Container::Streamed},
    {"OggS", 0, Container::Streamed},
    {"fLaC", 0, Container::Whole},
    {"ID3", 0, Container::Whole},
    {"caff", 0, Container::Whole},
    {"riff\x2E\x91\xCF\x11", 0, Container::Whole}, // Wave64
    {"ftyp", 4, Container::Whole},                 // MP4, not read
    {"\x1A\x45\xDF\xA3", 0, Container::Whole},     // Matroska, not read
};

// The header of an MPEG audio frame: eleven bits that are set, version, layer, protection; bit
// rate, sample rate, padding, private.
constexpr int MPEG_HEADER_BYTES = 4;
constexpr int LAYER_3 = 1;
constexpr int MPEG_1 = 3;
constexpr int BIT_RATES_kBd[2][16] = {
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
};
constexpr int MPEG_1_RATES_Hz[] = {44100, 48000, 32000, 0};
constexpr int RATE_DIVISORS[] = {4, 0, 2, 1}; // by version; version 1 does not exist

// Bytes of the MP3 frame that begins there; 0 where none does.
int mp3FrameBytes(const QByteArray& bytes, int at)
{
    if (at + MPEG_HEADER_BYTES > bytes.size())
        return 0;
    const auto header = qFromBigEndian<quint32>(bytes.constData() + at);
    const auto field = [header](int low, int bits) {
        return static_cast<int>(header >> low & ((1U << bits) - 1));
    };
    const int version = field(19, 2);
    const int divisor = RATE_DIVISORS[version];
    const int bitRate_kBd = BIT_RATES_kBd[version == MPEG_1 ? 1 : 0][field(12, 4)];
    const int rate_Hz = MPEG_1_RATES_Hz[field(10, 2)];
    if (field(21, 11) != 0x7FF || field(17, 2) != LAYER_3 || divisor == 0 || bitRate_kBd == 0 ||
        rate_Hz == 0)
        return 0;
    const int factor = version == MPEG_1 ? 144000 : 72000;
    return factor * bitRate_kBd * divisor / rate_Hz + field(9, 1);
}

// With a page that says that it is the last one, and is whole.
bool endsAsOgg(const QByteArray& end)
{
    const int page = end.lastIndexOf("OggS");
    if (page < 0 || end.size() < page + OGG_HEADER_BYTES)
        return false;
    const int segments = static_cast<unsigned char>(end.at(page + OGG_SEGMENTS));
    int size = OGG_HEADER_BYTES + segments;
    for (int i = 0; i < segments && page + OGG_HEADER_BYTES + i < end.size(); ++i)
        size += static_cast<unsigned char>(end.at(page + OGG_HEADER_BYTES + i));
    return (end.at(page + OGG_FLAGS) & OGG_LAST_PAGE) != 0 && page + size <= end.size();
}

} // namespace

Container containerOf(const QByteArray& begin)
{
    const ContainerRow* const row =
        std::find_if(std::begin(rows), std::end(rows), [&begin](const ContainerRow& kind) {
            return begin.mid(kind.place).startsWith(kind.mark);
        });
    if (row != std::end(rows))
        return row->container;
    // A sample may look like a frame, but hardly another one at the right distance.
    const int frame = mp3FrameBytes(begin, 0);
    return frame > 0 && mp3FrameBytes(begin, frame) > 0 ? Container::Whole : Container::None;
}

int bytesForKind(const QByteArray& begin)
{
    const int frame = mp3FrameBytes(begin, 0);
    return frame > 0 ? frame + MPEG_HEADER_BYTES : CONTAINER_MARK_BYTES;
}

qint64 declaredSize(const QByteArray& begin)
{
    const bool isWav = begin.startsWith("RIFF");
    if ((!isWav && !begin.startsWith("FORM")) || begin.size() < 8)
        return -1;
    const char* const field = begin.constData() + 4;
    const quint32 size = isWav ? qFromLittleEndian<quint32>(field) : qFromBigEndian<quint32>(field);
    return size <= 8 || size >= UNKNOWN_SIZE ? -1 : qint64(size) + 8;
}

QString whyCut(const QByteArray& begin, const QByteArray& end, qint64 size)
{
    const qint64 declared = declaredSize(begin);
    if (declared > size)
        return QStringLiteral("is truncated: its header announces %1 bytes, it has %2")
            .arg(declared)
            .arg(size);
    if (begin.startsWith("OggS") && !endsAsOgg(end))
        return QStringLiteral("is truncated: its last page is missing");
    return {};
}

} // namespace morsehost
