// SPDX-License-Identifier: MIT
#include "signal/morse/pathmemory.h"

#include <QtTest>

using namespace demodulator;

namespace {

// A memory in which one path keys at one speed: marks and gaps of `length` steps each, as long as a
// dot, from step `first` on.
struct Keyed
{
    static constexpr int LENGTH = 15;
    static constexpr std::int64_t FIRST = 40;

    void advance(std::int64_t until)
    {
        while (now < until) {
            memory.begin(++now);
            if (now == FIRST)
                memory.endGap(SPEED, PathMemory::ofBeginning());
            if (now > FIRST && (now - FIRST) % LENGTH == 0) {
                const bool isMark = (now - FIRST) / LENGTH % 2 == 1;
                if (isMark)
                    memory.endMark(SPEED, PathMemory::ofMark(LENGTH));
                else
                    memory.endGap(SPEED, PathMemory::ofGap(0, LENGTH));
                last = {isMark, static_cast<Speed>(SPEED), now};
            }
            if (now % PathMemory::TRUNK_STEPS == 0 && isTrunkRenewed)
                memory.renewTrunk({last});
        }
    }
    static constexpr std::size_t SPEED = 24; // 20 words a minute, of the speeds that are tried

    TimingModel timing{0.004, {}};
    PathMemory memory{timing};
    std::int64_t now = -1;
    Place last;
    bool isTrunkRenewed = true;
};

} // namespace

