// SPDX-License-Identifier: MIT
// What others put into a shared archive, for those who look at this station's page.
#pragma once

#include "station/archive/record.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace morsehost {

class ArchiveWatch
{
public:
    /// Called from the watch's thread.
    using Listener = std::function<void(const ArchiveRecord& record)>;

    struct Settings
    {
        QString url;     ///< as Archive::open takes it
        QString station; ///< whose own transmissions are left out
        std::chrono::milliseconds pause{3000};
    };

    /// Looks from now on, in a thread of its own. Of more than a hundred that came at once, the
    /// latest hundred are shown. An archive that is away is tried again, with growing pauses.
    ArchiveWatch(const Settings& settings, Listener listener);
    ~ArchiveWatch();
    ArchiveWatch(const ArchiveWatch&) = delete;
    ArchiveWatch& operator=(const ArchiveWatch&) = delete;

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace morsehost
