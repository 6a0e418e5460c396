// SPDX-License-Identifier: MIT
#include "signal/samples/samples.h"

#include <QtTest>
#include <cmath>
#include <limits>

using namespace demodulator;

class tst_Samples : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void ratesComeDownToTheWorkingRange_data()
    {
        QTest::addColumn<double>("rate_Hz");
        for (const double rate : {4000.0, 8000.0, 11025.0, 44100.0, 48000.0, 96000.0, 192000.0})
            QTest::newRow(qPrintable(QString::number(rate))) << rate;
    }
    void ratesComeDownToTheWorkingRange()
    {
        QFETCH(double, rate_Hz);
        Decimator decimator(rate_Hz);
        QVERIFY(decimator.outputRate_Hz() >= std::min(rate_Hz, 8000.0));
        QVERIFY(decimator.outputRate_Hz() < 16000.0);
        std::vector<float> input(static_cast<std::size_t>(rate_Hz));
        for (std::size_t n = 0; n < input.size(); ++n)
            input[n] = static_cast<float>(std::sin(6.283185307 * 700.0 * n / rate_Hz));
        std::vector<float> output;
        decimator.push(input.data(), input.size(), output);
        decimator.flush(output);
        const double expected = decimator.outputRate_Hz();
        QVERIFY(std::fabs(static_cast<double>(output.size()) - expected) < 2.0);
        // Sample k is the input at its own moment: same phase, same level.
        for (std::size_t k = 100; k + 100 < output.size(); ++k) {
            const double t = static_cast<double>(k) / decimator.outputRate_Hz();
            QVERIFY(std::fabs(output[k] - std::sin(6.283185307 * 700.0 * t)) < 0.02);
        }
    }
    void whatWouldAliasIsTakenOut()
    {
        Decimator decimator(48000.0);
        std::vector<float> input(48000);
        for (std::size_t n = 0; n < input.size(); ++n)
            input[n] = static_cast<float>(std::sin(6.283185307 * 7300.0 * n / 48000.0));
        std::vector<float> output;
        decimator.push(input.data(), input.size(), output);
        for (std::size_t k = 100; k < output.size(); ++k)
            QVERIFY(std::fabs(output[k]) < 0.01F);
    }
    void piecesGiveTheSameAsTheWhole()
    {
        std::vector<float> input(5000);
        for (std::size_t n = 0; n < input.size(); ++n)
            input[n] = static_cast<float>(std::sin(0.001 * static_cast<double>(n * n % 6283)));
        Decimator whole(44100.0);
        std::vector<float> expected;
        whole.push(input.data(), input.size(), expected);
        Decimator cut(44100.0);
        std::vector<float> output;
        for (const float& sample : input)
            cut.push(&sample, 1, output);
        QCOMPARE(output, expected);
    }
    void noNumberIsSilence()
    {
        const float bad[] = {std::nanf(""), std::numeric_limits<float>::infinity(), 1e30F, 0.5F};
        Decimator decimator(8000.0);
        std::vector<float> output;
        decimator.push(bad, 4, output);
        QCOMPARE(output, (std::vector<float>{0.0F, 0.0F, 8.0F, 0.5F}));
    }
    void historyForgetsTheOldest()
    {
        SampleHistory history(4);
        const float samples[] = {1, 2, 3, 4, 5, 6};
        history.push(samples, 6);
        QCOMPARE(history.begin(), std::int64_t(2));
        float copied[4];
        history.copy(1, 4, copied);
        QCOMPARE(copied[0], 0.0F);
        QCOMPARE(copied[1], 3.0F);
        QCOMPARE(copied[3], 5.0F);
        history.copy(5, 2, copied);
        QCOMPARE(copied[0], 6.0F);
        QCOMPARE(copied[1], 0.0F);
    }
};

QTEST_APPLESS_MAIN(tst_Samples)
#include "tst_samples.moc"
