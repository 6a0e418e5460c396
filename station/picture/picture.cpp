// SPDX-License-Identifier: MIT
#include "station/picture/picture.h"

#include "station/picture/rows.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>

namespace inspect {

namespace {

// --- Where things lie, in pixels from the top of a row -----------------------------------------

constexpr double NARROW = 80.0; // for "no signal"

constexpr double STRENGTH_TOP = 132.0;
constexpr double STRENGTH_HEIGHT = 84.0;
constexpr double STRENGTH_BOTTOM = STRENGTH_TOP + STRENGTH_HEIGHT;
constexpr double KEYING_TOP = 226.0;
constexpr double KEYING_MIDDLE = 250.0;
constexpr double BRACKET = 266.0; // spans the marks of a character
constexpr double TEXT_BASE = 283.0;
constexpr RowShape SHAPE = {16.0, 110.0, 290.0, 322.0, 64.0, 10.0};

constexpr double DOT_HEIGHT = 8.0;
constexpr double DASH_HEIGHT = 14.0;
constexpr double CHARACTER_GAP_HEIGHT = 8.0;
constexpr double WORD_GAP_HEIGHT = 14.0;

// --- What is shown -----------------------------------------------------------------------------

constexpr double AROUND_TONE_Hz = 300.0;
constexpr double HEADROOM = 1.35;                  // strength over the strongest level
constexpr std::int64_t LONGEST_STEP_us = 20000;    // steps further apart belong to two signals
constexpr std::size_t LONGEST_AVERAGE_steps = 125; // half a second

// Blue, orange, green and purple that the colour-blind can distinguish.
const char MORSE_STYLE[] =
    ".unknown{font-family:'DejaVu Sans Mono',monospace;font-size:11px;fill:#a00;"
    "text-anchor:middle}"
    ".strength{fill:none;stroke:#222;stroke-width:1.2;stroke-linejoin:round}"
    ".level{fill:none;stroke:#0072b2;stroke-width:1.4;stroke-dasharray:8 3}"
    ".even{fill:none;stroke:#d55e00;stroke-width:1.4}"
    ".noise{fill:none;stroke:#666;stroke-width:1.4;stroke-dasharray:2 3}"
    ".mark.dot{fill:#0072b2}.mark.dash{fill:#d55e00}"
    ".mark.carrier{fill:#bbb;stroke:#333;stroke-dasharray:3 2}"
    ".gap{fill:none;stroke-width:1.6}.gap.inner{stroke:#999}.gap.character{stroke:#009e73}"
    ".gap.word{stroke:#aa4499}.open{stroke-dasharray:2 2}"
    ".wrong{fill:#a00}.wrongname{fill:#a00;font-size:9px;text-anchor:middle}";

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

struct Tones
{
    double lowest_Hz;
    double highest_Hz;
};

// Around the tone that was followed.
Tones tonesOf(const Seen& seen)
{
    if (seen.steps.empty())
        return {Rows::LOWEST_Hz, Rows::HIGHEST_Hz};
    const auto byTone = [](const auto& a, const auto& b) { return a.tone_Hz < b.tone_Hz; };
    const auto [lowest, highest] =
        std::minmax_element(seen.steps.begin(), seen.steps.end(), byTone);
    return {lowest->tone_Hz - AROUND_TONE_Hz, highest->tone_Hz + AROUND_TONE_Hz};
}

class Drawing
{
public:
    explicit Drawing(const Seen& seen)
        : Drawing(seen, tonesOf(seen))
    {
    }

    QByteArray draw(const QString& title)
    {
        return m_rows.draw(
            title, facts(), MORSE_STYLE, [this] { drawRow(); }, [this] { legend(); });
    }

private:
    Drawing(const Seen& seen, const Tones& tones)
        : m_seen(seen)
        , m_strengths(strengths(seen.steps))
        , m_rows(seen, seen.stretch, SHAPE, tones.lowest_Hz, tones.highest_Hz)
        , m_svg(m_rows.svg())
    {
        chooseStrengths();
    }

    // --- Scales --------------------------------------------------------------------------------

    double x(std::int64_t time_us) const { return m_rows.x(time_us); }
    const Stretch& drawn() const { return m_rows.drawn(); }

    double yOfStrength(double strength) const
    {
        return STRENGTH_BOTTOM - STRENGTH_HEIGHT * std::min(1.0, strength / m_strongest);
    }

