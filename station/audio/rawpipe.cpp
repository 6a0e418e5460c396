// SPDX-License-Identifier: MIT
#include "station/audio/rawpipe.h"

#include "station/io/input.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace morsehost {

namespace {

class RawPipe : public SampleSource
{
public:
    RawPipe(int descriptor, const QByteArray& begin, double sampleRate_Hz)
        : m_input(descriptor)
        , m_begin(begin)
        , m_sampleRate_Hz(sampleRate_Hz)
    {
    }

    double sampleRate_Hz() const override { return m_sampleRate_Hz; }
    std::optional<long long> frameCount() const override { return std::nullopt; }

    std::size_t read(float* samples, std::size_t count) override
    {
        m_bytes.resize(2 * count);
        std::size_t filled = 0;
        if (m_hasHalf)
            m_bytes[filled++] = m_half;
        // A pipe may cut a sample in two.
        do {
            const std::size_t got = readBytes(&m_bytes[filled], m_bytes.size() - filled);
            if (got == 0) {
                m_endsInHalf = filled != 0;
                return 0;
            }
            filled += got;
        } while (filled < 2);
        m_hasHalf = filled % 2 != 0;
        if (m_hasHalf)
            m_half = m_bytes[filled - 1];
        for (std::size_t i = 0; i < filled / 2; ++i) {
            const auto low = static_cast<std::uint8_t>(m_bytes[2 * i]);
            const auto high = static_cast<std::uint8_t>(m_bytes[2 * i + 1]);
            const auto sample = static_cast<std::int16_t>(low | (high << 8));
            samples[i] = static_cast<float>(sample) / 32768.0F;
        }
        return filled / 2;
    }

    QString error() const override
    {
        if (m_endsInHalf && m_input.error().isEmpty())
            return QStringLiteral("ends in the middle of a sample; samples have 16 bits");
        return m_input.error();
    }

private:
    std::size_t readBytes(char* data, std::size_t size)
    {
        if (m_begin.isEmpty())
            return m_input.read(data, size);
        const std::size_t count = std::min(size, static_cast<std::size_t>(m_begin.size()));
        std::copy_n(m_begin.constData(), count, data);
        m_begin.remove(0, static_cast<int>(count));
        return count;
    }

    Input m_input;
    QByteArray m_begin; ///< of what was read before
    double m_sampleRate_Hz;
    std::vector<char> m_bytes;
    bool m_hasHalf = false;
    char m_half = 0;
    bool m_endsInHalf = false;
};

} // namespace

std::unique_ptr<SampleSource> openRawSamples(int descriptor, const QByteArray& begin,
                                             double sampleRate_Hz)
{
    return std::make_unique<RawPipe>(descriptor, begin, sampleRate_Hz);
}

} // namespace morsehost
