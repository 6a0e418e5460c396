// SPDX-License-Identifier: MIT
#include "station/picture/teleprinterpicture.h"

#include "signal/numbers.h"
#include "station/picture/rows.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <complex>

namespace inspect {

namespace {

using demodulator::PI;
using teleprinter::SeenWord;

// --- Where things lie, in pixels from the top of a row -----------------------------------------

constexpr double STRENGTH_TOP = 132.0;
constexpr double STRENGTH_HEIGHT = 84.0;
constexpr double STRENGTH_MIDDLE = STRENGTH_TOP + STRENGTH_HEIGHT / 2.0;
constexpr double MARK = 232.0;
constexpr double SPACE = 252.0;
constexpr double BRACKET = 266.0; // spans the elements of a word
constexpr double TEXT_BASE = 283.0;
constexpr double NARROW = 80.0; // for "no teleprinter"

constexpr RowShape shape(double longest_s)
{
    return {16.0, 110.0, 290.0, 322.0, 40.0, longest_s};
}

// --- What is shown -----------------------------------------------------------------------------

// So that the characters of a row do not touch.
constexpr double LONGEST_ROW_s = 10.0;
constexpr double ELEMENTS_IN_A_ROW = 1000.0;
constexpr double LEAST_ROW = 0.05; // the last, of the others
constexpr double AROUND_TONES_Hz = 300.0;
constexpr double HEADROOM = 1.1; // strength over the strongest

// Colours that the colour-blind can distinguish.
const char TELEPRINTER_STYLE[] =
    ".shift{font-size:13px;fill:#666;text-anchor:middle}"
    ".strength{stroke:none}.strength.mark{fill:#0072b2}.strength.space{fill:#d55e00}"
    ".element{fill:none;stroke-width:3}.element.mark{stroke:#0072b2}.element.space{stroke:#d55e00}"
    ".element.start{stroke:#aa4499}.element.stop{stroke:#009e73}.element.again{stroke:#bbb}";

// The kinds of elements that are drawn in colours of their own.
enum class Role { Mark, Space, Start, Stop, Again };
constexpr const char* ROLES[] = {"element mark", "element space", "element start", "element stop",
                                 "element again"};

Role roleOf(const SeenWord& word, int element)
{
    if (word.kind == SeenWord::Kind::Repeat)
        return Role::Again;
    if (word.isStartStop && element == 0)
        return Role::Start;
    if (word.isStartStop && element == word.count - 1)
        return Role::Stop;
    return (word.elements >> element & 1U) != 0 ? Role::Mark : Role::Space;
}

std::int64_t beginOf(const SeenWord& word, int element)
{
    return word.begin_us + std::llround(element * word.element_us);
}

// Amplitude of a tone from one time to another.
double strengthOf(const Sound& sound, double tone_Hz, std::int64_t from_us, std::int64_t to_us)
{
    const auto sample = [&](std::int64_t time_us) {
        return std::clamp<std::int64_t>(
            std::llround(static_cast<double>(time_us) / 1e6 * sound.rate_Hz) - sound.firstSample, 0,
            static_cast<std::int64_t>(sound.samples.size()));
    };
    const std::int64_t first = sample(from_us);
    const std::int64_t last = sample(to_us);
    const std::complex<double> turn = std::polar(1.0, -2.0 * PI * tone_Hz / sound.rate_Hz);
    std::complex<double> carrier = 1.0;
    std::complex<double> sum = 0.0;
    for (std::int64_t n = first; n < last; ++n) {
        sum += static_cast<double>(sound.samples[static_cast<std::size_t>(n)]) * carrier;
        carrier *= turn;
    }
    return last > first ? 2.0 * std::abs(sum) / static_cast<double>(last - first) : 0.0;
}

// Of the words in the stretch.
struct Extent
{
    double lowest_Hz = Rows::LOWEST_Hz;
    double highest_Hz = Rows::HIGHEST_Hz;
    double row_s = LONGEST_ROW_s;
};

Extent extentOf(const SeenTeleprinter& seen)
{
    Extent extent;
    if (seen.words.empty())
        return extent;
    const SeenWord& first = seen.words.front().seen;
    double shortest_us = first.element_us;
    extent.lowest_Hz = extent.highest_Hz = first.mark_Hz;
    for (const TeleprinterWord& word : seen.words) {
        extent.lowest_Hz = std::min({extent.lowest_Hz, word.seen.mark_Hz, word.seen.space_Hz});
        extent.highest_Hz = std::max({extent.highest_Hz, word.seen.mark_Hz, word.seen.space_Hz});
        shortest_us = std::min(shortest_us, word.seen.element_us);
    }
    extent.lowest_Hz -= AROUND_TONES_Hz;
    extent.highest_Hz += AROUND_TONES_Hz;
    extent.row_s = std::min(LONGEST_ROW_s, ELEMENTS_IN_A_ROW * shortest_us * 1e-6);
    // What little would be left for a last row goes into the others.
    const double stretch_s = static_cast<double>(seen.stretch.to_us - seen.stretch.from_us) * 1e-6;
    const double rows = std::ceil(stretch_s / extent.row_s - LEAST_ROW);
    extent.row_s = std::max(extent.row_s, stretch_s / std::max(1.0, rows));
    return extent;
}

class Drawing
{
public:
    explicit Drawing(const SeenTeleprinter& seen)
        : Drawing(seen, extentOf(seen))
    {
    }

