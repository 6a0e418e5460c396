// SPDX-License-Identifier: MIT
// What the receiver for a band is tuned with, a part per stage, and what the chain of each signal
// is tuned with. The rows are those of bench/band that show when a value is wrong.
#pragma once

#include "signal/morse/parameters.h"

#include <limits>
#include <string>

namespace demodulator {

/// Noise and keyed tones (survey.h). A frame is 32 ms.
struct SurveyParameters
{
    // Noise is what the weakest of so many powers show, since keying has gaps: over a span that
    // holds gaps at any speed, and over a short one, so that noise which rises is no signal
    // (row: contest).
    int noise_frames = 94;
    int newNoise_frames = 24;
    int least_frames = 6; ///< fewer say nothing of a mean
    int lowOneIn = 10;
    int search_frames = 94; ///< over which a tone is looked for: 3 s hold gaps at any speed
    double leastSigmas =
        5.0; ///< mean power over noise that makes a tone, in deviations (row: wide)
};

/// What stronger signals explain (shadows.h).
struct ShadowParameters
{
    // What clicks, images and harmonics put beside a stronger signal (rows: contest, wide).
    int compared_frames = 94;       ///< as many as a tone was looked for in
    double clicksReach_Hz = 3000.0; ///< clicks of hard keying are heard that far
    double margin = 2.0;            ///< clicks, images and harmonics are at most so much stronger
    double stronger = 2.0;          ///< than the tone, in power; weaker signals explain nothing
    double keyDown = 0.15;          ///< share of its level with which a signal may be sending
    double negligible = 0.3;        ///< of the noise: what stays below is no shadow
    double leastExcess = 1.7;       ///< over the noise, of what is left
};

/// Two tones of one transmitter (shiftedpairs.h).
struct PairParameters
{
    // How much amplitudes go against each other, as a correlation; and how many times what chance
    // makes of two hands that send at once, until it is a pair, or may be one (rows: mixed,
    // contest).
    double heard_s = 3.0; ///< looked at
    double mean_s = 0.26; ///< over which amplitudes are compared with their mean
    double leastOpposition = 0.2;
    double sure = 4.5;
    double doubtful = 3.0;
    double leastKeyed_s = 1.0;    ///< both, at least, to be sure
    double nearest_Hz = 55.0;     ///< nearer places are one in the filters of a step
    double own_Hz = 75.0;         ///< so near a tone is the one that was asked for
    double mostMerged_Hz = 320.0; ///< shift up to which both tones may make one hump
    double largestRatio = 6.0;    ///< of the powers with which both swing
};

/// Another station on the same frequency (stationchange.h).
struct ChangeParameters
{
    // Nobody answers within a word: shorter pauses are the station's own (row: contest).
    double leastPause_s = 0.15;
    double leastPause_units = 4.5;
    unsigned judgedMarks = 4; ///< after a pause; fewer than these are not compared
    unsigned leastMarks = 2;
    unsigned kept_marks = 16; ///< of the station, for its mean
    // One station differs from itself by less; fading does not change more within a pause (row:
    // contest).
    double leastTone_Hz = 4.0;
    double leastLevel_dB = 6.0;
    double deviations = 4.0;   ///< of what chance makes of these differences
    double afterLast_s = 0.02; ///< from then on the other one is listened to
};

/// Who is listened to, and who is emitted (bandreceiver.h). Spans and distances that a single
/// signal has as well are those of AttentionParameters.
struct AdmissionParameters
{
    double refusedFor_s = 3.0; ///< a tone that was no signal, unless stronger (row: contest)
    // Of the power of the strongest: what is weaker is what quantising, mixers and keying leave of
    // that one in places where there is no noise (row: contest).
    double leastOfStrongest = 1e-4;
    double leastOver_s = 0.8;      ///< of a station between two overs of another (row: contest)
    double beforeResumed_s = 0.02; ///< that over ends so long before the other one goes on
    // An answer on the same frequency is looked for after a silence of so long. On the very tone,
    // what is so many times weaker (in power) is somebody else (row: contest).
    double answerSilence_s = 0.4;
    double answerSilence_units = 8.0;
    double answerReach_Hz = 60.0; ///< on either side of the tone: who answers tunes to that
    double answerLevel = 6.0;
    // A station that sends again is known by its tone for so long: as long as an over of the other
    // (row: contest).
    double remembered_s = 30.0;
    double comesBack_Hz = 6.0; ///< it is as far off at most
    // Signals that may be tried at once, and as many more for each that is emitted: in a full band
    // clicks and noise find no end of candidates, and each takes as long as a signal (row: huge;
    // speed).
    unsigned leastCandidates = 32;
    double candidatesPerSignal = 0.5;
};

/// When a teleprinter is looked for between two tones that take turns (teleprinterlistener.h).
struct TeleprinterParameters
{
    // How many are tried, and for how long (row: mixed; speed).
    unsigned most = 32;       ///< at once: each has a search of its own, which bounds the cost
    double within_s = 6.0;    ///< what gives none by then is none
    double notAgain_s = 10.0; ///< and is not tried again for so long
    unsigned mostTones = 64;  ///< the strongest are looked at, every second
    // So near its tones nobody else is heard, nor between them so near both: the changes from one
    // to the other are as strong there (row: mixed).
    double own_Hz = 40.0;
    double between_Hz = 110.0;
    double heard_s = 3.0; ///< over which its strength is measured
    // So much beside the tones shows how strong the noise is, even that beside the fastest, and
    // lets the tones drift. It is less where somebody else sends, whose keying would be taken for
    // noise: but no less than what the usual speeds need (row: none).
    double mostBeside_Hz = 700.0;
    double leastBeside_Hz = 400.0;
};

struct BandParameters
{
    // Who sends beside a tone has a listener of his own here: to follow the turns of such marks
    // would only draw one signal's tone towards another's, so that noise always leaves a doubt; and
    // marks that change their tone are those of two signals, so that none is enough (row: busy).
    BandParameters()
    {
        signal.tone.sureErrors = 1e9;
        signal.tone.spreadMarks = std::numeric_limits<unsigned>::max();
        // Strong signals beside it are in what is measured, which makes it unsteady; what differs
        // by more is noise that has fallen (row: contest).
        signal.burst.formerNoise = 2.0;
    }

    SurveyParameters survey;
    ShadowParameters shadow;
    PairParameters pair;
    ChangeParameters change;
    AdmissionParameters admission;
    TeleprinterParameters teleprinter;
    Parameters signal; ///< of the chain of each signal
};

/// Sets "part.member" by its name, for sweeps, of the chain as well; false when there is none, or
/// it is not a number.
bool setParameter(BandParameters& parameters, const std::string& name, double value);

} // namespace demodulator
