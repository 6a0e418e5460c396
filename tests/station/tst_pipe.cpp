// SPDX-License-Identifier: MIT
// Sound and text through pipes: pieces of any size, readers that stand still.
#include "station/audio/samplesource.h"
#include "station/io/input.h"
#include "station/io/output.h"
#include "support/files.h"
#include "support/soundfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <random>
#include <sndfile.hh>
#include <thread>
#include <unistd.h>

using morsehost::OpenedSource;
using morsehost::openPipe;
using morsehost::openRecording;
using morsehost::Output;
using morsehost::WhenBusy;

namespace {

class Pipe
{
public:
    Pipe()
    {
        if (pipe(m_ends) != 0)
            qFatal("no pipe");
    }
    ~Pipe()
    {
        close(m_ends[0]);
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }
    void write(const QByteArray& bytes) const
    {
        QCOMPARE(::write(m_ends[1], bytes.constData(), static_cast<std::size_t>(bytes.size())),
                 static_cast<ssize_t>(bytes.size()));
    }
    void closeWriter()
    {
        if (m_ends[1] >= 0)
            close(m_ends[1]);
        m_ends[1] = -1;
    }

private:
    int m_ends[2] = {-1, -1};
};

std::vector<float> samplesIn(morsehost::SampleSource& source)
{
    std::vector<float> samples;
    float piece[64];
    while (const std::size_t count = source.read(piece, 64))
        samples.insert(samples.end(), piece, piece + count);
    return samples;
}

// Samples 0, 1, 2 and so on.
QByteArray ramp(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        bytes += static_cast<char>(i & 0xFF);
        bytes += static_cast<char>(i >> 8);
    }
    return bytes;
}

} // namespace

