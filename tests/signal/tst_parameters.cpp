// SPDX-License-Identifier: MIT
#include "signal/morse/parameters.h"

#include <QtTest>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>

using namespace demodulator;

class tst_Parameters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aMemberIsSetByItsName()
    {
        Parameters parameters;
        QVERIFY(setParameter(parameters, "level.memory_s", 0.7));
        QCOMPARE(parameters.level.memory_s, 0.7);
        QVERIFY(setParameter(parameters, "phase.leastMarks", 9));
        QCOMPARE(parameters.phase.leastMarks, 9U);
    }
    void everyMemberHasAName()
    {
        Parameters parameters;
        std::memset(static_cast<void*>(&parameters), 0, sizeof(parameters));
        std::set<std::string> names;
        for (const std::string& name : parameterNames()) {
            QVERIFY2(names.insert(name).second, name.c_str());
            QVERIFY2(setParameter(parameters, name, 1.1), name.c_str());
        }
        // Members are doubles, or integers of half their size with or without a neighbour. A part
        // that begins with nothing but zeros belongs to a member that was not set.
        std::uint32_t words[sizeof(Parameters) / sizeof(std::uint32_t)];
        std::memcpy(words, &parameters, sizeof(parameters));
        for (std::size_t i = 0; i < std::size(words); i += 2)
            QVERIFY2(words[i] != 0, qPrintable(QStringLiteral("at byte %1").arg(4 * i)));
    }
    void whatIsNoMemberOrNoNumberIsRefused()
    {
        Parameters parameters;
        QVERIFY(!setParameter(parameters, "level.memory", 0.7));
        QVERIFY(!setParameter(parameters, "", 0.7));
        QVERIFY(
            !setParameter(parameters, "level.memory_s", std::numeric_limits<double>::quiet_NaN()));
        QCOMPARE(parameters.level.memory_s, LevelParameters().memory_s);
    }
};

QTEST_APPLESS_MAIN(tst_Parameters)
#include "tst_parameters.moc"
