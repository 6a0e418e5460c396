// SPDX-License-Identifier: MIT
// What the manual page and the completion make of the tables of commands.
#include "app/commands/registry.h"
#include "app/manual/completion.h"
#include "app/manual/manualpage.h"
#include "app/options/teleprinteroptions.h"
#include "signal/teleprinter/line.h"
#include "station/transmission.h"
#include "support/files.h"

#include <QtTest>

using namespace morsehost;

namespace {

int nothing(Arguments&)
{
    return 0;
}

std::vector<Command> oneCommand(std::vector<OptionRow> options, const char* operands = "")
{
    return {{{"look", operands, 0, 0, "Looks. It's 100 % 'safe'.", std::move(options),
              "  morsehost look\n"},
             nothing}};
}

} // namespace

class tst_Manual : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatACommandDoesFitsInALine()
    {
        for (const Command& command : commands()) {
            const QString summary = shortSummary(command);
            QVERIFY2(!summary.isEmpty() && summary.size() <= 67, qPrintable(summary));
        }
    }

    void whatACommandDoesEndsAtItsFullStopOrColon_data()
    {
        QTest::addColumn<QString>("summary");
        QTest::newRow("a full stop") << "Takes 2.4 MHz. And more.";
        QTest::newRow("a full stop at the end") << "Takes 2.4 MHz.";
        QTest::newRow("a colon") << "Takes 2.4 MHz: or more.";
        QTest::newRow("the end of a line") << "Takes\n2.4 MHz.\nAnd more.";
        QTest::newRow("nothing") << "Takes 2.4 MHz";
    }

    void whatACommandDoesEndsAtItsFullStopOrColon()
    {
        QFETCH(QString, summary);
        const QByteArray text = summary.toUtf8();
        const Command command{{"take", "", 0, 0, text.constData(), {}, nullptr}, nothing};
        QCOMPARE(shortSummary(command), "Takes 2.4 MHz");
    }

    void noLineOfAHelpEndsInABlank()
    {
        for (const Command& command : commands()) {
            const QStringList lines = Arguments(command.syntax, {}).help().split(QLatin1Char('\n'));
            for (const QString& line : lines)
                QVERIFY2(!line.endsWith(QLatin1Char(' ')), qPrintable(line));
        }
    }

    void theTextOfALongOptionBeginsBelowIt()
    {
        const Command command = oneCommand({{"a-long-option", "yes|no", "Its text"},
                                            {"short-option", "DIR", "Another"}})
                                    .front();
        const QString help = Arguments(command.syntax, {}).help();
        QVERIFY2(help.contains("\n  --a-long-option yes|no\n                     Its text\n"),
                 qPrintable(help));
        QVERIFY2(help.contains("\n  --short-option DIR Another\n"), qPrintable(help));
    }

    void textIsShownCharacterByCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("roff");

        QTest::newRow("a hyphen in a word stays") << "little-endian"
                                                  << "little-endian";
        QTest::newRow("options can be copied") << "--rate -"
                                               << "\\-\\-rate \\-";
        QTest::newRow("dates can be copied") << "2026-05-12"
                                             << "2026\\-05\\-12";
        QTest::newRow("quotes stay straight") << "'a' \"b\" `c`"
                                              << "\\(aqa\\(aq \\(dqb\\(dq \\(gac\\(ga";
        QTest::newRow("a backslash is one") << "a\\n"
                                            << "a\\(rsn";
        QTest::newRow("a full stop begins no request") << ".TH\n.x"
                                                       << "\\&.TH\n\\&.x";
        QTest::newRow("an apostrophe begins no request") << "'x"
                                                         << "\\(aqx";
        QTest::newRow("tilde and circumflex") << "~^"
                                              << "\\(ti\\(ha";
        QTest::newRow("an ellipsis is three") << QStringLiteral("FILE…") << "FILE...";
        QTest::newRow("other letters by number") << QStringLiteral("ä") << "\\[u00E4]";
    }

    void textIsShownCharacterByCharacter()
    {
        QFETCH(QString, text);
        QFETCH(QString, roff);
        QCOMPARE(roffText(text), roff);
    }

    void thePageListsEveryOptionAndItsValue()
    {
        const QString page = manualPage(oneCommand({{"save", "DIR", "write into DIR"}}), {},
                                        QStringLiteral("1.2"), QStringLiteral("2026-01-02"));
        QVERIFY(page.contains(QStringLiteral(".TH MORSEHOST 1 2026-01-02 \"morsehost 1.2\"")));
        QVERIFY(page.contains(
            QStringLiteral(".TP\n\\fB\\-\\-save\\fR \\fIDIR\\fR\nwrite into DIR.\n")));
        QVERIFY(page.contains(QStringLiteral("\nLooks. It\\(aqs 100 % \\(aqsafe\\(aq.\n")));
        QVERIFY(page.contains(QStringLiteral("\n.SH EXAMPLES\n.nf\n  morsehost look\n.fi\n")));
    }

    void aNameOfOneLetterHasOneDash()
    {
        const auto commands = oneCommand({{"o", "PICTURE", "where to"}});
        QVERIFY(manualPage(commands, {}, QString(), QString())
                    .contains(QStringLiteral("\\fB\\-o\\fR \\fIPICTURE\\fR")));
        const QString script = bashCompletion(commands, {});
        QVERIFY(script.contains(QStringLiteral("look) options='-o --help' operands=0")));
        QVERIFY(script.contains(QStringLiteral("-o) _morsehost_paths -f -X")));
    }

    void filesAreOfferedWhereACommandTakesThem()
    {
        QVERIFY(bashCompletion(oneCommand({}, "[FILE|-]"), {})
                    .contains(QStringLiteral("look) options='--help' operands=1")));
    }

    void everyShellKnowsOptionsValuesAndFiles()
    {
        const std::vector<OptionRow> options = {{"o", "PICTURE", "where: [here]"},
                                                {"save", "DIR", "it's saved"},
                                                {"codes", nullptr, "codes"}};
        const auto commands = oneCommand(options, "FILE");
        const QString zsh = zshCompletion(commands, {{"version", nullptr, "the version"}});
        QVERIFY(zsh.startsWith(QStringLiteral("#compdef morsehost\n")));
        for (const char* part :
             {"'look:Looks'", "'--version:the version'", "look) _arguments",
              "'-o[where\\: \\[here\\]]:PICTURE:_files -g \"(#i)*.(svg|png)\"'",
              "'--save[it'\\''s saved]:DIR:_files -/'", "'--codes[codes]'", "'*:file:_files'"})
            QVERIFY2(zsh.contains(QString::fromLatin1(part)), part);
        const QString fish = fishCompletion(commands, {{"version", nullptr, "the version"}});
        for (const char* part :
             {"-n __fish_use_subcommand -f -a look -d 'Looks'\n",
              "-n __fish_use_subcommand -l version -f -d 'the version'\n",
              "-n '__fish_seen_subcommand_from look' -s o -x -a '(__morsehost_pictures)'",
              "-l save -x -a '(__fish_complete_directories)' -d 'it\\'s saved'\n",
              "-l codes -d 'codes'\n"})
            QVERIFY2(fish.contains(QString::fromLatin1(part)), part);
        QVERIFY(!fish.contains(QStringLiteral("look' -f\n")));
        QVERIFY(fishCompletion(oneCommand({}), {}).contains(QStringLiteral("look' -f\n")));
        QVERIFY(!zshCompletion(oneCommand({}), {}).contains(QStringLiteral("*:file:")));
    }

    void namesAreListedOnlyWhereACommandListsThem()
    {
        const std::vector<OptionRow> option = {{"map", "NAME", "the map"}};
        QVERIFY(!bashCompletion(oneCommand(option), {}).contains(QStringLiteral("listed maps")));
        auto commands = oneCommand(option);
        commands.push_back({{"maps", "", 0, 0, "Lists.", {}, ""}, nothing});
        QVERIFY(bashCompletion(commands, {})
                    .contains(QStringLiteral("--map) _morsehost_listed maps; return")));
    }

    void thePageOfJsonListsEveryFieldOfATransmission()
    {
        Transmission all;
        for (QString* text :
             {&all.receiver, &all.source, &all.decoder, &all.text, &all.rawText, &all.map})
            *text = QStringLiteral("x");
        for (std::optional<double>* number : {&all.tone_Hz, &all.frequency_Hz, &all.speed_wpm,
                                              &all.baudRate, &all.shift_Hz, &all.snr_dB})
            *number = 1.0;
        all.isReversed = true;
        all.unknownCodes += QStringLiteral(".-");
        const QStringList fields = toJson(all).keys();
        QCOMPARE(fields.size(), 18);
        const QByteArray page =
            contentOf(QStringLiteral(PROJECT_DATA_DIR "/../docs/formats/json.md"));
        const int table = page.indexOf("## Fields of a transmission");
        QVERIFY(table > 0);
        for (const QString& field : fields) {
            if (field != QLatin1String("event"))
                QVERIFY2(page.indexOf("`" + field.toUtf8() + "`", table) > 0, qPrintable(field));
        }
    }

    void thePagesStateTheLimitsOfTheDemodulator_data()
    {
        using namespace demodulator;
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char* page, const char* sentence, double lowest, double highest) {
            QTest::newRow(sentence)
                << page << QString(sentence).arg(QString::fromStdString(range(lowest, highest)));
        };
        row("README.md", "%1 samples a second", LOWEST_RATE_Hz, HIGHEST_RATE_Hz);
        row("docs/operator-guide.md", "%1 samples a second", LOWEST_RATE_Hz, HIGHEST_RATE_Hz);
        row("docs/operator-guide.md", "tones from %1 Hz", LOWEST_TONE_Hz, HIGHEST_TONE_Hz);
        row("docs/operator-guide.md", "speeds from %1 words a minute", LOWEST_SPEED_wpm,
            HIGHEST_SPEED_wpm);
        row("docs/operator-guide.md", "`--tone HZ` (%1)", LOWEST_SET_TONE_Hz, HIGHEST_SET_TONE_Hz);
        row("docs/operator-guide.md", "`--wpm N` (%1)", LOWEST_SET_SPEED_wpm,
            HIGHEST_SET_SPEED_wpm);
        row("docs/teleprinters.md", "`--tone HZ` (%1;", teleprinterTones().lowest_Hz,
            teleprinterTones().highest_Hz);
        row("docs/teleprinters.md", "shifts of %1 Hz", teleprinter::LEAST_SHIFT_Hz,
            teleprinter::MOST_SHIFT_Hz);
    }

    void thePagesStateTheLimitsOfTheDemodulator()
    {
        QFETCH(QString, page);
        QFETCH(QString, sentence);
        const QByteArray content = contentOf(QStringLiteral(PROJECT_DATA_DIR "/../") + page);
        QVERIFY2(QString::fromUtf8(content).simplified().contains(sentence), qPrintable(sentence));
    }
};

QTEST_APPLESS_MAIN(tst_Manual)
#include "tst_manual.moc"
