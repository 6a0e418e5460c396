// SPDX-License-Identifier: MIT
// Stage: start and stop elements. Which characters were sent, and when, is searched as a whole:
// every place may begin a character, and the best sequence of characters and pauses between them
// wins, so that one wrong start element is corrected by those that follow.
#pragma once

#include "signal/teleprinter/evidence.h"
#include "signal/teleprinter/parameters.h"

#include <vector>

namespace teleprinter {

/// Start element, data elements, stop.
struct FrameFormat
{
    int dataBits = 5;

    /// Nodes to where the next character may begin. The stop is one element at least; a little less
    /// is granted to clocks that differ.
    int nodes() const { return (1 + dataBits) * NODES + NODES - 1; }
};

/// How long the sender's pauses between characters are, learnt from those that were read.
class PausePrior
{
public:
    explicit PausePrior(const FramingParameters& parameters = {});

    /// Nodes beyond FrameFormat::nodes(); longer ones are all alike.
    static constexpr int LONGEST = 3 * NODES;

    /// Logarithm of how probable a pause of so many nodes is; below 0: any longer one.
    float operator[](int nodes) const
    {
        return m_logs[static_cast<std::size_t>(nodes < 0 || nodes > LONGEST ? LONGEST + 1 : nodes)];
    }
    /// Nothing is known: all pauses are alike.
    bool isFlat() const { return m_isFlat; }

    void learn(int nodes, float weight);
    /// Puts what was learnt into force.
    void update();

private:
    FramingParameters m_parameters;
    std::vector<float> m_counts;
    std::vector<float> m_logs;
    bool m_isFlat = true;
};

struct Frame
{
    int node = 0;       ///< where the start element begins
    int pause = -1;     ///< nodes since the end of the frame before; -1: long, or none before
    unsigned word = 0;  ///< first data element is bit 0, mark is 1
    float score = 0.0F; ///< logarithm of the likelihood against noise alone
    /// Part of it that start and stop bring over elements that may be either.
    float framing = 0.0F;
    float margin = 0.0F;       ///< of its least sure data element
    bool afterSilence = false; ///< neither mark nor character came before it
};

struct FrameSearch
{
    FrameFormat format;
    /// Turn of the phase, in radians, that the mark tone is ahead of the space tone in one element;
    /// spans of one tone within a character then add up in phase. None where the tones are not yet
    /// known so well.
    bool coherent = false;
    double turn = 0.0;
    /// Which node of an element is where it shows that the line idles. Its middle shows best where
    /// the next character begins; its last node counts nothing of that one.
    int idleAt = NODES / 2;
    FramingParameters parameters;
};

struct Frames
{
    std::vector<Frame> list; ///< in order of time
    float score = 0.0F;      ///< of the whole span, pauses included, against noise alone
    int unexplained = 0;     ///< nodes between frames at which there was no mark
};

/// From a node on, which is the end of a frame where `afterFrame` says so.
Frames findFrames(const Evidence& evidence, const FrameSearch& search, const PausePrior& pauses,
                  int from, bool afterFrame);

/// The score of frames that were found with a flat prior, each pause weighed after those before it:
/// those of a machine are all alike, those of a hand may be any.
float scoreOfSender(const Frames& frames, const FramingParameters& parameters = {});

} // namespace teleprinter
