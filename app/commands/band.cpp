// SPDX-License-Identifier: MIT
// morsehost band: every keyed signal of a band at once.
#include "app/commands/commands.h"

#include "app/bandreporter.h"
#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/alphabetoptions.h"
#include "signal/band/bandreceiver.h"
#include "station/audio/bandsource.h"
#include "station/bandstation.h"
#include "station/io/interrupt.h"

#include <QDateTime>
#include <QDir>

#include <complex>
#include <unistd.h>
#include <vector>

namespace morsehost {

namespace {

constexpr std::size_t PIECE_SAMPLES = 16384;
constexpr double MAX_CENTER_HZ = 3e12; // above the highest bands in use
constexpr int MOST_SIGNALS = 5000;
constexpr int MOST_COLON_CHARACTERS = 1000;

template <typename Value>
struct Word
{
    const char* word;
    Value value;
};
constexpr Word<RawFormat> FORMATS[] = {
    {"s16", RawFormat::S16}, {"f32", RawFormat::F32}, {"u8", RawFormat::U8}, {"s8", RawFormat::S8}};
constexpr Word<BandForm> FORMS[] = {{"lines", BandForm::Lines}, {"colon", BandForm::Colon}};

struct BandOptions
{
    BandRequest request;
    demodulator::BandSettings settings;
    StationSettings station;
    BandForm form = BandForm::Lines;
    int colonCharacters = DEFAULT_COLON_CHARACTERS;
    double center_Hz = 0.0;
};

template <typename Words, typename Value>
void readWord(Arguments& arguments, const char* option, const Words& words, Value& value)
{
    if (!arguments.isSet(option))
        return;
    QStringList known;
    for (const auto& word : words) {
        if (arguments.text(option) == QLatin1String(word.word)) {
            value = word.value;
            return;
        }
        known += QLatin1String(word.word);
    }
    arguments.fail(QStringLiteral("--%1 takes one of %2")
                       .arg(QLatin1String(option), known.join(QStringLiteral(", "))));
}

// How the input is written: by our names, or by the letters of the programs that are called with
// lines FREQUENCY:TEXT in mind. Those read floating-point numbers unless asked otherwise.
void readFormat(Arguments& arguments, BandRequest& request, bool isColon)
{
    if (isColon)
        request.format = RawFormat::F32;
    readWord(arguments, "format", FORMATS, request.format);
    if (arguments.isSet("i"))
        request.format = RawFormat::S16;
    if (arguments.isSet("f"))
        request.format = RawFormat::F32;
    const auto letter_Hz =
        arguments.number("r", demodulator::LOWEST_BAND_RATE_Hz, demodulator::HIGHEST_BAND_RATE_Hz);
    const auto rate_Hz = arguments.number("rate", demodulator::LOWEST_BAND_RATE_Hz,
                                          demodulator::HIGHEST_BAND_RATE_Hz);
    request.rate_Hz = letter_Hz.value_or(rate_Hz.value_or(request.rate_Hz));
    const int formats =
        int(arguments.isSet("format")) + int(arguments.isSet("i")) + int(arguments.isSet("f"));
    const int rates = int(arguments.isSet("rate")) + int(arguments.isSet("r"));
    if (formats > 1)
        arguments.fail(QStringLiteral("--format, -i and -f exclude each other"));
    if (rates > 1)
        arguments.fail(QStringLiteral("--rate and -r are the same option"));
    if (!request.isPipe && formats + rates > 0)
        arguments.fail(QStringLiteral("--rate and --format are for standard input; a file has its "
                                      "own"));
}

// One form; a table needs a terminal to be drawn on.
void readForm(Arguments& arguments, BandOptions& options)
{
    readWord(arguments, "form", FORMS, options.form);
    if (arguments.isSet("json"))
        options.form = BandForm::Json;
    if (arguments.isSet("table") && isatty(STDOUT_FILENO) != 0)
        options.form = BandForm::Table;
    const int forms =
        int(arguments.isSet("form")) + int(arguments.isSet("json")) + int(arguments.isSet("table"));
    if (forms > 1)
        arguments.fail(QStringLiteral("--form, --json and --table exclude each other"));
    const auto characters = arguments.wholeNumber("n", 1, MOST_COLON_CHARACTERS);
    options.colonCharacters = characters.value_or(options.colonCharacters);
    if (characters && options.form != BandForm::Colon)
        arguments.fail(QStringLiteral("-n is for --form colon"));
}

// LO-HI, both as received; a minus may stand before either.
void readLimits(Arguments& arguments, BandOptions& options)
{
    if (!arguments.isSet("only"))
        return;
    const QString text = arguments.text("only");
    const int dash = text.indexOf(QLatin1Char('-'), 1);
    bool isLow = false;
    bool isHigh = false;
    const double low_Hz = text.left(dash).toDouble(&isLow);
    const double high_Hz = text.mid(dash + 1).toDouble(&isHigh);
    if (dash < 0 || !isLow || !isHigh || !(low_Hz < high_Hz)) {
        arguments.fail(
            QStringLiteral("--only takes two frequencies in hertz, as 14000000-14070000"));
        return;
    }
    options.settings.lowest_Hz = low_Hz - options.center_Hz;
    options.settings.highest_Hz = high_Hz - options.center_Hz;
}

BandOptions readOptions(Arguments& arguments)
{
    BandOptions options;
    BandRequest& request = options.request;
    const QString name = arguments.operands().constFirst();
    request.isPipe = name == QLatin1String("-");
    request.name = request.isPipe ? QStringLiteral("standard input") : name;
    request.isComplex = arguments.isSet("iq");
    readForm(arguments, options);
    readFormat(arguments, request, options.form == BandForm::Colon);
    options.center_Hz = arguments.number("center", 0, MAX_CENTER_HZ).value_or(0.0);
    readLimits(arguments, options);
    if (const auto least_dB = arguments.number("least-snr", -30, 60))
        options.settings.leastSnr_dB = *least_dB;
    if (const auto most = arguments.wholeNumber("most", 1, MOST_SIGNALS))
        options.settings.mostSignals = static_cast<std::size_t>(*most);
    if (const auto jobs = arguments.wholeNumber("jobs", 1, 256))
        options.settings.threads = static_cast<unsigned>(*jobs);

    StationSettings& station = options.station;
    const AlphabetChoice alphabet = readAlphabetOptions(arguments);
    station.alphabet = alphabet.name;
    station.alphabetDirectory = alphabet.directory;
    station.source = request.name;
    if (arguments.isSet("save"))
        station.saveDirectory =
            QDir::cleanPath(QDir::current().absoluteFilePath(arguments.text("save")));
    // A pipe is heard now, unless it is said otherwise.
    const auto now_us = static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch()) * 1000;
    station.start_us = arguments.time("start").value_or(request.isPipe ? now_us : 0);
    return options;
}

// What could not be done, said at the end.
int statusOf(const BandRequest& request, const BandSource& source, const BandStation& station,
             const Output& output)
{
    int status = EXIT_DONE;
    const auto fail = [&status](const QString& subject, const QString& reason) {
        complain(subject, reason);
        status = EXIT_BAD_INPUT;
    };
    if (!source.error().isEmpty())
        fail(request.name, source.error());
    if (station.lost().any())
        fail(QStringLiteral("saving"), QStringLiteral("not everything could be saved"));
    if (!output.error().isEmpty())
        fail(QStringLiteral("standard output"), output.error());
    return status;
}

int run(Arguments& arguments)
{
    BandOptions options = readOptions(arguments);
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    const OpenedBand opened = openBand(options.request);
    if (!opened.source) {
        complain(options.request.name, opened.error);
        return EXIT_BAD_INPUT;
    }
    options.settings.format = opened.source->format();
    const QString& folder = options.station.saveDirectory;
    if (!folder.isEmpty() && !QDir().mkpath(folder)) {
        complain(folder, QStringLiteral("the folder cannot be created"));
        return EXIT_BAD_INPUT;
    }

    Output output(STDOUT_FILENO);
    const auto reporter =
        makeBandReporter(options.form, options.center_Hz, options.colonCharacters, output);
    BandStation station(options.station, options.center_Hz, *reporter);
    if (!station.canBegin()) {
        complainOfAlphabet(options.station.alphabet, options.station.alphabetDirectory);
        return EXIT_BAD_INPUT;
    }
    demodulator::BandReceiver receiver(options.settings, station);
    std::vector<std::complex<float>> samples(PIECE_SAMPLES);
    double heard_s = 0.0;
    while (!isInterrupted() && (!output.hasFailed() || !folder.isEmpty())) {
        const std::size_t count = opened.source->read(samples.data(), samples.size());
        if (count == 0)
            break;
        receiver.push(samples.data(), count);
        heard_s += static_cast<double>(count) / options.settings.format.rate_Hz;
        reporter->heard(heard_s, receiver.signals());
    }
    const std::size_t dropped = receiver.dropped();
    receiver.finish();
    if (dropped > 0)
        complain(QStringLiteral("%1 signals were dropped: more than --most at once").arg(dropped));
    return statusOf(options.request, *opened.source, station, output);
}

} // namespace

