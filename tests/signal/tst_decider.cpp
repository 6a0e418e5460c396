// SPDX-License-Identifier: MIT
#include "signal/morse/decider.h"

#include "signal/timing.h"
#include "support/codelist.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double UNIT_steps = 15.0;

// "-." whose last gap goes on.
Path path(std::int64_t until)
{
    return {{{Kind::Dash, 10, 55, UNIT_steps},
             {Kind::ElementGap, 55, 70, UNIT_steps},
             {Kind::Dot, 70, 85, UNIT_steps},
             {Kind::Silence, 85, until, UNIT_steps}},
            100.0,
            100.0,
            true};
}

struct Deciding
{
    testsupport::CodeList list;
    TimingModel timing{STEP_s, {}};
    Classifier classifier{list};
    Decider decider{timing, classifier, {}, STEP_s, 1000};

    void emitUntil(const Path& path, std::int64_t now, std::int64_t until,
                   std::vector<bool> isForeign = {})
    {
        isForeign.resize(path.segments.size());
        decider.emitUntil(path, isForeign, now, until, {700.0, 100.0, 1000.0});
    }
    std::vector<int> codes() const { return list.codes(); }
};

} // namespace

class tst_Decider : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void onlyWhatIsOldEnoughIsGiven()
    {
        Deciding deciding;
        deciding.emitUntil(path(100), 100, 54);
        QCOMPARE(deciding.codes(), std::vector<int>());
        deciding.emitUntil(path(100), 100, 55);
        QCOMPARE(deciding.codes(), std::vector<int>({1}));
        QCOMPARE(deciding.decider.emitted_step(), std::int64_t(55));
        deciding.emitUntil(path(100), 100, 100);
        QCOMPARE(deciding.codes(), std::vector<int>({1, 0}));
    }
    void nothingIsGivenTwiceThoughItsEdgesMove()
    {
        Deciding deciding;
        deciding.emitUntil(path(100), 100, 60);
        Path moved = path(100);
        moved.segments[0].end_step = 57;
        moved.segments[1].begin_step = 57;
        deciding.emitUntil(moved, 100, 60);
        QCOMPARE(deciding.codes(), std::vector<int>({1}));
    }
    void aMarkThatGoesOnIsNotGiven()
    {
        Deciding deciding;
        Path open = path(100);
        open.segments.pop_back();
        deciding.emitUntil(open, 100, 100);
        QCOMPARE(deciding.codes(), std::vector<int>({1}));
    }
    void theGapThatGoesOnEndsCharacterWordAndTransmission()
    {
        Deciding deciding;
        deciding.emitUntil(path(110), 110, 110);
        QCOMPARE(deciding.codes(), std::vector<int>({1, 0}));
        deciding.emitUntil(path(85 + 2 * 15 + 2), 117, 117);
        QCOMPARE(deciding.codes(), std::vector<int>({1, 0, 3}));
        deciding.emitUntil(path(85 + 5 * 15 + 3), 163, 163);
        QCOMPARE(deciding.codes(), std::vector<int>({1, 0, 3, 4}));
        deciding.emitUntil(path(85 + 751), 836, 836);
        QVERIFY(!deciding.classifier.active());
    }
    void someoneElsesMarksAreLeftOut()
    {
        Deciding deciding;
        deciding.emitUntil(path(100), 100, 100, {false, false, true, false});
        QCOMPARE(deciding.codes(), std::vector<int>({1}));
    }
    void timesAreThoseOfTheSound()
    {
        Deciding deciding;
        deciding.emitUntil(path(100), 100, 60);
        QCOMPARE(deciding.list.transmissions[0].start_us, std::int64_t(4038000));
        QCOMPARE(deciding.list.transmissions[0].times_us[0], std::int64_t(4218000));
    }
    void whatIsGivenIsLearntFrom()
    {
        Deciding deciding;
        Path long_;
        std::int64_t at = 10;
        for (int i = 0; i < 30; ++i) { // dashes of 4 units
            long_.segments.push_back({Kind::Dash, at, at + 60, UNIT_steps});
            long_.segments.push_back({Kind::ElementGap, at + 60, at + 75, UNIT_steps});
            at += 75;
        }
        deciding.emitUntil(long_, at, at);
        QVERIFY2(deciding.timing.mean(Kind::Dash) > 3.3,
                 QByteArray::number(deciding.timing.mean(Kind::Dash)).constData());
        // Somebody else keys now: nothing of that is believed of him.
        Path other;
        other.segments = {{Kind::Dash, at + 100, at + 130, 10.0},
                          {Kind::Silence, at + 130, at + 150, 10.0}};
        deciding.emitUntil(other, at + 300, at + 300);
        QVERIFY(std::fabs(deciding.timing.mean(Kind::Dash) - 3.0) < 0.1);
    }
};

QTEST_APPLESS_MAIN(tst_Decider)
#include "tst_decider.moc"
