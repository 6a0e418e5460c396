// SPDX-License-Identifier: MIT
// Every keyed signal of a band at once: sound or I/Q to symbol codes, side by side.
#pragma once

#include "signal/band/parameters.h"
#include "signal/band/stepbank.h"
#include "signal/morse/symbolsink.h"
#include "signal/teleprinter/line.h"
#include "signal/teleprinter/textreader.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace demodulator {

/// Receives what is heard, signal by signal. Signals have numbers, counted from 1; a station that
/// sends again on its frequency within half a minute keeps its number. Of one signal, calls come in
/// order of time; for the meaning of codes and times see SymbolSink. Called in the thread
/// that pushes the samples.
class BandSink
{
public:
    virtual ~BandSink();

    virtual void signalFound(int signal, double tone_Hz, double snr_dB) = 0;
    virtual void transmissionStarted(int signal, double tone_Hz, std::int64_t time_us) = 0;
    virtual void symbol(int signal, int code, std::int64_t time_us) = 0;
    virtual void transmissionStopped(int signal, std::int64_t time_us,
                                     const SignalReport& report) = 0;
    /// A teleprinter, which has a number like any other signal and gives characters, not codes; see
    /// teleprinter::TextSink. Its tones are those of the band. Does nothing unless overridden.
    virtual void teleprinterFound(int signal, const teleprinter::Line& line, double snr_dB);
    virtual void teleprinterStarted(int signal, const teleprinter::Line& line,
                                    std::int64_t time_us);
    virtual void teleprinterCharacter(int signal, std::uint8_t character, std::int64_t time_us);
    virtual void teleprinterStopped(int signal, const teleprinter::Line& line,
                                    std::int64_t time_us);
    /// Nothing was heard of it for half a minute, or the input has ended.
    virtual void signalLost(int signal) = 0;
};

struct BandSettings
{
    BandFormat format;
    double lowest_Hz = -2e6; ///< tones outside are left alone
    double highest_Hz = 2e6;
    double leastSnr_dB = -30.0;     ///< weaker ones, in 500 Hz, are left alone
    std::size_t mostSignals = 2000; ///< at once; the strongest, at least 1
    unsigned threads = 0;           ///< 0: one for each processor
    teleprinter::Unshift unshift = teleprinter::Unshift::WhereSenderDoes;
    BandParameters parameters; ///< for tuning
};

/// What goes on at one moment, for a display.
struct BandSignal
{
    int number;
    double tone_Hz;   ///< of a teleprinter midway between its tones
    double speed_wpm; ///< 0 of a teleprinter
    double snr_dB;
    double baudRate = 0.0; ///< 0 of Morse
};

/// A receiver of a rate beyond the limits above hears nothing. Memory is
/// bounded: about 60 MB for each 192 kHz of the band, and what the signals need. The result depends
/// neither on the number of threads nor on how the input is cut. The sink must outlive the
/// receiver. Not for use from several threads at once.
class BandReceiver
{
public:
    BandReceiver(const BandSettings& settings, BandSink& sink);
    ~BandReceiver();
    BandReceiver(const BandReceiver&) = delete;
    BandReceiver& operator=(const BandReceiver&) = delete;

    /// Full scale +-1; sound has imaginary part 0. Samples that are no number count as silence.
    void push(const std::complex<float>* samples, std::size_t count);
    /// End of input: everything heard is emitted. What is pushed afterwards is ignored.
    void finish();

    /// Signals that send, or did a moment ago, in order of frequency.
    std::vector<BandSignal> signals() const;
    /// Signals that had to be given up or passed over because there were more than are allowed.
    std::size_t dropped() const;

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace demodulator
