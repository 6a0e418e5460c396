// SPDX-License-Identifier: MIT
#include "app/commands/teleprinters.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/soundoptions.h"
#include "app/options/tableoptions.h"
#include "app/reporter.h"
#include "host/standin/hosttree.h"
#include "station/io/folder.h"
#include "station/io/interrupt.h"
#include "station/teleprinterstation.h"
#include "tables/decodermodulesfile.h"
#include "tables/hostpath.h"
#include "tables/regularfile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace morsehost {

namespace {

using teleprinter::Code;

constexpr std::size_t PIECE_SAMPLES = 512;

constexpr char DECODER[] = "decoder";
const QLatin1String MORSE("Morse");
const QLatin1String AUTO("auto");
const QLatin1String NO_MAP("Default");

// Names of the decoder modules table that there is a demodulator for.
struct Decoder
{
    const char* name;
    Code code;
};
constexpr Decoder DECODERS[] = {
    {"Baudot", Code::Ita2},
    {"ASCII RTTY", Code::Ascii},
    {"Sitor-B", Code::Ccir476},
};

QString nameOf(Code code)
{
    for (const Decoder& row : DECODERS) {
        if (row.code == code)
            return QLatin1String(row.name);
    }
    return QString();
}

std::optional<Code> codeOf(const QString& decoder)
{
    for (const Decoder& row : DECODERS) {
        if (decoder == QLatin1String(row.name))
            return row.code;
    }
    return std::nullopt;
}

bool isInTable(const QString& decoder, const QString& modulesFile)
{
    QFile file(localPath(modulesFile));
    if (!openRegularFile(file))
        return false;
    const std::vector<Quillon::DecoderModule> modules =
        Quillon::readDecoderModulesFile(file.readAll());
    return std::any_of(modules.begin(), modules.end(),
                       [&](const Quillon::DecoderModule& row) { return row.name == decoder; });
}

teleprinter::Settings readSettings(Arguments& arguments, const SoundRequest& sound)
{
    using namespace teleprinter;
    teleprinter::Settings settings;
    settings.known.baud = arguments.number("baud", LOWEST_BAUD, HIGHEST_BAUD);
    settings.known.shift_Hz = arguments.number("shift", LEAST_SHIFT_Hz, MOST_SHIFT_Hz);
    settings.known.centre_Hz = sound.demodulator.tone_Hz;
    if (arguments.isSet("reverse"))
        settings.known.reversed = true;
    const QString unshift = arguments.text("unshift-on-space");
    if (unshift == QLatin1String("yes"))
        settings.unshift = Unshift::OnBlank;
    else if (unshift == QLatin1String("no"))
        settings.unshift = Unshift::Never;
    else if (!unshift.isEmpty())
        arguments.fail(
            QStringLiteral("--unshift-on-space takes 'yes' or 'no', not '%1'").arg(unshift));
    return settings;
}

// The first line that is found in a sound.
class Finder : public teleprinter::TextSink
{
public:
    void transmissionStarted(const teleprinter::Line& line, std::int64_t /*time_us*/) override
    {
        if (!m_line)
            m_line = line;
    }
    void character(std::uint8_t /*character*/, std::int64_t /*time_us*/) override {}
    void transmissionStopped(const teleprinter::Line& /*line*/, std::int64_t /*time_us*/) override
    {
    }

    const std::optional<teleprinter::Line>& line() const { return m_line; }

private:
    std::optional<teleprinter::Line> m_line;
};

// Pushes a sound through a receiver until `isEnough`. Returns what went wrong.
template <typename Function>
QString hear(SampleSource& source, teleprinter::Settings settings, teleprinter::TextSink& sink,
             Function isEnough)
{
    settings.sampleRate_Hz = source.sampleRate_Hz();
    teleprinter::Receiver receiver(settings, sink);
    std::vector<float> samples(PIECE_SAMPLES);
    while (!isInterrupted() && !isEnough()) {
        const std::size_t count = source.read(samples.data(), samples.size());
        if (count == 0)
            break;
        receiver.push(samples.data(), count);
    }
    receiver.finish();
    return source.error();
}

class Teleprinters
{
public:
    Teleprinters(const Arguments& arguments, const ReceptionOptions& options,
                 const teleprinter::Settings& settings)
        : m_options(options)
        , m_settings(settings)
        , m_mapsDirectory(directoryOption(arguments, "maps", "maps"))
        , m_map(arguments.isSet("map") ? arguments.text("map") : QString(NO_MAP))
        , m_output(STDOUT_FILENO)
        , m_reporter(makeReporter(options.form, m_output, {}))
    {
    }

