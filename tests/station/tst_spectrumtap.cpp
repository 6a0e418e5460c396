// SPDX-License-Identifier: MIT
// Rows of a waterfall from the bytes that a receiver sends.
#include "signal/numbers.h"
#include "station/service/recordingtap.h"
#include "station/service/spectrumtap.h"

#include <QtTest>

#include <cmath>

using morsehost::SampleFormat;
using morsehost::SpectrumTap;

namespace {

using demodulator::PI;
constexpr int COUNT = 8192;

template <typename Word>
void append(QByteArray& bytes, Word word)
{
    bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
}

void appendAs(QByteArray& bytes, SampleFormat::Word word, double value)
{
    switch (word) {
    case SampleFormat::Word::S16:
        append(bytes, qint16(std::lround(32767 * value)));
        break;
    case SampleFormat::Word::F32:
        append(bytes, float(value));
        break;
    case SampleFormat::Word::U8:
        append(bytes, quint8(std::lround(127.5 + 127 * value)));
        break;
    case SampleFormat::Word::S8:
        append(bytes, qint8(std::lround(127 * value)));
        break;
    }
}

QByteArray toneOf(const SampleFormat& format, double tone_Hz)
{
    QByteArray bytes;
    for (int n = 0; n < COUNT; ++n) {
        const double phase = 2.0 * PI * tone_Hz * n / format.rate_Hz;
        appendAs(bytes, format.word, 0.9 * std::cos(phase));
        if (format.isComplex)
            appendAs(bytes, format.word, 0.9 * std::sin(phase));
    }
    return bytes;
}

} // namespace

class tst_SpectrumTap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aToneStandsWhereItIs_data()
    {
        QTest::addColumn<int>("word");
        QTest::addColumn<bool>("isComplex");
        QTest::addColumn<double>("tone_Hz");
        for (const auto& [name, word] :
             {std::pair("s16", SampleFormat::Word::S16), std::pair("f32", SampleFormat::Word::F32),
              std::pair("u8", SampleFormat::Word::U8), std::pair("s8", SampleFormat::Word::S8)}) {
            QTest::addRow("%s", name) << int(word) << false << 650.0;
            QTest::addRow("%s, I/Q", name) << int(word) << true << -1500.0;
        }
    }

    void aToneStandsWhereItIs()
    {
        QFETCH(int, word);
        QFETCH(bool, isComplex);
        QFETCH(double, tone_Hz);
        SampleFormat format;
        format.word = SampleFormat::Word(word);
        format.isComplex = isComplex;
        format.center_Hz = isComplex ? 7025000 : 0;
        SpectrumTap tap(format);
        // In pieces that cut samples.
        std::vector<QJsonObject> rows;
        const QByteArray bytes = toneOf(format, tone_Hz);
        for (int begin = 0; begin < bytes.size(); begin += 1001) {
            for (const QJsonObject& row : tap.hear(bytes.mid(begin, 1001)))
                rows.push_back(row);
        }
        QCOMPARE(rows.size(), std::size_t(COUNT / 2048));
        const QByteArray levels =
            QByteArray::fromBase64(rows[0].value("levels").toString().toLatin1());
        QCOMPARE(levels.size(), isComplex ? 2048 : 1024);
        const auto strongest = std::max_element(levels.begin(), levels.end(),
                                                [](char a, char b) { return uchar(a) < uchar(b); });
        const double low_Hz = rows[0].value("low_Hz").toDouble();
        const double high_Hz = rows[0].value("high_Hz").toDouble();
        const double found_Hz =
            low_Hz + (high_Hz - low_Hz) * double(strongest - levels.begin()) / levels.size();
        QVERIFY(std::abs(found_Hz - format.center_Hz - tone_Hz) < 4.0);
        // 0.9 of full scale is -0.9 dB; between two lines up to 1.4 dB are lost.
        const double level_dB = uchar(*strongest) / 2.0 - 127.0;
        QVERIFY2(level_dB > -3.0 && level_dB < 0.0, qPrintable(QString::number(level_dB)));
    }

    void aRecordingSoundsAtItsOwnSpeed()
    {
        morsehost::ReceiverSettings settings;
        settings.file = PROJECT_DATA_DIR "/samples/evening.flac"; // 8000 samples a second
        morsehost::RecordingTap tap(settings);
        std::size_t rows = 0;
        for (int quarter = 0; quarter < 8; ++quarter)
            rows += tap.advance(0.25).size();
        QCOMPARE(rows, std::size_t(2 * 8000 / 2048));
        QVERIFY(!tap.advance(600).empty());
        QVERIFY(tap.advance(1).empty()); // it is over
        settings.file = "/dev/zero";
        QVERIFY(morsehost::RecordingTap(settings).advance(1).empty());
    }

    void whatIsSkippedCutsNoSample()
    {
        SampleFormat format;
        const QByteArray bytes = toneOf(format, 650.0);
        SpectrumTap whole(format);
        SpectrumTap part(format);
        const auto rows = whole.hear(bytes.mid(2 * 2047));
        part.skip(bytes.left(1001));
        part.skip(bytes.mid(1001, 2 * 2048 - 1001 - 1));
        QCOMPARE(part.hear(bytes.mid(2 * 2048 - 1)), rows);
    }

    void wideInputGivesFewRows()
    {
        SampleFormat format;
        format.rate_Hz = 192000;
        format.isComplex = true;
        SpectrumTap tap(format);
        std::size_t rows = 0;
        for (int second = 0; second < 3; ++second)
            rows += tap.hear(QByteArray(192000 * 4, '\0')).size();
        QVERIFY2(rows >= 11 && rows <= 13, qPrintable(QString::number(rows)));
    }

    void whatIsNoNumberIsSilence()
    {
        SampleFormat format;
        format.word = SampleFormat::Word::F32;
        SpectrumTap tap(format);
        const std::vector<QJsonObject> rows = tap.hear(QByteArray(2048 * 4, '\xff'));
        QCOMPARE(rows.size(), std::size_t(1));
        QCOMPARE(QByteArray::fromBase64(rows[0].value("levels").toString().toLatin1()),
                 QByteArray(1024, '\0'));
    }
};

QTEST_GUILESS_MAIN(tst_SpectrumTap)
#include "tst_spectrumtap.moc"
