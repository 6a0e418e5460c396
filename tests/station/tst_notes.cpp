// SPDX-License-Identifier: MIT
#include "station/picture/notes.h"

#include "support/codelist.h"
#include "support/keyer.h"

#include <QtTest>

using namespace inspect;

namespace {

constexpr double RATE_HZ = 8000.0;
const char* const TEXT = "VVV DE AB1C = PARIS 5NN K";

std::vector<float> sounds(const char* text, std::optional<double> snr_dB)
{
    testsupport::Path path;
    path.snr_dB = snr_dB;
    path.after_s = 5.0;
    return testsupport::sound(text, testsupport::Hand(), path, RATE_HZ, "notes");
}

// Both to the notes and to a list that knows nothing of them.
class Both : public demodulator::SymbolSink
{
public:
    explicit Both(Notes& notes)
        : m_notes(notes)
    {
    }
    void transmissionStarted(std::int64_t time_us) override
    {
        list.transmissionStarted(time_us);
        m_notes.transmissionStarted(time_us);
    }
    void symbol(int code, std::int64_t time_us) override
    {
        list.symbol(code, time_us);
        m_notes.symbol(code, time_us);
    }
    void transmissionStopped(std::int64_t time_us, const demodulator::SignalReport& report) override
    {
        list.transmissionStopped(time_us, report);
        m_notes.transmissionStopped(time_us, report);
    }

    testsupport::CodeList list;

private:
    Notes& m_notes;
};

testsupport::CodeList demodulate(const std::vector<float>& samples, Notes& notes)
{
    Both both(notes);
    demodulator::Demodulator demodulator({RATE_HZ, {}, {}}, both, &notes);
    demodulator.push(samples.data(), samples.size());
    demodulator.finish();
    return both.list;
}

std::int64_t duration_us(const std::vector<float>& samples)
{
    return static_cast<std::int64_t>(1e6 * static_cast<double>(samples.size()) / RATE_HZ);
}

} // namespace

