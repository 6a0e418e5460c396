// SPDX-License-Identifier: MIT
#include "signal/teleprinter/messages.h"

#include <QtTest>

using namespace teleprinter;

namespace {

// What comes out, with the times in brackets.
class Log : public TextSink
{
public:
    void transmissionStarted(const Line& /*line*/, std::int64_t time_us) override
    {
        text += QStringLiteral("<%1 ").arg(time_us);
    }
    void character(std::uint8_t character, std::int64_t /*time_us*/) override
    {
        text += QLatin1Char(static_cast<char>(character));
    }
    void transmissionStopped(const Line& /*line*/, std::int64_t time_us) override
    {
        text += QStringLiteral(" %1>").arg(time_us);
    }

    QString text;
};

} // namespace

class tst_Messages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void transmissionsBeginAndEndWithTheirMessages_data()
    {
        QTest::addColumn<bool>("isSplit");
        QTest::addColumn<QString>("sent");
        QTest::addColumn<QString>("given");
        QTest::newRow("no messages") << false << "ZCZC A NNNN B"
                                     << "<0 ZCZC A NNNN B 13>";
        QTest::newRow("one message") << true << "ZCZC A NNNN"
                                     << "<0 ZCZC A NNNN 11>";
        QTest::newRow("paper feed between two") << true << "ZCZC A NNNN\r\n\nZCZC B NNNN"
                                                << "<0 ZCZC A NNNN 11><14 ZCZC B NNNN 25>";
        QTest::newRow("a message without its end is ended by the next")
            << true << "ZCZC A ZCZC B"
            << "<0 ZCZC A  7><7 ZCZC B 13>";
        QTest::newRow("text before the first") << true << "XY ZCZC A"
                                               << "<0 XY  3><3 ZCZC A 9>";
        QTest::newRow("what only begins as a header does") << true << "ZCZ ZC NNNN"
                                                           << "<0 ZCZ ZC NNNN 11>";
        QTest::newRow("a header after half of one") << true << "ZCZCZC"
                                                    << "<0 ZCZCZC 6>";
        QTest::newRow("nothing") << true << ""
                                 << "";
        QTest::newRow("paper feed alone") << true << "\r\n\r\n"
                                          << "";
    }
    void transmissionsBeginAndEndWithTheirMessages()
    {
        QFETCH(bool, isSplit);
        QFETCH(QString, sent);
        QFETCH(QString, given);
        Log log;
        Messages messages(log);
        messages.begin(isSplit);
        std::int64_t time_us = 0;
        for (const QChar c : sent) {
            messages.character(c.toLatin1(), time_us, time_us + 1, Line());
            ++time_us;
        }
        messages.end();
        QCOMPARE(log.text, given);
    }

    void theNextSignalBeginsAgain()
    {
        Log log;
        Messages messages(log);
        messages.begin(true);
        messages.character('Z', 0, 1, Line());
        messages.end();
        messages.begin(true);
        for (int i = 0; i < 3; ++i)
            messages.character("CZC"[i], i + 5, i + 6, Line());
        messages.end();
        QCOMPARE(log.text, QStringLiteral("<0 Z 1><5 CZC 8>"));
    }
};

QTEST_APPLESS_MAIN(tst_Messages)
#include "tst_messages.moc"
