// SPDX-License-Identifier: MIT
#include "station/soundjob.h"

#include "station/decoders.h"
#include "station/finddecoder.h"
#include "station/io/interrupt.h"

#include <QDateTime>

#include <utility>
#include <vector>

namespace morsehost {

namespace {

// Text appears with every piece, so a piece is a small part of a character.
constexpr std::size_t PIECE_SAMPLES = 512;

// Some hours of keying; with the sound itself, half a minute.
constexpr std::size_t MAX_EVENTS = std::size_t(1) << 18;
constexpr std::size_t MAX_OBSERVED_EVENTS = std::size_t(1) << 13;

} // namespace

class SoundJob::SymbolCollector : public demodulator::SymbolSink, public demodulator::Observer
{
public:
    explicit SymbolCollector(SoundJob& job)
        : m_job(job)
    {
    }

    void transmissionStarted(std::int64_t time_us) override
    {
        m_job.add([=](const SoundSinks& sinks) { sinks.morse->transmissionStarted(time_us); });
    }
    void symbol(int code, std::int64_t time_us) override
    {
        m_job.add([=](const SoundSinks& sinks) { sinks.morse->symbol(code, time_us); });
    }
    void transmissionStopped(std::int64_t time_us, const demodulator::SignalReport& report) override
    {
        m_job.add(
            [=](const SoundSinks& sinks) { sinks.morse->transmissionStopped(time_us, report); });
    }

    void sound(const float* samples, std::size_t count, double rate_Hz) override
    {
        m_job.add([piece = std::vector<float>(samples, samples + count),
                   rate_Hz](const SoundSinks& sinks) {
            sinks.observer->sound(piece.data(), piece.size(), rate_Hz);
        });
    }
    void step(const demodulator::FollowedStep& step) override
    {
        m_job.add([=](const SoundSinks& sinks) { sinks.observer->step(step); });
    }
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override
    {
        m_job.add(
            [=](const SoundSinks& sinks) { sinks.observer->mark(begin_us, end_us, unit_us); });
    }

private:
    SoundJob& m_job;
};

class SoundJob::TextCollector : public teleprinter::TextSink, public teleprinter::Observer
{
public:
    explicit TextCollector(SoundJob& job)
        : m_job(job)
    {
    }

    const bool& isHeard() const { return m_isHeard; }

    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override
    {
        m_isHeard = true;
        m_job.add([=](const SoundSinks& sinks) {
            sinks.teleprinter->transmissionStarted(line, time_us);
        });
    }
    void character(std::uint8_t character, std::int64_t time_us) override
    {
        m_job.add(
            [=](const SoundSinks& sinks) { sinks.teleprinter->character(character, time_us); });
    }
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override
    {
        m_job.add([=](const SoundSinks& sinks) {
            sinks.teleprinter->transmissionStopped(line, time_us);
        });
    }

