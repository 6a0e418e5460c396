// SPDX-License-Identifier: MIT
#include "station/picture/picture.h"

#include "station/picture/shading.h"
#include "station/picture/spectrogram.h"
#include "station/picture/svg.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>

namespace inspect {

namespace {

// --- Where things lie, in pixels ---------------------------------------------------------------

constexpr double ROW_s = 10.0; // of time in a row, at most
constexpr double LEFT = 64.0;
constexpr double WIDTH = 1200.0; // of a row
constexpr double RIGHT = 24.0;
constexpr double HEADER = 56.0;
constexpr double LEGEND = 64.0;
constexpr double NARROW = 80.0; // for "no signal"

// From the top of a row.
constexpr double FLAGS = 12.0; // base line of "start" and "end"
constexpr double SPECTRUM_TOP = 16.0;
constexpr double SPECTRUM_HEIGHT = 110.0;
constexpr double STRENGTH_TOP = 132.0;
constexpr double STRENGTH_HEIGHT = 84.0;
constexpr double STRENGTH_BOTTOM = STRENGTH_TOP + STRENGTH_HEIGHT;
constexpr double KEYING_TOP = 226.0;
constexpr double KEYING_MIDDLE = 250.0;
constexpr double BRACKET = 266.0; // spans the marks of a character
constexpr double TEXT_BASE = 283.0;
constexpr double AXIS = 290.0;
constexpr double AXIS_LABELS = 304.0;
constexpr double ROW_HEIGHT = 322.0;

constexpr double DOT_HEIGHT = 8.0;
constexpr double DASH_HEIGHT = 14.0;
constexpr double CHARACTER_GAP_HEIGHT = 8.0;
constexpr double WORD_GAP_HEIGHT = 14.0;

// --- What is shown -----------------------------------------------------------------------------

constexpr double AROUND_TONE_Hz = 300.0;
constexpr double LOWEST_Hz = 100.0; // where no tone is followed
constexpr double HIGHEST_Hz = 3500.0;
constexpr double HEADROOM = 1.35;                  // strength over the strongest level
constexpr std::int64_t LONGEST_STEP_us = 20000;    // steps further apart belong to two signals
constexpr std::size_t LONGEST_AVERAGE_steps = 125; // half a second

// Blue, orange, green and purple that the colour-blind can distinguish.
const char STYLE[] =
    "text{font-family:'DejaVu Sans',Verdana,sans-serif;font-size:11px;fill:#333}"
    ".title{font-size:16px;font-weight:bold;fill:#111}"
    ".end{text-anchor:end}.middle{text-anchor:middle}"
    ".text{font-family:'DejaVu Sans Mono',monospace;font-size:15px;font-weight:bold;fill:#111;"
    "text-anchor:middle}"
    ".unknown{font-family:'DejaVu Sans Mono',monospace;font-size:11px;fill:#a00;"
    "text-anchor:middle}"
    ".frame{fill:none;stroke:#888}.line{fill:none;stroke:#888}.grid{stroke:#ddd}"
    ".tone{fill:none;stroke:#fff;stroke-width:1;stroke-opacity:.65;stroke-dasharray:4 5}"
    ".strength{fill:none;stroke:#222;stroke-width:1.2;stroke-linejoin:round}"
    ".level{fill:none;stroke:#0072b2;stroke-width:1.4;stroke-dasharray:8 3}"
    ".even{fill:none;stroke:#d55e00;stroke-width:1.4}"
    ".noise{fill:none;stroke:#666;stroke-width:1.4;stroke-dasharray:2 3}"
    ".mark.dot{fill:#0072b2}.mark.dash{fill:#d55e00}"
    ".mark.carrier{fill:#bbb;stroke:#333;stroke-dasharray:3 2}"
    ".gap{fill:none;stroke-width:1.6}.gap.inner{stroke:#999}.gap.character{stroke:#009e73}"
    ".gap.word{stroke:#aa4499}.open{stroke-dasharray:2 2}"
    ".bracket{fill:none;stroke:#888}"
    ".flag{stroke:#111;stroke-width:1.4}.flagname{fill:#111}"
    ".wrong{fill:#a00}.wrongname{fill:#a00;font-size:9px;text-anchor:middle}"
    ".nothing{font-size:14px;fill:#666;text-anchor:middle}";

QString seconds(std::int64_t time_us)
{
    return QString::number(static_cast<double>(time_us) / 1e6, 'f', 3);
}

// The strength of the tone around each step, averaged over a dot as the demodulator weighs it.
std::vector<double> strengths(const std::vector<demodulator::FollowedStep>& steps)
{
    std::vector<double> result(steps.size());
    const auto joined = [&](std::size_t a, std::size_t b) {
        return steps[b].time_us - steps[a].time_us <= LONGEST_STEP_us;
    };
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const double dot = std::max(1.0, steps[i].level.dot_steps);
        const std::size_t length =
            std::min(LONGEST_AVERAGE_steps, static_cast<std::size_t>(std::lround(dot)));
        std::size_t first = i;
        while (first > 0 && i - first < length / 2 && joined(first - 1, first))
            --first;
        std::size_t last = i;
        while (last + 1 < steps.size() && last - i < (length - 1) / 2 && joined(last, last + 1))
            ++last;
        std::complex<double> sum = 0.0;
        for (std::size_t k = first; k <= last; ++k)
            sum += steps[k].value;
        result[i] = std::abs(sum) / static_cast<double>(last - first + 1);
    }
    return result;
}

class Drawing
{
public:
    Drawing(const Seen& seen, const QString& title)
        : m_seen(seen)
        , m_title(title)
        , m_strengths(strengths(seen.steps))
    {
        const double duration_us = static_cast<double>(seen.stretch.to_us - seen.stretch.from_us);
        m_row_us = duration_us > 0 ? std::min(1e6 * ROW_s, duration_us) : 1e6 * ROW_s;
        m_rows = std::max(1, static_cast<int>(std::ceil(duration_us / m_row_us - 1e-9)));
        chooseTones();
        chooseStrengths();
        for (int row = 0; row < m_rows; ++row)
            m_spectra.push_back(
                spectrogram(seen, shown(timeOfRow(row)), m_lowest_Hz, m_highest_Hz));
        std::vector<float> all;
        for (const Spectrogram& spectrum : m_spectra)
            all.insert(all.end(), spectrum.power_dB.begin(), spectrum.power_dB.end());
        m_shading = Shading::of(std::move(all));
    }

