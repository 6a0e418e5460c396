// SPDX-License-Identifier: MIT
// The stretch of a recording that `morsehost inspect` draws, and how it is read.
#pragma once

#include "app/console/progress.h"
#include "station/audio/sound.h"
#include "station/picture/sound.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace morsehost {

/// Of a picture.
constexpr double SHORTEST_LENGTH_s = 0.1;

/// To the nearest one.
std::int64_t microseconds(double time_s);

struct StretchChoice
{
    double from_s;
    double length_s;
    bool isQuick; ///< the sound is not read from its beginning
};

/// Reads a sound up to where nothing more changes in the stretch.
class StretchReader
{
public:
    /// The source has been opened for the request, and outlives the reader.
    StretchReader(SampleSource& source, const SoundRequest& sound, const StretchChoice& choice);

    inspect::Stretch stretch() const;
    /// Where in the recording reading begins.
    std::int64_t begin_us() const { return m_begin_us; }

    /// A demodulator or receiver gets all of it.
    template <typename Receiver>
    void hear(Receiver& receiver)
    {
        while (read())
            receiver.push(m_samples.data(), m_count);
        if (m_isOver)
            receiver.finish();
    }

    /// False, and said on standard error, when there is nothing to draw; `picture` is its name.
    bool canDraw(const QString& picture) const;
    /// Where what was heard ends.
    std::int64_t end_us() const;

private:
    bool read();

    SampleSource& m_source;
    QString m_name;
    StretchChoice m_choice;
    double m_rate_Hz;
    long long m_done = 0;
    std::int64_t m_begin_us = 0;
    bool m_isOver = false;
    std::vector<float> m_samples;
    std::size_t m_count = 0;
    Progress m_progress;
};

} // namespace morsehost
