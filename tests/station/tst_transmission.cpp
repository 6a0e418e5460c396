// SPDX-License-Identifier: MIT
// A transmission as the object that every JSON output has.
#include "station/transmission.h"

#include <QJsonDocument>
#include <QtTest>

using namespace morsehost;

class tst_Transmission : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersHaveTheDecimalsThatAreDocumented_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QByteArray>("tenths");
        QTest::addColumn<QByteArray>("hundredths");
        QTest::newRow("is no sum of powers of two")
            << 21.9 << QByteArray("21.9") << QByteArray("21.9");
        QTest::newRow("rounded up") << 45.4549 << QByteArray("45.5") << QByteArray("45.45");
        QTest::newRow("a speed of teleprinters")
            << 45.45 << QByteArray("45.5") << QByteArray("45.45");
        QTest::newRow("whole") << 20.0 << QByteArray("20") << QByteArray("20");
        QTest::newRow("negative") << -3.14159 << QByteArray("-3.1") << QByteArray("-3.14");
        QTest::newRow("large") << 14023412.34 << QByteArray("14023412.3")
                               << QByteArray("14023412.34");
    }
    void numbersHaveTheDecimalsThatAreDocumented()
    {
        QFETCH(double, value);
        QFETCH(QByteArray, tenths);
        QFETCH(QByteArray, hundredths);
        Transmission transmission;
        transmission.snr_dB = value;
        transmission.baudRate = value;
        const QByteArray line = QJsonDocument(toJson(transmission)).toJson(QJsonDocument::Compact);
        QVERIFY2(line.contains("\"snr_dB\":" + tenths + ','), line.constData());
        QVERIFY2(line.contains("\"baud_rate\":" + hundredths + ','), line.constData());
    }

    void whatIsNotKnownIsNoMember()
    {
        QCOMPARE(toJson(Transmission()).keys(),
                 QStringList({"event", "number", "start", "stop", "text"}));
    }

    void anObjectReadsBackAsTheTransmission()
    {
        Transmission transmission;
        transmission.number = 7;
        transmission.receiver = QStringLiteral("hf");
        transmission.source = QStringLiteral("a.wav");
        transmission.decoder = QStringLiteral("Baudot");
        transmission.tone_Hz = 1500.5;
        transmission.frequency_Hz = 7025000.0;
        transmission.speed_wpm = 21.9;
        transmission.baudRate = 45.45;
        transmission.shift_Hz = 170.0;
        transmission.isReversed = true;
        transmission.snr_dB = -0.1;
        transmission.start_us = 1778580900123000;
        transmission.stop_us = 1778580960000000;
        transmission.text = QStringLiteral("ПРИВЕТ");
        transmission.rawText = QStringLiteral("PRIWET");
        transmission.map = QStringLiteral("Russian");
        transmission.unknownCodes = QStringList{".-.-"};
        const QJsonObject object = toJson(transmission);
        QCOMPARE(object.size(), 18);
        QCOMPARE(toJson(transmissionOf(object)), object);
    }
};

QTEST_APPLESS_MAIN(tst_Transmission)
#include "tst_transmission.moc"
