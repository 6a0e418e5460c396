// SPDX-License-Identifier: MIT
// Demodulates a sound on a thread of its own, so that several are heard at once while one after the
// other is decoded.
#pragma once

#include "signal/morse/observer.h"
#include "signal/morse/symbolsink.h"
#include "signal/teleprinter/observer.h"
#include "signal/teleprinter/teleprinterreceiver.h"
#include "station/audio/sound.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace morsehost {

/// Wakes a thread that waits for any of several jobs.
struct SoundBell
{
    std::mutex mutex;
    std::condition_variable rung;
};

/// What is known once the first samples are there.
struct SoundFacts
{
    QString error;   ///< why there is no sound; empty when there is
    QString decoder; ///< Morse or a teleprinter's: the one that was asked for, or found
    QString remark;  ///< what was found, if that was asked for
    demodulator::Settings demodulator;
    std::optional<unsigned long long> recorded_us; ///< as the recording says; UTC
    unsigned long long arrived_us = 0; ///< the clock when the first sample was there; UTC
};

/// Where it goes: Morse or teleprinter, by the decoder.
struct SoundSinks
{
    demodulator::SymbolSink* morse = nullptr;
    demodulator::Observer* observer = nullptr; ///< beside `morse`
    teleprinter::TextSink* teleprinter = nullptr;
    teleprinter::Observer* teleprinterObserver = nullptr; ///< beside `teleprinter`
};

class SoundJob
{
public:
    /// Begins at once. The bell outlives the job. The request's decoder may be DECODER_AS_FOUND.
    /// What an observer sees is kept only where it is wanted.
    SoundJob(SoundRequest request, SoundBell& bell, bool isObserved = false);
    /// Stops it where it is.
    ~SoundJob();
    SoundJob(const SoundJob&) = delete;
    SoundJob& operator=(const SoundJob&) = delete;

    /// Null until the first samples are there, or are known not to come.
    const SoundFacts* facts() const;
    /// Hands on what has been heard since the last call; to be called from one thread, again and
    /// again, since a job waits when much has not been fetched. Observers are those of a job that
    /// is observed. False when there was nothing.
    bool deliver(const SoundSinks& sinks);
    /// All has been heard; there may still be something to deliver.
    bool isDone() const;
    /// Done, and all is delivered.
    bool isOver() const;
    /// Over: what a user who set a speed, tones or polarity should know of them; empty for nothing.
    const QString& closingRemark() const { return m_closingRemark; }
    /// Over: what ended the sound before its end; empty when nothing did.
    const QString& error() const { return m_error; }
    /// From 0 to 1; none for a pipe.
    std::optional<double> progress() const;

private:
    /// A call to be made later.
    using Event = std::function<void(const SoundSinks&)>;
    class SymbolCollector;
    class TextCollector;

    void run();
    void hear(SampleSource& source);
    void hearTeleprinter(SampleSource& source);
    template <typename Receiver>
    void hearWith(Receiver& receiver, SampleSource& source);
    void publish(const SoundFacts& facts);
    void add(Event event);

    SoundRequest m_request;
    QString m_remark;
    SoundBell& m_bell;
    const bool m_isObserved;
    std::atomic<bool> m_isStopped{false};
    std::atomic<double> m_progress{-1.0};
    // Behind the bell's mutex.
    std::optional<SoundFacts> m_facts;
    std::deque<Event> m_events;
    bool m_isDone = false;
    QString m_error;
    QString m_closingRemark;
    std::thread m_thread; ///< last: it uses all of the above
};

} // namespace morsehost
