// SPDX-License-Identifier: MIT
// morsehost inspect: what the demodulator saw in a stretch of a recording, as a picture.
#include "app/commands/commands.h"

#include "app/commands/inspectband.h"
#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/console/progress.h"
#include "app/options/alphabetoptions.h"
#include "app/options/bandoptions.h"
#include "app/options/soundoptions.h"
#include "app/picturefile.h"
#include "signal/morse/demodulator.h"
#include "station/io/interrupt.h"
#include "station/morsestation.h"
#include "station/picture/notes.h"
#include "station/picture/picture.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace morsehost {

namespace {

constexpr std::size_t PIECE_SAMPLES = 4096;
constexpr double DEFAULT_LENGTH_S = 30;
constexpr double SHORTEST_LENGTH_S = 0.1;
constexpr double LATEST_S = 1e9; // microseconds of more would not fit

// With --quick, for a signal to be found and followed before the stretch.
constexpr double BEFORE_S = 60;

// What is heard so long after a stretch changes nothing in it any more: the longest silence that
// ends a transmission, the beginning that is heard out first, and some to spare.
constexpr double AFTERWARDS_S = 30;

// Has every code decoded as `decode` would, and notes what came of it.
class Listener : public demodulator::SymbolSink, public StationListener
{
public:
    explicit Listener(inspect::Notes& notes)
        : m_notes(notes)
    {
    }

    void feed(MorseStation& station) { m_station = &station; }

    void transmissionStarted(std::int64_t time_us) override
    {
        m_notes.transmissionStarted(time_us);
        m_station->transmissionStarted(time_us);
    }

    void symbol(int code, std::int64_t time_us) override
    {
        m_notes.symbol(code, time_us);
        m_station->symbol(code, time_us);
    }

    void transmissionStopped(std::int64_t time_us, const demodulator::SignalReport& report) override
    {
        m_notes.transmissionStopped(time_us, report);
        m_station->transmissionStopped(time_us, report);
    }

    void text(const QString& text) override { m_notes.text(text); }

private:
    using StationListener::symbol;

