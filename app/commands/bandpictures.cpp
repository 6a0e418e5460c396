// SPDX-License-Identifier: MIT
#include "app/commands/bandpictures.h"

#include "app/transmissionpictures.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace morsehost {

namespace {

// A transmission is reported so long after its end, at most.
constexpr std::int64_t REPORTED_us = 30000000;
constexpr std::int64_t REMEMBERED_us = LONGEST_PICTURE_us + PICTURE_EDGE_us + REPORTED_us;
constexpr double AROUND_Hz = 300.0; // drawn on both sides of a signal

} // namespace

BandPictures::BandPictures(BandListener& next, const BandChoice& choice,
                           const demodulator::BandFormat& format, const QString& folder,
                           unsigned long long start_us)
    : PassingBandListener(next)
    , m_center_Hz(choice.center_Hz)
    , m_rate_Hz(format.rate_Hz)
    , m_folder(folder)
    , m_start_us(static_cast<qint64>(start_us))
    , m_recent(format, choice.lowest_Hz - AROUND_Hz, choice.highest_Hz + AROUND_Hz, REMEMBERED_us)
{
}

void BandPictures::push(const std::complex<float>* samples, std::size_t count)
{
    m_recent.push(samples, count);
    m_heard_us += 1e6 * static_cast<double>(count) / m_rate_Hz;
    const auto oldest_us = static_cast<std::int64_t>(m_heard_us) - REMEMBERED_us;
    while (!m_texts.empty() && m_texts.front().time_us < oldest_us)
        m_texts.pop_front();
}

void BandPictures::text(const BandEntry& signal, const QString& text, std::int64_t time_us)
{
    m_texts.push_back({signal.number, signal.tone_Hz, time_us, text});
    PassingBandListener::text(signal, text, time_us);
}

void BandPictures::transmission(const Transmission& transmission)
{
    Transmission pictured = transmission;
    const QByteArray picture = draw(transmission);
    QString problem;
    const QString path = picture.isEmpty()
                             ? QString()
                             : savePicture(picture, m_folder, transmission.start_us, problem);
    if (!path.isEmpty())
        pictured.files += path;
    if (!problem.isEmpty())
        saving(problem);
    PassingBandListener::transmission(pictured);
}

// Empty where nothing of it is remembered.
QByteArray BandPictures::draw(const Transmission& transmission) const
{
    inspect::Stretch stretch;
    stretch.to_us = transmission.stop_us - m_start_us + PICTURE_EDGE_us;
    stretch.from_us = std::max<std::int64_t>(transmission.start_us - m_start_us - PICTURE_EDGE_us,
                                             stretch.to_us - LONGEST_PICTURE_us);
    const double tone_Hz = transmission.frequency_Hz.value_or(m_center_Hz) - m_center_Hz;
    const double around_Hz = 0.5 * transmission.shift_Hz.value_or(0.0) + AROUND_Hz;
    const inspect::BandPowers powers =
        m_recent.cut(stretch, tone_Hz - around_Hz, tone_Hz + around_Hz);
    if (powers.columns() == 0)
        return {};
    std::vector<inspect::BandText> texts;
    std::copy_if(m_texts.begin(), m_texts.end(), std::back_inserter(texts),
                 [&](const inspect::BandText& text) {
                     return stretch.touches(text.time_us, text.time_us + 1) &&
                            text.tone_Hz >= powers.lowest_Hz && text.tone_Hz <= powers.highest_Hz;
                 });
    const QString frequency_kHz =
        QString::number(1e-3 * transmission.frequency_Hz.value_or(m_center_Hz), 'f', 2);
    return inspect::bandPicture(
        powers, texts, stretch, m_center_Hz,
        QStringLiteral("%1 kHz, %2").arg(frequency_kHz, pictureTitle(transmission.start_us)));
}

} // namespace morsehost
