// SPDX-License-Identifier: MIT
// Whether what is received to be saved reaches the disk. The library drops what it cannot write and
// has no way to report it to a host, so its files are looked at from outside.
#pragma once

#include <QString>

#include <cstddef>
#include <functional>
#include <vector>

namespace morsehost {

/// The two files that grow while a station receives.
enum class SessionFileKind { Codes, Text };

struct SaveLosses
{
    long long symbols = 0;    ///< dots and dashes that are in no code file
    long long characters = 0; ///< that are in no text file
    long long documents = 0;  ///< transmissions that are in no result document

    bool any() const { return symbols + characters + documents > 0; }
};

/// Watches files by what they are, not by their names: one that is moved away while it grows has
/// been saved, one that is deleted has not. What it knows of a file is its size, which has to grow
/// by what was due.
class SaveLedger
{
public:
    /// Hears, in one line, that something cannot be saved any more, or can be again.
    using Listener = std::function<void(const QString& message)>;

    /// `directory` is where everything is saved.
    SaveLedger(const QString& directory, Listener listener);
    ~SaveLedger();
    SaveLedger(const SaveLedger&) = delete;
    SaveLedger& operator=(const SaveLedger&) = delete;

    /// A new, empty file that takes what comes from now on.
    void begun(SessionFileKind kind, const QString& path);
    /// So many bytes at least, for so many dots, dashes or characters, have been handed over to be
    /// written. False when the file was deleted while it grew: then a new one is needed.
    bool isWritten(SessionFileKind kind, long long bytes, long long units);
    /// How many transmissions a save has left unwritten, and how many were given up so far.
    void documents(std::size_t waiting, std::size_t lost);

    /// Everything is closed: what is not on disk by now is lost.
    SaveLosses losses();

private:
    /// What was handed over for one file and has not been seen in it.
    struct Growing
    {
        /// Of the file itself, which its path may not lead to any more; the library has one too,
        /// but keeps it to itself. Without access to the content; -1 when there is none to be had.
        int descriptor;
        QString path;
        long long size_bytes;
        long long due_bytes;
        long long due_units;
    };
    struct Row
    {
        const char* name;
        std::vector<Growing> files = {}; ///< the last one grows, earlier ones wait for the disk
        long long lost_units = 0; ///< of files that are watched no longer, or never came to be
        bool isFailing = false;
    };

    Row& row(SessionFileKind kind);
    static bool settle(Growing& file);
    static void release(Growing& file);
    void note(Row& row, bool isFailing, const QString& subject, const QString& reason);
    static long long lostUnits(Row& row);

    QString m_directory;
    Listener m_listener;
    Row m_codes{"the code file"};
    Row m_text{"the text file"};
    Row m_documents{"the result document"};
    std::size_t m_waitingDocuments = 0;
    std::size_t m_lostDocuments = 0;
};

} // namespace morsehost
