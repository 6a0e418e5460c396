// SPDX-License-Identifier: MIT
// Sound of teleprinters to the characters that were sent, with times.
#pragma once

#include "signal/teleprinter/line.h"
#include "signal/teleprinter/observer.h"
#include "signal/teleprinter/parameters.h"
#include "signal/teleprinter/textreader.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace teleprinter {

/// Receives what is heard, in order of time. Times are microseconds of signal since the first
/// sample.
class TextSink
{
public:
    virtual ~TextSink();

    /// Begin of the first character, and the line as it was found.
    virtual void transmissionStarted(const Line& line, std::int64_t time_us) = 0;
    /// What the decoder puts out: eight bits, of ITA2 or ASCII; at the character's end.
    virtual void character(std::uint8_t character, std::int64_t time_us) = 0;
    /// End of the last character, and the line as it was known at last.
    virtual void transmissionStopped(const Line& line, std::int64_t time_us) = 0;
};

struct Settings
{
    double sampleRate_Hz = 8000.0;
    Known known;
    Unshift unshift = Unshift::WhereSenderDoes;
    Parameters parameters; ///< as they are, unless something is measured
};

/// Precondition: 4 kHz <= sampleRate_Hz <= 768 kHz; a receiver of any other rate hears nothing.
/// Sink and observer must outlive the receiver. Not for use from several threads at once.
///
/// A transmission is a signal from its begin to its end; of Sitor-B, one message from ZCZC to NNNN.
///
/// A signal is noticed within 3 s, and then read from its beginning; after that, a character is
/// given at most 2 s after its end.
class Receiver
{
public:
    Receiver(const Settings& settings, TextSink& sink, Observer* observer = nullptr);
    ~Receiver();
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /// Mono, full scale +-1, pieces of any size: the result does not depend on how the input is
    /// cut. Samples that are no number count as silence.
    void push(const float* samples, std::size_t count);

    /// End of input: everything heard is given. What is pushed afterwards is ignored.
    void finish();

    /// A signal is there, also where it sends no characters: before, between and after its
    /// transmissions.
    bool isFollowing() const;

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace teleprinter
