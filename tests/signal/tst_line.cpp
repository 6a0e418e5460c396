// SPDX-License-Identifier: MIT
#include "signal/teleprinter/line.h"

#include <QtTest>

#include <algorithm>
#include <vector>

using namespace teleprinter;

namespace {

template <typename Value>
std::vector<Value> triedOf(const Known& known, Value LineKind::*member)
{
    std::vector<Value> tried;
    for (const LineKind& kind : kindsToTry(known))
        tried.push_back(kind.*member);
    return tried;
}

} // namespace

class tst_Line : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void polarityAndShiftFollowFromTheTones()
    {
        Line line;
        line.mark_Hz = 1415.0;
        line.space_Hz = 1585.0;
        QVERIFY(line.isReversed());
        QCOMPARE(line.shift_Hz(), 170.0);
        QCOMPARE(line.centre_Hz(), 1500.0);
        std::swap(line.mark_Hz, line.space_Hz);
        QVERIFY(!line.isReversed());
        QCOMPARE(line.shift_Hz(), 170.0);
    }

    void lineOfOtherSpeedLengthOrPolarityIsAnother()
    {
        const Line line = {{Code::Ascii, 110.0, 7}, 1585.0, 1415.0, 110.0};
        QVERIFY(isSameLine(line, line));
        Line other = line;
        other.mark_Hz += 5.0;
        QVERIFY(isSameLine(line, other));
        std::swap(other.mark_Hz, other.space_Hz);
        QVERIFY(!isSameLine(line, other));
        other = line;
        other.kind.dataBits = 8;
        QVERIFY(!isSameLine(line, other));
        other = line;
        other.kind.baud = 150.0;
        QVERIFY(!isSameLine(line, other));
    }

    void allIsTriedWhereNothingIsKnown() { QCOMPARE(kindsToTry({}).size(), lineKinds().size()); }

    void onlyWhatIsKnownIsTried()
    {
        Known known;
        known.codes = {Code::Ita2};
        for (const LineKind& kind : kindsToTry(known))
            QCOMPARE(kind.code, Code::Ita2);
        known.mostBaud = 50.0;
        for (const LineKind& kind : kindsToTry(known))
            QVERIFY(kind.baud <= 50.0);
    }

    void speedOfNoRowIsTriedOnceForEachLength()
    {
        Known known;
        known.baud = 56.9;
        const auto kinds = kindsToTry(known);
        for (const LineKind& kind : kinds) {
            QCOMPARE(kind.baud, 56.9);
            QVERIFY(kind.code != Code::Ccir476);
        }
        QCOMPARE(kinds.size(), std::size_t(4)); // of five, seven, eight and nine elements
    }

    void usualSpeedsNearTheKnownOneAreTriedToo()
    {
        Known known;
        known.codes = {Code::Ita2};
        const auto speeds = [&known](double baud) {
            known.baud = baud;
            return triedOf(known, &LineKind::baud);
        };
        QCOMPARE(speeds(50.0), std::vector<double>({50.0, 45.45}));
        QCOMPARE(speeds(45.45), std::vector<double>({45.45, 50.0}));
        QCOMPARE(speeds(45.0), std::vector<double>({45.0, 50.0})); // 45.45 is the same one
        QCOMPARE(speeds(75.0), std::vector<double>({75.0}));
        QCOMPARE(speeds(47.5), std::vector<double>({47.5, 45.45, 50.0}));
    }

    void speedIsKnownWithinATwentieth()
    {
        Known known;
        QVERIFY(isKnownSpeed(50.0, known));
        known.baud = 47.5;
        QVERIFY(isKnownSpeed(50.0, known));
        QVERIFY(isKnownSpeed(45.45, known));
        QVERIFY(!isKnownSpeed(50.1, known));
        known.baud = 48.0;
        QVERIFY(!isKnownSpeed(45.45, known));
    }

    void parityThatIsKnownSaysHowLongCharactersAre()
    {
        Known known;
        known.codes = {Code::Ascii};
        known.baud = 300.0;
        const auto lengths = [&known](Parity parity) {
            known.parity = parity;
            return triedOf(known, &LineKind::dataBits);
        };
        QCOMPARE(lengths(Parity::None), std::vector<int>({7, 8}));
        QCOMPARE(lengths(Parity::Even), std::vector<int>({8, 9}));
        QCOMPARE(lengths(Parity::Odd), std::vector<int>({8, 9}));
    }

    void parityCountsTheMarks()
    {
        QVERIFY(hasParity(0x0, Parity::Even));
        QVERIFY(!hasParity(0x0, Parity::Odd));
        QVERIFY(hasParity(0x100, Parity::Odd));
        QVERIFY(!hasParity(0x103, Parity::Even));
        QVERIFY(hasParity(0x103, Parity::None));
    }
};

QTEST_APPLESS_MAIN(tst_Line)
#include "tst_line.moc"
