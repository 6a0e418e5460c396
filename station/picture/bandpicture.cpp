// SPDX-License-Identifier: MIT
#include "station/picture/bandpicture.h"

#include "station/picture/shading.h"
#include "station/picture/svg.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace inspect {

namespace {

constexpr double ROW_PIXELS = 1440.0;
constexpr double LONGEST_ROW_s = 60.0;
constexpr double SHORTEST_ROW_s = 10.0;
constexpr int ROW_TICKS = 12;      // at most
constexpr double BAND_LEFT = 92.0; // frequencies are wider than seconds
constexpr double AXIS = 30.0;      // below each row
constexpr double BOTTOM = 12.0;
constexpr double PIXEL_Hz = 10.0; // text of signals 160 Hz apart does not touch
constexpr int LOWEST_BAND_PIXELS = 160;
constexpr double LEAST_TICK = 44.0; // pixels between two frequencies that are named
constexpr double ABOVE_TRACE = 4.0;
constexpr double CHARACTER = 6.0;   // width of one
constexpr double TEXT_HEIGHT = 9.0; // what is sent at the upper edge stays in the picture

const char BAND_STYLE[] =
    "text{font-family:'DejaVu Sans',Verdana,sans-serif;font-size:11px;fill:#333}"
    ".title{font-size:16px;font-weight:bold;fill:#111}"
    ".end{text-anchor:end}.middle{text-anchor:middle}"
    ".text{font-family:'DejaVu Sans Mono',monospace;font-size:10px;fill:#fff;"
    "stroke:#001840;stroke-width:3px;stroke-linejoin:round;paint-order:stroke}"
    ".frame{fill:none;stroke:#888}.line{fill:none;stroke:#888}";

double secondsOf(std::int64_t time_us)
{
    return static_cast<double>(time_us) * 1e-6;
}

// 1, 2 or 5 times a power of ten, at least `least`.
double roundStep(double least)
{
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (step * power >= least)
            return step * power;
    }
    return 10.0 * power;
}

class BandDrawing
{
public:
    BandDrawing(const BandPowers& powers, const std::vector<BandText>& texts,
                const Stretch& stretch, double center_Hz)
        : m_powers(powers)
        , m_stretch(stretch)
        , m_center_Hz(center_Hz)
        , m_height(bandRows(powers.highest_Hz - powers.lowest_Hz))
        , m_row_s(std::clamp(std::ceil(secondsOf(stretch.to_us - stretch.from_us)), SHORTEST_ROW_s,
                             LONGEST_ROW_s))
        , m_rowColumns(static_cast<int>(std::lround(m_row_s / Waterfall::COLUMN_s)))
        , m_timeRows(std::max(1, (powers.columns() + m_rowColumns - 1) / m_rowColumns))
        , m_shading(Shading::of(powers.powers_dB))
    {
        for (const BandText& text : texts)
            m_signals[text.number].push_back(&text);
    }

    QByteArray draw(const QString& title)
    {
        m_svg.begin(BAND_LEFT + ROW_PIXELS + Svg::RIGHT,
                    Svg::HEADER + m_timeRows * (m_height + AXIS) + BOTTOM, title, BAND_STYLE);
        m_svg.writeHeader(BAND_LEFT, title,
                          QStringLiteral("%1 s to %2 s, %3 to %4 kHz, %5 signals with text")
                              .arg(secondsOf(m_stretch.from_us), 0, 'f', 0)
                              .arg(secondsOf(m_stretch.to_us), 0, 'f', 0)
                              .arg((m_center_Hz + m_powers.lowest_Hz) / 1000.0, 0, 'f', 2)
                              .arg((m_center_Hz + m_powers.highest_Hz) / 1000.0, 0, 'f', 2)
                              .arg(m_signals.size()));
        for (int row = 0; row < m_timeRows; ++row) {
            m_svg.beginGroup("row", BAND_LEFT, Svg::HEADER + row * (m_height + AXIS));
            drawRow(row);
            m_svg.endElement();
        }
        return m_svg.end();
    }

private:
    double yOf(double tone_Hz) const
    {
        return m_height * (m_powers.highest_Hz - tone_Hz) /
               (m_powers.highest_Hz - m_powers.lowest_Hz);
    }

    double xOf(double time_s) const { return time_s / m_row_s * ROW_PIXELS; }