    bool canBegin()
    {
        if (!QFileInfo(m_mapsDirectory).isDir()) {
            complain(m_mapsDirectory, QStringLiteral("no such folder"));
            return false;
        }
        const QString refusal =
            m_options.saveDirectory.isEmpty() ? QString() : makeWritable(m_options.saveDirectory);
        if (!refusal.isEmpty())
            complain(m_options.saveDirectory, refusal);
        return refusal.isEmpty();
    }

    // False when there is no use in going on.
    bool decode(SoundRequest sound, const QString& decoder, bool isOneOfSeveral)
    {
        const OpenedSource opened = openSound(sound);
        if (!opened.source)
            return complainOf(sound.name, opened.error);
        const auto now_us =
            static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch()) * 1000;
        const auto start_us = startTime(m_options, sound, opened.source->recorded_us(), now_us);
        if (!start_us)
            return complainOf(sound.name, noStartTime());
        TeleprinterSettings settings;
        settings.place = QStringLiteral("Receiver%1").arg(++m_count);
        settings.source = sound.name;
        settings.decoder = decoder;
        settings.mapsDirectory = m_mapsDirectory;
        settings.map = m_map;
        settings.saveDirectory = m_options.saveDirectory;
        settings.frequency_Hz = m_options.frequency_Hz;
        settings.start_us = *start_us;
        TeleprinterStation station(m_tree, settings, *m_reporter);
        const QString refusal = station.start();
        if (!refusal.isEmpty()) {
            complain(refusal);
            m_status = EXIT_BAD_INPUT;
            return false;
        }
        if (isOneOfSeveral)
            m_reporter->source(sound.name);
        teleprinter::Settings receiver = m_settings;
        if (const auto code = codeOf(decoder))
            receiver.known.codes = {*code};
        const QString error =
            hear(*opened.source, receiver, station, [this] { return m_output.hasFailed(); });
        m_reporter->end();
        if (station.lost() > 0)
            m_status = EXIT_BAD_INPUT;
        if (!error.isEmpty())
            complainOf(sound.name, error);
        return !m_output.hasFailed() && !isInterrupted();
    }

    int finish() { return std::max(m_status, statusAfter(m_output.error())); }

private:
    bool complainOf(const QString& name, const QString& reason)
    {
        complain(name, reason);
        m_status = EXIT_BAD_INPUT;
        return true;
    }

    ReceptionOptions m_options;
    teleprinter::Settings m_settings;
    QString m_mapsDirectory;
    QString m_map;
    Output m_output;
    std::unique_ptr<Reporter> m_reporter;
    HostTree m_tree;
    int m_count = 0;
    int m_status = EXIT_DONE;
};

// The decoder for a recording, or an error.
struct Choice
{
    QString decoder;
    QString error;
};

Choice chooseDecoder(SoundRequest sound, const teleprinter::Settings& settings)
{
    if (sound.isPipe)
        return {
            QString(),
            QStringLiteral("--decoder auto reads its input twice, which a pipe does not allow")};
    const OpenedSource opened = openSound(sound);
    if (!opened.source)
        return {QString(), opened.error};
    Finder finder;
    hear(*opened.source, settings, finder, [&finder] { return finder.line().has_value(); });
    if (!finder.line()) {
        complain(sound.name, QStringLiteral("no teleprinter; decoded as Morse"));
        return {MORSE, QString()};
    }
    const teleprinter::Line& line = *finder.line();
    const QString decoder = nameOf(line.kind.code);
    complain(sound.name, QStringLiteral("%1, %2 Bd, shift %3 Hz")
                             .arg(decoder)
                             .arg(line.kind.baud)
                             .arg(std::lround(line.shift_Hz())));
    return {decoder, QString()};
}

