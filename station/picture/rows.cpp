// SPDX-License-Identifier: MIT
#include "station/picture/rows.h"

#include <algorithm>
#include <cmath>

namespace inspect {

namespace {

constexpr double LEFT = 64.0;
constexpr double FLAGS = 12.0;       // base line of "start" and "end"
constexpr double AXIS_LABELS = 14.0; // below the axis
constexpr double TONE_STEP_Hz = 50.0;
constexpr double HIGHEST_SHARE = 0.48; // of the sample rate

} // namespace

const char Rows::STYLE[] =
    "text{font-family:'DejaVu Sans',Verdana,sans-serif;font-size:11px;fill:#333}"
    ".title{font-size:16px;font-weight:bold;fill:#111}"
    ".end{text-anchor:end}.middle{text-anchor:middle}"
    ".text{font-family:'DejaVu Sans Mono',monospace;font-size:15px;font-weight:bold;fill:#111;"
    "text-anchor:middle}"
    ".frame{fill:none;stroke:#888}.line{fill:none;stroke:#888}"
    ".tone{fill:none;stroke:#fff;stroke-width:1;stroke-opacity:.65;stroke-dasharray:4 5}"
    ".bracket{fill:none;stroke:#888}"
    ".flag{stroke:#111;stroke-width:1.4}.flagname{fill:#111}"
    ".nothing{font-size:14px;fill:#666;text-anchor:middle}";

QString timeText(std::int64_t time_us)
{
    return QString::number(static_cast<double>(time_us) / 1e6, 'f', 3);
}

Rows::Rows(const Sound& sound, const Stretch& stretch, const RowShape& shape, double lowest_Hz,
           double highest_Hz)
    : m_stretch(stretch)
    , m_shape(shape)
    , m_lowest_Hz(TONE_STEP_Hz * std::floor(std::max(lowest_Hz, TONE_STEP_Hz) / TONE_STEP_Hz))
    , m_highest_Hz(TONE_STEP_Hz * std::ceil(highest_Hz / TONE_STEP_Hz))
{
    if (sound.rate_Hz > 0.0)
        m_highest_Hz = std::min(
            m_highest_Hz, TONE_STEP_Hz * std::floor(HIGHEST_SHARE * sound.rate_Hz / TONE_STEP_Hz));
    const double duration_us = static_cast<double>(stretch.to_us - stretch.from_us);
    m_row_us = 1e6 * shape.longest_s;
    if (duration_us > 0)
        m_row_us = std::min(m_row_us, duration_us);
    m_rows = std::max(1, static_cast<int>(std::ceil(duration_us / m_row_us - 1e-9)));
    std::vector<float> all;
    for (int row = 0; row < m_rows; ++row) {
        m_spectra.push_back(spectrogram(sound, shown(timeOfRow(row)), m_lowest_Hz, m_highest_Hz));
        all.insert(all.end(), m_spectra.back().power_dB.begin(), m_spectra.back().power_dB.end());
    }
    m_shading = Shading::of(std::move(all));
}

QByteArray Rows::draw(const QString& title, const QString& facts, const QByteArray& style,
                      const std::function<void()>& drawRow, const std::function<void()>& legend)
{
    m_svg.begin(LEFT + WIDTH + Svg::RIGHT, Svg::HEADER + m_rows * m_shape.height + m_shape.legend,
                title, (STYLE + style).constData());
    m_svg.writeHeader(LEFT, title, facts);
    for (m_row = 0; m_row < m_rows; ++m_row) {
        m_svg.beginGroup("row", LEFT, Svg::HEADER + m_row * m_shape.height);
        m_time = timeOfRow(m_row);
        m_drawn = shown(m_time);
        drawRow();
        m_svg.endElement();
    }
    m_svg.beginGroup("legend", LEFT, Svg::HEADER + m_rows * m_shape.height);
    legend();
    m_svg.endElement();
    return m_svg.end();
}

Stretch Rows::timeOfRow(int row) const
{
    const auto length_us = static_cast<std::int64_t>(m_row_us);
    const std::int64_t from_us = m_stretch.from_us + row * length_us;
    return {from_us, from_us + length_us};
}

// The last row may end before its edge.
Stretch Rows::shown(const Stretch& row) const
{
    return {row.from_us, std::min(row.to_us, m_stretch.to_us)};
}

double Rows::x(std::int64_t time_us) const
{
    const std::int64_t time = std::clamp(time_us, m_drawn.from_us, m_drawn.to_us);
    return static_cast<double>(time - m_time.from_us) * WIDTH / m_row_us;
}

double Rows::yOfTone(double tone_Hz) const
{
    const double share = (m_highest_Hz - tone_Hz) / (m_highest_Hz - m_lowest_Hz);
    return m_shape.spectrumTop + m_shape.spectrumHeight * std::clamp(share, 0.0, 1.0);
}

void Rows::drawSpectrum()
{
    const Spectrogram& spectrum = m_spectra[static_cast<std::size_t>(m_row)];
    const double width = x(m_drawn.to_us);
    const double range_Hz = m_highest_Hz - m_lowest_Hz;
    if (spectrum.columns > 0) {
        const double top = m_shape.spectrumTop +
                           m_shape.spectrumHeight * (m_highest_Hz - spectrum.highest_Hz) / range_Hz;
        const double height =
            m_shape.spectrumHeight * (spectrum.highest_Hz - spectrum.lowest_Hz) / range_Hz;
        m_svg.image(0.0, top, width, height, m_shading.png(spectrum.power_dB, spectrum.columns));
    }
    m_svg.rectangle("frame", 0.0, m_shape.spectrumTop, width, m_shape.spectrumHeight);
    const double tick_Hz = range_Hz > 1500.0 ? 1000.0 : range_Hz > 900.0 ? 400.0 : 200.0;
    for (double tone_Hz = tick_Hz * std::ceil(m_lowest_Hz / tick_Hz); tone_Hz <= m_highest_Hz;
         tone_Hz += tick_Hz) {
        const double y = yOfTone(tone_Hz);
        m_svg.line("line", -4.0, y, 0.0, y);
        const bool isHighest = tone_Hz + tick_Hz > m_highest_Hz;
        m_svg.write("end", -7.0, y + 4.0,
                    QString::number(tone_Hz, 'f', 0) +
                        (isHighest ? QStringLiteral(" Hz") : QString()));
    }
}

void Rows::drawTransmissions(const std::vector<Transmission>& transmissions)
{
    const auto flag = [this](std::int64_t time_us, const char* kind, const char* words,
                             double side) {
        if (!m_drawn.touches(time_us, time_us + 1))
            return;
        m_svg.line("flag", x(time_us), 2.0, x(time_us), m_shape.axis);
        PathData pennant;
        pennant.moveTo(x(time_us), 2.0);
        pennant.lineTo(x(time_us) + side * 9.0, 6.5);
        pennant.lineTo(x(time_us), 11.0);
        m_svg.path("pennant", pennant.data() + QLatin1Char('z'));
        m_svg.write(kind, x(time_us) + side * 12.0, FLAGS, QLatin1String(words));
    };
    for (const Transmission& transmission : transmissions) {
        flag(transmission.begin_us, "flagname", "transmission", 1.0);
        if (transmission.end_us)
            flag(*transmission.end_us, "flagname end", "end of transmission", -1.0);
    }
}

void Rows::drawAxis()
{
    m_svg.line("line", 0.0, m_shape.axis, x(m_drawn.to_us), m_shape.axis);
    const std::int64_t pace_us = m_row_us > 5e6 ? 1000000 : m_row_us > 1e6 ? 200000 : 20000;
    const int decimals = pace_us < 100000 ? 2 : pace_us < 1000000 ? 1 : 0;
    std::int64_t tick_us = (m_drawn.from_us + pace_us - 1) / pace_us * pace_us;
    for (; tick_us <= m_drawn.to_us; tick_us += pace_us) {
        m_svg.line("line", x(tick_us), m_shape.axis, x(tick_us), m_shape.axis + 4.0);
        m_svg.write("middle", x(tick_us), m_shape.axis + AXIS_LABELS,
                    QString::number(static_cast<double>(tick_us) / 1e6, 'f', decimals) +
                        QStringLiteral(" s"));
    }
}

void Rows::drawBracket(std::int64_t begin_us, std::int64_t end_us, double y)
{
    PathData bracket;
    bracket.moveTo(x(begin_us), y - 3.0);
    bracket.lineTo(x(begin_us), y);
    bracket.lineTo(x(end_us), y);
    bracket.lineTo(x(end_us), y - 3.0);
    m_svg.path("bracket", bracket.data());
}

} // namespace inspect
