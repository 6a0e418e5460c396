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

    std::string read(unsigned word) override
    {
        observe(word);
        if (word == ITA2_FIGURES || word == ITA2_LETTERS) {
            m_figures = word == ITA2_FIGURES;
            return std::string();
        }
        const std::uint8_t character = ita2Character(word, m_figures);
        if (word == ITA2_BLANK && unshiftsOnBlank())
            m_figures = false;
        return character != 0 ? std::string(1, static_cast<char>(character)) : std::string();
    }

private:
    bool unshiftsOnBlank() const
    {
        return m_unshift == Unshift::OnBlank || (m_unshift == Unshift::WhereSenderDoes &&
                                                 m_repeated >= 2 && 2 * m_repeated > m_notRepeated);
    }

    // Only a sender whose own machine unshifts repeats the figure shift after a blank.
    void observe(unsigned word)
    {
        if (m_afterBlankInFigures && word == ITA2_FIGURES)
            ++m_repeated;
        else if (m_afterBlankInFigures && word != ITA2_LETTERS && word != ITA2_BLANK)
            ++m_notRepeated;
        if (word == ITA2_FIGURES || word == ITA2_LETTERS)
            m_sentFigures = word == ITA2_FIGURES;
        m_afterBlankInFigures = word == ITA2_BLANK && m_sentFigures;
    }

    Unshift m_unshift;
    bool m_figures = false;
    bool m_sentFigures = false; // the last shift that was sent
    bool m_afterBlankInFigures = false;
    int m_repeated = 0;
    int m_notRepeated = 0;
};

class AsciiReader : public TextReader
{
public:
    explicit AsciiReader(int dataBits)
        : m_isKnown(dataBits < 8)
    {
    }

    std::string read(unsigned word) override
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
