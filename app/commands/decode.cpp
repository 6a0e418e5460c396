// SPDX-License-Identifier: MIT
// morsehost decode: sound to text.
#include "app/commands/commands.h"

#include "app/audio/samplesource.h"
#include "app/complain.h"
#include "app/demodulator/demodulator.h"
#include "app/exitstatus.h"
#include "app/interrupt.h"
#include "app/progress.h"
#include "app/reception.h"

#include <QXmlStreamWriter>

#include <unistd.h>

namespace morsehost {

namespace {

constexpr int DEFAULT_RATE_HZ = 8000;
constexpr int END_OF_CHARACTER = 3;
constexpr int END_OF_LINE = 5;

// Text appears with every piece, so a piece is a small part of a character.
constexpr std::size_t PIECE_SAMPLES = 512;

// Tells the host what the demodulator hears, and when.
class Listener : public demodulator::SymbolSink
{
public:
    explicit Listener(Reception& reception)
        : m_reception(reception)
    {
    }

    void transmissionStarted(std::int64_t time_us) override
    {
        m_reception.beginTransmission(time_us);
        // The line that ends is closed here, where the time of the next one is known.
        if (m_hasEarlierOne)
            m_reception.symbol(END_OF_LINE);
        m_hasEarlierOne = true;
    }

    void symbol(int code, std::int64_t time_us) override
    {
        // What is decoded now, or was keyed badly, carries the time of its own signal.
        if (code >= END_OF_CHARACTER)
            m_reception.time(time_us);
        m_reception.symbol(code);
    }

    void transmissionStopped(std::int64_t time_us) override
    {
        m_reception.time(time_us);
        m_reception.endTransmission();
    }

private:
    Reception& m_reception;
    bool m_hasEarlierOne = false;
};

QString describeReceiver(const demodulator::Settings& demodulator,
                         std::optional<double> frequency_Hz)
{
    QString description;
    QXmlStreamWriter xml(&description);
    const auto element = [&xml](const char* name, double value, const char* unit) {
        xml.writeStartElement(QLatin1String(name));
        xml.writeAttribute(QStringLiteral("unit"), QLatin1String(unit));
        xml.writeCharacters(QString::number(value, 'g', 17));
        xml.writeEndElement();
    };
    xml.writeStartElement(QStringLiteral("TunerDemodulatorSettings"));
    if (frequency_Hz)
        element("Frequency", *frequency_Hz, "Hz");
    xml.writeStartElement(QStringLiteral("Demodulator"));
    xml.writeAttribute(QStringLiteral("type"), QStringLiteral("Morse"));
    element("SampleRate", demodulator.sampleRate_Hz, "Hz");
    if (demodulator.tone_Hz)
        element("Tone", *demodulator.tone_Hz, "Hz");
    if (demodulator.speed_wpm)
        element("Speed", *demodulator.speed_wpm, "words per minute");
    xml.writeEndElement();
    xml.writeEndElement();
    return description;
}

int run(Arguments& arguments)
{
    ReceptionOptions options = readReceptionOptions(arguments);
    const QString name = arguments.operands().value(0);
    const bool isPipe = name == QLatin1String("-");
    const std::optional<int> channel = arguments.wholeNumber("channel", 1, 1024);
    const std::optional<int> rate_Hz = arguments.wholeNumber("rate", 4000, 768000);
    demodulator::Settings settings = {};
    settings.tone_Hz = arguments.number("tone", 100, 20000);
    settings.speed_wpm = arguments.number("wpm", 5, 100);
    if (isPipe && channel)
        arguments.fail(QStringLiteral("--channel is for files; a pipe carries one channel"));
    if (!isPipe && rate_Hz)
        arguments.fail(QStringLiteral("--rate is for pipes; a file knows its own"));
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;

    const QString shownName = isPipe ? QStringLiteral("standard input") : name;
    OpenedSource opened;
    if (!isPipe)
        opened = openRecording(name, channel);
    else if (isatty(STDIN_FILENO) != 0)
        opened.error = QStringLiteral("is a terminal; raw samples are expected from a pipe");
    else
        opened.source = openRawPipe(STDIN_FILENO, rate_Hz.value_or(DEFAULT_RATE_HZ));
    if (!opened.source) {
        complain(shownName, opened.error);
        return EXIT_BAD_INPUT;
    }
    SampleSource& source = *opened.source;
    settings.sampleRate_Hz = source.sampleRate_Hz();
    if (settings.tone_Hz && *settings.tone_Hz >= settings.sampleRate_Hz / 2) {
        complain(shownName, QStringLiteral("a tone of %1 Hz needs more than %2 samples a second")
                                .arg(*settings.tone_Hz)
                                .arg(settings.sampleRate_Hz));
        return EXIT_BAD_INPUT;
    }

    options.station.describeReceiver = [settings, frequency = options.station.frequency_Hz] {
        return describeReceiver(settings, frequency);
    };
    Progress progress;
    Reception reception(options,
                        [&progress](bool lineStaysOpen) { progress.makeRoom(lineStaysOpen); });
    if (!reception.start())
        return EXIT_BAD_INPUT;
    Listener listener(reception);
    demodulator::Demodulator demodulator(settings, listener);
    std::vector<float> samples(PIECE_SAMPLES);
    long long done = 0;
    while (!reception.isOutputGone() && !isInterrupted()) {
        const std::size_t count = source.read(samples.data(), samples.size());
        if (count == 0)
            break;
        demodulator.push(samples.data(), count);
        done += static_cast<long long>(count);
        if (const auto all = source.frameCount())
            progress.show(static_cast<double>(done) / static_cast<double>(*all));
    }
    demodulator.finish();
    const int status = reception.finish();
    if (source.error().isEmpty())
        return status;
    complain(shownName, source.error());
    return EXIT_BAD_INPUT;
}

} // namespace

Command decodeCommand()
{
    return {
        {"decode", "FILE|-", 1, 1,
         "Decodes a recording (WAV, FLAC, Ogg, MP3), or raw samples from standard input (signed\n"
         "16 bits, little-endian, mono). Each character is written as soon as it is decided.",
         receptionOptionRows({
             {"channel", "N", "take channel N of the file, counted from 1, not the mean of all"},
             {"rate", "HZ", "samples a second of standard input; 8000 without this"},
             {"tone", "HZ", "where the tone is, instead of looking for it"},
             {"wpm", "N", "speed in words a minute to begin with, instead of estimating it"},
         }),
         "  morsehost decode recording.flac\n"
         "  morsehost decode --save received --frequency 7025000 \\\n"
         "      --start 2026-05-12T10:15:00Z recording.wav\n"
         "  arecord -t raw -f S16_LE -r 8000 | morsehost decode -\n"
         "  rtl_fm -M usb -f 7.025M -s 12k | morsehost decode --rate 12000 -\n"},
        run};
}

} // namespace morsehost
