// SPDX-License-Identifier: MIT
#include "station/finddecoder.h"

#include "station/decoders.h"

#include <cmath>
#include <vector>

namespace morsehost {

namespace {

constexpr std::size_t LISTENED_SAMPLES = 4096;

// The first line that is found in a sound.
class Finder : public teleprinter::TextSink
{
public:
    void transmissionStarted(const teleprinter::Line& line, std::int64_t /*time_us*/) override
    {
        if (!m_line)
            m_line = line;
    }
    void character(std::uint8_t /*character*/, std::int64_t /*time_us*/) override {}
    void transmissionStopped(const teleprinter::Line& /*line*/, std::int64_t /*time_us*/) override
    {
    }

    const std::optional<teleprinter::Line>& line() const { return m_line; }

private:
    std::optional<teleprinter::Line> m_line;
};

} // namespace

FoundDecoder findDecoder(SoundRequest request, const std::function<bool()>& isStopped)
{
    FoundDecoder found;
    if (request.isPipe) {
        found.error = QStringLiteral("--decoder auto reads its input twice, which a pipe does not "
                                     "allow");
        return found;
    }
    const OpenedSource opened = openSound(request);
    found.error = opened.error;
    if (!opened.source)
        return found;
    Finder finder;
    teleprinter::Receiver receiver(request.teleprinter, finder);
    std::vector<float> samples(LISTENED_SAMPLES);
    while (!finder.line() && !isStopped()) {
        const std::size_t count = opened.source->read(samples.data(), samples.size());
        if (count == 0)
            break;
        receiver.push(samples.data(), count);
    }
    receiver.finish();
    if (!finder.line()) {
        found.decoder = QLatin1String(MORSE_DECODER);
        found.remark = QStringLiteral("no teleprinter; decoded as Morse");
        return found;
    }
    const teleprinter::Line& line = *finder.line();
    found.decoder = decoderOf(line.kind.code);
    found.remark = QStringLiteral("%1, %2 Bd, shift %3 Hz")
                       .arg(found.decoder)
                       .arg(line.kind.baud)
                       .arg(std::lround(line.shift_Hz()));
    return found;
}

} // namespace morsehost