    void sound(const float* samples, std::size_t count, double rate_Hz) override
    {
        m_job.add([piece = std::vector<float>(samples, samples + count),
                   rate_Hz](const SoundSinks& sinks) {
            sinks.teleprinterObserver->sound(piece.data(), piece.size(), rate_Hz);
        });
    }
    void word(const teleprinter::SeenWord& word) override
    {
        m_job.add([=](const SoundSinks& sinks) { sinks.teleprinterObserver->word(word); });
    }

private:
    SoundJob& m_job;
    bool m_isHeard = false;
};

SoundJob::SoundJob(SoundRequest request, SoundBell& bell, bool isObserved)
    : m_request(std::move(request))
    , m_bell(bell)
    , m_isObserved(isObserved)
    , m_thread([this] { run(); })
{
}

SoundJob::~SoundJob()
{
    {
        const std::lock_guard<std::mutex> lock(m_bell.mutex);
        m_isStopped = true;
    }
    m_bell.rung.notify_all();
    m_thread.join();
}

void SoundJob::run()
{
    OpenedSource opened;
    if (m_request.decoder == QLatin1String(DECODER_AS_FOUND)) {
        FoundDecoder found =
            findDecoder(m_request, [this] { return m_isStopped || isInterrupted(); });
        m_request.decoder = found.decoder;
        m_remark = found.remark;
        opened = std::move(found.opened);
    } else {
        opened = openSound(m_request);
    }
    if (opened.source)
        hear(*opened.source);
    else
        publish({opened.error, m_request.decoder, m_remark, m_request.demodulator, {}, 0});
    {
        const std::lock_guard<std::mutex> lock(m_bell.mutex);
        m_isDone = true;
        m_error = opened.source ? opened.source->error() : opened.error;
    }
    m_bell.rung.notify_all();
}

void SoundJob::hear(SampleSource& source)
{
    if (m_request.decoder == QLatin1String(MORSE_DECODER)) {
        SymbolCollector collector(*this);
        demodulator::Demodulator demodulator(m_request.demodulator, collector,
                                             m_isObserved ? &collector : nullptr);
        hearWith(demodulator, source);
        return;
    }
    if (const auto code = codeOfDecoder(m_request.decoder))
        m_request.teleprinter.known.codes = {*code};
    hearTeleprinter(source);
}

void SoundJob::hearTeleprinter(SampleSource& source)
{
    // What was set may be wrong. As long as nothing is heard with it, it is tried without.
    struct Receivers
    {
        teleprinter::Receiver receiver;
        const bool& isHeard;
        std::unique_ptr<LineFinder> finder;

        void push(const float* samples, std::size_t count)
        {
            receiver.push(samples, count);
            if (finder && !isHeard && !finder->line())
                finder->push(samples, count);
        }
        void finish()
        {
            receiver.finish();
            if (finder && !isHeard)
                finder->finish();
        }
    };
    const teleprinter::Known& known = m_request.teleprinter.known;
    const bool isSet =
        known.baud || known.shift_Hz || known.centre_Hz || known.reversed || known.parity;
    teleprinter::Settings without = m_request.teleprinter;
    without.known = {};
    TextCollector collector(*this);
    Receivers receivers = {{m_request.teleprinter, collector, m_isObserved ? &collector : nullptr},
                           collector.isHeard(),
                           isSet ? std::make_unique<LineFinder>(without) : nullptr};
    hearWith(receivers, source);
    if (!isSet || collector.isHeard() || m_isStopped || isInterrupted())
        return;
    const auto& line = receivers.finder->line();
    const std::lock_guard<std::mutex> lock(m_bell.mutex);
    m_closingRemark =
        line
            ? QStringLiteral("nothing was heard with these settings; there is: ") + described(*line)
            : QStringLiteral("nothing was heard with these settings, nor without them");
}

template <typename Receiver>
void SoundJob::hearWith(Receiver& receiver, SampleSource& source)
{
    const auto factsAt = [&](unsigned long long arrived_us) {
        return SoundFacts{
            {},        m_request.decoder, m_remark, m_request.demodulator, source.recorded_us(),
            arrived_us};
    };
    std::vector<float> samples(PIECE_SAMPLES);
    const std::optional<long long> all = source.frameCount();
    long long done = 0;
    bool isFirst = true;
    while (!m_isStopped && !isInterrupted()) {
        const std::size_t count = source.read(samples.data(), samples.size());
        if (std::exchange(isFirst, false))
            publish(factsAt(static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch()) *
                            1000));
        if (count == 0)
            break;
        receiver.push(samples.data(), count);
        done += static_cast<long long>(count);
        if (all)
            m_progress = static_cast<double>(done) / static_cast<double>(*all);
    }
    if (isFirst)
        publish(factsAt(0));
    receiver.finish();
}

void SoundJob::publish(const SoundFacts& facts)
{
    {
        const std::lock_guard<std::mutex> lock(m_bell.mutex);
        m_facts = facts;
    }
    m_bell.rung.notify_all();
}

void SoundJob::add(Event event)
{
    const std::size_t most = m_isObserved ? MAX_OBSERVED_EVENTS : MAX_EVENTS;
    {
        std::unique_lock<std::mutex> lock(m_bell.mutex);
        m_bell.rung.wait(lock, [&] { return m_events.size() < most || m_isStopped; });
        m_events.push_back(std::move(event));
    }
    m_bell.rung.notify_all();
}

const SoundFacts* SoundJob::facts() const
{
    const std::lock_guard<std::mutex> lock(m_bell.mutex);
    return m_facts ? &*m_facts : nullptr;
}

bool SoundJob::deliver(const SoundSinks& sinks)
{
    std::deque<Event> events;
    {
        const std::lock_guard<std::mutex> lock(m_bell.mutex);
        events.swap(m_events);
    }
    m_bell.rung.notify_all();
    for (const Event& event : events)
        event(sinks);
    return !events.empty();
}

bool SoundJob::isDone() const
{
    const std::lock_guard<std::mutex> lock(m_bell.mutex);
    return m_isDone;
}

bool SoundJob::isOver() const
{
    const std::lock_guard<std::mutex> lock(m_bell.mutex);
    return m_isDone && m_events.empty();
}

std::optional<double> SoundJob::progress() const
{
    const double progress = m_progress;
    return progress < 0 ? std::nullopt : std::optional<double>(progress);
}

} // namespace morsehost
