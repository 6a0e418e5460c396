// SPDX-License-Identifier: MIT
// Which transmissions are receptions of one, and in which order they stand.
#include "station/archive/receptions.h"

#include <QtTest>

using namespace morsehost;

namespace {

constexpr qint64 SECOND_us = 1000000;

ArchivedTransmission heard(qint64 id, const QString& station, const QString& text,
                           std::optional<double> snr_dB = {}, qint64 start_s = 100)
{
    ArchivedTransmission made;
    made.id = id;
    made.record.station = station;
    Transmission& transmission = made.record.transmission;
    transmission.receiver = "hf";
    transmission.decoder = "Morse";
    transmission.text = text;
    transmission.snr_dB = snr_dB;
    transmission.frequency_Hz = 7025000;
    transmission.start_us = start_s * SECOND_us;
    transmission.stop_us = (start_s + 20) * SECOND_us;
    return made;
}

const QString TEXT = "CQ CQ DE DL0XYZ DL0XYZ K = GOOD EVENING FROM THE NORTH SEA";

// "3 1=3 2": in this order, the copies with what they are copies of.
QString orderOf(const std::vector<ArchivedTransmission>& found)
{
    QStringList words;
    for (const ArchivedReception& one : joinReceptions(found))
        words += QString::number(one.transmission.id) +
                 (one.copyOf ? '=' + QString::number(*one.copyOf) : QString());
    return words.join(' ');
}

} // namespace

class tst_Receptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRule_data()
    {
        QTest::addColumn<QString>("station");
        QTest::addColumn<QString>("receiver");
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("frequency_Hz");
        QTest::addColumn<int>("start_s");
        QTest::addColumn<bool>("isSame");
        const auto row = [](const char* name, const QString& text, double frequency_Hz, int start_s,
                            bool isSame, const char* station = "south", const char* receiver = "hf",
                            const char* decoder = "Morse") {
            QTest::newRow(name) << station << receiver << decoder << text << frequency_Hz << start_s
                                << isSame;
        };
        row("the same", TEXT, 7025000, 100, true);
        row("of another receiver", TEXT, 7025000, 100, true, "north", "vhf");
        row("of the same receiver", TEXT, 7025000, 100, false, "north");
        row("by another decoder", TEXT, 7025000, 100, false, "south", "hf", "Baudot");
        row("a kilohertz away", TEXT, 7026000, 100, true);
        row("further away", TEXT, 7026001, 100, false);
        row("at no known frequency", TEXT, 0, 100, true);
        row("half of it later", TEXT, 7025000, 110, true);
        row("more of it later", TEXT, 7025000, 111, false);
        row("with a few errors", "CQ EQ DE DL0XYZ DL0XY3 K = G00D EVENING FROM THE NORTH SEA",
            7025000, 100, true);
        row("without its begin", "EVENING FROM THE NORTH SEA", 7025000, 100, true);
        row("words cut otherwise", "CQCQ DE DL0 XYZ DL0XYZK=GOOD EVE NING FROM THE NORTH SEA",
            7025000, 100, true);
        row("another call", "CQ CQ DE G3ABC G3ABC K", 7025000, 100, false);
        row("nothing read", "", 7025000, 100, false);
    }

    void theRule()
    {
        QFETCH(QString, station);
        QFETCH(QString, receiver);
        QFETCH(QString, decoder);
        QFETCH(QString, text);
        QFETCH(double, frequency_Hz);
        QFETCH(int, start_s);
        QFETCH(bool, isSame);
        const ArchiveRecord one = heard(1, "north", TEXT).record;
        ArchiveRecord other = heard(2, station, text, {}, start_s).record;
        other.transmission.receiver = receiver;
        other.transmission.decoder = decoder;
        other.transmission.frequency_Hz =
            frequency_Hz > 0 ? std::optional<double>(frequency_Hz) : std::nullopt;
        QCOMPARE(isSameTransmission(one, other), isSame);
        QCOMPARE(isSameTransmission(other, one), isSame);
    }

    void theBetterCopyStandsFirst()
    {
        QCOMPARE(orderOf({heard(1, "north", TEXT, 3.0), heard(2, "south", TEXT, 12.0)}),
                 QString("2 1=2"));
        QCOMPARE(orderOf({heard(1, "north", TEXT, 12.0), heard(2, "south", TEXT, 3.0)}),
                 QString("1 2=1"));
        // Of equal or unknown strength, the one that has more.
        QCOMPARE(orderOf({heard(1, "north", TEXT.left(40)), heard(2, "south", TEXT)}),
                 QString("2 1=2"));
    }

    void copiesStandTogetherAndTheRestKeepsItsOrder()
    {
        const std::vector<ArchivedTransmission> found = {
            heard(9, "north", "73 DE G3ABC", {}, 500), heard(8, "south", TEXT, 1.0),
            heard(7, "west", "TEST DE OK2XYZ", {}, 300), heard(6, "north", TEXT, 5.0),
            heard(5, "west", TEXT, 3.0)};
        QCOMPARE(orderOf(found), QString("9 6 5=6 8=6 7"));
        QCOMPARE(orderOf({}), QString());
    }

    void aReceiverHasHeardEachOnce()
    {
        // Sent twice without a pause, so that their times overlap.
        QCOMPARE(orderOf({heard(4, "south", TEXT, 1.0, 105), heard(3, "north", TEXT, 2.0, 105),
                          heard(2, "south", TEXT, 1.0), heard(1, "north", TEXT, 2.0)}),
                 QString("3 4=3 1 2=1"));
    }
};

QTEST_GUILESS_MAIN(tst_Receptions)
#include "tst_receptions.moc"
