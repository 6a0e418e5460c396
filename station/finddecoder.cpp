// SPDX-License-Identifier: MIT
#include "station/finddecoder.h"

#include "station/decoders.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace morsehost {

namespace {

constexpr std::size_t LISTENED_SAMPLES = 4096;
constexpr double LISTENED_OF_PIPE_s = 30.0;

// A sound of which the beginning was read already.
class BegunSource : public SampleSource
{
public:
    BegunSource(std::vector<float> begin, std::unique_ptr<SampleSource> rest)
        : m_begin(std::move(begin))
        , m_rest(std::move(rest))
    {
    }

    double sampleRate_Hz() const override { return m_rest->sampleRate_Hz(); }
    std::optional<long long> frameCount() const override { return m_rest->frameCount(); }
    std::optional<unsigned long long> recorded_us() const override { return m_rest->recorded_us(); }
    std::size_t read(float* samples, std::size_t count) override
    {
        if (m_at == m_begin.size())
            return m_rest->read(samples, count);
        const std::size_t some = std::min(count, m_begin.size() - m_at);
        std::copy_n(m_begin.begin() + static_cast<std::ptrdiff_t>(m_at), some, samples);
        m_at += some;
        if (m_at == m_begin.size()) {
            m_begin = {};
            m_at = 0;
        }
        return some;
    }
    QString error() const override { return m_rest->error(); }

private:
    std::vector<float> m_begin;
    std::size_t m_at = 0;
    std::unique_ptr<SampleSource> m_rest;
};

} // namespace

QString described(const teleprinter::Line& line)
{
    return QStringLiteral("%1, %2 Bd, shift %3 Hz, tone %4 Hz%5")
        .arg(decoderOf(line.kind.code))
        .arg(line.kind.baud)
        .arg(std::lround(line.shift_Hz()))
        .arg(std::lround(line.centre_Hz()))
        .arg(line.isReversed() ? QStringLiteral(", mark is the lower tone") : QString());
}

LineFinder::LineFinder(const teleprinter::Settings& settings)
    : m_receiver(settings, *this)
{
}

LineFinder::~LineFinder() = default;

void LineFinder::transmissionStarted(const teleprinter::Line& line, std::int64_t /*time_us*/)
{
    if (!m_line)
        m_line = line;
}

void LineFinder::character(std::uint8_t /*character*/, std::int64_t /*time_us*/) {}

void LineFinder::transmissionStopped(const teleprinter::Line& /*line*/, std::int64_t /*time_us*/) {}

FoundDecoder findDecoder(SoundRequest& request, const std::function<bool()>& isStopped)
{
    FoundDecoder found;
    found.opened = openSound(request);
    if (!found.opened.source)
        return found;
    LineFinder finder(request.teleprinter);
    std::vector<float> heard; // of a pipe
    std::vector<float> samples(LISTENED_SAMPLES);
    const auto most =
        static_cast<std::size_t>(LISTENED_OF_PIPE_s * found.opened.source->sampleRate_Hz());
    while (!finder.line() && !isStopped() && heard.size() < most) {
        const std::size_t count = found.opened.source->read(samples.data(), samples.size());
        if (count == 0)
            break;
        finder.push(samples.data(), count);
        if (request.isPipe)
            heard.insert(heard.end(), samples.begin(),
                         samples.begin() + static_cast<std::ptrdiff_t>(count));
    }
    finder.finish();
    if (request.isPipe)
        found.opened.source =
            std::make_unique<BegunSource>(std::move(heard), std::move(found.opened.source));
    else
        found.opened = openSound(request);
    if (finder.line()) {
        found.decoder = decoderOf(finder.line()->kind.code);
        found.remark = described(*finder.line());
    } else {
        found.decoder = QLatin1String(MORSE_DECODER);
        found.remark = QStringLiteral("no teleprinter was found: heard as Morse");
    }
    return found;
}

} // namespace morsehost
