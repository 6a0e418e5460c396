// SPDX-License-Identifier: MIT
// What a band's lines show of a text: they give a terminal no orders, whatever was sent.
#include "app/commands/bandreporter.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace morsehost;

namespace {

// As a teleprinter of ASCII may send it: a colour, a bell, a line end.
const QString ORDERS = QStringLiteral("A\033[31mB\007 C\nD ");

} // namespace

class tst_BandReporter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void ordersToATerminalAreNotPassedOn_data()
    {
        QTest::addColumn<int>("form");
        QTest::newRow("lines") << int(BandForm::Lines);
        QTest::newRow("colon") << int(BandForm::Colon);
        QTest::newRow("table") << int(BandForm::Table);
    }
    void ordersToATerminalAreNotPassedOn()
    {
        QFETCH(int, form);
        QFile file(m_folder.filePath(QStringLiteral("shown")));
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Truncate));
        {
            Output output(file.handle());
            BandReport report;
            report.form = BandForm(form);
            const auto reporter = makeBandReporter(report, output);
            BandEntry signal = {};
            signal.number = 1;
            signal.frequency_Hz = 1500.0;
            reporter->found(signal);
            reporter->text(signal, ORDERS, 1000000);
            demodulator::BandSignal there = {};
            there.number = 1;
            reporter->heard(2.0, {there});
            Transmission transmission;
            transmission.number = 1;
            transmission.text = ORDERS;
            reporter->transmission(transmission);
        }
        QVERIFY(file.seek(0));
        QString shown = QString::fromUtf8(file.readAll());
        QVERIFY2(shown.contains(QChar(0xFFFD)), qPrintable(shown));
        QVERIFY2(!shown.contains(QStringLiteral("\033[31m")), qPrintable(shown));
        QVERIFY2(!shown.contains(QChar(7)), qPrintable(shown));
        QVERIFY2(shown.contains(QStringLiteral("C D")), qPrintable(shown));
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(tst_BandReporter)
#include "tst_bandreporter.moc"
