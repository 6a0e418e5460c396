// SPDX-License-Identifier: MIT
#include "station/service/recordingtap.h"

#include <QFileInfo>

#include <complex>
#include <utility>

namespace morsehost {

RecordingTap::RecordingTap(const ReceiverSettings& settings)
{
    if (!QFileInfo(settings.file).isFile())
        return;
    BandRequest request;
    request.name = settings.file;
    request.isComplex = settings.samples.isComplex;
    OpenedBand opened = openBand(request);
    if (!opened.source)
        return;
    m_source = std::move(opened.source);
    SampleFormat format = settings.samples;
    m_rate_Hz = m_source->format().rate_Hz;
    format.rate_Hz = m_rate_Hz;
    m_tap = std::make_unique<SpectrumTap>(format);
}

std::vector<QJsonObject> RecordingTap::advance(double time_s)
{
    if (!m_source)
        return {};
    std::vector<std::complex<float>> samples(static_cast<std::size_t>(time_s * m_rate_Hz));
    std::size_t count = 0;
    while (m_source && count < samples.size()) {
        const std::size_t got = m_source->read(samples.data() + count, samples.size() - count);
        count += got;
        if (got == 0)
            m_source.reset();
    }
    samples.resize(count);
    return m_tap->hear(samples);
}

} // namespace morsehost
