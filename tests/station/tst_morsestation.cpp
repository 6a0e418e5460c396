// SPDX-License-Identifier: MIT
// What a station does for one signal, and that several live side by side.
#include "station/morsestation.h"

#include "host/standin/resultreader.h"

#include "support/files.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using morsehost::MorseStation;
using morsehost::SaveLosses;
using morsehost::StationListener;
using morsehost::StationSettings;
using morsehost::Transmission;

namespace {

constexpr demodulator::SignalReport REPORT = {650.0, 22.0, 15.0};

class Log : public StationListener
{
public:
    void time(unsigned long long time_us) override
    {
        events += QStringLiteral("time %1").arg(time_us);
    }
    void symbol(int code) override { events += QStringLiteral("code %1").arg(code); }
    void text(const QString& text) override
    {
        events +=
            text == QLatin1String("\n") ? QStringLiteral("line") : QStringLiteral("text ") + text;
    }
    void unknownCode(const QString& elements) override
    {
        events += QStringLiteral("unknown ") + elements;
    }
    void transmission(const Transmission& transmission) override
    {
        events += QStringLiteral("transmission");
        transmissions.push_back(transmission);
    }
    void saving(const QString& message) override { said += message; }

    QStringList events;
    QStringList said;
    std::vector<Transmission> transmissions;
};

StationSettings at(const char* place)
{
    StationSettings settings;
    settings.place = QString::fromLatin1(place);
    return settings;
}

void send(MorseStation& station, const std::vector<int>& codes, std::int64_t time_us)
{
    for (const int code : codes)
        station.symbol(code, time_us);
}

void sendTransmission(MorseStation& station, const std::vector<int>& codes, std::int64_t start_us)
{
    station.transmissionStarted(start_us);
    send(station, codes, start_us + 10);
    station.transmissionStopped(start_us + 20, REPORT);
}

QByteArray contentOfOnly(const QString& folder, const char* pattern)
{
    const QDir dir(folder);
    const QStringList names = dir.entryList({QString::fromLatin1(pattern)}, QDir::Files);
    return names.size() == 1 ? contentOf(dir.filePath(names.first()))
                             : QByteArray::number(names.size()) + " files";
}

} // namespace

