// SPDX-License-Identifier: MIT
// Codes, and the marks that they stand for, wait until it is known that they are Morse.
#pragma once

#include "signal/morse/observer.h"
#include "signal/morse/symbolsink.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace demodulator {

/// At first, all is handed on at once. The next sink and observer, which may be null, must outlive
/// it.
class HeldCodes : public SymbolSink, public Observer
{
public:
    explicit HeldCodes(SymbolSink& next, Observer* observer = nullptr)
        : m_next(next)
        , m_observer(observer)
    {
    }

    /// What comes from now on waits.
    void hold() { m_isHeld = true; }
    bool isHeld() const { return m_isHeld; }
    /// What has waited is handed on, and what comes from now on at once.
    void release();
    /// What has waited is forgotten; the next sink never hears of it. Between transmissions only.
    void drop() { m_waiting.clear(); }

    void transmissionStarted(std::int64_t time_us) override;
    void symbol(int code, std::int64_t time_us) override;
    void transmissionStopped(std::int64_t time_us, const SignalReport& report) override;
    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void step(const FollowedStep& step) override;
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override;

private:
    void take(std::function<void()> call);

    SymbolSink& m_next;
    Observer* m_observer;
    bool m_isHeld = false;
    std::vector<std::function<void()>> m_waiting;
};

} // namespace demodulator
