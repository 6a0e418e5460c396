// SPDX-License-Identifier: MIT
#include "session/sessionfile.h"

#include "host/trace.h"
#include "tables/hostpath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <utility>

namespace {

// A piece of this many characters always fits the file's own buffer, so that a full disk makes
// the file keep it instead of losing it.
constexpr int CHUNK_CHARACTERS = 4096;

// Days of the fastest keying. A disk that stays full for longer loses what follows.
constexpr int MAX_BACKLOG_CHARACTERS = 8 * 1024 * 1024;

// Each holds a descriptor.
constexpr std::size_t MAX_UNFINISHED_FILES = 32;

// Writes as much of the backlog as the disk takes. True when nothing is left.
bool writeBacklog(QFile& file, QTextStream& stream, QString& backlog)
{
    int written = 0;
    while (written < backlog.size()) {
        if (file.bytesToWrite() > 0 && !file.flush())
            break;
        stream << backlog.mid(written, CHUNK_CHARACTERS);
        stream.flush();
        stream.resetStatus(); // or it would refuse all that follows
        written += CHUNK_CHARACTERS;
    }
    backlog.remove(0, written);
    return backlog.isEmpty() && file.bytesToWrite() == 0;
}

bool isWhole(QFile& file, QTextStream& stream, QString& backlog)
{
    return writeBacklog(file, stream, backlog) || (backlog.isEmpty() && file.flush());
}

void traceLoss(const QFile& file)
{
    traceMessage(QStringLiteral("The end of a session file is lost, the disk is full: ") +
                     file.fileName(),
                 QStringLiteral("tools\\morsehandler\\sessionfile"), __LINE__);
}

} // namespace

struct UnfinishedFiles::Unfinished
{
    std::unique_ptr<QFile> file;
    std::unique_ptr<QTextStream> stream; ///< goes before its file
    QString backlog;
};

UnfinishedFiles::UnfinishedFiles() = default;

UnfinishedFiles::~UnfinishedFiles()
{
    retry();
    for (const Unfinished& lost : m_files)
        traceLoss(*lost.file);
}

void UnfinishedFiles::keep(std::unique_ptr<QFile> file, std::unique_ptr<QTextStream> stream,
                           const QString& backlog)
{
    m_files.push_back({std::move(file), std::move(stream), backlog});
    if (m_files.size() > MAX_UNFINISHED_FILES) {
        traceLoss(*m_files.front().file);
        m_files.pop_front();
    }
}

void UnfinishedFiles::retry()
{
    m_files.remove_if([](Unfinished& unfinished) {
        return isWhole(*unfinished.file, *unfinished.stream, unfinished.backlog);
    });
}

namespace sessionfile {

namespace {

// The stream goes before its file, which flushes and closes itself.
void closeFile(SessionFile session)
{
    std::unique_ptr<QFile> file(std::exchange(session.file, nullptr));
    std::unique_ptr<QTextStream> stream(std::exchange(session.stream, nullptr));
    session.unfinished.retry();
    if (file && !isWhole(*file, *stream, session.backlog))
        session.unfinished.keep(std::move(file), std::move(stream), session.backlog);
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

void traceWrapped(const Name& name, const char* operation)
{
    if (name.counterWrapped && isTraceWanted())
        _Q_TraceOld(QStringLiteral("Error in ") + QLatin1String(operation) +
                        QStringLiteral(": file name already exists: %s"),
                    name.path.toUtf8().constData());
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
    if (session.name.isEmpty())
        return true;
    return QFileInfo(localPath(session.name)).size() >= MAX_SIZE_BYTES;
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
    for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        const QString path = localPath(session.name);
        auto file = std::make_unique<QFile>(path);
        if (file->open(QIODevice::WriteOnly | QIODevice::Text)) {
            session.file = file.release();
            session.stream = new QTextStream(session.file);
            if (session.codec)
                session.stream->setCodec(session.codec);
            return true;
        }
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
    session.unfinished.retry();
    writeBacklog(*session.file, *session.stream, session.backlog);
}

void close(SessionFile session)
{
    closeFile(session);
    session.name.clear();
}

} // namespace sessionfile
