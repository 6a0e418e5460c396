// SPDX-License-Identifier: MIT
#include "app/commands/inspectband.h"

#include "app/commands/inspectstretch.h"
#include "app/commands/picturefile.h"
#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/console/progress.h"
#include "app/options/alphabetoptions.h"
#include "app/options/bandoptions.h"
#include "signal/band/bandreceiver.h"
#include "station/bandstation.h"
#include "station/io/interrupt.h"
#include "station/picture/bandpicture.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace morsehost {

namespace {

constexpr std::size_t PIECE_SAMPLES = 16384;

// What is decided so long after a stretch still belongs to it.
constexpr double AFTERWARDS_S = 10;

// Keeps the text of the stretch.
class Texts : public BandListener
{
public:
    explicit Texts(const inspect::Stretch& stretch)
        : m_stretch(stretch)
    {
    }

    void found(const BandEntry& /*signal*/) override {}
    void text(const BandEntry& signal, const QString& text, std::int64_t time_us) override
    {
        if (m_stretch.touches(time_us, time_us + 1))
            texts.push_back({signal.number, signal.tone_Hz, time_us, text});
    }
    void transmission(const Transmission& /*transmission*/) override {}
    void lost(const BandEntry& /*signal*/) override {}
    void saving(const QString& /*message*/) override {}

    std::vector<inspect::BandText> texts;

private:
    inspect::Stretch m_stretch;
};

void refuseOptionsOfOneSignal(Arguments& arguments)
{
    for (const char* const option : {"channel", "tone", "wpm", "live", "quick", "decoder"}) {
        if (arguments.isSet(option))
            arguments.fail(
                QStringLiteral("--%1 is for a single signal").arg(QLatin1String(option)));
    }
}

// Returns where the sound stopped: at its end, when interrupted, or soon after `end_s`.
double listen(BandSource& source, double end_s, inspect::Waterfall& waterfall,
              demodulator::BandReceiver& receiver)
{
    const double rate_Hz = source.format().rate_Hz;
    std::vector<std::complex<float>> samples(PIECE_SAMPLES);
    Progress progress;
    double done_s = 0.0;
    for (long long done = 0; done_s < end_s && !isInterrupted();) {
        const std::size_t count = source.read(samples.data(), samples.size());
        if (count == 0)
            break;
        waterfall.push(samples.data(), count);
        receiver.push(samples.data(), count);
        done += static_cast<long long>(count);
        done_s = static_cast<double>(done) / rate_Hz;
        progress.show(done_s / end_s);
    }
    receiver.finish();
    return done_s;
}

void complainOfEnd(const QString& name, double done_s, double from_s)
{
    complain(name, QStringLiteral("ends after %1 s, too early for a stretch that begins at %2 s")
                       .arg(done_s, 0, 'f', 3)
                       .arg(from_s, 0, 'f', 3));
}

} // namespace

int inspectBand(Arguments& arguments, double from_s, double length_s)
{
    const BandChoice choice = readBandOptions(arguments);
    const AlphabetChoice alphabet = readAlphabetOptions(arguments);
    PictureFile file(arguments);
    refuseOptionsOfOneSignal(arguments);
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    const QString name = choice.request.name;
    const OpenedBand opened = openBand(choice.request);
    if (!opened.source) {
        complain(name, opened.error);
        return EXIT_BAD_INPUT;
    }
    if (const QString fault = limitsFault(choice, opened.source->format()); !fault.isEmpty()) {
        complain(name, fault);
        return EXIT_BAD_INPUT;
    }
    if (!file.open(name))
        return EXIT_BAD_INPUT;

    inspect::Stretch stretch = {microseconds(from_s), microseconds(from_s + length_s)};
    Texts texts(stretch);
    StationSettings settings;
    settings.alphabet = alphabet;
    BandStation station(settings, choice.center_Hz, texts);
    if (!station.canBegin()) {
        complainOfAlphabet(alphabet);
        return EXIT_BAD_INPUT;
    }
    demodulator::BandSettings receiving;
    receiving.format = opened.source->format();
    receiving.lowest_Hz = choice.lowest_Hz;
    receiving.highest_Hz = choice.highest_Hz;
    const auto [lowest_Hz, highest_Hz] = limitsOf(choice, receiving.format);
    inspect::Waterfall waterfall(receiving.format, stretch, lowest_Hz, highest_Hz,
                                 inspect::bandRows(highest_Hz - lowest_Hz));
    demodulator::BandReceiver receiver(receiving, station);
    const double done_s =
        listen(*opened.source, from_s + length_s + AFTERWARDS_S, waterfall, receiver);
    if (isInterrupted()) {
        complain(file.name(), QStringLiteral("not drawn, interrupted"));
        return EXIT_BAD_INPUT;
    }
    const QString& error = opened.source->error();
    if (!error.isEmpty())
        complain(name, error);
    if (waterfall.powers().columns() == 0) {
        if (error.isEmpty())
            complainOfEnd(name, done_s, from_s);
        return EXIT_BAD_INPUT;
    }
    stretch.to_us = std::min(stretch.to_us, microseconds(done_s));
    if (!file.write(inspect::bandPicture(waterfall.powers(), texts.texts, stretch, choice.center_Hz,
                                         QFileInfo(name).fileName())))
        return EXIT_BAD_INPUT;
    return error.isEmpty() ? EXIT_DONE : EXIT_BAD_INPUT;
}

} // namespace morsehost
