// SPDX-License-Identifier: MIT
#include "charmap/mappingdirectory.h"

#include "host/ivtclient.h"
#include "host/standin/configuration.h"
#include "host/standin/hosttree.h"
#include "host/standin/tracelog.h"
#include "support/amounts.h"
#include "support/decodermodules.h"
#include "support/files.h"
#include "support/intendedleak.h"
#include "support/outofmemory.h"
#include "support/privatemember.h"
#include "support/random.h"

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>
#include <utility>

PRIVATE_MEMBER(IpcIdentifier, MappingDirectory, m_ipcIdentifier, QString MappingDirectory::*);
PRIVATE_MEMBER(TimeString, MappingDirectory, CreateTimeString, QString (MappingDirectory::*)());
PRIVATE_MEMBER(OutputFile, MappingDirectory, m_outputFile, QFile MappingDirectory::*);
PRIVATE_MEMBER(FilenameCreation, MappingDirectory, CreateFilename, void (MappingDirectory::*)());
PRIVATE_MEMBER(SavingStart, MappingDirectory, InitSaveToFile, void (MappingDirectory::*)());

namespace {

/// Records every notification of the values it is given, and its own notifications.
class Log : public IObserver
{
public:
    void Watch(const QString& name, ValueBase* value)
    {
        m_names.insert(value, name);
        m_values.insert(name, value);
        value->AddObserver(this);
    }

    void Update(Observable* source, TChangeCode code) override
    {
        QString line = Line(source, code);
        if (code == eCHANGE_CONTENT || code == eCHANGE_FORCED)
            line += " '" + m_values.value(m_names.value(source))->GetStringValue() + "'";
        lines += line;
    }

    QString Line(Observable* source, TChangeCode code) const
    {
        return m_names.value(source, "?") + " " + QString::number(code);
    }

    QStringList lines;

private:
    QMap<Observable*, QString> m_names;
    QMap<QString, ValueBase*> m_values;
};

/// Records the notifications that a mapping directory gets.
class HeardDirectory : public MappingDirectory
{
public:
    HeardDirectory(const QString& directory, Log& log)
        : MappingDirectory(directory)
        , m_log(log)
    {
    }

    void Update(Observable* source, TChangeCode code) override
    {
        m_log.lines += m_log.Line(source, code) + " heard";
        MappingDirectory::Update(source, code);
    }

private:
    Log& m_log;
};

/// A host with all values, and a directory that is attached to them.
class Scene
{
public:
    explicit Scene(const QString& maps)
        : directory(maps, log)
    {
        log.Watch("maps", maps_);
        log.Watch("decoder", decoder);
        log.Watch("input", input);
        log.Watch("output", output);
        log.Watch("direction", direction);
        decoder->AddItems({"Teletype", "Packet", "Any", "Voice", "Unknown"}, nullptr);
        directory.SetAvailableMaps_ValuePath("d/maps");
        directory.SetDecoder_ValuePath("d/decoder");
        directory.SetDataInput_ValuePath("d/input", nullptr);
        directory.SetDataOutput_ValuePath("d/output");
        directory.SetTextDirectionRTL_ValuePath("d/direction");
        log.lines.clear();
    }

    /// With that decoder and map, enabled.
    Scene(const QString& maps, const QString& decoderName, const QString& map)
        : Scene(maps)
    {
        decoder->Select(decoderName, nullptr);
        directory.Init(map);
        directory.Enabled(true);
        maps_->HasChanged(eCHANGE_CONTENT, nullptr);
        log.lines.clear();
    }

    QStringList MapNames() const
    {
        QStringList names;
        for (long i = 0; i < maps_->GetItemCount(); ++i)
            names += maps_->GetItem(i)->GetName();
        return names;
    }

    Log log; // hears of the end of the values
    HostTree tree;
    ValueSelection* const maps_ = tree.Add<ValueSelection>("d/maps");
    ValueSelection* const decoder = tree.Add<ValueSelection>("d/decoder");
    TextValue* const input = tree.Add<TextValue>("d/input");
    TextValue* const output = tree.Add<TextValue>("d/output");
    FlagValue* const direction = tree.Add<FlagValue>("d/direction");
    HeardDirectory directory;
};

class Client : public IVtClient
{
public:
    void HandOver(ValueBase* value, int mode) override
    {
        handedOver = value;
        handedMode = mode;
    }

    ValueBase* handedOver = nullptr;
    int handedMode = -1;
};

} // namespace

