// SPDX-License-Identifier: MIT
#include "signal/band/parameters.h"

#include <QtTest>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>

using namespace demodulator;

class tst_BandParameters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aMemberIsSetByItsName()
    {
        BandParameters parameters;
        QVERIFY(setParameter(parameters, "shadow.margin", 3.0));
        QCOMPARE(parameters.shadow.margin, 3.0);
        QVERIFY(setParameter(parameters, "survey.search_frames", 60.0));
        QCOMPARE(parameters.survey.search_frames, 60);
        QVERIFY(!setParameter(parameters, "shadow.nothing", 3.0));
    }
    void aMemberOfTheChainIsSetByItsName()
    {
        BandParameters parameters;
        QVERIFY(setParameter(parameters, "level.memory_s", 0.7));
        QCOMPARE(parameters.signal.level.memory_s, 0.7);
    }
    void everyMemberHasAName()
    {
        BandParameters parameters;
        std::memset(static_cast<void*>(&parameters), 0, sizeof(parameters));
        std::set<std::string> names;
        for (const std::string& name : bandParameterNames()) {
            QVERIFY2(names.insert(name).second, name.c_str());
            QVERIFY2(setParameter(parameters, name, 1.1), name.c_str());
        }
        // Members are doubles, or integers of half their size with or without a neighbour. A part
        // that begins with nothing but zeros belongs to a member that was not set.
        constexpr std::size_t OWN = offsetof(BandParameters, signal) / sizeof(std::uint32_t);
        std::uint32_t words[OWN];
        std::memcpy(words, &parameters, sizeof words);
        for (std::size_t i = 0; i < OWN; i += 2)
            QVERIFY2(words[i] != 0, qPrintable(QStringLiteral("at byte %1").arg(4 * i)));
    }
};

QTEST_APPLESS_MAIN(tst_BandParameters)
#include "tst_bandparameters.moc"
