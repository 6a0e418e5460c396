// SPDX-License-Identifier: MIT
#include "station/archive/writer.h"

#include "station/archive/archive.h"
#include "station/archive/spool.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace morsehost {

namespace {

constexpr int RECORDS_AT_ONCE = 500;

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
                m_changed.wait(lock, [this] { return m_isStopping || !m_isIdle; });
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

    Settings m_settings;
    StateListener m_listener;
    std::mutex m_mutex; ///< guards what follows, up to the thread's own
    std::condition_variable m_changed;
    Spool m_spool;
    bool m_isStopping = false;
    bool m_isIdle = false;
    bool m_triesNow = false;
    long long m_failures = 0;
    // The thread's own.
    std::unique_ptr<Archive> m_archive;
    QString m_problem;
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

} // namespace morsehost
