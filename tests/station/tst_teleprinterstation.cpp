// SPDX-License-Identifier: MIT
#include "station/teleprinterstation.h"

#include "support/baudotmap.h"
#include "support/files.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace morsehost;

namespace {

class Heard : public StationListener
{
public:
    void transmission(const Transmission& transmission) override { transmissions += transmission; }
    void saving(const QString& message) override { complaints += message; }

    QList<Transmission> transmissions;
    QStringList complaints;
};

void send(TeleprinterStation& station, const char* text)
{
    const teleprinter::Line line = {{teleprinter::Code::Ita2, 45.45, 5}, 1585.0, 1415.0, 45.45};
    station.transmissionStarted(line, 0);
    for (std::int64_t i = 0; text[i] != 0; ++i)
        station.character(static_cast<std::uint8_t>(text[i]), (i + 1) * 165000);
    station.transmissionStopped(line, 2000000);
}

} // namespace

class tst_TeleprinterStation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        writeBaudotWithMap(m_folder.path());
    }

    void textIsKeptAsShownAndAsItCame()
    {
        const QTemporaryDir saved;
        Heard heard;
        HostTree tree;
        TeleprinterStation station(tree, settings("Other", saved.path()), heard);
        QCOMPARE(station.start(), QString());
        send(station, "A\r\nB");
        QCOMPARE(heard.transmissions.size(), 1);
        const Transmission& kept = heard.transmissions.first();
        QCOMPARE(kept.files.size(), 2);
        QCOMPARE(QFileInfo(kept.files[0]).fileName(), QString("1970_01_01__00_00_00_Baudot.txt"));
        QCOMPARE(QString::fromUtf8(contentOf(kept.files[0])), kept.text);
        QVERIFY(kept.text.startsWith(QChar(0x05D0)) && !kept.text.contains('\r'));
        QCOMPARE(contentOf(kept.files[1]), QByteArray("A\r\nB"));
        QCOMPARE(kept.rawText, QString("A\r\nB"));
        QCOMPARE(station.lost(), 0LL);
    }

    void transmissionsOfOneSecondHaveFilesOfTheirOwn()
    {
        const QTemporaryDir saved;
        Heard heard;
        HostTree tree;
        TeleprinterStation station(tree, settings("Default", saved.path()), heard);
        QCOMPARE(station.start(), QString());
        send(station, "ONE");
        send(station, "TWO");
        QCOMPARE(heard.transmissions.size(), 2);
        QCOMPARE(contentOf(heard.transmissions[0].files[1]), QByteArray("ONE"));
        QCOMPARE(contentOf(heard.transmissions[1].files[1]), QByteArray("TWO"));
    }

    void whatCannotBeSavedIsSaidAndCounted()
    {
        Heard heard;
        HostTree tree;
        TeleprinterStation station(tree, settings("Default", m_folder.filePath("gone")), heard);
        QCOMPARE(station.start(), QString());
        send(station, "ONE");
        QCOMPARE(heard.complaints.size(), 1);
        QVERIFY2(heard.complaints.first().contains("cannot be saved"),
                 qPrintable(heard.complaints.first()));
        QCOMPARE(station.lost(), 1LL);
        QCOMPARE(heard.transmissions.size(), 1);
        QCOMPARE(heard.transmissions.first().text, QString("ONE"));
        QVERIFY(heard.transmissions.first().files.isEmpty());
    }

    void mapIsLeftOutOnlyWhereItIsForOtherDecoders()
    {
        HostTree tree;
        QCOMPARE(mapForFound(tree, settings("other", QString())), QString("other"));
        QCOMPARE(mapForFound(tree, settings("Nowhere", QString())), QString("Nowhere"));
        TeleprinterSettings ofAscii = settings("Other", QString());
        ofAscii.decoder = "ASCII RTTY";
        QCOMPARE(mapForFound(tree, ofAscii), QString("Default"));
        QVERIFY(isMapOfAny(tree, m_folder.path(), "Other"));
        QVERIFY(!isMapOfAny(tree, m_folder.path(), "Nowhere"));
    }

private:
    TeleprinterSettings settings(const QString& map, const QString& saved) const
    {
        TeleprinterSettings settings;
        settings.place = "Receiver1";
        settings.decoder = "Baudot";
        settings.mapsDirectory = m_folder.path();
        settings.map = map;
        settings.saveDirectory = saved;
        return settings;
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(tst_TeleprinterStation)
#include "tst_teleprinterstation.moc"
