// SPDX-License-Identifier: MIT
// A host for all Morse signals of a band: a station, and with it a handler, for each of them.
#pragma once

#include "host/standin/hosttree.h"
#include "signal/band/bandreceiver.h"
#include "station/morsestation.h"

#include <map>
#include <memory>

namespace morsehost {

/// A signal of the band.
struct BandEntry
{
    int number;
    double tone_Hz;      ///< in the sound, or from the centre of the I/Q
    double frequency_Hz; ///< the same as received
    double snr_dB;
};

/// Hears everything in the order in which it is decided.
class BandListener
{
public:
    virtual ~BandListener();

    virtual void found(const BandEntry& signal) = 0;
    /// A character, or a blank, and when the last mark before it ended: microseconds of signal
    /// since the first sample.
    virtual void text(const BandEntry& signal, const QString& text, std::int64_t time_us) = 0;
    virtual void transmission(const Transmission& transmission) = 0;
    virtual void lost(const BandEntry& signal) = 0;
    virtual void saving(const QString& message) = 0;
};

/// Signals come and go: a station lives as long as its signal.
class BandStation : public demodulator::BandSink
{
public:
    /// `settings` are those of every station; its place and frequency are set for each. `center_Hz`
    /// is what 0 Hz of the band is. The listener outlives this.
    BandStation(const StationSettings& settings, double center_Hz, BandListener& listener);
    ~BandStation() override;

    /// False when the alphabet could not be loaded.
    bool canBegin();
    /// What could not be saved.
    const SaveLosses& lost() const { return m_lost; }

    void signalFound(int signal, double tone_Hz, double snr_dB) override;
    void transmissionStarted(int signal, double tone_Hz, std::int64_t time_us) override;
    void symbol(int signal, int code, std::int64_t time_us) override;
    void transmissionStopped(int signal, std::int64_t time_us,
                             const demodulator::SignalReport& report) override;
    void signalLost(int signal) override;

private:
    class One;

    HostTree m_tree;
    StationSettings m_settings;
    double m_center_Hz;
    BandListener& m_listener;
    std::map<int, std::unique_ptr<One>> m_signals; ///< go before the tree
    SaveLosses m_lost;
};

} // namespace morsehost
