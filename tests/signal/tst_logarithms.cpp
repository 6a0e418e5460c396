// SPDX-License-Identifier: MIT
#include "signal/logarithms.h"

#include <QtTest>
#include <cmath>
#include <limits>

using namespace demodulator;

class tst_Logarithms : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void logarithmsAreWithinAMillionth()
    {
        for (double x = 1e-30; x < 1e30; x *= 1.37) {
            const auto in = static_cast<float>(x);
            const double exact = std::log(static_cast<double>(in));
            QVERIFY2(std::fabs(static_cast<double>(quickLog(in)) - exact) <
                         1e-6 * std::max(1.0, std::fabs(exact)),
                     qPrintable(QString::number(x)));
        }
    }
    void theBesselFunctionIsWithinThreeTenThousandths()
    {
        for (double x = 0.0; x < 600.0; x = 1.05 * x + 0.01) {
            const double exact = std::log(std::cyl_bessel_i(0.0, x));
            const auto ours = static_cast<double>(logBesselI0(static_cast<float>(x)));
            QVERIFY2(std::fabs(ours - exact) < 0.0003 + 1e-6 * x, qPrintable(QString::number(x)));
        }
    }
    // log I0(x) = x - log(2 pi x) / 2 for large x.
    void theBesselFunctionDoesNotOverflow()
    {
        for (double x = 600.0; x < static_cast<double>(std::numeric_limits<float>::max());
             x *= 3.1) {
            const auto in = static_cast<float>(x);
            const double exact = static_cast<double>(in) - 0.5 * std::log(2.0 * M_PI * x);
            QVERIFY2(std::fabs(static_cast<double>(logBesselI0(in)) - exact) < 0.0003 + 1e-6 * x,
                     qPrintable(QString::number(x)));
        }
    }
};

QTEST_APPLESS_MAIN(tst_Logarithms)
#include "tst_logarithms.moc"
