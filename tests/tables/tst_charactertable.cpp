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

    void textsOfEveryLengthAreTranslatedAsTheEntriesSay()
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
            // What the entries say, character by character.
            QString forward;
            QString back;
            for (const QChar c : qAsConst(text)) {
                const auto key = static_cast<signed char>(c.unicode());
                const bool hasEntry = c.unicode() < 256 && table.contains(key);
                const QChar shown = table.value(key);
                forward += !hasEntry ? c : shown.isNull() ? QChar(' ') : shown;
                const signed char first = table.key(c, 0);
                back += first == 0 ? c : QChar(static_cast<uchar>(first));
            }
            for (const int length : {1, 10, 15, 16, 17, 63, 64, 65, 300}) {
                QCOMPARE(translateForward(table, text.left(length)), forward.left(length));
                QCOMPARE(translateBack(table, text.left(length)), back.left(length));
            }
        }
    }

    void everyByteHasItsOwnEntry()
    {
        // The ends of the stretches that are looked up: 0, 127, 128, 255, and what lies behind.
        for (const int byte : {0, 1, 77, 127, 128, 255}) {
            const CharacterMapping table{{static_cast<signed char>(byte), QChar(0x3b1)}};
            const QString text = QString(QChar(byte)) + QChar(byte ^ 1) + QChar(256 + byte);
            compareForward(table, text, QStringLiteral("\u03b1") + text.mid(1));
            const QString back = byte == 0 ? QStringLiteral("\u03b1") : QString(QChar(byte));
            compareBack(table, QStringLiteral("\u03b0\u03b1\u03b2"),
                        QStringLiteral("\u03b0") + back + QStringLiteral("\u03b2"));
        }
    }

    void aBlankForTheCode0IsNotTranslatedBack()
    {
        const CharacterMapping table{{'A', QChar(0)}};
        compareForward(table, "A", " ");
        compareBack(table, " ", " ");
        compareBack(table, QString(QChar(0)), "A");
    }

    void aLaterEntryReplacesAnEarlierOne()
    {
        Faults faults;
        CharacterTable table;
        table.Store(3, 'A', 'x', faults);
        table.Store(5, 'A', 'y', faults);
        QCOMPARE(table.characters, (CharacterMapping{{'A', 'y'}}));
        QCOMPARE(table.lines, (QMap<signed char, int>{{'A', 5}}));
        QCOMPARE(faults.Take().size(), 1);
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
