// SPDX-License-Identifier: MIT
// A Morse handler and a mapping directory on one tree, the text of the one being the input of the
// other, with every operation, change code and deletion in random order.
#include "charmap/mappingdirectory.h"
#include "session/morsehandler.h"

#include "host/standin/configuration.h"
#include "host/standin/hosttree.h"
#include "support/files.h"
#include "support/random.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int DEFAULT_STEPS = 100000;
constexpr int MAX_HISTORY = 10000;
constexpr int MAX_SYMBOLS = 29999;

// Few steps make many files; the folder is emptied before they fill the disk.
constexpr int MAX_FILES = 500;

class Turmoil : private IObserver
{
public:
    explicit Turmoil(const QString& folder, std::uint64_t seed)
        : m_random(seed)
        , m_folder(folder)
        , m_saved(folder + QStringLiteral("/saved"))
        , m_handler(std::make_unique<MorseHandler>())
        , m_mapping(std::make_unique<MappingDirectory>(folder))
    {
        for (const QString& name : kinds().keys())
            create(name);
        for (int i = 0; i < 60; ++i) {
            attachHandler();
            attachMapping();
        }
    }

    /// Empty when everything holds.
    QString step()
    {
        m_sabotages = 3;
        operation();
        return broken();
    }

    int comparisons = 0;

private:
    using Make = ValueBase* (*)();
    static const QMap<QString, Make>& kinds()
    {
        static const Make text = [] { return static_cast<ValueBase*>(new TextValue); };
        static const Make flag = [] { return static_cast<ValueBase*>(new FlagValue); };
        static const Make integer = [] { return static_cast<ValueBase*>(new IntegerValue); };
        static const Make real = [] { return static_cast<ValueBase*>(new RealValue); };
        static const Make selection = [] { return static_cast<ValueBase*>(new ValueSelection); };
        static const QMap<QString, Make> rows = {{"symbol", integer},   {"available", flag},
                                                 {"text", text},        {"alphabet", selection},
                                                 {"alphabets", text},   {"rtl", flag},
                                                 {"save", flag},        {"saveXml", flag},
                                                 {"frequency", real},   {"modulation", selection},
                                                 {"result", selection}, {"request", flag},
                                                 {"settings", text},    {"textName", text},
                                                 {"codeName", text},    {"xmlName", text},
                                                 {"maps", selection},   {"decoder", selection},
                                                 {"output", text},      {"max", integer},
                                                 {"all", flag},         {"file", text},
                                                 {"channel", integer},  {"mapRtl", flag}};
        return rows;
    }

    template <typename Kind>
    Kind* find(const char* name)
    {
        return dynamic_cast<Kind*>(m_tree.Find(QStringLiteral("t/") + QLatin1String(name)));
    }

    bool chance(std::size_t oneIn) { return m_random.below(oneIn) == 0; }

    QString anyName()
    {
        const QStringList names = kinds().keys();
        return names.at(static_cast<int>(m_random.below(static_cast<std::size_t>(names.size()))));
    }

    QString anyPath(const char* name)
    {
        if (chance(12))
            return QStringLiteral("t/missing");
        return QStringLiteral("t/") + (chance(12) ? anyName() : QLatin1String(name));
    }

    void create(const QString& name)
    {
        ValueBase* const value = kinds().value(name)();
        value->SetName(name, nullptr);
        if (!m_tree.Insert(QStringLiteral("t/"), value)) {
            delete value;
            return;
        }
        if (auto* const selection = dynamic_cast<ValueSelection*>(value)) {
            selection->AddItems({"Plain", "Rtl", "missing", "Teletype", "Packet"}, nullptr);
            selection->Select(long(0), nullptr);
        }
        if (name == QLatin1String("available"))
            static_cast<FlagValue*>(value)->SetValue(true, nullptr);
        if (name == QLatin1String("alphabets"))
            static_cast<TextValue*>(value)->SetValue(m_folder, nullptr);
        if (chance(3))
            value->AddObserver(this);
    }

    void remove()
    {
        ValueBase* const value = m_tree.Find(QStringLiteral("t/") + anyName());
        if (value && value->GetState() != eSTATE_DELETED)
            delete value;
    }

