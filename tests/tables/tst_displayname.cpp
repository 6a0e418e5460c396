// SPDX-License-Identifier: MIT
#include "tables/displayname.h"

#include <QRandomGenerator>
#include <QRegExp>
#include <QTranslator>
#include <QtTest>

namespace {

/// Shows what is translated, and as what.
class Marks : public QTranslator
{
public:
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return QStringLiteral("[%1:%2]").arg(context, text);
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class tst_DisplayName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCharacterSetHasItsSuffix()
    {
        QCOMPARE(displayName("x", eCHARSET_ITA2), "x - ITA2");
        QCOMPARE(displayName("x", eCHARSET_ASCII), "x - ASCII");
        QCOMPARE(displayName("x", eCHARSET_NONE), "x - UNKNOWN");
        QCOMPARE(displayName("x", eCHARSET_BOTH), "x - UNKNOWN");
    }

    void suffixesAreTranslated()
    {
        Marks marks;
        QVERIFY(QCoreApplication::installTranslator(&marks));
        const QStringList names{displayName("x", eCHARSET_ITA2), displayName("x", eCHARSET_ASCII),
                                displayName("x", eCHARSET_NONE)};
        const QString full = fullName("x", eCHARSET_ITA2);
        QCoreApplication::removeTranslator(&marks);
        QCOMPARE(names, (QStringList{"x[QObject: - ITA2]", "x[QObject: - ASCII]",
                                     "x[QObject: - UNKNOWN]"}));
        QCOMPARE(full, "x - ITA2");
    }

    void aFullNameLeadsToItsFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("files");
        QTest::newRow("a map") << "Greek - ASCII" << QStringList{"Greek.ASCII.map"};
        QTest::newRow("any letter case") << "Greek - ita2" << QStringList{"Greek.ita2.map"};
        QTest::newRow("the codec file")
            << "ITA2 - ITA2" << QStringList{"ITA2.ITA2.map", "ITA2.codec"};
        QTest::newRow("it has one name") << "ita2 - ITA2" << QStringList{"ita2.ITA2.map"};
        QTest::newRow("a separator in the name") << "a - b - ITA2" << QStringList{"a.b.map"};
        QTest::newRow("nothing behind the separator") << "a - " << QStringList{"a..map"};
        QTest::newRow("a short name") << "Greek" << QStringList{};
        QTest::newRow("nothing") << "" << QStringList{};
    }

    void aFullNameLeadsToItsFiles()
    {
        QFETCH(QString, name);
        QTEST(filesOfFullName(name), "files");
    }

    void noneIsTheEmptyAlphabetInAnyLetterCase()
    {
        QVERIFY(isNoAlphabet("None") && isNoAlphabet("nONE"));
        QVERIFY(!isNoAlphabet("") && !isNoAlphabet("None ") && !isNoAlphabet("None - ITA2"));
    }

    void namesAreTakenApart_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("charset");
        QTest::newRow("ITA2") << "Greek - ITA2"
                              << "Greek" << 1;
        QTest::newRow("ASCII") << "Greek - ASCII"
                               << "Greek" << 2;
        QTest::newRow("more behind") << "Greek - ITA2x"
                                     << "Greek" << 1;
        QTest::newRow("lower case") << "Greek - ita2"
                                    << "Greek" << 0;
        QTest::newRow("unknown") << "Greek - UNKNOWN"
                                 << "Greek" << 0;
        QTest::newRow("no suffix") << "Default"
                                   << "Default" << 0;
        QTest::newRow("no blanks") << "Greek-ITA2"
                                   << "Greek-ITA2" << 0;
        QTest::newRow("empty") << ""
                               << "" << 0;
        QTest::newRow("suffix alone") << " - ITA2"
                                      << "" << 1;
        QTest::newRow("separator in the name") << "a - b - ITA2"
                                               << "a - b" << 0;
        QTest::newRow("character set in the name") << "a - ITA2 - b"
                                                   << "a - ITA2" << 1;
    }

    void namesAreTakenApart()
    {
        QFETCH(QString, display);
        QTEST(nameOfDisplayName(display), "name");
        QTEST(int(charsetOfDisplayName(display)), "charset");
    }

    void theyAreTakenApartAsTheExpressionsDo()
    {
        QRegExp suffixExpression(".* - (.*)");
        QRegExp nameExpression("(.*) - .*");
        QRandomGenerator random(41);
        const QStringList parts{" - ", " ", "-", "a", "ITA2", "ASCII", "\n"};
        for (int round = 0; round < 50000; ++round) {
            QString display;
            for (int i = random.bounded(8); i > 0; --i)
                display += parts[random.bounded(parts.size())];
            int charset = 0;
            if (suffixExpression.exactMatch(display))
                charset = suffixExpression.cap(1).startsWith("ITA2")    ? 1
                          : suffixExpression.cap(1).startsWith("ASCII") ? 2
                                                                        : 0;
            QCOMPARE(int(charsetOfDisplayName(display)), charset);
            QCOMPARE(nameOfDisplayName(display),
                     nameExpression.exactMatch(display) ? nameExpression.cap(1) : display);
        }
    }

    void whatBeginsWithDefaultIsNoTranslation()
    {
        QVERIFY(isDefaultMap("Default"));
        QVERIFY(isDefaultMap("Defaults"));
        QVERIFY(!isDefaultMap("default"));
        QVERIFY(!isDefaultMap(""));
        QVERIFY(!isDefaultMap(" Default"));
    }
};

QTEST_GUILESS_MAIN(tst_DisplayName)
#include "tst_displayname.moc"