    QByteArray draw()
    {
        const double width = LEFT + WIDTH + RIGHT;
        const double height = HEADER + m_rows * ROW_HEIGHT + LEGEND;
        m_svg.begin(width, height, m_title, STYLE);
        header();
        for (int row = 0; row < m_rows; ++row) {
            m_svg.beginGroup("row", LEFT, HEADER + row * ROW_HEIGHT);
            m_time = timeOfRow(row);
            m_drawn = shown(m_time);
            drawRow(row);
            m_svg.endElement();
        }
        legend(HEADER + m_rows * ROW_HEIGHT);
        return m_svg.end();
    }

private:
    // --- Scales --------------------------------------------------------------------------------

    Stretch timeOfRow(int row) const
    {
        const auto length_us = static_cast<std::int64_t>(m_row_us);
        const std::int64_t from_us = m_seen.stretch.from_us + row * length_us;
        return {from_us, from_us + length_us};
    }

    // The last row may end before its edge.
    Stretch shown(const Stretch& row) const
    {
        return {row.from_us, std::min(row.to_us, m_seen.stretch.to_us)};
    }

    double x(std::int64_t time_us) const
    {
        const std::int64_t time = std::clamp(time_us, m_drawn.from_us, m_drawn.to_us);
        return static_cast<double>(time - m_time.from_us) * WIDTH / m_row_us;
    }

    double yOfTone(double tone_Hz) const
    {
        const double share = (m_highest_Hz - tone_Hz) / (m_highest_Hz - m_lowest_Hz);
        return SPECTRUM_TOP + SPECTRUM_HEIGHT * std::clamp(share, 0.0, 1.0);
    }

    double yOfStrength(double strength) const
    {
        return STRENGTH_BOTTOM - STRENGTH_HEIGHT * std::min(1.0, strength / m_strongest);
    }