Command bandCommand()
{
    std::vector<OptionRow> rows = {
        {"iq", nullptr,
         "the input is I and Q: two channels of a recording, or pairs of raw samples"},
        {"format", "FORMAT",
         "format of raw samples on standard input: s16, f32, u8 or s8 (default: s16, with --form "
         "colon f32)"},
        {"rate", "HZ", "sample rate of raw samples, 4000 to 2400000 (default: 48000)"},
        {"center", "HZ", "frequency that 0 Hz of the input stands for (default: 0)"},
        {"only", "LO-HI", "leave out signals beyond these frequencies, in hertz"},
        {"least-snr", "DB", "leave out signals that are weaker, in 500 Hz (default: -30)"},
        {"most", "N", "follow N signals at once, the strongest, 1 to 5000 (default: 2000)"},
        {"jobs", "N", "use N processors (default: all); the output does not depend on it"},
        {"form", "FORM",
         "lines: a line for each transmission; colon: FREQUENCY:TEXT, word by word (default: "
         "lines)"},
        {"r", "HZ", "--rate, as background decoders of web receivers call it"},
        {"i", nullptr, "--format s16, likewise"},
        {"f", nullptr, "--format f32, likewise"},
        {"n", "N", "with --form colon: a line at the first blank after N characters (default: 8)"},
        {"json", nullptr, "print a JSON object a line per event"},
        {"table", nullptr,
         "show who sends now, in place; lines where standard output is no terminal"},
        {"save", "DIR", "write the files of each signal into DIR, which is created if need be"},
        {"start", "TIME",
         "time of the first sample, ISO 8601 (default: the clock for standard input, 1970 for a "
         "file)"},
    };
    const std::vector<OptionRow> alphabet = alphabetOptionRows();
    rows.insert(rows.end(), alphabet.begin(), alphabet.end());
    return {
        {"band", "FILE|-", 1, 1,
         "Decodes every keyed signal of a band at once: a recording (WAV, FLAC, Ogg, MP3), or raw\n"
         "samples from standard input, 4 kHz to 2.4 MHz wide. A line for each transmission tells\n"
         "frequency, speed, level over noise in 500 Hz, time and text.",
         rows,
         "  morsehost band contest.flac\n"
         "  morsehost band --iq --center 14025000 --table recording.wav\n"
         "  rtl_sdr -f 7025000 -s 240000 - | \\\n"
         "      morsehost band --iq --format u8 --rate 240000 --center 7025000 -\n"},
        run};
}

} // namespace morsehost