    void chooseStrengths()
    {
        double strongest = 0.0;
        for (const demodulator::FollowedStep& step : m_seen.steps)
            strongest = std::max(strongest, std::sqrt(step.level.signal));
        m_strongest = strongest > 0.0 ? HEADROOM * strongest : 1.0;
    }

    // --- Above and below the rows --------------------------------------------------------------

    QString facts() const
    {
        QStringList facts;
        facts += QStringLiteral("%1 s to %2 s")
                     .arg(timeText(m_seen.stretch.from_us), timeText(m_seen.stretch.to_us));
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
        return facts.join(QStringLiteral(", "));
    }

    static double median(std::vector<double>& values)
    {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    void legend()
    {
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
    }

    // --- A row ---------------------------------------------------------------------------------

    void drawRow()
    {
        m_rows.drawSpectrum();
        m_svg.path(
            "tone",
            curve([this](std::size_t i) { return m_rows.yOfTone(m_seen.steps[i].tone_Hz); }, 25));
        drawStrength();
        drawKeying();
        drawText();
        m_rows.drawTransmissions(m_seen.transmissions);
        m_rows.drawAxis();
    }

    // A curve through the steps of this row, those of every `pace`th.
    template <typename Height>
    QString curve(const Height& height, std::size_t pace)
    {
        PathData data;
        const auto& steps = m_seen.steps;
        for (std::size_t i = firstStep(); i < steps.size() && steps[i].time_us < drawn().to_us;
             ++i) {
            const bool begins =
                data.isEmpty() || steps[i].time_us - steps[i - 1].time_us > LONGEST_STEP_us;
            const bool ends = i + 1 == steps.size() || steps[i + 1].time_us >= drawn().to_us ||
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
            std::lower_bound(m_seen.steps.begin(), m_seen.steps.end(), drawn().from_us,
                             [](const demodulator::FollowedStep& step, std::int64_t time_us) {
                                 return step.time_us < time_us;
                             });
        return static_cast<std::size_t>(first - m_seen.steps.begin());
    }

    void drawStrength()
    {
        const double width = x(drawn().to_us);
        m_svg.rectangle("frame", 0.0, STRENGTH_TOP, width, STRENGTH_HEIGHT);
        const std::size_t first = firstStep();
        if (first == m_seen.steps.size() || m_seen.steps[first].time_us >= drawn().to_us) {
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

    void drawKeying()
    {
        for (const Gap& gap : m_seen.gaps) {
            if (!m_rows.isHere(gap))
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
            if (m_rows.isHere(mark))
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
                .arg(QLatin1String(name), timeText(mark.begin_us), timeText(mark.end_us))
                .arg(static_cast<double>(mark.end_us - mark.begin_us) / mark.unit_us, 0, 'f', 2));
        m_svg.endElement();
        const auto complain = [&](double at, const char* words) {
            wrong(at, KEYING_TOP + 13.0);
            m_svg.write("wrongname", at, KEYING_TOP + 1.0, QLatin1String(words));
        };
        if (mark.tooSoon && drawn().touches(mark.begin_us, mark.begin_us + 1))
            complain(left, "pause too short");
        if (mark.tooShort)
            complain(left + width / 2.0, "dot too short");
        if (mark.tooLong)
            complain(left + width / 2.0, "dash too long");
    }

    void drawText()
    {
        for (const Character& character : m_seen.characters) {
            if (!m_rows.isHere(character))
                continue;
            m_rows.drawBracket(character.begin_us, character.end_us, BRACKET);
            const std::int64_t middle_us = (character.begin_us + character.end_us) / 2;
            if (!drawn().touches(middle_us, middle_us + 1))
                continue; // the row that holds more of it has its text
            if (character.text.isEmpty())
                m_svg.write("unknown", x(middle_us), TEXT_BASE, character.elements);
            else
                m_svg.write("text", x(middle_us), TEXT_BASE, character.text);
        }
    }

    const Seen& m_seen;
    std::vector<double> m_strengths;
    Rows m_rows;
    Svg& m_svg;
    double m_strongest = 1.0;
};

} // namespace

QByteArray picture(const Seen& seen, const QString& title)
{
    return Drawing(seen).draw(title);
}

} // namespace inspect
