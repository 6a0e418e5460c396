// SPDX-License-Identifier: MIT
#include "signal/teleprinter/parameters.h"

#include <QtTest>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <vector>

using namespace teleprinter;

class tst_TeleprinterParameters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMemberIsSetByItsName()
    {
        Parameters parameters;
        QVERIFY(setParameter(parameters, "evidence.followed_s", 0.3));
        QCOMPARE(parameters.evidence.followed_s, 0.3);
        QVERIFY(setParameter(parameters, "framing.character", -2.0));
        QCOMPARE(parameters.framing.character, -2.0F);
        QVERIFY(setParameter(parameters, "acquisition.refined", 7.0));
        QCOMPARE(parameters.acquisition.refined, 7);
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
        // What is still zero belongs to no member that was set, unless it fills up to a double.
        std::vector<std::uint32_t> words(sizeof(parameters) / sizeof(std::uint32_t));
        std::memcpy(words.data(), &parameters, sizeof(parameters));
        for (std::size_t i = 0; i < words.size(); i += 2)
            QVERIFY2(words[i] != 0, qPrintable(QStringLiteral("at byte %1").arg(4 * i)));
    }
    void whatIsNoMemberOrNoNumberIsRefused()
    {
        Parameters parameters;
        QVERIFY(!setParameter(parameters, "followed_s", 0.3));
        QVERIFY(!setParameter(parameters, "", 0.3));
        QVERIFY(!setParameter(parameters, "evidence.followed_s",
                              std::numeric_limits<double>::quiet_NaN()));
        QCOMPARE(parameters.evidence.followed_s, EvidenceParameters().followed_s);
    }
};

QTEST_APPLESS_MAIN(tst_TeleprinterParameters)
#include "tst_teleprinterparameters.moc"
