// SPDX-License-Identifier: MIT
#include "host/standin/resultreader.h"

#include <QBuffer>
#include <QtTest>

using namespace TavikResultDataXml;

namespace {

std::optional<ResultDocument> read(QByteArray bytes, QString* error = nullptr)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return readResultDocument(buffer, error);
}

QByteArray documentWith(const QByteArray& content)
{
    return "<TavikResultData Version=\"1.0\">" + content + "</TavikResultData>";
}

QByteArray frameAt(const QByteArray& time)
{
    return documentWith("<Transmission><DataBlock Channel=\"-1\" Format=\"0\" Flags=\"0\">"
                        "<Frame Time=\"" +
                        time + "\">x</Frame></DataBlock></Transmission>");
}

} // namespace

class tst_ResultReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFieldIsRead()
    {
        const auto document =
            read(documentWith("<Transmission StartTime=\"2017-05-12T10:15:00,123Z\""
                              " StopTime=\"10000-01-01T00:00:00,000Z\">"
                              "<DataBlock Channel=\"-1\" Format=\"2\" Flags=\"3\">"
                              "<Frame Time=\"1970-01-01T00:00:00,000001Z\">a&lt;&#13;</Frame>"
                              "<Frame Time=\"2017-05-12T10:15:00,123456Z\"/>"
                              "</DataBlock></Transmission>"));
        QVERIFY(document);
        QCOMPARE(document->version, QStringLiteral("1.0"));
        QCOMPARE(document->transmissions.size(), std::size_t(1));
        const ResultTransmission& transmission = document->transmissions[0];
        QCOMPARE(transmission.startTime,
                 QDateTime(QDate(2017, 5, 12), QTime(10, 15, 0, 123), Qt::UTC));
        QCOMPARE(transmission.startTime.timeSpec(), Qt::UTC);
        QCOMPARE(transmission.stopTime, QDateTime(QDate(10000, 1, 1), QTime(0, 0), Qt::UTC));
        const ResultBlock& block = transmission.blocks.at(0);
        QCOMPARE(block.channel, -1);
        QCOMPARE(block.format, 2);
        QCOMPARE(block.flags, 3);
        QCOMPARE(block.frames.size(), std::size_t(2));
        QCOMPARE(block.frames[0].timestamp_us, 1ULL);
        QCOMPARE(block.frames[0].text, QStringLiteral("a<\r"));
        QCOMPARE(block.frames[1].timestamp_us, 1494584100123456ULL);
        QCOMPARE(block.frames[1].text, QString());
    }

    void whatMayBeMissingMayBeMissing()
    {
        const auto document = read(documentWith("<Transmission/>"));
        QVERIFY(document);
        QVERIFY(!document->transmissions.at(0).startTime.isValid());
        QVERIFY(!document->transmissions.at(0).stopTime.isValid());
        QVERIFY(document->transmissions.at(0).blocks.empty());
        QVERIFY(read(documentWith(""))->transmissions.empty());
    }

    void unknownElementsAreSkipped()
    {
        const auto document = read(documentWith(
            "<Remark>x<y/></Remark><Transmission><Remark/><DataBlock Channel=\"1\" Format=\"0\""
            " Flags=\"0\"><Remark/><Frame Time=\"2017-05-12T10:15:00,123456Z\">x</Frame>"
            "</DataBlock></Transmission>"));
        QVERIFY(document);
        QCOMPARE(document->transmissions.at(0).blocks.at(0).frames.size(), std::size_t(1));
    }

    void whatIsNoDocumentIsRefusedWithItsLine_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("line");
        QTest::newRow("nothing") << QByteArray() << 1;
        QTest::newRow("text") << QByteArray("dit dah") << 1;
        QTest::newRow("another root") << QByteArray("<a/>") << 1;
        QTest::newRow("cut off") << QByteArray("<TavikResultData Version=\"1.0\">\n<Transmission>")
                                 << 2;
        QTest::newRow("something behind the end") << documentWith("") + "\n<a/>" << 2;
        QTest::newRow("no channel")
            << documentWith("\n<Transmission><DataBlock Format=\"0\" Flags=\"0\"/></Transmission>")
            << 2;
        QTest::newRow("a channel that is not a number")
            << documentWith("<Transmission><DataBlock Channel=\"one\" Format=\"0\" Flags=\"0\"/>"
                            "</Transmission>")
            << 1;
        QTest::newRow("an element in a frame")
            << frameAt("2017-05-12T10:15:00,123456Z\"><b/></Frame><Frame Time=\"") << 1;
    }

    void whatIsNoDocumentIsRefusedWithItsLine()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, line);
        QString error;
        QVERIFY(!read(bytes, &error));
        QVERIFY2(error.startsWith(QStringLiteral("line %1: ").arg(line)), qPrintable(error));
        QVERIFY(!read(bytes));
    }

    void aTimeHasItsForm_data()
    {
        QTest::addColumn<QByteArray>("time");
        QTest::addColumn<bool>("isGood");
        QTest::newRow("good") << QByteArray("2017-05-12T10:15:00,123456Z") << true;
        QTest::newRow("a leap day") << QByteArray("2016-02-29T23:59:59,999999Z") << true;
        QTest::newRow("no leap day") << QByteArray("2017-02-29T00:00:00,000000Z") << false;
        QTest::newRow("hour 24") << QByteArray("2017-05-12T24:00:00,000000Z") << false;
        QTest::newRow("milliseconds") << QByteArray("2017-05-12T10:15:00,123Z") << false;
        QTest::newRow("a full stop") << QByteArray("2017-05-12T10:15:00.123456Z") << false;
        QTest::newRow("local time") << QByteArray("2017-05-12T10:15:00,123456") << false;
        QTest::newRow("before 1970") << QByteArray("1969-12-31T23:59:59,999999Z") << false;
        QTest::newRow("the last year") << QByteArray("584554-01-01T00:00:00,000000Z") << true;
        QTest::newRow("beyond 64 bits") << QByteArray("586555-01-01T00:00:00,000000Z") << false;
        QTest::newRow("a huge year") << QByteArray("999999999-01-01T00:00:00,000000Z") << false;
        QTest::newRow("a line feed behind")
            << QByteArray("2017-05-12T10:15:00,123456Z&#10;") << false;
        QTest::newRow("Arabic digits")
            << QStringLiteral("2017-05-12T10:15:00,12345\u0666Z").toUtf8() << false;
        QTest::newRow("empty") << QByteArray() << false;
    }

    void aTimeHasItsForm()
    {
        QFETCH(QByteArray, time);
        QFETCH(bool, isGood);
        QCOMPARE(read(frameAt(time)).has_value(), isGood);
    }

    void aThousandBytesOfNoiseAreRefused()
    {
        quint32 state = 1;
        for (int i = 0; i < 200; ++i) {
            QByteArray bytes = i % 2 ? documentWith("<Transmission>") : QByteArray();
            for (int j = 0; j < 1000; ++j) {
                state = state * 1664525u + 1013904223u;
                bytes.append(static_cast<char>(state >> 24));
            }
            QVERIFY(!read(bytes));
        }
    }
};

QTEST_APPLESS_MAIN(tst_ResultReader)
#include "tst_resultreader.moc"
