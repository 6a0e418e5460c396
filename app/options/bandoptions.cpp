// SPDX-License-Identifier: MIT
#include "app/options/bandoptions.h"

#include "app/options/soundoptions.h"
#include "signal/band/bandreceiver.h"
#include "signal/limits.h"

#include <algorithm>

namespace morsehost {

namespace {

constexpr double MAX_CENTER_HZ = 3e12; // above the highest bands in use

constexpr Word<RawFormat> FORMATS[] = {
    {"s16", RawFormat::S16}, {"f32", RawFormat::F32}, {"u8", RawFormat::U8}, {"s8", RawFormat::S8}};

// How the input is written: by our names, or by the letters of other programs.
void readFormat(Arguments& arguments, BandRequest& request)
{
    readWord(arguments, "format", FORMATS, request.format);
    if (arguments.isSet("i"))
        request.format = RawFormat::S16;
    if (arguments.isSet("f"))
        request.format = RawFormat::F32;
    const auto letter_Hz =
        arguments.number("r", demodulator::LOWEST_BAND_RATE_Hz, demodulator::HIGHEST_BAND_RATE_Hz);
    const auto rate_Hz = arguments.number("rate", demodulator::LOWEST_BAND_RATE_Hz,
                                          demodulator::HIGHEST_BAND_RATE_Hz);
    request.rate_Hz = letter_Hz.value_or(rate_Hz.value_or(request.rate_Hz));
    const int formats =
        int(arguments.isSet("format")) + int(arguments.isSet("i")) + int(arguments.isSet("f"));
    const int rates = int(arguments.isSet("rate")) + int(arguments.isSet("r"));
    if (formats > 1)
        arguments.fail(QStringLiteral("--format, -i and -f exclude each other"));
    if (rates > 1)
        arguments.fail(QStringLiteral("--rate and -r are the same option"));
    if (!request.isPipe && formats + rates > 0)
        arguments.fail(QStringLiteral("--rate and --format are for standard input; a file has its "
                                      "own"));
}

// LO-HI, both as received; a minus may stand before either.
void readLimits(Arguments& arguments, BandChoice& choice)
{
    if (!arguments.isSet("only"))
        return;
    const QString text = arguments.text("only");
    const int dash = text.indexOf(QLatin1Char('-'), 1);
    bool isLow = false;
    bool isHigh = false;
    const double low_Hz = text.left(dash).toDouble(&isLow);
    const double high_Hz = text.mid(dash + 1).toDouble(&isHigh);
    if (dash < 0 || !isLow || !isHigh || !(low_Hz < high_Hz)) {
        arguments.fail(
            QStringLiteral("--only takes two frequencies in hertz, as 14000000-14070000"));
        return;
    }
    choice.lowest_Hz = low_Hz - choice.center_Hz;
    choice.highest_Hz = high_Hz - choice.center_Hz;
}

BandLimits limitsOf(const demodulator::BandFormat& format)
{
    const double edge_Hz = 0.5 * format.rate_Hz;
    return {format.isComplex ? -edge_Hz : 0.0, edge_Hz};
}

} // namespace

std::vector<OptionRow> bandOptionRows()
{
    return {
        {"iq", nullptr,
         "the input is I and Q: two channels of a recording, or pairs of raw samples"},
        {"format", "FORMAT",
         "format of raw samples on standard input: s16, f32, u8 or s8 (default: s16)"},
        {"rate", "HZ",
         "sample rate of raw samples, " +
             range(demodulator::LOWEST_BAND_RATE_Hz, demodulator::HIGHEST_BAND_RATE_Hz) +
             " (default: 48000)"},
        {"center", "HZ", "receive frequency at 0 Hz of the input (default: 0)"},
        {"only", "LO-HI", "leave out signals outside these frequencies, in hertz"},
        {"r", "HZ", "the same as --rate, as web receivers call their decoders"},
        {"i", nullptr, "the same as --format s16"},
        {"f", nullptr, "the same as --format f32"},
    };
}

BandChoice readBandOptions(Arguments& arguments, RawFormat format)
{
    BandChoice choice;
    BandRequest& request = choice.request;
    const QString name = arguments.operands().constFirst();
    request.isPipe = name == QLatin1String("-");
    request.name = request.isPipe ? QStringLiteral("standard input") : name;
    request.isComplex = arguments.isSet("iq");
    request.format = format;
    readFormat(arguments, request);
    choice.center_Hz = arguments.number("center", 0, MAX_CENTER_HZ).value_or(0.0);
    readLimits(arguments, choice);
    return choice;
}

BandLimits limitsOf(const BandChoice& choice, const demodulator::BandFormat& format)
{
    const BandLimits input = limitsOf(format);
    return {std::max(choice.lowest_Hz, input.lowest_Hz),
            std::min(choice.highest_Hz, input.highest_Hz)};
}

QString limitsFault(const BandChoice& choice, const demodulator::BandFormat& format)
{
    const BandLimits left = limitsOf(choice, format);
    if (left.lowest_Hz < left.highest_Hz)
        return {};
    const BandLimits input = limitsOf(format);
    const auto hertz = [&choice](double tone_Hz) {
        return QString::number(choice.center_Hz + tone_Hz, 'f', 0);
    };
    return QStringLiteral("--only %1-%2 lies outside of what is received, %3 to %4 Hz")
        .arg(hertz(choice.lowest_Hz), hertz(choice.highest_Hz), hertz(input.lowest_Hz),
             hertz(input.highest_Hz));
}

} // namespace morsehost