class tst_MappingDirectory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        setConfigurationValue(QString(), "DecoderModulesFile",
                              writeFile(m_dir.filePath("modules"),
                                        moduleLine("Teletype", 'I') + moduleLine("Packet", 'A') +
                                            moduleLine("Any", 'B') + moduleLine("Voice", 'N')));
        QDir(m_dir.path()).mkdir("maps");
        const auto write = [&](const char* name, const QByteArray& content) {
            writeFile(maps() + "/" + name, content);
        };
        write("Greek.ascii.map", "A\t0x0391\nB\t0x0392\nC\t0x0391\nZ\t0x0000\n\n");
        write("Hebrew.ascii.map", "@TextDirection RL\nA\t0x05D0\n?\t!\n\n");
        write("Russian.ita2.map", "A\t0x0410\n\n");
        write("x.codec", "\n\nA;0x0063\n");
        write("x.ita2.map", "A\tm\n\n");
        write("Arabic.codec", "\nRL\nA;0x0627\n");
        write("a - b.ita2.map", "A\tb\n\n");
        write("Lost.CODEC", "\n\nA;0x63\n");
        write("notes.map", "A\tn\n\n");
        QDir(maps()).mkdir("folder.codec");
    }

    // Loading

    void theMapsOfTheFolderAreOfferedByCharacterSet()
    {
        MappingDirectory directory(maps());
        const QStringList ita2{"Arabic - ITA2", "Russian - ITA2", "a - b - ITA2", "x - ITA2"};
        const QStringList ascii{"Greek - ASCII", "Hebrew - ASCII"};
        QCOMPARE(directory.availableMaps(eCHARSET_NONE), QStringList());
        QCOMPARE(directory.availableMaps(eCHARSET_ITA2), ita2);
        QCOMPARE(directory.availableMaps(eCHARSET_ASCII), ascii);
        QCOMPARE(directory.availableMaps(eCHARSET_BOTH), ita2 + ascii);
    }

    void aMapFileReplacesACodecFileOfItsName()
    {
        Scene scene(maps(), "Teletype", "x - ITA2");
        QCOMPARE(scene.directory.translate("A"), "m");
    }

    void aCodecFileIsRead()
    {
        Scene scene(maps(), "Teletype", "Arabic - ITA2");
        QCOMPARE(scene.directory.translate("A"), QStringLiteral("\u0627"));
        QVERIFY(scene.direction->GetValue());
    }

    void ofTwoMapsOfOneNameTheLastInOrderIsTaken()
    {
        QTemporaryDir dir;
        QDateTime written = QDateTime::currentDateTime();
        for (const char* name : {"x.2.ita2.map", "x.3.ita2.map", "x.1.ita2.map"}) {
            QFile file(writeFile(dir.filePath(name), QByteArray("A\t") + name[2] + "\n\n"));
            written = written.addSecs(60); // the order of their ages is another one
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(written, QFileDevice::FileModificationTime));
        }
        Scene scene(dir.path(), "Teletype", "x - ITA2");
        QCOMPARE(scene.directory.translate("A"), "3");
    }

    void aMissingFolderOffersDefaultAlone()
    {
        Scene scene(m_dir.filePath("missing"), "Any", "Greek - ASCII");
        QCOMPARE(scene.MapNames(), QStringList{"Default"});
        QCOMPARE(scene.maps_->GetStringValue(), "Default");
    }

    void aFolderIsFoundUnderThePathOfTheHost()
    {
        MappingDirectory directory(m_dir.path() + "\\maps\\");
        QCOMPARE(directory.availableMaps(eCHARSET_ASCII).size(), 2);
    }

    void theMapsStayWhenTheirFolderVanishes()
    {
        auto dir = std::make_unique<QTemporaryDir>();
        writeFile(dir->filePath("x.ascii.map"), "A\ty\n\n");
        Scene scene(dir->path(), "Packet", "x - ASCII");
        dir.reset();
        scene.directory.Init("x - ASCII");
        QCOMPARE(scene.maps_->GetStringValue(), "x - ASCII");
        QCOMPARE(scene.directory.translate("A"), "y");
    }

    // The list of maps

    void theListFollowsTheDecoder_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QString>("selection");
        QTest::addColumn<QStringList>("offered");
        QTest::addColumn<QString>("selected");
        const QStringList ita2{"Arabic - ITA2", "Russian - ITA2", "a - b - ITA2", "x - ITA2"};
        const QStringList ascii{"Greek - ASCII", "Hebrew - ASCII"};
        const QStringList none{"Default"};
        QTest::newRow("ITA2") << "Teletype"
                              << "x - ITA2" << none + ita2 << "x - ITA2";
        QTest::newRow("ASCII") << "Packet"
                               << "Greek - ASCII" << none + ascii << "Greek - ASCII";
        QTest::newRow("both, ITA2") << "Any"
                                    << "x - ITA2" << none + ita2 + ascii << "x - ITA2";
        QTest::newRow("both, ASCII") << "Any"
                                     << "Greek - ASCII" << none + ita2 + ascii << "Greek - ASCII";
        QTest::newRow("both, default") << "Any"
                                       << "Default" << none + ita2 + ascii << "Default";
        QTest::newRow("a name of the other set")
            << "Packet"
            << "Greek - ITA2" << none + ascii << "Greek - ASCII";
        QTest::newRow("a name alone") << "Packet"
                                      << "Greek" << none + ascii << "Greek - ASCII";
        QTest::newRow("missing") << "Packet"
                                 << "Klingon - ASCII" << none + ascii << "Default";
        QTest::newRow("nothing") << "Packet"
                                 << "" << none + ascii << "Default";
        QTest::newRow("no set") << "Voice"
                                << "Greek - ASCII" << none << "Default";
        QTest::newRow("unknown decoder") << "Unknown"
                                         << "Greek - ASCII" << none << "Default";
        QTest::newRow("no decoder") << ""
                                    << "Greek - ASCII" << none << "Default";
    }

    void theListFollowsTheDecoder()
    {
        QFETCH(QString, decoder);
        QFETCH(QString, selection);
        Scene scene(maps());
        scene.decoder->Select(decoder, nullptr);
        scene.directory.Init(selection);
        QTEST(scene.MapNames(), "offered");
        QTEST(scene.maps_->GetStringValue(), "selected");
        for (long i = 0; i < scene.maps_->GetItemCount(); ++i) {
            QCOMPARE(scene.maps_->GetItem(i)->GetKey(), i);
            QCOMPARE(scene.maps_->GetItem(i)->GetValue(), double(i));
        }
    }

    void withoutAvailableMapsNothingIsFilled()
    {
        HostTree tree;
        MappingDirectory directory(maps());
        directory.Init("Greek - ASCII");
        directory.Enabled(true);
        directory.Enabled(false);
        QCOMPARE(directory.translate("A"), "A");
    }

    void aNameWithASeparatorIsOfferedButCannotBeChosen()
    {
        Scene scene(maps(), "Teletype", "Russian - ITA2");
        QVERIFY(scene.maps_->Select(QStringLiteral("a - b - ITA2"), nullptr));
        QCOMPARE(scene.directory.translate("A"), QStringLiteral("\u0410"));
    }

    void recordsThatAreMadeOnTheWayAreOfferedFromThenOn()
    {
        // Switching to "Default" with "Default" in force looks it up under no character set; a
        // text before any selection looks up a map without a name.
        Scene scene(maps());
        scene.decoder->Select(QStringLiteral("Packet"), nullptr);
        scene.directory.Init("Default");
        QCOMPARE(scene.directory.translate("A"), "A");
        QCOMPARE(scene.directory.availableMaps(eCHARSET_ASCII),
                 (QStringList{" - ASCII", "Greek - ASCII", "Hebrew - ASCII"}));
    }

    // Notifications, in their order. "heard" is a notification of the directory itself.

    void initIsHeardButNotObeyedBeforeItIsEnabled()
    {
        Scene scene(maps());
        scene.decoder->Select(QStringLiteral("Packet"), nullptr);
        scene.log.lines.clear();
        scene.directory.Init("Hebrew - ASCII");
        QCOMPARE(scene.log.lines, (QStringList{"maps 7", "maps 7 heard", "maps 7", "maps 7",
                                               "maps 3 'Hebrew - ASCII'", "maps 3 heard"}));
        scene.log.lines.clear();
        scene.directory.Enabled(true);
        QCOMPARE(scene.log.lines, QStringList());
        scene.maps_->HasChanged(eCHANGE_CONTENT, nullptr);
        QCOMPARE(scene.log.lines,
                 (QStringList{"maps 3 'Hebrew - ASCII'", "maps 3 heard", "direction 3 '1'"}));
    }

    void aMapIsChosen()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.maps_->Select(QStringLiteral("Hebrew - ASCII"), nullptr);
        scene.maps_->Select(QStringLiteral("Greek - ASCII"), nullptr);
        QCOMPARE(scene.log.lines,
                 (QStringList{"maps 3 'Hebrew - ASCII'", "maps 3 heard", "direction 3 '1'",
                              "maps 3 'Greek - ASCII'", "maps 3 heard", "direction 3 '0'"}));
    }

    void defaultIsChosen()
    {
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.maps_->Select(QStringLiteral("Default"), nullptr);
        scene.input->SetValue(QStringLiteral("A\u0410?"), nullptr);
        QCOMPARE(scene.log.lines,
                 (QStringList{"maps 3 'Default'", "maps 3 heard", "direction 3 '0'",
                              QStringLiteral("input 3 'A\u0410?'"), "input 3 heard",
                              QStringLiteral("output 3 'A\u0410?'")}));
    }

    void defaultUnderACharacterSetReportsTheDirectionOfTheMapBeforeThere()
    {
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.maps_->AddItems({"Default - ASCII", "Default - ITA2"}, nullptr);
        for (const bool isAscii : {false, true, true}) {
            scene.maps_->Select(QStringLiteral("Hebrew - ASCII"), nullptr);
            scene.direction->SetValue(!isAscii, nullptr);
            scene.maps_->Select(QString(isAscii ? "Default - ASCII" : "Default - ITA2"), nullptr);
            // "Hebrew" is a map of ASCII only.
            QCOMPARE(scene.direction->GetValue(), isAscii);
            QCOMPARE(scene.directory.translate("A"), "A");
        }
        // The map before is "Default" itself now, which has no direction.
        scene.maps_->Select(QStringLiteral("Default - ITA2"), nullptr);
        QVERIFY(!scene.direction->GetValue());
    }

    void aMapThatDoesNotExistChangesNothing()
    {
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.maps_->AddItem("Klingon - ASCII", 9, 9, nullptr);
        scene.maps_->Select(QStringLiteral("Klingon - ASCII"), nullptr);
        scene.input->SetValue("A", nullptr);
        QCOMPARE(scene.log.lines, (QStringList{"maps 7", "maps 7 heard", "maps 3 'Klingon - ASCII'",
                                               "maps 3 heard", "input 3 'A'", "input 3 heard",
                                               QStringLiteral("output 3 '\u05d0'")}));
    }

    void theDecoderChanges()
    {
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.decoder->Select(QStringLiteral("Voice"), nullptr);
        QCOMPARE(scene.log.lines, (QStringList{"decoder 3 'Voice'", "decoder 3 heard", "maps 7",
                                               "maps 7", "maps 7 heard", "maps 3 'Default'",
                                               "maps 3 heard", "direction 3 '0'"}));
    }

    void theDecoderChangesAndTheMapStays()
    {
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.decoder->Select(QStringLiteral("Any"), nullptr);
        QCOMPARE(scene.log.lines,
                 (QStringList{"decoder 3 'Any'", "decoder 3 heard", "maps 7", "maps 7",
                              "maps 7 heard", "maps 7", "maps 7", "maps 7", "maps 7", "maps 7",
                              "maps 7", "maps 3 'Hebrew - ASCII'", "maps 3 heard"}));
    }

    void theDecoderOfBothSetsKeepsTheSetOfTheMap()
    {
        Scene scene(maps(), "Any", "x - ITA2");
        scene.maps_->Select(QStringLiteral("Greek - ASCII"), nullptr);
        scene.log.lines.clear();
        scene.decoder->HasChanged(eCHANGE_CONTENT, nullptr);
        QCOMPARE(scene.log.lines.last(), "maps 3 heard");
        QCOMPARE(scene.maps_->GetStringValue(), "Greek - ASCII");
        QCOMPARE(scene.directory.translate("A"), QStringLiteral("\u0391"));
    }

    void textIsTranslatedAndAnnouncedAlsoWhenItIsTheSame()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.input->SetValue("A", nullptr);
        scene.input->SetValue("C", nullptr);
        QCOMPARE(
            scene.log.lines,
            (QStringList{"input 3 'A'", "input 3 heard", QStringLiteral("output 3 '\u0391'"),
                         "input 3 'C'", "input 3 heard", QStringLiteral("output 3 '\u0391'")}));
    }

    void aForcedEvaluationIsObeyedWhileDisabled()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.directory.Enabled(false);
        scene.log.lines.clear();
        scene.input->SetValue("A", nullptr);
        scene.input->HasChanged(eCHANGE_FORCED, nullptr);
        scene.input->HasChanged(eCHANGE_FORCED, nullptr);
        QCOMPARE(
            scene.log.lines,
            (QStringList{"input 3 'A'", "input 3 heard", "input 19 'A'", "input 19 heard",
                         QStringLiteral("output 3 '\u0391'"), QStringLiteral("output 19 '\u0391'"),
                         "input 19 'A'", "input 19 heard", QStringLiteral("output 19 '\u0391'")}));
    }

    void switchingOffEmptiesTheOutputAndIsHeard()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.input->SetValue("A", nullptr);
        scene.log.lines.clear();
        scene.directory.Enabled(false);
        QCOMPARE(scene.log.lines, (QStringList{"output 3 ''", "output 3 heard"}));
        scene.decoder->Select(QStringLiteral("Any"), nullptr);
        scene.input->SetValue("B", nullptr);
        QCOMPARE(scene.MapNames().size(), 3);
        QCOMPARE(scene.output->GetValue(), "");
    }

    void changesOfFrequencyModulationAndChannelAreIgnored()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.directory.SetFrequency_ValuePath("d/frequency");
        scene.directory.SetModtype_ValuePath("d/modulation");
        scene.directory.SetChannelIndex_ValuePath("d/channel");
        scene.input->SetValue("A", nullptr);
        scene.log.lines.clear();
        for (const char* name : {"frequency", "modulation", "channel"})
            scene.tree.Find("d/" + QString(name))->HasChanged(eCHANGE_CONTENT, nullptr);
        QCOMPARE(scene.log.lines, (QStringList{"? 3 heard", "? 3 heard", "? 3 heard"}));
    }

    void otherCodesAndValuesAreIgnored()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.directory.SetFrequency_ValuePath("d/frequency");
        scene.directory.SetModtype_ValuePath("d/modulation");
        scene.directory.SetChannelIndex_ValuePath("d/channel");
        scene.directory.SetTranslateAll_ValuePath("d/all");
        scene.directory.SetTranslatedFile_ValuePath("d/file");
        scene.input->SetValue("A", nullptr);
        const QStringList before = scene.MapNames();
        for (const char* name : {"frequency", "modulation", "channel", "all", "file", "maps",
                                 "decoder", "output", "direction"}) {
            auto* const value = dynamic_cast<ValueBase*>(scene.tree.Find("d/" + QString(name)));
            QVERIFY(value);
            for (const int code : {0, 1, 2, 4, 7, 18, 19, 20})
                value->HasChanged(static_cast<TChangeCode>(code), nullptr);
        }
        QCOMPARE(scene.MapNames(), before);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0391"));
        QCOMPARE(scene.directory.TranslateHistory(), QStringLiteral("\u0391"));
    }

    // Translation

    void textIsTranslatedThroughTheMap_data()
    {
        QTest::addColumn<QString>("map");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("translated");
        QTest::newRow("character by character") << "Greek - ASCII"
                                                << "ABCD" << QStringLiteral("\u0391\u0392\u0391D");
        QTest::newRow("0 is a blank") << "Greek - ASCII"
                                      << "AZ" << QStringLiteral("\u0391 ");
        QTest::newRow("outside Latin-1 is a question mark")
            << "Greek - ASCII" << QStringLiteral("\u0410A\u00ff")
            << QStringLiteral("?\u0391\u00ff");
        QTest::newRow("which the map may translate")
            << "Hebrew - ASCII" << QStringLiteral("\u0410") << "!";
        QTest::newRow("beyond the BMP are two")
            << "Greek - ASCII" << QStringLiteral("\U0001f600") << "??";
        QTest::newRow("NUL") << "Greek - ASCII" << QStringLiteral("A\0B")
                             << QStringLiteral("\u0391\0\u0392");
        QTest::newRow("nothing") << "Greek - ASCII"
                                 << ""
                                 << "";
        QTest::newRow("default") << "Default" << QStringLiteral("A\u0410\U0001f600\0")
                                 << QStringLiteral("A\u0410\U0001f600\0");
    }

    void textIsTranslatedThroughTheMap()
    {
        QFETCH(QString, map);
        QFETCH(QString, text);
        QFETCH(QString, translated);
        Scene scene(maps(), "Packet", map);
        QCOMPARE(scene.directory.translate(text), translated);
        QCOMPARE(scene.directory.translate(text.repeated(100)), translated.repeated(100));
    }

    void beforeAnySelectionCharactersOutsideLatin1BecomeQuestionMarks()
    {
        MappingDirectory directory(maps());
        QCOMPARE(directory.translate(QStringLiteral("A\u0410")), "A?");
    }

    void theHistoryIsTranslatedAgainThroughAnotherMap()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.input->SetValue("A", nullptr);
        scene.input->SetValue("BA", nullptr);
        QCOMPARE(scene.directory.TranslateHistory(), QStringLiteral("\u0391\u0392\u0391"));
        scene.maps_->Select(QStringLiteral("Hebrew - ASCII"), nullptr);
        QCOMPARE(scene.directory.TranslateHistory(), QStringLiteral("\u05d0B\u05d0"));
        scene.maps_->Select(QStringLiteral("Default"), nullptr);
        QCOMPARE(scene.directory.TranslateHistory(), "ABA");
        scene.directory.ClearHistory();
        QCOMPARE(scene.directory.TranslateHistory(), "");
    }

    void theHistoryKeepsTheNewestCharacters()
    {
        Scene scene(maps(), "Packet", "Default");
        QVERIFY(scene.directory.SetMaxNumberOfChars_ValuePath("d/max"));
        auto* const max = dynamic_cast<IntegerValue*>(scene.tree.Find("d/max"));
        QCOMPARE(max->GetValue(), 10000);
        QCOMPARE(max->GetMin(), 100);
        QCOMPARE(max->GetMax(), 10000);
        QCOMPARE(max->GetStep(), 1);
        max->SetValue(1, nullptr);
        QCOMPARE(max->GetValue(), 100);

        const QString text = QString(50, 'a') + QString(100, 'b');
        scene.directory.translate(text);
        QCOMPARE(scene.directory.TranslateHistory(), QString(100, 'b'));
        scene.directory.translate("c");
        QCOMPARE(scene.directory.TranslateHistory(), QString(99, 'b') + "c");
        // A longer bound brings nothing back; a shorter one counts from the next text on.
        max->SetValue(200, nullptr);
        scene.directory.translate(QString(150, 'd'));
        QCOMPARE(scene.directory.TranslateHistory(), QString(49, 'b') + "c" + QString(150, 'd'));
        max->SetValue(100, nullptr);
        QCOMPARE(scene.directory.TranslateHistory().size(), 200);
        scene.directory.translate("e");
        QCOMPARE(scene.directory.TranslateHistory(), QString(99, 'd') + "e");
    }

    void theBoundsOfTheHistoryAreSetAsTheDirectorysOwnChange()
    {
        Scene scene(maps());
        auto* const max = scene.tree.Add<IntegerValue>("d/max");
        max->SetValue(5, nullptr);
        scene.log.Watch("max", max);
        QVERIFY(scene.directory.SetMaxNumberOfChars_ValuePath("d/max"));
        // The bounds are announced to others alone, the number to the directory as well.
        QCOMPARE(scene.log.lines, (QStringList{"max 3 '100'", "max 3 '10000'", "max 3 heard"}));
    }

    void theHistoryIsTheSameInPiecesOfAnySize()
    {
        Scene scene(maps(), "Packet", "Default");
        scene.directory.SetMaxNumberOfChars_ValuePath("d/max");
        auto* const max = dynamic_cast<IntegerValue*>(scene.tree.Find("d/max"));
        testsupport::Random random("history");
        QString expected;
        for (int round = 0; round < 3000; ++round) {
            if (random.below(100) == 0)
                max->SetValue(100 + int(random.below(300)), nullptr);
            const QString text(int(random.below(random.below(10) ? 5 : 900)),
                               QChar('a' + round % 26));
            scene.directory.translate(text);
            expected = (expected + text).right(max->GetValue());
            QCOMPARE(scene.directory.TranslateHistory(), expected);
        }
    }

    void aBoundBelowZeroKeepsNothing()
    {
        Scene scene(maps(), "Packet", "Default");
        scene.directory.SetMaxNumberOfChars_ValuePath("d/max");
        auto* const max = dynamic_cast<IntegerValue*>(scene.tree.Find("d/max"));
        max->SetMinMax(-5, -10, 1, nullptr); // a maximum below its minimum
        scene.directory.translate("abc");
        QCOMPARE(scene.directory.TranslateHistory(), "");
    }

    void tenMillionCharactersAreTranslatedInOnePieceAndOneByOne()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.directory.SetMaxNumberOfChars_ValuePath("d/max");
        const int count = testsupport::largeAmount(10 * 1000 * 1000);
        scene.input->SetValue(QString(count, 'A'), nullptr);
        QCOMPARE(scene.output->GetValue(), QString(count, QChar(0x391)));
        QCOMPARE(scene.directory.TranslateHistory(), QString(10000, QChar(0x391)));
        scene.log.lines.clear();
        // To move the whole history for each of them would take minutes.
        for (int i = 0; i < count; ++i)
            scene.directory.translate(i % 2 ? QStringLiteral("A") : QStringLiteral("B"));
        QCOMPARE(scene.directory.TranslateHistory(), QStringLiteral("\u0392\u0391").repeated(5000));
    }

    // Values

    void everySetterCreatesItsValueAndRegistersOnce()
    {
        struct Observed : MappingDirectory
        {
            using MappingDirectory::MappingDirectory;
            void Update(Observable* source, TChangeCode code) override
            {
                ++count;
                MappingDirectory::Update(source, code);
            }
            int count = 0;
        };
        HostTree tree;
        Observed directory(maps());
        const auto attachAndCount = [&](bool attached, const char* path, const char* type) {
            auto* const value = tree.Find(path);
            QVERIFY(attached && value);
            QVERIFY2(typeid(*value) == *m_types.value(type), path);
            directory.count = 0;
            value->HasChanged(static_cast<TChangeCode>(99), nullptr);
            QCOMPARE(directory.count, QLatin1String(path) == QLatin1String("d/direction") ? 0 : 1);
        };
        attachAndCount(directory.SetAvailableMaps_ValuePath("d/maps"), "d/maps", "selection");
        attachAndCount(directory.SetChannelIndex_ValuePath("d/channel"), "d/channel", "integer");
        attachAndCount(directory.SetDataInput_ValuePath("d/in", nullptr), "d/in", "text");
        attachAndCount(directory.SetDataOutput_ValuePath("d/out"), "d/out", "text");
        attachAndCount(directory.SetDecoder_ValuePath("d/decoder"), "d/decoder", "selection");
        attachAndCount(directory.SetFrequency_ValuePath("d/frequency"), "d/frequency", "real");
        attachAndCount(directory.SetMaxNumberOfChars_ValuePath("d/max"), "d/max", "integer");
        attachAndCount(directory.SetModtype_ValuePath("d/modtype"), "d/modtype", "selection");
        attachAndCount(directory.SetSaveToFile_ValuePath("d/save"), "d/save", "flag");
        attachAndCount(directory.SetTextDirectionRTL_ValuePath("d/direction"), "d/direction",
                       "flag");
        attachAndCount(directory.SetTranslateAll_ValuePath("d/all"), "d/all", "flag");
        attachAndCount(directory.SetTranslatedFile_ValuePath("d/file"), "d/file", "text");
    }

    void aValueOfAnotherKindIsTracedAndADetachedOneIsUsed()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.tree.Add<FlagValue>("d/flag");
        TraceRecorder traces;
        const IntendedLeak detached;
        Client client;
        QVERIFY(scene.directory.SetDataInput_ValuePath("d/flag", &client));
        QCOMPARE(traces.Traces().size(), 1);
        QVERIFY(traces.Messages().first().contains("'d/flag'"));
        auto* const input = dynamic_cast<TextValue*>(client.handedOver);
        QVERIFY(input);
        QVERIFY(input != scene.tree.Find("d/flag"));
        input->SetValue("B", nullptr);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0392"));
        input->DeleteObservers();
    }

    void withoutATreeTheValuesAreDetached()
    {
        TraceRecorder traces;
        const IntendedLeak detached;
        MappingDirectory directory(maps());
        QVERIFY(directory.SetAvailableMaps_ValuePath("d/maps"));
        QVERIFY(directory.SetTextDirectionRTL_ValuePath("d/direction"));
        directory.Enabled(true);
        directory.Init("Default");
        QCOMPARE(directory.translate(QStringLiteral("\u0410")), QStringLiteral("\u0410"));
    }

    void theInputIsHandedToAClient()
    {
        Scene scene(maps());
        Client client;
        QVERIFY(scene.directory.SetDataInput_ValuePath("d/input", &client));
        QCOMPARE(client.handedOver, static_cast<ValueBase*>(scene.input));
        QCOMPARE(client.handedMode, 0);
    }

    void aClientMayTakeTheObserversOfTheInputAway()
    {
        struct ClearingClient : IVtClient
        {
            void HandOver(ValueBase* value, int) override { value->DeleteObservers(); }
        };
        Scene scene(maps(), "Packet", "Greek - ASCII");
        ClearingClient client;
        // The value is handed over between its two registrations.
        QVERIFY(scene.directory.SetDataInput_ValuePath("d/input", &client));
        scene.input->SetValue("B", nullptr);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0392"));
    }

    void aValueThatIsBeingDeletedIsNotHandedOver()
    {
        struct Attaching : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_DELETED)
                    attached = directory->SetDataInput_ValuePath("d/dying", &client);
            }
            MappingDirectory* directory = nullptr;
            Client client;
            bool attached = true;
        };
        Scene scene(maps());
        auto* const dying = scene.tree.Add<TextValue>("d/dying");
        Attaching host;
        host.directory = &scene.directory;
        dying->AddObserver(&host);
        delete dying;
        QVERIFY(!host.attached);
        QCOMPARE(host.client.handedMode, -1);
    }

    void aTextDirectionThatIsBeingDeletedIsNotTakenUp()
    {
        struct Attaching : IObserver
        {
            void Update(Observable* /*source*/, TChangeCode code) override
            {
                if (code == eCHANGE_DELETED)
                    attached = directory->SetTextDirectionRTL_ValuePath("d/dying");
            }
            MappingDirectory* directory = nullptr;
            bool attached = true;
        };
        Scene scene(maps());
        auto* const dying = scene.tree.Add<FlagValue>("d/dying");
        Attaching host;
        host.directory = &scene.directory;
        dying->AddObserver(&host);
        delete dying;
        QVERIFY(!host.attached);
    }

    void aValueThatWasReplacedIsNoLongerRegarded()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        QVERIFY(scene.directory.SetDataInput_ValuePath("d/other", nullptr));
        scene.input->SetValue("A", nullptr);
        QCOMPARE(scene.output->GetValue(), "");
        // Still registered, as the log shows, which does no harm.
        QCOMPARE(scene.log.lines.last(), "input 3 heard");
        delete scene.input;
        dynamic_cast<TextValue*>(scene.tree.Find("d/other"))->SetValue("B", nullptr);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0392"));
    }

    void theDestructorTakesBackEveryRegistration()
    {
        HostTree tree;
        auto* const replaced = tree.Add<TextValue>("d/replaced");
        auto* const gone = tree.Add<TextValue>("d/gone");
        auto directory = std::make_unique<MappingDirectory>(maps());
        IObserver* const former = directory.get();
        directory->SetDataInput_ValuePath("d/replaced", nullptr);
        directory->SetDataInput_ValuePath("d/gone", nullptr);
        directory->SetDataInput_ValuePath("d/input", nullptr);
        directory->SetDataOutput_ValuePath("d/output");
        directory->SetAvailableMaps_ValuePath("d/maps");
        directory->SetDecoder_ValuePath("d/decoder");
        directory->SetSaveToFile_ValuePath("d/save");
        directory->SetTranslateAll_ValuePath("d/all");
        directory->SetTranslatedFile_ValuePath("d/file");
        directory->SetMaxNumberOfChars_ValuePath("d/max");
        directory->SetFrequency_ValuePath("d/frequency");
        directory->SetModtype_ValuePath("d/modulation");
        directory->SetChannelIndex_ValuePath("d/channel");
        QVERIFY(!replaced->AddObserver(former)); // registered still
        delete gone;
        directory.reset();
        for (const char* name : {"replaced", "input", "output", "maps", "decoder", "save", "all",
                                 "file", "max", "frequency", "modulation", "channel"}) {
            ValueBase* const value = tree.Find("d/" + QString(name));
            QVERIFY2(value->AddObserver(former), name);
            value->DeleteObserver(former);
        }
    }

    void aValueInStateOneIsNotHeldAndNothingStaysRegisteredWithIt_data()
    {
        QTest::addColumn<int>("before");
        QTest::newRow("it was not held") << 0;
        QTest::newRow("it was held in that role") << 1;
        QTest::newRow("it was held, and left its role when it said so") << 2;
        QTest::newRow("it had been replaced, and said so") << 3;
    }

    void aValueInStateOneIsNotHeldAndNothingStaysRegisteredWithIt()
    {
        QFETCH(int, before);
        HostTree tree;
        auto* const value = tree.Add<TextValue>("d/value");
        auto directory = std::make_unique<MappingDirectory>(maps());
        IObserver* const former = directory.get();
        if (before > 0)
            QVERIFY(directory->SetDataInput_ValuePath("d/value", nullptr));
        if (before == 3)
            QVERIFY(directory->SetDataInput_ValuePath("d/other", nullptr));
        value->SetState(eSTATE_DELETED, nullptr);
        if (before >= 2)
            value->HasChanged(eCHANGE_DELETED, nullptr);
        if (before < 3)
            QVERIFY(!directory->SetDataInput_ValuePath("d/value", nullptr));
        directory.reset();
        value->SetState(eSTATE_VALID, nullptr);
        QVERIFY(value->AddObserver(former));
        value->DeleteObserver(former);
    }

    void aValueThatServesInAnotherRoleStaysRegistered()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.input->SetState(eSTATE_DELETED, nullptr);
        QVERIFY(!scene.directory.SetTranslatedFile_ValuePath("d/input"));
        scene.input->SetState(eSTATE_VALID, nullptr);
        scene.input->SetValue("A", nullptr);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0391"));
    }

    void aDirectoryThatMemoryFailsWhileItEndsTracesIt()
    {
        HostTree tree;
        auto* const input = tree.Add<TextValue>("d/input");
        TraceRecorder traces;
        auto directory = std::make_unique<MappingDirectory>(maps());
        QVERIFY(directory->SetDataInput_ValuePath("d/input", nullptr));
        {
            const OutOfMemory outOfMemory;
            directory.reset(); // leaving a value takes memory
            QVERIFY(OutOfMemory::HasHappened());
        }
        QCOMPARE(traces.Messages(),
                 QStringList{"Exception catched in MorseTranslator::~MorseHandler"});
        QCOMPARE(traces.Traces().at(0).sourceFile, "tools\\morsehandler\\mappingdirectory");
        QCOMPARE(traces.Traces().at(0).line, 126);
        input->SetValue("x", nullptr); // no observer is left
    }

    void aDeletedValueIsForgottenInEveryRole()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        // One value for two roles.
        scene.directory.SetDataOutput_ValuePath("d/input");
        scene.input->SetValue("A", nullptr);
        delete scene.input;
        scene.directory.Enabled(false);
        QCOMPARE(scene.directory.TranslateHistory(), QStringLiteral("\u0391"));
    }

    void aValueThatOnlySaysSoIsNotForgotten()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.input->HasChanged(eCHANGE_DELETED, nullptr);
        scene.input->SetValue("A", nullptr);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0391"));
    }

    void whatNeedsADeletedValueIsLeftUndone_data()
    {
        QTest::addColumn<QString>("value");
        for (const char* value : {"maps", "decoder", "input", "output", "direction", "max", "save"})
            QTest::newRow(value) << value;
    }

    void whatNeedsADeletedValueIsLeftUndone()
    {
        QFETCH(QString, value);
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.directory.SetMaxNumberOfChars_ValuePath("d/max");
        scene.directory.SetSaveToFile_ValuePath("d/save");
        delete scene.tree.Find("d/" + value);
        if (value != "decoder")
            scene.decoder->Select(QStringLiteral("Any"), nullptr);
        if (value != "maps") {
            scene.maps_->Select(QStringLiteral("Greek - ASCII"), nullptr);
            scene.maps_->Select(QStringLiteral("Default"), nullptr);
            scene.maps_->Select(QStringLiteral("Hebrew - ASCII"), nullptr);
        }
        scene.directory.Init("Hebrew - ASCII");
        if (value != "input") {
            scene.input->SetValue("A", nullptr);
            scene.input->HasChanged(eCHANGE_FORCED, nullptr);
        }
        QCOMPARE(scene.directory.translate("A").size(), 1);
        if (value != "input" && value != "output")
            QCOMPARE(scene.output->GetValue().size(), 1);
        scene.directory.Enabled(false);
    }

    void aDirectionInStateOneIsLeftAlone()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        scene.direction->SetState(eSTATE_DELETED, nullptr);
        scene.maps_->Select(QStringLiteral("Hebrew - ASCII"), nullptr);
        QVERIFY(!scene.direction->GetValue());
        scene.direction->SetState(eSTATE_VALID, nullptr);
        scene.maps_->HasChanged(eCHANGE_CONTENT, nullptr);
        QVERIFY(scene.direction->GetValue());
    }

    void aDirectionThatIsMadeAgainIsWrittenAgain()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        delete scene.direction;
        auto* const again = scene.tree.Add<FlagValue>("d/direction");
        scene.maps_->Select(QStringLiteral("Hebrew - ASCII"), nullptr);
        QVERIFY(again->GetValue());
    }

    void valuesMayBeDeletedByTheirObservers_data()
    {
        QTest::addColumn<QString>("notified");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("deleted");
        for (const char* notified : {"maps", "decoder", "input", "output", "direction", "max"}) {
            for (const int code : {3, 7, 19}) {
                for (const char* deleted : {"maps", "decoder", "input", "output", "direction"})
                    QTest::addRow("%s %d deletes %s", notified, code, deleted)
                        << notified << code << deleted;
            }
        }
    }

    void valuesMayBeDeletedByTheirObservers()
    {
        QFETCH(QString, notified);
        QFETCH(int, code);
        QFETCH(QString, deleted);
        struct Deleter : IObserver
        {
            void Update(Observable*, TChangeCode updateCode) override
            {
                if (updateCode == code)
                    delete tree->Find(path);
            }
            HostTree* tree;
            int code;
            QString path;
        } deleter;
        Scene scene(maps(), "Packet", "Greek - ASCII");
        deleter.tree = &scene.tree;
        deleter.code = code;
        deleter.path = "d/" + deleted;
        if (notified == "max")
            scene.tree.Add<IntegerValue>("d/max");
        auto* const observed = scene.tree.Find("d/" + notified);
        observed->AddObserver(&deleter);

        const auto find = [&](const char* path) { return scene.tree.Find(path); };
        const auto select = [&](const char* path, const char* item) {
            if (auto* const selection = dynamic_cast<ValueSelection*>(find(path)))
                selection->Select(QString(item), nullptr);
        };
        scene.directory.SetMaxNumberOfChars_ValuePath("d/max");
        select("d/maps", "Hebrew - ASCII");
        select("d/decoder", "Any");
        if (auto* const input = dynamic_cast<TextValue*>(find("d/input")))
            input->SetValue("A", nullptr);
        if (auto* const input = find("d/input"))
            input->HasChanged(eCHANGE_FORCED, nullptr);
        scene.directory.Init("Greek - ASCII");
        select("d/maps", "Default");
        scene.directory.Enabled(false);
        QCOMPARE(scene.directory.translate("12").size(), 2);
        if (auto* const remaining = find(qPrintable("d/" + notified)))
            remaining->DeleteObserver(&deleter);
    }

    void anotherDecoderDuringAFillingLeavesOneList()
    {
        struct Changer : IObserver
        {
            void Update(Observable*, TChangeCode) override
            {
                if (--countdown == 0)
                    decoder->Select(QStringLiteral("Packet"), nullptr);
            }
            ValueSelection* decoder;
            int countdown;
        } changer;
        for (int step = 1; step < 8; ++step) {
            Scene scene(maps(), "Packet", "Greek - ASCII");
            changer.decoder = scene.decoder;
            changer.countdown = step;
            scene.maps_->AddObserver(&changer);
            scene.decoder->Select(QStringLiteral("Any"), nullptr);
            QCOMPARE(scene.MapNames(), (QStringList{"Default", "Greek - ASCII", "Hebrew - ASCII"}));
            scene.maps_->DeleteObserver(&changer);
        }
    }

    void aSelectionThatTheHostEmptiesKeepsTheMap()
    {
        Scene scene(maps(), "Packet", "Hebrew - ASCII");
        scene.maps_->DeleteItems(nullptr);
        scene.maps_->HasChanged(eCHANGE_CONTENT, nullptr);
        QCOMPARE(scene.directory.translate("A"), QStringLiteral("\u05d0"));
        scene.decoder->DeleteItems(nullptr);
        scene.decoder->HasChanged(eCHANGE_CONTENT, nullptr);
        QCOMPARE(scene.MapNames(), QStringList{"Default"});
    }

    void aSetterDuringADeletionDoesNotHoldTheDyingValue()
    {
        struct Attacher : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_DELETED)
                    attached = directory->SetDataInput_ValuePath("d/input", nullptr);
            }
            MappingDirectory* directory;
            bool attached = true;
        } attacher;
        Scene scene(maps(), "Packet", "Greek - ASCII");
        attacher.directory = &scene.directory;
        scene.input->AddObserver(&attacher);
        delete scene.input;
        QVERIFY(!attacher.attached);
        scene.directory.Enabled(false);
    }

    // The rest

    void theIdentifierIsMadeOfTheFirstAndTheLastCharacters_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("identifier");
        QTest::newRow("leading zero") << "A07"
                                      << "__SGA_IPC7";
        QTest::newRow("two digits") << "B12"
                                    << "__SGB_IPC12";
        QTest::newRow("one character") << "5"
                                       << "__SG5_IPC5";
        QTest::newRow("two characters") << "A1"
                                        << "__SGA_IPCA1";
        QTest::newRow("zeros") << "A00"
                               << "__SGA_IPC0";
        QTest::newRow("long") << "Abcdef99"
                              << "__SGA_IPC99";
        QTest::newRow("empty") << ""
                               << "__SG_IPC";
    }

    void theIdentifierIsMadeOfTheFirstAndTheLastCharacters()
    {
        QFETCH(QString, id);
        MappingDirectory directory(maps());
        directory.SetIpcIdentifier(id);
        QTEST(directory.*memberOf(IpcIdentifier()), "identifier");
    }

    void theTimeStringCanBePartOfAFileName()
    {
        MappingDirectory directory(maps());
        const QDateTime before = QDateTime::currentDateTimeUtc();
        const QString text = (directory.*memberOf(TimeString()))();
        const QDateTime after = QDateTime::currentDateTimeUtc();
        QVERIFY(QRegExp("\\d{4}_\\d\\d_\\d\\d__\\d\\d_\\d\\d_\\d\\d").exactMatch(text));
        const QString format = "yyyy_MM_dd__hh_mm_ss";
        QVERIFY(before.toString(format) <= text && text <= after.toString(format));
    }

    void theOperationsThatAreKeptEmptyDoNothing()
    {
        Scene scene(maps(), "Packet", "Greek - ASCII");
        const QStringList before = QDir(m_dir.path()).entryList();
        (scene.directory.*memberOf(FilenameCreation()))();
        (scene.directory.*memberOf(SavingStart()))();
        QVERIFY(!(scene.directory.*memberOf(OutputFile())).isOpen());
        QCOMPARE((scene.directory.*memberOf(OutputFile())).fileName(), QString());
        QCOMPARE(QDir(m_dir.path()).entryList(), before);
        scene.input->SetValue("A", nullptr);
        QCOMPARE(scene.output->GetValue(), QStringLiteral("\u0391"));
    }

    void theOutputFileIsClosed_data()
    {
        QTest::addColumn<int>("how");
        QTest::newRow("by switching off") << 0;
        QTest::newRow("by a forced evaluation of the switch, while disabled") << 1;
    }

    void theOutputFileIsClosed()
    {
        QFETCH(int, how);
        Scene scene(maps());
        QVERIFY(scene.directory.SetSaveToFile_ValuePath("d/save"));
        QFile& file = scene.directory.*memberOf(OutputFile());
        file.setFileName(m_dir.filePath("output"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        scene.tree.Find("d/save")->HasChanged(eCHANGE_CONTENT, nullptr);
        QVERIFY(file.isOpen());
        if (how == 0)
            scene.directory.Enabled(false);
        else
            scene.tree.Find("d/save")->HasChanged(eCHANGE_FORCED, nullptr);
        QVERIFY(!file.isOpen());
    }

    void whateverHappensInWhateverOrderTheRulesHold();

private:
    QString maps() const { return m_dir.filePath("maps"); }

    QTemporaryDir m_dir;
    const QMap<QString, const std::type_info*> m_types{{"selection", &typeid(ValueSelection)},
                                                       {"text", &typeid(TextValue)},
                                                       {"flag", &typeid(FlagValue)},
                                                       {"integer", &typeid(IntegerValue)},
                                                       {"real", &typeid(RealValue)}};
};

namespace {

/// Every operation, change code and deletion in random order.
class Turmoil
{
public:
    Turmoil(const QString& maps, const char* seed)
        : m_random(seed)
        , m_mapFolder(maps)
        , m_saboteur(*this)
        , m_directory(std::make_unique<MappingDirectory>(maps))
    {
    }

    ~Turmoil() { m_remaining = 0; }

    int comparisons = 0;

    /// Empty when everything holds.
    QString Step()
    {
        const auto operation = m_random.below(24);
        m_remaining = 3;
        switch (operation) {
        case 0:
            m_directory->Enabled(m_random.below(5) != 0);
            break;
        case 1:
            m_directory->Init(AnyText());
            break;
        case 2:
        case 3:
        case 4:
            for (int i = 0; i < 4; ++i)
                Attach();
            if (m_random.below(3) == 0)
                Delete();
            break;
        case 5:
        case 6:
            Notify();
            break;
        case 7:
            Watch();
            break;
        case 8:
            m_directory->ClearHistory();
            break;
        case 9:
            if (m_random.below(50) == 0) {
                m_directory = std::make_unique<MappingDirectory>(m_mapFolder);
                m_input = m_output = m_max = nullptr;
            }
            break;
        case 10:
            m_directory->translate(AnyText());
            break;
        case 11:
            m_directory->SetIpcIdentifier(AnyText());
            m_directory->SetTranslatedFileDirectory(AnyText());
            break;
        case 12:
            if (auto* const max = Find<IntegerValue>("max"))
                max->SetMinMax(int(m_random.below(400)) - 100, int(m_random.below(400)) - 100, 1,
                               nullptr);
            break;
        case 13:
            if (auto* const selection = Find<ValueSelection>(AnyOf({"maps", "decoder"})))
                selection->DeleteItems(nullptr);
            break;
        case 14:
        case 15:
            if (auto* const decoder = Find<ValueSelection>("decoder")) {
                if (decoder->GetItemCount() == 0)
                    decoder->AddItems({"Teletype", "Packet", "Any", "Voice"}, nullptr);
                else
                    decoder->Select(AnyOf({"Teletype", "Packet", "Any", "Voice"}), nullptr);
            }
            break;
        case 16:
        case 17:
            if (auto* const available = Find<ValueSelection>("maps")) {
                if (const long count = available->GetItemCount())
                    available->Select(long(m_random.below(std::size_t(count))), nullptr);
            }
            break;
        default:
            return Feed();
        }
        return {};
    }

private:
    /// Does one more thing when it is notified.
    struct Saboteur : IObserver
    {
        explicit Saboteur(Turmoil& turmoil)
            : m_turmoil(turmoil)
        {
        }
        void Update(Observable*, TChangeCode) override { m_turmoil.Sabotage(); }
        Turmoil& m_turmoil;
    };

    void Sabotage()
    {
        if (--m_remaining < 0)
            return;
        m_sabotaged = true;
        switch (m_random.below(8)) {
        case 0:
            Delete();
            break;
        case 1:
            Notify();
            break;
        case 2:
            Attach();
            break;
        case 3:
            if (auto* const decoder = Find<ValueSelection>("decoder"))
                decoder->Select(AnyOf({"Teletype", "Packet", "Any", "Voice"}), nullptr);
            break;
        case 4:
            m_directory->translate(AnyText());
            break;
        default:
            break;
        }
    }

    /// Translates a text from value to value, and looks whether all of it arrived.
    QString Feed()
    {
        auto* const input = Find<TextValue>("input");
        if (!input)
            return {};
        m_sabotaged = false;
        const bool isForced = m_random.below(2);
        const QString text = AnyText();
        input->SetValue(text, nullptr);
        if (Find<TextValue>("input") != input)
            return {};
        if (isForced)
            input->HasChanged(eCHANGE_FORCED, nullptr);
        const QString history = m_directory->TranslateHistory();
        if (auto* const max = Find<IntegerValue>("max")) {
            if (max == m_max && !m_sabotaged && isForced && m_input == input &&
                history.size() > qMax(0, max->GetValue()))
                return "the history is longer than its bound";
        }
        auto* const output = Find<TextValue>("output");
        if (isForced && !m_sabotaged && m_input == input && output && m_output == output &&
            input != output && history.size() >= text.size()) {
            ++comparisons;
            if (history.right(text.size()) != output->GetValue())
                return "the output is not the translation of the input";
        }
        return {};
    }

    void Attach()
    {
        const QString name = AnyName();
        // Now and then one value in two roles.
        static const QMap<QString, QString> OTHER_ROLES{
            {"input", "output"}, {"output", "file"}, {"maps", "decoder"}, {"max", "channel"}};
        const QString path = "d/" + (m_random.below(8) ? name : OTHER_ROLES.value(name, name));
        if (name == "maps")
            m_directory->SetAvailableMaps_ValuePath(path);
        else if (name == "decoder")
            m_directory->SetDecoder_ValuePath(path);
        else if (name == "input") {
            m_directory->SetDataInput_ValuePath(path, nullptr);
            m_input = m_tree.Find(path);
        } else if (name == "output") {
            m_directory->SetDataOutput_ValuePath(path);
            m_output = m_tree.Find(path);
        } else if (name == "direction")
            m_directory->SetTextDirectionRTL_ValuePath(path);
        else if (name == "max") {
            // Its setter notifies, so that afterwards another one may be held.
            const bool wasSabotaged = std::exchange(m_sabotaged, false);
            m_directory->SetMaxNumberOfChars_ValuePath(path);
            m_max = m_sabotaged ? nullptr : m_tree.Find(path);
            m_sabotaged = m_sabotaged || wasSabotaged;
        } else if (name == "save")
            m_directory->SetSaveToFile_ValuePath(path);
        else if (name == "all")
            m_directory->SetTranslateAll_ValuePath(path);
        else if (name == "file")
            m_directory->SetTranslatedFile_ValuePath(path);
        else if (name == "frequency")
            m_directory->SetFrequency_ValuePath(path);
        else if (name == "modulation")
            m_directory->SetModtype_ValuePath(path);
        else
            m_directory->SetChannelIndex_ValuePath(path);
    }

    void Delete()
    {
        ValueBase* const value = m_tree.Find("d/" + AnyName());
        if (!value || value->GetState() == eSTATE_DELETED)
            return;
        for (ValueBase** const held : {&m_input, &m_output, &m_max}) {
            if (*held == value)
                *held = nullptr;
        }
        // One that is notifying others of a change may be deleted as well.
        delete value;
    }

    void Notify()
    {
        if (ValueBase* const value = m_tree.Find("d/" + AnyName())) {
            const int code = int(m_random.below(21));
            value->HasChanged(static_cast<TChangeCode>(code), nullptr);
        }
    }

    void Watch()
    {
        if (ValueBase* const value = m_tree.Find("d/" + AnyName())) {
            if (m_random.below(2))
                value->AddObserver(&m_saboteur);
            else
                value->DeleteObserver(&m_saboteur);
        }
    }

    QString AnyName()
    {
        return AnyOf({"maps", "decoder", "input", "output", "direction", "max", "save", "all",
                      "file", "frequency", "modulation", "channel"});
    }

    QString AnyText()
    {
        switch (m_random.below(5)) {
        case 0:
            return AnyOf({"Greek - ASCII", "Hebrew - ASCII", "x - ITA2", "Default", " - ", ""});
        case 1:
            return QString(int(m_random.below(1000)), QChar(0x410));
        default: {
            QString text;
            for (auto i = m_random.below(20); i > 0; --i)
                text += QChar(ushort(m_random.below(m_random.below(4) ? 128 : 65536)));
            return text;
        }
        }
    }

    QString AnyOf(const QStringList& texts)
    {
        return texts[int(m_random.below(std::size_t(texts.size())))];
    }

    template <typename Kind>
    Kind* Find(const QString& name)
    {
        auto* const value = dynamic_cast<Kind*>(m_tree.Find("d/" + name));
        return value && value->GetState() != eSTATE_DELETED ? value : nullptr;
    }

    testsupport::Random m_random;
    QString m_mapFolder;
    Saboteur m_saboteur;
    HostTree m_tree;
    std::unique_ptr<MappingDirectory> m_directory;
    // What the directory holds.
    ValueBase* m_input = nullptr;
    ValueBase* m_output = nullptr;
    ValueBase* m_max = nullptr;
    bool m_sabotaged = false;
    int m_remaining = 0;
};

} // namespace

/// The environment variable TURMOIL_STEPS asks for a longer run.
void tst_MappingDirectory::whateverHappensInWhateverOrderTheRulesHold()
{
    bool isSet = false;
    const int asked = qEnvironmentVariableIntValue("TURMOIL_STEPS", &isSet);
    const int steps = isSet ? asked : 100000;
    Turmoil turmoil(maps(), "mapping directory");
    for (int step = 0; step < steps; ++step) {
        const QString failure = turmoil.Step();
        QVERIFY2(failure.isEmpty(),
                 qPrintable(QStringLiteral("step %1: %2").arg(step).arg(failure)));
    }
    // Not all was in ruins all the time.
    QVERIFY2(turmoil.comparisons > steps / 50, qPrintable(QString::number(turmoil.comparisons)));
}

QTEST_APPLESS_MAIN(tst_MappingDirectory)
#include "tst_mappingdirectory.moc"
