// SPDX-License-Identifier: MIT
#include "signal/teleprinter/textreader.h"

#include "signal/teleprinter/ita2.h"

#include <QtTest>
#include <bitset>

using namespace teleprinter;

namespace {

constexpr unsigned Q = 0x17; // 1 in figure shift
constexpr unsigned BLANK = ITA2_BLANK;
constexpr unsigned FIGURES = ITA2_FIGURES;
constexpr unsigned LETTERS = ITA2_LETTERS;

QString readAll(TextReader& reader, const std::vector<unsigned>& words)
{
    std::string text;
    for (const unsigned word : words)
        text += reader.read(word);
    return QString::fromLatin1(QByteArray::fromStdString(text + reader.finish()));
}

unsigned withParity(char c, bool odd)
{
    const std::bitset<8> bits(static_cast<unsigned char>(c));
    return static_cast<unsigned char>(c) | ((bits.count() % 2 == 1) != odd ? 0x80U : 0U);
}

} // namespace

class tst_TextReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shiftHoldsUntilTheOther()
    {
        const auto reader = makeIta2Reader(Unshift::Never);
        QCOMPARE(readAll(*reader, {Q, FIGURES, Q, BLANK, Q, LETTERS, Q}), QString("Q1 1Q"));
    }

    void blankBringsTheLettersWhereItIsAskedFor()
    {
        const auto reader = makeIta2Reader(Unshift::OnBlank);
        QCOMPARE(readAll(*reader, {FIGURES, Q, BLANK, Q}), QString("1 Q"));
    }

    void blankBringsTheLettersOnceTheSenderRepeatsItsShifts()
    {
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        QCOMPARE(readAll(*reader, {FIGURES, Q, BLANK, FIGURES, Q, BLANK, FIGURES, Q, BLANK, Q}),
                 QString("1 1 1 Q"));
    }

    void blankLeavesTheFiguresOfASenderWhoRelyOnIt()
    {
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        QCOMPARE(readAll(*reader, {FIGURES, Q, BLANK, Q, BLANK, Q, BLANK, Q}), QString("1 1 1 1"));
    }

    void blankBringsTheLettersWhereALetterShiftMayHaveBeenMissed()
    {
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        std::string text = reader->read(FIGURES);
        text += reader->read(Q);
        text += reader->read(Q, true);
        text += reader->read(BLANK);
        text += reader->read(Q);
        QCOMPARE(QString::fromStdString(text), QString("11 Q"));
    }

    void groupsOfDigitsGoOnAfterABlankAlsoWhereSomethingWasMissed()
    {
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        std::string text = reader->read(FIGURES);
        for (int group = 0; group < 4; ++group) {
            for (int digit = 0; digit < 3; ++digit)
                text += reader->read(Q);
            text += reader->read(BLANK);
        }
        text += reader->read(Q, true);
        text += reader->read(BLANK);
        text += reader->read(Q);
        QCOMPARE(QString::fromStdString(text), QString("111 111 111 111 1 1"));
    }

    void parityIsLeftOut_data()
    {
        QTest::addColumn<bool>("odd");
        QTest::newRow("even") << false;
        QTest::newRow("odd") << true;
    }
    void parityIsLeftOut()
    {
        QFETCH(bool, odd);
        const QByteArray text("The quick brown fox jumps over the lazy dog");
        std::vector<unsigned> words;
        for (const char c : text)
            words.push_back(withParity(c, odd));
        const auto reader = makeAsciiReader(8);
        QCOMPARE(readAll(*reader, words), QString(text));
    }

    void eighthElementOfASecondStopIsLeftOut()
    {
        const QByteArray text("The quick brown fox jumps over the lazy dog");
        std::vector<unsigned> words;
        for (const char c : text)
            words.push_back(static_cast<unsigned char>(c) | 0x80U);
        const auto reader = makeAsciiReader(8);
        QCOMPARE(readAll(*reader, words), QString(text));
    }

    void eightBitsThatAreMeantAreKept()
    {
        const QByteArray text("\xC4"
                              "BC\xD6\xDC\xE4"
                              "fg\xF6\xFC\xDF"
                              "hi\xC4\xD6 jk\xDC lm\xE4\xF6 nop\xFC");
        std::vector<unsigned> words;
        for (const char c : text)
            words.push_back(static_cast<unsigned char>(c));
        const auto reader = makeAsciiReader(8);
        QCOMPARE(readAll(*reader, words), QString::fromLatin1(text));
    }
};

QTEST_GUILESS_MAIN(tst_TextReader)
#include "tst_textreader.moc"
