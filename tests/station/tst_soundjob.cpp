// SPDX-License-Identifier: MIT
#include "station/soundjob.h"

#include "station/decoders.h"
#include "support/codelist.h"
#include "support/soundfile.h"

#include <QtTest>
#include <vector>

using namespace morsehost;

namespace {

const QString MORSE = QStringLiteral(PROJECT_DATA_DIR "/samples/evening.flac");
const QString NO_FILE = QStringLiteral("/nonexistent/none.wav");

SoundRequest requestOf(const QString& path)
{
    SoundRequest request;
    request.name = path;
    return request;
}

class Watching : public demodulator::Observer
{
public:
    void sound(const float* /*samples*/, std::size_t count, double /*rate_Hz*/) override
    {
        samples += count;
    }
    void step(const demodulator::FollowedStep& /*step*/) override { ++steps; }
    void mark(std::int64_t /*begin_us*/, std::int64_t /*end_us*/, double /*unit_us*/) override
    {
        ++marks;
    }

    std::size_t samples = 0;
    std::size_t steps = 0;
    std::size_t marks = 0;
};

// What a demodulator hears that is asked itself.
testsupport::CodeList heardOf(const QString& path, demodulator::Observer* observer = nullptr)
{
    const testsupport::SoundFile file = testsupport::readSoundFile(path.toStdString());
    testsupport::CodeList list;
    demodulator::Settings settings;
    settings.sampleRate_Hz = file.rate_Hz;
    demodulator::Demodulator demodulator(settings, list, observer);
    demodulator.push(file.samples.data(), file.samples.size());
    demodulator.finish();
    return list;
}

// Everything to its end.
void fetch(SoundJob& job, SoundBell& bell, const SoundSinks& sinks)
{
    while (!job.isOver()) {
        if (job.deliver(sinks))
            continue;
        std::unique_lock<std::mutex> lock(bell.mutex);
        bell.rung.wait_for(lock, std::chrono::milliseconds(100));
    }
}

} // namespace

class tst_SoundJob : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatAJobHearsIsDeliveredWholeAndInOrder()
    {
        const testsupport::CodeList expected = heardOf(MORSE);
        QVERIFY(expected.codes().size() > 100);
        SoundBell bell;
        testsupport::CodeList lists[3];
        {
            // At the same time, one fetched after the other.
            std::vector<std::unique_ptr<SoundJob>> jobs;
            for (std::size_t i = 0; i < std::size(lists); ++i)
                jobs.push_back(std::make_unique<SoundJob>(requestOf(MORSE), bell));
            for (std::size_t i = 0; i < jobs.size(); ++i) {
                fetch(*jobs[i], bell, {&lists[i], nullptr, nullptr});
                QCOMPARE(jobs[i]->error(), QString());
                QVERIFY(jobs[i]->isDone());
                QCOMPARE(*jobs[i]->progress(), 1.0);
            }
        }
        for (const testsupport::CodeList& list : lists)
            QVERIFY(list.transmissions == expected.transmissions);
    }
    // It waits for room, and gets it whenever something is fetched.
    void anObservedJobLosesNothingWhileItWaits()
    {
        SoundBell bell;
        testsupport::CodeList list;
        Watching watching;
        SoundJob job(requestOf(MORSE), bell, true);
        fetch(job, bell, {&list, &watching, nullptr});
        Watching expected;
        QVERIFY(list.transmissions == heardOf(MORSE, &expected).transmissions);
        QVERIFY(watching.samples > 100000);
        QCOMPARE(watching.samples, expected.samples);
        QCOMPARE(watching.steps, expected.steps);
        QCOMPARE(watching.marks, expected.marks);
    }
    void aJobThatNobodyFetchesEndsWhenItIsDestroyed()
    {
        SoundBell bell;
        SoundJob job(requestOf(MORSE), bell, true);
        while (!job.facts()) {
            std::unique_lock<std::mutex> lock(bell.mutex);
            bell.rung.wait_for(lock, std::chrono::milliseconds(100));
        }
        QCOMPARE(job.facts()->error, QString());
        QCOMPARE(job.facts()->decoder, QString::fromLatin1(MORSE_DECODER));
        QVERIFY(!job.isOver());
    }
    void whatCannotBeHeardIsSaid()
    {
        SoundBell bell;
        testsupport::CodeList list;
        SoundJob job(requestOf(NO_FILE), bell);
        fetch(job, bell, {&list, nullptr, nullptr});
        QVERIFY(job.facts() != nullptr);
        QVERIFY(!job.facts()->error.isEmpty());
        QCOMPARE(job.error(), job.facts()->error);
        QVERIFY(list.transmissions.empty());
        QVERIFY(!job.progress());
    }
};

QTEST_GUILESS_MAIN(tst_SoundJob)
#include "tst_soundjob.moc"