    void chooseTones()
    {
        if (m_seen.steps.empty()) {
            m_lowest_Hz = LOWEST_Hz;
            m_highest_Hz = HIGHEST_Hz;
        } else {
            const auto byTone = [](const auto& a, const auto& b) { return a.tone_Hz < b.tone_Hz; };
            const auto [lowest, highest] =
                std::minmax_element(m_seen.steps.begin(), m_seen.steps.end(), byTone);
            m_lowest_Hz = lowest->tone_Hz - AROUND_TONE_Hz;
            m_highest_Hz = highest->tone_Hz + AROUND_TONE_Hz;
        }
        m_lowest_Hz = 50.0 * std::floor(std::max(m_lowest_Hz, 50.0) / 50.0);
        m_highest_Hz = 50.0 * std::ceil(m_highest_Hz / 50.0);
        if (m_seen.rate_Hz > 0.0)
            m_highest_Hz = std::min(m_highest_Hz, 50.0 * std::floor(0.48 * m_seen.rate_Hz / 50.0));
    }

    void chooseStrengths()
    {
        double strongest = 0.0;
        for (const demodulator::FollowedStep& step : m_seen.steps)
            strongest = std::max(strongest, std::sqrt(step.level.signal));
        m_strongest = strongest > 0.0 ? HEADROOM * strongest : 1.0;
    }

    // --- Above and below the rows --------------------------------------------------------------

    void header()
    {
        m_svg.write("title", LEFT, 24.0, m_title);
        QStringList facts;
        facts += QStringLiteral("%1 s to %2 s")
                     .arg(seconds(m_seen.stretch.from_us), seconds(m_seen.stretch.to_us));
        if (m_seen.steps.empty()) {
            facts += QStringLiteral("no signal was found in this stretch");
        } else {
            std::vector<double> tones;
            for (const demodulator::FollowedStep& step : m_seen.steps)
                tones.push_back(step.tone_Hz);
            facts += QStringLiteral("tone %1 Hz").arg(median(tones), 0, 'f', 0);
        }
        if (!m_seen.marks.empty()) {
            std::vector<double> units;
            for (const Mark& mark : m_seen.marks)
                units.push_back(mark.unit_us);
            facts +=
                QStringLiteral("speed %1 words a minute").arg(1.2e6 / median(units), 0, 'f', 0);
        }
        m_svg.write("facts", LEFT, 44.0, facts.join(QStringLiteral(", ")));
    }

