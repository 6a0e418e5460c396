// SPDX-License-Identifier: MIT
// What the stages are tuned with, a part per stage: value, unit, why, and the row of the reception
// bench that shows when it is wrong. The bench passes other values to try them without building.
#pragma once

#include "signal/limits.h"

#include <array>
#include <string>

namespace demodulator {

/// Where a keyed tone may be (tonefinder.h).
struct FinderParameters
{
    double lowest_Hz = 60.0;         ///< below are a filter's edge and hum (row: none)
    double noiseNearest_Hz = 40.0;   ///< a tone itself ends here, noise is beyond (row: none)
    double noiseFarthest_Hz = 200.0; ///< narrow receiver filters end here (row: filter-snr3)
    double beside_Hz = 140.0;        ///< still within narrower ones (row: filter-snr3)
    // How much more the power of a keyed tone varies than noise does: that of noise alone varies as
    // much as its mean (1), that of a carrier in noise up to twice (rows: hum, noise).
    double leastSwing = 2.6;
    double leastExcess = 1.6; ///< mean power over that of the surroundings (rows: snr-6, noise)
    // The other tone of frequency shift keying: how far off it is at most, how much of our power it
    // has at least, and how opposite (as a correlation) the two are (row: rtty10).
    double farthestShift_Hz = 1000.0;
    double leastComplement = 0.2;
    double opposite = 0.5;
    // One of several tones that take turns: when it comes, the power of all others varies between
    // this share of its own and the inverse, and so opposite (as a correlation) to it (row: hopping
    // tones).
    double leastSwap = 0.3;
    double inTurn = 0.6;
};

/// How strong the signal is (leveltracker.h). Power of one step over noise of one step is "ratio".
struct LevelParameters
{
    // Nothing weaker is looked for: -7.5 dB in 500 Hz (rows: snr-6, noise).
    double weakestRatio = 0.35;
    // Marks not older than this give the level, each with a weight that falls with its age. Weak
    // signals are averaged for longer, since one mark of theirs says little: below `weakRatio` in
    // proportion, at most so many times (rows: fading, snr-3).
    double span_s = 3.0;
    double memory_s = 0.2;
    double weakRatio = 7.5;
    double longestMemory = 15.0;
    // A mark that was put together wrongly looks weak: fading is slower than this (rows: fading,
    // hum).
    double fastestFade_dB_per_s = 20.0;
};

/// Where the tone is (tonetracker.h).
struct ToneParameters
{
    // Marks not older than this are looked at, and weigh less with age; for longer than for the
    // level, since a tone wanders more slowly than fading goes (row: wander).
    double span_s = 3.0;
    double memory_s = 2.0;
    // No mark shows the tone better than this, however strong: chirp and clicks (row: chirp).
    double leastError_Hz = 0.3;
    double steepest_Hz_per_s = 1.0; ///< deviation of the drift that is expected (row: wander)
    double gain = 0.5;              ///< share of a correction that is made at once
    double largestPull_Hz = 1.0;    ///< per review
    // The tone of a very strong signal is no more certain than at this ratio: sidebands of keying
    // (row: none). Levels are doubted sooner, see LikelihoodParameters.
    double largestRatio = 100.0;
    // Marks so far off are somebody else's (rows: stations, neighbour). How often a mark turned is
    // counted where half a turn is so many deviations of what noise does (rows: stations, snr0).
    double foreign_Hz = 30.0;
    double sureErrors = 4.0;
    // A tone that changes within its marks, as this share of so many shows (of those of a steady
    // one, a third seems to by noise), may be so many times as far off as it changes; and a mark
    // keeps its phase while the tone, off as it is, makes so much of a turn (rows: wobble15,
    // settle120; stations for too much).
    unsigned spreadMarks = 3;
    double bentShare = 0.5;
    double spreadOffset = 2.0;
    double coherentTurn = 0.2;
};

/// The phase of the next mark (phasetracker.h).
struct PhaseParameters
{
    // Only between these energies of a dot over noise density: a strong signal is better off
    // without any belief in its phase; a very weak one finds the phase it looks for in the noise
    // (rows: snr0, snr-3, snr-6).
    double weakestDot = 4.0;
    double strongestDot = 45.0;
    unsigned leastMarks = 6; ///< fewer say nothing of a phase that goes on
    double firstFrequencyError_Hz = 0.6;
    double frequencyWalk_Hz = 0.25; ///< deviation of the frequency after a second
    double phaseWalk = 0.08;        ///< deviation of the phase after a second, radians
    double leastError = 0.1;        ///< of the phase of any mark, radians
    double leastEnergy = 0.5;       ///< of a mark over noise density: no phase is less certain
    double memory_marks = 8.0;      ///< over which the success of prediction is judged
    double leastCoherence = 0.5;    ///< of the predictions, below which nothing is known
    double mostCoherence = 0.999;   ///< no predictions are taken for better
    double leastVariance = 0.02; ///< added to that of the phase that is expected, radians squared
    double largestConcentration = 10.0;
};

/// Crashes of static and clicks (burstmeter.h).
struct BurstParameters
{
    double burst = 4.0;  ///< times the usual power beside the tone (rows: static, clicks)
    double muted = 0.01; ///< of it: a squelch is no measure of what is usual (row: holes)
    // Where noise is heard otherwise, a moment without any was lost on the way and says nothing:
    // no longer than this, and no more often than in this share of time (row: holes).
    double longestLoss_s = 0.05;
    double mostLost = 0.1;
    // Noise of a moment in the past counts as it was then when it was so much more than now (rows:
    // noise that falls).
    double formerNoise = 1.5;
    double usual_s = 2.0;
    double mean_s = 4.0; ///< as the noise near the tone is measured
};

/// Echoes in the gaps (echometer.h). Powers are relative to that of the marks around.
struct EchoParameters
{
    double span_s = 3.0;    ///< that is looked at (row: echo9)
    double every_s = 0.256; ///< it is looked at so often (row: none; speed)
    // Marks are so near, as echoes are late and fading is slow (rows: echo12, echo9;
    // hf-poor, quickfading).
    double around_s = 0.2;
    double strongest = 0.4;   ///< more is a mark (row: echo6)
    double weakest = 0.03;    ///< less does not disturb (row: echo16)
    double overNoise = 4.0;   ///< that noise does not look like an echo (row: hf-poor)
    unsigned edge_steps = 3;  ///< beside a mark: its own edge (row: none)
    double leastGaps_s = 0.4; ///< less says nothing (rows: echo9, hf-poor)
    // Gaps are filled where marks were so long before, and where none were they are not; of a share
    // of each, and of a smaller one once it was so (rows: echo12, echo9, quickfading).
    double shortest_s = 0.03;
    double longest_s = 0.3;
    double sureAgreement = 0.9;
    double leastAgreement = 0.5;
};

/// How well a mark explains some steps (marklikelihood.h).
struct LikelihoodParameters
{
    // Amplitudes that a single mark may have beside the one followed, relative to it: weaker and
    // stronger by about 4 dB, and in a deep fade. Their prices are log probabilities (rows:
    // scatter, fading). Of weak signals only the amplitude followed is believed, since noise finds
    // in every freedom a way to look like a mark (rows: snr-3, snr-6): below these signal-to-noise
    // ratios (energy of a dot over noise density) they become more improbable by `lossOfFreedom`
    // for each factor of e.
    double weaker = 0.62;
    double stronger = 1.5;
    double nearPrice = -1.4;
    double nearFreedom = 60.0;
    double faded = 0.25;
    double fadedPrice = -2.5;
    double fadedFreedom = 300.0;
    double lossOfFreedom = 4.3;
    // Where an echo fills the gaps only the amplitude followed is believed, and some more is
    // expected: what is half as strong is no mark (rows: echo12, echo9; echo6 for the amplitude).
    double besideEcho = 1.25;

