// SPDX-License-Identifier: MIT
#include "signal/band/stationchange.h"

#include "support/random.h"

#include <QTest>

using demodulator::StationChange;
using demodulator::StationMark;
using testsupport::Random;

Q_DECLARE_METATYPE(StationChange::Verdict)

namespace {

constexpr double STEP_s = 0.004;
constexpr std::int64_t UNIT_steps = 12; // 25 wpm

struct Sender
{
    double tone_Hz;
    double level_dB;
    double toneError_Hz = 0.5; // deviation, of a dash
    double levelError_dB = 0.5;
};

} // namespace

class tst_StationChange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherStationIsKnownByToneAndLevel_data()
    {
        using Verdict = StationChange::Verdict;
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<double>("level_dB");
        QTest::addColumn<double>("toneError_Hz");
        QTest::addColumn<double>("pause_units");
        QTest::addColumn<Verdict>("expected");
        QTest::newRow("the same goes on") << 700.0 << 20.0 << 0.5 << 7.0 << Verdict::Same;
        QTest::newRow("2 Hz beside is the same") << 702.0 << 20.0 << 0.5 << 7.0 << Verdict::Same;
        QTest::newRow("12 Hz above") << 712.0 << 20.0 << 0.5 << 7.0 << Verdict::Other;
        QTest::newRow("12 Hz below") << 688.0 << 20.0 << 0.5 << 7.0 << Verdict::Other;
        QTest::newRow("12 Hz above, but tones are hardly known")
            << 712.0 << 20.0 << 12.0 << 7.0 << Verdict::Same;
        QTest::newRow("3 dB weaker is fading") << 700.0 << 17.0 << 0.5 << 7.0 << Verdict::Same;
        QTest::newRow("10 dB weaker") << 700.0 << 10.0 << 0.5 << 7.0 << Verdict::Other;
        QTest::newRow("10 dB stronger") << 700.0 << 30.0 << 0.5 << 7.0 << Verdict::Other;
        QTest::newRow("12 Hz above after a gap between characters")
            << 712.0 << 20.0 << 0.5 << 3.0 << Verdict::Same;
    }
    void anotherStationIsKnownByToneAndLevel()
    {
        QFETCH(double, tone_Hz);
        QFETCH(double, level_dB);
        QFETCH(double, toneError_Hz);
        QFETCH(double, pause_units);
        QFETCH(StationChange::Verdict, expected);
        StationChange change(STEP_s);
        add(change, {700.0, 20.0, toneError_Hz}, 12, 7.0);
        const std::int64_t last = m_at;
        const StationChange::Verdict verdict =
            add(change, {tone_Hz, level_dB, toneError_Hz}, 4, pause_units);
        QCOMPARE(verdict, expected);
        if (expected == StationChange::Verdict::Other) {
            QCOMPARE(change.lastOwn_step(), last);
            QVERIFY(change.others().front().begin_step > last);
            QCOMPARE(change.own().size(), std::size_t(12));
        } else {
            QVERIFY(change.others().empty());
        }
    }

    void nothingIsSaidBeforeFourMarks()
    {
        StationChange change(STEP_s);
        add(change, {700.0, 20.0}, 12, 7.0);
        QCOMPARE(add(change, {720.0, 20.0}, 3, 7.0), StationChange::Verdict::Waiting);
        QCOMPARE(add(change, {720.0, 20.0}, 1, 1.0), StationChange::Verdict::Other);
    }

    // The first words of a station are not enough to recognise another one.
    void fewMarksAreNoStation()
    {
        StationChange change(STEP_s);
        add(change, {700.0, 20.0}, 3, 7.0);
        QCOMPARE(add(change, {720.0, 20.0}, 4, 7.0), StationChange::Verdict::Same);
    }

    void aShortAnswerIsJudgedAtTheNextPause()
    {
        StationChange change(STEP_s);
        add(change, {700.0, 20.0}, 12, 7.0);
        const std::int64_t last = m_at;
        QCOMPARE(add(change, {720.0, 20.0}, 3, 7.0), StationChange::Verdict::Waiting);
        QCOMPARE(add(change, {700.0, 20.0}, 1, 7.0), StationChange::Verdict::Other);
        QCOMPARE(change.lastOwn_step(), last);
        QCOMPARE(change.others().size(), std::size_t(3));
    }

    void whatIsLeftIsJudgedAtTheEnd()
    {
        StationChange change(STEP_s);
        add(change, {700.0, 20.0}, 12, 7.0);
        QCOMPARE(change.decide(), StationChange::Verdict::Same);
        add(change, {720.0, 20.0}, 2, 7.0);
        QCOMPARE(change.decide(), StationChange::Verdict::Other);
    }

private:
    // So many marks of a station, after a pause; the last verdict.
    StationChange::Verdict add(StationChange& change, const Sender& sender, int count,
                               double pause_units)
    {
        auto verdict = StationChange::Verdict::Same;
        m_at += static_cast<std::int64_t>(pause_units * UNIT_steps);
        for (int i = 0; i < count; ++i) {
            const bool dash = i % 2 != 0;
            const std::int64_t end = m_at + (dash ? 3 : 1) * UNIT_steps;
            const double error = dash ? 1.0 : 5.0; // a third of the length
            const double tone_Hz = sender.tone_Hz + sender.toneError_Hz * error * m_random.gauss();
            const double level_dB = sender.level_dB + sender.levelError_dB * m_random.gauss();
            verdict = change.add({m_at, end, tone_Hz, std::pow(10.0, 0.1 * level_dB),
                                  static_cast<double>(UNIT_steps)});
            m_at = i + 1 < count ? end + UNIT_steps : end;
        }
        return verdict;
    }

    Random m_random = Random("stations");
    std::int64_t m_at = 0;
};

QTEST_APPLESS_MAIN(tst_StationChange)
#include "tst_stationchange.moc"
