// SPDX-License-Identifier: MIT
// What the person at the program sees of a band.
#pragma once

#include "station/bandstation.h"
#include "station/io/output.h"

#include <memory>

namespace morsehost {

enum class BandForm {
    Lines, ///< a line for each transmission, when it is over
    Json,  ///< an object a line per event
    Colon, ///< FREQUENCY:TEXT, word by word
    Table, ///< who is there now, on a terminal
};

constexpr int DEFAULT_COLON_CHARACTERS = 8; // as other programs write them

class BandReporter : public BandListener
{
public:
    explicit BandReporter(Output& output)
        : m_output(output)
    {
    }
    BandReporter(const BandReporter&) = delete;
    BandReporter& operator=(const BandReporter&) = delete;

    void found(const BandEntry& signal) override;
    void text(const BandEntry& signal, const QString& text, std::int64_t time_us) override;
    void transmission(const Transmission& transmission) override;
    void lost(const BandEntry& signal) override;
    /// On standard error.
    void saving(const QString& message) override;
    /// So much has been heard, and this goes on now.
    virtual void heard(double time_s, const std::vector<demodulator::BandSignal>& signals);

protected:
    Output& m_output;
};

struct BandReport
{
    BandForm form = BandForm::Lines;
    double center_Hz = 0;            ///< what 0 Hz of the band is
    unsigned long long start_us = 0; ///< of the first sample, since 1970-01-01 00:00 UTC
    /// In colon form a line ends at the first blank after so many, or with its transmission.
    int colonCharacters = DEFAULT_COLON_CHARACTERS;
};
std::unique_ptr<BandReporter> makeBandReporter(const BandReport& report, Output& output);

} // namespace morsehost
