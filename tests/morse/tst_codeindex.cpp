// SPDX-License-Identifier: MIT
#include "morse/alphabetfile.h"
#include "morse/codeindex.h"

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
        const CodeIndex index(codes);
        for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry) {
            QVERIFY(index.find(entry.value()));
            QCOMPARE(*index.find(entry.value()), entry.key());
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
            const CodeIndex index(codes);
            for (int i = 0; i < 200; ++i) {
                const QString code = randomCode();
                const QString* const found = index.find(code);
                QCOMPARE(found ? *found : QString(), codes.key(code));
            }
        }
    }
};

QTEST_APPLESS_MAIN(tst_CodeIndex)
#include "tst_codeindex.moc"