    // A strong signal is not trusted beyond this signal-to-noise ratio of one step: rising edges,
    // fading and clicks are no noise that the model knows, and lengths have to count beside levels
    // (rows: hardkeying, fading, fist). A tone may be trusted further, see ToneParameters.
    double largestRatio = 8.0;

    // The phase of a strong signal, one whose dots have this energy over noise density, may drift
    // from part to part of a mark, of so many units each but at least so many steps; chirp and a
    // tone that is not quite hit are no reason to doubt a mark. The price is a logarithm of how
    // improbable that is. Longer parts lose tones that wobble or settle, shorter or cheaper ones
    // believe noise (rows: settle30, wobble15, chirp, all).
    double driftingDot = 60.0;
    double part_units = 0.75;
    double shortestPart_steps = 4.0;
    double driftPrice = 3.0;

    // Log probability that a mark does not have the phase expected (rows: snr0, snr-3).
    double otherPhase = -4.0;
};

/// How long marks and gaps are (timingmodel.h). Lengths are units: of a dot at textbook timing.
struct TimingParameters
{
    // Speeds are tried on a logarithmic scale; of a known speed, only those within a tolerance. The
    // prior is that of amateur traffic: a deviation of the logarithm (rows: clean20, wpm8, wpm45).
    double fastest_wpm = HIGHEST_SPEED_wpm + 4.0; // some to spare, for a hand that hurries
    double slowest_wpm = LOWEST_SPEED_wpm;
    double speedRatio = 1.05;
    double usual_wpm = 20.0;
    double usualDeviation = 0.5;
    double knownTolerance = SET_SPEED_TOLERANCE;

