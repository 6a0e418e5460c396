// SPDX-License-Identifier: MIT
// What looks like a keyed signal and is none of its own: clicks, images and harmonics of a stronger
// one, and the tones of a teleprinter.
#pragma once

#include "signal/band/listener.h"
#include "signal/band/parameters.h"
#include "signal/band/stepbank.h"
#include "signal/band/survey.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

class Shadows
{
public:
    /// Bank and survey must outlive it.
    Shadows(const BandFormat& format, const StepBank& bank, const Survey& survey,
            const BandParameters& parameters)
        : m_format(format)
        , m_bank(bank)
        , m_survey(survey)
        , m_parameters(parameters.shadow)
        , m_farthestShift_Hz(parameters.signal.finder.farthestShift_Hz)
    {
    }

    /// Whether more is at a tone than what `others` give there at the same moments. Listeners of
    /// signals that are hardly stronger, or weaker, are passed over.
    bool standsOut(const SignalGuess& tone, const std::vector<const Listener*>& others) const;

    /// Two tones of one transmitter that is shifted between them, `one` of which was asked for.
    struct ShiftedPair
    {
        KeyedTone one;
        KeyedTone other;
    };
    /// The pair of a tone, or of one that is hardly apart from it, and another, where the key is up
    /// at one of both whenever it is down at the other: while either was keyed in the last seconds
    /// before `end_step`. Of several pairs the one of which this holds best. `tones` are those that
    /// the survey knows.
    std::optional<ShiftedPair> shiftedPair(const SignalGuess& tone,
                                           const std::vector<KeyedTone>& tones,
                                           std::int64_t end_step) const;

private:
    double ghostAt(double tone_Hz, double frequency_Hz) const;
    double mirrored(std::int64_t frame, double mirror_Hz, double noise) const;
    std::vector<bool> keyDown(const KeyedTone& tone, std::int64_t end_step) const;
    double shareInTurn(const std::vector<bool>& one, const std::vector<bool>& other) const;

    BandFormat m_format;
    const StepBank& m_bank;
    const Survey& m_survey;
    ShadowParameters m_parameters;
    double m_farthestShift_Hz;
};

} // namespace demodulator
