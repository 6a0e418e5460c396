// SPDX-License-Identifier: MIT
#include "signal/band/survey.h"

#include "signal/numbers.h"
#include "support/keyer.h"
#include "support/random.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using namespace demodulator;
using testsupport::Random;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double STEP_SAMPLES = 32;

struct Sent
{
    double tone_Hz;
    double snr_dB;
    double speed_wpm = 25.0; // 0: a carrier
};

// Complex noise of power 1, and signals in it.
std::vector<std::complex<float>> band(const std::vector<Sent>& signals, double duration_s)
{
    Random random("survey");
    std::vector<std::complex<float>> samples(static_cast<std::size_t>(duration_s * RATE_Hz));
    for (std::complex<float>& sample : samples)
        sample = {static_cast<float>(std::sqrt(0.5) * random.gauss()),
                  static_cast<float>(std::sqrt(0.5) * random.gauss())};
    for (const Sent& sent : signals) {
        const double amplitude = std::sqrt(500.0 / RATE_Hz * std::pow(10.0, 0.1 * sent.snr_dB));
        std::vector<testsupport::Piece> pieces = {{true, duration_s}};
        if (sent.speed_wpm > 0.0) {
            testsupport::Hand hand;
            hand.speed_wpm = sent.speed_wpm;
            pieces = testsupport::keying("CQ CQ CQ DE DL0XYZ DL0XYZ", hand,
                                         std::to_string(sent.tone_Hz));
        }
        double begin_s = 0.0;
        for (const testsupport::Piece& piece : pieces) {
            const auto from = static_cast<std::size_t>(begin_s * RATE_Hz);
            begin_s += piece.duration_s;
            const auto to = std::min(samples.size(), static_cast<std::size_t>(begin_s * RATE_Hz));
            for (std::size_t n = from; piece.mark && n < to; ++n)
                samples[n] += std::complex<float>(std::polar(
                    amplitude, 2.0 * PI * sent.tone_Hz * static_cast<double>(n) / RATE_Hz));
        }
    }
    return samples;
}

class Surveyed
{
public:
    explicit Surveyed(const std::vector<std::complex<float>>& samples)
        : survey({RATE_Hz, true}, static_cast<std::size_t>(STEP_SAMPLES))
    {
        const auto hop = static_cast<std::size_t>(STEP_SAMPLES) * Survey::HOP_STEPS;
        std::int64_t frame = 0;
        for (std::size_t at = 0; at + survey.windowSamples() <= samples.size(); at += hop)
            survey.compute(frame++, &samples[at]);
        survey.advanceTo(frame);
        for (std::size_t piece = 0; piece < survey.pieces(); ++piece)
            survey.measureNoise(piece);
    }
    std::vector<KeyedTone> found() const
    {
        std::vector<KeyedTone> all;
        for (std::size_t piece = 0; piece < survey.pieces(); ++piece) {
            for (const KeyedTone& tone : survey.find(piece, 94))
                all.push_back(tone);
        }
        return all;
    }

    Survey survey;
};

double snr_dB(double signal, double noise)
{
    return 10.0 * std::log10(signal / (noise * 500.0 * STEP_SAMPLES / RATE_Hz));
}

} // namespace