    // Longer gaps are silence: this is where tables end, by time and by the mean of a word gap; and
    // longer marks are a carrier (row: farnsworth).
    double longestGap_s = 2.6;
    double longestGap_wordGaps = 1.8;
    double longestMark_units = 6.0;
    // Shorter ones are clicks, or the edge of a strong signal beside ours (rows: clicks, crowd).
    double shortestMark_units = 0.3;
    double shortestMark_steps = 3.0;
    double shortestGap_units = 0.25;
    double shortestGap_steps = 2.0;
    // Deviation of a length from the grid of steps, in steps: edges fall between them. The judge
    // allows for more (row: none).
    double resolution_steps = 0.7;
    // Probability that is left for marks and gaps beyond the end of a table (row: none).
    double beyondTable = 0.02;

    // Before anything is learnt: mean and deviation, and share of all marks or gaps. The shares are
    // those of plain text: more dots than dashes, a word of five letters. Word gaps reach further
    // to longer lengths than to shorter ones (rows: jitter20, fist, widegaps).
    struct Length
    {
        double mean_units;
        double deviation_units;
        double share;
        double rightTail = 1.0; ///< how much further it reaches to longer lengths
    };
    Length dot = {1.0, 0.22, 0.55};
    Length dash = {3.0, 0.40, 0.45};
    Length elementGap = {1.0, 0.22, 0.60};
    Length characterGap = {3.0, 0.50, 0.32};
    Length wordGap = {7.0, 1.2, 0.08, 3.0};

    // A machine keys lengths of 1, 3 and 7 units: to within this share of each, and what steps can
    // show. How many of all lengths are such is learnt from the last ones, from a share to begin
    // with, between bounds. Only of signals whose weakest dots have less than this energy over
    // noise density, in a fade say: of others the lengths are heard well enough, and an answer at
    // nearly the same tone and speed has another grid (rows: snr-6, snr-3, hf-poor, scatter; fist-3
    // and stations for too much).
    double evenDeviation = 0.02;
    double evenResolution_steps = 0.4;
    double evenShare = 0.1;
    double leastEvenShare = 0.02;
    double mostEvenShare = 0.98;
    double evenMemory = 40.0;
    double evenDot = 150.0;

