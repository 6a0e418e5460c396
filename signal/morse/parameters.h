// SPDX-License-Identifier: MIT
// What the stages are tuned with, a part per stage: value, unit, why, and the row of the reception
// bench that tells when it is wrong. The bench hands in others to try them without building anew.
#pragma once

#include <string>

namespace demodulator {

/// How strong the signal is (leveltracker.h). Power of one step over noise of one step is "ratio".
struct LevelParameters
{
    // Nothing weaker is looked for: -7.5 dB in 500 Hz (rows: snr-6, noise).
    double weakestRatio = 0.35;
    // Marks not older than this tell the level, each with a weight that falls with its age. Weak
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
    double span_s = 3.0;   ///< marks not older than this are looked at
    double memory_s = 2.0; ///< and weigh less with age (row: wander)
    // No mark tells the tone better than this, however strong: chirp and clicks (row: chirp).
    double leastError_Hz = 0.3;
    double steepest_Hz_per_s = 1.0; ///< deviation of the drift that is expected (row: wander)
    double gain = 0.5;              ///< share of a correction that is made at once
    double largestPull_Hz = 1.0;    ///< per review
    // The tone of a very strong signal is no more certain than at this ratio: sidebands of keying.
    double largestRatio = 100.0;
    // Marks so far off are somebody else's (rows: stations, neighbour).
    double foreign_Hz = 30.0;
};

/// The phase of the next mark (phasetracker.h).
struct PhaseParameters
{
    // Only between these energies of a dot over noise density: a strong signal is better off
    // without any belief in its phase; a very weak one finds the phase it looks for in the noise
    // (rows: snr0, snr-3, snr-6).
    double weakestDot = 4.0;
    double strongestDot = 45.0;
    unsigned leastMarks = 6;
    double firstFrequencyError_Hz = 0.6;
    double frequencyWalk_Hz = 0.25; ///< deviation of the frequency after a second
    double phaseWalk = 0.08;        ///< deviation of the phase after a second, radians
    double leastError = 0.1;        ///< of the phase of any mark, radians
    double memory_marks = 8.0;      ///< over which the success of prediction is judged
    double leastCoherence = 0.5;    ///< of the predictions, below which nothing is known
    double largestConcentration = 10.0;
};

/// Crashes of static and clicks (burstmeter.h).
struct BurstParameters
{
    double burst = 4.0;  ///< times the usual power beside the tone (rows: static, clicks)
    double muted = 0.01; ///< of it: a squelch is no measure of what is usual
    double usual_s = 2.0;
    double mean_s = 4.0; ///< as the noise near the tone is measured
};

/// When a signal is one, and when its codes are given (signalchain.h).
struct DecisionParameters
{
    double review_s = 0.032; ///< decisions are looked at so often
    double delay_s = 0.9;    ///< what is older is decided (rows: snr-3, and delay)
    // Log likelihood of keying over noise that makes a signal a signal: noise reaches it once in
    // e^25 tries, with some hundred tries a second (rows: noise).
    double confirmingGain = 25.0;
    int leastMarks = 2;    ///< one may be a click
    double steady_s = 4.0; ///< a tone without keying is remembered (row: hum)
    // Change of the logarithm of speed that a hand does not make: somebody else keys (row:
    // stations).
    double otherHand = 0.2;
    double learning_s = 0.5; ///< what was learnt of the timing is put to use so often
};

/// Which tone is followed (demodulator.h).
struct AttentionParameters
{
    double search_s = 3.0; ///< span in which a tone is looked for
    double searchEvery_s = 0.256;
    double heardAgain_s = 6.0;    ///< of what came before a signal was noticed
    double beforeFirst_s = 0.3;   ///< heard before its first mark, when it is heard again
    double afterLast_s = 0.05;    ///< not heard again after a transmission
    double candidateLife_s = 6.0; ///< a candidate that is not confirmed by then is dropped
    double louderCandidate = 2.0; ///< power by which another one takes its place
    double sameTone_Hz = 25.0;    ///< so near, it is the same candidate
    // A signal is given once its speed is sure: dots and dashes have been heard, and any speed at
    // which they would be others is so much less probable (as a logarithm). Not in the first
    // seconds of the input, when a stronger signal may just be pausing (rows: all, crowd, and
    // delay).
    double sureMargin = 12.0;
    double sureAfter_s = 1.0;
    int sureAfter_marks = 3;
    // Where that is not to be had, so much has to be heard.
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
    double noiseSpan_s = 4.0; ///< over which the noise near the tone is measured
};

struct Parameters
{
    LevelParameters level;
    ToneParameters tone;
    PhaseParameters phase;
    BurstParameters burst;
    DecisionParameters decision;
    AttentionParameters attention;
};

/// Sets "part.member" by its name, for sweeps; false when there is none, or it is no number.
bool setParameter(Parameters& parameters, const std::string& name, double value);

} // namespace demodulator
