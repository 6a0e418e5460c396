// SPDX-License-Identifier: MIT
#include "station/bandstation.h"

#include "station/decoders.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace morsehost {

BandListener::~BandListener() = default;

void PassingBandListener::found(const BandEntry& signal)
{
    m_next.found(signal);
}

void PassingBandListener::text(const BandEntry& signal, const QString& text, std::int64_t time_us)
{
    m_next.text(signal, text, time_us);
}

void PassingBandListener::transmission(const Transmission& transmission)
{
    m_next.transmission(transmission);
}

void PassingBandListener::lost(const BandEntry& signal)
{
    m_next.lost(signal);
}

void PassingBandListener::saving(const QString& message)
{
    m_next.saving(message);
}

// One signal's station, and what it reports.
class BandStation::One : private StationListener
{
public:
    One(HostTree& tree, const StationSettings& settings, const BandEntry& entry,
        BandListener& listener)
        : m_entry(entry)
        , m_listener(listener)
        , m_station(tree, settings, *this)
    {
        m_station.start();
    }

    MorseStation& station() { return m_station; }
    BandEntry& entry() { return m_entry; }
    void symbol(int code, std::int64_t time_us)
    {
        m_time_us = time_us;
        m_station.symbol(code, time_us);
    }

private:
    void text(const QString& text) override
    {
        if (text != QLatin1String("\n"))
            m_listener.text(m_entry, text, m_time_us);
    }
    void transmission(const Transmission& transmission) override
    {
        Transmission own = transmission;
        own.number = m_entry.number;
        if (own.tone_Hz)
            own.frequency_Hz = m_entry.frequency_Hz - m_entry.tone_Hz + *own.tone_Hz;
        m_listener.transmission(own);
    }
    void saving(const QString& message) override { m_listener.saving(message); }

    using StationListener::symbol;

    BandEntry m_entry;
    BandListener& m_listener;
    std::int64_t m_time_us = 0; // of the last code
    MorseStation m_station;
};

// The same of a teleprinter.
class BandStation::Teleprinter : private StationListener
{
public:
    Teleprinter(HostTree& tree, const TeleprinterSettings& settings, const BandEntry& entry,
                BandListener& listener)
        : m_entry(entry)
        , m_listener(listener)
        , m_station(tree, settings, *this)
    {
        m_station.start(); // without a map where there is none for its decoder
    }

    TeleprinterStation& station() { return m_station; }
    const BandEntry& entry() const { return m_entry; }
    void tune(const teleprinter::Line& line, double center_Hz)
    {
        m_entry.tone_Hz = line.centre_Hz();
        m_entry.frequency_Hz = center_Hz + line.centre_Hz();
    }
    void character(std::uint8_t character, std::int64_t time_us)
    {
        m_time_us = time_us;
        m_station.character(character, time_us);
    }

private:
    void text(const QString& text) override
    {
        const QString inLine = QString(text).replace(QLatin1Char('\n'), QLatin1Char(' '));
        m_listener.text(m_entry, inLine, m_time_us);
    }
    void transmission(const Transmission& transmission) override
    {
        Transmission own = transmission;
        own.number = m_entry.number;
        own.frequency_Hz = m_entry.frequency_Hz;
        own.snr_dB = transmission.snr_dB.value_or(m_entry.snr_dB);
        m_listener.transmission(own);
    }
    void saving(const QString& message) override { m_listener.saving(message); }

    BandEntry m_entry;
    BandListener& m_listener;
    std::int64_t m_time_us = 0; // of the last character
    TeleprinterStation m_station;
};

BandStation::BandStation(const StationSettings& settings, double center_Hz, BandListener& listener,
                         BandMap map)
    : m_settings(settings)
    , m_center_Hz(center_Hz)
    , m_listener(listener)
    , m_map(std::move(map))
{
}

BandStation::~BandStation() = default;

