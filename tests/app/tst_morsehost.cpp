// SPDX-License-Identifier: MIT
// The program from outside: what it reads, what it prints, how it ends.
#include "support/files.h"
#include "support/keyer.h"
#include "support/morsecode.h"
#include "support/program.h"
#include "support/resultschema.h"
#include "support/soundfile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testsupport::end;
using testsupport::Ended;
using testsupport::run;

constexpr double RATE_HZ = 8000;

std::vector<float> keyed(const char* text, double rate_Hz = RATE_HZ)
{
    return testsupport::sound(text, testsupport::Hand(), testsupport::Path(), rate_Hz, "morsehost");
}

void append(std::vector<float>& samples, const std::vector<float>& more)
{
    samples.insert(samples.end(), more.begin(), more.end());
}

QByteArray raw(const std::vector<float>& samples)
{
    QByteArray bytes;
    for (const float sample : samples) {
        const auto value = static_cast<qint16>(sample * 32767);
        bytes += static_cast<char>(value & 0xFF);
        bytes += static_cast<char>((value >> 8) & 0xFF);
    }
    return bytes;
}

// The signal in channel `of` (from 0) of so many, the others silent.
void writeSound(const QString& path, int format, const std::vector<float>& samples, double rate_Hz,
                int channels = 1, int of = 0)
{
    std::vector<float> frames(samples.size() * static_cast<std::size_t>(channels));
    for (std::size_t i = 0; i < samples.size(); ++i)
        frames[i * static_cast<std::size_t>(channels) + static_cast<std::size_t>(of)] = samples[i];
    testsupport::writeSoundFile(path.toStdString(), rate_Hz, frames, channels, format);
}

// Starts the program on a pipe that stays open; returns what it has shown once two words are there.
QByteArray decodeFromAnOpenPipe(QProcess& process, const QStringList& words)
{
    process.start(QStringLiteral(MORSEHOST_PATH), words);
    process.write(raw(keyed("PARIS PARIS PARIS")));
    QByteArray out;
    while (!out.contains("PARIS PARIS") && process.waitForReadyRead(testsupport::HANGS_ms))
        out += process.readAllStandardOutput();
    return out;
}

// Each kind of file is said once when it is lost.
void verifyLossesAreSaid(const Ended& ended)
{
    QCOMPARE(ended.status, 1);
    const QList<QByteArray> lines = ended.err.trimmed().split('\n');
    QVERIFY2(lines.last().contains("could not be saved"), ended.err.constData());
    for (const char* kind : {"code file", "text file"}) {
        int said = 0;
        for (const QByteArray& line : lines)
            said += line.contains(kind) && !line.contains("again") ? 1 : 0;
        QCOMPARE(said, 1);
    }
}

void verifyOneLine(const Ended& ended, int status, const char* part)
{
    QCOMPARE(ended.status, status);
    QVERIFY2(ended.err.startsWith("morsehost: "), ended.err.constData());
    QCOMPARE(ended.err.count('\n'), 1);
    QVERIFY2(ended.err.contains(part), ended.err.constData());
}

} // namespace

