// SPDX-License-Identifier: MIT
#include "app/receptionarchive.h"

#include "app/console/complain.h"
#include "station/archive/archive.h"

#include <utility>

namespace morsehost {

ReceptionArchive::ReceptionArchive(const QString& url)
    : m_url(url)
{
}

bool ReceptionArchive::canBegin()
{
    if (m_url.isEmpty() || m_writer)
        return true;
    QString error;
    if (!Archive::open(m_url, error)) {
        complain(QStringLiteral("archive"), error);
        return false;
    }
    m_unsent.emplace();
    m_writer = std::make_unique<ArchiveWriter>(
        ArchiveWriter::Settings{m_url, m_unsent->filePath(QStringLiteral("unsent"))});
    if (m_writer->error().isEmpty())
        return true;
    complain(m_unsent->path(), m_writer->error());
    return false;
}

void ReceptionArchive::begin(const RecordingKeys& keys, const QString& source)
{
    m_keys = keys;
    m_source = source;
    m_records.clear();
}

void ReceptionArchive::add(const Transmission& transmission)
{
    if (!m_writer)
        return;
    if (!m_keys.place.isEmpty())
        m_records.push_back({keyOfRecorded(m_keys.place, transmission), {}, transmission});
    else if (!m_writer->add({keyOfHeard(), {}, transmission}))
        m_isIncomplete = true;
}

// What is damaged may be read better by the next attempt.
void ReceptionArchive::end(SourceEnd how)
{
    const std::vector<ArchiveRecord> records = std::exchange(m_records, {});
    if (!m_writer || m_keys.content.isEmpty() || how == SourceEnd::Interrupted)
        return;
    QString error;
    const std::unique_ptr<Archive> archive = Archive::open(m_url, error);
    const bool isAdded = archive && (how == SourceEnd::Whole
                                         ? archive->addRecording(m_keys.content, m_source, records)
                                         : archive->add(records));
    if (isAdded)
        return;
    complain(QStringLiteral("archive"), archive ? archive->error() : error);
    m_isIncomplete = true;
}

bool ReceptionArchive::finish()
{
    if (!m_writer || (m_writer->flush() && !m_isIncomplete))
        return true;
    complain(QStringLiteral("archive"), QStringLiteral("not all transmissions could be archived"));
    return false;
}

ArchivingListener::ArchivingListener(StationListener& next, ReceptionArchive& archive)
    : PassingListener(next)
    , m_archive(archive)
{
}

void ArchivingListener::transmission(const Transmission& transmission)
{
    m_archive.add(transmission);
    PassingListener::transmission(transmission);
}

} // namespace morsehost
