// SPDX-License-Identifier: MIT
// Tones that turned out to be no Morse and are left alone for a while, so that something else can
// be heard.
#pragma once

#include "signal/morse/tonefinder.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace demodulator {

class RefusedTones
{
public:
    /// One more than this takes the place of the oldest.
    static constexpr std::size_t MOST = 32;

    void add(double tone_Hz, std::int64_t until_sample);
    /// Forgets those whose time is over.
    void update(std::int64_t now_sample);
    /// What a search leaves out: so much on each side of every tone.
    std::vector<ToneFinder::Band> bands(double width_Hz) const;

private:
    struct Refused
    {
        double tone_Hz;
        std::int64_t until_sample;
    };
    std::deque<Refused> m_refused; // the oldest first
};

} // namespace demodulator
