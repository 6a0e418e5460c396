// SPDX-License-Identifier: MIT
// Each loop against the same sum written plainly.
#include "signal/morse/innerloops.h"

#include "support/random.h"

#include <QtTest>
#include <cmath>
#include <complex>

using namespace demodulator;

namespace {

std::vector<Score> scores(testsupport::Random& random, std::size_t count)
{
    std::vector<Score> result;
    for (std::size_t i = 0; i < count; ++i) {
        const auto score = static_cast<Score>(-std::fabs(2000.0 * random.gauss()));
        result.push_back(random.uniform() < 0.3 ? NEVER : std::max(NEVER, score));
    }
    return result;
}

} // namespace

class tst_InnerLoops : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aPeakIsTheFirstOfTheLargest()
    {
        testsupport::Random random("peaks");
        for (int round = 0; round < 300; ++round) {
            const std::size_t count = LANES * (1 + static_cast<std::size_t>(round) % 12);
            std::vector<Score> a = scores(random, count);
            const std::vector<Score> b = scores(random, count);
            const std::vector<Score> c = scores(random, count);
            if (round % 3 == 0)
                std::fill(a.begin(), a.end(), round % 2 == 0 ? Score(0) : NEVER); // many alike
            const std::uint64_t groups =
                0b111110011001 & ((std::uint64_t{1} << (count / LANES)) - 1);
            Peak expected;
            for (std::size_t i = 0; i < count; ++i) {
                if ((groups >> (i / LANES) & 1) != 0 && a[i] > NEVER &&
                    a[i] + b[i] + c[i] > expected.score)
                    expected = {a[i] + b[i] + c[i], i};
            }
            const SummedRow rows[] = {{c.data(), a.data(), 0}, {a.data(), c.data(), groups}};
            Peak peaks[2];
            peaksOfSums(rows, 2, b.data(), peaks);
            QCOMPARE(peaks[0].score, int(NEVER));
            const Peak peak = peaks[1];
            QCOMPARE(peak.score, expected.score);
            QCOMPARE(peak.index, expected.index);
        }
    }
    void sumsOfExtremesDoNotRunOver()
    {
        const std::vector<Score> never(LANES, NEVER);
        const std::vector<Score> most(LANES, MOST_SCORE);
        const std::vector<Score> zero(LANES, 0);
        const SummedRow rows[] = {{never.data(), never.data(), 1}, {zero.data(), zero.data(), 1}};
        Peak peaks[2];
        peaksOfSums(rows, 2, never.data(), peaks);
        QCOMPARE(peaks[0].score, int(NEVER));
        peaksOfSums(rows, 2, most.data(), peaks);
        QCOMPARE(peaks[0].score, int(NEVER)); // strong evidence makes no path where there was none
        QCOMPARE(peaks[1].score, int(MOST_SCORE));
    }
    void aMarkBeginsAfterTheBestGapAtItsSpeedOrBesideIt()
    {
        testsupport::Random random("neighbours");
        constexpr int NEIGHBOURS = 2;
        const std::int32_t changes[] = {0, -300, -700};
        for (std::size_t speeds = 1; speeds < 60; ++speeds) {
            std::vector<std::int32_t> gaps(speeds + 2 * NEIGHBOURS, NEVER);
            std::vector<std::int32_t> best(speeds);
            for (std::size_t speed = 0; speed < speeds; ++speed) {
                gaps[speed + NEIGHBOURS] =
                    random.uniform() < 0.3 ? NEVER : static_cast<int>(1000.0 * random.gauss());
                best[speed] = static_cast<int>(1000.0 * random.gauss());
            }
            std::vector<std::int32_t> expected = best;
            std::vector<std::int32_t> expectedFrom(speeds, 9);
            for (int speed = 0; speed < static_cast<int>(speeds); ++speed) {
                const auto at = static_cast<std::size_t>(speed);
                for (int other = std::max(0, speed - 2);
                     other <= std::min(static_cast<int>(speeds) - 1, speed + 2); ++other) {
                    const std::int32_t gap = gaps[static_cast<std::size_t>(other + NEIGHBOURS)];
                    const std::int32_t score = gap + changes[std::abs(other - speed)];
                    if (gap > NEVER && score > expected[at]) {
                        expected[at] = score;
                        expectedFrom[at] = other - speed;
                    }
                }
            }
            std::vector<std::int32_t> from(speeds, 9);
            raiseFromNeighbours(gaps.data() + NEIGHBOURS, changes, NEIGHBOURS, speeds, best.data(),
                                from.data());
            QCOMPARE(best, expected);
            QCOMPARE(from, expectedFrom);
        }
    }
    void offsetsAreRelativeToTheReferenceEvenOverTheEndOf32Bits()
    {
        constexpr std::size_t GROUPS = 4;
        constexpr std::size_t COUNT = GROUPS * LANES;
        const std::uint32_t reference = 50;
        std::vector<std::uint32_t> references;
        std::vector<std::int32_t> additions;
        for (std::size_t i = 0; i < COUNT; ++i) {
            references.push_back(reference - 100U * static_cast<std::uint32_t>(i));
            additions.push_back(i == 20 ? 10000000 : i == 21 ? -10000000 : 7);
        }
        std::vector<Score> best(COUNT, 0);
        std::fill_n(best.begin() + 3 * LANES, LANES, NEVER);
        best[22] = NEVER;
        additions[22] = 10000000;
        std::vector<Score> offsets(COUNT, 1);
        const std::uint64_t live =
            weighGroups(0b1011, GROUPS, reference, references.data(), additions.data(), best.data(),
                        Score(-8000), offsets.data());
        for (std::size_t i = 0; i < 2 * LANES; ++i) {
            const int expected = i == 20            ? MOST_SCORE
                                 : i < 23 && i > 20 ? int(NEVER)
                                                    : 7 - 100 * static_cast<int>(i);
            QCOMPARE(int(offsets[i]), expected);
        }
        QCOMPARE(int(offsets[2 * LANES]), int(NEVER)); // was not asked for
        QCOMPARE(live, std::uint64_t(0b0011));         // nothing lives in the last
        weighGroups(1, 1, reference, references.data(), nullptr, best.data(), 0, offsets.data());
        QCOMPARE(int(offsets[3]), -300);
    }
    void logarithmsAreWithinAMillionth()
    {
        for (double x = 1e-30; x < 1e30; x *= 1.37) {
            const auto in = static_cast<float>(x);
            float out = 0.0F;
            logarithms(&in, &out, 1);
            const double exact = std::log(static_cast<double>(in));
            QVERIFY2(std::fabs(static_cast<double>(out) - exact) <
                         1e-6 * std::max(1.0, std::fabs(exact)),
                     qPrintable(QString::number(x)));
        }
    }
    void aSumIsCorrelatedWithItself()
    {
        testsupport::Random random("correlate");
        for (const std::size_t count : {0U, 1U, 7U, 8U, 9U, 100U}) {
            std::vector<float> parts[4];
            std::complex<double> expected = 0.0;
            for (std::size_t i = 0; i < count; ++i) {
                const std::complex<double> a(random.gauss(), random.gauss());
                const std::complex<double> b(random.gauss(), random.gauss());
                expected += a * std::conj(b);
                const double values[] = {a.real(), a.imag(), b.real(), b.imag()};
                for (int part = 0; part < 4; ++part)
                    parts[part].push_back(static_cast<float>(values[part]));
            }
            const ComplexSum sum = correlate(parts[0].data(), parts[1].data(), parts[2].data(),
                                             parts[3].data(), count);
            QVERIFY(std::fabs(static_cast<double>(sum.re) - expected.real()) < 1e-4);
            QVERIFY(std::fabs(static_cast<double>(sum.im) - expected.imag()) < 1e-4);
        }
    }
    void evidenceIsTheFormulaWhateverIsAskedForAtOnce()
    {
        // Against the textbook sum for one amplitude: log I0(2 |sum|) - energy.
        MarkWeighing weighing = {};
        weighing.choices[0] = {1.0F, 0.0F};
        for (std::size_t i = 1; i < MarkWeighing::CHOICES; ++i)
            weighing.choices[i] = {1.0F, -1000.0F};
        constexpr std::size_t COUNT = 64;
        float re[COUNT];
        float im[COUNT];
        float energy[COUNT];
        for (std::size_t i = 0; i < COUNT; ++i) {
            const auto step = static_cast<float>(i);
            re[i] = -0.3F * step;
            im[i] = std::sin(0.3F * step);
            energy[i] = -0.4F * step;
        }
        const StepSums sums = {re, im, re, im, energy};
        std::int32_t all[COUNT];
        weighMarks(weighing, sums, 0, COUNT, all);
        for (std::size_t length = 0; length < COUNT; ++length) {
            const double magnitude =
                2.0 * std::hypot(static_cast<double>(re[length]), static_cast<double>(im[length]));
            const double expected =
                std::log(std::cyl_bessel_i(0.0, magnitude)) + static_cast<double>(energy[length]);
            QVERIFY(std::fabs(all[length] - SCORES_PER_NAT * expected) < 1.0);
            std::int32_t one = 0;
            weighMarks(weighing, sums, length, 1, &one);
            QCOMPARE(one, all[length]);
        }
    }
    void aDriftingMarkIsWorthItsPartsLessTheirPrice()
    {
        MarkWeighing weighing = {};
        weighing.choices[0] = {1.0F, 0.0F};
        for (std::size_t i = 1; i < MarkWeighing::CHOICES; ++i)
            weighing.choices[i] = {1.0F, -1000.0F};
        weighing.mayDrift = true;
        weighing.driftCost = 2.0F;
        weighing.part_steps = 10;
        constexpr std::size_t COUNT = 64;
        float re[COUNT] = {};
        float zero[COUNT] = {};
        for (std::size_t i = 1; i < COUNT; ++i) // turns round every ten steps
            re[i] = re[i - 1] + ((i - 1) / 10 % 2 == 0 ? 1.0F : -1.0F);
        std::int32_t all[COUNT];
        weighMarks(weighing, {re, zero, re, zero, zero}, 0, COUNT, all);
        for (const std::size_t length : {5U, 10U, 11U, 20U, 35U, 60U}) {
            const std::size_t parts = (length + 9) / 10;
            const double magnitude =
                2.0 * static_cast<double>(length) - 2.0 * static_cast<double>(parts - 1);
            const double expected = std::log(std::cyl_bessel_i(0.0, magnitude));
            QVERIFY2(std::fabs(all[length] - SCORES_PER_NAT * expected) < 1.0,
                     qPrintable(QString::number(length)));
        }
    }
    void densitiesAreTheDistributionAndTheGreaterCounts()
    {
        float p[200] = {};
        const LengthDensity gap = {3.0F, 0.5F, 1.0F, 1.0F};
        raiseToDensity(gap, 0.05F, p, 200);
        double sum = 0.0;
        for (const float density : p)
            sum += static_cast<double>(density) * 0.05;
        QVERIFY(std::fabs(sum - 1.0) < 0.03);
        QVERIFY(p[60] > p[59] && p[60] > p[61]);
        QVERIFY(std::fabs(p[50] / p[70] - 1.0F) < 1e-4F);
        const float before = p[60];
        raiseToDensity({7.0F, 1.2F, 3.0F, 0.1F}, 0.05F, p, 200);
        QCOMPARE(p[60], before);
        QVERIFY(p[140] > 0.0F && p[160] > p[120]); // reaches further to the right
    }
};

QTEST_APPLESS_MAIN(tst_InnerLoops)
#include "tst_innerloops.moc"
