// SPDX-License-Identifier: MIT
// Which decoder a recording is for, as it sounds.
#pragma once

#include "station/audio/sound.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace morsehost {

/// In place of a decoder's name: what is found in the recording.
constexpr char DECODER_AS_FOUND[] = "auto";

/// As it is a user reads it.
QString described(const teleprinter::Line& line);

/// The first line that is found in a sound.
class LineFinder : private teleprinter::TextSink
{
public:
    explicit LineFinder(const teleprinter::Settings& settings);
    ~LineFinder() override;
    LineFinder(const LineFinder&) = delete;
    LineFinder& operator=(const LineFinder&) = delete;

    /// Of no use once it is found.
    void push(const float* samples, std::size_t count) { m_receiver.push(samples, count); }
    void finish() { m_receiver.finish(); }
    const std::optional<teleprinter::Line>& line() const { return m_line; }

private:
    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override;
    void character(std::uint8_t character, std::int64_t time_us) override;
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override;

    std::optional<teleprinter::Line> m_line;
    teleprinter::Receiver m_receiver;
};

struct FoundDecoder
{
    QString decoder;     ///< a teleprinter's, or Morse where there is none
    QString remark;      ///< what was found, in one line
    OpenedSource opened; ///< the sound from its beginning
};

/// Hears it up to the first teleprinter, or to its end, unless `isStopped` before; of a pipe, which
/// may have no end, the first 30 s, which are kept.
FoundDecoder findDecoder(SoundRequest& request, const std::function<bool()>& isStopped);

} // namespace morsehost