class tst_Notes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anObserverChangesNothing()
    {
        const std::vector<float> samples = sounds(TEXT, 0.0);
        Notes notes({0, duration_us(samples)});
        const testsupport::CodeList seen = demodulate(samples, notes);
        const testsupport::CodeList alone = testsupport::decodeAll(samples, RATE_HZ);
        QVERIFY(!alone.transmissions.empty());
        QCOMPARE(seen.codes(), alone.codes());
        QCOMPARE(seen.transmissions[0].times_us, alone.transmissions[0].times_us);
    }

    void marksAndGapsAreThoseOfTheCodes()
    {
        const std::vector<float> samples = sounds(TEXT, 20.0);
        Notes notes({0, duration_us(samples)});
        const testsupport::CodeList list = demodulate(samples, notes);
        QCOMPARE(list.transmissions.size(), std::size_t(1));
        const testsupport::Transmission& transmission = list.transmissions.front();
        const Seen& seen = notes.seen();
        QCOMPARE(seen.transmissions.size(), std::size_t(1));
        QCOMPARE(seen.transmissions[0].begin_us, transmission.start_us);
        QCOMPARE(*seen.transmissions[0].end_us, transmission.stop_us);
        QCOMPARE(seen.marks.front().begin_us, transmission.start_us);
        QCOMPARE(seen.marks.back().end_us, transmission.stop_us);
        std::size_t mark = 0;
        for (std::size_t i = 0; i < transmission.codes.size(); ++i) {
            const int code = transmission.codes[i];
            if (code == 0 || code == 1) {
                QVERIFY(mark < seen.marks.size());
                QCOMPARE(seen.marks[mark].kind, code == 0 ? MarkKind::Dot : MarkKind::Dash);
                QCOMPARE(seen.marks[mark].end_us, transmission.times_us[i]);
                QVERIFY(seen.marks[mark].begin_us < seen.marks[mark].end_us);
                ++mark;
            } else {
                QVERIFY(mark > 0);
                const Gap& gap = seen.gaps.at(mark - 1);
                QCOMPARE(gap.begin_us, transmission.times_us[i]);
                QVERIFY(code == 4 ? gap.kind == GapKind::Word : gap.kind != GapKind::Inner);
            }
        }
        QCOMPARE(mark, seen.marks.size());
        for (std::size_t i = 0; i + 1 < seen.marks.size(); ++i)
            QCOMPARE(seen.gaps[i].end_us, seen.marks[i + 1].begin_us);
        const auto of = [&](GapKind kind) {
            return std::count_if(seen.gaps.begin(), seen.gaps.end(),
                                 [kind](const Gap& gap) { return gap.kind == kind; });
        };
        const auto gaps = [&](int code) {
            return std::count(transmission.codes.begin(), transmission.codes.end(), code);
        };
        QCOMPARE(of(GapKind::Word), gaps(4));
        QCOMPARE(of(GapKind::Character), gaps(3) - gaps(4));
        QVERIFY(seen.gaps.back().open);
    }

    void charactersSpanTheirMarks()
    {
        const std::vector<float> samples = sounds("AN", 20.0);
        Notes notes({0, duration_us(samples)});
        demodulate(samples, notes);
        const Seen& seen = notes.seen();
        QCOMPARE(seen.characters.size(), std::size_t(2));
        QCOMPARE(seen.characters[0].elements, QStringLiteral(".-"));
        QCOMPARE(seen.characters[0].begin_us, seen.marks[0].begin_us);
        QCOMPARE(seen.characters[0].end_us, seen.marks[1].end_us);
        QCOMPARE(seen.characters[1].elements, QStringLiteral("-."));
        QCOMPARE(seen.characters[1].begin_us, seen.marks[2].begin_us);
    }

    void textBelongsToTheCharacterThatEnded()
    {
        Notes notes({0, 10000000});
        notes.mark(0, 100, 100);
        notes.transmissionStarted(0);
        notes.symbol(0, 100);
        notes.symbol(3, 100);
        notes.text("E");
        notes.symbol(4, 100);
        notes.text(" ");
        notes.mark(800, 1100, 100);
        notes.symbol(1, 1100);
        notes.symbol(3, 1100);
        notes.text("");
        notes.transmissionStopped(1100, {});
        QCOMPARE(notes.seen().characters.size(), std::size_t(2));
        QCOMPARE(notes.seen().characters[0].text, QStringLiteral("E"));
        QCOMPARE(notes.seen().characters[1].text, QString());
        QCOMPARE(notes.seen().gaps[0].kind, GapKind::Word);
        QCOMPARE(notes.seen().gaps[1].kind, GapKind::Character);
        QCOMPARE(notes.seen().gaps[1].end_us, 1100 + 300);
    }

    void complaintsBelongToTheirMarks()
    {
        Notes notes({0, 10000000});
        notes.mark(0, 40, 100);
        notes.transmissionStarted(0);
        notes.symbol(0, 40);
        notes.symbol(64, 40);
        notes.mark(60, 660, 100);
        notes.symbol(66, 60);
        notes.symbol(1, 660);
        notes.symbol(65, 660);
        notes.mark(760, 2760, 100);
        notes.symbol(65, 2760);
        notes.transmissionStopped(2760, {});
        const std::vector<Mark>& marks = notes.seen().marks;
        QCOMPARE(marks.size(), std::size_t(3));
        QVERIFY(marks[0].tooShort && !marks[0].tooLong && !marks[0].tooSoon);
        QVERIFY(!marks[1].tooShort && marks[1].tooLong && marks[1].tooSoon);
        QCOMPARE(marks[2].kind, MarkKind::Carrier);
        QVERIFY(marks[2].tooLong);
    }

    void codesWithoutAMarkAreSurvived()
    {
        Notes notes({0, 1000});
        for (const int code : {0, 1, 3, 4, 5, 64, 65, 66, -1, 99})
            notes.symbol(code, 0);
        notes.text("X");
        notes.transmissionStarted(0);
        notes.transmissionStopped(0, {});
        QVERIFY(notes.seen().marks.empty() && notes.seen().characters.empty());
    }

    void onlyTheStretchIsKept()
    {
        const std::vector<float> samples = sounds(TEXT, 20.0);
        const Stretch stretch = {5000000, 8000000};
        Notes notes(stretch);
        Notes all({0, duration_us(samples)});
        demodulate(samples, notes);
        demodulate(samples, all);
        const Seen& seen = notes.seen();
        QVERIFY(seen.marks.size() > 5 && seen.marks.size() < all.seen().marks.size() / 2);
        for (const Mark& mark : seen.marks)
            QVERIFY(mark.end_us > stretch.from_us && mark.begin_us < stretch.to_us);
        QVERIFY(seen.steps.front().time_us >= stretch.from_us);
        QVERIFY(seen.steps.back().time_us < stretch.to_us);
        QVERIFY(seen.steps.size() > 740 && seen.steps.size() < 760); // 3 s of 4 ms
        QCOMPARE(seen.firstSample, static_cast<std::int64_t>(4.9 * RATE_HZ));
        QCOMPARE(seen.samples.size(), static_cast<std::size_t>(3.2 * RATE_HZ));
        const auto first = samples.begin() + static_cast<std::ptrdiff_t>(4.9 * RATE_HZ);
        QVERIFY(std::equal(seen.samples.begin(), seen.samples.end(), first));
    }

    void whatIsForgottenLeavesWhatAStretchThatBeginsThenHas()
    {
        const std::vector<float> samples = sounds(TEXT, 20.0);
        Notes notes({0, 8000000});
        demodulate(samples, notes);
        notes.forgetBefore(3000000);
        notes.forgetBefore(5000000);
        notes.forgetBefore(4000000); // is forgotten already
        Notes wanted({5000000, 8000000});
        demodulate(samples, wanted);
        const Seen& seen = notes.seen();
        QCOMPARE(seen.stretch.from_us, wanted.seen().stretch.from_us);
        QCOMPARE(seen.firstSample, wanted.seen().firstSample);
        QCOMPARE(seen.samples, wanted.seen().samples);
        QCOMPARE(seen.steps.size(), wanted.seen().steps.size());
        QCOMPARE(seen.steps.front().time_us, wanted.seen().steps.front().time_us);
        QCOMPARE(seen.marks.size(), wanted.seen().marks.size());
        QCOMPARE(seen.marks.front().begin_us, wanted.seen().marks.front().begin_us);
        QCOMPARE(seen.gaps.size(), wanted.seen().gaps.size());
        QCOMPARE(seen.characters.size(), wanted.seen().characters.size());
    }

    void stepsThatBeginInThePastReplaceWhatWasThere()
    {
        Notes notes({0, 1000000});
        for (const std::int64_t time_us : {4000, 8000, 12000})
            notes.step({time_us, 600.0, 0.1, {}});
        for (const std::int64_t time_us : {8000, 12000, 16000})
            notes.step({time_us, 700.0, 0.1, {}});
        QCOMPARE(notes.seen().steps.size(), std::size_t(4));
        QCOMPARE(notes.seen().steps[0].tone_Hz, 600.0);
        QCOMPARE(notes.seen().steps[1].tone_Hz, 700.0);
    }

    void theToneAndTheLevelAreFollowed()
    {
        const std::vector<float> samples = sounds(TEXT, 20.0);
        Notes notes({0, duration_us(samples)});
        demodulate(samples, notes);
        const demodulator::FollowedStep& step = notes.seen().steps[2000];
        QVERIFY(std::fabs(step.tone_Hz - 700.0) < 3.0);
        // The level is the square of half the amplitude; even odds lie between nothing and it.
        const double level = std::sqrt(step.level.signal);
        QVERIFY(level > 0.15 && level < 0.45);
        const double even = evenMagnitude(step.level);
        QVERIFY2(even > 0.2 * level && even < 0.8 * level, qPrintable(QString::number(even)));
    }
};

QTEST_APPLESS_MAIN(tst_Notes)
#include "tst_notes.moc"
