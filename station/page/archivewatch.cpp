// SPDX-License-Identifier: MIT
#include "station/page/archivewatch.h"

#include "station/archive/archive.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace morsehost {

namespace {

constexpr int MOST_AT_ONCE = 100;
constexpr std::chrono::milliseconds LONGEST_PAUSE{60000};

} // namespace

class ArchiveWatch::Private
{
public:
    Private(Settings settings, Listener listener)
        : m_settings(std::move(settings))
        , m_listener(std::move(listener))
        , m_thread([this] { run(); })
    {
    }

    ~Private()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isStopping = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

private:
    void run()
    {
        std::chrono::milliseconds pause = m_settings.pause;
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_isStopping) {
            lock.unlock();
            const bool isThere = look();
            pause = isThere ? m_settings.pause : std::min(2 * pause, LONGEST_PAUSE);
            lock.lock();
            m_changed.wait_for(lock, pause, [this] { return m_isStopping; });
        }
        lock.unlock();
        m_archive.reset(); // a connection belongs to its thread
    }

    // False when the archive is away.
    bool look()
    {
        QString error;
        if (!m_archive)
            m_archive = Archive::open(m_settings.url, error);
        if (m_archive && (m_latest ? lookForMore() : begin()))
            return true;
        m_archive.reset(); // a connection that failed once may be dead
        return false;
    }

    bool begin()
    {
        m_latest = m_archive->latest();
        return m_latest.has_value();
    }

    bool lookForMore()
    {
        ArchiveQuery query;
        query.after = *m_latest;
        query.limit = MOST_AT_ONCE;
        const auto found = m_archive->search(query);
        if (!found)
            return false;
        for (auto one = found->rbegin(); one != found->rend(); ++one) {
            if (one->record.station != m_settings.station)
                m_listener(one->record);
        }
        if (!found->empty())
            m_latest = found->front().id;
        return true;
    }

    Settings m_settings;
    Listener m_listener;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isStopping = false;
    // The thread's own.
    std::unique_ptr<Archive> m_archive;
    std::optional<qint64> m_latest; ///< id
    std::thread m_thread;
};

ArchiveWatch::ArchiveWatch(const Settings& settings, Listener listener)
    : m_d(std::make_unique<Private>(settings, std::move(listener)))
{
}

ArchiveWatch::~ArchiveWatch() = default;

} // namespace morsehost
