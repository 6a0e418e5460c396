// SPDX-License-Identifier: MIT
#include "signal/morse/refusedtones.h"

#include <algorithm>

namespace demodulator {

void RefusedTones::add(double tone_Hz, std::int64_t until_sample)
{
    if (m_refused.size() == MOST)
        m_refused.pop_front();
    m_refused.push_back({tone_Hz, until_sample});
}

void RefusedTones::update(std::int64_t now_sample)
{
    m_refused.erase(std::remove_if(m_refused.begin(), m_refused.end(),
                                   [now_sample](const Refused& refused) {
                                       return refused.until_sample <= now_sample;
                                   }),
                    m_refused.end());
}

std::vector<ToneFinder::Band> RefusedTones::bands(double width_Hz) const
{
    std::vector<ToneFinder::Band> bands;
    bands.reserve(m_refused.size());
    for (const Refused& refused : m_refused)
        bands.push_back({refused.tone_Hz - width_Hz, refused.tone_Hz + width_Hz});
    return bands;
}

} // namespace demodulator
