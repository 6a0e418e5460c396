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

UnfinishedFiles::~UnfinishedFiles() = default;

void UnfinishedFiles::Keep(std::unique_ptr<QFile> file, std::unique_ptr<QTextStream> stream,
                           const QString& backlog)
{
    m_files.push_back({std::move(file), std::move(stream), backlog});
    if (m_files.size() > MAX_UNFINISHED_FILES) {
        traceLoss(*m_files.front().file);
        m_files.pop_front();
    }
}

void UnfinishedFiles::Retry()
{
    m_files.remove_if([](Unfinished& unfinished) {
        return isWhole(*unfinished.file, *unfinished.stream, unfinished.backlog);
    });
}

void UnfinishedFiles::Finish()
{
    Retry();
    for (const Unfinished& lost : m_files)
        traceLoss(*lost.file);
    m_files.clear();
}

SessionFile::SessionFile(const Fields& fields, const char* codec, UnfinishedFiles& unfinished)
    : m_fields(fields)
    , m_codec(codec)
    , m_unfinished(unfinished)
{
}

SessionFile::~SessionFile()
{
    delete std::exchange(m_fields.stream, nullptr);
    delete std::exchange(m_fields.file, nullptr);
}

bool SessionFile::NeedsNewName() const
{
    return m_fields.name.isEmpty() || QFileInfo(localPath(m_fields.name)).size() >= MAX_SIZE_BYTES;
}

void SessionFile::Begin()
{
    closeFile();
    m_fields.column = 0;
}

bool SessionFile::Open(const std::function<void()>& makeName)
{
    bool wasRefused = false;
    for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        const QString path = localPath(m_fields.name);
        auto file = std::make_unique<QFile>(path);
        if (file->open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::NewOnly)) {
            auto stream = std::make_unique<QTextStream>(file.get());
            if (m_codec)
                stream->setCodec(m_codec);
            m_fields.file = file.release();
            m_fields.stream = stream.release();
            return true;
        }
        // A name that is free and still cannot be created may be of a folder that is no longer the
        // one to save in. Where the next name fails in the same way, its numbers will, too.
        if (!sessionfile::isTaken(path) && std::exchange(wasRefused, true))
            return false;
        makeName();
    }
    return false;
}

void SessionFile::Write(const QString& piece)
{
    if (!m_fields.stream)
        return;
    if (m_backlog.size() < MAX_BACKLOG_CHARACTERS)
        m_backlog += piece;
    if (m_fields.column >= WRAP_COLUMN) {
        m_backlog += QLatin1Char('\n');
        m_fields.column = 0;
    }
    m_fields.column += static_cast<unsigned int>(piece.size());
    m_unfinished.Retry();
    writeBacklog(*m_fields.file, *m_fields.stream, m_backlog);
}

void SessionFile::Close()
{
    closeFile();
    m_fields.name.clear();
}

// The stream goes before its file, which flushes and closes itself.
void SessionFile::closeFile()
{
    std::unique_ptr<QFile> file(std::exchange(m_fields.file, nullptr));
    std::unique_ptr<QTextStream> stream(std::exchange(m_fields.stream, nullptr));
    m_unfinished.Retry();
    if (file && !isWhole(*file, *stream, m_backlog))
        m_unfinished.Keep(std::move(file), std::move(stream), m_backlog);
    m_backlog.clear();
}

namespace sessionfile {

Name freeName(const QString& directory, const QString& stamp, const QString& suffix,
              const std::function<bool(const QString& path)>& isTaken, qint32 firstNumber)
{
    const QDir folder(directory);
    const auto numbered = [&](qint32 number) {
        return folder.absoluteFilePath(stamp + QLatin1Char('_') + QString::number(number) + suffix +
                                       QStringLiteral(".txt"));
    };
    QString path = numbered(1);
    qint32 number = firstNumber;
    while (number >= 2 && isTaken(path)) {
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

bool isTaken(const QString& path)
{
    const QFileInfo there(localPath(path));
    return there.exists() || there.isSymLink();
}

QString frequencyText(double frequency_Hz)
{
    // Single precision at each step is part of the naming: it decides the last digit of some names.
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

QString namePart(QString name)
{
    return name.remove(QLatin1Char('/')).remove(QLatin1Char('\\'));
}

} // namespace sessionfile