    static double median(std::vector<double>& values)
    {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    void legend(double top)
    {
        m_svg.beginGroup("legend", LEFT, top);
        const double upper = 14.0;
        const double lower = 40.0;
        double at = 0.0;
        const auto name = [&](double base, const char* words, double room) {
            m_svg.write("name", at + 34.0, base + 4.0, QLatin1String(words));
            at += room;
        };
        const auto mark = [&](const char* kind, double height, double radius, const char* words,
                              double room) {
            markShape(kind, at, upper, 26.0, height, radius);
            m_svg.endElement();
            name(upper, words, room);
        };
        const auto gap = [&](const char* kind, double height, bool isDouble, const char* words,
                             double room) {
            m_svg.path(kind, gapShape(at, at + 26.0, upper, height, isDouble));
            name(upper, words, room);
        };
        mark("mark dot", DOT_HEIGHT, DOT_HEIGHT / 2.0, "dot", 80.0);
        mark("mark dash", DASH_HEIGHT, 0.0, "dash", 90.0);
        mark("mark carrier", DASH_HEIGHT, 0.0, "no keying: too long a mark", 220.0);
        gap("gap inner", 0.0, false, "gap within a character", 190.0);
        gap("gap character", CHARACTER_GAP_HEIGHT, false, "between characters", 170.0);
        gap("gap word", WORD_GAP_HEIGHT, true, "between words", 140.0);
        wrong(at + 13.0, upper + 4.0);
        name(upper, "dot too short, dash too long, pause too short", 0.0);
        at = 0.0;
        const auto curve = [&](const char* kind, const char* words, double room) {
            m_svg.line(kind, at, lower, at + 26.0, lower);
            name(lower, words, room);
        };
        curve("strength", "strength of the tone, averaged over a dot", 290.0);
        curve("level", "level expected of a mark", 200.0);
        curve("even", "where mark and gap are equally likely", 270.0);
        curve("noise", "noise expected", 140.0);
        m_svg.rectangle({}, at, lower - 7.0, 26.0, 14.0,
                        QStringLiteral("#001840")); // the dashes are white
        curve("tone", "tone that is followed", 0.0);
        m_svg.endElement();
    }

    // --- A row ---------------------------------------------------------------------------------

    void drawRow(int row)
    {
        drawSpectrum(m_spectra[static_cast<std::size_t>(row)]);
        drawStrength();
        drawKeying();
        drawText();
        drawTransmissions();
        drawAxis();
    }

    void drawSpectrum(const Spectrogram& spectrum)
    {
        const double width = x(m_drawn.to_us);
        if (spectrum.columns > 0) {
            const double top = SPECTRUM_TOP + SPECTRUM_HEIGHT *
                                                  (m_highest_Hz - spectrum.highest_Hz) /
                                                  (m_highest_Hz - m_lowest_Hz);
            const double height = SPECTRUM_HEIGHT * (spectrum.highest_Hz - spectrum.lowest_Hz) /
                                  (m_highest_Hz - m_lowest_Hz);
            m_svg.image(0.0, top, width, height,
                        m_shading.png(spectrum.power_dB, spectrum.columns));
        }
        m_svg.rectangle("frame", 0.0, SPECTRUM_TOP, width, SPECTRUM_HEIGHT);
        const double range_Hz = m_highest_Hz - m_lowest_Hz;
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
        m_svg.path("tone",
                   curve([this](std::size_t i) { return yOfTone(m_seen.steps[i].tone_Hz); }, 25));
    }

    // A curve through the steps of this row, those of every `pace`th.
    template <typename Height>
    QString curve(const Height& height, std::size_t pace)
    {
        PathData data;
        const auto& steps = m_seen.steps;
        for (std::size_t i = firstStep(); i < steps.size() && steps[i].time_us < m_drawn.to_us;
             ++i) {
            const bool begins =
                data.isEmpty() || steps[i].time_us - steps[i - 1].time_us > LONGEST_STEP_us;
            const bool ends = i + 1 == steps.size() || steps[i + 1].time_us >= m_drawn.to_us ||
                              steps[i + 1].time_us - steps[i].time_us > LONGEST_STEP_us;
            if (begins)
                data.moveTo(x(steps[i].time_us), height(i));
            else if (ends || i % pace == 0)
                data.lineTo(x(steps[i].time_us), height(i));
        }
        return data.data();
    }

    std::size_t firstStep() const
    {
        const auto first =
            std::lower_bound(m_seen.steps.begin(), m_seen.steps.end(), m_drawn.from_us,
                             [](const demodulator::FollowedStep& step, std::int64_t time_us) {
                                 return step.time_us < time_us;
                             });
        return static_cast<std::size_t>(first - m_seen.steps.begin());
    }

    void drawStrength()
    {
        const double width = x(m_drawn.to_us);
        m_svg.rectangle("frame", 0.0, STRENGTH_TOP, width, STRENGTH_HEIGHT);
        const std::size_t first = firstStep();
        if (first == m_seen.steps.size() || m_seen.steps[first].time_us >= m_drawn.to_us) {
            m_svg.write("nothing", std::max(width, NARROW) / 2.0,
                        STRENGTH_TOP + STRENGTH_HEIGHT / 2.0 + 5.0, QStringLiteral("no signal"));
            return;
        }
        // The key-down amplitude is twice the strength; a round part of full scale is labelled.
        const double amplitude = std::pow(10.0, std::floor(std::log10(2.0 * m_strongest)));
        const double tick = amplitude * (2.0 * m_strongest >= 5.0 * amplitude   ? 5.0
                                         : 2.0 * m_strongest >= 2.0 * amplitude ? 2.0
                                                                                : 1.0);
        const double y = yOfStrength(tick / 2.0);
        m_svg.line("line", -4.0, y, 0.0, y);
        m_svg.write("end", -7.0, y + 4.0, QString::number(tick, 'g', 3));
        m_svg.line("line", -4.0, STRENGTH_BOTTOM, 0.0, STRENGTH_BOTTOM);
        m_svg.write("end", -7.0, STRENGTH_BOTTOM + 4.0, QStringLiteral("0"));

        const auto& steps = m_seen.steps;
        m_svg.path("noise", curve(
                                [&](std::size_t i) {
                                    const demodulator::Level& level = steps[i].level;
                                    return yOfStrength(
                                        std::sqrt(level.noise / std::max(1.0, level.dot_steps)));
                                },
                                8));
        m_svg.path(
            "level",
            curve([&](std::size_t i) { return yOfStrength(std::sqrt(steps[i].level.signal)); }, 8));
        m_svg.path(
            "even",
            curve([&](std::size_t i) { return yOfStrength(evenMagnitude(steps[i].level)); }, 8));
        m_svg.path("strength",
                   curve([&](std::size_t i) { return yOfStrength(m_strengths[i]); }, 2));
    }

    // Leaves the element open, for its title.
    void markShape(const char* kind, double left, double middle, double width, double height,
                   double radius)
    {
        m_svg.beginElement(
            "rect", {{"class", QLatin1String(kind)},
                     {"x", pixels(left)},
                     {"y", pixels(middle - height / 2.0)},
                     {"width", pixels(width)},
                     {"height", pixels(height)},
                     {"rx", radius > 0.0 ? pixels(std::min(radius, width / 2.0)) : QString()}});
    }

    // A line with ends as high as `height`, or two.
    static QString gapShape(double left, double right, double middle, double height, bool isDouble)
    {
        const double inset = std::min(1.5, (right - left) / 4.0);
        PathData data;
        for (const double y : {middle - 2.0, middle + 2.0, middle}) {
            if ((y == middle) == isDouble)
                continue;
            data.moveTo(left + inset, y);
            data.lineTo(right - inset, y);
        }
        if (height > 0.0) {
            for (const double end : {left + inset, right - inset}) {
                data.moveTo(end, middle - height / 2.0);
                data.lineTo(end, middle + height / 2.0);
            }
        }
        return data.data();
    }

    void wrong(double middle, double base)
    {
        PathData data;
        data.moveTo(middle, base - 8.0);
        data.lineTo(middle + 4.5, base);
        data.lineTo(middle - 4.5, base);
        m_svg.path("wrong", data.data() + QLatin1Char('z'));
    }

    template <typename Thing>
    bool isHere(const Thing& thing) const
    {
        return m_drawn.touches(thing.begin_us, thing.end_us);
    }

    void drawKeying()
    {
        for (const Gap& gap : m_seen.gaps) {
            if (!isHere(gap))
                continue;
            const bool isWord = gap.kind == GapKind::Word;
            const double height = gap.kind == GapKind::Inner ? 0.0
                                  : isWord                   ? WORD_GAP_HEIGHT
                                                             : CHARACTER_GAP_HEIGHT;
            const char* const kind = gap.kind == GapKind::Inner ? "gap inner"
                                     : isWord && gap.open       ? "gap word open"
                                     : isWord                   ? "gap word"
                                     : gap.open                 ? "gap character open"
                                                                : "gap character";
            m_svg.path(kind,
                       gapShape(x(gap.begin_us), x(gap.end_us), KEYING_MIDDLE, height, isWord));
        }
        for (const Mark& mark : m_seen.marks) {
            if (isHere(mark))
                drawMark(mark);
        }
    }

    void drawMark(const Mark& mark)
    {
        const double left = x(mark.begin_us);
        const double width = x(mark.end_us) - left;
        const char* name = "mark";
        if (mark.kind == MarkKind::Dot) {
            name = "dot";
            markShape("mark dot", left, KEYING_MIDDLE, width, DOT_HEIGHT, DOT_HEIGHT / 2.0);
        } else if (mark.kind == MarkKind::Dash) {
            name = "dash";
            markShape("mark dash", left, KEYING_MIDDLE, width, DASH_HEIGHT, 0.0);
        } else {
            markShape("mark carrier", left, KEYING_MIDDLE, width, DASH_HEIGHT, 0.0);
        }
        // Viewers show it beside the pointer.
        m_svg.tip(
            QStringLiteral("%1 %2 to %3 s, %4 units")
                .arg(QLatin1String(name), seconds(mark.begin_us), seconds(mark.end_us))
                .arg(static_cast<double>(mark.end_us - mark.begin_us) / mark.unit_us, 0, 'f', 2));
        m_svg.endElement();
        const auto complain = [&](double at, const char* words) {
            wrong(at, KEYING_TOP + 13.0);
            m_svg.write("wrongname", at, KEYING_TOP + 1.0, QLatin1String(words));
        };
        if (mark.tooSoon && m_drawn.touches(mark.begin_us, mark.begin_us + 1))
            complain(left, "pause too short");
        if (mark.tooShort)
            complain(left + width / 2.0, "dot too short");
        if (mark.tooLong)
            complain(left + width / 2.0, "dash too long");
    }

    void drawText()
    {
        for (const Character& character : m_seen.characters) {
            if (!isHere(character))
                continue;
            PathData bracket;
            bracket.moveTo(x(character.begin_us), BRACKET - 3.0);
            bracket.lineTo(x(character.begin_us), BRACKET);
            bracket.lineTo(x(character.end_us), BRACKET);
            bracket.lineTo(x(character.end_us), BRACKET - 3.0);
            m_svg.path("bracket", bracket.data());
            const std::int64_t middle_us = (character.begin_us + character.end_us) / 2;
            if (!m_drawn.touches(middle_us, middle_us + 1))
                continue; // the row that holds more of it has its text
            if (character.text.isEmpty())
                m_svg.write("unknown", x(middle_us), TEXT_BASE, character.elements);
            else
                m_svg.write("text", x(middle_us), TEXT_BASE, character.text);
        }
    }

    void drawTransmissions()
    {
        const auto flag = [this](std::int64_t time_us, const char* kind, const char* words,
                                 double side) {
            if (!m_drawn.touches(time_us, time_us + 1))
                return;
            m_svg.line("flag", x(time_us), 2.0, x(time_us), AXIS);
            PathData pennant;
            pennant.moveTo(x(time_us), 2.0);
            pennant.lineTo(x(time_us) + side * 9.0, 6.5);
            pennant.lineTo(x(time_us), 11.0);
            m_svg.path("pennant", pennant.data() + QLatin1Char('z'));
            m_svg.write(kind, x(time_us) + side * 12.0, FLAGS, QLatin1String(words));
        };
        for (const Transmission& transmission : m_seen.transmissions) {
            flag(transmission.begin_us, "flagname", "transmission", 1.0);
            if (transmission.end_us)
                flag(*transmission.end_us, "flagname end", "end of transmission", -1.0);
        }
    }

    void drawAxis()
    {
        m_svg.line("line", 0.0, AXIS, x(m_drawn.to_us), AXIS);
        const std::int64_t pace_us = m_row_us > 5e6 ? 1000000 : m_row_us > 1e6 ? 200000 : 20000;
        const int decimals = pace_us < 100000 ? 2 : pace_us < 1000000 ? 1 : 0;
        std::int64_t tick_us = (m_drawn.from_us + pace_us - 1) / pace_us * pace_us;
        for (; tick_us <= m_drawn.to_us; tick_us += pace_us) {
            m_svg.line("line", x(tick_us), AXIS, x(tick_us), AXIS + 4.0);
            m_svg.write("middle", x(tick_us), AXIS_LABELS,
                        QString::number(static_cast<double>(tick_us) / 1e6, 'f', decimals) +
                            QStringLiteral(" s"));
        }
    }

    const Seen& m_seen;
    QString m_title;
    std::vector<double> m_strengths;
    Svg m_svg;
    std::vector<Spectrogram> m_spectra; // by row
    double m_row_us = 1e6 * ROW_s;      // of time in each row
    int m_rows = 1;
    Stretch m_time;  // of the row that is drawn, to its right edge
    Stretch m_drawn; // of it, what lies in the stretch
    double m_lowest_Hz = 0.0, m_highest_Hz = 0.0;
    double m_strongest = 1.0;
    Shading m_shading;
};

} // namespace

QByteArray picture(const Seen& seen, const QString& title)
{
    return Drawing(seen, title).draw();
}

} // namespace inspect