    // Observers may do something else when they are notified.
    void Update(Observable*, TChangeCode code) override
    {
        if (code == eCHANGE_DELETED || --m_sabotages < 0)
            return;
        switch (m_random.below(8)) {
        case 0:
            remove();
            break;
        case 1:
            create(anyName());
            break;
        case 2:
            m_handler->AddSymbol(static_cast<int>(m_random.below(70)));
            break;
        case 3:
            m_handler->SetTimestamp(m_time_us += 1000);
            break;
        case 4:
            m_handler->EndMorseSession();
            break;
        case 5:
            attachMapping();
            break;
        case 6:
            attachHandler();
            break;
        default:
            notify();
            break;
        }
    }

    void notify()
    {
        if (ValueBase* const value = m_tree.Find(QStringLiteral("t/") + anyName()))
            value->HasChanged(static_cast<TChangeCode>(m_random.below(21)), nullptr);
    }

    void attachHandler()
    {
        switch (m_random.below(14)) {
        case 0:
            m_handler->SetSymbol_ValuePath(anyPath("symbol"));
            break;
        case 1:
            m_handler->SetMorseAvailable_ValuePath(anyPath("available"));
            break;
        case 2:
            m_handler->SetMorseText_ValuePath(anyPath("text"));
            break;
        case 3:
            m_handler->SetMorseAlphabet_ValuePath(anyPath("alphabet"));
            break;
        case 4:
            m_handler->SetMorseSaveToFile_ValuePath(anyPath("save"));
            break;
        case 5:
            m_handler->SetMorseXmlSaveToFile_ValuePath(anyPath("saveXml"));
            break;
        case 6:
            m_handler->SetMorseAlphabet_DirectoryPath(anyPath("alphabets"));
            break;
        case 7:
            m_handler->SetTextDirectionRTL_ValuePath(anyPath("rtl"));
            break;
        case 8:
            m_handler->SetFrequency_ValuePath(anyPath("frequency"));
            break;
        case 9:
            m_handler->SetModtype_ValuePath(anyPath("modulation"));
            break;
        case 10:
            m_handler->SetDecResult_ValuePath(anyPath(chance(3) ? "modulation" : "result"));
            break;
        case 11:
            m_handler->SetGenXmlTunerDemodulatorSettingsPath(anyPath("request"));
            break;
        case 12:
            m_handler->SetXmlTunerDemodulatorSettings(anyPath("settings"));
            break;
        default:
            // These three alone, so that nobody else writes what is checked.
            m_handler->SetSaveDirectoryPath(m_saved, QStringLiteral("t/textName"),
                                            QStringLiteral("t/codeName"),
                                            QStringLiteral("t/xmlName"));
            break;
        }
    }

    // The right kinds only: a value of another kind at the path would be leaked, as documented.
    void attachMapping()
    {
        switch (m_random.below(10)) {
        case 0:
            m_mapping->SetAvailableMaps_ValuePath(QStringLiteral("t/maps"));
            break;
        case 1:
            m_mapping->SetDecoder_ValuePath(QStringLiteral("t/decoder"));
            break;
        case 2:
            m_mapping->SetDataInput_ValuePath(QStringLiteral("t/text"), nullptr);
            break;
        case 3:
            m_mapping->SetDataOutput_ValuePath(QStringLiteral("t/output"));
            break;
        case 4:
            m_mapping->SetMaxNumberOfChars_ValuePath(QStringLiteral("t/max"));
            m_bounded = find<IntegerValue>("max") != nullptr;
            break;
        case 5:
            m_mapping->SetFrequency_ValuePath(QStringLiteral("t/frequency"));
            break;
        case 6:
            m_mapping->SetModtype_ValuePath(QStringLiteral("t/modulation"));
            break;
        case 7:
            m_mapping->SetSaveToFile_ValuePath(QStringLiteral("t/save"));
            break;
        case 8:
            m_mapping->SetTextDirectionRTL_ValuePath(QStringLiteral("t/mapRtl"));
            break;
        default:
            m_mapping->SetTranslateAll_ValuePath(QStringLiteral("t/all"));
            m_mapping->SetTranslatedFile_ValuePath(QStringLiteral("t/file"));
            m_mapping->SetChannelIndex_ValuePath(QStringLiteral("t/channel"));
            break;
        }
    }

