// SPDX-License-Identifier: MIT
#include "station/receiversettings.h"

#include <QXmlStreamWriter>

namespace morsehost {

QString receiverSettings(const demodulator::Settings& demodulator, const Transmission& transmission)
{
    QString description;
    QXmlStreamWriter xml(&description);
    const auto element = [&xml](const char* name, const std::optional<double>& value,
                                const char* unit) {
        if (!value)
            return;
        xml.writeStartElement(QLatin1String(name));
        xml.writeAttribute(QStringLiteral("unit"), QLatin1String(unit));
        xml.writeCharacters(QString::number(*value, 'g', 17));
        xml.writeEndElement();
    };
    xml.writeStartElement(QStringLiteral("TunerDemodulatorSettings"));
    element("Frequency", transmission.frequency_Hz, "Hz");
    xml.writeStartElement(QStringLiteral("Demodulator"));
    xml.writeAttribute(QStringLiteral("type"), QStringLiteral("Morse"));
    element("SampleRate", demodulator.sampleRate_Hz, "Hz");
    element("Tone", demodulator.tone_Hz, "Hz");
    element("Speed", demodulator.speed_wpm, "words per minute");
    element("FoundTone", transmission.tone_Hz, "Hz");
    element("FoundSpeed", transmission.speed_wpm, "words per minute");
    element("SignalToNoiseRatio", transmission.snr_dB, "dB");
    xml.writeEndElement();
    xml.writeEndElement();
    return description;
}

} // namespace morsehost