class tst_MorseStation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timesStandBeforeWhatIsDecodedThen()
    {
        Log log;
        StationSettings settings = at("One");
        settings.start_us = 1000;
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        sendTransmission(station, {0, 3, 1, 64, 3}, 0);
        sendTransmission(station, {0, 3}, 100);
        QCOMPARE(
            log.events,
            QStringList({"time 1000",    "code 0",    "time 1010", "code 3",    "text E",
                         "code 1",       "code 64",   "code 3",    "text T",    "time 1020",
                         "transmission", "time 1100", "code 5",    "line",      "code 0",
                         "time 1110",    "code 3",    "text E",    "time 1120", "transmission"}));
    }

    void aTransmissionHoldsWhatIsKnownOfIt()
    {
        Log log;
        StationSettings settings = at("One");
        settings.start_us = 1000000;
        settings.frequency_Hz = 7025000;
        settings.source = QStringLiteral("x.wav");
        settings.receiver = QStringLiteral("North");
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        sendTransmission(station, {0, 3, 4, 0, 1, 0, 1, 0, 1, 0, 3, 1, 3, 4}, 50);
        sendTransmission(station, {1, 3}, 100);
        QCOMPARE(log.transmissions.size(), std::size_t(2));
        const Transmission& first = log.transmissions[0];
        QCOMPARE(first.number, 1);
        QCOMPARE(first.text, QStringLiteral("E T"));
        QCOMPARE(first.unknownCodes, QStringList(".-.-.-."));
        QCOMPARE(first.start_us, 1000050LL);
        QCOMPARE(first.stop_us, 1000070LL);
        QCOMPARE(first.tone_Hz, std::optional<double>(650));
        QCOMPARE(first.speed_wpm, std::optional<double>(22));
        QCOMPARE(first.snr_dB, std::optional<double>(15));
        QCOMPARE(first.frequency_Hz, std::optional<double>(7025000));
        QCOMPARE(first.source, QStringLiteral("x.wav"));
        QCOMPARE(first.receiver, QStringLiteral("North"));
        const Transmission& second = log.transmissions[1];
        QCOMPARE(second.number, 2);
        QCOMPARE(second.text, QStringLiteral("T"));
        QCOMPARE(second.unknownCodes, QStringList());
    }

    void unknownCodesAreReportedWithTheirElements()
    {
        Log log;
        MorseStation station(m_tree, at("One"), log);
        QVERIFY(station.start());
        sendTransmission(station, {0, 0x80 | 1, 0, 1, 0, 1, 0, 0x80 | 3, 0, 3, 3}, 0);
        QCOMPARE(log.events.filter("unknown"), QStringList("unknown .-.-.-."));
        QCOMPARE(log.transmissions.at(0).text, QStringLiteral("E"));
    }

    // After a figure the alphabet's T is a zero.
    void aCutNoughtIsNoUnknownCode()
    {
        Log log;
        MorseStation station(m_tree, at("One"), log);
        QVERIFY(station.start());
        sendTransmission(station, {0, 0, 0, 0, 0, 3, 1, 3}, 0);
        QCOMPARE(log.transmissions.at(0).text, QStringLiteral("50"));
        QCOMPARE(log.events.filter("unknown"), QStringList());
    }

    void aTransmissionThatIsOpenAtTheEndIsEnded()
    {
        Log log;
        MorseStation station(m_tree, at("One"), log);
        QVERIFY(station.start());
        station.transmissionStarted(5);
        send(station, {0, 3}, 9);
        station.stop();
        QCOMPARE(log.transmissions.size(), std::size_t(1));
        QCOMPARE(log.transmissions[0].stop_us, 9LL);
        QCOMPARE(log.transmissions[0].tone_Hz, std::optional<double>());
        sendTransmission(station, {0, 3}, 100);
        QCOMPARE(log.transmissions.size(), std::size_t(1));
    }

    void stationsOfOneTreeDoNotHearEachOther()
    {
        Log one;
        Log two;
        const QTemporaryDir kept;
        StationSettings saving = at("Receiver1/Signal2");
        saving.saveDirectory = kept.path();
        MorseStation first(m_tree, at("Receiver1/Signal1"), one);
        MorseStation second(m_tree, saving, two);
        QVERIFY(first.start() && second.start());
        first.transmissionStarted(0);
        second.transmissionStarted(0);
        first.symbol(0, 1);
        second.symbol(1, 1);
        second.symbol(0, 1);
        first.symbol(3, 2);
        second.symbol(3, 2);
        first.stop();
        second.stop();
        QCOMPARE(one.transmissions.at(0).text, QStringLiteral("E"));
        QCOMPARE(two.transmissions.at(0).text, QStringLiteral("N"));
        // Only the second one saves.
        QCOMPARE(QDir(kept.path()).entryList(QDir::Files).size(), 3);
    }

    void aStationTakesItsValuesAlong()
    {
        {
            Log log;
            const MorseStation station(m_tree, at("Gone"), log);
            QVERIFY(m_tree.Find(QStringLiteral("Gone/Text")));
        }
        QVERIFY(!m_tree.Find(QStringLiteral("Gone/Text")));
        Log log;
        MorseStation again(m_tree, at("Gone"), log);
        QVERIFY(again.start());
        sendTransmission(again, {0, 3}, 0);
        QCOMPARE(log.transmissions.at(0).text, QStringLiteral("E"));
    }

    void anAlphabetThatIsMissingIsNoStart()
    {
        Log log;
        StationSettings settings = at("One");
        settings.alphabet.name = QStringLiteral("Elvish");
        settings.alphabet.directory = m_dir.path();
        QVERIFY(!MorseStation(m_tree, settings, log).start());
    }

    void aDashAfterAFigureIsAZeroUnlessCutNumbersAreOff_data()
    {
        QTest::addColumn<bool>("cutNumbers");
        QTest::addColumn<QString>("text");
        QTest::newRow("on") << true << QStringLiteral("50 0ET");
        QTest::newRow("off") << false << QStringLiteral("5T TET");
    }
    void aDashAfterAFigureIsAZeroUnlessCutNumbersAreOff()
    {
        QFETCH(bool, cutNumbers);
        QFETCH(QString, text);
        const QTemporaryDir saved;
        Log log;
        StationSettings settings = at("One");
        settings.alphabet.cutNumbers = cutNumbers;
        settings.saveDirectory = saved.path();
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        sendTransmission(station, {0, 0, 0, 0, 0, 3, 1, 3, 4, 1, 3, 0, 3, 1, 3}, 0);
        QCOMPARE(log.transmissions.at(0).text, text);
        QVERIFY(log.transmissions.at(0).unknownCodes.isEmpty());
        QVERIFY(!station.stop().any());
        const QStringList files = log.transmissions.at(0).files;
        QCOMPARE(files.size(), 3);
        QVERIFY2(contentOf(files[0]).contains(text.toUtf8()), contentOf(files[0]).constData());
    }

    // Several within a second, far more than the clock in their names can distinguish.
    void everyTransmissionHasADocumentOfItsOwn()
    {
        const QTemporaryDir dir;
        Log log;
        StationSettings settings = at("One");
        settings.saveDirectory = dir.path();
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        constexpr int COUNT = 20;
        for (int i = 0; i < COUNT; ++i)
            sendTransmission(station, {0, 3}, i * 100);
        QVERIFY(!station.stop().any());
        const QStringList names = QDir(dir.path()).entryList({"*.xml"}, QDir::Files);
        QCOMPARE(names.size(), COUNT);
        for (const QString& name : names) {
            QFile file(dir.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const auto document = TavikResultDataXml::readResultDocument(file);
            QVERIFY(document && document->transmissions.size() == 1);
            QCOMPARE(document->transmissions[0].blocks[0].frames.back().text, QStringLiteral("E"));
        }
        QCOMPARE(log.said, QStringList());
    }

    void aTransmissionLiesInTheFolderOfTheDayOnWhichItBegan()
    {
        const QTemporaryDir dir;
        Log log;
        StationSettings settings = at("One");
        settings.saveDirectory = dir.filePath("{day}/hf");
        settings.start_us = 1779148799000000; // 2026-05-18T23:59:59Z
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        station.transmissionStarted(0);
        send(station, {0, 3}, 100000);
        send(station, {1, 3}, 2000000); // after midnight
        station.transmissionStopped(2100000, REPORT);
        sendTransmission(station, {0, 0, 3}, 5000000);
        QVERIFY(!station.stop().any());
        const QString before = dir.filePath("2026-05-18/hf");
        const QString after = dir.filePath("2026-05-19/hf");
        QCOMPARE(log.transmissions.size(), std::size_t(2));
        QCOMPARE(log.transmissions[0].files.size(), 3);
        QCOMPARE(log.transmissions[0].files.filter(before).size(), 3);
        QCOMPARE(log.transmissions[1].files.filter(after).size(), 3);
        QCOMPARE(contentOfOnly(before, "*_MO__.txt"), QByteArray(". - "));
        QCOMPARE(contentOfOnly(after, "*_MO__.txt"), QByteArray(".. "));
        QCOMPARE(contentOfOnly(after, "*__Default.txt"), QByteArray("I"));
        QCOMPARE(log.said, QStringList());
    }

    void theSettingsShowWhatWasFound()
    {
        Log log;
        StationSettings settings = at("One");
        settings.demodulator = demodulator::Settings();
        settings.demodulator->tone_Hz = 600;
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        station.transmissionStarted(0);
        const auto text = [this] {
            return m_tree.Find(QStringLiteral("One/ReceiverSettings"))->GetStringValue();
        };
        QVERIFY(text().contains("<Tone unit=\"Hz\">600</Tone>"));
        QVERIFY(!text().contains("Found"));
        station.transmissionStopped(20, REPORT);
        QVERIFY(text().contains("<FoundTone unit=\"Hz\">650</FoundTone>"));
        QVERIFY(text().contains("<FoundSpeed unit=\"words per minute\">22</FoundSpeed>"));
        QVERIFY(text().contains("<SignalToNoiseRatio unit=\"dB\">15</SignalToNoiseRatio>"));
    }

    // What comes after the loss goes into new files.
    void deletedFilesAreBegunAgain()
    {
        const QTemporaryDir dir;
        Log log;
        StationSettings settings = at("One");
        settings.saveDirectory = dir.path();
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        station.transmissionStarted(0);
        send(station, {0, 3}, 1);
        for (const QString& name : QDir(dir.path()).entryList(QDir::Files))
            QVERIFY(QFile::remove(dir.filePath(name)));
        send(station, {1, 3}, 2); // the dash is lost
        send(station, {0, 1, 3}, 3);
        const SaveLosses lost = station.stop();
        QCOMPARE(lost.symbols, 1LL);
        QCOMPARE(lost.characters, 0LL);
        QCOMPARE(lost.documents, 0LL);
        QCOMPARE(contentOfOnly(dir.path(), "*_MO__.txt"), QByteArray(" .- "));
        QCOMPARE(contentOfOnly(dir.path(), "*__Default.txt"), QByteArray("TA"));
        QCOMPARE(log.said.filter("was deleted").size(), 1);
        QCOMPARE(log.said.filter("is written again").size(), 1);
    }

    // The demodulator may use the eighth bit of a code for itself.
    void dotsAndDashesCountWhateverTheirEighthBit()
    {
        const QTemporaryDir dir;
        Log log;
        StationSettings settings = at("One");
        settings.saveDirectory = dir.filePath("missing");
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        station.transmissionStarted(0);
        send(station, {0x80, 0x81, 0x80 | 3, 0x80 | 64}, 1);
        const SaveLosses lost = station.stop();
        QCOMPARE(lost.symbols, 2LL);
        QCOMPARE(lost.characters, 1LL);
        QCOMPARE(lost.documents, 1LL);
        QCOMPARE(log.transmissions.at(0).text, QStringLiteral("A"));
    }

    void aFolderThatVanishesIsSaidAtOnceAndWhenItIsBack()
    {
        const QTemporaryDir dir;
        const QString folder = dir.filePath("saved");
        QVERIFY(QDir(dir.path()).mkdir("saved"));
        Log log;
        StationSettings settings = at("One");
        settings.saveDirectory = folder;
        MorseStation station(m_tree, settings, log);
        QVERIFY(station.start());
        station.transmissionStarted(0);
        send(station, {0, 3}, 1);
        QVERIFY(QDir(folder).removeRecursively());
        send(station, {1, 3, 1, 3}, 2);
        QCOMPARE(log.said.size(), 2); // both files
        QVERIFY(QDir(dir.path()).mkdir("saved"));
        send(station, {0, 1, 3}, 3);
        QCOMPARE(log.said.size(), 4);
        const SaveLosses lost = station.stop();
        QCOMPARE(lost.symbols, 2LL);
        QCOMPARE(lost.characters, 2LL);
        QCOMPARE(lost.documents, 0LL);
        QCOMPARE(contentOfOnly(folder, "*__Default.txt"), QByteArray("A"));
    }

private:
    HostTree m_tree;
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(tst_MorseStation)
#include "tst_morsestation.moc"
