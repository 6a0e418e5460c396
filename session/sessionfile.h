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
    /// Tries a last time.
    ~UnfinishedFiles();
    UnfinishedFiles(const UnfinishedFiles&) = delete;
    UnfinishedFiles& operator=(const UnfinishedFiles&) = delete;

    /// Takes the open file and its stream over.
    void keep(std::unique_ptr<QFile> file, std::unique_ptr<QTextStream> stream,
              const QString& backlog);
    void retry();

private:
    struct Unfinished;
    std::list<Unfinished> m_files; ///< the oldest in front
};

/// What tells the code file and the text file apart, and the state of one of them. The state
/// belongs to the session handler; this is a view of it.
struct SessionFile
{
    QString& name;        ///< full path, empty when none
    QFile*& file;         ///< null when closed
    QTextStream*& stream; ///< null when closed
    unsigned int& column; ///< characters since the last line break
    QString& backlog;     ///< what could not be written yet
    UnfinishedFiles& unfinished;
    const char* codec; ///< null for the stream's own
};

namespace sessionfile {

/// From this size on the next write begins a new file.
constexpr qint64 MAX_SIZE_BYTES = 256001;
/// From this column on the next piece is followed by a line break.
constexpr unsigned int WRAP_COLUMN = 100;
/// So many names are tried before a write is dropped.
constexpr int OPEN_ATTEMPTS = 10000;

struct Name
{
    QString path;
    bool counterWrapped; ///< every number was taken: `path` exists already
};

/// The first of stamp_1…, stamp_2… in `directory` whose file does not exist. `firstNumber` is
/// where the search goes on after 1.
Name freeName(const QString& directory, const QString& stamp, const QString& suffix,
              const std::function<bool(const QString& path)>& exists, qint32 firstNumber = 2);
/// Says so when the counter wrapped, in the name of the operation that wanted the name.
void traceWrapped(const Name& name, const char* operation);
bool fileExists(const QString& path);

/// The receive frequency as part of a name: "7_025MHz".
QString frequencyText(double frequency_Hz);

/// True when there is no name yet or the file has reached its limit.
bool needsNewName(const SessionFile& session);
/// Closes the file, if any, and begins anew at column 0; the name stays. Here and in `close`, a
/// file that the disk has not taken whole goes to the unfinished ones.
void begin(SessionFile session);
/// Opens the file under its name, or under the next one that `makeName` sets. False when no name
/// can be opened; then the file stays closed.
bool open(SessionFile session, const std::function<void()>& makeName);
/// Writes a piece, wraps the line and flushes. What the disk refuses is kept and written first
/// next time.
void write(SessionFile session, const QString& piece);
/// Closes the file, if any, and forgets its name.
void close(SessionFile session);

} // namespace sessionfile