    void operation()
    {
        switch (m_random.below(32)) {
        case 0:
            remove();
            break;
        case 1:
            create(anyName());
            break;
        case 2:
            attachHandler();
            break;
        case 3:
            attachMapping();
            break;
        case 4:
            notify();
            break;
        case 5:
            m_handler->StartNewMorseSession();
            break;
        case 6:
            if (chance(4))
                m_handler->EndMorseSession();
            break;
        case 7:
            m_handler->SetTimestamp(m_time_us += m_random.below(10000000));
            break;
        case 8:
            if (auto* const flag = find<FlagValue>(chance(2) ? "save" : "available"))
                flag->SetValue(!chance(4), nullptr);
            break;
        case 9:
            if (auto* const frequency = find<RealValue>("frequency"))
                frequency->SetValue(static_cast<double>(m_random.below(30000000)), nullptr);
            break;
        case 10:
            if (auto* const selection =
                    dynamic_cast<ValueSelection*>(m_tree.Find(QStringLiteral("t/") + anyName())))
                selection->Select(static_cast<long>(m_random.below(6)), nullptr);
            break;
        case 11:
            if (auto* const selection =
                    dynamic_cast<ValueSelection*>(m_tree.Find(QStringLiteral("t/") + anyName()))) {
                if (chance(4))
                    selection->DeleteItems(nullptr);
                else
                    selection->AddItem(chance(2) ? QStringLiteral("Teletype")
                                                 : QStringLiteral("Plain - ITA2"),
                                       0, static_cast<long>(m_random.below(6)), nullptr);
            }
            break;
        case 12:
            m_handler->SetMorseAvailable(!chance(4));
            break;
        case 13:
            m_handler->TranslateText(chance(2), chance(2), static_cast<int>(m_random.below(9)) - 1);
            break;
        case 14:
            if (chance(20))
                m_handler->ClearSymbolBuffer();
            m_handler->ChangeAlphabet();
            break;
        case 15:
            m_mapping->Enabled(!chance(5));
            break;
        case 16:
            m_mapping->Init(chance(2) ? QStringLiteral("Plain - ITA2") : QString());
            break;
        case 17:
            if (chance(10))
                m_mapping->ClearHistory();
            m_mapping->SetIpcIdentifier(anyName());
            break;
        case 18:
            if (chance(50))
                m_handler = std::make_unique<MorseHandler>();
            if (chance(50)) {
                m_mapping = std::make_unique<MappingDirectory>(m_folder);
                m_bounded = false;
            }
            break;
        case 19:
            if (auto* const max = find<IntegerValue>("max"))
                max->SetMinMax(static_cast<int>(m_random.below(400)) - 100,
                               static_cast<int>(m_random.below(400)) - 100, 1, nullptr);
            break;
        case 20:
            compareOutput();
            break;
        default:
            symbol(static_cast<int>(chance(10) ? m_random.below(300) : m_random.below(6)));
            break;
        }
    }

    void symbol(int code)
    {
        auto* const value = find<IntegerValue>("symbol");
        if (!value)
            m_handler->AddSymbol(code);
        else if (value->GetValue() == code)
            value->HasChanged(eCHANGE_CONTENT, nullptr);
        else
            value->SetValue(code, nullptr);
    }

