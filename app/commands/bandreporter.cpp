// SPDX-License-Identifier: MIT
#include "app/commands/bandreporter.h"

#include "app/console/complain.h"
#include "app/console/printable.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <map>

namespace morsehost {

namespace {

constexpr int SHOWN_TEXT = 50;    // characters of a signal in the table
constexpr double REFRESH_s = 1.0; // of signal

// What is known, otherwise nothing.
QString number(const std::optional<double>& value, int digits)
{
    return value ? QString::number(*value, 'f', digits) : QStringLiteral("?");
}

// Of a teleprinter.
QString speed(double baudRate)
{
    return QStringLiteral("%1 Bd").arg(baudRate, 3, 'f', 0);
}

// What was sent may be anything, a line end among them; the blanks of a piece are kept.
QString pieceOfLine(QString text)
{
    return printableLine(text.replace(QLatin1Char('\n'), QLatin1Char(' ')));
}

class LineReporter : public BandReporter
{
public:
    using BandReporter::BandReporter;

    void transmission(const Transmission& transmission) override
    {
        std::optional<double> frequency_kHz = transmission.frequency_Hz;
        if (frequency_kHz)
            *frequency_kHz /= 1000.0;
        const QString time = QDateTime::fromMSecsSinceEpoch(transmission.start_us / 1000, Qt::UTC)
                                 .toString(QStringLiteral("hh:mm:ss'Z'"));
        m_output.write(QStringLiteral("%1 kHz  %2  %3 dB  %4  %5\n")
                           .arg(number(frequency_kHz, 2), 9)
                           .arg(transmission.baudRate ? speed(*transmission.baudRate)
                                                      : QStringLiteral("%1 wpm").arg(
                                                            number(transmission.speed_wpm, 0), 2))
                           .arg(number(transmission.snr_dB, 0), 2)
                           .arg(time, onOneLine(transmission.text))
                           .toUtf8());
    }
};

class JsonBandReporter : public BandReporter
{
public:
    JsonBandReporter(unsigned long long start_us, Output& output)
        : BandReporter(output)
        , m_start_us(start_us)
    {
    }

    void found(const BandEntry& signal) override { state(signal, "found"); }
    void lost(const BandEntry& signal) override { state(signal, "lost"); }
    void text(const BandEntry& signal, const QString& text, std::int64_t time_us) override
    {
        const QString at = isoTime(static_cast<qint64>(m_start_us) + time_us);
        write(withDecoder(signal, {{QStringLiteral("event"), QStringLiteral("text")},
                                   {QStringLiteral("at"), at},
                                   {QStringLiteral("number"), signal.number},
                                   {QStringLiteral("text"), text}}));
    }
    void transmission(const Transmission& transmission) override { write(toJson(transmission)); }

private:
    static double rounded(double value) { return std::round(10.0 * value) / 10.0; }

    void state(const BandEntry& signal, const char* state)
    {
        write(withDecoder(signal, {{QStringLiteral("event"), QStringLiteral("signal")},
                                   {QStringLiteral("state"), QLatin1String(state)},
                                   {QStringLiteral("number"), signal.number},
                                   {QStringLiteral("tone_Hz"), rounded(signal.tone_Hz)},
                                   {QStringLiteral("frequency_Hz"), rounded(signal.frequency_Hz)},
                                   {QStringLiteral("snr_dB"), rounded(signal.snr_dB)}}));
    }
    static QJsonObject withDecoder(const BandEntry& signal, QJsonObject object)
    {
        object.insert(QStringLiteral("decoder"), signal.decoder);
        if (signal.baudRate)
            object.insert(QStringLiteral("baud_rate"), *signal.baudRate);
        if (signal.shift_Hz)
            object.insert(QStringLiteral("shift_Hz"), *signal.shift_Hz);
        return object;
    }
    void write(const QJsonObject& object)
    {
        m_output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    }

    unsigned long long m_start_us;
};

class ColonReporter : public BandReporter
{
public:
    ColonReporter(int characters, Output& output)
        : BandReporter(output)
        , m_characters(characters)
    {
    }

    void text(const BandEntry& signal, const QString& text, std::int64_t /*time_us*/) override
    {
        Line& line = m_lines[signal.number];
        line.frequency_Hz = signal.frequency_Hz;
        line.text += pieceOfLine(text);
        if (line.text.size() >= m_characters && line.text.endsWith(QLatin1Char(' ')))
            write(line);
    }
    void transmission(const Transmission& transmission) override
    {
        write(m_lines[transmission.number]);
    }
    void lost(const BandEntry& signal) override { m_lines.erase(signal.number); }

private:
    struct Line
    {
        double frequency_Hz = 0.0;
        QString text;
    };

    void write(Line& line)
    {
        if (!line.text.trimmed().isEmpty())
            m_output.write(QStringLiteral("%1:%2\n")
                               .arg(std::lround(line.frequency_Hz))
                               .arg(line.text)
                               .toUtf8());
        line.text.clear();
    }

    int m_characters;
    std::map<int, Line> m_lines;
};

class TableReporter : public BandReporter
{
public:
    TableReporter(double center_Hz, Output& output)
        : BandReporter(output)
        , m_center_Hz(center_Hz)
    {
    }

    void text(const BandEntry& signal, const QString& text, std::int64_t /*time_us*/) override
    {
        QString& shown = m_texts[signal.number];
        shown = (shown + pieceOfLine(text)).right(SHOWN_TEXT);
    }
    void lost(const BandEntry& signal) override { m_texts.erase(signal.number); }
    void heard(double time_s, const std::vector<demodulator::BandSignal>& signals) override
    {
        if (time_s < m_next_s)
            return;
        m_next_s = time_s + REFRESH_s;
        QString screen = QStringLiteral("\x1b[H\x1b[J");
        for (const demodulator::BandSignal& signal : signals) {
            screen += QStringLiteral("%1 kHz  %2  %3 dB  %4\n")
                          .arg((m_center_Hz + signal.tone_Hz) / 1000.0, 9, 'f', 2)
                          .arg(signal.baudRate > 0.0
                                   ? speed(signal.baudRate)
                                   : QStringLiteral("%1 wpm").arg(signal.speed_wpm, 2, 'f', 0))
                          .arg(signal.snr_dB, 2, 'f', 0)
                          .arg(m_texts[signal.number]);
        }
        m_output.write(screen.toUtf8());
    }

private:
    double m_center_Hz;
    double m_next_s = 0.0;
    std::map<int, QString> m_texts;
};

} // namespace

void BandReporter::found(const BandEntry& /*signal*/) {}
void BandReporter::text(const BandEntry& /*signal*/, const QString& /*text*/,
                        std::int64_t /*time_us*/)
{
}
void BandReporter::transmission(const Transmission& /*transmission*/) {}
void BandReporter::lost(const BandEntry& /*signal*/) {}
void BandReporter::heard(double /*time_s*/, const std::vector<demodulator::BandSignal>& /*signals*/)
{
}

void BandReporter::saving(const QString& message)
{
    complain(message);
}

std::unique_ptr<BandReporter> makeBandReporter(const BandReport& report, Output& output)
{
    switch (report.form) {
    case BandForm::Json:
        return std::make_unique<JsonBandReporter>(report.start_us, output);
    case BandForm::Colon:
        return std::make_unique<ColonReporter>(report.colonCharacters, output);
    case BandForm::Table:
        return std::make_unique<TableReporter>(report.center_Hz, output);
    case BandForm::Lines:
        break;
    }
    return std::make_unique<LineReporter>(output);
}

} // namespace morsehost
