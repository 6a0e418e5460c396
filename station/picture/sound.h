// SPDX-License-Identifier: MIT
// The sound of a stretch of a recording, kept for its picture.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace inspect {

/// Microseconds since the first sample.
struct Stretch
{
    std::int64_t from_us = 0;
    std::int64_t to_us = 0;

    bool touches(std::int64_t begin_us, std::int64_t end_us) const
    {
        return begin_us < to_us && end_us > from_us;
    }
};

/// Drops the first of the things, as long as they are over.
template <typename Things, typename IsOver>
void forget(Things& things, IsOver isOver)
{
    things.erase(things.begin(), std::find_if_not(things.begin(), things.end(), isOver));
}

/// From its first sound to its last, as far as that is known.
struct Transmission
{
    std::int64_t begin_us;
    std::optional<std::int64_t> end_us;
};

struct Sound
{
    double rate_Hz = 0.0;         ///< of the samples, 0 when there are none
    std::int64_t firstSample = 0; ///< index of the first sample that was kept, since the beginning
    std::vector<float> samples;   ///< of the stretch, and a little around it
};

/// Keeps what belongs to a stretch of all that is heard.
class SoundKeeper
{
public:
    /// The first sample that is heard lies `begin_us` after the beginning of the recording.
    SoundKeeper(const Stretch& stretch, std::int64_t begin_us)
        : m_stretch(stretch)
        , m_begin_us(begin_us)
    {
    }

    /// The next samples; those to keep are added to `sound`.
    void hear(const float* samples, std::size_t count, double rate_Hz, Sound& sound);
    /// The stretch begins then; what is before it is dropped from `sound`.
    void forgetBefore(std::int64_t time_us, Sound& sound);

private:
    Stretch m_stretch;
    std::int64_t m_begin_us;
    std::optional<std::int64_t> m_nextSample; // since the beginning of the recording
};

} // namespace inspect
