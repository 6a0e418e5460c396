// SPDX-License-Identifier: MIT
// The teleprinters of a band: pairs of tones that are tried, followed as long as they are keyed,
// and handed on to the sink.
#pragma once

#include "signal/band/bandmemory.h"
#include "signal/band/bandreceiver.h"
#include "signal/band/shiftedpairs.h"
#include "signal/band/stepbank.h"
#include "signal/band/teleprinterlistener.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace demodulator {

/// Steps are those of the bank. Not for use from several threads at once, but for process() and
/// finish() of different ones.
class BandTeleprinters
{
public:
    /// Whether a tone of a level (SignalGuess::signal) is of one teleprinter.
    using IsOf = std::function<bool(double tone_Hz, double level)>;

    /// All of them must outlive it.
    BandTeleprinters(const BandSettings& settings, const StepBank& bank, const ShiftedPairs& pairs,
                     StationNumbers& numbers, ToneMemory& memory, BandSink& sink);

    /// Those that are tried or followed.
    std::size_t size() const { return m_teleprinters.size(); }
    void process(std::size_t index, std::int64_t end_step);
    void finish(std::size_t index, std::int64_t end_step);

    /// What they gave goes to the sink, one after the other. `endMorse` ends what was taken for
    /// Morse before a teleprinter was known.
    void handOn(std::int64_t end_step, const std::function<void(const IsOf&)>& endMorse);
    /// Forgets what came to nothing, and those that were silent for long.
    void forget(std::int64_t end_step);
    void clear() { m_teleprinters.clear(); }

    /// Whether a tone may be the first sign of a teleprinter.
    bool mayBegin(double tone_Hz, double level) const;
    /// Begins to listen where such a tone and another one take turns; `tones` are all that are
    /// keyed.
    void notice(double tone_Hz, const std::vector<KeyedTone>& tones, std::int64_t end_step,
                std::int64_t oldest_step);

    /// Whether a tone is of a teleprinter that sends, or may do.
    bool isOwn(double tone_Hz, double level) const;
    bool hasNumber(int number) const;
    /// Those that are received.
    std::vector<BandSignal> signals() const;

private:
    struct Teleprinter
    {
        std::unique_ptr<TeleprinterListener> listener;
        double level; // of the stronger tone
        double snr_dB;
        std::int64_t noticed;          // step at which it was
        int number = 0;                // 0: nothing was emitted of it yet
        std::int64_t lastReceived = 0; // step
        bool isFollowed = false;
        teleprinter::Line line = {}; // of the last transmission
    };
    // For how long a tone is not to be tried again.
    struct Tried
    {
        double tone_Hz;
        std::int64_t until;
    };

    const TeleprinterParameters& parameters() const { return m_settings.parameters.teleprinter; }
    std::int64_t stepsIn(double duration_s) const;
    void give(Teleprinter& one, std::int64_t end_step,
              const std::function<void(const IsOf&)>& endMorse);
    IsOf isOf(const Teleprinter& one) const;
    bool isFollowed(double tone_Hz) const;
    bool isTried(double tone_Hz) const;
    struct Strength
    {
        double level;
        double snr_dB;
    };
    Strength strengthOf(const ShiftedPair& pair, std::int64_t end_step,
                        std::int64_t oldest_step) const;

    const BandSettings& m_settings;
    const StepBank& m_bank;
    const ShiftedPairs& m_pairs;
    StationNumbers& m_numbers;
    ToneMemory& m_memory;
    BandSink& m_sink;
    std::vector<Teleprinter> m_teleprinters;
    std::vector<Tried> m_tried;
};

} // namespace demodulator
