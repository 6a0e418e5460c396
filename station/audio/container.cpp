// SPDX-License-Identifier: MIT
#include "station/audio/container.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>

namespace morsehost {

namespace {

// Who writes into a pipe says the largest size that a program may read, or none.
constexpr quint32 UNKNOWN_SIZE = 0x7FFFF000U;

// The largest page of an Ogg file has 65307 bytes.
constexpr qint64 PAGE_BYTES = 65536;
constexpr int OGG_HEADER_BYTES = 27;
constexpr int OGG_FLAGS = 5;
constexpr int OGG_SEGMENTS = 26;
constexpr char OGG_LAST_PAGE = 4;

struct Row
{
    const char* mark;
    Container container;
};

constexpr Row rows[] = {
    {"RIFF", Container::Streamed}, {"RF64", Container::Streamed}, {"FORM", Container::Streamed},
    {"OggS", Container::Streamed}, {"fLaC", Container::Whole},    {"ID3", Container::Whole},
};

// The file ends with a page that says that it is the last one, and is whole.
bool endsAsOgg(const QByteArray& tail)
{
    const int page = tail.lastIndexOf("OggS");
    if (page < 0 || tail.size() < page + OGG_HEADER_BYTES)
        return false;
    const int segments = static_cast<unsigned char>(tail.at(page + OGG_SEGMENTS));
    int size = OGG_HEADER_BYTES + segments;
    for (int i = 0; i < segments && page + OGG_HEADER_BYTES + i < tail.size(); ++i)
        size += static_cast<unsigned char>(tail.at(page + OGG_HEADER_BYTES + i));
    return (tail.at(page + OGG_FLAGS) & OGG_LAST_PAGE) != 0 && page + size <= tail.size();
}

} // namespace

Container containerOf(const QByteArray& begin)
{
    const Row* const row =
        std::find_if(std::begin(rows), std::end(rows),
                     [&begin](const Row& kind) { return begin.startsWith(kind.mark); });
    return row == std::end(rows) ? Container::None : row->container;
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

QString whyCut(QFile& file)
{
    file.seek(0);
    const QByteArray begin = file.read(CONTAINER_MARK_BYTES);
    const qint64 declared = declaredSize(begin);
    if (declared > file.size())
        return QStringLiteral("is cut: its header tells of %1 bytes, %2 are there")
            .arg(declared)
            .arg(file.size());
    file.seek(std::max<qint64>(0, file.size() - PAGE_BYTES));
    if (begin.startsWith("OggS") && !endsAsOgg(file.read(PAGE_BYTES)))
        return QStringLiteral("is cut: its last page is missing");
    return {};
}

} // namespace morsehost