    QByteArray draw(const QString& title)
    {
        return m_rows.draw(
            title, facts(), TELEPRINTER_STYLE, [this] { drawRow(); }, [this] { legend(); });
    }

private:
    struct Element
    {
        std::int64_t begin_us;
        std::int64_t end_us;
        double mark; // strength of either tone
        double space;
    };

    Drawing(const SeenTeleprinter& seen, const Extent& extent)
        : m_seen(seen)
        , m_rows(seen, seen.stretch, shape(extent.row_s), extent.lowest_Hz, extent.highest_Hz)
        , m_svg(m_rows.svg())
    {
        for (const TeleprinterWord& word : seen.words) {
            for (int i = 0; i < word.seen.count; ++i) {
                const std::int64_t begin_us = beginOf(word.seen, i);
                const std::int64_t end_us = beginOf(word.seen, i + 1);
                m_elements.push_back({begin_us, end_us,
                                      strengthOf(seen, word.seen.mark_Hz, begin_us, end_us),
                                      strengthOf(seen, word.seen.space_Hz, begin_us, end_us)});
                m_strongest = std::max({m_strongest, HEADROOM * m_elements.back().mark,
                                        HEADROOM * m_elements.back().space});
            }
        }
    }

    QString facts() const
    {
        QStringList facts = {
            QStringLiteral("%1 s to %2 s")
                .arg(timeText(m_seen.stretch.from_us), timeText(m_seen.stretch.to_us))};
        if (!m_seen.line || m_seen.words.empty()) {
            facts += QStringLiteral("no teleprinter was found in this stretch");
        } else {
            const SeenWord& word = m_seen.words.back().seen;
            facts += QStringLiteral("%1 Bd, mark %2 Hz, space %3 Hz")
                         .arg(m_seen.line->kind.baud)
                         .arg(word.mark_Hz, 0, 'f', 0)
                         .arg(word.space_Hz, 0, 'f', 0);
        }
        return facts.join(QStringLiteral(", "));
    }

    void legend()
    {
        constexpr double MIDDLE = 14.0;
        double at = 0.0;
        const auto name = [&](const char* words, double room) {
            m_svg.write("name", at + 34.0, MIDDLE + 4.0, QLatin1String(words));
            at += room;
        };
        const auto element = [&](Role role, const char* words, double room) {
            m_svg.line(ROLES[static_cast<int>(role)], at, MIDDLE, at + 26.0, MIDDLE);
            name(words, room);
        };
        element(Role::Start, "start", 90.0);
        element(Role::Mark, "mark", 90.0);
        element(Role::Space, "space", 100.0);
        element(Role::Stop, "stop", 90.0);
        element(Role::Again, "repeated", 120.0);
        m_svg.write("shift", at + 13.0, MIDDLE + 4.0, QStringLiteral("\u2191\u2193"));
        name("shift to figures, to letters", 220.0);
        name("strength of mark (up) and of space (down) in each element", 0.0);
    }