    // Learning: that first knowledge weighs as much as so many marks, later ones are forgotten
    // after so many; a length counts as at most so many deviations off (rows: heavy, longdash).
    double priorWeight = 8.0;
    double memory = 40.0;
    double farthest_deviations = 3.0;
    // What is learnt stays within these: nobody keys more evenly than 6 % of a unit, as far as
    // steps can show; weights beyond half a unit and dashes beyond these are another speed. The
    // judge's bounds of a dash are those of one mark, these of their mean (row: none).
    double leastDeviation_units = 0.06;
    double leastDashDeviation_units = 0.1;
    double leastUnit = 0.7;
    double mostUnit = 1.4;
    double mostWeight_units = 0.5;
    double shortestDash_units = 2.2;
    double longestDash_units = 5.0;

    // Gaps between characters and words are the most personal of all: their lengths are chosen from
    // a few styles by how well those explain the last ones, the textbook's being likeliest. Widths
    // are shares of the length; prior deviations are of its logarithm (rows: widegaps, farnsworth).
    unsigned keptGaps = 24;
    unsigned leastGaps = 2;
    double characterGapDeviation = 0.25;
    double wordRatioDeviation = 0.2;
    double characterGapWidth = 0.15;
    double wordGapWidth = 0.18;
    double wordGapShare = 0.2;
    double strayGap = 1e-4; ///< density of gaps that are neither
    double learntGapDeviation = 0.17;
    // The styles: how long gaps between characters are, and how many times longer those between
    // words. Textbook, wide as a learner's, narrow as of an old hand (rows: widegaps, farnsworth,
    // fist).
    std::array<double, 11> characterGaps_units = {2.3, 2.6, 3.0, 3.5, 4.1, 4.8,
                                                  5.6, 6.5, 7.6, 9.0, 11.0};
    std::array<double, 5> wordRatios = {1.7, 2.0, 2.33, 2.8, 3.4};
    // How finely the length is looked for from which the next kind is likelier (row: fist).
    double threshold_units = 0.05;

    // Tables of speeds farther than this from the one heard (difference of logarithms) are renewed
    // in one of so many updates: they are least likely to be used (row: none; speed).
    double nearSpeed = 0.25;
    unsigned updatesOfAll = 16;
};

/// The search for the most probable marks, gaps and speeds (trellis.h). All are natural logarithms
/// of probabilities unless a unit is named.
struct TrellisParameters
{
    // Paths so far behind the best are given up (row: snr-6, and speed).
    double beam = 33.0;
    // That a signal begins at some step; that it goes on after a silence, less so much for each
    // step on the scale of speeds in between (rows: snr-6, stations).
    double start = -8.0;
    double resume = -6.0;
    double resumeAtOther = -2.0;
    // That the speed changes at a gap, by one or two steps on the scale (rows: speedup, jumps); or,
    // with a word, by any number up to this one: tables of far slower speeds cost time (row:
    // halves).
    double nextSpeed = -3.0;
    double secondSpeed = -6.0;
    double anySpeed = -12.0;
    unsigned farthestSpeeds = 20;
    // Change of the logarithm of speed that makes other elements of the same lengths (row: none;
    // delay).
    double otherSpeed = 0.45;

