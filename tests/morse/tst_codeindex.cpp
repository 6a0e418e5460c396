// SPDX-License-Identifier: MIT
#include "morse/codeindex.h"
#include "tables/alphabetfile.h"

#include <QRandomGenerator>
#include <QtTest>

using Codes = QMap<QString, QString>;

class tst_CodeIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyEntryOfTheDefaultAlphabetIsFound()
    {
        const Codes codes = defaultAlphabet();
        const CodeIndex index(codes, 1000);
        for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry) {
            QVERIFY(index.Find(bufferOf(entry.value())));
            QCOMPARE(*index.Find(bufferOf(entry.value())), entry.key());
        }
    }

    void itFindsWhatASearchInAscendingOrderFinds()
    {
        QRandomGenerator random(7);
        const auto randomCode = [&] {
            // Mostly short codes, some longer than a place of their own, some foreign.
            QString code;
            const int length = random.bounded(4) ? random.bounded(5) : random.bounded(14);
            for (int i = 0; i < length; ++i)
                code += QStringLiteral(".-.-.-.-.x")[random.bounded(10)];
            return code;
        };
        for (int round = 0; round < 500; ++round) {
            Codes codes;
            for (int i = random.bounded(60); i > 0; --i)
                codes.insert(QString::number(random.bounded(100)), randomCode());
            const CodeIndex index(codes, random.bounded(20));
            for (int i = 0; i < 200; ++i) {
                const QString code = randomCode();
                const QString* const found = index.Find(bufferOf(code));
                QCOMPARE(found ? *found : QString(), codes.key(code));
            }
        }
    }

    void theLongestCodesWithAPlaceAreFound()
    {
        const Codes codes{{"dots", "........"}, {"dashes", "--------"}, {"nine", "---------"}};
        const CodeIndex index(codes, 1000);
        for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry) {
            QVERIFY(index.Find(bufferOf(entry.value())));
            QCOMPARE(*index.Find(bufferOf(entry.value())), entry.key());
        }
    }

    void aBufferForgetsWhatWasInIt()
    {
        CodeBuffer code = bufferOf(".........x");
        QCOMPARE(code.Symbols().toString(), ".........x");
        QCOMPARE(code.Place(), CodeBuffer::PLACES);
        code.Clear();
        QVERIFY(code.IsEmpty());
        QCOMPARE(code.Place(), bufferOf("").Place());
    }

    void shortCodesHavePlacesOfTheirOwn()
    {
        QSet<unsigned> places;
        int count = 0;
        for (int length = 0; length <= 8; ++length) {
            for (int bits = 0; bits < 1 << length; ++bits, ++count) {
                QString code;
                for (int i = 0; i < length; ++i)
                    code += bits >> i & 1 ? '-' : '.';
                const unsigned place = bufferOf(code).Place();
                QVERIFY(place < CodeBuffer::PLACES);
                places.insert(place);
            }
        }
        QCOMPARE(places.size(), count);
        for (const char* code : {".........", "---------------------------------", "x", ".x", "x."})
            QCOMPARE(bufferOf(code).Place(), CodeBuffer::PLACES);
    }

private:
    static CodeBuffer bufferOf(const QString& symbols)
    {
        CodeBuffer code;
        for (const QChar symbol : symbols)
            code.Add(symbol);
        return code;
    }
};

QTEST_APPLESS_MAIN(tst_CodeIndex)
#include "tst_codeindex.moc"
