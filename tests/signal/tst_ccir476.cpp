// SPDX-License-Identifier: MIT
#include "signal/teleprinter/ccir476.h"

#include "signal/teleprinter/ita2.h"
#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <bitset>
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
};

QTEST_GUILESS_MAIN(tst_Ccir476)
#include "tst_ccir476.moc"