    // A mapping directory freshly attached, undisturbed, writes the translation of what it reads.
    void compareOutput()
    {
        m_sabotages = 0;
        for (const char* name : {"text", "output"}) {
            if (!find<TextValue>(name))
                create(QLatin1String(name));
        }
        m_mapping->SetDataInput_ValuePath(QStringLiteral("t/text"), nullptr);
        m_mapping->SetDataOutput_ValuePath(QStringLiteral("t/output"));
        QString text;
        for (std::size_t i = m_random.below(30); i > 0; --i)
            text += QChar(static_cast<ushort>(chance(9) ? 0x410 : 32 + m_random.below(90)));
        // The two maps add to the code of every letter; "Default" leaves all as it is; a map that
        // is none in the present character set replaces what is outside Latin-1, as every map does.
        const auto moved = [&text](int by, bool isMapped) {
            QString result = text;
            for (QChar& c : result) {
                if (isMapped && c.unicode() > 0xFF)
                    c = QLatin1Char('?');
                else if (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
                    c = QChar(static_cast<ushort>(c.unicode() + by));
            }
            return result;
        };
        auto* const input = find<TextValue>("text");
        input->SetValue(text, nullptr);
        if (find<TextValue>("text") != input)
            return;
        input->HasChanged(eCHANGE_FORCED, nullptr);
        auto* const output = find<TextValue>("output");
        if (!output || find<TextValue>("text") != input || input->GetValue() != text)
            return;
        ++comparisons;
        const QSet<QString> right = {moved(0, false), moved(0, true), moved(0x400, true),
                                     moved(0x500, true)};
        if (!right.contains(output->GetValue()))
            m_error = QStringLiteral("'%1' became '%2'").arg(text, output->GetValue());
    }

    QString broken()
    {
        if (!m_error.isEmpty())
            return m_error;
        if (m_handler->GetCurrentMorseSymbolString().size() > MAX_SYMBOLS)
            return QStringLiteral("the symbol buffer is longer than its bound");
        if (m_bounded && find<IntegerValue>("max") &&
            m_mapping->TranslateHistory().size() > MAX_HISTORY)
            return QStringLiteral("the history is longer than its bound");
        for (const char* name : {"textName", "codeName"}) {
            auto* const value = find<TextValue>(name);
            if (value && value->GetValue().startsWith(m_saved) && !QFile::exists(value->GetValue()))
                return QStringLiteral("a published file does not exist: ") + value->GetValue();
        }
        if (++m_steps % 1000 == 0)
            emptyFolder();
        return {};
    }

    void emptyFolder()
    {
        QDir folder(m_saved);
        const QStringList files = folder.entryList(QDir::Files);
        if (files.size() < MAX_FILES)
            return;
        for (const char* name : {"textName", "codeName"}) {
            if (auto* const value = find<TextValue>(name))
                value->SetValue(QString(), nullptr);
        }
        for (const QString& file : files)
            folder.remove(file);
    }

    testsupport::Random m_random;
    QString m_folder;
    QString m_saved;
    QString m_error;
    HostTree m_tree;
    std::unique_ptr<MorseHandler> m_handler;
    std::unique_ptr<MappingDirectory> m_mapping;
    int m_sabotages = 0;
    bool m_bounded = false;
    int m_steps = 0;
    unsigned long long m_time_us = 1494584100000000ULL;
};

} // namespace

class tst_Turmoil : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingAtOnceInRandomOrder()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("saved")));
        QByteArray plain;
        QByteArray rtl = "@ TextDirection RL\n";
        for (int c = 'A'; c <= 'Z'; ++c) {
            plain += QByteArray::number(c) + "\t0x" + QByteArray::number(c + 0x400, 16) + "\n";
            rtl += QByteArray::number(c) + "\t0x" + QByteArray::number(c + 0x500, 16) + "\n";
        }
        writeFile(dir.filePath("Plain.ita2.map"), plain + "\n");
        writeFile(dir.filePath("Rtl.ascii.map"), rtl + "\n");
        writeFile(dir.filePath("Plain.mal"), "A\t.-\nE\t.\nT\t-\n1\t.----\n\n");
        writeFile(dir.filePath("Rtl.mal"), "@ TextDirection RL\n\xD7\x90\t.-\n\n");
        QByteArray modules;
        for (const char* row : {"I Teletype", "A Packet", "B Plain"})
            modules += "1 1 R " + QByteArray("0 ").repeated(26) + row + "\n";
        writeFile(dir.filePath("modules.txt"), modules);
        setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"),
                              dir.filePath("modules.txt"));

        bool isSet = false;
        int steps = qEnvironmentVariableIntValue("MORSEHANDLER_TURMOIL_STEPS", &isSet);
        if (!isSet)
            steps = DEFAULT_STEPS;
        constexpr int SEEDS = 4;
        int comparisons = 0;
        for (std::uint64_t seed = 1; seed <= SEEDS; ++seed) {
            Turmoil turmoil(dir.path(), seed);
            for (int i = 0; i < steps / SEEDS; ++i) {
                const QString error = turmoil.step();
                QVERIFY2(
                    error.isEmpty(),
                    qPrintable(QStringLiteral("seed %1, step %2: %3").arg(seed).arg(i).arg(error)));
            }
            comparisons += turmoil.comparisons;
        }
        // It was no idle turmoil.
        QVERIFY(comparisons > steps / 100);
    }
};

QTEST_GUILESS_MAIN(tst_Turmoil)
#include "tst_turmoil.moc"
