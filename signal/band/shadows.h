// SPDX-License-Identifier: MIT
// What looks like a keyed signal and is none of its own: clicks, images and harmonics of a stronger
// one.
#pragma once

#include "signal/band/listener.h"
#include "signal/band/parameters.h"
#include "signal/band/stepbank.h"
#include "signal/band/survey.h"

#include <cstdint>
#include <vector>

namespace demodulator {

class Shadows
{
public:
    /// The survey must outlive it.
    Shadows(const BandFormat& format, const Survey& survey, const ShadowParameters& parameters)
        : m_format(format)
        , m_survey(survey)
        , m_parameters(parameters)
    {
    }

    /// Whether more is at a tone than what `others` give there at the same moments. Listeners of
    /// signals that are hardly stronger, or weaker, are passed over.
    bool standsOut(const SignalGuess& tone, const std::vector<const Listener*>& others) const;

private:
    double ghostAt(double tone_Hz, double frequency_Hz) const;
    double mirrored(std::int64_t frame, double mirror_Hz, double noise) const;

    BandFormat m_format;
    const Survey& m_survey;
    ShadowParameters m_parameters;
};

} // namespace demodulator
