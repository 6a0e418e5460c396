// SPDX-License-Identifier: MIT
#include "tables/charactertable.h"

#include <QRandomGenerator>
#include <QtTest>

class tst_CharacterTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysAreSignedOnEveryPlatform()
    {
        const CharacterMapping table{{char(0x41), 'a'}, {static_cast<signed char>(0x80), 'b'}};
        QCOMPARE(table.first(), QChar('b'));
    }

    void forwardFollowsTheTable()
    {
        const CharacterMapping table{{'A', QChar(0x410)}, {'B', QChar(0)}, {-1, 'y'}};
        compareForward(table, QStringLiteral("ABC\u00ff\u0410\u4100"),
                       QStringLiteral("\u0410 Cy\u0410\u4100"));
    }

    void backFindsTheSmallestSignedKey()
    {
        const CharacterMapping table{{'A', 'x'}, {-128, 'x'}, {'B', 'y'}, {'C', 'y'}};
        compareBack(table, QStringLiteral("xyzA"), QStringLiteral("\u0080BzA"));
    }

    void backIgnoresTheKey0()
    {
        // It hides a later key all the same.
        const CharacterMapping table{{0, 'x'}, {'A', 'x'}, {'B', QChar(0)}};
        compareBack(table, QStringLiteral("x\0y"), QStringLiteral("xBy"));
    }

    void surrogatesAreCharactersOfTheirOwn()
    {
        const CharacterMapping table{{'A', QChar(0xd83d)}};
        compareForward(table, "A", QString(QChar(0xd83d)));
        compareForward(table, QStringLiteral("\U0001f600"), QStringLiteral("\U0001f600"));
        compareBack(table, QStringLiteral("\U0001f600"), QStringLiteral("A\xde00"));
    }

    void anEmptyTableChangesNothing()
    {
        compareForward({}, QStringLiteral("A\u0410\0"), QStringLiteral("A\u0410\0"));
        compareBack({}, QStringLiteral("A\u0410\0"), QStringLiteral("A\u0410\0"));
    }

    void longTextsAreTranslatedLikeSingleCharacters()
    {
        QRandomGenerator random(17);
        for (int round = 0; round < 300; ++round) {
            CharacterMapping table;
            const int span = 1 << random.bounded(17);
            const auto character = [&] { return QChar(static_cast<ushort>(random.bounded(span))); };
            for (int i = random.bounded(300); i > 0; --i)
                table.insert(static_cast<signed char>(random.bounded(256)), character());
            QString text;
            for (int i = 0; i < 300; ++i)
                text += random.bounded(2) ? character() : QChar(random.bounded(0x10000));
            QString forward;
            QString back;
            for (const QChar c : qAsConst(text)) {
                forward += translateForward(table, QString(c));
                back += translateBack(table, QString(c));
            }
            QCOMPARE(translateForward(table, text), forward);
            QCOMPARE(translateBack(table, text), back);
        }
    }

    void aTableThatIsChangedIsAnotherTable()
    {
        CharacterMapping table{{'A', 'x'}};
        compareForward(table, "AB", "xB");
        compareBack(table, "xy", "Ay");
        const CharacterMapping copy = table;
        table.insert('B', 'y');
        compareForward(table, "AB", "xy");
        compareBack(table, "xy", "AB");
        compareForward(copy, "AB", "xB");
        table.remove('A');
        compareBack(table, "xy", "xB");
    }

    void tablesThatTakeTurnsAreKeptApart()
    {
        const CharacterMapping one{{'A', 'x'}};
        const CharacterMapping other{{'A', 'y'}};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(translateForward(one, "A"), "x");
            QCOMPARE(translateForward(other, "A"), "y");
            QCOMPARE(translateBack(one, "xy"), "Ay");
            QCOMPARE(translateBack(other, "xy"), "xA");
            compareForward(i % 2 ? one : other, "A", i % 2 ? "x" : "y");
        }
    }

private:
    // As it stands, and within a text that is long enough for another way of doing it.
    static void compareForward(const CharacterMapping& table, const QString& text,
                               const QString& expected)
    {
        QCOMPARE(translateForward(table, text), expected);
        QCOMPARE(translateForward(table, text.repeated(200)), expected.repeated(200));
    }

    static void compareBack(const CharacterMapping& table, const QString& text,
                            const QString& expected)
    {
        QCOMPARE(translateBack(table, text), expected);
        QCOMPARE(translateBack(table, text.repeated(200)), expected.repeated(200));
    }
};

QTEST_APPLESS_MAIN(tst_CharacterTable)
#include "tst_charactertable.moc"
