// SPDX-License-Identifier: MIT
#include "station/mapstation.h"

#include "support/baudotmap.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using morsehost::MapStation;

namespace {

// Counts the stops that a value announces.
class StopCounter : public IObserver
{
public:
    void Update(Observable* /*source*/, TChangeCode code) override
    {
        stops += code == eCHANGE_FORCED ? 1 : 0;
    }

    int stops = 0;
};

} // namespace

class tst_MapStation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        writeBaudotWithMap(m_folder.path());
    }

    void stopIsAnnouncedOnceAndAddsNothing()
    {
        HostTree tree;
        QStringList texts;
        MapStation station(tree, "Receiver1", m_folder.path(),
                           [&texts](const QString& text) { texts += text; });
        station.enable();
        station.selectDecoder("Baudot");
        QVERIFY(station.selectMap("Other"));
        auto* const output = dynamic_cast<TextValue*>(tree.Find("Receiver1/Output"));
        auto* const saving = dynamic_cast<FlagValue*>(tree.Find("Receiver1/SaveToFile"));
        QVERIFY(output != nullptr && saving != nullptr);
        StopCounter ofOutput;
        StopCounter ofSaving;
        output->AddObserver(&ofOutput);
        saving->AddObserver(&ofSaving);
        station.receive("A");
        station.receive("A");
        QCOMPARE(ofOutput.stops, 0);
        station.stop();
        QCOMPARE(ofOutput.stops, 1);
        QCOMPARE(ofSaving.stops, 1);
        QCOMPARE(output->GetValue(), QString());
        QCOMPARE(texts.join(QString()), QString("\u05D0\u05D0"));
        QCOMPARE(station.history(), QString("\u05D0\u05D0"));
        // What comes after it is translated as before.
        station.receive("A");
        QCOMPARE(texts.join(QString()), QString("\u05D0\u05D0\u05D0"));
        output->DeleteObserver(&ofOutput);
        saving->DeleteObserver(&ofSaving);
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(tst_MapStation)
#include "tst_mapstation.moc"
