// SPDX-License-Identifier: MIT
#include "signal/teleprinter/textreader.h"

#include "signal/teleprinter/ita2.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <utility>

namespace teleprinter {

namespace {

// How much likelier a combination is in a word of letters than in a group of figures: a logarithm.
// Letters are weighed as those of English, mixed with evenly drawn ones, since other languages and
// callsigns are sent too; figures are mostly digits, signs stand behind them, and the rest is rare
// or has no use outside one country.
double letterOverFigure(unsigned word, bool isFirst, const TextParameters& own)
{
    // Of English prose, rounded.
    constexpr double PER_MILLE[26] = {75, 15, 28, 38, 85, 22, 20, 45, 65, 4,  12, 40, 25,
                                      65, 70, 22, 5,  60, 60, 85, 28, 10, 22, 5,  20, 5};
    const std::uint8_t letter = ita2Character(word, false);
    const std::uint8_t figure = ita2Character(word, true);
    if (letter < 'A' || letter > 'Z')
        return 0.0;
    const std::string common = ".,-/:";
    const std::string some = "()?+=";
    const auto sign = static_cast<char>(figure);
    const double ofFigures = figure >= '0' && figure <= '9'           ? own.digit
                             : sign == '-'                            ? own.minus
                             : isFirst                                ? own.signFirst
                             : common.find(sign) != std::string::npos ? own.commonSign
                             : some.find(sign) != std::string::npos   ? own.someSign
                             : sign == '\''                           ? own.apostrophe
                                                                      : own.otherSign;
    const double ofLetters =
        (1.0 - own.evenLetters) * PER_MILLE[letter - 'A'] + own.evenLetters * 1000.0 / 26.0;
    return std::clamp(std::log(ofLetters / ofFigures), -own.mostOfOne, own.mostOfOne);
}

// Whether a blank brings back the letters is seen from what follows blanks. While that is not sure,
// a word waits until it shows what it is.
class Ita2Reader : public TextReader
{
public:
    Ita2Reader(Unshift unshift, const TextParameters& parameters)
        : m_own(parameters)
        , m_unshift(unshift)
        , m_unshifts(parameters.unshiftsAtFirst)
    {
    }

    std::string read(unsigned word, bool isDoubtful) override
    {
        const bool isShift = word == ITA2_FIGURES || word == ITA2_LETTERS;
        if (isShift || word == ITA2_BLANK || ita2Character(word, false) == '\r' ||
            ita2Character(word, false) == '\n') {
            std::string text = finish();
            if (isShift)
                shift(word == ITA2_FIGURES, isDoubtful);
            else
                text += textOf(word);
            m_isDoubtful = m_isDoubtful || isDoubtful;
            if (word == ITA2_BLANK)
                blank();
            m_isAfterBlank = word == ITA2_BLANK;
            return text;
        }
        m_isDoubtful = m_isDoubtful || isDoubtful;
        m_isAfterBlank = false;
        if (m_isGroup)
            m_group += letterOverFigure(word, std::exchange(m_isFirst, false), m_own);
        if (!m_isOpen)
            return textOf(word);
        m_waiting += static_cast<char>(word);
        const double letters = m_group + oddsNow();
        if (std::fabs(letters) < m_own.sure && m_waiting.size() < m_own.mostWaiting)
            return std::string();
        return settle();
    }

    std::string finish() override
    {
        std::string text = settle();
        if (m_isGroup) {
            // Where a shift may have been missed, letters say little of the sender.
            const double weight = m_isDoubtful && m_group > 0.0 ? m_own.doubtfulWeight : 1.0;
            learn(weight * std::clamp(m_group, -m_own.mostLearnt, m_own.mostLearnt));
        }
        m_isGroup = false;
        m_group = 0.0;
        return text;
    }

private:
    double oddsNow() const { return m_unshifts + (m_isDoubtful ? m_own.missed : 0.0); }
    void learn(double odds)
    {
        m_unshifts = std::clamp(m_unshifts + odds, -m_own.mostOdds, m_own.mostOdds);
    }

    std::string textOf(unsigned word) const
    {
        const std::uint8_t character = ita2Character(word, m_figures);
        return character != 0 ? std::string(1, static_cast<char>(character)) : std::string();
    }

