// SPDX-License-Identifier: MIT
// What the stages are tuned by. Behind the figures stand rows of bench/teleprinter that show a good
// value from a bad one; "silence" is what is heard there where no teleprinter sends.
#pragma once

#include <string>

namespace teleprinter {

/// Speeds beside one that was known (line.h).
struct LineParameters
{
    // A clock may be off by a twentieth, here with some room for rounding; farther ones have no
    // form at it (row: none).
    double nearestOther = 0.0501;
    double farthestOther = 0.12;
};

/// Where tones may be (spectrum.h). Rows: snr-4, narrow and ascii300.
struct SpectrumParameters
{
    double leastExcess = 1.35;         ///< power of a tone over that of the noise about it
    double mostUnequal = 300.0;        ///< powers of two tones of one signal (row: selective)
    double knownTolerance_Hz = 50.0;   ///< of a centre that was known
    double knownShiftTolerance = 0.12; ///< of a shift that was known, and as much of the speed
    double leastIndex = 0.45;          ///< shift over speed (row: ascii300)
    double mostMerged = 1.6;           ///< shift over speed up to which tones make one hump
    double leastReach_Hz = 22.0;       ///< width of a tone to each side, at least
    double toneReach = 0.25;           ///< the same, of the speed
    double noiseReach_Hz = 250.0;      ///< beyond the tones, where noise is measured
    double noiseDistance = 1.5;        ///< of that from the tones, at least, in speeds
    double floorReach_Hz = 600.0;      ///< to each side of a tone: the noise about it (row: none)
    /// The centre of a tone is that of what is above this share of its highest bin
    /// (row: snr-2).
    double humpFrom = 0.7;
};

/// How strong the tones are (evidence.h). Rows: snr-4, rayleigh and echo.
struct EvidenceParameters
{
    double followed_s = 0.1;     ///< levels are averaged over so much, both ways (row: rayleigh)
    float steady_bits = 0.1F;    ///< the level of the whole span counts as so many elements nearby
    float leastStrength = 0.05F; ///< energy of an element over noise density: no level is lower
    /// What a tone leaves in the other's filter is no noise but grows with it: beyond this, a
    /// stronger signal is no surer (row: echo).
    double mostStrength_per_s = 4500.0;
};

/// Characters and pauses (framing.h). Costs are natural logarithms of probabilities; so are scores
/// and margins, as ratios to noise or to the other reading. Rows: snr-4 and typed.
struct FramingParameters
{
    // That a signal ends or begins at some place: nearer to 0, noise breaks text into pieces;
    // farther, noise is read as characters.
    float silenceBegins = -6.0F;
    float signalBegins = -6.0F;
    /// That the first character has no mark before it: its start has to outweigh that by itself
    /// (row: late).
    float firstWithoutMark = -10.0F;
    float character = -1.0F; ///< each: that one begins, and not the idle line goes on
    /// A start that is worse than this by any reading is not looked at again.
    float worthRefining = -6.0F;
    /// Nor one that is so far behind the best character before it (row: snr-4).
    float mostBehind = 15.0F;
    float doubted = 7.0F; ///< an element that is surer than this is not tried both ways
    int mostDoubted = 5;  ///< of the others, so many are
    float learntFrom =
        12.0F; ///< characters, until the pauses are believed to be known (row: typed)
    float leastLearnt = 1.0F; ///< characters; from fewer, no pause is likelier than another
    float remembered = 60.0F; ///< characters, after which a pause counts e times less
    float anyPause = 0.05F;   ///< share of pauses that are like no other
    float longPause = 0.2F;   ///< share of pauses beyond the longest that is learnt
    // Each pause that is learnt also counts for those a node and two nodes longer and shorter:
    // noise moves begins by so much.
    float besideLearnt = 0.2F;
    float nextLearnt = 0.1F;
    /// Share of a machine's pauses that are a node longer, and of those that are shorter
    /// (row: none).
    float besideMachine = 0.05F;
};

/// Data without characters (bitstream.h). Costs are logarithms of probabilities. Row: shift-keyed.
struct BitStreamParameters
{
    float costOfOtherLength = -5.0F; ///< an element that is a sixteenth shorter or longer
    float costOfRest = -6.0F;        ///< one tone begins to go on, or ends to
};

/// How tones are followed (tracking.h). Rows: drift and snr-4.
struct TrackingParameters
{
    /// Variance of the phase from element to element that even a strong signal has, radians
    /// squared.
    double leastScatter = 0.02;
    // What the tones may drift from one span to the next: variances (row: drift).
    double centreDrift_Hz2 = 0.15;
    double shiftDrift_Hz2 = 0.02;
    // By which another length and another begin are tried, in elements: large enough for the sums
    // to differ beyond noise, small enough for a parabola to go through them.
    double lengthStep = 0.008; ///< (row: slow)
    double beginStep = 0.15;   ///< (row: none)
};

/// Whether there is a line (acquisition.h). Rows: snr-4 for too strict, silence for too lax.
struct AcquisitionParameters
{
    // A line has so many characters at least; by fewer, noise would pass for one.
    int leastCharacters = 8;
    /// Share of pauses that are alike where a machine sends.
    double evenPauses = 0.8;
    // Where a hand does, fewer than so many have to be likelier than data by so much, with this
    // share of them in their form, and so well (rows: typed, slow; silence: two Morse stations).
    int manyTyped = 20;
    double typedOverData = 40.0;
    double typedFormed = 0.99;
    double typedFramingMean = 1.25;
    double typedContrast = 0.2;  ///< of Fit::contrast: two hands are at times heard at once
    double typedOccupied = 0.15; ///< of the span, in place of leastOccupied (row: slow)
    int alike_nodes = 3; ///< pauses that differ by no more are one length, as far as noise shows
    // How much better starts and stops fit than any elements would: a logarithm of likelihoods.
    double leastFraming = 10.0;     ///< in all
    double leastFramingMean = 0.35; ///< a character; 1.39 is all there can be
    /// Of ASCII, which is not sent on weak signals: of many more speeds and lengths that are tried,
    /// one or the other fits other data a little.
    double leastFormedAscii = 0.93;
    double leastAsciiMean = 0.9;
    double leastScoreMean = 2.0;  ///< a character, over noise, as a logarithm
    double leastOccupied = 0.4;   ///< of the span
    double mostUnexplained = 0.1; ///< of the span
    // Share of the commonest character: all that hum and other regular sounds bring, and a third of
    // what phasing signals look like.
    double tooOften = 0.8;
    double often = 0.33;
    /// Share of neighbouring elements that differ, of characters of seven or eight: hum beats, text
    /// does not. ITA2 has a test text that does.
    double mostRegular = 0.75;
    double leastMargin = 15.0; ///< of the score, over any other line
    /// By how much it is likelier than data without characters (silence; rows: ascii110, narrow).
    double leastOverData = -15.0;
    /// Below this, another line that fits less well may be meant: what is typed also looks like
    /// characters of twice the speed (row: typed).
    double hopelessOverData = -100.0;
    double comparedStrength = 20.0; ///< of an element; a stronger signal is weighed like this
    /// Framing from which an attempt is a rival by its form; of others, only one that fits so much
    /// better in strength is (row: ascii300).
    double leastForm = 3.0;
    double mostStronger = 1.0; ///< times the score
    /// So many characters, of which so many have their form, and so well: no other line is a rival
    /// that has not as much (row: ascii300).
    int leastWhole = 20;
    double wholeFormed = 0.95;
    double wholeFramingMean = 1.2;
    double wholeEven = 0.95; ///< share of pauses from which it is a machine (row: ascii300w)
    /// Share of characters by which more have to have the form of another line than of the one that
    /// is followed (rows: ascii300, stop1).
    double toChange = 0.1;
    /// Of Fit::contrast: 0.55 is noise at both tones.
    double mostContrast = 0.46;
    /// The first element of ASCII is the same but once in so many characters, and what each
    /// character loses for it (row: ascii200).
    int steadyFirst = 8;
    double costOfSteadyFirst = 2.0;
    /// Share of characters of ASCII that have the parity, where they must (silence: data).
    double leastParity = 0.9;
    int refined = 4; ///< of the first attempts, the best: tones and clock are set right
    int rounds = 2;  ///< of that, each from the tones that the last has found
    // The tones of one signal are on in turn: their energies go against each other.
    // These are summed up over the shorter of two spans.
    double exclusion_s = 0.012;
    double exclusion_bits = 0.9;
    double leastExclusion = 0.12; ///< correlation, with its sign turned; 1: exactly one is on
    double excludesFrom = 0.75;   ///< shift over speed; nearer tones overlap (row: ascii300)
    int mostPairs = 4;            ///< of tones, for each width
};

/// A start-stop line that is followed (startstop.h). Rows: snr-4 and typed.
struct StartStopParameters
{
    // Decided in spans of so much, of which the last part only helps to decide what is before it.
    double span_s = 2.0;
    double ahead_s = 0.7;
    double leastAhead_characters = 3.0; ///< of that part, at least
    double mostAhead = 0.6;             ///< the same, at most: share of all that is not decided
    double longPause_characters = 2.0;  ///< after which what is decided ends with the span
    double before_s = 0.5;              ///< heard again, for the levels
    double noise_s = 3.0;               ///< over which the noise is measured
    double lengthGain = 0.3; ///< share of the clock's error in a span that is followed (row: fast)
    double mostLengthError = 0.05; ///< share of the nominal one: no machine's clock is worse
    int knownAfter = 2;         ///< spans, until phases are kept through a character (row: snr-2)
    double overAfter_s = 3.0;   ///< without either tone (row: rayleigh)
    double idleAtMost_s = 20.0; ///< without a character
    float present_per_s = 8.0F; ///< logarithm of the likelihood of a signal
    float leastFramingMean = 0.1F; ///< a character; below, the span is no text (silence)
    int judgedFrom = 4;            ///< characters: fewer show no form (row: none)
    float goodFrame = 3.0F;        ///< score from which a character shows tones and clock
    float doubtful = 3.0F;         ///< least margin of an element
};

/// A line in time diversity (timediversity.h). Rows: sitor0 and sitor-fade.
struct TimeDiversityParameters
{
    int span_words = 16;   ///< decided at once; 1.1 s
    double before_s = 0.5; ///< heard again, for the levels
    double noise_s = 3.0;  ///< over which the noise is measured
    // The clock is seen from how the begins of words move, span by span: shares of the error that
    // are followed. The length follows slowly, since its error adds up.
    double beginGain = 0.5;
    double lengthGain = 0.08;
    int knownAfter = 2;        ///< spans, until phases are kept through a word
    float present = 2.0F;      ///< of a word: logarithm of the likelihood of a signal
    float presentTwice = 9.0F; ///< of a character
    float doubtful = 3.0F;     ///< margin of a character
    float formless = 0.2F;     ///< mean of a word; 1.3 is all there can be
    double overAfter_s = 3.0;  ///< without a word
    // Which words repeat others.
    float mostAlike = 8.0F; ///< that one pair of words may say: none decides alone
    float faded = 0.95F;    ///< share of what was known of the order that is left, a word later
    float sureOrder = 6.0F; ///< logarithm of the likelihood of one order over the other
};

/// Words to characters (textreader.h). Row: snr-4.
struct TextParameters
{
    // How often a figure is one of these, per mille: digits mostly; signs stand behind them, and
    // the rest is rare or has no use outside one country.
    double digit = 80.0;
    double minus = 25.0;    ///< (row: none)
    double signFirst = 3.0; ///< any sign but a minus, where no figure stands before it (row: none)
    double commonSign = 20.0; ///< . , / : (row: none)
    double someSign = 8.0;    ///< ( ) ? + = (row: none)
    double apostrophe = 4.0;  ///< (row: none)
    double otherSign = 2.0;   ///< (row: none)
    /// Share of letters that are drawn evenly, not as those of English (row: none).
    double evenLetters = 0.3;
    double mostOfOne = 2.5; ///< odds from one combination: it may be misread (row: snr-2)
    // Logarithms of odds that a blank brings back the letters.
    double unshiftsAtFirst = 0.5; ///< (row: none)
    double missed = 3.0;          ///< where a letter shift may have been missed (row: rayleigh)
    double repeated = 4.0;        ///< for a figure shift that was not needed otherwise (row: none)
    double sure = 4.0;            ///< (row: none)
    double mostOdds = 8.0;        ///< (row: none)
    double mostLearnt = 4.0;      ///< from one group (row: none)
    /// Of a group of letters before which a shift may have been missed (row: snr-4).
    double doubtfulWeight = 0.25;
    unsigned mostWaiting = 8; ///< characters that wait until they show what they are (row: none)
    // ASCII of eight elements, of which the last may be parity (row: none).
    unsigned parityFrom = 24; ///< characters: hardly any text of so many follows a rule by chance
    unsigned parityExceptions = 8; ///< one in so many may be misread
};

/// When a line is looked for (teleprinterreceiver.h). Row: late; speed.
struct SearchParameters
{
    double every_s = 0.5; ///< from one search to the next, at first
    // A strong signal is found in the shorter span, a weak one in the longer.
    double short_s = 2.5;
    double long_s = 7.0;
    int longEvery = 4; ///< searches: one in so many is in the longer span, which costs more
    // The wait between searches grows where there is nothing to be found.
    double waitGrows = 1.15; ///< times, from search to search
    double longestWait_s = 1.5;
    // The first seconds may have looked like another line than what follows.
    double checkEvery_s = 2.5;
    int checks = 2;             ///< so many times it is looked whether it is
    double heardAgain_s = 14.0; ///< of what came before a signal was noticed (row: typed)
};

struct Parameters
{
    LineParameters line;
    SpectrumParameters spectrum;
    EvidenceParameters evidence;
    FramingParameters framing;
    BitStreamParameters bitStream;
    TrackingParameters tracking;
    AcquisitionParameters acquisition;
    StartStopParameters startStop;
    TimeDiversityParameters timeDiversity;
    TextParameters text;
    SearchParameters search;
};

/// Sets "part.member" by its name, for sweeps; false when there is none, or it is no number.
bool setParameter(Parameters& parameters, const std::string& name, double value);

} // namespace teleprinter
