// SPDX-License-Identifier: MIT
#include "station/picture/picture.h"

#include "support/drawn.h"
#include "support/keyer.h"
#include "support/pngpixels.h"
#include "support/random.h"

#include <QtTest>
#include <cmath>

using namespace inspect;
using testsupport::Drawn;
using testsupport::DrawnPiece;
using testsupport::readDrawn;

namespace {

constexpr double PIXELS_PER_S = 120.0;

Seen empty(double from_s, double to_s)
{
    Seen seen;
    seen.stretch = {static_cast<std::int64_t>(1e6 * from_s), static_cast<std::int64_t>(1e6 * to_s)};
    return seen;
}

// Sound, steps and marks of an evenly keyed tone.
Seen keyed(double from_s, double to_s, double tone_Hz)
{
    Seen seen = empty(from_s, to_s);
    seen.rate_Hz = 8000.0;
    seen.firstSample = static_cast<std::int64_t>(from_s * 8000.0);
    testsupport::Random random("picture");
    const auto isMark = [](double time_s) { return std::fmod(time_s, 0.2) < 0.1; };
    for (std::int64_t n = seen.firstSample; n < static_cast<std::int64_t>(to_s * 8000.0); ++n) {
        const double time_s = static_cast<double>(n) / 8000.0;
        const double tone = isMark(time_s) ? std::sin(6.283185307 * tone_Hz * time_s) : 0.0;
        seen.samples.push_back(static_cast<float>(0.5 * tone + 0.05 * random.gauss()));
    }
    for (double time_s = from_s; time_s < to_s; time_s += 0.004) {
        const std::complex<double> value(isMark(time_s) ? 0.25 : 0.0, 0.0);
        seen.steps.push_back({static_cast<std::int64_t>(1e6 * time_s),
                              tone_Hz,
                              value + 0.01 * random.gauss(),
                              {0.0625, 0.0001, 25.0}});
    }
    for (double time_s = from_s; time_s < to_s - 0.2; time_s += 0.2) {
        const auto begin_us = static_cast<std::int64_t>(std::llround(1e6 * time_s));
        seen.marks.push_back({begin_us, begin_us + 100000, 100000.0, MarkKind::Dot});
        seen.gaps.push_back({begin_us + 100000, begin_us + 200000, GapKind::Character});
        seen.characters.push_back({begin_us, begin_us + 100000, ".", "E"});
    }
    return seen;
}

Drawn drawn(const Seen& seen, const QString& title = QStringLiteral("title"))
{
    return readDrawn(picture(seen, title));
}

testsupport::PngPixels imageOf(const DrawnPiece& piece)
{
    const QString reference = piece.attributes.value("href");
    const QString start = QStringLiteral("data:image/png;base64,");
    return testsupport::pngPixels(QByteArray::fromBase64(reference.mid(start.size()).toLatin1()));
}

} // namespace

