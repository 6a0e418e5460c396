// SPDX-License-Identifier: MIT
// What the pictures of a passage have in common: rows of a few seconds, one below the other, each
// with a spectrogram, a time axis and flags; title, facts and legend around them.
#pragma once

#include "station/picture/shading.h"
#include "station/picture/sound.h"
#include "station/picture/spectrogram.h"
#include "station/picture/svg.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

namespace inspect {

/// Where things lie in a row, in pixels from its top.
struct RowShape
{
    double spectrumTop;
    double spectrumHeight;
    double axis;
    double height;
    double legend;    ///< height of what is below all rows
    double longest_s; ///< of time in a row
};

class Rows
{
public:
    static constexpr double WIDTH = 1200.0; ///< of a row, in pixels
    /// Drawn where no tone is followed.
    static constexpr double LOWEST_Hz = 100.0;
    static constexpr double HIGHEST_Hz = 3500.0;
    /// Classes that every picture has, before those of its own.
    static const char STYLE[];

    /// The tones between which spectrograms are drawn are rounded, and end with the sound.
    Rows(const Sound& sound, const Stretch& stretch, const RowShape& shape, double lowest_Hz,
         double highest_Hz);

    /// All of it. `drawRow` and `legend` draw into svg(), at the left edge of their group.
    QByteArray draw(const QString& title, const QString& facts, const QByteArray& style,
                    const std::function<void()>& drawRow, const std::function<void()>& legend);

    Svg& svg() { return m_svg; }
    /// The part of the stretch in the row that is drawn.
    const Stretch& drawn() const { return m_drawn; }
    /// Of a time, at most the edges of that part.
    double x(std::int64_t time_us) const;
    /// Of a tone in the spectrogram.
    double yOfTone(double tone_Hz) const;
    template <typename Thing>
    bool isHere(const Thing& thing) const
    {
        return m_drawn.touches(thing.begin_us, thing.end_us);
    }

    void drawSpectrum();
    void drawTransmissions(const std::vector<Transmission>& transmissions);
    void drawAxis();
    /// Spans what a text was read from.
    void drawBracket(std::int64_t begin_us, std::int64_t end_us, double y);

private:
    Stretch timeOfRow(int row) const;
    Stretch shown(const Stretch& row) const;

    Stretch m_stretch;
    RowShape m_shape;
    double m_lowest_Hz;
    double m_highest_Hz;
    double m_row_us = 0.0; // of time in each row
    int m_rows = 1;
    std::vector<Spectrogram> m_spectra; // by row
    Shading m_shading;
    Svg m_svg;
    int m_row = 0;   // that is drawn
    Stretch m_time;  // of it, to its right edge
    Stretch m_drawn; // of it, what lies in the stretch
};

/// A time as the pictures write it.
QString timeText(std::int64_t time_us);

} // namespace inspect