class tst_Pipe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPipeThatIsNamedIsNoFile()
    {
        const Pipe pipe;
        const OpenedSource opened =
            openRecording(QStringLiteral("/dev/fd/%1").arg(pipe.reader()), std::nullopt);
        QVERIFY(!opened.source);
        QCOMPARE(opened.error,
                 QStringLiteral("is a pipe; a file is needed, or '-' for standard input"));
    }
    void samplesMayBeCutInTwo_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {1, 2, 3, 5, 7, 100})
            QTest::addRow("pieces of %d bytes", size) << size;
    }

    // The reader gets each piece by itself.
    void samplesMayBeCutInTwo()
    {
        QFETCH(int, size);
        constexpr int COUNT = 300;
        const QByteArray bytes = ramp(COUNT);
        Pipe pipe;
        pipe.write(bytes.left(13)); // what the kind is known by, and half a sample
        const OpenedSource opened = openPipe(pipe.reader(), std::nullopt, std::nullopt);
        QVERIFY2(opened.source, qPrintable(opened.error));
        std::vector<float> samples;
        float piece[64];
        for (int at = 13; at < bytes.size(); at += size) {
            pipe.write(bytes.mid(at, size));
            if (size % 2 == 0 || (at - 13) / size % 2 == 0) {
                const std::size_t count = opened.source->read(piece, 64);
                samples.insert(samples.end(), piece, piece + count);
            }
        }
        pipe.closeWriter();
        const std::vector<float> rest = samplesIn(*opened.source);
        samples.insert(samples.end(), rest.begin(), rest.end());
        QCOMPARE(samples.size(), std::size_t(COUNT));
        for (int i = 0; i < COUNT; ++i)
            QCOMPARE(samples[static_cast<std::size_t>(i)], static_cast<float>(i) / 32768.0F);
        QCOMPARE(opened.source->error(), QString());
    }

    void halfASampleAtTheEndIsSaid()
    {
        Pipe pipe;
        pipe.write(ramp(20) + "x");
        pipe.closeWriter();
        const OpenedSource opened = openPipe(pipe.reader(), 12000, std::nullopt);
        QVERIFY(opened.source);
        QCOMPARE(opened.source->sampleRate_Hz(), 12000.0);
        QCOMPARE(samplesIn(*opened.source).size(), std::size_t(20));
        QVERIFY(opened.source->error().contains("in the middle of a sample"));
    }

    void lessThanAMarkIsSoundToo()
    {
        Pipe pipe;
        pipe.write(ramp(2));
        pipe.closeWriter();
        const OpenedSource opened = openPipe(pipe.reader(), std::nullopt, std::nullopt);
        QVERIFY(opened.source);
        QCOMPARE(samplesIn(*opened.source).size(), std::size_t(2));
    }

    void rawSamplesHaveOneChannel()
    {
        Pipe pipe;
        pipe.write(ramp(20));
        pipe.closeWriter();
        QVERIFY(!openPipe(pipe.reader(), std::nullopt, 2).source);
    }

    void whatBeginsLikeARecordingAndIsNoneIsRefused_data()
    {
        QTest::addColumn<QByteArray>("mark");
        for (const char* mark : {"RIFF", "RF64", "FORM", "OggS", "fLaC", "ID3", ".snd", "caff",
                                 "riff\x2E\x91\xCF\x11", "\x1A\x45\xDF\xA3"})
            QTest::newRow(mark) << QByteArray(mark);
    }

    void whatBeginsLikeARecordingAndIsNoneIsRefused()
    {
        QFETCH(QByteArray, mark);
        Pipe pipe;
        pipe.write(mark + ramp(1000));
        pipe.closeWriter();
        const OpenedSource opened = openPipe(pipe.reader(), std::nullopt, std::nullopt);
        QVERIFY(!opened.source);
        QVERIFY2(opened.error.startsWith("is not a recording"), qPrintable(opened.error));
    }

    // Of more bytes than are remembered.
    void theEndOfAnOggStreamIsMissed_data()
    {
        QTest::addColumn<int>("missing");
        QTest::addColumn<QString>("error");
        QTest::newRow("all is there") << 0 << QString();
        QTest::newRow("the last byte is missing") << 1 << "is truncated: its last page is missing";
        QTest::newRow("half of it is missing")
            << 150000 << "is truncated: its last page is missing";
    }

    void theEndOfAnOggStreamIsMissed()
    {
        QFETCH(int, missing);
        QFETCH(QString, error);
        QTemporaryDir dir;
        const QString path = dir.filePath("x.ogg");
        constexpr int PIECES = 60;
        constexpr int PIECE = 48000;
        {
            std::mt19937 random(1);
            SndfileHandle file(QFile::encodeName(path).constData(), SFM_WRITE,
                               SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1, PIECE);
            for (int i = 0; i < PIECES; ++i) {
                std::vector<float> noise(PIECE);
                for (float& sample : noise)
                    sample = static_cast<float>(static_cast<int>(random() % 2001) - 1000) / 4000.0F;
                file.write(noise.data(), PIECE);
            }
        }
        const QByteArray bytes = contentOf(path);
        QVERIFY(bytes.size() > 2 * 150000);

        QFile stream(writeFile(path, bytes.chopped(missing)));
        QVERIFY(stream.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        const OpenedSource opened = openPipe(stream.handle(), std::nullopt, std::nullopt);
        QVERIFY2(opened.source, qPrintable(opened.error));
        QVERIFY(samplesIn(*opened.source).size() > std::size_t(PIECES) * PIECE / 3);
        QCOMPARE(opened.source->error(), error);
    }

    void skippingReturnsHowFarItCame_data()
    {
        QTest::addColumn<bool>("isFile");
        QTest::newRow("a pipe") << false;
        QTest::newRow("a file") << true;
    }

    void skippingReturnsHowFarItCame()
    {
        QFETCH(bool, isFile);
        QTemporaryDir dir;
        const QString path = dir.filePath("x.wav");
        const std::vector<float> sound(1000, 0.5F);
        testsupport::writeSoundFile(path.toStdString(), 8000.0, sound);
        Pipe pipe;
        pipe.write(contentOf(path));
        pipe.closeWriter();
        const OpenedSource opened = isFile ? openRecording(path, std::nullopt)
                                           : openPipe(pipe.reader(), std::nullopt, std::nullopt);
        QVERIFY2(opened.source, qPrintable(opened.error));
        QCOMPARE(opened.source->skip(300), 300LL);
        QCOMPARE(opened.source->skip(300), 300LL);
        QCOMPARE(opened.source->skip(600), 400LL);
        QCOMPARE(opened.source->skip(600), 0LL);
        QCOMPARE(samplesIn(*opened.source).size(), std::size_t(0));
        QCOMPARE(opened.source->error(), QString());
    }

    // Who saves goes on, and the reader gets all of it when it reads on.
    void outputIsKeptForAReaderThatStandsStill()
    {
        Pipe pipe;
        Output output(pipe.writer(), WhenBusy::Keep);
        const QByteArray piece(1000, 'a');
        constexpr int PIECES = 2000; // far more than a pipe holds
        for (int i = 0; i < PIECES; ++i)
            output.write(piece);
        QVERIFY(!output.hasFailed());
        long long got = 0;
        std::thread reader([&] {
            char buffer[65536];
            for (ssize_t count = 1; count > 0; got += count)
                count = ::read(pipe.reader(), buffer, sizeof buffer);
        });
        output.finish();
        pipe.closeWriter();
        reader.join();
        QCOMPARE(got, 1000LL * PIECES);
        QCOMPARE(output.error(), QString());
    }

    // Two readers of one pipe: what was there may be gone when it is read.
    void bytesThatAnotherReaderTookAreWaitedFor()
    {
        constexpr int COUNT = 20000;
        Pipe pipe;
        QVERIFY(fcntl(pipe.reader(), F_SETFL, O_NONBLOCK) == 0);
        std::size_t got[2] = {0, 0};
        QString errors[2];
        const auto readAll = [&](int which) {
            morsehost::Input input(pipe.reader());
            char byte = 0;
            while (const std::size_t count = input.read(&byte, 1))
                got[which] += count;
            errors[which] = input.error();
        };
        std::thread readers[] = {std::thread(readAll, 0), std::thread(readAll, 1)};
        for (int i = 0; i < COUNT; ++i)
            pipe.write("x");
        pipe.closeWriter();
        for (std::thread& reader : readers)
            reader.join();
        QCOMPARE(errors[0], QString());
        QCOMPARE(errors[1], QString());
        QCOMPARE(got[0] + got[1], std::size_t(COUNT));
    }

    void whatIsKeptIsBounded()
    {
        Pipe pipe;
        QVERIFY(fcntl(pipe.writer(), F_SETFL, O_NONBLOCK) == 0);
        Output output(pipe.writer(), WhenBusy::Keep);
        const QByteArray piece(1 << 20, 'a');
        for (int i = 0; i < 20; ++i)
            output.write(piece);
        QVERIFY(!output.hasFailed());
        std::thread reader([&] {
            char buffer[65536];
            while (::read(pipe.reader(), buffer, sizeof buffer) > 0) {
            }
        });
        output.finish();
        pipe.closeWriter();
        reader.join();
        QVERIFY(output.error().contains("too slow"));
    }
};

QTEST_APPLESS_MAIN(tst_Pipe)
#include "tst_pipe.moc"
