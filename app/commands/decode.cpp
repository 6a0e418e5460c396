// SPDX-License-Identifier: MIT
// morsehost decode: sound to text.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/console/progress.h"
#include "app/options/soundoptions.h"
#include "app/reception.h"
#include "morse/symbolcodes.h"
#include "signal/morse/demodulator.h"
#include "station/io/interrupt.h"

#include <QXmlStreamWriter>

namespace morsehost {

namespace {

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
            m_reception.symbol(eSYMBOL_NEW_LINE);
        m_hasEarlierOne = true;
    }

    void symbol(int code, std::int64_t time_us) override
    {
        // What is decoded now, or was keyed badly, carries the time of its own signal.
        if (code >= eSYMBOL_NEW_CHAR)
            m_reception.time(time_us);
        m_reception.symbol(code);
    }

    void transmissionStopped(std::int64_t time_us, const demodulator::SignalReport&) override
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
    SoundOptions sound = readSoundOptions(arguments);
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    const std::unique_ptr<SampleSource> opened = openSound(sound);
    if (!opened)
        return EXIT_BAD_INPUT;
    SampleSource& source = *opened;
    const demodulator::Settings& settings = sound.demodulator;

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
    complain(sound.name, source.error());
    return EXIT_BAD_INPUT;
}

} // namespace

Command decodeCommand()
{
    return {
        {"decode", "FILE|-", 1, 1,
         "Decodes a recording (WAV, FLAC, Ogg, MP3), or raw samples from standard input (signed\n"
         "16 bits, little-endian, mono). Each character is written as soon as it is decided.",
         receptionOptionRows(soundOptionRows()),
         "  morsehost decode recording.flac\n"
         "  morsehost decode --save received --frequency 7025000 \\\n"
         "      --start 2026-05-12T10:15:00Z recording.wav\n"
         "  arecord -t raw -f S16_LE -r 8000 | morsehost decode -\n"
         "  rtl_fm -M usb -f 7.025M -E direct2 -s 12k | morsehost decode --rate 12000 -\n"},
        run};
}

} // namespace morsehost
