// SPDX-License-Identifier: MIT
// Joins the stages: looks for a line, opens a channel on it that hears the last seconds again, and
// puts its words into text.
#include "signal/teleprinter/teleprinterreceiver.h"

#include "signal/limits.h"
#include "signal/samples/samples.h"
#include "signal/teleprinter/acquisition.h"
#include "signal/teleprinter/ccir476.h"
#include "signal/teleprinter/ita2.h"
#include "signal/teleprinter/messages.h"
#include "signal/teleprinter/spectrum.h"
#include "signal/teleprinter/startstop.h"
#include "signal/teleprinter/timediversity.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace teleprinter {

namespace {

// More than any search or channel hears again.
constexpr double HISTORY_s = 16.0;

bool usable(double rate_Hz)
{
    return rate_Hz >= demodulator::LOWEST_RATE_Hz && rate_Hz <= demodulator::HIGHEST_RATE_Hz;
}

} // namespace

TextSink::~TextSink() = default;
Observer::~Observer() = default;

class Receiver::Private
{
public:
    Private(const Settings& settings, TextSink& sink, Observer* observer)
        : m_settings(settings)
        , m_observer(observer)
        , m_own(m_settings.parameters.search)
        , m_messages(sink)
        , m_decimator(settings.sampleRate_Hz)
        , m_rate_Hz(m_decimator.outputRate_Hz())
        , m_history(static_cast<std::size_t>(HISTORY_s * m_rate_Hz))
        , m_spectrum(m_rate_Hz, settings.parameters.spectrum)
        , m_frame(m_spectrum.length())
    {
        m_nextSearch = samples(m_own.short_s);
    }

    void push(const float* input, std::size_t count)
    {
        m_working.clear();
        m_decimator.push(input, count, m_working);
        take();
    }

    void finish()
    {
        m_working.clear();
        m_decimator.flush(m_working);
        take();
        if (!m_channel)
            search();
        if (m_channel) {
            give(m_channel->advance(m_history.end(), true));
            stop();
        }
    }

    bool isFollowing() const { return m_channel != nullptr; }

private:
    struct Time
    {
        std::int64_t begin_us;
        std::int64_t end_us;
    };

    std::int64_t samples(double seconds) const
    {
        return static_cast<std::int64_t>(seconds * m_rate_Hz);
    }
    std::int64_t time_us(double sample) const
    {
        return std::llround(std::max(0.0, sample) / m_rate_Hz * 1e6);
    }

    // Every step happens at a place of the input that does not depend on how it was cut.
    void take()
    {
        if (m_observer != nullptr)
            m_observer->sound(m_working.data(), m_working.size(), m_rate_Hz);
        std::size_t at = 0;
        while (at < m_working.size()) {
            const std::int64_t due =
                m_frames * m_spectrum.hop() + static_cast<std::int64_t>(m_spectrum.length());
            const auto count =
                std::min(m_working.size() - at, static_cast<std::size_t>(due - m_history.end()));
            m_history.push(&m_working[at], count);
            at += count;
            if (m_history.end() == due)
                frame();
        }
    }

    void frame()
    {
        m_history.copy(m_frames * m_spectrum.hop(), m_frame.size(), m_frame.data());
        m_spectrum.push(m_frame.data());
        ++m_frames;
        if (!m_channel && m_history.end() >= m_nextSearch) {
            search();
            m_nextSearch = m_history.end() + samples(m_wait_s);
            // What is no teleprinter needs no looking at twice a second.
            m_wait_s = std::min(m_own.longestWait_s, m_own.waitGrows * m_wait_s);
        } else if (m_channel && m_checks < m_own.checks && m_history.end() >= m_nextSearch) {
            check();
        }
        if (!m_channel)
            return;
        give(m_channel->advance(m_history.end(), false));
        if (m_channel->isOver()) {
            m_heardUntil = m_history.end();
            stop();
        }
    }

    std::optional<Acquired> find(double seconds, const Line* followed = nullptr) const
    {
        const std::int64_t end = m_history.end();
        const std::int64_t begin =
            std::max({m_heardUntil, end - samples(seconds), std::int64_t{0}});
        return acquire(input(), m_settings.known, begin, end, followed);
    }

    void search()
    {
        const bool isLong = m_searches++ % m_own.longEvery == m_own.longEvery - 1;
        if (const auto found = find(isLong ? m_own.long_s : m_own.short_s))
            open(*found);
    }

    // The first seconds may have looked like another line than what follows.
    void check()
    {
        ++m_checks;
        m_nextSearch = m_history.end() + samples(m_own.checkEvery_s);
        const auto found = find(m_own.short_s, &m_channel->line());
        if (!found || isSameLine(found->line, m_channel->line()))
            return;
        stop();
        open(*found);
    }

