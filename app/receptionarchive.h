// SPDX-License-Identifier: MIT
// What a command brings into the archive: of a recording all of it when it is over, once, however
// often it is tried; of a pipe each transmission as it ends.
#pragma once

#include "station/archive/passinglistener.h"
#include "station/archive/record.h"
#include "station/archive/recording.h"
#include "station/archive/writer.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <optional>
#include <vector>

namespace morsehost {

/// How a source ended.
enum class SourceEnd { Whole, Damaged, Interrupted };

class ReceptionArchive
{
public:
    /// Without a URL nothing is archived.
    explicit ReceptionArchive(const QString& url);

    /// False, and said on standard error, when it cannot be used.
    bool canBegin();
    /// A source begins; the keys are those of a recording, empty for what comes but once.
    void begin(const RecordingKeys& keys, const QString& source);
    void add(const Transmission& transmission);
    /// A recording that was interrupted is left to the next attempt.
    void end(SourceEnd how);
    /// All is over. False, and said on standard error, when not all could be archived.
    bool finish();

private:
    QString m_url;
    std::optional<QTemporaryDir> m_unsent; ///< what waits to be archived
    std::unique_ptr<ArchiveWriter> m_writer;
    RecordingKeys m_keys;
    QString m_source;
    std::vector<ArchiveRecord> m_records; ///< of the recording
    bool m_isIncomplete = false;
};

/// Archives what a station reports, and passes all of it on.
class ArchivingListener : public PassingListener
{
public:
    /// Both outlive it.
    ArchivingListener(StationListener& next, ReceptionArchive& archive);

    void transmission(const Transmission& transmission) override;

private:
    ReceptionArchive& m_archive;
};

} // namespace morsehost
