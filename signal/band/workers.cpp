// SPDX-License-Identifier: MIT
#include "signal/band/workers.h"

#include <algorithm>

namespace demodulator {

Workers::Workers(unsigned count)
{
    if (count == 0)
        count = std::max(1U, std::thread::hardware_concurrency());
    for (unsigned i = 1; i < count; ++i)
        m_threads.emplace_back([this] { run(); });
}

Workers::~Workers()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_leave = true;
    }
    m_begun.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void Workers::forAll(std::size_t count, const std::function<void(std::size_t)>& work)
{
    if (m_threads.empty() || count < 2) {
        for (std::size_t i = 0; i < count; ++i)
            work(i);
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_work = &work;
        m_count = count;
        m_next = 0;
        m_busy = m_threads.size();
        ++m_round;
    }
    m_begun.notify_all();
    takeWork();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_done.wait(lock, [this] { return m_busy == 0; });
}

void Workers::takeWork()
{
    for (std::size_t i = m_next++; i < m_count; i = m_next++)
        (*m_work)(i);
}

void Workers::run()
{
    std::size_t round = 0;
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_begun.wait(lock, [&] { return m_leave || m_round != round; });
            if (m_leave)
                return;
            round = m_round;
        }
        takeWork();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            --m_busy;
        }
        m_done.notify_one();
    }
}

} // namespace demodulator
