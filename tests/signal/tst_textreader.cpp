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

// The combinations of a text. A machine that unshifts sends no letter shift after a blank, and the
// figure shift again.
std::vector<unsigned> sent(const std::string& text, bool unshifts)
{
    std::vector<unsigned> words = {LETTERS};
    bool figures = false;
    for (const char c : text) {
        unsigned word = 0;
        while (word < 32 && ita2Character(word, false) != c && ita2Character(word, true) != c)
            ++word;
        const bool isBoth = ita2Character(word, false) == ita2Character(word, true);
        const bool isFigure = !isBoth && ita2Character(word, true) == c;
        if (!isBoth && isFigure != figures) {
            words.push_back(isFigure ? FIGURES : LETTERS);
            figures = isFigure;
        }
        words.push_back(word);
        figures = figures && !(unshifts && c == ' ');
    }
    return words;
}

const std::string WEATHER = "NORTH SEA 5 BECOMING 7 RAIN AND FOG. GALE 12 DEGREES WEST\r\n"
                            "WIND 4 LATER 6 SEA 3 METRES, SHOWERS";
const std::string CALL = "THE LAZY DOG. CQ CQ DE DL0XYZ DDH47 CQ CQ UR RST 599 599 TU QTH";
const std::string TABLE = "TABLE 55512 10234 21/04 1013.5 -5 14:30 20300\r\n"
                          "33005 40118 52003 7 3 35 END OF TABLE";

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
        text += reader->finish();
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
        text += reader->finish();
        QCOMPARE(QString::fromStdString(text), QString("111 111 111 111 1 1"));
    }

    void textIsReadAsItsSenderShifts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("unshifts");
        QTest::newRow("words, unshifted") << QByteArray::fromStdString(WEATHER) << true;
        QTest::newRow("words, shifted back") << QByteArray::fromStdString(WEATHER) << false;
        QTest::newRow("calls, unshifted") << QByteArray::fromStdString(CALL) << true;
        QTest::newRow("calls, shifted back") << QByteArray::fromStdString(CALL) << false;
        QTest::newRow("digits, unshifted") << QByteArray::fromStdString(TABLE) << true;
        QTest::newRow("digits, shifted back") << QByteArray::fromStdString(TABLE) << false;
    }
    void textIsReadAsItsSenderShifts()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, unshifts);
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        QCOMPARE(readAll(*reader, sent(text.toStdString(), unshifts)), QString(text));
    }

    void wordAfterABlankComesAtItsEndAtTheLatest()
    {
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        std::string text;
        for (const unsigned word : sent("5 RAIN", true))
            text += reader->read(word);
        text += reader->read(BLANK);
        QCOMPARE(QString::fromStdString(text), QString("5 RAIN "));
    }

    void oneMisreadFigureLeavesATableOfDigits()
    {
        std::vector<unsigned> words = sent("55512 10234 21304 10135 14230 20300", false);
        constexpr unsigned H = 0x14;
        words[words.size() - 10] = H;
        const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
        QCOMPARE(readAll(*reader, words), QString("55512 10234 21304 10135 1#230 20300"));
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

    void eightBitsThatAreSeldomMeantAreKept()
    {
        const QByteArray text("Thirty plain characters first, then gr\xFC\xDF"
                              "e");
        std::vector<unsigned> words;
        for (const char c : text)
            words.push_back(static_cast<unsigned char>(c));
        QCOMPARE(readAll(*makeAsciiReader(8), words), QString::fromLatin1(text));
    }

    void ninthElementIsParity()
    {
        const QByteArray text("gr\xFC\xDF"
                              "e, and plain characters after them");
        std::vector<unsigned> words;
        for (const char c : text) {
            const auto bits = static_cast<unsigned char>(c);
            words.push_back(hasParity(bits, Parity::Odd) ? bits : bits | 0x100U);
        }
        QCOMPARE(readAll(*makeAsciiReader(9), words), QString::fromLatin1(text));
    }

    // Nothing waits for what is known.
    void parityThatIsKnownIsLeftOutAtOnce_data()
    {
        QTest::addColumn<int>("dataBits");
        QTest::addColumn<int>("parity");
        QTest::addColumn<unsigned>("word");
        QTest::addColumn<QString>("read");
        const auto add = [](const char* name, int dataBits, Parity parity, unsigned word,
                            const char* read) {
            QTest::newRow(name) << dataBits << static_cast<int>(parity) << word
                                << QString::fromLatin1(read);
        };
        add("seven bits and parity", 8, Parity::Odd, 0x80U | 'E', "E");
        add("eight bits and parity", 9, Parity::Even, 0x1C4U, "\xC4");
        add("eight bits alone", 8, Parity::None, 0xC4U, "\xC4");
        add("seven bits alone", 7, Parity::None, 'E', "E");
    }
    void parityThatIsKnownIsLeftOutAtOnce()
    {
        QFETCH(int, dataBits);
        QFETCH(int, parity);
        QFETCH(unsigned, word);
        QFETCH(QString, read);
        const auto reader = makeAsciiReader(dataBits, static_cast<Parity>(parity));
        QCOMPARE(QString::fromLatin1(QByteArray::fromStdString(reader->read(word))), read);
    }
};

QTEST_GUILESS_MAIN(tst_TextReader)
#include "tst_textreader.moc"