    // A steady tone, looked at in blocks: that a mark becomes one, of a length in units from which
    // it may be one; that it ends at some step within a block. It is worth more from block to
    // block, since its phase and amplitude are known from the last, but of signals whose dots have
    // less than this energy over noise density nothing is taken for one: keying looks like a
    // carrier of half its power, and would be swallowed (rows: snr-3, hum).
    double carrier = -15.0;
    double leastCarrier_units = 8.0;
    double carrierEnds = -8.0;
    double carrierGoesOn = 2.5;
    double carrierDot = 12.0;
};

/// When a signal is one, and when its codes are emitted (signalchain.h).
struct DecisionParameters
{
    double review_s = 0.032; ///< decisions are looked at so often (row: none; delay)
    // What is older is decided (rows: snr-3, and delay). Of a signal whose dots have more energy
    // over noise density than this, and whose speed is sure by this margin, in proportion less, but
    // not less than these (rows: jumps, static, scatter). The margin has to be less than the price
    // of another speed after a word, since it hardly gets beyond that.
    double delay_s = 0.9;
    double strongDot = 90.0;
    double sureMargin = 10.0;
    double leastDelay_s = 0.28;
    double leastDelay_units = 5.0;
    // Log likelihood of keying over noise that makes a signal a signal: noise reaches it once in
    // e^25 tries, with some hundred tries a second (rows: noise).
    double confirmingGain = 25.0;
    int leastMarks = 2;    ///< one may be a click (row: none)
    double steady_s = 4.0; ///< a tone without keying is remembered (row: hum)
    // Change of the logarithm of speed that a hand does not make: somebody else keys (row:
    // stations).
    double otherHand = 0.2;
    double farLonger = 2.0;  ///< times the next longest mark is no dash (row: tuneup)
    double learning_s = 0.5; ///< what was learnt of the timing is put to use so often
};

/// Whether it is Morse (morsejudge.h). Rows: those of sounds in place of Morse for too much mercy,
/// beginner, bug and jitter20 for too little.
struct JudgeParameters
{
    // Of one mark or gap, where TimingParameters has bounds of the mean of many.
    double longestDot_units = 1.6;
    double shortestDash_units = 2.4;
    double longestDash_units = 5.6;
    double longestInnerGap_units = 1.8;
    // Shares of marks that may be neither dot nor dash, too long, or at another tone. A beginner
    // keys one mark of fourteen between dot and dash, a teleprinter one of four.
    double mostBetween = 0.1;
    double mostLong = 0.03;
    double mostForeign = 0.25;
    // Of marks after a gap that is not within a character: notes and syllables are mostly alone, of
    // text two in five marks are. While few were heard, more than usual is not believed.
    double mostAlone = 0.7;
    double usuallyAlone = 0.7;
    double mostDotDeviation_units = 0.28;
    // Deviation of a length that the grid of steps adds; more than that of TimingParameters, so
    // that the grid never speaks against Morse.
    double resolution_steps = 1.0;
    double deviations = 1.5; ///< of a count that chance may add to these
    // Tones of a voice and of instruments glide; one mark's tone is known to within an error that
    // noise makes, and counts as another's when it is so far off and so many errors more (rows:
    // speech, music; wobble5 and settle30 for too little).
    double strayTone_Hz = 30.0;
    double strayErrors = 4.0;
    // A share of marks wants more of them than the phase's next value does.
    double leastMarks = 10.0;
    // So many that are Morse were Morse, whatever follows (rows: shortovers; SITOR in bursts).
    double sureMarks = 10.0;
    double memory_marks = 60.0;
};

/// What is heard again, with what came after known (rehearing.h).
struct RehearingParameters
{
    int times = 2;         ///< each with the marks that the last one found (rows: hf-poor, flutter)
    double piece_s = 4.0;  ///< heard at once (row: none; speed)
    double ahead_s = 8.0;  ///< of what comes after that is known (rows: hf-quiet, stations)
    double before_s = 8.0; ///< and of what came before (rows: hf-quiet, hf-poor)
    // So much is heard before it is emitted, if it is Morse; in doubt so much (rows: speech, music;
    // beginner for too little).
    double judged_s = 12.0;
    double heldAtMost_s = 60.0;
    double toneLag_s = 0.5; ///< until a tone is known better (rows: stations, settle120)
    // Rates of fading that are tried, each twice the last one (rows: snr-6, hf-poor; flutter).
    double slowestFading_per_s = 0.3;
    double fastestFading_per_s = 150.0;
    // Steps overlap, so that neighbours have some of their noise in common; and none is more
    // certain than at this ratio: edges and clicks are no fading (rows: snr-6, hf-poor).
    double sharedNoise = 1.5;
    double largestRatio = 32.0;
    // No phase is trusted more; that of a mark above the noise of a step, less in that measure
    // (rows: hf-poor, static; holes).
    double largestConcentration = 30.0;
    // Where the amplitude changes as fast as this, maybe each mark has a phase of its own, at this
    // price as a logarithm; of a tone that changes within its marks, each part has, of so many
    // steps (rows: phase25-0; settle120).
    double steadyFading_per_s = 3.0;
    double ownPhase = 4.0;
    unsigned part_steps = 4;
    // Gaps are filled by an echo when so much of the time it seemed so (rows: echo12, echo9).
    double echoShare = 0.5;
};

/// Which tone is followed (demodulator.h).
struct AttentionParameters
{
    double search_s = 3.0;        ///< span in which a tone is looked for (row: snr-6)
    double searchEvery_s = 0.256; ///< (row: none; speed)
    double heardAgain_s = 6.0;    ///< of what came before a signal was noticed (row: wpm5)
    double beforeFirst_s = 0.3;   ///< heard before its first mark, when heard again (row: none)
    double afterLast_s = 0.05;    ///< not heard again after a transmission (row: none)
    double candidateLife_s = 6.0; ///< one that is not confirmed by then is dropped (row: none)
    double louderCandidate = 2.0; ///< power by which another one takes its place (row: none)
    double sameTone_Hz = 25.0;    ///< so near, it is the same candidate (row: none)
    // A signal is emitted once its speed is sure: dots and dashes have been heard, and any speed at
    // which they would be others is so much less probable (as a logarithm). Not in the first
    // seconds of the input, when a stronger signal may just be pausing (rows: all, crowd, and
    // delay). That of DecisionParameters is of a speed at which codes may be emitted sooner.
    double sureMargin = 12.0;
    double sureAfter_s = 1.0;
    int sureAfter_marks = 3;
    // Almost anything looks like very quick keying for a moment: more marks of it (row: wpm45).
    double quickUnit_s = 0.0255;
    int quick_marks = 30;
    // Shorter units with two tones in turn are a teleprinter's bits (row: rtty10).
    double teleprinterUnit_s = 0.030;
    // Least span in which tones are seen to take turns: in a shorter one noise does by chance
    // (rows: quick-snr3, phase44-3).
    double compared_s = 1.5;
    // Where that is not to be had, so much has to be heard (row: none; delay).
    double heardFirst_s = 2.0;
    int heardFirst_marks = 8;
    double heardFirstAtMost_s = 4.5;
    // Another signal may take over after a silence of so long, longer than any gap between words
    // (rows: stations, widegaps).
    double rivalSilence_s = 0.6;
    double rivalSilence_units = 10.0;
    double ownTone_Hz = 12.0;    ///< so near, it is the signal itself that goes on
    double neighbourPower = 0.3; ///< of its power that was there before the pause: no answer
    // A signal that is followed gives way to another one that was so much stronger (in power, on
    // average) for some seconds of its transmission. Both ways together that is 6 dB, so that
    // fading does not go back and forth between two (rows: all, fading).
    double strongerPower = 2.0;
    double leastCompared_s = 3.0;
    double mostCompared_s = 6.0;
    double compareEvery_s = 1.536;
    double otherTone_Hz = 40.0;
    // A tone that was no Morse is left alone for so long for each mark that was judged, and at most
    // for so long (rows: rtty10, speech10; wpm6 for too long); a candidate
    // that stays without dots, dashes or company is given up after so long, and emitted at the end
    // of the input only when it is shorter than so many marks (rows: time pips, dialling tones).
    double oddMarks = 20.0; ///< that are so many are odd at any speed
    double refusedPerMark_s = 1.5;
    double refused_s = 30.0;
    double unsure_s = 7.0;
    int loneMarks = 4;
    double refusedWidth_Hz = 50.0;
    double noiseSpan_s = 4.0; ///< over which the noise near the tone is measured
};

struct Parameters
{
    FinderParameters finder;
    LevelParameters level;
    ToneParameters tone;
    PhaseParameters phase;
    BurstParameters burst;
    EchoParameters echo;
    LikelihoodParameters likelihood;
    TimingParameters timing;
    TrellisParameters trellis;
    DecisionParameters decision;
    JudgeParameters judge;
    RehearingParameters rehearing;
    AttentionParameters attention;
};

/// Sets "part.member" by its name, for sweeps; false when there is none, or it is not a number.
bool setParameter(Parameters& parameters, const std::string& name, double value);

} // namespace demodulator
