// SPDX-License-Identifier: MIT
#include "signal/morse/trellis.h"

#include "support/random.h"

#include <QtTest>
#include <algorithm>
#include <cmath>

using namespace demodulator;

namespace {

struct Heard
{
    explicit Heard(std::optional<double> speed_wpm = {}, const std::string& seed = "trellis",
                   const TrellisParameters& parameters = {})
        : random(seed)
        , timing(0.004, speed_wpm)
        , trellis(timing, likelihood, parameters)
    {
        likelihood.setLevel({1.0, 0.1});
    }
    void add(bool mark, int steps)
    {
        for (int n = 0; n < steps; ++n) {
            const double level = mark ? 1.0 : 0.0;
            likelihood.push({level + 0.22 * random.gauss(), 0.22 * random.gauss()});
            trellis.advance();
        }
    }
    std::string kinds()
    {
        std::string result;
        for (const Segment& segment : trellis.path(0).segments)
            result += ".-+_cw "[static_cast<std::size_t>(segment.kind)];
        return result;
    }

    testsupport::Random random;
    TimingModel timing;
    MarkLikelihood likelihood;
    Trellis trellis;
};

} // namespace

class tst_Trellis : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void speedAndElementsAreFoundTogether_data()
    {
        QTest::addColumn<int>("unit_steps");
        QTest::newRow("45 wpm") << 7;
        QTest::newRow("20 wpm") << 15;
        QTest::newRow("12 wpm") << 25;
    }
    void speedAndElementsAreFoundTogether()
    {
        QFETCH(int, unit_steps);
        Heard heard;
        heard.add(false, 100);
        for (const char* p = ".-.c-."; *p != 0; ++p) {
            if (*p == 'c') {
                heard.add(false, 2 * unit_steps);
                continue;
            }
            heard.add(true, *p == '.' ? unit_steps : 3 * unit_steps);
            heard.add(false, unit_steps);
        }
        heard.add(false, 11 * unit_steps);
        const Path path = heard.trellis.path(0);
        QCOMPARE(heard.kinds(), std::string("._-_.c-_. "));
        QVERIFY(path.complete);
        QVERIFY(path.gain > 25.0);
        QVERIFY(std::abs(path.segments.front().begin_step - 100) <= 2);
        const double unit = path.segments[4].unit_steps;
        QVERIFY(std::fabs(unit / unit_steps - 1.0) < 0.12);
    }
    // Scores grow without end; what is kept of them does not.
    void aLongTransmissionIsReadLikeAShortOne()
    {
        Heard heard(20.0);
        heard.add(false, 50);
        for (int i = 0; i < 400; ++i) {
            heard.add(true, i % 2 == 0 ? 15 : 45);
            heard.add(false, i % 2 == 0 ? 15 : 45);
        }
        std::string last;
        for (const Segment& segment : heard.trellis.path(50 + 380 * 60).segments)
            last += ".-+_cw "[static_cast<std::size_t>(segment.kind)];
        QVERIFY2(QString::fromStdString(last).contains("._-c._-c._-c._-c"), last.c_str());
    }
    void noiseIsNoSignal()
    {
        for (int seed = 0; seed < 8; ++seed) {
            Heard heard({}, "noise" + std::to_string(seed));
            heard.add(false, 3000);
            const Path path = heard.trellis.path(0);
            QVERIFY(path.segments.empty() || path.gain < 20.0);
        }
    }
    void aSteadyToneIsNoKeying()
    {
        Heard heard;
        heard.add(false, 50);
        heard.add(true, 1000);
        const Path path = heard.trellis.path(0);
        QVERIFY(!path.segments.empty());
        QVERIFY2(path.segments.back().kind == Kind::Carrier, heard.kinds().c_str());
    }
    void aSteadyToneIsWorthMoreFromBlockToBlock()
    {
        const auto gain = [](double goesOn) {
            TrellisParameters parameters;
            parameters.carrierGoesOn = goesOn;
            Heard heard({}, "blocks", parameters);
            heard.add(false, 50);
            heard.add(true, 1000);
            return heard.trellis.path(0).gain;
        };
        const double blocks = 1000.0 / 32.0;
        QVERIFY2(std::fabs(gain(4.0) - gain(2.5) - 1.5 * blocks) < 4.0,
                 qPrintable(QString::number(gain(4.0) - gain(2.5))));
    }
    // Keying at a low signal-to-noise ratio looks like a carrier of half its power.
    void nothingWeakIsTakenForASteadyTone()
    {
        const auto isSteady = [](double noise) {
            Heard heard;
            heard.likelihood.setLevel({1.0, noise});
            heard.add(false, 50);
            heard.add(true, 1000);
            const Path path = heard.trellis.path(0);
            return std::any_of(path.segments.begin(), path.segments.end(),
                               [](const Segment& one) { return one.kind == Kind::Carrier; });
        };
        // A dot of 15 steps has 12 times the noise density at 1.25.
        QVERIFY(isSteady(1.1));
        QVERIFY(!isSteady(1.4));
    }
    void keyingGoesOnAfterASteadyTone()
    {
        Heard heard(20.0);
        heard.add(false, 50);
        const auto key = [&heard](const std::string& marks) {
            for (const char mark : marks) {
                heard.add(true, mark == '.' ? 15 : 45);
                heard.add(false, 15);
            }
        };
        key(".-.");
        heard.add(false, 30);
        heard.add(true, 600);
        heard.add(false, 45);
        key(".-.");
        heard.add(false, 100);
        const std::string kinds = heard.kinds();
        QVERIFY2(kinds == "._-_.c+c._-_. ", kinds.c_str());
        const Segment steady = heard.trellis.path(0).segments[6];
        QVERIFY(std::abs(steady.begin_step - 200) <= 2);
        QVERIFY(std::abs(steady.end_step - 800) <= 2);
    }
    // At whichever step of a block, and where nothing else has been likely for long.
    void aStrongSteadyToneEndsWhereItEnds()
    {
        for (int steps = 1000; steps < 1032; ++steps) {
            Heard heard(20.0);
            const auto add = [&heard](bool mark, int count) {
                for (int n = 0; n < count; ++n) {
                    heard.likelihood.push({(mark ? 1.0 : 0.0) + 0.022 * heard.random.gauss(),
                                           0.022 * heard.random.gauss()});
                    heard.trellis.advance();
                }
            };
            heard.likelihood.setLevel({1.0, 0.001});
            add(false, 50);
            for (const int dot : {15, 45, 15}) {
                add(true, dot);
                add(false, 15);
            }
            add(false, 30);
            add(true, steps);
            const std::int64_t end = heard.likelihood.end();
            add(false, 100);
            const std::vector<Segment> segments = heard.trellis.path(0).segments;
            const auto steady =
                std::find_if(segments.begin(), segments.end(),
                             [](const Segment& one) { return one.kind == Kind::Carrier; });
            QVERIFY2(steady != segments.end(), heard.kinds().c_str());
            QVERIFY2(std::abs(steady->end_step - end) <= 2,
                     qPrintable(QStringLiteral("%1, not %2").arg(steady->end_step).arg(end)));
            QCOMPARE(heard.kinds().substr(0, 7), std::string("._-_.c+"));
        }
    }
    // Its end has a price, unless a block ends there.
    void theEndOfASteadyToneHasItsPrice()
    {
        const auto gain = [](double carrierEnds) {
            TrellisParameters parameters;
            parameters.carrierEnds = carrierEnds;
            Heard heard(20.0, "price", parameters);
            heard.add(false, 64);
            for (const int steps : {15, 45, 15, 40 * 15, 15, 45, 15}) {
                heard.add(true, steps);
                heard.add(false, 15);
            }
            heard.add(false, 100);
            return heard.trellis.path(0).gain;
        };
        const double difference = gain(-8.0) - gain(-11.0);
        QVERIFY2(std::fabs(difference - 3.0) < 0.5, qPrintable(QString::number(difference)));
    }
    void aSteadyToneLastsForItsLeastLength_data()
    {
        QTest::addColumn<double>("least_units");
        QTest::addColumn<bool>("isSteady");
        QTest::newRow("shorter") << 8.0 << true;
        QTest::newRow("longer") << 200.0 << false;
    }
    void aSteadyToneLastsForItsLeastLength()
    {
        QFETCH(double, least_units);
        QFETCH(bool, isSteady);
        TrellisParameters parameters;
        parameters.leastCarrier_units = least_units;
        Heard heard(20.0, "least", parameters);
        heard.add(false, 50);
        for (const int steps : {15, 45, 15, 40 * 15, 15}) {
            heard.add(true, steps);
            heard.add(false, 15);
        }
        heard.add(false, 100);
        QVERIFY2((heard.kinds().find('+') != std::string::npos) == isSteady, heard.kinds().c_str());
    }
    // At least half of what a path can hold is kept of the tone.
    void keyingGoesOnAfterASteadyToneThatIsLongerThanAPath()
    {
        Heard heard(20.0);
        const auto send = [&heard] {
            for (const int steps : {15, 45, 15}) {
                heard.add(true, steps);
                heard.add(false, 15);
            }
        };
        heard.add(false, 50);
        send();
        heard.add(false, 30);
        heard.add(true, static_cast<int>(Trellis::KEPT_STEPS) + 500);
        const std::int64_t end = heard.likelihood.end();
        heard.add(false, 45);
        send();
        heard.add(false, 100);
        const std::string kinds = heard.kinds();
        QVERIFY2(kinds == "+c._-_. ", kinds.c_str());
        const Segment steady = heard.trellis.path(0).segments.front();
        QVERIFY(std::abs(steady.end_step - end) <= 2);
        QVERIFY(steady.end_step - steady.begin_step >= Trellis::KEPT_STEPS / 2);
    }
    // A hand of another speed that begins after a long silence is a signal of its own.
    void theGainIsThatSinceThePathBegan()
    {
        const auto sendQuickly = [](Heard& heard) {
            for (const int steps : {8, 24, 8, 8, 24, 8}) {
                heard.add(true, steps);
                heard.add(false, 8);
            }
        };
        Heard both;
        both.add(false, 50);
        for (const int steps : {30, 90, 30, 90, 30}) {
            both.add(true, steps);
            both.add(false, 30);
        }
        both.add(false, 1200);
        const double before = both.trellis.path(0).gain;
        sendQuickly(both);
        Heard alone;
        alone.add(false, 50);
        sendQuickly(alone);
        const Path path = both.trellis.path(0);
        QVERIFY(path.complete);
        QVERIFY(path.segments.front().begin_step > 1200);
        const double expected = alone.trellis.path(0).gain;
        QVERIFY2(
            std::fabs(path.gain / expected - 1.0) < 0.15,
            qPrintable(
                QStringLiteral("%1 for %2, after %3").arg(path.gain).arg(expected).arg(before)));
    }
    void aPathReachesBackToItsBeginningEvenWhereTheSpeedIsLongUnclear()
    {
        // Nothing but dashes, which are dots of a slower hand as well, until some dots come.
        Heard heard;
        heard.add(false, 40);
        const auto add = [&heard](int count, int steps) {
            for (int i = 0; i < count; ++i) {
                heard.add(true, steps);
                heard.add(false, i % 3 == 2 ? 45 : 15);
            }
        };
        add(22, 45);
        add(2, 15);
        const Path path = heard.trellis.path(0);
        QVERIFY(path.complete);
        QVERIFY(std::abs(path.segments.front().begin_step - 40) <= 2);
        std::size_t dashes = 0;
        for (const Segment& segment : path.segments)
            dashes += segment.kind == Kind::Dash ? 1 : 0;
        QCOMPARE(dashes, std::size_t(22));
        QVERIFY(heard.trellis.path(1000).segments.front().end_step > 1000);
        QVERIFY(!heard.trellis.path(1000).complete);
    }
    void whatIsHeardAfterASilenceGoesOnWithTheSamePath()
    {
        Heard heard;
        heard.add(false, 60);
        for (int i = 0; i < 2; ++i) {
            for (const int marked : {15, 45, 15}) {
                heard.add(true, marked);
                heard.add(false, 15);
            }
            heard.add(false, 900);
        }
        QCOMPARE(heard.kinds(), std::string("._-_. ._-_. "));
        const Path path = heard.trellis.path(0);
        QVERIFY(path.complete);
        QCOMPARE(path.segments.back().end_step, std::int64_t(60 + 2 * (75 + 45 + 900)));
    }
    void eachOfTheSpeedsGoesOnAfterASilence()
    {
        const TimingModel timing(0.004, 20.0);
        for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
            const double unit = timing.table(speed).unit_steps;
            Heard heard(20.0);
            heard.add(false, 60);
            for (int i = 0; i < 2; ++i) {
                for (const double units : {1.0, 3.0, 1.0}) {
                    heard.add(true, static_cast<int>(std::lround(units * unit)));
                    heard.add(false, static_cast<int>(std::lround(unit)));
                }
                heard.add(false, 700);
            }
            QVERIFY2(heard.kinds() == "._-_. ._-_. ",
                     qPrintable(QStringLiteral("%1 at %2 steps")
                                    .arg(QString::fromStdString(heard.kinds()))
                                    .arg(unit)));
        }
    }
    // What a silence is worth is how probable so long a gap is.
    void aSilenceIsWorthLessThanTheGapItBeganAs()
    {
        Heard heard(20.0);
        heard.add(false, 50);
        for (const int steps : {15, 45, 15}) {
            heard.add(true, steps);
            heard.add(false, 15);
        }
        const double gap = heard.trellis.path(0).gain;
        heard.add(false, 1200);
        const double silence = heard.trellis.path(0).gain;
        QVERIFY2(silence < gap - 1.0, qPrintable(QString("%1 after %2").arg(silence).arg(gap)));
    }
    void noMarkBeginsBeforeTheFirstStep_data()
    {
        QTest::addColumn<int>("steps");
        for (const int steps : {1, 2, 3, 5, 8, 12})
            QTest::addRow("%d steps", steps) << steps;
    }
    // A tone that is far stronger than expected, and already on when it is first heard.
    void noMarkBeginsBeforeTheFirstStep()
    {
        QFETCH(int, steps);
        MarkLikelihood likelihood;
        TimingModel timing(0.004, {});
        Trellis trellis(timing, likelihood);
        likelihood.setLevel({1.0, 0.01});
        for (int n = 0; n < 40; ++n) {
            likelihood.push({n < steps ? 3.0 : 0.0, 0.0});
            trellis.advance();
            for (const Segment& segment : trellis.path(0).segments)
                QVERIFY2(segment.begin_step >= 0, qPrintable(QString::number(segment.begin_step)));
        }
    }
    void aPathBeginsWithTheSegmentAskedForAndHasNoHoles()
    {
        Heard heard(20.0);
        heard.add(false, 50);
        for (int i = 0; i < 12; ++i) {
            heard.add(true, i % 3 == 0 ? 45 : 15);
            heard.add(false, i % 4 == 3 ? 45 : 15);
        }
        heard.add(false, 20);
        for (const std::int64_t since : {60, 101, 200, 333, 400}) {
            const Path path = heard.trellis.path(since);
            QVERIFY(!path.segments.empty());
            QVERIFY(path.segments.front().begin_step <= since);
            QVERIFY(path.segments.front().end_step > since);
            for (std::size_t i = 1; i < path.segments.size(); ++i) {
                QCOMPARE(path.segments[i].begin_step, path.segments[i - 1].end_step);
                QVERIFY(isMark(path.segments[i].kind) != isMark(path.segments[i - 1].kind));
            }
        }
    }
    void aMarkThatGoesOnIsTheLastSegment()
    {
        Heard heard(20.0);
        heard.add(false, 50);
        heard.add(true, 15);
        heard.add(false, 15);
        heard.add(true, 30);
        const Path path = heard.trellis.path(0);
        QVERIFY(!path.segments.empty());
        QVERIFY2(isMark(path.segments.back().kind), heard.kinds().c_str());
        QVERIFY(std::abs(path.segments.back().begin_step - 80) <= 2);
        QCOMPARE(path.segments.back().end_step, std::int64_t(110));
    }
    // A mark alone is a dot of one hand or a dash of another; dots and dashes have one speed.
    void theMarginSaysHowSureTheSpeedIs()
    {
        Heard mark;
        mark.add(false, 50);
        mark.add(true, 30);
        mark.add(false, 30);
        Heard marks;
        marks.add(false, 50);
        for (const int steps : {30, 90, 30, 90, 90, 30, 30}) {
            marks.add(true, steps);
            marks.add(false, 30);
        }
        const double alone = mark.trellis.path(0).margin;
        const double among = marks.trellis.path(0).margin;
        QVERIFY2(among > 20.0 && alone < 0.25 * among,
                 qPrintable(QString("%1 and %2").arg(alone).arg(among)));
    }
    // At a known speed the only other explanation is silence: since the last transmission, not
    // since the path began.
    void theMarginIsOverSilenceAsWell()
    {
        Heard heard(20.0);
        heard.likelihood.setLevel({1.0, 1.0});
        const auto add = [&heard](bool mark, int steps) {
            for (int n = 0; n < steps; ++n) {
                heard.likelihood.push(
                    {(mark ? 1.0 : 0.0) + 0.7 * heard.random.gauss(), 0.7 * heard.random.gauss()});
                heard.trellis.advance();
            }
        };
        const auto send = [&] {
            for (const int steps : {15, 45, 15}) {
                add(true, steps);
                add(false, 15);
            }
            return heard.trellis.path(0);
        };
        add(false, 50);
        const Path first = send();
        QVERIFY(first.complete);
        QVERIFY(first.margin > 15.0 && std::fabs(first.margin - first.gain) < 0.1);
        add(false, 1200);
        const Path both = send();
        QVERIFY(both.complete);
        const double expected = both.gain - first.gain;
        QVERIFY2(std::fabs(both.margin - expected) < 0.25 * expected,
                 qPrintable(QString("%1 of %2").arg(both.margin).arg(both.gain)));
    }
    void theSpeedChangesByOneOrTwoStepsOfTheScale_data()
    {
        QTest::addColumn<double>("nextSpeed");
        QTest::addColumn<double>("secondSpeed");
        QTest::addColumn<int>("largestChange");
        const double never = -70.0;
        QTest::newRow("none") << never << never << 0;
        QTest::newRow("one") << 0.0 << never << 1;
        QTest::newRow("two") << never << 0.0 << 2;
    }
    // Of a hand that becomes faster by two steps, and then slower by four.
    void theSpeedChangesByOneOrTwoStepsOfTheScale()
    {
        QFETCH(double, nextSpeed);
        QFETCH(double, secondSpeed);
        QFETCH(int, largestChange);
        TrellisParameters parameters;
        parameters.nextSpeed = nextSpeed;
        parameters.secondSpeed = secondSpeed;
        Heard heard(20.0, "changes", parameters);
        std::vector<double> units; // by speed
        for (std::size_t speed = 0; speed < heard.timing.speeds(); ++speed)
            units.push_back(heard.timing.table(speed).unit_steps);
        const std::size_t middle = units.size() / 2;
        heard.add(false, 50);
        for (const std::size_t speed : {middle, middle - 2, middle, middle + 2}) {
            for (const int length_units : {1, 3, 1, 1, 3, 3}) {
                heard.add(true, static_cast<int>(std::lround(length_units * units[speed])));
                heard.add(false, static_cast<int>(std::lround(units[speed])));
            }
        }
        const std::vector<Segment> segments = heard.trellis.path(0).segments;
        QVERIFY(segments.size() >= 47);
        const auto speedOf = [&units](const Segment& segment) {
            return std::find(units.begin(), units.end(), segment.unit_steps) - units.begin();
        };
        int most = 0;
        for (std::size_t i = 1; i < segments.size(); ++i) {
            const auto change =
                static_cast<int>(std::abs(speedOf(segments[i]) - speedOf(segments[i - 1])));
            QVERIFY2(change == 0 || change == largestChange, qPrintable(QString::number(change)));
            most = std::max(most, change);
        }
        QCOMPARE(most, largestChange);
    }
    void anySpeedWithinReachMayFollowAWord_data()
    {
        QTest::addColumn<int>("gap_units");
        QTest::addColumn<int>("change");
        QTest::addColumn<double>("price");
        QTest::addColumn<bool>("isMorse");
        QTest::addColumn<bool>("isFollowed");
        QTest::newRow("slower") << 7 << 14 << -12.0 << true << true;
        QTest::newRow("quicker") << 7 << -14 << -12.0 << true << true;
        QTest::newRow("as far as it reaches") << 7 << 20 << -12.0 << true << true;
        QTest::newRow("beyond") << 7 << 26 << -12.0 << true << false;
        QTest::newRow("too expensive") << 7 << 14 << -70.0 << true << false;
        QTest::newRow("before it is known to be Morse") << 7 << 14 << -12.0 << false << false;
        QTest::newRow("within a letter") << 1 << 14 << -12.0 << true << false;
    }
    // Dots at half the speed are two units long, which is hardly a dash, and dashes six.
    void anySpeedWithinReachMayFollowAWord()
    {
        QFETCH(int, gap_units);
        QFETCH(int, change);
        QFETCH(double, price);
        QFETCH(bool, isMorse);
        QFETCH(bool, isFollowed);
        TrellisParameters parameters;
        parameters.anySpeed = price;
        parameters.nextSpeed = parameters.secondSpeed = -70.0;
        Heard heard({}, "word", parameters);
        const auto unitAt = [&heard](int speed) {
            return heard.timing.table(static_cast<std::size_t>(speed)).unit_steps;
        };
        const int first = 22; // of 52
        const auto send = [&](double unit, int last_units) {
            const int lengths_units[] = {1, 3, 1, 1, 3, 3, 1, 1};
            for (const int& length : lengths_units) {
                const int gap = &length == std::end(lengths_units) - 1 ? last_units : 1;
                heard.add(true, static_cast<int>(std::lround(length * unit)));
                heard.add(false, static_cast<int>(std::lround(gap * unit)));
            }
        };
        if (isMorse)
            heard.trellis.followAnySpeed();
        heard.add(false, 50);
        send(unitAt(first), gap_units);
        send(unitAt(first + change), 1);
        const std::vector<Segment> segments = heard.trellis.path(0).segments;
        const auto changed =
            std::find_if(segments.begin(), segments.end(), [&](const Segment& segment) {
                return std::fabs(segment.unit_steps / unitAt(first + change) - 1.0) < 0.1;
            });
        QCOMPARE(segments.end() - changed == 16, isFollowed); // from the first mark on
        if (isFollowed) {
            QCOMPARE((changed - 1)->kind, Kind::WordGap);
            QVERIFY(std::fabs((changed - 1)->unit_steps / unitAt(first) - 1.0) < 0.1);
        }
    }
    void aDashIsNoSteadyToneHoweverLongTheHandHoldsIt_data()
    {
        QTest::addColumn<int>("units");
        QTest::addColumn<bool>("isSteady");
        QTest::newRow("a dash") << 3 << false;
        QTest::newRow("a long dash") << 5 << false;
        QTest::newRow("five seconds and more") << 90 << true;
    }
    void aDashIsNoSteadyToneHoweverLongTheHandHoldsIt()
    {
        QFETCH(int, units);
        QFETCH(bool, isSteady);
        Heard heard(20.0);
        heard.add(false, 50);
        for (const int steps : {15, 45, 15, units * 15, 15}) {
            heard.add(true, steps);
            heard.add(false, 15);
        }
        heard.add(false, 100);
        QVERIFY2((heard.kinds().find('+') != std::string::npos) == isSteady, heard.kinds().c_str());
    }
    // Scores of a strong signal grow by hundreds a step, those of a weak one hardly.
    void elementsOfAStrongSignalAreThoseOfAWeakOne_data()
    {
        QTest::addColumn<double>("noise");
        for (const double noise : {0.3, 0.1, 0.01, 0.001})
            QTest::addRow("noise of %g", noise) << noise;
    }
    void elementsOfAStrongSignalAreThoseOfAWeakOne()
    {
        QFETCH(double, noise);
        Heard heard(20.0);
        heard.likelihood.setLevel({1.0, noise});
        const double deviation = std::sqrt(0.5 * noise);
        const auto add = [&](bool mark, int steps) {
            for (int n = 0; n < steps; ++n) {
                heard.likelihood.push({(mark ? 1.0 : 0.0) + deviation * heard.random.gauss(),
                                       deviation * heard.random.gauss()});
                heard.trellis.advance();
            }
        };
        add(false, 50);
        for (const int steps : {15, 45, 15, 15, 45}) {
            add(true, steps);
            add(false, 15);
        }
        add(false, 150);
        QCOMPARE(heard.kinds(), std::string("._-_._._- "));
    }
    void theLastSegmentGoesOn()
    {
        Heard heard(20.0);
        heard.add(false, 50);
        heard.add(true, 15);
        heard.add(false, 15);
        heard.add(true, 15);
        heard.add(false, 60);
        const Path path = heard.trellis.path(0);
        QVERIFY(!path.segments.empty());
        QVERIFY(!isMark(path.segments.back().kind));
        QCOMPARE(path.segments.back().end_step, std::int64_t(155));
        QVERIFY(std::abs(path.segments.back().begin_step - 95) <= 2);
    }
};

QTEST_APPLESS_MAIN(tst_Trellis)
#include "tst_trellis.moc"
