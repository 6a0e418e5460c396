// SPDX-License-Identifier: MIT
// Decodes a whole recording and keeps what came of it.
#pragma once

#include "morse/symbolcodes.h"
#include "signal/morse/demodulator.h"
#include "support/morsecode.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace testsupport {

struct Transmission
{
    std::int64_t start_us = 0;
    std::int64_t stop_us = -1;        ///< -1: not stopped
    demodulator::SignalReport report; ///< once it has stopped
    std::vector<int> codes;
    std::vector<std::int64_t> times_us;

    bool operator==(const Transmission& other) const
    {
        return start_us == other.start_us && stop_us == other.stop_us && codes == other.codes &&
               times_us == other.times_us;
    }
};

class CodeList : public demodulator::SymbolSink
{
public:
    void transmissionStarted(std::int64_t time_us) override
    {
        transmissions.push_back({time_us, -1, {}, {}, {}});
    }
    void symbol(int code, std::int64_t time_us) override
    {
        transmissions.back().codes.push_back(code);
        transmissions.back().times_us.push_back(time_us);
    }
    void transmissionStopped(std::int64_t time_us, const demodulator::SignalReport& report) override
    {
        transmissions.back().report = report;
        transmissions.back().stop_us = time_us;
    }

    /// All codes, a word gap between transmissions.
    std::vector<int> codes() const
    {
        std::vector<int> all;
        for (const Transmission& transmission : transmissions) {
            if (!all.empty())
                all.push_back(eSYMBOL_NEW_WORD);
            all.insert(all.end(), transmission.codes.begin(), transmission.codes.end());
        }
        return all;
    }
    std::string text() const { return asReceived(textOfCodes(codes())); }

    std::vector<Transmission> transmissions;
};

inline CodeList decodeAll(const std::vector<float>& samples, const demodulator::Settings& settings,
                          std::size_t piece = 4096)
{
    CodeList list;
    demodulator::Demodulator demodulator(settings, list);
    for (std::size_t at = 0; at < samples.size(); at += piece)
        demodulator.push(samples.data() + at, std::min(piece, samples.size() - at));
    demodulator.finish();
    return list;
}

inline CodeList decodeAll(const std::vector<float>& samples, double rate_Hz,
                          std::size_t piece = 4096)
{
    demodulator::Settings settings;
    settings.sampleRate_Hz = rate_Hz;
    return decodeAll(samples, settings, piece);
}

} // namespace testsupport