    inspect::Notes& m_notes;
    MorseStation* m_station = nullptr;
};

std::int64_t microseconds(double time_s)
{
    return std::llround(1e6 * time_s);
}

// Of a band's options those that a single signal has no use for.
std::vector<OptionRow> bandRows()
{
    std::vector<OptionRow> rows = bandOptionRows();
    const auto isShared = [](const OptionRow& row) { return std::strcmp(row.name, "rate") == 0; };
    rows.erase(std::remove_if(rows.begin(), rows.end(), isShared), rows.end());
    return rows;
}

int run(Arguments& arguments)
{
    const double from_s = arguments.position("from", LATEST_S).value_or(0);
    const double length_s =
        arguments.number("length", SHORTEST_LENGTH_S, inspect::LONGEST_STRETCH_s)
            .value_or(DEFAULT_LENGTH_S);
    if (arguments.isSet("band"))
        return inspectBand(arguments, from_s, length_s);
    for (const OptionRow& row : bandRows()) {
        if (arguments.isSet(row.name))
            arguments.fail(optionWord(row.name) + QStringLiteral(" is for --band"));
    }
    const AlphabetChoice alphabet = readAlphabetOptions(arguments);
    const std::vector<SoundRequest> sounds = readSoundOptions(arguments);
    PictureFile file(arguments);
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;

    SoundRequest sound = sounds.front();
    const OpenedSource opened = openSound(sound);
    if (!opened.source) {
        complain(sound.name, opened.error);
        return EXIT_BAD_INPUT;
    }
    SampleSource* const source = opened.source.get();
    if (!file.open(sound.name))
        return EXIT_BAD_INPUT;

    const double rate_Hz = sound.demodulator.sampleRate_Hz;
    long long done = arguments.isSet("quick")
                         ? source->skip(std::llround(std::max(0.0, from_s - BEFORE_S) * rate_Hz))
                         : 0;
    double done_s = static_cast<double>(done) / rate_Hz;
    inspect::Notes notes({microseconds(from_s), microseconds(from_s + length_s)},
                         microseconds(done_s));
    Listener listener(notes);
    HostTree tree;
    StationSettings settings;
    settings.place = QStringLiteral("Receiver1");
    settings.alphabet = alphabet.name;
    settings.alphabetDirectory = alphabet.directory;
    MorseStation decoder(tree, settings, listener);
    if (!decoder.start()) {
        complainOfAlphabet(alphabet.name, alphabet.directory);
        return EXIT_BAD_INPUT;
    }
    listener.feed(decoder);
    demodulator::Demodulator demodulator(sound.demodulator, listener, &notes);
    std::vector<float> samples(PIECE_SAMPLES);
    Progress progress;
    const double end_s = from_s + length_s + AFTERWARDS_S;
    bool isOver = false;
    while (done_s < end_s && !isOver) {
        const std::size_t count = source->read(samples.data(), samples.size());
        demodulator.push(samples.data(), count);
        done += static_cast<long long>(count);
        done_s = static_cast<double>(done) / rate_Hz;
        isOver = count == 0;
        const auto all = source->frameCount();
        const double all_s = all ? static_cast<double>(*all) / rate_Hz : end_s;
        progress.show(done_s / std::min(all_s, end_s));
    }
    if (isOver)
        demodulator.finish();
    decoder.stop();
    if (isInterrupted()) {
        complain(file.name(), QStringLiteral("interrupted, nothing was drawn"));
        return EXIT_BAD_INPUT;
    }
    if (!source->error().isEmpty())
        complain(sound.name, source->error());
    if (done_s < from_s + SHORTEST_LENGTH_S) {
        if (source->error().isEmpty())
            complain(sound.name, QStringLiteral("ends after %1 s, before the stretch begins "
                                                "at %2 s")
                                     .arg(done_s, 0, 'f', 3)
                                     .arg(from_s, 0, 'f', 3));
        return EXIT_BAD_INPUT;
    }

    inspect::Seen seen = notes.seen();
    seen.stretch.to_us = std::min(seen.stretch.to_us, microseconds(done_s));
    if (!file.write(inspect::picture(seen, QFileInfo(sound.name).fileName())))
        return EXIT_BAD_INPUT;
    return source->error().isEmpty() ? EXIT_DONE : EXIT_BAD_INPUT;
}

std::vector<OptionRow> optionRows()
{
    std::vector<OptionRow> rows = {
        pictureOptionRow(),
        {"from", "S", "where to begin: seconds, or a position such as 1:30 (default: 0)"},
        {"length", "S", "seconds to draw, at most 600 (default: 30)"},
        {"quick", nullptr,
         "begin 60 seconds before the stretch instead of at the beginning; the text may differ "
         "from that of 'decode'"},
    };
    for (const OptionRow& row : soundOptionRows())
        rows.push_back(row);
    rows.push_back({"band", nullptr,
                    "draw a whole band: the waterfall, and each signal's text along its trace"});
    for (const OptionRow& row : bandRows())
        rows.push_back(row);
    for (const OptionRow& row : alphabetOptionRows())
        rows.push_back(row);
    return rows;
}

} // namespace

Command inspectCommand()
{
    return {{"inspect", "FILE|-", 1, 1,
             "Draws what the demodulator saw. A row is ten seconds or less: spectrogram and tone,\n"
             "strength and expected strength, marks and gaps with their kinds, and the text.\n"
             "Sound is read from its beginning, so that the picture shows what 'decode' decided.",
             optionRows(),
             "  morsehost inspect recording.flac --from 1:35 --length 20 -o doubt.svg\n"
             "  morsehost inspect --band --length 60 band.flac -o band.svg\n"},
            run};
}

} // namespace morsehost