QString whyNoDecoder(const QString& decoder, const QString& modulesFile)
{
    const QStringList names = QStringList{MORSE} + teleprinterDecoders();
    if (!isInTable(decoder, modulesFile))
        return QStringLiteral("no decoder '%1' (see 'morsehost decoders')").arg(decoder);
    return QStringLiteral("there is no demodulator for '%1', only for %2")
        .arg(decoder, names.join(QLatin1String(", ")));
}

} // namespace

QStringList teleprinterDecoders()
{
    QStringList names;
    for (const Decoder& row : DECODERS)
        names += QLatin1String(row.name);
    return names;
}

std::vector<OptionRow> teleprinterOptionRows()
{
    using namespace teleprinter;
    return {
        {DECODER, "NAME",
         "Morse, Baudot, \"ASCII RTTY\", Sitor-B, or auto: what is found in the recording "
         "(default: "
         "Morse)"},
        {"map", "NAME", "teleprinters: the map behind the decoder (default: \"Default\", none)"},
        mapsOption(),
        decoderModulesOption(),
        {"baud", "BD",
         "teleprinters: the speed, " + range(LOWEST_BAUD, HIGHEST_BAUD) +
             " (default: any of the usual ones)"},
        {"shift", "HZ",
         "teleprinters: between the tones, " + range(LEAST_SHIFT_Hz, MOST_SHIFT_Hz) +
             " (default: any)"},
        {"reverse", nullptr, "teleprinters: mark is the lower tone (default: either)"},
        {"unshift-on-space", "yes|no",
         "Baudot, Sitor-B: a blank brings back the letters (default: where the sender repeats the "
         "figure shift after blanks)"},
    };
}

ToneRange teleprinterTones()
{
    return {teleprinter::LOWEST_SET_TONE_Hz, teleprinter::HIGHEST_SET_TONE_Hz};
}

bool isTeleprinterAsked(const Arguments& arguments)
{
    return arguments.isSet(DECODER) && arguments.text(DECODER) != MORSE;
}

void refuseTeleprinterOptions(Arguments& arguments)
{
    for (const OptionRow& row : teleprinterOptionRows()) {
        if (QLatin1String(row.name) != QLatin1String(DECODER) && arguments.isSet(row.name))
            arguments.fail(QStringLiteral("%1 needs the --%2 of a teleprinter")
                               .arg(optionWord(row.name), QLatin1String(DECODER)));
    }
}

int decodeTeleprinters(Arguments& arguments, const ReceptionOptions& options,
                       const std::vector<SoundRequest>& sounds, const MorseDecoding& decodeMorse)
{
    const teleprinter::Settings settings = readSettings(arguments, sounds.front());
    for (const char* option : {"wpm", "codes", "archive", "alphabet", "pictures"}) {
        if (arguments.isSet(option))
            arguments.fail(QStringLiteral("--%1 is for Morse").arg(QLatin1String(option)));
    }
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    const QString asked = arguments.text(DECODER);
    if (asked != AUTO && !codeOf(asked)) {
        complain(whyNoDecoder(asked, decoderModulesFile(arguments)));
        return EXIT_BAD_INPUT;
    }

    Teleprinters teleprinters(arguments, options, settings);
    if (!teleprinters.canBegin())
        return EXIT_BAD_INPUT;
    int status = EXIT_DONE;
    for (const SoundRequest& sound : sounds) {
        const Choice choice =
            asked == AUTO ? chooseDecoder(sound, settings) : Choice{asked, QString()};
        if (!choice.error.isEmpty()) {
            complain(sound.name, choice.error);
            status = EXIT_BAD_INPUT;
        } else if (choice.decoder == MORSE) {
            status = std::max(status, decodeMorse({sound}));
        } else if (!teleprinters.decode(sound, choice.decoder, sounds.size() > 1)) {
            break;
        }
    }
    return std::max(status, teleprinters.finish());
}

} // namespace morsehost
