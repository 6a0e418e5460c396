// SPDX-License-Identifier: MIT
#include "signal/morse/heldcodes.h"

#include <QStringList>
#include <QtTest>

using namespace demodulator;

namespace {

struct Calls : SymbolSink, Observer
{
    void transmissionStarted(std::int64_t time_us) override
    {
        calls += QStringLiteral("started %1").arg(time_us);
    }
    void symbol(int code, std::int64_t time_us) override
    {
        calls += QStringLiteral("code %1 %2").arg(code).arg(time_us);
    }
    void transmissionStopped(std::int64_t time_us, const SignalReport& report) override
    {
        calls += QStringLiteral("stopped %1 %2").arg(time_us).arg(report.tone_Hz);
    }
    void sound(const float*, std::size_t count, double) override
    {
        calls += QStringLiteral("sound %1").arg(count);
    }
    void step(const FollowedStep& step) override
    {
        calls += QStringLiteral("step %1").arg(step.time_us);
    }
    void mark(std::int64_t begin_us, std::int64_t end_us, double) override
    {
        calls += QStringLiteral("mark %1 %2").arg(begin_us).arg(end_us);
    }

    QStringList calls;
};

void hearAMark(HeldCodes& codes)
{
    codes.mark(1, 2, 3.0);
    codes.transmissionStarted(1);
    codes.symbol(0, 2);
    codes.transmissionStopped(2, {700.0, 20.0, 10.0});
}

const QStringList MARK = {"mark 1 2", "started 1", "code 0 2", "stopped 2 700"};

} // namespace

class tst_HeldCodes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatIsNotHeldIsHandedOnAtOnce()
    {
        Calls next;
        HeldCodes codes(next, &next);
        hearAMark(codes);
        QCOMPARE(next.calls, MARK);
        QVERIFY(!codes.isHeld());
    }
    void whatIsHeldWaitsInItsOrder()
    {
        Calls next;
        HeldCodes codes(next, &next);
        codes.hold();
        hearAMark(codes);
        QVERIFY(next.calls.isEmpty());
        codes.release();
        QCOMPARE(next.calls, MARK);
        hearAMark(codes);
        QCOMPARE(next.calls, MARK + MARK);
    }
    void whatIsDroppedIsNeverHeardOf()
    {
        Calls next;
        HeldCodes codes(next, &next);
        codes.hold();
        hearAMark(codes);
        codes.drop();
        QVERIFY(codes.isHeld());
        codes.symbol(1, 9);
        codes.release();
        QCOMPARE(next.calls, QStringList("code 1 9"));
    }
    void soundAndStepsDoNotWait()
    {
        Calls next;
        HeldCodes codes(next, &next);
        codes.hold();
        codes.sound(nullptr, 5, 8000.0);
        FollowedStep step = {};
        step.time_us = 7;
        codes.step(step);
        QCOMPARE(next.calls, QStringList({"sound 5", "step 7"}));
    }
    void thereNeedNotBeAnObserver()
    {
        Calls next;
        HeldCodes codes(next);
        codes.sound(nullptr, 5, 8000.0);
        codes.step({});
        hearAMark(codes);
        QCOMPARE(next.calls, MARK.mid(1));
    }
};

QTEST_APPLESS_MAIN(tst_HeldCodes)
#include "tst_heldcodes.moc"