class tst_PathMemory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aPathIsFollowedBackToItsBeginning_data()
    {
        QTest::addColumn<int>("segments");
        QTest::newRow("what is still remembered of all paths") << 20;
        QTest::newRow("what is remembered of the trunk alone") << 120;
    }
    void aPathIsFollowedBackToItsBeginning()
    {
        QFETCH(int, segments);
        Keyed keyed;
        keyed.advance(Keyed::FIRST + segments * Keyed::LENGTH);
        const std::vector<Piece> pieces = keyed.memory.trace(keyed.last, 0);
        QCOMPARE(pieces.size(), static_cast<std::size_t>(segments + 1));
        std::int64_t end = keyed.last.step;
        for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
            QCOMPARE(pieces[i].end.step, end);
            QCOMPARE(pieces[i].begin.step, end - Keyed::LENGTH);
            QCOMPARE(pieces[i].kind, pieces[i].end.mark ? Kind::Dot : Kind::ElementGap);
            QVERIFY(pieces[i].begin.mark != pieces[i].end.mark);
            QVERIFY(!pieces[i].first);
            end -= Keyed::LENGTH;
        }
        QVERIFY(pieces.back().first);
        QCOMPARE(pieces.back().end.step, Keyed::FIRST);
    }
    void aPathIsFollowedNoFurtherThanAskedFor()
    {
        Keyed keyed;
        keyed.advance(Keyed::FIRST + 20 * Keyed::LENGTH);
        const std::vector<Piece> pieces =
            keyed.memory.trace(keyed.last, keyed.last.step - 2 * Keyed::LENGTH);
        QCOMPARE(pieces.size(), std::size_t(2));
        QVERIFY(keyed.memory.trace(keyed.last, keyed.last.step).empty());
    }
    void whatIsOnNoTrunkIsForgotten()
    {
        Keyed keyed;
        keyed.isTrunkRenewed = false;
        keyed.advance(Keyed::FIRST + 120 * Keyed::LENGTH);
        const std::vector<Piece> pieces = keyed.memory.trace(keyed.last, 0);
        QVERIFY(pieces.size() > 30);
        QVERIFY(pieces.size() < 40);
        QVERIFY(!pieces.back().first);
    }
    void aPathEndsWhereNothingEnded()
    {
        Keyed keyed;
        keyed.advance(Keyed::FIRST + 20 * Keyed::LENGTH + 3);
        Place place = keyed.last;
        place.step += 2;
        QVERIFY(keyed.memory.trace(place, 0).empty());
        place = keyed.last;
        place.speed = 25;
        QVERIFY(keyed.memory.trace(place, 0).empty());
        place = keyed.last;
        place.mark = !place.mark;
        QVERIFY(keyed.memory.trace(place, 0).empty());
    }
    void whatEndedLongAgoIsNotTakenForWhatEndsNow()
    {
        Keyed keyed;
        keyed.advance(100);
        keyed.memory.endMark(5, PathMemory::ofMark(Keyed::LENGTH));
        keyed.memory.endGap(5, PathMemory::ofGap(0, Keyed::LENGTH));
        while (keyed.now < 1300) {
            keyed.advance(keyed.now + 1);
            QVERIFY(keyed.memory.trace({true, 5, keyed.now}, 0).empty());
            QVERIFY(keyed.memory.trace({false, 5, keyed.now}, 0).empty());
        }
    }
    void speedsDoNotDisturbEachOther()
    {
        TimingModel timing(0.004, {});
        PathMemory memory(timing);
        const auto lengthAt = [](std::size_t speed) { return 10 + static_cast<int>(speed); };
        constexpr std::int64_t STEPS = 1100;
        for (std::int64_t step = 0; step <= STEPS; ++step) {
            memory.begin(step);
            for (std::size_t speed = 0; speed < timing.speeds(); ++speed)
                memory.endMark(speed, PathMemory::ofMark(lengthAt(speed)));
        }
        for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
            for (std::int64_t step = STEPS - 500; step <= STEPS; ++step) {
                const std::vector<Piece> pieces =
                    memory.trace({true, static_cast<Speed>(speed), step}, step - 1);
                QCOMPARE(pieces.size(), std::size_t(1));
                QCOMPARE(pieces[0].begin.step, step - lengthAt(speed));
            }
        }
    }
    void aGapMayBeOfAnotherSpeed()
    {
        Keyed keyed;
        keyed.advance(5 * Keyed::LENGTH);
        for (const int offset : {-2, -1, 0, 1, 2}) {
            keyed.memory.endGap(10, PathMemory::ofGap(offset, Keyed::LENGTH));
            const std::vector<Piece> pieces = keyed.memory.trace({false, 10, keyed.now}, 40);
            QCOMPARE(pieces.size(), std::size_t(1));
            QVERIFY(pieces[0].begin.mark);
            QCOMPARE(int(pieces[0].begin.speed), 10 + offset);
            QCOMPARE(pieces[0].begin.step, keyed.now - Keyed::LENGTH);
        }
    }
    void aCarrierIsAMarkOfAnyLength()
    {
        Keyed keyed;
        keyed.advance(1500);
        keyed.memory.endMark(24, PathMemory::ofCarrier(1100));
        const std::vector<Piece> pieces = keyed.memory.trace({true, 24, keyed.now}, 1000);
        QCOMPARE(pieces.size(), std::size_t(1));
        QCOMPARE(pieces[0].kind, Kind::Carrier);
        QCOMPARE(pieces[0].begin.step, std::int64_t(400));
    }
    void lengthsOfMarksAndGapsShowTheirKind()
    {
        Keyed keyed;
        keyed.advance(600);
        keyed.memory.endMark(24, PathMemory::ofMark(3 * Keyed::LENGTH));
        keyed.memory.endGap(24, PathMemory::ofGap(0, 7 * Keyed::LENGTH));
        QCOMPARE(keyed.memory.trace({true, 24, 600}, 590)[0].kind, Kind::Dash);
        QCOMPARE(keyed.memory.trace({false, 24, 600}, 590)[0].kind, Kind::WordGap);
    }
    void aPathGoesOnAfterTheSilenceOfItsTime()
    {
        Keyed keyed;
        keyed.advance(100);
        keyed.memory.rest({0, 50, 7, 90});
        keyed.advance(200);
        keyed.memory.rest({0, 60, 5, 160});
        QCOMPARE(keyed.memory.idle().score, Total(60));
        QCOMPARE(keyed.memory.idle().since_step, std::int64_t(200));
        keyed.memory.rest({0, 60, 4, 170}); // no better
        QCOMPARE(int(keyed.memory.idle().speed), 5);
        keyed.advance(300);
        keyed.memory.endGap(9, PathMemory::ofSilence());
        QCOMPARE(keyed.memory.trace({false, 9, 300}, 290)[0].begin.step, std::int64_t(160));
        // What follows the first silence does not change when there is a better one.
        Keyed early;
        early.advance(100);
        early.memory.rest({0, 50, 7, 90});
        early.advance(150);
        early.memory.endGap(9, PathMemory::ofSilence());
        early.memory.endGap(11, PathMemory::ofBeginning());
        early.advance(200);
        early.memory.rest({0, 60, 5, 160});
        const Piece piece = early.memory.trace({false, 9, 150}, 140)[0];
        QCOMPARE(piece.begin.step, std::int64_t(90));
        QCOMPARE(int(piece.begin.speed), 7);
        QVERIFY(piece.begin.mark);
        QCOMPARE(piece.kind, Kind::Silence);
        QCOMPARE(early.memory.trace({false, 11, 150}, 140)[0].silence, Total(50));
    }
    void aPathBeginsOutOfTheSilenceOfItsTime()
    {
        Keyed keyed;
        keyed.isTrunkRenewed = false;
        for (int i = 1; i <= 60; ++i) {
            keyed.advance(i * 100);
            keyed.memory.rest({0, i, 7, i * 100 - 20});
        }
        keyed.memory.endGap(3, PathMemory::ofBeginning());
        keyed.memory.renewTrunk({{false, 3, keyed.now}});
        QCOMPARE(keyed.memory.trace({false, 3, keyed.now}, 0)[0].silence, Total(60));
        // Of a silence since ever, before the first.
        Keyed none;
        none.advance(40);
        QCOMPARE(int(none.memory.idle().speed), -1);
        QCOMPARE(none.memory.trace({false, 24, 40}, 0)[0].silence, Total(0));
    }
};

QTEST_APPLESS_MAIN(tst_PathMemory)
#include "tst_pathmemory.moc"
