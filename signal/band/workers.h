// SPDX-License-Identifier: MIT
// Work that can be done in any order, on all processors. What is computed must not depend on who
// does it: each piece of work writes to a place of its own.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace demodulator {

class Workers
{
public:
    /// The caller is one of `count`; 0: as many as there are processors.
    explicit Workers(unsigned count);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Calls work(0) to work(count - 1), each once, and returns when all are done. Not from within
    /// a work, nor from two threads at once. A work must not throw.
    void forAll(std::size_t count, const std::function<void(std::size_t)>& work);

private:
    void run();
    void takeWork();

    std::vector<std::thread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_begun;
    std::condition_variable m_done;
    const std::function<void(std::size_t)>* m_work = nullptr;
    std::size_t m_count = 0;
    std::atomic<std::size_t> m_next{0};
    std::size_t m_round = 0; // guarded by the mutex, as are the next two
    std::size_t m_busy = 0;
    bool m_leave = false;
};

} // namespace demodulator