bool BandStation::canBegin()
{
    class Silent : public StationListener
    {
    } silent;
    StationSettings settings = m_settings;
    settings.place = QStringLiteral("Band1/Trial");
    settings.saveDirectory.clear();
    return MorseStation(m_tree, settings, silent).start();
}

bool BandStation::hasMap()
{
    return isMapOfAny(m_tree, m_map.directory, m_map.name);
}

void BandStation::signalFound(int signal, double tone_Hz, double snr_dB)
{
    const BandEntry entry = {
        signal,       tone_Hz,     m_center_Hz + tone_Hz, snr_dB, QLatin1String(MORSE_DECODER),
        std::nullopt, std::nullopt};
    StationSettings settings = m_settings;
    settings.place = QStringLiteral("Band1/Signal%1").arg(signal);
    settings.frequency_Hz = entry.frequency_Hz;
    m_signals[signal] = std::make_unique<One>(m_tree, settings, entry, m_listener);
    m_listener.found(entry);
}

void BandStation::transmissionStarted(int signal, double tone_Hz, std::int64_t time_us)
{
    One& one = *m_signals.at(signal);
    one.entry().tone_Hz = tone_Hz;
    one.entry().frequency_Hz = m_center_Hz + tone_Hz;
    one.station().transmissionStarted(time_us);
}

void BandStation::symbol(int signal, int code, std::int64_t time_us)
{
    m_signals.at(signal)->symbol(code, time_us);
}

void BandStation::transmissionStopped(int signal, std::int64_t time_us,
                                      const demodulator::SignalReport& report)
{
    m_signals.at(signal)->station().transmissionStopped(time_us, report);
}

void BandStation::teleprinterFound(int signal, const teleprinter::Line& line, double snr_dB)
{
    const BandEntry entry = {signal,
                             line.centre_Hz(),
                             m_center_Hz + line.centre_Hz(),
                             snr_dB,
                             decoderOf(line.kind.code),
                             line.kind.baud,
                             std::round(line.shift_Hz())};
    TeleprinterSettings settings;
    settings.place = QStringLiteral("Band1/Signal%1").arg(signal);
    settings.source = m_settings.source;
    settings.decoder = entry.decoder;
    settings.mapsDirectory = m_map.directory;
    settings.map = m_map.name;
    settings.saveDirectory = m_settings.saveDirectory;
    settings.frequency_Hz = entry.frequency_Hz;
    settings.start_us = m_settings.start_us;
    m_teleprinters[signal] = std::make_unique<Teleprinter>(m_tree, settings, entry, m_listener);
    m_listener.found(entry);
}

void BandStation::teleprinterStarted(int signal, const teleprinter::Line& line,
                                     std::int64_t time_us)
{
    Teleprinter& one = *m_teleprinters.at(signal);
    one.tune(line, m_center_Hz);
    one.station().transmissionStarted(line, time_us);
}

void BandStation::teleprinterCharacter(int signal, std::uint8_t character, std::int64_t time_us)
{
    m_teleprinters.at(signal)->character(character, time_us);
}

void BandStation::teleprinterStopped(int signal, const teleprinter::Line& line,
                                     std::int64_t time_us)
{
    Teleprinter& one = *m_teleprinters.at(signal);
    one.tune(line, m_center_Hz);
    one.station().transmissionStopped(line, time_us);
}

void BandStation::signalLost(int signal)
{
    const auto teleprinter = m_teleprinters.find(signal);
    if (teleprinter != m_teleprinters.end()) {
        m_lostTransmissions += teleprinter->second->station().lost();
        m_listener.lost(teleprinter->second->entry());
        m_teleprinters.erase(teleprinter);
        return;
    }
    const auto found = m_signals.find(signal);
    const SaveLosses lost = found->second->station().stop();
    m_lost.symbols += lost.symbols;
    m_lost.characters += lost.characters;
    m_lost.documents += lost.documents;
    m_listener.lost(found->second->entry());
    m_signals.erase(found);
}

} // namespace morsehost
