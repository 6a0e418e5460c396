// SPDX-License-Identifier: MIT
// Takes notes of what a receiver of teleprinters sees and decides in a stretch of a recording.
#pragma once

#include "signal/teleprinter/observer.h"
#include "signal/teleprinter/teleprinterreceiver.h"
#include "station/picture/sound.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace inspect {

struct TeleprinterWord
{
    teleprinter::SeenWord seen;
    QString text; ///< as the operator's map shows it; empty where it gives none
};

/// Everything that touches the stretch, in the order in which it was decided.
struct SeenTeleprinter : Sound
{
    Stretch stretch;
    std::vector<TeleprinterWord> words;
    std::vector<Transmission> transmissions;
    std::optional<teleprinter::Line> line; ///< of the last transmission, as it was found
};

/// Sink and observer of a receiver. Memory grows with the stretch, not with the recording. Times of
/// what it is given count from `begin_us` after the beginning of the recording; its own, from the
/// beginning.
class TeleprinterNotes : public teleprinter::TextSink, public teleprinter::Observer
{
public:
    explicit TeleprinterNotes(const Stretch& stretch, std::int64_t begin_us = 0);

    const SeenTeleprinter& seen() const { return m_seen; }
    /// The stretch begins then, or where it did if that is later.
    void forgetBefore(std::int64_t time_us);

    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override;
    void character(std::uint8_t character, std::int64_t time_us) override;
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override;
    /// What the last character was shown as.
    void text(const QString& text);

    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void word(const teleprinter::SeenWord& word) override;

private:
    SeenTeleprinter m_seen;
    std::int64_t m_begin_us;
    SoundKeeper m_sound;
    std::int64_t m_character_us = 0; // end of the last one
};

} // namespace inspect
