// SPDX-License-Identifier: MIT
#include "signal/morse/heldcodes.h"

#include <utility>

namespace demodulator {

void HeldCodes::release()
{
    m_isHeld = false;
    for (const std::function<void()>& call : m_waiting)
        call();
    m_waiting.clear();
}

void HeldCodes::transmissionStarted(std::int64_t time_us)
{
    take([this, time_us] { m_next.transmissionStarted(time_us); });
}

void HeldCodes::symbol(int code, std::int64_t time_us)
{
    take([this, code, time_us] { m_next.symbol(code, time_us); });
}

void HeldCodes::transmissionStopped(std::int64_t time_us, const SignalReport& report)
{
    take([this, time_us, report] { m_next.transmissionStopped(time_us, report); });
}

void HeldCodes::sound(const float* samples, std::size_t count, double rate_Hz)
{
    if (m_observer)
        m_observer->sound(samples, count, rate_Hz);
}

void HeldCodes::step(const FollowedStep& step)
{
    if (m_observer)
        m_observer->step(step);
}

void HeldCodes::mark(std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    if (m_observer)
        take([=] { m_observer->mark(begin_us, end_us, unit_us); });
}

void HeldCodes::take(std::function<void()> call)
{
    if (m_isHeld)
        m_waiting.push_back(std::move(call));
    else
        call();
}

} // namespace demodulator