class tst_Morsehost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "UTC");
        qputenv("LC_ALL", "C");
    }

    // decode

    void recordingsOfAnyKindAreDecoded_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("format");
        QTest::addColumn<double>("rate_Hz");
        QTest::newRow("wav") << "x.wav" << (SF_FORMAT_WAV | SF_FORMAT_PCM_16) << 8000.0;
        QTest::newRow("float wav") << "x.wav" << (SF_FORMAT_WAV | SF_FORMAT_FLOAT) << 11025.0;
        QTest::newRow("flac") << "x.flac" << (SF_FORMAT_FLAC | SF_FORMAT_PCM_16) << 44100.0;
        QTest::newRow("ogg") << "x.ogg" << (SF_FORMAT_OGG | SF_FORMAT_VORBIS) << 16000.0;
        QTest::newRow("mp3") << "x.mp3" << (SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III) << 48000.0;
        QTest::newRow("high rate") << "x.wav" << (SF_FORMAT_WAV | SF_FORMAT_PCM_16) << 192000.0;
        QTest::newRow("highest rate") << "x.wav" << (SF_FORMAT_WAV | SF_FORMAT_PCM_16) << 768000.0;
        QTest::newRow("low rate") << "x.wav" << (SF_FORMAT_WAV | SF_FORMAT_PCM_16) << 4000.0;
    }

    void recordingsOfAnyKindAreDecoded()
    {
        QFETCH(QString, name);
        QFETCH(int, format);
        QFETCH(double, rate_Hz);
        QTemporaryDir dir;
        const QString path = dir.filePath(name);
        writeSound(path, format, keyed("PARIS DE N0CALL", rate_Hz), rate_Hz);
        const Ended ended = run({"decode", path});
        QCOMPARE(ended.out.simplified(), QByteArray("PARIS DE N0CALL"));
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
    }

    void oneChannelOrTheMeanOfAllIsTaken()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS PARIS"), RATE_HZ, 3, 1);
        QCOMPARE(run({"decode", path}).out.simplified(), QByteArray("PARIS PARIS"));
        QCOMPARE(run({"decode", "--channel", "2", path}).out.simplified(),
                 QByteArray("PARIS PARIS"));
        QCOMPARE(run({"decode", "--channel", "1", path}).out.simplified(), QByteArray());
        verifyOneLine(run({"decode", "--channel", "4", path}), 1,
                      "has 3 channels; there is no channel 4");
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("E"), RATE_HZ);
        verifyOneLine(run({"decode", "--channel", "2", path}), 1,
                      "has 1 channel; there is no channel 2");
    }

    void aFileMayHaveAnyName()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QString::fromUtf8("\xC3\xBC %1 \xE2\x99\xAB.wav"));
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS"), RATE_HZ);
        QCOMPARE(run({"decode", path}).out.simplified(), QByteArray("PARIS"));
        verifyOneLine(run({"decode", path + "?"}), 1,
                      "\xE2\x99\xAB.wav?: No such file or directory");
    }

    void rawSamplesComeFromAPipe()
    {
        const QByteArray samples = raw(keyed("CQ TEST"));
        QCOMPARE(run({"decode", "-"}, samples).out.simplified(), QByteArray("CQ TEST"));
        const QByteArray faster = raw(keyed("CQ TEST", 12000));
        QCOMPARE(run({"decode", "--rate", "12000", "-"}, faster).out.simplified(),
                 QByteArray("CQ TEST"));
        // Half a sample at the end is none.
        const Ended cut = run({"decode", "-"}, samples + "x");
        QCOMPARE(cut.out.simplified(), QByteArray("CQ TEST"));
        QCOMPARE(cut.status, 1);
        QCOMPARE(cut.err, QByteArray("morsehost: standard input: ends in the middle of a sample; "
                                     "samples have 16 bits\n"));
        QCOMPARE(run({"decode", "-"}).out, QByteArray());
    }

    void aRecordingMayComeFromAPipe_data()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("wav") << (SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        QTest::newRow("rf64") << (SF_FORMAT_RF64 | SF_FORMAT_PCM_16);
        QTest::newRow("aiff") << (SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
        QTest::newRow("au") << (SF_FORMAT_AU | SF_FORMAT_PCM_16);
        QTest::newRow("caf") << (SF_FORMAT_CAF | SF_FORMAT_PCM_16);
        QTest::newRow("wave64") << (SF_FORMAT_W64 | SF_FORMAT_PCM_16);
        QTest::newRow("flac") << (SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
        QTest::newRow("ogg") << (SF_FORMAT_OGG | SF_FORMAT_VORBIS);
        QTest::newRow("mp3") << (SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
    }

    void aRecordingMayComeFromAPipe()
    {
        QFETCH(int, format);
        QTemporaryDir dir;
        const QString path = dir.filePath("x");
        writeSound(path, format, keyed("PARIS DE N0CALL", 48000), 48000);
        const Ended ended = run({"decode", "-"}, contentOf(path));
        QCOMPARE(ended.out.simplified(), QByteArray("PARIS DE N0CALL"));
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        verifyOneLine(run({"decode", "--rate", "48000", "-"}, contentOf(path)), 1,
                      "standard input: is a recording and has its own rate");
    }

    void mp3OfEveryRateIsKnownWithAndWithoutATag()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x");
        const QByteArray tag("ID3\3\0\0\0\0\0\x14TIT2\0\0\0\x0A\0\0\0evening!!", 30);
        for (const double rate_Hz : {8000, 12000, 16000, 22050, 32000, 44100}) {
            writeSound(path, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, keyed("PARIS", rate_Hz),
                       rate_Hz);
            const QByteArray bytes = contentOf(path);
            QVERIFY(bytes.startsWith('\xFF'));
            QCOMPARE(run({"decode", "-"}, bytes).out.simplified(), QByteArray("PARIS"));
            QCOMPARE(run({"decode", "-"}, tag + bytes).out.simplified(), QByteArray("PARIS"));
        }
    }

    void aSampleThatLooksLikeAnMp3FrameIsASample()
    {
        const QByteArray frame("\xFF\xFB\x90\x00", 4);
        QCOMPARE(run({"decode", "-"}, frame + raw(keyed("CQ TEST"))).out.simplified(),
                 QByteArray("CQ TEST"));
        QCOMPARE(run({"decode", "-"}, frame).status, 0);
    }

    void aRecordingThatCannotBeReadIsNotTakenForSamples_data()
    {
        QTest::addColumn<QByteArray>("begin");
        QTest::newRow("mp4") << QByteArray("\0\0\0\x20"
                                           "ftypM4A ",
                                           12);
        QTest::newRow("matroska") << QByteArray("\x1A\x45\xDF\xA3");
        QTest::newRow("wav of another sound") << QByteArray("RIFF\x24\0\0\0AVI LIST", 16);
    }

    void aRecordingThatCannotBeReadIsNotTakenForSamples()
    {
        QFETCH(QByteArray, begin);
        const Ended ended = run({"decode", "-"}, begin + QByteArray(100000, '\x40'));
        verifyOneLine(ended, 1, "standard input: is not a recording that can be read: ");
    }

    // As arecord writes it, which never knows how long it will go on.
    void aWavFileIsHeardWhileItArrives()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS PARIS PARIS"), RATE_HZ);
        QByteArray bytes = contentOf(path);
        bytes.replace(4, 4, QByteArray(4, '\xFF'));
        bytes.replace(bytes.indexOf("data") + 4, 4, QByteArray(4, '\xFF'));
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {"decode", "-"});
        process.write(bytes);
        QByteArray out;
        while (!out.contains("PARIS PARIS") && process.waitForReadyRead(testsupport::HANGS_ms))
            out += process.readAllStandardOutput();
        QVERIFY2(out.contains("PARIS PARIS"), out.constData());
        process.closeWriteChannel();
        const Ended ended = end(process);
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
    }

    void aPipeWithoutAStartIsDatedByTheClock()
    {
        const QDateTime before = QDateTime::currentDateTimeUtc();
        const QByteArray out = run({"decode", "--json", "-"}, raw(keyed("E E"))).out;
        const QByteArray line = out.trimmed().split('\n').last();
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        QCOMPARE(object.value("event").toString(), QStringLiteral("transmission"));
        const QDateTime start =
            QDateTime::fromString(object.value("start").toString(), Qt::ISODateWithMs);
        QVERIFY2(start >= before.addSecs(-1), line.constData());
    }

    void theStartIsInTheNameOrInTheFile()
    {
        QTemporaryDir dir;
        const QString named = dir.filePath("x_20260512_101500Z.wav");
        writeSound(named, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS"), RATE_HZ);
        QVERIFY(run({"decode", "--json", "--start", "auto", named})
                    .out.contains("\"start\":\"2026-05-12T10:15:01."));
        const QString plain = dir.filePath("x.wav");
        QVERIFY(QFile::copy(named, plain));
        verifyOneLine(run({"decode", "--start", "auto", plain}), 1,
                      "neither its name (20260512_101500) nor a bext");
        QVERIFY(run({"decode", "--json", plain}).out.contains("\"start\":\"1970-01-01T00:00:01."));
    }

    // As field recorders write it.
    void theStartIsInTheBroadcastChunk_data()
    {
        QTest::addColumn<QByteArray>("date");
        QTest::addColumn<QByteArray>("time");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("start"); // empty: there is none
        QTest::newRow("as the standard says") << QByteArray("2026-05-12") << QByteArray("10:15:00")
                                              << "x.wav" << QByteArray("2026-05-12T10:15:0");
        QTest::newRow("the name comes first")
            << QByteArray("2026-05-12") << QByteArray("10:15:00") << "20240101_000000.wav"
            << QByteArray("2024-01-01T00:00:0");
        QTest::newRow("not filled in")
            << QByteArray(10, '\0') << QByteArray(8, '\0') << "x.wav" << QByteArray();
        QTest::newRow("no date") << QByteArray("2026-13-12") << QByteArray("10:15:00") << "x.wav"
                                 << QByteArray();
    }

    void theStartIsInTheBroadcastChunk()
    {
        QFETCH(QByteArray, date);
        QFETCH(QByteArray, time);
        QFETCH(QString, name);
        QFETCH(QByteArray, start);
        const auto number = [](int value, int bytes) {
            QByteArray result;
            for (int i = 0; i < bytes; ++i)
                result += static_cast<char>(qint64(value) >> 8 * i & 0xFF);
            return result;
        };
        const auto chunk = [&number](const char* mark, const QByteArray& content) {
            return mark + number(content.size(), 4) + content;
        };
        const QByteArray format = number(1, 2) + number(1, 2) + number(8000, 4) + number(16000, 4) +
                                  number(2, 2) + number(16, 2);
        // Description, who and which, date and time, then what is left empty.
        const QByteArray broadcast = QByteArray(256 + 32 + 32, '\0') + date + time + number(0, 8) +
                                     number(1, 2) + QByteArray(64 + 190, '\0');
        QCOMPARE(broadcast.size(), 602);
        const QByteArray wav =
            chunk("RIFF", "WAVE" + chunk("bext", broadcast) + chunk("fmt ", format) +
                              chunk("data", raw(keyed("PARIS"))));
        QTemporaryDir dir;
        const QString path = writeFile(dir.filePath(name), wav);
        const Ended ended = run({"decode", "--json", "--start", "auto", path});
        if (start.isEmpty()) {
            verifyOneLine(ended, 1, "neither its name (20260512_101500) nor a bext");
            return;
        }
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.out.contains("\"start\":\"" + start), ended.out.constData());
        QCOMPARE(run({"decode", path}).out.simplified(), QByteArray("PARIS"));
    }

    void whatWouldBeSilenceIsSaid()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS"), RATE_HZ);
        QByteArray bytes = contentOf(path);
        const int data = bytes.indexOf("data");
        bytes.replace(data + 4, 4, QByteArray(4, '\0'));
        const QString unfinished = writeFile(dir.filePath("unfinished.wav"), bytes);
        verifyOneLine(run({"decode", unfinished}), 1, "its header says that it holds no");
        verifyOneLine(
            run({"decode", "-"}, bytes), 1,
            "its header says that it holds no sound; if it does, 'sox --ignore-length' repairs it");

        const std::vector<float> samples = keyed("PARIS");
        std::vector<float> frames;
        for (const float sample : samples)
            frames.insert(frames.end(), {sample, -sample});
        const QString opposite = dir.filePath("opposite.wav");
        testsupport::writeSoundFile(opposite.toStdString(), RATE_HZ, frames, 2);
        verifyOneLine(run({"decode", opposite}), 1, "its channels cancel each other out");
        QCOMPARE(run({"decode", "--channel", "2", opposite}).out.simplified(), QByteArray("PARIS"));

        verifyOneLine(run({"decode", "--tone", "1900", "--rate", "4000", "-"}, "0123"), 1,
                      "a tone of 1900 Hz cannot be heard at 4000 samples a second");
    }

    void severalRecordingsAreDecodedInTheirOrder()
    {
        QTemporaryDir dir;
        const QStringList texts = {"PARIS PARIS PARIS", "DE", "CQ CQ", "TEST"};
        QStringList paths;
        for (const QString& text : texts) {
            paths += dir.filePath(QString::number(paths.size()) + ".wav");
            writeSound(paths.last(), SF_FORMAT_WAV | SF_FORMAT_PCM_16,
                       keyed(text.toUtf8().constData()), RATE_HZ);
        }
        paths.insert(2, dir.filePath("missing.wav"));
        const Ended one = run(QStringList{"decode", "--jobs", "1"} + paths);
        QCOMPARE(one.status, 1);
        QCOMPARE(one.err, "morsehost: " + paths.at(2).toUtf8() + ": No such file or directory\n");
        QByteArray expected;
        for (const int i : {0, 1, 3, 4})
            expected += "==> " + paths.at(i).toUtf8() + " <==\n" +
                        texts.at(i < 2 ? i : i - 1).toUtf8() + "\n";
        QCOMPARE(one.out, expected);
        for (const char* jobs : {"2", "8"}) {
            const Ended several = run(QStringList{"decode", "--jobs", jobs} + paths);
            QCOMPARE(several.out, one.out);
            QCOMPARE(several.err, one.err);
            QCOMPARE(several.status, one.status);
        }
        const Ended json = run(QStringList{"decode", "--json"} + paths);
        QCOMPARE(json.out.count("\"event\":\"source\""), 4);
    }

    void aNameNeedNotBeUtf8()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS"), RATE_HZ);
        QProcess shell;
        shell.start(
            QStringLiteral("bash"),
            {"-c", QStringLiteral("cd %2; mv x.wav $'\\xFF.wav'; mkdir $'\\xFE';"
                                  "%1 decode --save $'\\xFE' $'\\xFF.wav'; ls $'\\xFE' | wc -l")
                       .arg(QStringLiteral(MORSEHOST_PATH), dir.path())});
        const Ended ended = end(shell);
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.out.simplified(), QByteArray("PARIS 3"));
    }

    // Codes that the alphabet does not have.
    void unknownCodesAreEvents()
    {
        const Ended ended = run({"symbols", "--json", "-"}, "0 1 0 1 0 1 0 3 0 3");
        QVERIFY2(ended.out.contains("\"code\":\".-.-.-.\""), ended.out.constData());
        QVERIFY(ended.out.contains("\"unknown_codes\":[\".-.-.-.\"]"));
    }

    void aLineEndsWithItsTransmission()
    {
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {"decode", "-"});
        std::vector<float> samples = keyed("PARIS");
        append(samples, std::vector<float>(static_cast<std::size_t>(10 * RATE_HZ)));
        process.write(raw(samples));
        QByteArray out;
        while (!out.endsWith('\n') && process.waitForReadyRead(testsupport::HANGS_ms))
            out += process.readAllStandardOutput();
        QCOMPARE(out, QByteArray("PARIS\n"));
        process.closeWriteChannel();
        QCOMPARE(end(process).out, QByteArray());
    }

    void textAppearsWhileThePipeIsOpen()
    {
        QProcess process;
        QByteArray out = decodeFromAnOpenPipe(process, {"decode", "-"});
        QVERIFY2(out.contains("PARIS PARIS"), out.constData());
        QCOMPARE(process.state(), QProcess::Running);
        process.closeWriteChannel();
        QCOMPARE(end(process).status, 0);
    }

    void codesThatAreDecodedCanBeFedBack()
    {
        const Ended codes = run({"decode", "--codes", "-"}, raw(keyed("CQ DE 5")));
        QCOMPARE(codes.status, 0);
        QVERIFY(codes.out.startsWith("1 0 1 0 3 "));
        const Ended text = run({"symbols", "-"}, codes.out);
        QCOMPARE(text.out.simplified(), QByteArray("CQ DE 5"));
    }

    void toneAndSpeedCanBeSet()
    {
        const Ended ended =
            run({"decode", "--tone", "700", "--wpm", "20", "-"}, raw(keyed("PARIS")));
        QCOMPARE(ended.out.simplified(), QByteArray("PARIS"));
    }

    // In fading it shows.
    void aFileIsHeardAgainUnlessItIsToBeHeardLive()
    {
        const std::string sent = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG AND THE RIVER THEN "
                                 "GOES ON OVER THE HILLS TO THE SEA WHERE SHIPS WAIT FOR WIND";
        testsupport::Path path;
        path.scatter_Hz = 0.8;
        path.snr_dB = 15.0;
        const std::vector<float> samples = testsupport::sound(sent, {}, path, RATE_HZ, "again");
        QTemporaryDir dir;
        const QString name = dir.filePath("fading.wav");
        testsupport::writeSoundFile(name.toStdString(), RATE_HZ, samples);
        const auto errors = [&](const Ended& ended) {
            return testsupport::editDistance(sent, ended.out.simplified().toStdString());
        };
        const Ended again = run({"decode", name});
        const Ended live = run({"decode", "--live", name});
        QCOMPARE(again.status, 0);
        QCOMPARE(live.status, 0);
        QVERIFY2(2 * errors(again) < errors(live), (again.out + live.out).constData());
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(run({"decode", "-"}, file.readAll()).out, live.out);
    }

    void silenceGivesNothing()
    {
        const Ended ended = run({"decode", "-"}, QByteArray(160000, '\0'));
        QCOMPARE(ended.out, QByteArray());
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
    }

    void eventsAreWholeObjects()
    {
        std::vector<float> samples = keyed("TU K");
        append(samples, std::vector<float>(static_cast<std::size_t>(30 * RATE_HZ)));
        append(samples, keyed("CQ CQ"));
        const Ended ended =
            run({"decode", "--json", "--start", "2026-05-12T10:15:00Z", "-"}, raw(samples));
        QCOMPARE(ended.status, 0);
        QString text;
        QStringList kinds;
        QStringList times;
        for (const QByteArray& line : ended.out.trimmed().split('\n')) {
            QJsonParseError error;
            const QJsonObject object = QJsonDocument::fromJson(line, &error).object();
            QCOMPARE(error.error, QJsonParseError::NoError);
            const QString kind = object.value("event").toString();
            kinds += kind;
            times += object.value("at").toString();
            if (kind == "character")
                text += object.value("text").toString();
            else if (kind == "word")
                text += ' ';
            else if (kind == "line")
                text += '\n';
        }
        QStringList sorted = times;
        sorted.sort();
        QCOMPARE(times, sorted);
        QVERIFY(times.first() >= "2026-05-12T10:15:00" && times.last() < "2026-05-12T10:16:00");
        QCOMPARE(text.count('\n'), 1);
        QCOMPARE(text.section('\n', 1).simplified(), QStringLiteral("CQ CQ"));
        QVERIFY(kinds.contains("time"));
    }

    void timeStampsAreThoseOfTheSignal()
    {
        QTemporaryDir dir;
        std::vector<float> samples = keyed("PARIS PARIS");
        const double first_s = static_cast<double>(samples.size()) / RATE_HZ;
        append(samples, std::vector<float>(static_cast<std::size_t>(30 * RATE_HZ)));
        append(samples, keyed("PARIS PARIS"));
        const Ended ended =
            run({"decode", "--save", dir.filePath("saved"), "--start", "2026-05-12T10:15:00Z", "-"},
                raw(samples));
        QCOMPARE(ended.status, 0);
        const QDir saved(dir.filePath("saved"));
        const QStringList texts = saved.entryList({"*__International.txt"});
        QCOMPARE(texts.size(), 1);
        const QString text = QString::fromUtf8(contentOf(saved.filePath(texts.first())));
        const QRegularExpression markers(QStringLiteral(
            "PARIS PARIS ?\n\\[Stop Time:  (.*)\\]\n\\[Start Time:  (.*)\\]\nPARIS PARIS"));
        const QRegularExpressionMatch match = markers.match(text);
        QVERIFY2(match.hasMatch(), qPrintable(text));
        // The keyer leaves a second before the first mark and two behind the last one.
        const auto seconds = [](const QString& time) {
            return QTime(10, 15).msecsTo(QTime::fromString(time, "hh:mm:ss.zzz")) / 1000.0;
        };
        QVERIFY(qAbs(seconds(match.captured(1)) - (first_s - 2)) < 0.05);
        QVERIFY(qAbs(seconds(match.captured(2)) - (first_s + 30 + 1)) < 0.05);
    }

    // What cannot be decoded

    void badInputIsSaidInOneLine_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("missing") << "missing" << QByteArray("No such file or directory");
        QTest::newRow("directory") << "directory" << QByteArray("is a folder");
        QTest::newRow("empty") << "empty" << QByteArray("is empty");
        QTest::newRow("text") << "text" << QByteArray("not a recording that can be read");
        QTest::newRow("truncated header") << "header" << QByteArray("not a recording");
        QTest::newRow("rate too low")
            << "rate"
            << QByteArray("has 3999 samples a second, which is not between 4000 and 768000");
    }

    void badInputIsSaidInOneLine()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, reason);
        QTemporaryDir dir;
        const QString path = dir.filePath("input.wav");
        if (kind == "directory") {
            QVERIFY(QDir().mkdir(path));
        } else if (kind == "rate") {
            writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("E"), 3999);
        } else if (kind != "missing") {
            writeFile(path, kind == "text"     ? QByteArray("Good morning,\nthis is a letter.\n")
                            : kind == "header" ? QByteArray("RIFF\0\0\0\0WAVEfm", 15)
                                               : QByteArray());
        }
        const Ended ended = run({"decode", path});
        verifyOneLine(ended, 1, reason.constData());
        QVERIFY(ended.err.contains("input.wav: "));
        QCOMPARE(ended.out, QByteArray());
    }

    void aTruncatedRecordingIsDecodedAsFarAsItGoes_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("fromPipe");
        for (const bool fromPipe : {false, true}) {
            const char* from = fromPipe ? " from a pipe" : "";
            QTest::addRow("flac%s", from) << (SF_FORMAT_FLAC | SF_FORMAT_PCM_16) << fromPipe;
            QTest::addRow("wav%s", from) << (SF_FORMAT_WAV | SF_FORMAT_PCM_16) << fromPipe;
            QTest::addRow("aiff%s", from) << (SF_FORMAT_AIFF | SF_FORMAT_PCM_16) << fromPipe;
            QTest::addRow("ogg%s", from) << (SF_FORMAT_OGG | SF_FORMAT_VORBIS) << fromPipe;
        }
    }

    void aTruncatedRecordingIsDecodedAsFarAsItGoes()
    {
        QFETCH(int, format);
        QFETCH(bool, fromPipe);
        QTemporaryDir dir;
        const QString path = dir.filePath("x");
        writeSound(path, format, keyed("PARIS PARIS PARIS PARIS"), RATE_HZ);
        QFile file(path);
        QVERIFY(file.resize(file.size() * 8 / 10));
        const Ended ended =
            fromPipe ? run({"decode", "-"}, contentOf(path)) : run({"decode", path});
        QVERIFY2(ended.out.startsWith("PARIS PAR"), ended.out.constData());
        verifyOneLine(ended, 1, fromPipe ? "standard input: " : "/x: ");
        QVERIFY2(!ended.err.contains("Error"), ended.err.constData());
    }

    // Who ends a reception knows that the end of the stream is missing.
    void aStreamThatIsInterruptedIsNotCalledCut()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.ogg");
        writeSound(path, SF_FORMAT_OGG | SF_FORMAT_VORBIS, keyed("PARIS PARIS PARIS PARIS", 48000),
                   48000);
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {"decode", "-"});
        process.write(contentOf(path).chopped(100));
        QByteArray out;
        while (!out.contains("PARIS") && process.waitForReadyRead(testsupport::HANGS_ms))
            out += process.readAllStandardOutput();
        QVERIFY(out.contains("PARIS"));
        ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        const Ended ended = testsupport::end(process);
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
    }

    void wrongUsageIsSaidInOneLine_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QByteArray>("part");
        const auto row = [](const char* name, const QStringList& words, const char* part) {
            QTest::newRow(name) << words << QByteArray(part);
        };
        row("unknown command", {"decipher"}, "no command 'decipher' (see 'morsehost --help')");
        row("no command at all", {""}, "no command '' (see");
        row("help for an unknown command", {"help", "decipher"}, "no command 'decipher' (see");
        row("--help for an unknown command", {"--help", "decipher"}, "no command 'decipher' (see");
        row("no operand", {"decode"}, "FILE…|- is missing");
        row("two operands", {"inspect", "a", "b"}, "unexpected argument 'b'");
        row("an empty operand", {"decode", ""}, "a file name is empty");
        row("unknown option", {"decode", "--loud", "x"}, "no option '--loud' (");
        row("unknown option with a value", {"decode", "--loud=9", "x"}, "no option '--loud' (");
        row("unknown letter", {"decode", "-x", "x"}, "no option '-x' (");
        row("one dash too few", {"decode", "-tone", "700", "x"},
            "no option '-tone'; write --tone (");
        row("a tone after an unknown option", {"decode", "--tone", "700", "--loud", "x"},
            "no option '--loud' (");
        row("value missing", {"decode", "x", "--tone"}, "missing value after '--tone' (");
        row("value of a switch", {"decode", "x", "--codes=1"},
            "unexpected value after '--codes' (");
        row("empty value", {"decode", "x", "--tone", ""}, "the HZ of --tone is empty (");
        row("no alphabet's name", {"decode", "x", "--alphabet="},
            "the NAME of --alphabet is empty");
        row("no decoder modules file", {"maps", "--decoders", ""},
            "the FILE of --decoders is empty");
        row("one option twice", {"decode", "--tone", "700", "x", "--tone", "700"},
            "--tone is given twice (");
        row("one option three times", {"decode", "--wpm=9", "--wpm=9", "--wpm=9", "x"},
            "--wpm is given 3 times (");
        row("tone is not a number", {"decode", "--tone", "high", "x"}, "--tone takes");
        row("tone is not finite", {"decode", "--tone", "nan", "x"}, "--tone takes");
        row("speed out of range", {"decode", "--wpm", "1000", "x"}, "--wpm takes");
        row("channel zero", {"decode", "--channel", "0", "x"}, "--channel takes");
        row("rate of a file", {"decode", "--rate", "8000", "x"}, "--rate is for standard input");
        row("no time", {"decode", "--start", "yesterday", "x"}, "--start takes");
        row("too late a time", {"decode", "--start", "2200-01-01T00:00:00Z", "x"}, "--start takes");
        row("two forms", {"decode", "--codes", "--json", "x"}, "exclude each other");
        row("frequency", {"decode", "--frequency", "-1", "x"}, "--frequency takes");
        row("symbols without operand", {"symbols"}, "missing");
        row("a speed of teleprinters with Morse", {"decode", "--baud", "abc", "x"},
            "--baud needs the --decoder of a teleprinter (see");
        row("a map with Morse", {"decode", "--map", "Russian", "x"},
            "--map needs the --decoder of a teleprinter");
        row("maps with Morse", {"decode", "--decoder", "Morse", "--maps", "/nonexistent", "x"},
            "--maps needs the --decoder of a teleprinter");
        row("decoders with Morse", {"decode", "--decoders", "/nonexistent", "x"},
            "--decoders needs the --decoder of a teleprinter");
        row("a shift with Morse", {"decode", "--shift", "170", "x"},
            "--shift needs the --decoder of a teleprinter");
        row("a polarity with Morse", {"decode", "--reverse", "x"},
            "--reverse needs the --decoder of a teleprinter");
        row("cut numbers in another word", {"decode", "--cut-numbers", "yes", "x"},
            "--cut-numbers takes 'on' or 'off', not 'yes'");
        row("cut numbers of a band", {"band", "--cut-numbers", "x", "x"},
            "--cut-numbers takes 'on' or 'off', not 'x'");
        row("cut numbers of a teleprinter",
            {"decode", "--decoder", "Baudot", "--cut-numbers", "off", "x"},
            "--cut-numbers is for Morse");
        row("blanks that unshift with Morse", {"decode", "--unshift-on-space", "yes", "x"},
            "--unshift-on-space needs the --decoder of a teleprinter");
    }

    void wrongUsageIsSaidInOneLine()
    {
        QFETCH(QStringList, words);
        QFETCH(QByteArray, part);
        const Ended ended = run(words);
        verifyOneLine(ended, 2, part.constData());
        QVERIFY(ended.err.contains("--help"));
        QCOMPARE(ended.out, QByteArray());
    }

    void withoutWordsTheUsageIsShown()
    {
        const Ended ended = run({});
        QCOMPARE(ended.status, 2);
        QVERIFY(ended.err.contains("Usage: morsehost COMMAND"));
    }

    void helpAndVersionAreShown()
    {
        for (const QStringList& words : {QStringList{"--help"}, QStringList{"decode", "--help"},
                                         QStringList{"symbols", "x", "y", "--help"}}) {
            const Ended ended = run(words);
            QCOMPARE(ended.status, 0);
            QVERIFY(ended.out.contains("Examples:\n  "));
            QCOMPARE(ended.err, QByteArray());
        }
        const Ended version = run({"--version"});
        QCOMPARE(version.status, 0);
        QVERIFY(QRegularExpression("^morsehost \\d+\\.\\d+\\.\\d+\n$")
                    .match(QString::fromUtf8(version.out))
                    .hasMatch());
    }

    void helpIsGivenHoweverItIsAskedFor()
    {
        const QByteArray all = run({"--help"}).out;
        const QByteArray decode = run({"decode", "--help"}).out;
        QVERIFY(all.startsWith("Usage: morsehost COMMAND"));
        QVERIFY(decode.startsWith("Usage: morsehost decode"));
        for (const QStringList& words :
             {QStringList{"help"}, QStringList{"-h"}, QStringList{"help", "help"},
              QStringList{"help", "--help"}, QStringList{"--help", "--version"}})
            QCOMPARE(run(words).out, all);
        for (const QStringList& words :
             {QStringList{"help", "decode"}, QStringList{"--help", "decode"},
              QStringList{"-h", "decode"}, QStringList{"decode", "-h"},
              QStringList{"help", "decode", "x"}, QStringList{"help", "decode", "--tone"},
              QStringList{"decode", "--help", "--loud"}}) {
            const Ended ended = run(words);
            QCOMPARE(ended.out, decode);
            QCOMPARE(ended.err, QByteArray());
            QCOMPARE(ended.status, 0);
        }
    }

    void aSwitchMayBeGivenTwice()
    {
        QCOMPARE(run({"symbols", "--codes", "--codes", "-"}, "0 3").out, QByteArray("0 3\n"));
    }

    void anUnknownAlphabetIsSaid()
    {
        QTemporaryDir dir;
        verifyOneLine(run({"symbols", "--alphabets", dir.path(), "--alphabet", "Elvish", "-"}), 1,
                      "Elvish: no such alphabet in ");
    }

    void aFolderThatCannotBeUsedIsSaidAtTheStart_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QByteArray>("part");
        for (const char* command : {"decode", "symbols"}) {
            const auto row = [command](const char* name, const char* folder, const char* part) {
                QTest::addRow("%s, %s", command, name)
                    << QString(command) << QString(folder) << QByteArray(part);
            };
            row("under a file", "/dev/null/x", "/dev/null/x: the folder cannot be created: ");
            row("a file", "/dev/null", "/dev/null: is not a folder");
            row("a folder that takes no file", "/proc", "/proc: no file can be written there: ");
            row("in a folder that takes none", "/proc/x",
                "/proc/x: the folder cannot be created: ");
        }
    }

    void aFolderThatCannotBeUsedIsSaidAtTheStart()
    {
        QFETCH(QString, command);
        QFETCH(QString, folder);
        QFETCH(QByteArray, part);
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {command, "--save", folder, "-"});
        QVERIFY(process.waitForFinished(testsupport::HANGS_ms)); // the input is still open
        verifyOneLine(end(process), 1, part.constData());
    }

    void aFolderIsMadeWithThoseAboveIt()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath("a/b/c");
        QCOMPARE(run({"symbols", "--save", folder, "-"}, "0 3").status, 0);
        QCOMPARE(QDir(folder).entryList({"*.xml"}).size(), 1);
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QDir(folder).entryList({"*.txt", "*.xml"}));
    }

    void whatCannotBeginMakesNoFolder()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath("a");
        for (const QStringList& words :
             {QStringList{"decode", "nothing.wav"}, QStringList{"symbols", "nothing.codes"},
              QStringList{"symbols", "--alphabet", "Elvish", "-"}}) {
            QCOMPARE(run(words + QStringList{"--save", folder}).status, 1);
            QVERIFY(!QFile::exists(folder));
        }
    }

    // symbols

    void symbolCodesAreDecoded()
    {
        const Ended ended = run({"symbols", "-"}, "0 1 3\n1\t0 0 0\r\n4 128 131");
        QCOMPARE(ended.out, QByteArray("AB E\n"));
        QCOMPARE(ended.status, 0);
        QTemporaryDir dir;
        const QString codes = writeFile(dir.filePath("codes"), "0 3 5 1 3");
        QCOMPARE(run({"symbols", codes}).out, QByteArray("E\nT\n"));
    }

    void anAlphabetOfOnesOwnIsUsed()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Mine.mal"), "\xD7\x90\t.-\n\n");
        const Ended ended =
            run({"symbols", "--alphabets", dir.path(), "--alphabet", "mine", "-"}, "0 1 3");
        QCOMPARE(ended.out, QByteArray("\xD7\x90\n"));
    }

    void aFolderOfOnesOwnMayHaveTheAlphabetOfDefault()
    {
        QTemporaryDir dir;
        const QStringList words = {"symbols", "--alphabets", dir.path(), "-"};
        verifyOneLine(run(words), 1, "International: no such alphabet in ");
        writeFile(dir.filePath("International.mal"), "X\t.-\n\n");
        QCOMPARE(run(words, "0 1 3").out, QByteArray("X\n"));
    }

    void noLineEndsWithABlank()
    {
        QCOMPARE(run({"symbols", "-"}, "0 3 4 4 1 3 4 5 4 0 3 4").out, QByteArray("E T\nE\n"));
    }

    void whatIsNoSymbolCodeIsSaidWithItsLine_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("part");
        QTest::newRow("word") << QByteArray("0 1 3\n\n0 dash") << QByteArray("line 3: 'dash'");
        QTest::newRow("too large") << QByteArray("99999999999") << QByteArray("line 1: '9999");
        QTest::newRow("binary") << QByteArray("\0\1\2\xFF", 4)
                                << QByteArray("line 1: '\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
                                              "\xEF\xBF\xBD'");
        QTest::newRow("long") << QByteArray(1000000, '1') << QByteArray("line 1: '1111");
    }

    void whatIsNoSymbolCodeIsSaidWithItsLine()
    {
        QFETCH(QByteArray, input);
        QFETCH(QByteArray, part);
        const Ended ended = run({"symbols", "-"}, input);
        verifyOneLine(ended, 1, part.constData());
        QVERIFY(ended.err.size() < 200);
    }

    void aMessageGivesTheTerminalNoOrders()
    {
        for (const Ended& ended :
             {run({"symbols", "-"}, "\x1B[31mred"), run({"decode", "\x1B[31m\x7F.wav"}),
              run({"\x1B]0;x\x07"}), run({"decode", "--\x1B[2J", "x"})}) {
            QVERIFY(ended.status != 0);
            for (const char c : ended.err.chopped(1))
                QVERIFY2(static_cast<unsigned char>(c) >= ' ' && c != '\x7F',
                         ended.err.constData());
        }
    }

    void whatIsNoSymbolCodeIsSaid_data()
    {
        QTest::addColumn<QByteArray>("word");
        for (const char* word : {"-1", "256", "abc", "4294967297"})
            QTest::newRow(word) << QByteArray(word);
    }
    void whatIsNoSymbolCodeIsSaid()
    {
        QFETCH(QByteArray, word);
        const Ended ended = run({"symbols", "-"}, "0 3\n255 " + word + " 0 3");
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.err,
                 "morsehost: standard input: line 2: '" + word + "' is no symbol code\n");
        QVERIFY(ended.out.startsWith("E"));
    }
    void filesThatCannotBeReadAreSaidInTheSameWords_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("decode") << QStringList{"decode"};
        QTest::newRow("inspect") << QStringList{"inspect", "-o", "picture.svg"};
        QTest::newRow("band") << QStringList{"band"};
        QTest::newRow("band of I/Q") << QStringList{"band", "--iq"};
        QTest::newRow("symbols") << QStringList{"symbols"};
        QTest::newRow("decoders") << QStringList{"decoders", "--decoders"};
        QTest::newRow("station") << QStringList{"station"};
    }
    void filesThatCannotBeReadAreSaidInTheSameWords()
    {
        QFETCH(QStringList, command);
        QTemporaryDir dir;
        const auto said = [](const QString& path, const char* why) {
            return "morsehost: " + path.toUtf8() + ": " + why + '\n';
        };
        const Ended folder = run(command + QStringList{dir.path()});
        QCOMPARE(folder.err, said(dir.path(), "is a folder"));
        QCOMPARE(folder.status, 1);
        const QString missing = dir.filePath("x");
        const Ended none = run(command + QStringList{missing});
        QCOMPARE(none.err, said(missing, "No such file or directory"));
        QCOMPARE(none.status, 1);
    }

    void errorMarksAreEvents()
    {
        const Ended ended = run({"symbols", "--json", "-"}, "0 64 65 66 3");
        for (const char* mark : {"dot too short", "dash too long", "pause too short"})
            QVERIFY(ended.out.contains(QByteArray("\"mark\":\"") + mark + '"'));
    }

    void tenMillionRandomCodesPass()
    {
        QByteArray codes;
        codes.reserve(40000000);
        quint32 seed = 1;
        for (int i = 0; i < 10000000; ++i) {
            seed = seed * 1664525U + 1013904223U;
            codes += QByteArray::number((seed >> 16) % 70);
            codes += ' ';
        }
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {"symbols", "-"});
        process.write(codes);
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(process.readAllStandardOutput().size() > 100000);
        QCOMPARE(process.readAllStandardError(), QByteArray());
    }

    // How it ends

    void aClosedPipeEndsItQuietly()
    {
        QTemporaryDir dir;
        const QString codes =
            writeFile(dir.filePath("codes"), QByteArray("0 3 1 3 0 1 3 1 0 3\n").repeated(200000));
        QProcess shell;
        shell.start(QStringLiteral("bash"),
                    {"-c", QStringLiteral(MORSEHOST_PATH " symbols ") + codes +
                               " | head -c 3; echo \" ${PIPESTATUS[0]}\""});
        const Ended ended = end(shell);
        QCOMPARE(ended.out, QByteArray("ETA 0\n"));
        QCOMPARE(ended.err, QByteArray());
    }

    void aFullOutputIsSaid()
    {
        QProcess process;
        process.setStandardOutputFile(QStringLiteral("/dev/full"));
        process.start(QStringLiteral(MORSEHOST_PATH), {"symbols", "-"});
        process.write("0 3");
        process.closeWriteChannel();
        verifyOneLine(end(process), 1, "standard output: No space left");
    }

    void aSignalLeavesCompleteFilesAndASavedDocument_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void aSignalLeavesCompleteFilesAndASavedDocument()
    {
        QFETCH(int, number);
        QTemporaryDir dir;
        QProcess process;
        QByteArray out = decodeFromAnOpenPipe(process, {"decode", "--save", dir.path(), "-"});
        QVERIFY2(out.contains("PARIS PARIS"), out.constData());
        ::kill(static_cast<pid_t>(process.processId()), number);
        const Ended ended = end(process);
        QCOMPARE(ended.status, 0);
        out += ended.out;
        const QDir saved(dir.path());
        const QString text = saved.filePath(saved.entryList({"*__International.txt"}).value(0));
        // The signal may have cut a mark, which only the file says.
        const QByteArray received = contentOf(text).replace("[DOT_TOO_SHORT]", "");
        QCOMPARE(received.simplified(), out.simplified());
        const QStringList documents = saved.entryList({"*.xml"});
        QCOMPARE(documents.size(), 1);
        QCOMPARE(schemaErrors({saved.filePath(documents.first())}), QString());
        QVERIFY(contentOf(saved.filePath(documents.first())).contains(">P<"));
    }

    void aSignalEndsAnIdlePipe()
    {
        QTemporaryDir dir;
        QProcess process;
        const QByteArray out = decodeFromAnOpenPipe(process, {"decode", "--save", dir.path(), "-"});
        QVERIFY2(out.contains("PARIS PARIS"), out.constData());
        QTRY_VERIFY_WITH_TIMEOUT(testsupport::isWaiting(process), testsupport::HANGS_ms);
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        QVERIFY(process.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(QDir(dir.path()).entryList({"*.xml"}).size(), 1);
    }

    void aSignalEndsAFilterThatWaits_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::newRow("translate") << QStringList{"translate", "--map", "Greek"};
        QTest::newRow("map") << QStringList{"map", "--decoder", "Baudot"};
        QTest::newRow("symbols") << QStringList{"symbols", "-"};
    }

    void aSignalEndsAFilterThatWaits()
    {
        QFETCH(QStringList, words);
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), words);
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(testsupport::isWaiting(process), testsupport::HANGS_ms);
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        QVERIFY(process.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    }

    void aClosedStandardInputIsAnEmptyOne()
    {
        QProcess shell;
        shell.start(QStringLiteral("bash"),
                    {"-c", QStringLiteral("%1 symbols - <&-; %1 translate --map Greek <&-; echo $?")
                               .arg(QStringLiteral(MORSEHOST_PATH))});
        QCOMPARE(end(shell).out, QByteArray("0\n"));
    }

    void aListThatCannotBeWrittenIsSaid()
    {
        QProcess process;
        process.setStandardOutputFile(QStringLiteral("/dev/full"));
        process.start(QStringLiteral(MORSEHOST_PATH), {"alphabets"});
        verifyOneLine(end(process), 1, "standard output: ");
    }

    void aSignalEndsItWhileNobodyReadsItsOutput()
    {
        QTemporaryDir dir;
        const QString codes =
            writeFile(dir.filePath("codes"), QByteArray("0 3 1 3 0 1 3 1 0 3\n").repeated(2000));
        // Nobody reads, and the pipe has room for some characters only.
        const QString path = dir.filePath("pipe");
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        const int reader = open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK);
        const QByteArray filling(65000, '\0');
        QCOMPARE(write(reader, filling.constData(), std::size_t(filling.size())),
                 ssize_t(filling.size()));
        QProcess process;
        process.setStandardOutputFile(path);
        process.start(QStringLiteral(MORSEHOST_PATH),
                      {"symbols", "--save", dir.filePath("saved"), codes});
        QTRY_VERIFY_WITH_TIMEOUT(testsupport::isWaiting(process), testsupport::HANGS_ms);
        process.terminate();
        const Ended ended = end(process);
        close(reader);
        QCOMPARE(ended.status, 0);
        QCOMPARE(QDir(dir.filePath("saved")).entryList({"*.xml"}).size(), 1);
    }

    void savingGoesOnWhenTheScreenStops_data()
    {
        QTest::addColumn<QString>("screen");
        QTest::addColumn<QByteArray>("status");
        QTest::newRow("a reader that leaves") << "| head -c 1 >%1/shown" << QByteArray("0");
        QTest::newRow("a full disk") << ">/dev/full" << QByteArray("1");
    }

    void savingGoesOnWhenTheScreenStops()
    {
        QFETCH(QString, screen);
        QFETCH(QByteArray, status);
        QTemporaryDir dir;
        const QString codes =
            writeFile(dir.filePath("codes"), QByteArray("0 3 1 3\n").repeated(5000));
        QProcess shell;
        shell.start(
            QStringLiteral("bash"),
            {"-c",
             QStringLiteral(MORSEHOST_PATH " symbols --save %1/saved %1/codes ").arg(dir.path()) +
                 screen.replace("%1", dir.path()) + "; echo ${PIPESTATUS[0]}"});
        QCOMPARE(end(shell).out.simplified(), status);
        const QDir saved(dir.filePath("saved"));
        QCOMPARE(contentOf(saved.filePath(saved.entryList({"*__International.txt"}).value(0)))
                     .count('T'),
                 5000);
    }

    // Only a file that is really written shows that the disk is full.
    void aFullDiskIsSaidAtTheStart()
    {
        QTemporaryDir dir;
        QProcess shell;
        shell.start(QStringLiteral("bash"),
                    {"-c", QStringLiteral("ulimit -f 0; echo 0 3 | %1 symbols --save %2/saved -")
                               .arg(QStringLiteral(MORSEHOST_PATH), dir.path())});
        const Ended ended = end(shell);
        verifyOneLine(ended, 1, "/saved: no file can be written there: ");
        QCOMPARE(ended.out, QByteArray());
    }

    void aDiskThatFillsUpIsSaid()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("codes"), QByteArray("0 0 0 3\n").repeated(2000));
        QProcess shell;
        shell.start(QStringLiteral("bash"),
                    {"-c", QStringLiteral("ulimit -f 1; %1 symbols --save %2/saved %2/codes")
                               .arg(QStringLiteral(MORSEHOST_PATH), dir.path())});
        verifyLossesAreSaid(end(shell));
    }

    void aFolderThatVanishesIsSaid()
    {
        QTemporaryDir dir;
        const QByteArray codes = QByteArray("0 0 0 3\n").repeated(2000);
        const QDir saved(dir.filePath("saved"));
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {"symbols", "--save", saved.path(), "-"});
        process.write(codes);
        const auto isSaving = [&saved] {
            const QFileInfoList files = QDir(saved.path()).entryInfoList({"*.txt"});
            return std::any_of(files.begin(), files.end(),
                               [](const QFileInfo& file) { return file.size() > 0; });
        };
        QTRY_VERIFY_WITH_TIMEOUT(isSaving(), testsupport::HANGS_ms);
        const QString gone = dir.filePath("gone");
        QVERIFY(QDir().rename(saved.path(), gone));
        QVERIFY(QDir(gone).removeRecursively());
        process.write(codes);
        process.closeWriteChannel();
        verifyLossesAreSaid(end(process));
    }

    // A disk that is full within a letter of two bytes has not taken it.
    void halfALetterIsNotSaved()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("codes"), QByteArray("0 0 0 3 ").repeated(1000));
        const QChar SIGMA(0x03A3);
        const auto saved = [&dir](const QString& limit, QByteArray& err) {
            const QString folder = dir.filePath("saved" + limit);
            QProcess shell;
            shell.start(
                QStringLiteral("bash"),
                {"-c",
                 QStringLiteral("ulimit -f %1; %2 symbols --alphabet Greek --save %3 %4")
                     .arg(limit, QStringLiteral(MORSEHOST_PATH), folder, dir.filePath("codes"))});
            err = end(shell).err;
            const QDir files(folder);
            return contentOf(files.filePath(files.entryList({"*__Greek.txt"}).value(0)));
        };
        QByteArray err;
        const QString all = QString::fromUtf8(saved("unlimited", err));
        QCOMPARE(err, QByteArray());
        const QByteArray cut = saved("1", err);
        QCOMPARE(cut.size(), 1024);
        const QString kept = QString::fromUtf8(cut.left(1023)); // five line feeds among it
        QVERIFY(all.startsWith(kept));
        QVERIFY(!all.startsWith(QString::fromUtf8(cut)));
        const QByteArray lost =
            QByteArray::number(all.count(SIGMA) - kept.count(SIGMA)) + " characters";
        QVERIFY2(err.contains(", " + lost + ", "), err.constData());
    }

    void whatIsMovedAwayWhileItRunsWasSaved()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("archive"));
        const QDir saved(dir.filePath("saved"));
        std::vector<float> samples = keyed("PARIS PARIS");
        append(samples, std::vector<float>(static_cast<std::size_t>(30 * RATE_HZ)));
        append(samples, keyed("DE DE DE"));
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), {"decode", "--save", saved.path(), "-"});
        process.write(raw(samples));
        // The second transmission is heard, so the document of the first is done with.
        QByteArray out;
        while (!out.contains("DE DE") && process.waitForReadyRead(testsupport::HANGS_ms))
            out += process.readAllStandardOutput();
        const QStringList files = saved.entryList(QDir::Files);
        QCOMPARE(files.size(), 3);
        for (const QString& name : files)
            QVERIFY(QFile::rename(saved.filePath(name), dir.filePath("archive/" + name)));
        process.write(raw(keyed("N0CALL")));
        process.closeWriteChannel();
        const Ended ended = end(process);
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const QDir archive(dir.filePath("archive"));
        QVERIFY(contentOf(archive.filePath(archive.entryList({"*__International.txt"}).value(0)))
                    .contains("N0CALL"));
        QCOMPARE(saved.entryList({"*.xml"}).size(), 1);
    }

    void progressIsShownOnTerminalsOnly()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, keyed("PARIS"), RATE_HZ);
        QCOMPARE(run({"decode", path}).err, QByteArray());
        // script(1) lends it a terminal, for standard error alone here.
        QProcess terminal;
        terminal.start(QStringLiteral("script"), {"-qec",
                                                  QStringLiteral(MORSEHOST_PATH) + " decode " +
                                                      path + " >" + dir.filePath("out"),
                                                  "/dev/null"});
        const Ended ended = end(terminal);
        QVERIFY2(ended.out.contains("\r100 %\r\033[K"), ended.out.constData());
        QCOMPARE(contentOf(dir.filePath("out")).simplified(), QByteArray("PARIS"));
    }
};

QTEST_GUILESS_MAIN(tst_Morsehost)
#include "tst_morsehost.moc"
