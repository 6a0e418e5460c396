// SPDX-License-Identifier: MIT
#include "station/archive/writer.h"

#include "station/archive/archive.h"
#include "station/archive/spool.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>

namespace morsehost {

namespace {

constexpr int RECORDS_AT_ONCE = 500;
// A short while, so that what comes meanwhile is sent soon.
constexpr int REMOVED_AT_ONCE = 1000;
// Of the size that is allowed, what is free when something was removed.
constexpr int SPARE_SHARE = 20;

} // namespace

class ArchiveWriter::Private
{
public:
    Private(const Settings& settings, StateListener listener)
        : m_settings(settings)
        , m_listener(std::move(listener))
        , m_spool(settings.folder)
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

    QString error()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_spool.error();
    }

    bool add(const QByteArray& line)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!m_spool.append(line))
                return false;
            m_isIdle = false;
        }
        m_changed.notify_all();
        return true;
    }

    bool flush()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const long long failures = m_failures;
        m_triesNow = true;
        m_isIdle = false;
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return m_isIdle || m_failures != failures; });
        return m_isIdle;
    }

    void prune(const ArchiveLimits& limits)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_limits = limits;
        }
        m_changed.notify_all();
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        std::chrono::milliseconds pause = m_settings.firstPause;
        while (!m_isStopping) {
            const std::vector<QByteArray> lines = m_spool.oldest(RECORDS_AT_ONCE);
            if (lines.empty()) {
                m_isIdle = true;
                m_changed.notify_all();
                m_changed.wait(lock, [this] { return m_isStopping || !m_isIdle || m_limits; });
                if (!m_isStopping && m_isIdle)
                    removeSome(lock);
                continue;
            }
            m_triesNow = false;
            lock.unlock();
            const QString problem = send(lines);
            lock.lock();
            if (problem.isEmpty() && m_spool.take(static_cast<int>(lines.size()))) {
                pause = m_settings.firstPause;
                continue;
            }
            ++m_failures;
            m_changed.notify_all();
            m_changed.wait_for(lock, pause, [this] { return m_isStopping || m_triesNow; });
            pause = std::min(2 * pause, m_settings.longestPause);
        }
        lock.unlock();
        m_archive.reset(); // a connection belongs to its thread
    }

    QString send(const std::vector<QByteArray>& lines)
    {
        std::vector<ArchiveRecord> records;
        for (const QByteArray& line : lines) {
            if (auto record = archiveRecordOf(line))
                records.push_back(*record);
        }
        QString problem;
        if (!m_archive)
            m_archive = Archive::open(m_settings.url, problem);
        if (m_archive && !m_archive->add(records)) {
            problem = m_archive->error();
            m_archive.reset(); // a connection that failed once may be dead
        }
        if (m_listener && problem.isEmpty() != m_problem.isEmpty())
            m_listener(problem);
        m_problem = problem;
        return problem;
    }

    void removeSome(std::unique_lock<std::mutex>& lock)
    {
        const ArchiveLimits limits = *std::exchange(m_limits, std::nullopt);
        lock.unlock();
        QString problem;
        if (!m_archive)
            m_archive = Archive::open(m_settings.url, problem);
        const bool isMore = m_archive && removeSome(limits);
        lock.lock();
        if (isMore && !m_limits)
            m_limits = limits;
    }

    // Whether there may be more.
    bool removeSome(const ArchiveLimits& limits)
    {
        std::optional<bool> isMore = limits.before_us
                                         ? remove(*limits.before_us, limits, REMOVED_AT_ONCE)
                                         : std::optional<bool>(false);
        if (isMore == false && limits.mostBytes > 0)
            isMore = shrink(limits);
        if (!isMore) {
            m_archive.reset(); // a connection that failed once may be dead
            m_isTidyBegun = false;
        }
        return isMore.value_or(false);
    }

    // Whether there was anything.
    std::optional<bool> remove(qint64 before_us, const ArchiveLimits& limits, qint64 most)
    {
        const auto removed = m_archive->removeBefore(
            before_us, limits.station, static_cast<int>(std::min<qint64>(most, REMOVED_AT_ONCE)));
        if (!removed)
            return std::nullopt;
        m_isTidyDue = m_isTidyDue || *removed > 0;
        m_surplus = *removed > 0 ? std::max<qint64>(0, m_surplus - *removed) : 0;
        return *removed > 0;
    }

    // The next step towards the size. What removed words take is given back before it is measured,
    // or more would be removed than has to be.
    std::optional<bool> shrink(const ArchiveLimits& limits)
    {
        if (m_surplus > 0)
            return remove(std::numeric_limits<qint64>::max(), limits, m_surplus);
        const std::optional<qint64> size = m_archive->size();
        if (!size)
            return std::nullopt;
        if (*size <= limits.mostBytes)
            return false;
        if (m_isTidyDue) {
            const std::optional<bool> isMore = m_archive->tidy(!m_isTidyBegun);
            m_isTidyBegun = isMore.value_or(false);
            m_isTidyDue = !isMore || *isMore;
            return isMore ? std::optional<bool>(true) : std::nullopt;
        }
        const std::optional<qint64> count = m_archive->count();
        if (!count)
            return std::nullopt;
        // Some more than has to be, so that the index is tidied now and then, not all the time.
        const qint64 wanted = limits.mostBytes - limits.mostBytes / SPARE_SHARE;
        m_surplus =
            static_cast<qint64>(std::ceil(double(*count) * double(*size - wanted) / double(*size)));
        return m_surplus > 0;
    }

    Settings m_settings;
    StateListener m_listener;
    std::mutex m_mutex; ///< guards what follows, up to the thread's own
    std::condition_variable m_changed;
    Spool m_spool;
    bool m_isStopping = false;
    bool m_isIdle = false;
    bool m_triesNow = false;
    std::optional<ArchiveLimits> m_limits; ///< that have to be looked at
    long long m_failures = 0;
    // The thread's own.
    std::unique_ptr<Archive> m_archive;
    QString m_problem;
    qint64 m_surplus = 0;     ///< transmissions that still have to go, for the size
    bool m_isTidyDue = false; ///< something was removed since the index was tidied
    bool m_isTidyBegun = false;
    std::thread m_thread;
};

ArchiveWriter::ArchiveWriter(const Settings& settings, StateListener listener)
    : m_d(std::make_unique<Private>(settings, std::move(listener)))
{
}

ArchiveWriter::~ArchiveWriter() = default;

QString ArchiveWriter::error() const
{
    return m_d->error();
}

bool ArchiveWriter::add(const ArchiveRecord& record)
{
    return m_d->add(toLine(record));
}

bool ArchiveWriter::flush()
{
    return m_d->flush();
}

void ArchiveWriter::prune(const ArchiveLimits& limits)
{
    m_d->prune(limits);
}

} // namespace morsehost
