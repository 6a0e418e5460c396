// SPDX-License-Identifier: MIT
// A host for all signals of a band: a station, and with it a handler or a map, for each of them.
#pragma once

#include "host/standin/hosttree.h"
#include "signal/band/bandreceiver.h"
#include "station/morsestation.h"
#include "station/teleprinterstation.h"

#include <map>
#include <memory>
#include <optional>

namespace morsehost {

/// A signal of the band.
struct BandEntry
{
    int number;
    double tone_Hz;      ///< in the sound, or from the centre of the I/Q; midway between two tones
    double frequency_Hz; ///< the same as received
    double snr_dB;
    QString decoder;                ///< Morse or a teleprinter's
    std::optional<double> baudRate; ///< of a teleprinter
    std::optional<double> shift_Hz;
};

/// What the text of teleprinters goes through, as the operator calls it, and the folder that holds
/// it. A teleprinter whose decoder it is not for is shown as it was received.
struct BandMap
{
    QString name = QLatin1String(NO_MAP);
    QString directory = {}; ///< an existing one
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

/// Passes all on to another listener, for those that look at a part of it.
class PassingBandListener : public BandListener
{
public:
    /// The next one outlives it.
    explicit PassingBandListener(BandListener& next)
        : m_next(next)
    {
    }

    void found(const BandEntry& signal) override;
    void text(const BandEntry& signal, const QString& text, std::int64_t time_us) override;
    void transmission(const Transmission& transmission) override;
    void lost(const BandEntry& signal) override;
    void saving(const QString& message) override;

private:
    BandListener& m_next;
};

/// Signals come and go: a station lives as long as its signal.
class BandStation : public demodulator::BandSink
{
public:
    /// `settings` are those of every station; its place and frequency are set for each. `center_Hz`
    /// is what 0 Hz of the band is. The listener outlives this. With a map, the decoder modules
    /// file has been configured before.
    BandStation(const StationSettings& settings, double center_Hz, BandListener& listener,
                BandMap map = {});
    ~BandStation() override;

    /// False when the alphabet could not be loaded.
    bool canBegin();
    /// Whether the map is one for any teleprinter.
    bool hasMap();
    /// What could not be saved.
    const SaveLosses& lost() const { return m_lost; }
    /// Transmissions of teleprinters that are not on disk as a whole.
    long long lostTransmissions() const { return m_lostTransmissions; }

    void signalFound(int signal, double tone_Hz, double snr_dB) override;
    void transmissionStarted(int signal, double tone_Hz, std::int64_t time_us) override;
    void symbol(int signal, int code, std::int64_t time_us) override;
    void transmissionStopped(int signal, std::int64_t time_us,
                             const demodulator::SignalReport& report) override;
    void teleprinterFound(int signal, const teleprinter::Line& line, double snr_dB) override;
    void teleprinterStarted(int signal, const teleprinter::Line& line,
                            std::int64_t time_us) override;
    void teleprinterCharacter(int signal, std::uint8_t character, std::int64_t time_us) override;
    void teleprinterStopped(int signal, const teleprinter::Line& line,
                            std::int64_t time_us) override;
    void signalLost(int signal) override;

private:
    class One;
    class Teleprinter;

    HostTree m_tree;
    StationSettings m_settings;
    double m_center_Hz;
    BandListener& m_listener;
    BandMap m_map;
    std::map<int, std::unique_ptr<One>> m_signals;              ///< go before the tree
    std::map<int, std::unique_ptr<Teleprinter>> m_teleprinters; ///< likewise
    SaveLosses m_lost;
    long long m_lostTransmissions = 0;
};

} // namespace morsehost
