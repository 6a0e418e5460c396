// SPDX-License-Identifier: MIT
// Recordings keyed by a generator that is none of ours: short ones kept with their codes and text,
// long ones made while the test runs.
#include "support/codelist.h"
#include "support/keyer.h"
#include "support/soundfile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

using namespace testsupport;

namespace {

const char* const LONG_TEXT =
    "the old harbour master walked along the quay every morning before the boats came in. he "
    "counted the masts, looked at the sky and wrote a line in his book. on some days the wind had "
    "turned to the north and the fishing was poor. on other days five or six boats came home with "
    "more than they could sell, and the gulls followed them for miles. nobody knew why he kept the "
    "book. when he died in 1987 his daughter found forty volumes of it, each with the weather, the "
    "names of the boats and the hour at which they passed the light. what was the sea like on any "
    "day between 1931 and then? the books know.";

#ifdef __SANITIZE_ADDRESS__
// The shortest signal runs through the same code; the rate of errors is checked in an ordinary
// build.
constexpr int SPEEDS_wpm[] = {40};
#else
constexpr int SPEEDS_wpm[] = {12, 20, 30, 40};
#endif

QStringList lines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

float peak(const std::vector<float>& samples)
{
    float result = 0.0F;
    for (const float sample : samples)
        result = std::max(result, std::fabs(sample));
    return result;
}

} // namespace

class tst_Recordings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aRecordingGivesItsCodesAndText_data()
    {
        QTest::addColumn<QString>("stem");
        const QDir directory(QStringLiteral(TEST_DATA_DIR "/recordings"));
        const QStringList files = directory.entryList({QStringLiteral("*.flac")});
        QVERIFY(!files.isEmpty());
        for (const QString& file : files)
            QTest::newRow(qPrintable(file)) << directory.filePath(file.chopped(5));
    }
    void aRecordingGivesItsCodesAndText()
    {
        QFETCH(QString, stem);
        const SoundFile file = readSoundFile((stem + QStringLiteral(".flac")).toStdString());
        QVERIFY(!file.samples.empty());
        const CodeList list = decodeAll(file.samples, file.rate_Hz);
        const QStringList codes = lines(stem + QStringLiteral(".codes"));
        const QStringList texts = lines(stem + QStringLiteral(".txt"));
        QCOMPARE(int(list.transmissions.size()), codes.size());
        QCOMPARE(codes.size(), texts.size());
        for (int i = 0; i < codes.size(); ++i) {
            const Transmission& transmission = list.transmissions[static_cast<std::size_t>(i)];
            std::vector<int> heard = transmission.codes;
            if (!heard.empty() && heard.back() == 4) // how long the silence was heard
                heard.pop_back();
            QStringList numbers;
            for (const int code : heard)
                numbers << QString::number(code);
            QCOMPARE(numbers.join(QLatin1Char(' ')), codes[i]);
            QCOMPARE(QString::fromStdString(asReceived(textOfCodes(heard))), texts[i]);
            QVERIFY(transmission.start_us < transmission.stop_us);
        }
    }

    void ebook2cwIsReadToWithinOneCharacter_data()
    {
        QTest::addColumn<int>("speed_wpm");
        QTest::addColumn<bool>("noisy");
        for (const int speed : SPEEDS_wpm) {
            QTest::newRow(qPrintable(QStringLiteral("%1 wpm, clean").arg(speed))) << speed << false;
            QTest::newRow(qPrintable(QStringLiteral("%1 wpm, +10 dB").arg(speed))) << speed << true;
        }
    }
    void ebook2cwIsReadToWithinOneCharacter()
    {
        QFETCH(int, speed_wpm);
        QFETCH(bool, noisy);
        QTemporaryDir directory;
        QProcess process;
        process.setWorkingDirectory(directory.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), directory.path()); // it writes settings there
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral("ebook2cw"),
                      QStringLiteral("-p -O -q 1 -s 8000 -c - -o keyed -w %1")
                          .arg(speed_wpm)
                          .split(QLatin1Char(' ')));
        QVERIFY2(process.waitForStarted(), "ebook2cw is missing: run scripts/setup.sh");
        process.write(LONG_TEXT);
        process.write("\n"); // it drops an unfinished line
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());
        SoundFile file =
            readSoundFile(directory.filePath(QStringLiteral("keyed.ogg")).toStdString());
        QVERIFY(!file.samples.empty());
        if (noisy)
            addNoise(file.samples, file.rate_Hz, static_cast<double>(peak(file.samples)), 10.0,
                     "ebook2cw" + std::to_string(speed_wpm));
        QVERIFY(asReceived(LONG_TEXT).size() > 500);
        const std::string text = decodeAll(file.samples, file.rate_Hz).text();
        const double rate = characterErrorRate(LONG_TEXT, text);
        QVERIFY2(rate <= 0.002, (std::to_string(rate) + ": " + text).c_str());
    }
};

QTEST_APPLESS_MAIN(tst_Recordings)
#include "tst_recordings.moc"