    void open(const Acquired& found)
    {
        const std::int64_t end = m_history.end();
        const std::int64_t from =
            std::max({m_heardUntil, end - samples(m_own.heardAgain_s), std::int64_t{0}});
        const LineKind& kind = found.line.kind;
        m_channel = kind.code == Code::Ccir476
                        ? makeTimeDiversityChannel(input(), found.line, found.begin, from)
                        : makeStartStopChannel(input(), found.line, from);
        m_reader = kind.code == Code::Ascii
                       ? makeAsciiReader(kind.dataBits, m_settings.known.parity,
                                         m_settings.parameters.text)
                       : makeIta2Reader(m_settings.unshift, m_settings.parameters.text);
        m_messages.begin(kind.code == Code::Ccir476);
        m_unread.clear();
        m_checks = 0;
        m_nextSearch = end + samples(m_own.checkEvery_s);
    }

    void give(const std::vector<Word>& words)
    {
        const bool isSynchronous = m_channel->line().kind.code == Code::Ccir476;
        for (const Word& word : words) {
            if (m_observer != nullptr)
                show(word);
            // Phasing signals are no characters.
            if (isSynchronous && word.elements > ITA2_LETTERS)
                continue;
            m_unread.push_back({time_us(word.begin), time_us(word.end)});
            write(m_reader->read(word.elements, word.isDoubtful));
        }
    }

    // Each character has the time of its word. A shift belongs to the character that it is for.
    void write(const std::string& text)
    {
        if (text.empty())
            return;
        const bool isEachItsOwn = text.size() == m_unread.size();
        for (std::size_t i = 0; i < text.size(); ++i)
            m_messages.character(text[i], m_unread[isEachItsOwn ? i : 0].begin_us,
                                 (isEachItsOwn ? m_unread[i] : m_unread.back()).end_us,
                                 m_channel->line());
        m_unread.clear();
    }

    void show(const Word& word) const
    {
        const Line& line = m_channel->line();
        const LineKind& kind = line.kind;
        SeenWord seen = {};
        seen.begin_us = time_us(word.begin);
        seen.end_us = time_us(word.end);
        seen.element_us = 1e6 / line.baud;
        seen.mark_Hz = line.mark_Hz;
        seen.space_Hz = line.space_Hz;
        seen.isStartStop = kind.code != Code::Ccir476;
        if (kind.code != Code::Ascii && word.elements == ITA2_LETTERS)
            seen.kind = SeenWord::Kind::Letters;
        else if (kind.code != Code::Ascii && word.elements == ITA2_FIGURES)
            seen.kind = SeenWord::Kind::Figures;
        if (seen.isStartStop) {
            seen.elements = word.elements << 1U | 1U << (kind.dataBits + 1U);
            seen.count = kind.dataBits + 2;
            m_observer->word(seen);
            return;
        }
        if (word.elements > ITA2_LETTERS)
            seen.kind = SeenWord::Kind::Phasing;
        seen.elements = ccir476Elements()[word.elements];
        seen.count = kind.dataBits;
        m_observer->word(seen);
        seen.end_us = time_us(word.repeat + word.end - word.begin);
        seen.begin_us = time_us(word.repeat);
        seen.kind = SeenWord::Kind::Repeat;
        if (word.elements == PHASING_2)
            seen.elements = ccir476Elements()[PHASING_1];
        m_observer->word(seen);
    }

    void stop()
    {
        write(m_reader->finish());
        m_messages.end();
        m_channel.reset();
        m_wait_s = m_own.every_s;
    }

    Input input() const { return {m_history, m_spectrum, m_settings.parameters, m_rate_Hz}; }

    Settings m_settings;
    Observer* m_observer;
    const SearchParameters& m_own;
    Messages m_messages;
    demodulator::Decimator m_decimator;
    double m_rate_Hz;
    demodulator::SampleHistory m_history;
    Spectrum m_spectrum;
    std::vector<float> m_frame;
    std::vector<float> m_working;
    std::int64_t m_frames = 0;
    std::int64_t m_nextSearch = 0;
    std::int64_t m_searches = 0;
    double m_wait_s = m_own.every_s;
    int m_checks = 0;              // of the line that is followed
    std::int64_t m_heardUntil = 0; // what is before belongs to a signal that is over
    std::unique_ptr<Channel> m_channel;
    std::unique_ptr<TextReader> m_reader;
    std::vector<Time> m_unread; // words that have not given a character yet
};

Receiver::Receiver(const Settings& settings, TextSink& sink, Observer* observer)
    : m_d(usable(settings.sampleRate_Hz) ? std::make_unique<Private>(settings, sink, observer)
                                         : nullptr)
{
}

Receiver::~Receiver() = default;

void Receiver::push(const float* samples, std::size_t count)
{
    if (m_d)
        m_d->push(samples, count);
}

void Receiver::finish()
{
    if (m_d)
        m_d->finish();
    m_d.reset();
}

bool Receiver::isFollowing() const
{
    return m_d && m_d->isFollowing();
}

} // namespace teleprinter
