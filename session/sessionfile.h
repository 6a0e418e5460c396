// SPDX-License-Identifier: MIT
// One of the two files of a session: its name, its life and how text gets into it.
// No API: used inside the library only.
#pragma once

#include <QString>

#include <functional>
#include <list>
#include <memory>

class QFile;
class QTextStream;

/// Files that were closed before a full disk had taken all of their text. They are written when it
/// has room again; of more than a few the oldest are given up, with a trace.
class UnfinishedFiles
{
public:
    UnfinishedFiles();
    ~UnfinishedFiles();
    UnfinishedFiles(const UnfinishedFiles&) = delete;
    UnfinishedFiles& operator=(const UnfinishedFiles&) = delete;

    /// Takes the open file and its stream over.
    void Keep(std::unique_ptr<QFile> file, std::unique_ptr<QTextStream> stream,
              const QString& backlog);
    void Retry();
    /// Tries a last time and gives up what is left, with a trace for each file.
    void Finish();

private:
    struct Unfinished;
    std::list<Unfinished> m_files; ///< the oldest in front
};

/// The code file or the text file of a session handler.
///
/// A file is always a new one: what already exists under a name, begun by another handler or
/// another process, is left alone.
class SessionFile
{
public:
    /// Where the handler keeps what the file shows of its state.
    struct Fields
    {
        QString& name;        ///< full path, empty when none
        QFile*& file;         ///< null when closed
        QTextStream*& stream; ///< null when closed
        unsigned int& column; ///< characters since the last line break
    };

    /// From this size on the next write begins a new file.
    static constexpr qint64 MAX_SIZE_BYTES = 256001;
    /// From this column on the next piece is followed by a line break.
    static constexpr unsigned int WRAP_COLUMN = 100;
    /// So many names are tried before a write is dropped.
    static constexpr int OPEN_ATTEMPTS = 10000;

    /// `codec` is null for the stream's own. Fields and unfinished files outlive the object.
    SessionFile(const Fields& fields, const char* codec, UnfinishedFiles& unfinished);
    ~SessionFile();
    SessionFile(const SessionFile&) = delete;
    SessionFile& operator=(const SessionFile&) = delete;

    /// True when there is no name yet or the file has reached its limit.
    bool NeedsNewName() const;
    /// Closes the file, if any, and begins again at column 0; the name stays. Here and in `Close`,
    /// a file that the disk has not taken whole goes to the unfinished ones.
    void Begin();
    /// Creates the file under its name or, when that fails, under one that `makeName` sets. False
    /// when no file could be created; nothing is open then. Only for a closed file.
    bool Open(const std::function<void()>& makeName);
    /// Writes a piece, wraps the line and flushes. What the disk refuses is kept and written first
    /// next time. Drops the piece when no file is open.
    void Write(const QString& piece);
    /// Closes the file, if any, and forgets its name.
    void Close();

private:
    void closeFile();

    Fields m_fields;
    const char* m_codec;
    UnfinishedFiles& m_unfinished;
    QString m_backlog; ///< what could not be written yet
};

/// How session files are named.
namespace sessionfile {

struct Name
{
    QString path;
    bool counterWrapped; ///< every number was taken: `path` exists already
};

/// The first of stamp_1…, stamp_2… in `directory` that is not taken. `firstNumber` is where the
/// search goes on after 1.
Name freeName(const QString& directory, const QString& stamp, const QString& suffix,
              const std::function<bool(const QString& path)>& isTaken, qint32 firstNumber = 2);
/// Says so when the counter wrapped, in the name of the operation that wanted the name.
void traceWrapped(const Name& name, const char* operation);
/// Whether there is anything of that name, a link that leads nowhere included.
bool isTaken(const QString& path);

/// The receive frequency as part of a name: "7_025MHz".
QString frequencyText(double frequency_Hz);

/// A name that may hold anything as part of a file name, which is no path.
QString namePart(QString name);

} // namespace sessionfile
