// SPDX-License-Identifier: MIT
#include "app/reception.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/alphabetoptions.h"
#include "host/standin/tracelog.h"
#include "host/trace.h"
#include "station/finddecoder.h"
#include "station/io/folder.h"
#include "station/io/systemtext.h"

#include <QStringList>

#include <unistd.h>
#include <utility>

namespace morsehost {

namespace {

bool canSaveInto(const QString& folder)
{
    const QString reason = makeWritableForDays(folder);
    if (!reason.isEmpty())
        complain(folder, reason);
    return reason.isEmpty();
}

void complainOfLosses(const QString& folder, const SaveLosses& lost)
{
    struct Row
    {
        long long count;
        const char* one;
        const char* several;
    };
    const Row rows[] = {
        {lost.symbols, "dot or dash", "dots and dashes"},
        {lost.characters, "character", "characters"},
        {lost.documents, "result document", "result documents"},
    };
    QStringList parts;
    for (const Row& row : rows) {
        if (row.count > 0)
            parts += counted(row.count, row.one, row.several);
    }
    complain(folder, parts.join(QLatin1String(", ")) + QStringLiteral(" could not be saved"));
}

} // namespace

Reception::Reception(const ReceptionOptions& options, LineListener listener)
    : Reception(options, TeleprinterChoice(), std::move(listener))
{
}

Reception::Reception(const ReceptionOptions& options, const TeleprinterChoice& choice,
                     LineListener listener)
    : m_options(options)
    , m_choice(choice)
    , m_output(STDOUT_FILENO, options.saveDirectory.isEmpty() ? WhenBusy::Wait : WhenBusy::Keep)
    , m_reporter(makeReporter(options.form, m_output, std::move(listener)))
    , m_archive(options.archive)
    , m_listener(*m_reporter, m_archive)
{
    if (options.trace)
        setTraceMask(PLUGIN_TRACE_CLASS);
}

StationSettings Reception::settings() const
{
    StationSettings settings;
    settings.place = QStringLiteral("Receiver1");
    settings.alphabet = m_options.alphabet;
    settings.frequency_Hz = m_options.frequency_Hz;
    return settings;
}

TeleprinterSettings Reception::settings(const QString& decoder) const
{
    TeleprinterSettings settings;
    settings.place = QStringLiteral("Receiver1");
    settings.decoder = decoder;
    settings.mapsDirectory = m_choice.mapsDirectory;
    const auto chosen = m_maps.find(decoder);
    settings.map = chosen == m_maps.end() ? m_choice.map : chosen->second;
    settings.frequency_Hz = m_options.frequency_Hz;
    return settings;
}

bool Reception::canBegin(const QString& decoder)
{
    const auto tried = m_canBegin.find(decoder);
    if (tried != m_canBegin.end())
        return tried->second;
    const bool canBegin = canShow(decoder) && canKeep();
    m_canBegin[decoder] = canBegin;
    return canBegin;
}

bool Reception::canShow(const QString& decoder)
{
    if (decoder != QLatin1String(MORSE_DECODER)) {
        if (m_choice.decoder == QLatin1String(DECODER_AS_FOUND))
            chooseMap(decoder);
        const QString refusal = TeleprinterStation(m_tree, settings(decoder), *m_reporter).start();
        if (!refusal.isEmpty())
            complain(refusal);
        return refusal.isEmpty();
    }
    if (MorseStation(m_tree, settings(), *m_reporter).start())
        return true;
    complainOfAlphabet(m_options.alphabet);
    return false;
}

// A decoder that nobody asked for is no reason to refuse a map that is for others.
void Reception::chooseMap(const QString& decoder)
{
    const QString map = mapForFound(m_tree, settings(decoder));
    if (map != m_choice.map)
        complain(QStringLiteral("the map '%1' is not for %2").arg(m_choice.map, decoder));
    m_maps[decoder] = map;
}

bool Reception::canKeep()
{
    if (!m_canKeep)
        m_canKeep = (m_options.saveDirectory.isEmpty() || canSaveInto(m_options.saveDirectory)) &&
                    m_archive.canBegin();
    return *m_canKeep;
}

StationListener& Reception::listener(const ReceivedSource& source)
{
    m_archive.begin(source.keys, source.name);
    return m_listener;
}

MorseStation& Reception::begin(const ReceivedSource& source, bool isOneOfSeveral)
{
    StationSettings settings = this->settings();
    settings.source = source.name;
    settings.saveDirectory = m_options.saveDirectory;
    settings.start_us = source.start_us;
    settings.demodulator = source.demodulator;
    StationListener* listener = &this->listener(source);
    if (m_options.hasPictures)
        listener = &m_morsePictures.emplace(*listener, m_options.saveDirectory);
    m_station.emplace(m_tree, settings, *listener);
    if (m_morsePictures)
        m_morsePictures->feed(*m_station);
    m_station->start();
    if (isOneOfSeveral)
        m_reporter->source(source.name);
    return *m_station;
}

SoundSinks Reception::sinks()
{
    SoundSinks sinks;
    if (m_station)
        sinks.morse = &*m_station;
    if (m_morsePictures) {
        sinks.morse = &*m_morsePictures;
        sinks.observer = &*m_morsePictures;
    }
    if (m_teleprinter)
        sinks.teleprinter = &*m_teleprinter;
    if (m_teleprinterPictures) {
        sinks.teleprinter = &*m_teleprinterPictures;
        sinks.teleprinterObserver = &*m_teleprinterPictures;
    }
    return sinks;
}

TeleprinterStation& Reception::beginTeleprinter(const ReceivedSource& source,
                                                const QString& decoder, bool isOneOfSeveral)
{
    TeleprinterSettings settings = this->settings(decoder);
    settings.source = source.name;
    settings.saveDirectory = m_options.saveDirectory;
    settings.start_us = source.start_us;
    StationListener* listener = &this->listener(source);
    if (m_options.hasPictures)
        listener = &m_teleprinterPictures.emplace(*listener, m_options.saveDirectory);
    m_teleprinter.emplace(m_tree, settings, *listener);
    if (m_teleprinterPictures)
        m_teleprinterPictures->feed(*m_teleprinter);
    m_teleprinter->start();
    if (isOneOfSeveral)
        m_reporter->source(source.name);
    return *m_teleprinter;
}

void Reception::end(SourceEnd how)
{
    if (!m_station && !m_teleprinter)
        return;
    if (m_station) {
        const SaveLosses lost = m_station->stop();
        m_lost.symbols += lost.symbols;
        m_lost.characters += lost.characters;
        m_lost.documents += lost.documents;
        m_station.reset();
        m_morsePictures.reset();
    }
    if (m_teleprinter) {
        m_lostTransmissions += m_teleprinter->lost();
        m_teleprinter.reset();
        m_teleprinterPictures.reset();
    }
    m_archive.end(how);
    m_reporter->end();
}

bool Reception::isPointless() const
{
    return m_output.hasFailed() && m_options.saveDirectory.isEmpty() && m_options.archive.isEmpty();
}

int Reception::finish()
{
    end();
    m_output.finish();
    int status = EXIT_DONE;
    if (m_lost.any()) {
        complainOfLosses(m_options.saveDirectory, m_lost);
        status = EXIT_BAD_INPUT;
    }
    if (m_lostTransmissions > 0) {
        complain(m_options.saveDirectory,
                 counted(m_lostTransmissions, "transmission", "transmissions") +
                     QStringLiteral(" could not be saved as a whole"));
        status = EXIT_BAD_INPUT;
    }
    if (!m_archive.finish())
        status = EXIT_BAD_INPUT;
    if (!m_output.error().isEmpty()) {
        complain(QStringLiteral("standard output"), m_output.error());
        status = EXIT_BAD_INPUT;
    }
    return status;
}

} // namespace morsehost
