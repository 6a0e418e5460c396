// SPDX-License-Identifier: MIT
#include "signal/teleprinter/ita2.h"

#include "support/teleprinterkeyer.h"

#include <QtTest>

using namespace testsupport;

namespace {

// The data elements of the characters that are sent for a text, read back with the first as bit 0.
std::vector<unsigned> wordsOf(const std::string& text)
{
    Machine machine;
    machine.baud = 1.0;
    machine.stop_bits = 1.0;
    machine.idle_s = 1.0;
    const std::vector<Piece> elements = teleprinterElements(text, machine, "ita2");
    std::vector<unsigned> words;
    for (std::size_t at = 1; at + 7 < elements.size() + 1; at += 7) {
        unsigned word = 0;
        for (unsigned bit = 0; bit < 5; ++bit)
            word |= (elements[at + 1 + bit].mark ? 1U : 0U) << bit;
        words.push_back(word);
    }
    words.resize(words.empty() ? 0 : (elements.size() - 2) / 7);
    return words;
}

} // namespace

class tst_Ita2 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The sender's table is written in the order of the recommendation's combinations, the
    // receiver's in that of the elements.
    void letterIsReadAsItIsSent()
    {
        const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ \r\n";
        const std::vector<unsigned> words = wordsOf(letters);
        QCOMPARE(words.size(), letters.size() + 1); // the letter shift before the first
        QCOMPARE(words[0], teleprinter::ITA2_LETTERS);
        for (std::size_t i = 0; i < letters.size(); ++i)
            QCOMPARE(char(teleprinter::ita2Character(words[i + 1], false)), letters[i]);
    }

    void figureIsReadAsItIsSent()
    {
        const std::string figures = "-?:3 8().,9014'57=2/6+";
        const std::vector<unsigned> words = wordsOf(figures);
        std::string read;
        for (const unsigned word : words) {
            if (const std::uint8_t character = teleprinter::ita2Character(word, true))
                read += static_cast<char>(character);
        }
        QCOMPARE(QString::fromStdString(read), QString::fromStdString(figures));
    }

    // A second source, in the order of the combinations: the table of the project piTelex, which
    // drives machines (github.com/fablab-wue/piTelex, wiki page P_BMC, 2023). '~': no character, or
    // one for national use.
    void tableIsThatOfTheSecondSource()
    {
        const std::string letters = "~E\nA SIU\rDRJNFCKTZLWHYPQOBG~MXV~";
        const std::string figures = "~3\n- '87\r\x05"
                                    "4\a,~:(5+)2~6019?~~./=~";
        QCOMPARE(letters.size(), std::size_t(32));
        QCOMPARE(figures.size(), std::size_t(32));
        for (unsigned word = 0; word < 32; ++word) {
            if (letters[word] != '~')
                QCOMPARE(char(teleprinter::ita2Character(word, false)), letters[word]);
            if (figures[word] != '~')
                QCOMPARE(char(teleprinter::ita2Character(word, true)), figures[word]);
        }
        QCOMPARE(teleprinter::ITA2_FIGURES, 27U);
        QCOMPARE(teleprinter::ITA2_LETTERS, 31U);
    }

    void shiftIsNoCharacter()
    {
        for (const unsigned word : {0U, teleprinter::ITA2_FIGURES, teleprinter::ITA2_LETTERS}) {
            QCOMPARE(teleprinter::ita2Character(word, false), std::uint8_t(0));
            QCOMPARE(teleprinter::ita2Character(word, true), std::uint8_t(0));
        }
    }

    void freeFiguresAreThoseOfTheUnitedStates()
    {
        QCOMPARE(char(teleprinter::ita2Character(0x0D, true)), '!');
        QCOMPARE(char(teleprinter::ita2Character(0x1A, true)), '&');
        QCOMPARE(char(teleprinter::ita2Character(0x14, true)), '#');
        QCOMPARE(teleprinter::ita2Character(0x09, true), std::uint8_t(0x05));
        QCOMPARE(teleprinter::ita2Character(0x0B, true), std::uint8_t(0x07));
    }
};

QTEST_GUILESS_MAIN(tst_Ita2)
#include "tst_ita2.moc"