    void drawRow(int row)
    {
        const int first = row * m_rowColumns;
        const int columns = std::min(m_rowColumns, m_powers.columns() - first);
        if (columns > 0) {
            const int rows = m_powers.rows;
            std::vector<float> powers_dB;
            powers_dB.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
            for (int y = 0; y < rows; ++y) {
                for (int x = first; x < first + columns; ++x)
                    powers_dB.push_back(m_powers.powers_dB[static_cast<std::size_t>(x) *
                                                               static_cast<std::size_t>(rows) +
                                                           static_cast<std::size_t>(y)]);
            }
            m_svg.image(0.0, 0.0, columns * ROW_PIXELS / m_rowColumns, m_height,
                        m_shading.png(powers_dB, columns));
        }
        m_svg.rectangle("frame", 0.0, 0.0, ROW_PIXELS, m_height);
        drawFrequencies();
        const double begin_s = secondsOf(m_stretch.from_us) + row * m_row_s;
        drawTimes(begin_s);
        for (const auto& signal : m_signals)
            drawTexts(signal.second, begin_s);
    }

    void drawFrequencies()
    {
        const double lowest_Hz = m_center_Hz + m_powers.lowest_Hz;
        const double highest_Hz = m_center_Hz + m_powers.highest_Hz;
        const double tick_Hz = roundStep(LEAST_TICK * (highest_Hz - lowest_Hz) / m_height);
        const int digits = tick_Hz < 10.0 ? 3 : tick_Hz < 100.0 ? 2 : tick_Hz < 1000.0 ? 1 : 0;
        for (double tick = std::ceil(lowest_Hz / tick_Hz); tick * tick_Hz <= highest_Hz; ++tick) {
            const double y = yOf(tick * tick_Hz - m_center_Hz);
            m_svg.line("line", -4.0, y, 0.0, y);
            m_svg.write("end", -7.0, y + 4.0,
                        QStringLiteral("%1 kHz").arg(tick * tick_Hz / 1000.0, 0, 'f', digits));
        }
    }

    void drawTimes(double begin_s)
    {
        const double tick_s = roundStep(m_row_s / ROW_TICKS);
        for (double tick = std::ceil(begin_s / tick_s); tick * tick_s <= begin_s + m_row_s;
             ++tick) {
            const double x = xOf(tick * tick_s - begin_s);
            m_svg.line("line", x, m_height, x, m_height + 4.0);
            m_svg.write("middle", x, m_height + 18.0,
                        QStringLiteral("%1 s").arg(tick * tick_s, 0, 'f', 0));
        }
    }

    // Word by word; each character ends where its last mark did.
    void drawTexts(const std::vector<const BandText*>& texts, double begin_s)
    {
        std::vector<double> lefts;
        QString word;
        double tone_Hz = 0.0;
        const auto flush = [&] {
            if (!word.isEmpty())
                m_svg.write("text", lefts, std::max(yOf(tone_Hz) - ABOVE_TRACE, TEXT_HEIGHT), word);
            lefts.clear();
            word.clear();
        };
        for (const BandText* const text : texts) {
            const double x = xOf(secondsOf(text->time_us) - begin_s);
            if (x < 0.0 || x >= ROW_PIXELS)
                continue;
            if (text->text.trimmed().isEmpty()) {
                flush();
                continue;
            }
            for (int i = 0; i < text->text.size(); ++i)
                lefts.push_back(x - CHARACTER * (text->text.size() - i));
            word += text->text;
            tone_Hz = text->tone_Hz;
        }
        flush();
    }

    const BandPowers& m_powers;
    Stretch m_stretch;
    double m_center_Hz;
    int m_height;
    double m_row_s; ///< of time in a row
    int m_rowColumns;
    int m_timeRows;
    Shading m_shading;
    std::map<int, std::vector<const BandText*>> m_signals;
    Svg m_svg;
};

} // namespace

int bandRows(double width_Hz)
{
    return static_cast<int>(std::clamp(width_Hz / PIXEL_Hz, static_cast<double>(LOWEST_BAND_PIXELS),
                                       static_cast<double>(HIGHEST_BAND_PIXELS)));
}

QByteArray bandPicture(const BandPowers& powers, const std::vector<BandText>& texts,
                       const Stretch& stretch, double center_Hz, const QString& title)
{
    return BandDrawing(powers, texts, stretch, center_Hz).draw(title);
}

} // namespace inspect