    void drawRow()
    {
        m_rows.drawSpectrum();
        drawTones();
        drawStrengths();
        drawElements();
        drawTexts();
        m_rows.drawTransmissions(m_seen.transmissions);
        m_rows.drawAxis();
    }

    void drawTones()
    {
        PathData tones;
        for (const TeleprinterWord& word : m_seen.words) {
            if (!m_rows.isHere(word.seen))
                continue;
            for (const double tone_Hz : {word.seen.mark_Hz, word.seen.space_Hz}) {
                const double y = m_rows.yOfTone(tone_Hz);
                tones.moveTo(m_rows.x(word.seen.begin_us), y);
                tones.lineTo(m_rows.x(word.seen.end_us), y);
            }
        }
        m_svg.path("tone", tones.data());
    }

    void drawStrengths()
    {
        const double width = m_rows.x(m_rows.drawn().to_us);
        m_svg.rectangle("frame", 0.0, STRENGTH_TOP, width, STRENGTH_HEIGHT);
        PathData marks;
        PathData spaces;
        const auto bar = [this](PathData& path, const Element& element, double height) {
            const double left = m_rows.x(element.begin_us);
            const double right = m_rows.x(element.end_us);
            path.moveTo(left, STRENGTH_MIDDLE);
            path.lineTo(left, STRENGTH_MIDDLE + height);
            path.lineTo(right, STRENGTH_MIDDLE + height);
            path.lineTo(right, STRENGTH_MIDDLE);
        };
        for (const Element& element : m_elements) {
            if (!m_rows.isHere(element))
                continue;
            const double scale = STRENGTH_HEIGHT / 2.0 / m_strongest;
            bar(marks, element, -scale * element.mark);
            bar(spaces, element, scale * element.space);
        }
        if (marks.isEmpty()) {
            m_svg.write("nothing", std::max(width, NARROW) / 2.0, STRENGTH_MIDDLE + 5.0,
                        QStringLiteral("no teleprinter"));
            return;
        }
        m_svg.path("strength mark", marks.data());
        m_svg.path("strength space", spaces.data());
        m_svg.line("line", 0.0, STRENGTH_MIDDLE, width, STRENGTH_MIDDLE);
    }

    void drawElements()
    {
        for (const Role role : {Role::Mark, Role::Space, Role::Start, Role::Stop, Role::Again}) {
            PathData lines;
            for (const TeleprinterWord& word : m_seen.words) {
                if (!m_rows.isHere(word.seen))
                    continue;
                for (int i = 0; i < word.seen.count; ++i) {
                    if (roleOf(word.seen, i) != role)
                        continue;
                    const double y = (word.seen.elements >> i & 1U) != 0 ? MARK : SPACE;
                    lines.moveTo(m_rows.x(beginOf(word.seen, i)), y);
                    lines.lineTo(m_rows.x(beginOf(word.seen, i + 1)), y);
                }
            }
            m_svg.path(ROLES[static_cast<int>(role)], lines.data());
        }
    }

    void drawTexts()
    {
        for (const TeleprinterWord& word : m_seen.words) {
            const SeenWord& seen = word.seen;
            if (!m_rows.isHere(seen) || seen.kind == SeenWord::Kind::Repeat)
                continue;
            m_rows.drawBracket(seen.begin_us, seen.end_us, BRACKET);
            const std::int64_t middle_us = (seen.begin_us + seen.end_us) / 2;
            if (!m_rows.drawn().touches(middle_us, middle_us + 1))
                continue; // the row that holds more of it has its text
            const double x = m_rows.x(middle_us);
            if (seen.kind == SeenWord::Kind::Letters)
                m_svg.write("shift", x, TEXT_BASE, QStringLiteral("\u2193"));
            else if (seen.kind == SeenWord::Kind::Figures)
                m_svg.write("shift", x, TEXT_BASE, QStringLiteral("\u2191"));
            else if (!word.text.isEmpty())
                m_svg.write("text", x, TEXT_BASE, word.text);
        }
    }

    const SeenTeleprinter& m_seen;
    std::vector<Element> m_elements;
    Rows m_rows;
    Svg& m_svg;
    double m_strongest = 1e-9;
};

} // namespace

QByteArray teleprinterPicture(const SeenTeleprinter& seen, const QString& title)
{
    return Drawing(seen).draw(title);
}

} // namespace inspect
