// SPDX-License-Identifier: MIT
// A picture that a page shows is what the program draws. scripts/renew-golden.sh renews it.
#include "reception/corpus.h"
#include "support/files.h"
#include "support/pngpixels.h"
#include "support/program.h"
#include "support/soundfile.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

// A machine whose arithmetic rounds in another way may be off by a tenth of a pixel, and by a shade
// where two are equally near.
constexpr double MOST_APART = 0.15;
constexpr double FEWEST_EQUAL_PIXELS = 0.98;

reception::Recording recordingOf(const std::string& condition, const std::string& kind,
                                 const std::string& seed)
{
    for (const reception::Condition& row : reception::conditions()) {
        if (row.name == condition)
            return reception::record(row, kind, seed);
    }
    qFatal("no such condition");
}

// A picture, taken apart.
struct Parts
{
    QStringList words; // between the numbers
    std::vector<double> numbers;
    std::vector<testsupport::PngPixels> images;
};

Parts partsOf(const QByteArray& svg)
{
    Parts parts;
    QString text = QString::fromUtf8(svg);
    const QRegularExpression image(QStringLiteral("base64,([^\"]*)"));
    for (auto match = image.globalMatch(text); match.hasNext();)
        parts.images.push_back(
            testsupport::pngPixels(QByteArray::fromBase64(match.next().captured(1).toLatin1())));
    text.remove(image);
    const QRegularExpression number(QStringLiteral("-?\\d+(\\.\\d+)?"));
    for (auto match = number.globalMatch(text); match.hasNext();)
        parts.numbers.push_back(match.next().captured().toDouble());
    parts.words = text.split(number);
    return parts;
}

// The difference between them; empty when there is none.
QString difference(const QByteArray& drawnSvg, const QByteArray& shownSvg)
{
    const Parts drawn = partsOf(drawnSvg);
    const Parts shown = partsOf(shownSvg);
    if (drawn.words != shown.words)
        return QStringLiteral("other words or pieces");
    for (std::size_t i = 0; i < shown.numbers.size(); ++i) {
        if (std::abs(drawn.numbers[i] - shown.numbers[i]) > MOST_APART)
            return QStringLiteral("%1 for %2 behind '%3'")
                .arg(drawn.numbers[i])
                .arg(shown.numbers[i])
                .arg(shown.words[static_cast<int>(i)]);
    }
    if (drawn.images.size() != shown.images.size())
        return QStringLiteral("another number of images");
    for (std::size_t i = 0; i < shown.images.size(); ++i) {
        const std::vector<int>& pixels = shown.images[i].colours;
        const std::vector<int>& others = drawn.images[i].colours;
        if (pixels.empty() || drawn.images[i].width != shown.images[i].width ||
            others.size() != pixels.size())
            return QStringLiteral("an image of another size");
        int equal = 0;
        for (std::size_t at = 0; at < pixels.size(); ++at)
            equal += others[at] == pixels[at] ? 1 : 0;
        if (equal < FEWEST_EQUAL_PIXELS * static_cast<double>(pixels.size()))
            return QStringLiteral("another image");
    }
    return QString();
}

} // namespace

class tst_Images : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theInspectedPassageIsDrawnAsThePageShowsIt()
    {
        QTemporaryDir dir;
        const QString sound = dir.filePath("weak.wav");
        const QString picture = dir.filePath("weak.svg");
        const reception::Recording recording = recordingOf("snr-3", "groups", "tune-1");
        QVERIFY(recording.sent.find("HCY KCRGJ KFDL9") != std::string::npos); // as the page says
        testsupport::writeSoundFile(sound.toStdString(), reception::RATE_Hz, recording.samples);
        const testsupport::Ended ended =
            testsupport::run({"inspect", sound, "--from", "196", "--length", "10", "-o", picture});
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const QByteArray shown = contentOf(QStringLiteral(PROJECT_DIR "/docs/images/inspect.svg"));
        QCOMPARE(difference(contentOf(picture), shown), QString());
    }

    void whatIsDrawnOtherwiseIsSeen_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("seen");
        const auto row = [](const char* name, const char* from, const char* to, const char* seen) {
            QTest::newRow(name) << QByteArray(from) << QByteArray(to) << QString(seen);
        };
        row("nothing", "", "", "");
        row("rounding", "y=\"44\"", "y=\"44.1\"", "");
        row("another place", "y=\"44\"", "y=\"45\"", "45 for 44 behind '\" y=\"'");
        row("another word", ">between words<", ">between word<", "other words or pieces");
        row("a piece more", "</svg>", "<rect/></svg>", "other words or pieces");
        row("no image", "base64,iVBOR", "base64,", "an image of another size");
        row("another palette of lines", "stroke:#222", "stroke:#333", "333 for 222");
    }
    void whatIsDrawnOtherwiseIsSeen()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, seen);
        const QByteArray shown = contentOf(QStringLiteral(PROJECT_DIR "/docs/images/inspect.svg"));
        QByteArray drawn = shown;
        QVERIFY(from.isEmpty() || drawn.contains(from));
        drawn.replace(from, to);
        const QString difference = ::difference(drawn, shown);
        QVERIFY2(seen.isEmpty() ? difference.isEmpty() : difference.startsWith(seen),
                 qPrintable(difference));
    }
};

QTEST_GUILESS_MAIN(tst_Images)
#include "tst_images.moc"
