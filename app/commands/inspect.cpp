// SPDX-License-Identifier: MIT
// morsehost inspect: what the demodulator saw in a stretch of a recording, as a picture.
#include "app/commands/commands.h"

#include "app/commands/inspectband.h"
#include "app/commands/inspectstretch.h"
#include "app/commands/inspectteleprinter.h"
#include "app/commands/picturefile.h"
#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/alphabetoptions.h"
#include "app/options/bandoptions.h"
#include "app/options/soundoptions.h"
#include "app/options/teleprinteroptions.h"
#include "signal/morse/demodulator.h"
#include "station/decoders.h"
#include "station/finddecoder.h"
#include "station/io/interrupt.h"
#include "station/morsestation.h"
#include "station/picture/notes.h"
#include "station/picture/picture.h"

#include <QFileInfo>

#include <algorithm>
#include <cstring>

namespace morsehost {

namespace {

constexpr double DEFAULT_LENGTH_S = 30;
constexpr double LATEST_S = 1e9; // microseconds of more would not fit

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
        arguments.number("length", SHORTEST_LENGTH_s, inspect::LONGEST_STRETCH_s)
            .value_or(DEFAULT_LENGTH_S);
    if (arguments.isSet("band"))
        return inspectBand(arguments, from_s, length_s);
    for (const OptionRow& row : bandRows()) {
        if (arguments.isSet(row.name))
            arguments.fail(optionWord(row.name) + QStringLiteral(" is for --band"));
    }
    const AlphabetChoice alphabet = readAlphabetOptions(arguments);
    std::vector<SoundRequest> sounds = readSoundOptions(arguments, tonesToSet(arguments));
    const TeleprinterChoice choice =
        readTeleprinterOptions(arguments, {"wpm", "alphabet", "cut-numbers", "live"}, sounds);
    PictureFile file(arguments);
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    if (!canDecode(arguments, choice))
        return EXIT_BAD_INPUT;

    SoundRequest sound = sounds.front();
    OpenedSource opened;
    if (choice.decoder == QLatin1String(DECODER_AS_FOUND)) {
        FoundDecoder found = findDecoder(sound, isInterrupted);
        if (!found.remark.isEmpty())
            complain(sound.name, found.remark);
        sound.decoder = found.decoder;
        opened = std::move(found.opened);
    } else {
        opened = openSound(sound);
    }
    if (!opened.source) {
        complain(sound.name, opened.error);
        return EXIT_BAD_INPUT;
    }
    SampleSource* const source = opened.source.get();
    if (!file.open(sound.name))
        return EXIT_BAD_INPUT;

    const StretchChoice stretch = {from_s, length_s, arguments.isSet("quick")};
    if (sound.decoder != QLatin1String(MORSE_DECODER))
        return inspectTeleprinter(*source, sound, stretch, choice, file);
    StretchReader reader(*source, sound, stretch);
    inspect::Notes notes(reader.stretch(), reader.begin_us());
    Listener listener(notes);
    HostTree tree;
    StationSettings settings;
    settings.place = QStringLiteral("Receiver1");
    settings.alphabet = alphabet;
    MorseStation decoder(tree, settings, listener);
    if (!decoder.start()) {
        complainOfAlphabet(alphabet);
        return EXIT_BAD_INPUT;
    }
    listener.feed(decoder);
    demodulator::Demodulator demodulator(sound.demodulator, listener, &notes);
    reader.hear(demodulator);
    decoder.stop();
    if (!reader.canDraw(file.name()))
        return EXIT_BAD_INPUT;

    inspect::Seen seen = notes.seen();
    seen.stretch.to_us = std::min(seen.stretch.to_us, reader.end_us());
    if (!file.write(inspect::picture(seen, QFileInfo(sound.name).fileName())))
        return EXIT_BAD_INPUT;
    return source->error().isEmpty() ? EXIT_DONE : EXIT_BAD_INPUT;
}

std::vector<OptionRow> optionRows()
{
    std::vector<OptionRow> rows = {
        pictureOptionRow(),
        {"from", "S", "where to begin: seconds, or a position such as 1:30 (default: 0)"},
        {"length", "S",
         "seconds to draw, at most " +
             std::to_string(static_cast<int>(inspect::LONGEST_STRETCH_s)) + " (default: 30)"},
        {"quick", nullptr,
         "begin 60 seconds before the stretch instead of at the beginning; the text may differ "
         "from that of 'decode'"},
    };
    const ToneRange tones = teleprinterTones();
    for (const OptionRow& row : soundOptionRows("; of a teleprinter midway between its tones, " +
                                                range(tones.lowest_Hz, tones.highest_Hz)))
        rows.push_back(row);
    for (const OptionRow& row : teleprinterOptionRows())
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
             "strength and expected strength, marks and gaps with their kinds, and the text; of a\n"
             "teleprinter both tones, how strong each is in each element, and the characters.\n"
             "Sound is read from its beginning, so that the picture shows what 'decode' decided.",
             optionRows(),
             "  morsehost inspect recording.flac --from 1:35 --length 20 -o doubt.svg\n"
             "  morsehost inspect --decoder Baudot recording.flac -o teleprinter.svg\n"
             "  morsehost inspect --band --length 60 band.flac -o band.svg\n"},
            run};
}

} // namespace morsehost