class tst_Picture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itIsOneWholeFile()
    {
        const QByteArray svg = picture(keyed(0, 12, 700), "x");
        const Drawn all = readDrawn(svg);
        QCOMPARE(all.error, QString());
        QCOMPARE(all.rows, 2);
        QCOMPARE(all.pieces.back().element, QStringLiteral("svg"));
        // Nothing that would have to be fetched.
        for (const DrawnPiece& piece : all.pieces) {
            if (piece.attributes.contains("href"))
                QVERIFY(piece.attributes.value("href").startsWith("data:image/png;base64,"));
        }
        QCOMPARE(picture(keyed(0, 12, 700), "x"), svg);
    }

    void marksStandAtTheirTimes()
    {
        const Seen seen = keyed(3, 23.5, 700);
        const std::vector<DrawnPiece> marks = drawn(seen).inRows("mark");
        QCOMPARE(marks.size(), seen.marks.size());
        for (std::size_t i = 0; i < marks.size(); ++i) {
            const double begin_s = 3 + 10 * marks[i].row + marks[i].number("x") / PIXELS_PER_S;
            QVERIFY(std::fabs(begin_s - static_cast<double>(seen.marks[i].begin_us) / 1e6) < 0.001);
            QVERIFY(std::fabs(marks[i].number("width") / PIXELS_PER_S - 0.1) < 0.001);
            QVERIFY(marks[i].kinds.contains("dot"));
        }
        QCOMPARE(marks[1].title, QStringLiteral("dot 3.200 to 3.300 s, 1.00 units"));
    }

    void kindsDifferInShapeToo()
    {
        Seen seen = empty(0, 10);
        seen.marks = {{1000000, 1300000, 100000.0, MarkKind::Dot},
                      {2000000, 2300000, 100000.0, MarkKind::Dash},
                      {3000000, 3300000, 100000.0, MarkKind::Carrier}};
        seen.gaps = {{1300000, 2000000, GapKind::Inner},
                     {2300000, 3000000, GapKind::Character},
                     {3300000, 4000000, GapKind::Word}};
        const Drawn all = drawn(seen);
        const std::vector<DrawnPiece> marks = all.inRows("mark");
        QCOMPARE(marks.size(), std::size_t(3));
        QVERIFY(marks[0].number("rx") > 0 && marks[1].number("rx") == 0);
        QVERIFY(marks[0].number("height") < marks[1].number("height"));
        QVERIFY(marks[2].kinds.contains("carrier"));
        QStringList shapes;
        for (const DrawnPiece& gap : all.inRows("gap"))
            shapes += QString::number(gap.attributes.value("d").count('M'));
        QCOMPARE(shapes, QStringList({"1", "3", "4"}));
    }

    void complaintsAreWritten()
    {
        Seen seen = empty(0, 10);
        seen.marks = {{1000000, 1100000, 300000.0, MarkKind::Dot, true, false, true},
                      {2000000, 3300000, 100000.0, MarkKind::Dash, false, true, false}};
        QStringList words;
        for (const DrawnPiece& piece : drawn(seen).inRows("wrongname"))
            words += piece.text;
        QCOMPARE(words, QStringList({"pause too short", "dot too short", "dash too long"}));
    }

    void whatCrossesTheEndOfARowGoesOnInTheNext()
    {
        Seen seen = empty(0, 20);
        seen.marks = {{9900000, 10300000, 130000.0, MarkKind::Dash}};
        seen.characters = {{9900000, 10300000, "-", "T"}};
        const Drawn all = drawn(seen);
        const std::vector<DrawnPiece> marks = all.inRows("mark");
        QCOMPARE(marks.size(), std::size_t(2));
        QCOMPARE(marks[0].number("width"), 0.1 * PIXELS_PER_S);
        QCOMPARE(marks[1].number("x"), 0.0);
        QCOMPARE(marks[1].number("width"), 0.3 * PIXELS_PER_S);
        QCOMPARE(marks[0].title, marks[1].title);
        const std::vector<DrawnPiece> texts = all.inRows("text");
        QCOMPARE(texts.size(), std::size_t(1));
        QCOMPARE(texts[0].row, 1);
    }

    void textStandsUnderTheMiddleOfItsMarks()
    {
        const Seen seen = keyed(0, 10, 700);
        const std::vector<DrawnPiece> texts = drawn(seen).inRows("text");
        QCOMPARE(texts.size(), seen.characters.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const double middle_s = static_cast<double>(seen.characters[i].begin_us) / 1e6 + 0.05;
            QVERIFY(std::fabs(texts[i].number("x") / PIXELS_PER_S - middle_s) < 0.001);
        }
    }

    void elementsWithoutMeaningAreShownAsSuch()
    {
        Seen seen = empty(0, 10);
        seen.characters = {{1000000, 2000000, "......-", ""}};
        const Drawn all = drawn(seen);
        QVERIFY(all.inRows("text").empty());
        QCOMPARE(all.inRows("unknown").at(0).text, QStringLiteral("......-"));
    }

    void theSpectrogramIsBrightestAtTheTone()
    {
        for (const double tone_Hz : {500.0, 703.0, 1200.0}) {
            const Drawn all = drawn(keyed(0, 10, tone_Hz));
            double top = 0, height = 0;
            testsupport::PngPixels image;
            std::vector<DrawnPiece> ticks;
            for (const DrawnPiece& piece : all.pieces) {
                if (piece.element == "image") {
                    image = imageOf(piece);
                    top = piece.number("y");
                    height = piece.number("height");
                } else if (piece.row == 0 && piece.kinds.contains("end") && ticks.size() < 2) {
                    ticks.push_back(piece);
                }
            }
            QCOMPARE(image.width, 1250);
            std::vector<int> sums;
            for (int y = 0; y < image.height; ++y) {
                int sum = 0;
                for (int x = 0; x < image.width; ++x)
                    sum += image.colours[static_cast<std::size_t>(y * image.width + x)];
                sums.push_back(sum);
            }
            const auto brightest = std::max_element(sums.begin(), sums.end()) - sums.begin();
            const double y = top + (static_cast<double>(brightest) + 0.5) * height / image.height;
            // The tone at that height, by the labels of the axis.
            const double low_Hz = ticks.at(0).text.section(' ', 0, 0).toDouble();
            const double high_Hz = ticks.at(1).text.section(' ', 0, 0).toDouble();
            const double perPixel =
                (high_Hz - low_Hz) / (ticks[1].number("y") - ticks[0].number("y"));
            const double shown_Hz = low_Hz + perPixel * (y + 4.0 - ticks[0].number("y"));
            QVERIFY2(std::fabs(shown_Hz - tone_Hz) < 20.0,
                     qPrintable(QStringLiteral("%1 for %2").arg(shown_Hz).arg(tone_Hz)));
        }
    }

    void transmissionsHaveFlags()
    {
        Seen seen = empty(0, 30);
        seen.transmissions = {{1000000, 12000000}, {25000000, std::nullopt}, {40000000, 50000000}};
        QStringList words;
        for (const DrawnPiece& piece : drawn(seen).inRows("flagname"))
            words += QString::number(piece.row) + piece.text;
        QCOMPARE(words, QStringList({"0transmission", "1end of transmission", "2transmission"}));
    }

    void wordsAreEscapedAndHoldable()
    {
        Seen seen = empty(0, 10);
        const QString odd = QStringLiteral("<&\">\u0001\uFFFF") + QChar(0xD800) +
                            QStringLiteral("\U0001F4FB\u05D0");
        seen.characters = {{1000000, 2000000, ".", odd}};
        const Drawn all = drawn(seen, odd);
        QCOMPARE(all.error, QString());
        const QString shown = QStringLiteral("<&\">\uFFFD\uFFFD\uFFFD\U0001F4FB\u05D0");
        QCOMPARE(all.inRows("text").at(0).text, shown);
        QCOMPARE(all.pieces.back().title, shown);
    }

    void withoutASignalItSaysSo()
    {
        Seen seen = keyed(0, 15, 700);
        seen.steps.clear();
        seen.marks.clear();
        seen.gaps.clear();
        seen.characters.clear();
        const Drawn all = drawn(seen);
        QVERIFY(all.allText().contains("no signal was found in this stretch"));
        QCOMPARE(all.inRows("nothing").size(), std::size_t(2));
        int images = 0;
        for (const DrawnPiece& piece : all.pieces)
            images += piece.element == "image" ? 1 : 0;
        QCOMPARE(images, 2);
    }

    void nothingAtAllIsAPictureToo()
    {
        QCOMPARE(drawn(Seen()).error, QString());
        QCOMPARE(drawn(empty(5, 5.1)).rows, 1);
        Seen steps = empty(0, 1);
        steps.steps = {{500000, 700.0, 0.0, {0.0, 0.0, 0.0}}};
        QCOMPARE(drawn(steps).error, QString());
    }

    void aTimeAxisNamesTimesAtAPaceThatCanBeRead_data()
    {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addColumn<QStringList>("labels");
        QTest::newRow("seconds") << 59.5 << 65.5
                                 << QStringList({"60 s@100", "61 s@300", "62 s@500", "63 s@700",
                                                 "64 s@900", "65 s@1100"});
        QTest::newRow("tenths") << 59.9 << 61.1
                                << QStringList({"60.0 s@100", "60.2 s@300", "60.4 s@500",
                                                "60.6 s@700", "60.8 s@900", "61.0 s@1100"});
        QTest::newRow("hundredths") << 59.99 << 60.09
                                    << QStringList({"60.00 s@120", "60.02 s@360", "60.04 s@600",
                                                    "60.06 s@840", "60.08 s@1080"});
    }

    void aTimeAxisNamesTimesAtAPaceThatCanBeRead()
    {
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(QStringList, labels);
        QStringList written;
        for (const DrawnPiece& piece : drawn(empty(from, to)).inRows("middle"))
            written += piece.text + '@' + piece.attributes.value("x");
        QCOMPARE(written, labels);
    }

    void theLongestStretchStaysOfBoundedSize()
    {
        const Seen seen = keyed(0, LONGEST_STRETCH_s, 700);
        const QByteArray svg = picture(seen, "long");
        QCOMPARE(readDrawn(svg).rows, 60);
        QVERIFY2(svg.size() < 60 * 100000, qPrintable(QString::number(svg.size())));
    }
};

QTEST_APPLESS_MAIN(tst_Picture)
#include "tst_picture.moc"
