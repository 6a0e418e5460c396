// SPDX-License-Identifier: MIT
#include "signal/teleprinter/ccir476.h"

#include "signal/teleprinter/ita2.h"
#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <bitset>
#include <map>
#include <set>

using namespace testsupport;
using namespace teleprinter;

class tst_Ccir476 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWordHasFourMarksAndIsUnlikeTheOthers()
    {
        std::set<unsigned> words;
        for (const unsigned elements : ccir476Elements()) {
            QCOMPARE(std::bitset<7>(elements).count(), std::size_t(4));
            words.insert(elements);
        }
        QCOMPARE(words.size(), std::size_t(CCIR476_WORDS));
    }

    // The sender's table is written as the recommendation has it, element by element.
    void combinationIsThatOfTheSameCharacterOfIta2()
    {
        const std::string text = "ABCDEFGHIJKLMNOPQRSTUVWXYZ\r\n 0123456789-?:().,'=/+";
        Machine machine;
        machine.code = TeleprinterCode::SitorB;
        machine.baud = 1.0;
        const std::vector<Piece> elements = teleprinterElements(text, machine, "ccir476");
        std::string read;
        bool figures = false;
        for (std::size_t word = 0; 7 * word < elements.size(); word += 2) { // the direct ones
            unsigned sent = 0;
            for (std::size_t bit = 0; bit < 7; ++bit)
                sent |= (elements[7 * word + bit].mark ? 1U : 0U) << bit;
            const auto& table = ccir476Elements();
            const auto found = std::find(table.begin(), table.end(), sent);
            QVERIFY(found != table.end());
            const auto combination = static_cast<unsigned>(found - table.begin());
            if (combination == ITA2_FIGURES || combination == ITA2_LETTERS)
                figures = combination == ITA2_FIGURES;
            else if (combination < 32)
                read += static_cast<char>(ita2Character(combination, figures));
        }
        QCOMPARE(QString::fromStdString(read), QString::fromStdString(text));
    }

    // A second source: the table of Wikipedia's article "CCIR 476" (2025), which is that of the
    // ARRL Handbook 2013. It has all words of four ones in ascending order, the element sent first
    // as the lowest bit.
    void tableIsThatOfTheSecondSource()
    {
        const std::vector<std::string> ascending = {
            "alpha", "J", "F", "C",      "K", "W",    "Y",  "P", "Q", "beta", "G", "figures",
            "M",     "X", "V", "A",      "S", "I",    "U",  "D", "R", "E",    "N", "letters",
            " ",     "Z", "L", "repeat", "H", "none", "\n", "O", "B", "T",    "\r"};
        std::map<unsigned, std::string> byElements;
        for (unsigned word = 0; word < CCIR476_WORDS; ++word) {
            const std::string name = word == PHASING_1      ? "alpha"
                                     : word == PHASING_2    ? "repeat"
                                     : word == SIGNAL_BETA  ? "beta"
                                     : word == ITA2_LETTERS ? "letters"
                                     : word == ITA2_FIGURES ? "figures"
                                     : word == 0            ? "none"
                                                 : std::string(1, char(ita2Character(word, false)));
            byElements[ccir476Elements()[word]] = name;
        }
        QCOMPARE(byElements.size(), ascending.size());
        std::size_t at = 0;
        for (const auto& [elements, name] : byElements)
            QCOMPARE(QString::fromStdString(name), QString::fromStdString(ascending[at++]));
    }
};

QTEST_GUILESS_MAIN(tst_Ccir476)
#include "tst_ccir476.moc"
