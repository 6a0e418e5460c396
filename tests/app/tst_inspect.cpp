// SPDX-License-Identifier: MIT
// `morsehost inspect` from outside: the picture shows what `morsehost decode` gives.
#include "support/drawn.h"
#include "support/files.h"
#include "support/keyer.h"
#include "support/program.h"
#include "support/soundfile.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/stat.h>

namespace {

using testsupport::Drawn;
using testsupport::DrawnPiece;
using testsupport::Ended;
using testsupport::run;

const QString RECORDING = QStringLiteral(TEST_DATA_DIR "/recordings/three-overs.flac");

QString textOf(const Drawn& drawn)
{
    QString text;
    for (const DrawnPiece& piece : drawn.inRows("text"))
        text += piece.text;
    return text;
}

} // namespace

class tst_Inspect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodeKeepsAPictureOfEachTransmission()
    {
        QTemporaryDir dir;
        const QStringList words = {"decode",   "--json",     "--save",
                                   dir.path(), "--pictures", RECORDING};
        const Ended ended = run(words);
        QCOMPARE(ended.err, QByteArray());
        QStringList pictures;
        const QList<QByteArray> lines = ended.out.split('\n');
        for (const QByteArray& line : lines) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            if (object.value("event") != QJsonValue("transmission"))
                continue;
            const QString path = object.value("files").toArray().last().toString();
            pictures += path;
            const Drawn drawn = testsupport::readDrawn(contentOf(path));
            QCOMPARE(drawn.error, QString());
            QCOMPARE(textOf(drawn), object.value("text").toString().remove(' '));
            // Each by itself: with the flags at which it begins and ends, and no other's.
            QCOMPARE(drawn.inRows("flagname").size(), std::size_t(2));
        }
        QCOMPARE(pictures.size(), 3);
        QCOMPARE(QDir(dir.path()).entryList({"*_picture.svg"}).size(), 3);
        // They show the same where several are heard at once, and take no place of others.
        QCOMPARE(run(words + QStringList{QStringLiteral(TEST_DATA_DIR "/recordings/noisy25.flac")})
                     .status,
                 0);
        QVERIFY(QFile::exists(QString(pictures[0]).replace("_picture", "_picture_2")));
    }

    void decodeKeepsAPictureOfATeleprinter_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QString>("recording");
        const QString folder = QStringLiteral(TEST_DATA_DIR "/teleprinters/");
        QTest::newRow("Baudot") << "Baudot" << folder + "minimodem-ita2.flac";
        QTest::newRow("ASCII") << "ASCII RTTY" << folder + "minimodem-ascii.flac";
        QTest::newRow("as found") << "auto" << folder + "hf-weather.flac";
    }
    void decodeKeepsAPictureOfATeleprinter()
    {
        QFETCH(QString, decoder);
        QFETCH(QString, recording);
        QTemporaryDir dir;
        const Ended ended = run({"decode", "--decoder", decoder, "--json", "--save", dir.path(),
                                 "--pictures", recording});
        QCOMPARE(ended.status, 0);
        const QByteArray last = ended.out.split('\n').at(ended.out.count('\n') - 1);
        const QJsonObject object = QJsonDocument::fromJson(last).object();
        QCOMPARE(object.value("event").toString(), QString("transmission"));
        const Drawn drawn =
            testsupport::readDrawn(contentOf(object.value("files").toArray().last().toString()));
        QCOMPARE(drawn.error, QString());
        QCOMPARE(textOf(drawn), object.value("text").toString().remove(QRegularExpression("\\s")));
        QCOMPARE(drawn.inRows("flagname").size(), std::size_t(2));
    }

    void decodeKeepsNoPictureOfWhatItDoesNotSave()
    {
        const Ended ended = run({"decode", "--pictures", RECORDING});
        QCOMPARE(ended.status, 2);
        QVERIFY(ended.err.contains("--pictures needs --save"));
    }

    void itDrawsWhatDecodeGives_data()
    {
        QTest::addColumn<QString>("recording");
        QTest::addColumn<QStringList>("options");
        const QString folder = QStringLiteral(TEST_DATA_DIR "/recordings/");
        for (const char* name : {"three-overs", "noisy25", "groups12"})
            QTest::newRow(name) << folder + name + ".flac" << QStringList();
        QTest::newRow("another alphabet")
            << RECORDING << QStringList({"--alphabet", "Greek", "--tone", "700", "--wpm", "24"});
    }
    void itDrawsWhatDecodeGives()
    {
        QFETCH(QString, recording);
        QFETCH(QStringList, options);
        QTemporaryDir dir;
        const QString path = dir.filePath("picture.svg");
        const Ended ended =
            run(QStringList({"inspect", recording, "-o", path, "--length", "600"}) + options);
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.out, QByteArray());
        QCOMPARE(ended.status, 0);
        const Drawn drawn = testsupport::readDrawn(contentOf(path));
        QCOMPARE(drawn.error, QString());

        QStringList codes;
        QString last; // a mark that goes on in the next row has the same title
        for (const DrawnPiece& piece : drawn.inRows("mark")) {
            if (piece.title != last)
                codes += piece.kinds.contains("dot") ? "0" : "1";
            last = piece.title;
        }
        QStringList given;
        const QByteArray decoded = run(QStringList({"decode", "--codes", recording}) + options).out;
        for (const QByteArray& code : decoded.simplified().split(' ')) {
            if (code == "0" || code == "1")
                given += code;
        }
        QVERIFY(given.size() > 30);
        QCOMPARE(codes, given);
        QString text = QString::fromUtf8(run(QStringList({"decode", recording}) + options).out);
        QCOMPARE(textOf(drawn), text.remove(' ').remove('\n'));
    }

    void anImageShowsTheDrawing()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("picture.PNG");
        const QStringList words = {"inspect", RECORDING, "--length", "10", "-o"};
        const Ended ended = run(words + QStringList(path));
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const QImage image(path, "PNG");
        const QByteArray svg = run(words + QStringList("-")).out;
        const Drawn drawn = testsupport::readDrawn(svg);
        QVERIFY(svg.contains("width=\"" + QByteArray::number(image.width()) + "\" height=\"" +
                             QByteArray::number(image.height()) + "\""));
        const auto marks = drawn.inRows("mark");
        QVERIFY(!marks.empty());
        for (const DrawnPiece& mark : marks) {
            const auto at = [&mark](const char* place, const char* size) {
                return static_cast<int>(mark.number(place) + mark.number(size) / 2);
            };
            // The first row begins right of the scales and below the title.
            const QRgb colour = image.pixel(64 + at("x", "width"), 56 + at("y", "height"));
            QCOMPARE(colour,
                     mark.kinds.contains("dot") ? qRgb(0, 0x72, 0xb2) : qRgb(0xd5, 0x5e, 0));
        }
    }

    void aStretchShowsWhatTheWholeShowsThere()
    {
        QTemporaryDir dir;
        const QString whole = dir.filePath("whole.svg");
        const QString part = dir.filePath("part.svg");
        QCOMPARE(run({"inspect", RECORDING, "-o", whole}).status, 0);
        QCOMPARE(run({"inspect", RECORDING, "-o", part, "--from", "10", "--length", "10"}).status,
                 0);
        QStringList shown[2];
        for (const DrawnPiece& piece : testsupport::readDrawn(contentOf(whole)).inRows("mark")) {
            if (piece.row == 1 && piece.number("x") < 4.4 * 120)
                shown[0] += piece.title;
        }
        for (const DrawnPiece& piece : testsupport::readDrawn(contentOf(part)).inRows("mark")) {
            if (piece.number("x") < 4.4 * 120)
                shown[1] += piece.title;
        }
        QVERIFY(shown[0].size() > 10);
        QCOMPARE(shown[1], shown[0]);
    }

    void theRecordingMayEndBeforeTheStretch()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.SVG");
        const QString noisy = QStringLiteral(TEST_DATA_DIR "/recordings/noisy25.flac");
        QCOMPARE(run({"inspect", noisy, "-o", path, "--from", "12", "--length", "100"}).status, 0);
        const Drawn drawn = testsupport::readDrawn(contentOf(path));
        QCOMPARE(drawn.rows, 1);
        QVERIFY(drawn.allText().contains("12.000 s to 14."));
    }

    void teleprinterIsDrawnWithTonesElementsAndText()
    {
        const QString recording = QStringLiteral(TEST_DATA_DIR "/teleprinters/minimodem-ita2.flac");
        const QStringList decoder = {"--decoder", "Baudot", "--map", "Russian"};
        QTemporaryDir dir;
        const QString path = dir.filePath("picture.svg");
        const Ended ended = run(QStringList{"inspect", recording, "-o", path} + decoder);
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const Drawn drawn = testsupport::readDrawn(contentOf(path));
        QCOMPARE(drawn.error, QString());
        const Ended decoded = run(QStringList{"decode", recording} + decoder);
        QString expected = QString::fromUtf8(decoded.out);
        expected.remove(QRegularExpression("\\s"));
        QCOMPARE(textOf(drawn), expected);
        QVERIFY2(drawn.allText().contains("45.45 Bd, mark 2125 Hz, space 1955 Hz") ||
                     drawn.allText().contains("45.45 Bd, mark 1585 Hz, space 1415 Hz"),
                 qPrintable(drawn.allText()));
        for (const char* kind : {"tone", "strength", "start", "stop", "mark", "space"}) {
            for (const DrawnPiece& piece : drawn.inRows(kind))
                QVERIFY2(piece.attributes.value("d").contains('l'), kind);
            QCOMPARE(drawn.inRows(kind).empty(), false);
        }
        const auto shifts = drawn.inRows("shift");
        QVERIFY(std::any_of(shifts.begin(), shifts.end(), [](const DrawnPiece& piece) {
            return piece.text == QString("\u2191");
        }));
        const QString image = dir.filePath("picture.png");
        QCOMPARE(run(QStringList{"inspect", recording, "-o", image} + decoder).status, 0);
        QVERIFY(QImage(image).width() > 1000);
    }

    void aStretchOfATeleprinterHoldsItsOwnTextAlone()
    {
        const QString recording = QStringLiteral(TEST_DATA_DIR "/teleprinters/navtex.flac");
        QTemporaryDir dir;
        const QString path = dir.filePath("picture.svg");
        const Ended ended = run({"inspect", recording, "-o", path, "--decoder", "auto", "--from",
                                 "5", "--length", "4"});
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.err.contains("Sitor-B"));
        const Drawn drawn = testsupport::readDrawn(contentOf(path));
        QCOMPARE(drawn.rows, 1);
        const QString text = textOf(drawn);
        QVERIFY2(text.size() > 10 && text.size() < 4 * 8, qPrintable(text));
        QString whole = QString::fromUtf8(run({"decode", "--decoder", "Sitor-B", recording}).out);
        whole.remove(QRegularExpression("\\s"));
        QVERIFY2(whole.contains(text), qPrintable(text));
        QVERIFY(!drawn.inRows("again").empty());
        const Ended none = run({"inspect", QString(PROJECT_DATA_DIR "/samples/evening.flac"), "-o",
                                path, "--decoder", "Baudot"});
        QCOMPARE(none.status, 0);
        QVERIFY(testsupport::readDrawn(contentOf(path))
                    .allText()
                    .contains("no teleprinter was found in this stretch"));
    }

    void withoutASignalThePictureSaysSo()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.svg");
        const Ended ended = run({"inspect", "-", "-o", path}, QByteArray(80000, '\0'));
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const Drawn drawn = testsupport::readDrawn(contentOf(path));
        QCOMPARE(drawn.error, QString());
        QVERIFY(drawn.allText().contains("no signal was found in this stretch"));
        QVERIFY(drawn.allText().contains("0.000 s to 5.000 s"));
    }

    void aStretchHasToHoldATenthOfASecond_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<int>("samples");
        QTest::addColumn<bool>("isQuick");
        QTest::addColumn<bool>("isDrawn");
        QTest::newRow("no sample") << "0" << 0 << false << false;
        QTest::newRow("a few samples") << "0" << 790 << false << false;
        QTest::newRow("just enough") << "0" << 800 << false << true;
        QTest::newRow("from the very end") << "25" << 200000 << false << false;
        QTest::newRow("from shortly before the end") << "24.95" << 200000 << false << false;
        QTest::newRow("the last of it") << "24.9" << 200000 << false << true;
        QTest::newRow("from far behind the end") << "1000000000" << 8000 << false << false;
        QTest::newRow("quickly, from shortly before the end") << "79.95" << 640000 << true << false;
        QTest::newRow("quickly, the last of it") << "79.9" << 640000 << true << true;
        QTest::newRow("quickly, from far behind the end") << "500" << 8000 << true << false;
    }
    void aStretchHasToHoldATenthOfASecond()
    {
        QFETCH(QString, from);
        QFETCH(int, samples);
        QFETCH(bool, isQuick);
        QFETCH(bool, isDrawn);
        QTemporaryDir dir;
        const QString path = dir.filePath("x.svg");
        QStringList words = {"inspect", "-", "--from", from, "-o", path};
        if (isQuick)
            words += "--quick";
        const Ended ended = run(words, QByteArray(2 * samples, '\0'));
        QCOMPARE(ended.status, isDrawn ? 0 : 1);
        QCOMPARE(QFile::exists(path), isDrawn);
        const QByteArray error = "morsehost: standard input: less than 0.1 s after " +
                                 QByteArray::number(from.toDouble(), 'f', 3) +
                                 " s: it ends after " +
                                 QByteArray::number(samples / 8000.0, 'f', 3) + " s\n";
        QCOMPARE(ended.err, isDrawn ? QByteArray() : error);
        if (!isDrawn)
            return;
        for (const DrawnPiece& piece : testsupport::readDrawn(contentOf(path)).inRows("nothing"))
            QVERIFY(piece.number("x") >= 40); // "no signal", not cut at the edge
    }

    void aPositionMayHaveMinutesAndHours_data()
    {
        QTest::addColumn<QString>("position");
        QTest::addColumn<QString>("seconds");
        QTest::newRow("minutes") << "0:12"
                                 << "12";
        QTest::newRow("many minutes") << "00:12"
                                      << "12";
        QTest::newRow("hours") << "0:00:12.5"
                               << "12.5";
    }

    void aPositionMayHaveMinutesAndHours()
    {
        QFETCH(QString, position);
        QFETCH(QString, seconds);
        const QStringList words = {"inspect", RECORDING, "--length", "2", "-o", "-", "--from"};
        const Ended ended = run(words + QStringList(position));
        QCOMPARE(ended.status, 0);
        QVERIFY(!ended.out.isEmpty());
        QCOMPARE(ended.out, run(words + QStringList(seconds)).out);
    }

    // As wide as ten seconds are otherwise.
    void aShortStretchFillsItsRow()
    {
        const Drawn drawn = testsupport::readDrawn(
            run({"inspect", RECORDING, "--from", "12", "--length", "3", "-o", "-"}).out);
        QCOMPARE(drawn.error, QString());
        QVERIFY(drawn.inRows("mark").back().number("x") > 800.0);
    }

    // What is far before the stretch is not heard, and the times are those of the recording.
    void theQuickWayShowsTheSameSignal()
    {
        QTemporaryDir dir;
        const QString longer = dir.filePath("longer.flac");
        QProcess sox;
        sox.start("sox", {RECORDING, longer, "pad", "100"});
        QVERIFY(sox.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(sox.exitCode(), 0);
        const QStringList words = {"inspect",  longer, "--from", "1:55",
                                   "--length", "20",   "-o",     "-"};
        const Drawn all = testsupport::readDrawn(run(words).out);
        const Drawn quick = testsupport::readDrawn(run(words + QStringList("--quick")).out);
        QVERIFY(!textOf(all).isEmpty());
        QCOMPARE(textOf(quick), textOf(all));
        const auto marks = all.inRows("mark");
        const auto quickMarks = quick.inRows("mark");
        QCOMPARE(quickMarks.size(), marks.size());
        for (std::size_t i = 0; i < marks.size(); ++i)
            QVERIFY(qAbs(quickMarks[i].number("x") - marks[i].number("x")) < 2.0);
    }

    // Of two signals the one that was there first is followed, though the other is stronger; who
    // begins to listen when both are there follows the stronger one.
    void theQuickWayHearsAMinuteBeforeTheStretch_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<bool>("isHeard");
        QTest::newRow("the begin is more than a minute before") << "90" << false;
        QTest::newRow("the begin is less than a minute before") << "55" << true;
    }

    void theQuickWayHearsAMinuteBeforeTheStretch()
    {
        QFETCH(QString, from);
        QFETCH(bool, isHeard);
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        const auto keyed = [](const std::string& word, double tone_Hz) {
            std::string text;
            for (int i = 0; i < 60; ++i)
                text += word;
            testsupport::Path way;
            way.tone_Hz = tone_Hz;
            return testsupport::sound(text, testsupport::Hand(), way, 8000, word);
        };
        std::vector<float> sound = keyed("ANNA ", 600.0);
        const std::vector<float> other = keyed("OTTO ", 1100.0);
        constexpr std::size_t LATER = 12 * 8000;
        for (std::size_t n = 0; n < sound.size(); ++n)
            sound[n] = 0.3F * sound[n] + (n < LATER ? 0.0F : 0.33F * other[n - LATER]);
        testsupport::writeSoundFile(path.toStdString(), 8000.0, sound);
        const QStringList words = {"inspect", path, "--from", from, "--length", "5", "-o", "-"};
        const QString all = textOf(testsupport::readDrawn(run(words).out));
        QVERIFY2(all.contains("NN"), qPrintable(all));
        const testsupport::Drawn quick =
            testsupport::readDrawn(run(words + QStringList("--quick")).out);
        QCOMPARE(quick.error, QString());
        QCOMPARE(quick.rows, 1);
        QVERIFY2(textOf(quick).contains(isHeard ? "NN" : "TT"), qPrintable(textOf(quick)));
    }

    void wrongUsageIsSaidInOneLine_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QByteArray>("part");
        const auto row = [](const char* name, const QStringList& words, const char* part) {
            QTest::newRow(name) << (QStringList("inspect") + words) << QByteArray(part);
        };
        row("no recording", {"-o", "x.svg"}, "FILE|- is missing");
        row("no picture", {"a.wav"}, "-o PICTURE is missing");
        row("no name", {"a.wav", "-o", ""}, "the PICTURE of -o is empty");
        row("another kind of picture", {"a.wav", "-o", "x.gif"},
            "-o takes '-' or a name that ends in .svg or .png, not 'x.gif'");
        row("before the beginning", {"a.wav", "-o", "x.svg", "--from", "-1"}, "--from takes");
        row("too long", {"a.wav", "-o", "x.svg", "--length", "601"}, "--length takes");
        row("no length", {"a.wav", "-o", "x.svg", "--length", "0"}, "--length takes");
        row("no number", {"a.wav", "-o", "x.svg", "--from", "nan"}, "--from takes");
        row("tone", {"a.wav", "-o", "x.svg", "--tone", "5"}, "--tone takes");
        row("rate of a file", {"a.wav", "-o", "x.svg", "--rate", "8000"},
            "--rate is for standard input");
    }
    void wrongUsageIsSaidInOneLine()
    {
        QFETCH(QStringList, words);
        QFETCH(QByteArray, part);
        const Ended ended = run(words);
        QCOMPARE(ended.status, 2);
        QCOMPARE(ended.err.count('\n'), 1);
        QVERIFY2(ended.err.contains(part), ended.err.constData());
    }

    void whatCannotBeDrawnLeavesTheOldPicture_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QByteArray>("part");
        QTest::newRow("no such recording")
            << QStringList{"/nowhere/x.wav"} << QByteArray("No such file or directory");
        QTest::newRow("no recording") << QStringList{TEST_DATA_DIR "/recordings/README.md"}
                                      << QByteArray("not a recording that can be read");
        QTest::newRow("beyond the end")
            << QStringList{RECORDING, "--from", "500"}
            << QByteArray("less than 0.1 s after 500.000 s: it ends after ");
        QTest::newRow("no such alphabet")
            << QStringList{RECORDING, "--alphabet", "Elvish"} << QByteArray("no such alphabet");
    }
    void whatCannotBeDrawnLeavesTheOldPicture()
    {
        QFETCH(QStringList, words);
        QFETCH(QByteArray, part);
        QTemporaryDir dir;
        const QString path = writeFile(dir.filePath("x.svg"), "old");
        const Ended ended = run(QStringList({"inspect", "-o", path}) + words);
        QCOMPARE(ended.status, 1);
        QVERIFY2(ended.err.contains(part), ended.err.constData());
        QCOMPARE(ended.err.count('\n'), 1);
        QCOMPARE(contentOf(path), QByteArray("old"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 1);
    }

    void anOldPictureIsReplaced()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.svg");
        const QStringList words = {"inspect", RECORDING, "-o", path, "--length", "1"};
        QCOMPARE(run(words).status, 0);
        const QByteArray first = contentOf(path);
        QVERIFY(first.contains("<svg"));
        QCOMPARE(run(words).status, 0);
        QCOMPARE(contentOf(path), first);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 1);
    }

    void nothingButAPlainFileIsReplaced()
    {
        QTemporaryDir dir;
        const QString pipe = dir.filePath("pipe.svg");
        QVERIFY(mkfifo(QFile::encodeName(pipe).constData(), 0600) == 0);
        const QString link = dir.filePath("link.svg");
        QVERIFY(QFile::link(pipe, link));
        const QString loose = dir.filePath("loose.svg");
        QVERIFY(QFile::link(dir.filePath("nothing"), loose));
        const QString recording = dir.filePath("recording.svg");
        QVERIFY(QFile::copy(RECORDING, recording));
        const QByteArray sound = contentOf(recording);
        for (const QString& path : {pipe, link, loose}) {
            const Ended ended = run({"inspect", RECORDING, "-o", path, "--length", "1"});
            QCOMPARE(ended.status, 1);
            QCOMPARE(ended.err,
                     "morsehost: " + path.toUtf8() + ": exists and is not a regular file\n");
        }
        const Ended ended = run({"inspect", recording, "-o", recording, "--length", "1"});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.err, "morsehost: " + recording.toUtf8() + ": is the recording itself\n");
        QCOMPARE(contentOf(recording), sound);
        QVERIFY(!QFileInfo(pipe).isFile());
        QVERIFY(QFileInfo(link).isSymLink());
    }

    void aPlaceThatCannotBeWrittenIsSaid()
    {
        for (const char* path : {"/nowhere/x.svg", "/dev/null/x.svg"}) {
            const Ended ended = run({"inspect", RECORDING, "-o", path});
            QCOMPARE(ended.status, 1);
            QVERIFY2(ended.err.startsWith(QByteArray("morsehost: ") + path + ": "),
                     ended.err.constData());
            QCOMPARE(ended.err.count('\n'), 1);
        }
    }

    void aTruncatedRecordingIsDrawnAsFarAsItGoes()
    {
        QTemporaryDir dir;
        const QString recording = dir.filePath("x.flac");
        const QString path = dir.filePath("x.svg");
        QVERIFY(QFile::copy(RECORDING, recording));
        QFile file(recording);
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        QVERIFY(file.resize(file.size() / 2));
        const Ended ended = run({"inspect", recording, "-o", path});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.err.count('\n'), 1);
        QVERIFY(!textOf(testsupport::readDrawn(contentOf(path))).isEmpty());
        // Beyond its end one line says it all.
        const Ended beyond = run({"inspect", recording, "-o", path, "--from", "500"});
        QCOMPARE(beyond.status, 1);
        QCOMPARE(beyond.err.count('\n'), 1);
    }

    void aSignalLeavesNoPicture()
    {
        QTemporaryDir dir;
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH),
                      {"inspect", "-", "-o", dir.filePath("x.svg")});
        process.write(QByteArray(80000, '\0'));
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(testsupport::isWaiting(process), testsupport::HANGS_ms);
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        QVERIFY(process.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("interrupted"));
        QVERIFY(QDir(dir.path()).entryList(QDir::Files).isEmpty());
    }

    void noMoreIsReadThanTheStretchNeeds()
    {
        // A pipe that goes on for ever.
        QTemporaryDir dir;
        const QString path = dir.filePath("x.svg");
        QProcess shell;
        shell.start(QStringLiteral("bash"),
                    {"-c", QStringLiteral("cat /dev/zero | %1 inspect - -o %2 --length 2")
                               .arg(QStringLiteral(MORSEHOST_PATH), path)});
        QVERIFY(shell.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(shell.exitCode(), 0);
        QCOMPARE(testsupport::readDrawn(contentOf(path)).rows, 1);
    }

    void aBandIsDrawnWithEachSignalsText()
    {
        const QTemporaryDir folder;
        const QString picture = folder.filePath("band.svg");
        const Ended ended = run({"inspect", "--band", "--length", "8", "--only", "400-2000", "-o",
                                 picture, PROJECT_DATA_DIR "/samples/bands/contest.flac"});
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const QByteArray svg = contentOf(picture);
        QVERIFY2(svg.contains(">G8CU<") && svg.contains(">I0HF<"), svg.constData());
        QVERIFY(!svg.contains(">RE5GO<")); // at 3.1 kHz
    }

    void whatABandCannotBeDrawnFrom_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<int>("status");
        QTest::newRow("option of one signal") << QStringList{"--band", "--wpm", "20"} << 2;
        QTest::newRow("option of a band") << QStringList{"--only", "1-2"} << 2;
        QTest::newRow("no such frequencies") << QStringList{"--band", "--only", "90000-90100"} << 1;
        QTest::newRow("after the end") << QStringList{"--band", "--from", "3:00"} << 1;
    }
    void whatABandCannotBeDrawnFrom()
    {
        QFETCH(QStringList, words);
        QFETCH(int, status);
        const QTemporaryDir folder;
        const QString picture = folder.filePath("band.svg");
        const Ended ended =
            run(QStringList("inspect") + words + QStringList{"-o", picture, RECORDING});
        QCOMPARE(ended.status, status);
        QVERIFY(ended.err.startsWith("morsehost: "));
        QVERIFY(!QFile::exists(picture));
    }
};

QTEST_GUILESS_MAIN(tst_Inspect)
#include "tst_inspect.moc"
