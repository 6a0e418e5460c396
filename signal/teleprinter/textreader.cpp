// SPDX-License-Identifier: MIT
#include "signal/teleprinter/textreader.h"

#include "signal/teleprinter/ita2.h"

#include <bitset>

namespace teleprinter {

namespace {

class Ita2Reader : public TextReader
{
public:
    explicit Ita2Reader(Unshift unshift)
        : m_unshift(unshift)
    {
    }

    std::string read(unsigned word, bool isDoubtful) override
    {
        observe(word);
        m_isDoubtful = m_isDoubtful || isDoubtful;
        if (word == ITA2_FIGURES || word == ITA2_LETTERS) {
            m_figures = word == ITA2_FIGURES;
            m_isDoubtful = isDoubtful;
            return std::string();
        }
        const std::uint8_t character = ita2Character(word, m_figures);
        if (word == ITA2_BLANK && unshiftsOnBlank()) {
            m_figures = false;
            m_isDoubtful = false;
        }
        return character != 0 ? std::string(1, static_cast<char>(character)) : std::string();
    }

private:
    bool unshiftsOnBlank() const
    {
        if (m_unshift != Unshift::WhereSenderDoes)
            return m_unshift == Unshift::OnBlank;
        const bool isRepeating = m_repeated >= 2 && m_repeated > m_reliedOn;
        return isRepeating || (m_isDoubtful && m_reliedOn < 2);
    }

    // Only a sender whose own machine unshifts repeats the figure shift after a blank; another
    // sends groups of digits one after the other.
    void observe(unsigned word)
    {
        const bool isShift = word == ITA2_FIGURES || word == ITA2_LETTERS;
        if (word == ITA2_BLANK || isShift) {
            if (m_group == Group::Digits && m_groupLength >= LEAST_GROUP)
                ++m_reliedOn;
            if (m_groupLength == 0 && m_group == Group::Digits && word == ITA2_FIGURES)
                ++m_repeated;
            if (isShift)
                m_sentFigures = word == ITA2_FIGURES;
            m_group = word == ITA2_BLANK && m_sentFigures ? Group::Digits : Group::Other;
            m_groupLength = 0;
            return;
        }
        const std::uint8_t figure = ita2Character(word, true);
        if (figure < '0' || figure > '9')
            m_group = Group::Other;
        ++m_groupLength;
    }

    static constexpr int LEAST_GROUP = 3; // digits: fewer are also misread letters

    // What follows a blank in figures, without a shift: so far nothing but digits, or anything.
    enum class Group { Other, Digits };

    Unshift m_unshift;
    bool m_figures = false;
    bool m_isDoubtful = false;  // whether there was no other shift since the last that was read
    bool m_sentFigures = false; // the last shift that was read
    Group m_group = Group::Other;
    int m_groupLength = 0;
    int m_repeated = 0;
    int m_reliedOn = 0;
};

class AsciiReader : public TextReader
{
public:
    explicit AsciiReader(int dataBits)
        : m_isKnown(dataBits < 8)
    {
    }

    std::string read(unsigned word, bool /*isDoubtful*/) override
    {
        if (m_isKnown)
            return std::string(1, characterOf(word));
        m_waiting += static_cast<char>(word);
        if (m_waiting.size() < DECIDED_AFTER)
            return std::string();
        return finish();
    }

    std::string finish() override
    {
        // The eighth element is none of the character's if it follows from the other seven.
        std::size_t set = 0;
        std::size_t odd = 0;
        for (const char c : m_waiting) {
            const std::bitset<8> bits(static_cast<unsigned char>(c));
            set += bits[7] ? 1 : 0;
            odd += bits.count() % 2;
        }
        const std::size_t all = m_waiting.size();
        const auto isRule = [all](std::size_t count) {
            return count * EXCEPTIONS <= all || (all - count) * EXCEPTIONS <= all;
        };
        m_isKnown = true;
        m_isEight = !isRule(set) && !isRule(odd);
        std::string text;
        for (const char c : m_waiting)
            text += characterOf(static_cast<unsigned char>(c));
        m_waiting.clear();
        return text;
    }

private:
    // Characters, one to three seconds: hardly any text of so many follows a rule by chance.
    static constexpr std::size_t DECIDED_AFTER = 24;
    static constexpr std::size_t EXCEPTIONS = 8; // one in so many may be misread

    char characterOf(unsigned word) const
    {
        return static_cast<char>(m_isEight ? word & 0xFFU : word & 0x7FU);
    }

    bool m_isKnown;
    bool m_isEight = false;
    std::string m_waiting;
};

} // namespace

TextReader::~TextReader() = default;

std::string TextReader::finish()
{
    return std::string();
}

std::unique_ptr<TextReader> makeIta2Reader(Unshift unshift)
{
    return std::make_unique<Ita2Reader>(unshift);
}

std::unique_ptr<TextReader> makeAsciiReader(int dataBits)
{
    return std::make_unique<AsciiReader>(dataBits);
}

} // namespace teleprinter
