// SPDX-License-Identifier: MIT
#include "session/sessionfile.h"

#include "files/hostpath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace sessionfile {

namespace {

// A piece of this many characters always fits the file's own buffer, so that a full disk makes
// the file keep it instead of losing it.
constexpr int CHUNK_CHARACTERS = 4096;

// Days of the fastest keying. A disk that stays full for longer loses what follows.
constexpr int MAX_BACKLOG_CHARACTERS = 8 * 1024 * 1024;

// Writes as much of the backlog as the disk takes.
void writeBacklog(SessionFile session)
{
    int written = 0;
    while (written < session.backlog.size()) {
        if (session.file->bytesToWrite() > 0 && !session.file->flush())
            break;
        *session.stream << session.backlog.mid(written, CHUNK_CHARACTERS);
        session.stream->flush();
        session.stream->resetStatus(); // or it would refuse all that follows
        written += CHUNK_CHARACTERS;
    }
    session.backlog.remove(0, written);
}

void closeFile(SessionFile session)
{
    if (session.stream && session.file && session.file->isOpen()) {
        writeBacklog(session);
        session.file->flush();
        session.file->close();
    }
    delete session.stream;
    session.stream = nullptr;
    delete session.file;
    session.file = nullptr;
    session.backlog.clear();
}

} // namespace

Name freeName(const QString& directory, const QString& stamp, const QString& suffix,
              const std::function<bool(const QString& path)>& exists, qint32 firstNumber)
{
    const QDir folder(directory);
    const auto numbered = [&](qint32 number) {
        return folder.absoluteFilePath(stamp + QLatin1Char('_') + QString::number(number) + suffix +
                                       QStringLiteral(".txt"));
    };
    QString path = numbered(1);
    qint32 number = firstNumber;
    while (number >= 2 && exists(path)) {
        path = numbered(number);
        number = static_cast<qint32>(static_cast<quint32>(number) + 1U);
    }
    return {path, number < 0};
}

bool fileExists(const QString& path)
{
    return QFile::exists(localPath(path));
}

QString frequencyText(double frequency_Hz)
{
    // Through single precision on purpose: names have to agree with those of existing archives.
    const auto frequency_kHz =
        static_cast<float>(static_cast<double>(static_cast<float>(frequency_Hz)) / 1000.0);
    QString text;
    if (frequency_kHz > 1000.0F) {
        const float frequency_MHz = frequency_kHz / 1000.0F;
        text = QString::number(static_cast<double>(frequency_MHz), 'f', 3) + QStringLiteral("MHz");
    } else {
        text = QString::number(static_cast<double>(frequency_kHz), 'f', 3) + QStringLiteral("KHz");
    }
    return text.replace(QLatin1Char('.'), QLatin1Char('_'));
}

bool needsNewName(const SessionFile& session)
{
    return session.name.isEmpty() || QFileInfo(localPath(session.name)).size() >= MAX_SIZE_BYTES;
}

void begin(SessionFile session)
{
    closeFile(session);
    session.column = 0;
}

bool open(SessionFile session, const std::function<void()>& makeName)
{
    if (session.file)
        return true;
    delete session.stream;
    session.stream = nullptr;
    for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        const QString path = localPath(session.name);
        session.file = new QFile(path);
        if (session.file->open(QIODevice::WriteOnly | QIODevice::Text)) {
            session.stream = new QTextStream(session.file);
            if (session.codec)
                session.stream->setCodec(session.codec);
            return true;
        }
        delete session.file;
        session.file = nullptr;
        const bool nameIsTaken = QFile::exists(path);
        makeName();
        // Where a free name cannot be created, a name with another number cannot be either.
        if (!nameIsTaken)
            break;
    }
    return false;
}

void write(SessionFile session, const QString& piece)
{
    if (session.backlog.size() < MAX_BACKLOG_CHARACTERS)
        session.backlog += piece;
    if (session.column >= WRAP_COLUMN) {
        session.backlog += QLatin1Char('\n');
        session.column = 0;
    }
    session.column += static_cast<unsigned int>(piece.size());
    writeBacklog(session);
}

void close(SessionFile session)
{
    closeFile(session);
    session.name.clear();
}

} // namespace sessionfile
