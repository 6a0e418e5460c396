// SPDX-License-Identifier: MIT
#include "station/saveledger.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace morsehost {

namespace {

// A disk may stay full for long, and each file holds a descriptor.
constexpr std::size_t MAX_FILES = 32;

// False when there is no such file any more.
bool look(int descriptor, const QString& path, struct stat& status)
{
    if (descriptor >= 0)
        return fstat(descriptor, &status) == 0 && status.st_nlink > 0;
    return ::stat(QFile::encodeName(path).constData(), &status) == 0;
}

} // namespace

SaveLedger::SaveLedger(const QString& directory, Listener listener)
    : m_directory(directory)
    , m_listener(std::move(listener))
{
}

SaveLedger::~SaveLedger()
{
    for (Row* const row : {&m_codes, &m_text}) {
        for (Growing& file : row->files)
            release(file);
    }
}

SaveLedger::Row& SaveLedger::row(SessionFileKind kind)
{
    return kind == SessionFileKind::Codes ? m_codes : m_text;
}

void SaveLedger::begun(SessionFileKind kind, const QString& path)
{
    Row& row = this->row(kind);
    // An earlier file stays only for what a full disk has not taken yet.
    if (!row.files.empty() && settle(row.files.back())) {
        release(row.files.back());
        row.files.pop_back();
    }
    if (row.files.size() == MAX_FILES) {
        row.lost_units += row.files.front().due_units;
        release(row.files.front());
        row.files.erase(row.files.begin());
    }
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC);
    row.files.push_back({descriptor, path, 0, 0, 0});
    // cppcheck-suppress resourceLeak; release() closes it
}

bool SaveLedger::isWritten(SessionFileKind kind, long long bytes, long long units)
{
    Row& row = this->row(kind);
    if (row.files.empty()) {
        row.lost_units += units;
        note(row, true, m_directory, QStringLiteral("cannot be created there"));
        return true;
    }
    Growing& file = row.files.back();
    file.due_bytes += bytes;
    file.due_units += units;
    struct stat status = {};
    if (!look(file.descriptor, file.path, status)) {
        row.lost_units += file.due_units;
        note(row, true, file.path, QStringLiteral("was deleted while it was written"));
        release(file);
        row.files.pop_back();
        return false;
    }
    const bool isIn = settle(file);
    note(row, !isIn, file.path, QStringLiteral("cannot be written; is the disk full?"));
    return true;
}

void SaveLedger::documents(std::size_t waiting, std::size_t lost)
{
    const bool isFailing = waiting > 0 || lost > m_lostDocuments;
    m_waitingDocuments = waiting;
    m_lostDocuments = lost;
    note(m_documents, isFailing, m_directory, QStringLiteral("cannot be written there"));
}

SaveLosses SaveLedger::losses()
{
    return {lostUnits(m_codes), lostUnits(m_text),
            static_cast<long long>(m_waitingDocuments + m_lostDocuments)};
}

// True when all that was due is in the file.
bool SaveLedger::settle(Growing& file)
{
    struct stat status = {};
    if (file.due_bytes > 0 && look(file.descriptor, file.path, status) &&
        status.st_size - file.size_bytes >= file.due_bytes) {
        file.size_bytes = status.st_size;
        file.due_bytes = 0;
        file.due_units = 0;
    }
    return file.due_bytes == 0;
}

void SaveLedger::release(Growing& file)
{
    if (file.descriptor >= 0)
        ::close(file.descriptor);
    file.descriptor = -1;
}

// Said once when it begins, and once when it is over.
void SaveLedger::note(Row& row, bool isFailing, const QString& subject, const QString& reason)
{
    if (isFailing == row.isFailing)
        return;
    row.isFailing = isFailing;
    m_listener(
        isFailing
            ? QStringLiteral("%1: %2 %3").arg(subject, QLatin1String(row.name), reason)
            : QStringLiteral("%1: %2 is written again").arg(subject, QLatin1String(row.name)));
}

long long SaveLedger::lostUnits(Row& row)
{
    long long lost = row.lost_units;
    for (Growing& file : row.files) {
        settle(file);
        lost += file.due_units;
    }
    return lost;
}

} // namespace morsehost
