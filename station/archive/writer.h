// SPDX-License-Identifier: MIT
// Brings what was received into the archive, whether or not the archive can be reached now.
#pragma once

#include "station/archive/record.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace morsehost {

/// Which transmissions of a station do not stay.
struct ArchiveLimits
{
    QString station;
    std::optional<qint64> before_us; ///< those that stopped before this time
    /// The oldest, where an archive in a file is larger: until it is a twentieth smaller. 0: never.
    qint64 mostBytes = 0;

    bool isAny() const { return before_us.has_value() || mostBytes > 0; }
};

/// Each record is on disk before `add` returns, and is sent from there by a thread of its own: in
/// order, once. While the archive cannot be reached it is tried again, with growing pauses.
class ArchiveWriter
{
public:
    /// Called with the archive's state when it changes, from the writer's thread: empty when it can
    /// be reached again, else why not.
    using StateListener = std::function<void(const QString& problem)>;

    struct Settings
    {
        QString url;    ///< as Archive::open takes it
        QString folder; ///< of the spool; made when it is missing
        std::chrono::milliseconds firstPause{500};
        std::chrono::milliseconds longestPause{60000};
    };

    explicit ArchiveWriter(const Settings& settings, StateListener listener = {});
    /// What is not sent yet waits in the folder for the next writer. A connection that is being
    /// tried is waited for.
    ~ArchiveWriter();
    ArchiveWriter(const ArchiveWriter&) = delete;
    ArchiveWriter& operator=(const ArchiveWriter&) = delete;

    /// Why the folder cannot be used; empty when it can.
    QString error() const;
    /// From any thread. False when it could not be kept, such as on a full disk; `error()` says
    /// why.
    bool add(const ArchiveRecord& record);
    /// Waits until all is sent. False when the archive cannot be reached now; then what is left
    /// waits in the folder.
    bool flush();
    /// Removes what does not stay, when nothing waits to be sent. Returns at once; while the
    /// archive cannot be reached, nothing is removed.
    void prune(const ArchiveLimits& limits);

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace morsehost