class tst_Survey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsKeyedTones_data()
    {
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<double>("level_dB");
        QTest::newRow("strong") << 1003.0 << 30.0;
        QTest::newRow("below the centre") << -2511.0 << 12.0;
        QTest::newRow("weak") << 1512.5 << 0.0;
    }
    void findsKeyedTones()
    {
        QFETCH(double, tone_Hz);
        QFETCH(double, level_dB);
        const Surveyed surveyed(band({{tone_Hz, level_dB}}, 3.2));
        const auto found = surveyed.survey.findNear(tone_Hz, 60.0, 94);
        QVERIFY(found.has_value());
        QVERIFY2(std::fabs(found->tone_Hz - tone_Hz) < 3.0,
                 qPrintable(QString::number(found->tone_Hz)));
        const double level = snr_dB(found->signal, found->noise);
        // Dots are shorter than a spectrum.
        QVERIFY2(level > level_dB - 5.0 && level < level_dB + 2.0,
                 qPrintable(QString::number(level)));
    }

    void eightyHertzApartAreTwo()
    {
        const Surveyed surveyed(band({{1000.0, 15.0}, {1080.0, 15.0, 23.0}}, 3.2));
        const auto first = surveyed.survey.findNear(1000.0, 30.0, 94);
        const auto second = surveyed.survey.findNear(1080.0, 30.0, 94);
        QVERIFY(first && second);
        QVERIFY(std::fabs(first->tone_Hz - 1000.0) < 6.0);
        QVERIFY(std::fabs(second->tone_Hz - 1080.0) < 6.0);
    }

    void neitherNoiseNorCarriersAreKeyed()
    {
        const Surveyed surveyed(band({{-1200.0, 20.0, 0.0}, {700.0, 3.0, 0.0}}, 3.2));
        QVERIFY2(surveyed.found().size() <= 1,
                 qPrintable(QString::number(surveyed.found().size())));
        QVERIFY(!surveyed.survey.findNear(-1200.0, 20.0, 94));
    }

    void noiseIsMeasuredBesideAndUnderSignals()
    {
        const double expected = 1.0 / STEP_SAMPLES;
        const Surveyed surveyed(band({{1000.0, 30.0}, {1200.0, 20.0, 22.0}}, 4.0));
        for (const double tone_Hz : {1000.0, 1200.0, -3000.0}) {
            const double error_dB = 10.0 * std::log10(surveyed.survey.noise(tone_Hz) / expected);
            // Edges as hard as these leave clicks everywhere.
            QVERIFY2(error_dB > -2.0 && error_dB < 6.0, qPrintable(QString::number(error_dB)));
        }
    }

    void aLeakFallsWithTheDistance()
    {
        double last = 1.0;
        for (double offset_Hz = 1.0; offset_Hz < 2990.0; offset_Hz += 7.0) {
            const double leak = Survey::leak(offset_Hz);
            QVERIFY(leak > 0.0 && leak < last);
            QCOMPARE(Survey::leak(-offset_Hz), leak);
            last = leak;
        }
        QCOMPARE(Survey::leak(0.0), 1.0);
        QCOMPARE(Survey::leak(5000.0), 0.0);
    }
    void noiseOfAFrameIsThatOfItsTime()
    {
        // Falls by 20 dB after half of the time; a strong signal is in it all the while.
        std::vector<std::complex<float>> samples = band({{1000.0, 30.0}}, 4.0);
        for (std::size_t n = samples.size() / 2; n < samples.size(); ++n)
            samples[n] *= 0.1F;
        const Surveyed surveyed(samples);
        const auto usual = [&](std::int64_t from, std::int64_t to, double tone_Hz) {
            std::vector<double> values;
            for (std::int64_t frame = from; frame < to; ++frame)
                values.push_back(surveyed.survey.noiseIn(frame, tone_Hz));
            std::sort(values.begin(), values.end());
            return values[values.size() / 2];
        };
        const std::int64_t half = surveyed.survey.end() / 2;
        for (const double tone_Hz : {-3900.0, -1000.0, 0.0, 1000.0, 3900.0}) {
            const double before = usual(0, half - 2, tone_Hz);
            const double after = usual(half + 2, surveyed.survey.end(), tone_Hz);
            // 1 / STEP_SAMPLES is the noise of a step.
            QVERIFY2(before * STEP_SAMPLES > 0.7 && before * STEP_SAMPLES < 1.6,
                     qPrintable(QString::number(before * STEP_SAMPLES)));
            QVERIFY(after > 0.006 * before && after < 0.016 * before);
        }
    }
};

QTEST_APPLESS_MAIN(tst_Survey)
#include "tst_survey.moc"