    void shift(bool figures, bool isDoubtful)
    {
        // Only a sender whose own machine unshifts repeats the figure shift after a blank.
        if (figures && m_sentFigures && m_isAfterBlank)
            learn(m_own.repeated);
        m_figures = m_sentFigures = figures;
        m_isDoubtful = isDoubtful;
        m_isOpen = false;
    }

    void blank()
    {
        m_isGroup = m_isFirst = m_sentFigures;
        m_isOpen = false;
        if (m_unshift == Unshift::OnBlank) {
            m_figures = false;
        } else if (m_unshift == Unshift::WhereSenderDoes && m_sentFigures) {
            m_isOpen = std::fabs(oddsNow()) < m_own.sure;
            m_figures = oddsNow() < m_own.sure;
        }
    }

    // What waits is put out as what it is more likely to be.
    std::string settle()
    {
        if (!m_isOpen || m_waiting.empty())
            return std::string();
        m_isOpen = false;
        m_figures = m_group + oddsNow() <= 0.0;
        std::string text;
        for (const char word : m_waiting)
            text += textOf(static_cast<unsigned char>(word));
        m_waiting.clear();
        return text;
    }

    TextParameters m_own;
    Unshift m_unshift;
    bool m_figures = false;
    bool m_sentFigures = false;  // the last shift that was read
    bool m_isDoubtful = false;   // whether there was no other shift since the last that was read
    bool m_isAfterBlank = false; // the last word
    bool m_isGroup = false;      // what follows a blank without a shift, after figures
    bool m_isFirst = false;      // its first word comes next
    bool m_isOpen = false;       // it is not known yet what the group is
    double m_group = 0.0;        // odds that its words are letters
    double m_unshifts;           // odds that the sender does so
    std::string m_waiting;
};

class AsciiReader : public TextReader
{
public:
    AsciiReader(int dataBits, std::optional<Parity> parity, const TextParameters& parameters)
        : m_own(parameters)
        , m_isKnown(parity || dataBits < 8)
        , m_isEight(dataBits > (!parity || *parity == Parity::None ? 7 : 8))
    {
    }

    std::string read(unsigned word, bool /*isDoubtful*/) override
    {
        if (m_isKnown)
            return std::string(1, characterOf(word));
        m_waiting += static_cast<char>(word);
        if (m_waiting.size() < m_own.parityFrom)
            return std::string();
        return finish();
    }

    std::string finish() override
    {
        // The eighth element is none of the character's if it follows from the other seven. One
        // that is never mark may stay: it changes nothing.
        std::size_t set = 0;
        std::size_t odd = 0;
        for (const char c : m_waiting) {
            const std::bitset<8> bits(static_cast<unsigned char>(c));
            set += bits[7] ? 1 : 0;
            odd += bits.count() % 2;
        }
        const std::size_t all = m_waiting.size();
        const auto hardlyEver = [all, this](std::size_t count) {
            return count * m_own.parityExceptions <= all;
        };
        if (!std::exchange(m_isKnown, true))
            m_isEight = !hardlyEver(all - set) && !hardlyEver(odd) && !hardlyEver(all - odd);
        std::string text;
        for (const char c : m_waiting)
            text += characterOf(static_cast<unsigned char>(c));
        m_waiting.clear();
        return text;
    }

private:
    char characterOf(unsigned word) const
    {
        return static_cast<char>(m_isEight ? word & 0xFFU : word & 0x7FU);
    }

    TextParameters m_own;
    bool m_isKnown;
    bool m_isEight;
    std::string m_waiting; // eight elements each
};

} // namespace

TextReader::~TextReader() = default;

std::string TextReader::finish()
{
    return std::string();
}

std::unique_ptr<TextReader> makeIta2Reader(Unshift unshift, const TextParameters& parameters)
{
    return std::make_unique<Ita2Reader>(unshift, parameters);
}

std::unique_ptr<TextReader> makeAsciiReader(int dataBits, std::optional<Parity> parity,
                                            const TextParameters& parameters)
{
    return std::make_unique<AsciiReader>(dataBits, parity, parameters);
}

} // namespace teleprinter
