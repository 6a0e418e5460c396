// SPDX-License-Identifier: MIT
#include "station/archive/spool.h"

#include "station/io/systemtext.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace morsehost {

namespace {

// What has been taken is given back to the disk a file at a time.
constexpr qint64 FILE_BYTES = qint64{4} * 1024 * 1024;
// What is given at once, whatever the lines' number.
constexpr qint64 BATCH_BYTES = qint64{4} * 1024 * 1024;
// What is looked at of a file at once, from its end.
constexpr qint64 PIECE_BYTES = qint64{64} * 1024;

// Where the last whole line ends: behind the last line end, found from behind.
qint64 endOfWholeLines(QFile& file)
{
    for (qint64 end = file.size(); end > 0;) {
        const qint64 begin = std::max<qint64>(0, end - PIECE_BYTES);
        file.seek(begin);
        const int found = file.read(end - begin).lastIndexOf('\n');
        if (found >= 0)
            return begin + found + 1;
        end = begin;
    }
    return 0;
}

} // namespace

// A disk that is full now has room later.
QString Spool::folderFault(const QString& folder)
{
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir())
        return QStringLiteral("the folder cannot be made");
    if (faccessat(AT_FDCWD, QFile::encodeName(folder).constData(), W_OK | X_OK, AT_EACCESS) != 0)
        return QStringLiteral("no file can be written there: ") + systemError(errno);
    return {};
}

Spool::Spool(const QString& folder)
    : m_folder(folder)
    , m_error(folderFault(folder))
{
    if (!m_error.isEmpty())
        return;
    const QStringList files =
        QDir(folder).entryList({QStringLiteral("*.lines")}, QDir::Files, QDir::Name);
    for (const QString& file : files)
        m_lastFile = std::max(m_lastFile, file.section(QLatin1Char('.'), 0, 0).toLongLong());
    if (!files.isEmpty())
        m_taken.file = files.first().section(QLatin1Char('.'), 0, 0).toLongLong();
    readPosition();
    // A line that a crash cut off has never counted, and the next one may not continue it.
    QFile last(path(m_lastFile));
    if (last.open(QIODevice::ReadWrite))
        last.resize(endOfWholeLines(last));
    // What comes now would never be given if it lay before what has been taken.
    if (m_taken.file == m_lastFile)
        m_taken.offset = std::min(m_taken.offset, last.size());
}

QString Spool::path(qint64 number) const
{
    return QDir(m_folder).filePath(
        QStringLiteral("%1.lines").arg(number, 12, 10, QLatin1Char('0')));
}

void Spool::readPosition()
{
    QFile file(QDir(m_folder).filePath(QStringLiteral("taken")));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QList<QByteArray> words = file.readAll().split(' ');
    if (words.size() != 2)
        return;
    const Position position{words[0].toLongLong(), words[1].toLongLong()};
    // Files that are gone have been taken.
    if (position.file < m_taken.file)
        return;
    m_taken = position;
    m_lastFile = std::max(m_lastFile, m_taken.file);
}

bool Spool::writePosition(const Position& position)
{
    QSaveFile file(QDir(m_folder).filePath(QStringLiteral("taken")));
    return file.open(QIODevice::WriteOnly) &&
           file.write(QByteArray::number(position.file) + ' ' +
                      QByteArray::number(position.offset)) > 0 &&
           file.commit();
}

bool Spool::append(const QByteArray& line)
{
    if (m_output.isOpen() && m_output.size() >= FILE_BYTES) {
        m_output.close();
        ++m_lastFile;
    }
    if (!m_output.isOpen()) {
        m_output.setFileName(path(m_lastFile));
        if (!m_output.open(QIODevice::WriteOnly | QIODevice::Append)) {
            m_error = m_output.errorString();
            return false;
        }
    }
    const qint64 before = m_output.size();
    const QByteArray whole = line + '\n';
    if (m_output.write(whole) == whole.size() && m_output.flush() &&
        fdatasync(m_output.handle()) == 0) {
        m_error.clear();
        return true;
    }
    m_error = m_output.errorString();
    // Half a line would be taken for the beginning of the next one.
    m_output.close();
    QFile::resize(path(m_lastFile), before);
    return false;
}

std::vector<QByteArray> Spool::oldest(int most)
{
    std::vector<QByteArray> lines;
    qint64 bytes = 0;
    const auto isFull = [&] {
        return lines.size() >= static_cast<std::size_t>(most) || bytes >= BATCH_BYTES;
    };
    m_ends.clear();
    Position position = m_taken;
    while (position.file <= m_lastFile && !isFull()) {
        QFile file(path(position.file));
        if (file.open(QIODevice::ReadOnly) && file.seek(position.offset)) {
            while (!isFull()) {
                // With a limit it would take that much memory for each line.
                const QByteArray line = file.readLine();
                if (!line.endsWith('\n'))
                    break;
                position.offset += line.size();
                bytes += line.size();
                lines.push_back(line.chopped(1));
                m_ends.push_back(position);
            }
            if (position.file == m_lastFile || isFull())
                break;
        }
        position = {position.file + 1, 0};
    }
    return lines;
}

bool Spool::take(int count)
{
    if (count <= 0)
        return true;
    const Position position = m_ends.at(static_cast<std::size_t>(count) - 1);
    if (!writePosition(position)) {
        m_error = QStringLiteral("cannot record which transmissions were sent");
        return false;
    }
    for (qint64 file = m_taken.file; file < position.file; ++file)
        QFile::remove(path(file));
    m_taken = position;
    m_ends.erase(m_ends.begin(), m_ends.begin() + count);
    return true;
}

qint64 Spool::size() const
{
    qint64 bytes = -m_taken.offset;
    for (qint64 file = m_taken.file; file <= m_lastFile; ++file)
        bytes += QFile(path(file)).size();
    return std::max<qint64>(bytes, 0);
}

} // namespace morsehost
