// SPDX-License-Identifier: MIT
#include "station/picture/bandpicture.h"

#include "support/drawn.h"

#include <QRegularExpression>
#include <QtTest>
#include <algorithm>
#include <cmath>

using namespace inspect;

namespace {

constexpr double RATE_Hz = 12000.0;

// Where the last character of a word begins.
double lastLeft(const testsupport::DrawnPiece& word)
{
    return word.attributes.value("x").split(' ').last().toDouble();
}

int images(const testsupport::Drawn& drawn)
{
    return static_cast<int>(std::count_if(
        drawn.pieces.begin(), drawn.pieces.end(),
        [](const testsupport::DrawnPiece& piece) { return piece.element == "image"; }));
}

BandPowers silence(double duration_s, bool isComplex)
{
    Waterfall waterfall({RATE_Hz, isComplex}, {0, static_cast<std::int64_t>(1e6 * duration_s)},
                        -2e6, 2e6, 4000);
    const std::vector<std::complex<float>> samples(static_cast<std::size_t>(duration_s * RATE_Hz));
    waterfall.push(samples.data(), samples.size());
    return waterfall.powers();
}

} // namespace

class tst_BandPicture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsStandAlongTheirTraces()
    {
        const BandPowers powers = silence(90.0, true);
        const std::vector<BandText> texts = {
            {1, 3000.0, 10000000, "C"}, {2, -3000.0, 10500000, "D"}, {1, 3000.0, 11000000, "Q"},
            {1, 3000.0, 11000000, " "}, {2, -3000.0, 12000000, "E"}, {1, 3000.0, 70000000, "K"},
        };
        const auto drawn =
            testsupport::readDrawn(bandPicture(powers, texts, {0, 90000000}, 7e6, "band"));
        QCOMPARE(drawn.error, QString());
        QCOMPARE(drawn.rows, 2); // a minute each
        QCOMPARE(images(drawn), 2);
        const auto words = drawn.inRows("text");
        QCOMPARE(words.size(), std::size_t(3));
        QCOMPARE(words[0].text, QString("CQ"));
        QCOMPARE(words[1].text, QString("DE"));
        QCOMPARE(words[2].text, QString("K"));
        QCOMPARE(words[1].row, 0);
        QCOMPARE(words[2].row, 1);
        // 24 pixels a second, and a character ends with its last mark.
        QVERIFY(std::fabs(lastLeft(words[0]) + 6.0 - 11.0 * 24.0) < 0.1);
        QVERIFY(std::fabs(lastLeft(words[2]) + 6.0 - 10.0 * 24.0) < 0.1);
        // Higher frequencies lie above lower ones, 10 Hz a pixel.
        const double apart = words[1].number("y") - words[0].number("y");
        QVERIFY2(std::fabs(apart - 600.0) < 5.0, qPrintable(QString::number(apart)));
    }

    void aStretchOfLessThanAMinuteFillsItsRow()
    {
        const auto lefts = [](double length_s) {
            const auto drawn = testsupport::readDrawn(
                bandPicture(silence(length_s, false), {{1, 1000.0, 5000000, "K"}},
                            {0, static_cast<std::int64_t>(1e6 * length_s)}, 0.0, "band"));
            return lastLeft(drawn.inRows("text").at(0)) + 6.0;
        };
        QVERIFY(std::fabs(lefts(20.0) - 360.0) < 0.1);
        QVERIFY(std::fabs(lefts(10.0) - 720.0) < 0.1);
        QVERIFY(std::fabs(lefts(6.0) - 720.0) < 0.1); // ten seconds at least
    }

    void frequenciesAreNamedAsReceived()
    {
        const QByteArray svg = bandPicture(silence(10.0, true), {}, {0, 10000000}, 7.03e6, "band");
        QVERIFY(QString::fromUtf8(svg).contains(
            QRegularExpression("7024\\.[01]\\d to 703[56]\\.[90]\\d kHz, 0 signals")));
        QVERIFY(svg.contains(">7030.0 kHz<"));
    }

    void whatWasKeyedIsTextAndNeverMarkup()
    {
        const std::vector<BandText> texts = {{1, 1000.0, 2000000, "<script>&\x01"}};
        const QByteArray svg = bandPicture(silence(5.0, false), texts, {0, 5000000}, 0.0, "<b>&\"");
        const auto drawn = testsupport::readDrawn(svg);
        QCOMPARE(drawn.error, QString());
        QVERIFY(!svg.contains("<script>"));
        QCOMPARE(drawn.inRows("text").at(0).text, QString("<script>&\uFFFD"));
    }

    void aWideBandIsDrawnCoarser()
    {
        QCOMPARE(bandRows(2.4e6), HIGHEST_BAND_PIXELS);
        QCOMPARE(bandRows(10000.0), 1000);
        QVERIFY(bandRows(10.0) >= 100);
    }
};

QTEST_APPLESS_MAIN(tst_BandPicture)
#include "tst_bandpicture.moc"
