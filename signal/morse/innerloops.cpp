// SPDX-License-Identifier: MIT
#include "signal/morse/innerloops.h"

#include "signal/logarithms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

// A version of a function for each kind of processor, one of which is chosen when the program
// starts. Sanitizers cannot follow that choice.
#if defined(__x86_64__) && defined(__linux__) && defined(__GNUC__) && !defined(__clang__) &&       \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define FOR_EACH_PROCESSOR __attribute__((target_clones("avx2", "default")))
#else
#define FOR_EACH_PROCESSOR
#endif
#define INLINE inline __attribute__((always_inline))

namespace demodulator {

namespace {

// Vectors of one length, whatever a processor has: compilers split them where it has less.
typedef Score ScoreLanes __attribute__((vector_size(LANES * sizeof(Score))));
constexpr std::size_t FLOAT_LANES = 8;
typedef float FloatLanes __attribute__((vector_size(FLOAT_LANES * sizeof(float))));

INLINE void load(ScoreLanes& lanes, const Score* from)
{
    std::memcpy(&lanes, from, sizeof lanes);
}

INLINE void load(FloatLanes& lanes, const float* from)
{
    std::memcpy(&lanes, from, sizeof lanes);
}

// Square root of a sum of squares; std::hypot guards against overflow, which is no danger here.
INLINE float magnitude(float re, float im)
{
    return std::sqrt(re * re + im * im);
}

INLINE std::int32_t evidenceOf(float ratio)
{
    constexpr auto MOST = static_cast<float>(MOST_EVIDENCE);
    const float scaled = ratio * static_cast<float>(SCORES_PER_NAT);
    const float bounded = std::min(MOST, std::max(-MOST, scaled));
    return static_cast<std::int32_t>(bounded + (bounded < 0.0F ? -0.5F : 0.5F));
}

struct Lengths
{
    std::size_t begin, end;
};

// Marks whose lengths have the same number of whole parts behind their first one: `drifted` is the
// magnitude of those parts together, `base` the index where they begin.
template <bool KNOWN_PHASE>
INLINE void weigh(const MarkWeighing& weighing, const StepSums& sums, Lengths lengths,
                  std::size_t base, float drifted, std::int32_t* out)
{
    constexpr float LARGEST = 1e6F; // far beyond what is believed of any mark
    const AmplitudeChoice first = weighing.choices[0];
    for (std::size_t length = lengths.begin; length < lengths.end; ++length) {
        float whole = 2.0F * magnitude(sums.re[0] - sums.re[length], sums.im[0] - sums.im[length]);
        const float parts = drifted + 2.0F * magnitude(sums.re[base] - sums.re[length],
                                                       sums.im[base] - sums.im[length]);
        whole = std::min(LARGEST, std::max(whole, parts));
        const float energy = sums.energy[0] - sums.energy[length];
        // The most probable amplitude, as if its phase were known; then the phase is averaged over.
        float factor = first.factor;
        float logProbability = first.logProbability;
        float fit = logProbability + factor * (whole - factor * energy);
        for (std::size_t i = 1; i < MarkWeighing::CHOICES; ++i) {
            const AmplitudeChoice choice = weighing.choices[i];
            const float itsFit =
                choice.logProbability + choice.factor * (whole - choice.factor * energy);
            const bool better = itsFit > fit;
            fit = better ? itsFit : fit;
            factor = better ? choice.factor : factor;
            logProbability = better ? choice.logProbability : logProbability;
        }
        float evidence = logBesselI0(factor * whole);
        if (KNOWN_PHASE) {
            const float re = 2.0F * factor * (sums.turnedRe[0] - sums.turnedRe[length]);
            const float im = 2.0F * factor * (sums.turnedIm[0] - sums.turnedIm[length]);
            const float expected =
                logBesselI0(std::min(LARGEST, magnitude(re + weighing.concentration, im))) -
                weighing.concentrationCost;
            evidence = std::max(evidence + weighing.otherPhase, expected);
        }
        out[length - lengths.begin] =
            evidenceOf(logProbability - factor * factor * energy + evidence);
    }
}

template <bool KNOWN_PHASE>
INLINE void weighAll(const MarkWeighing& weighing, const StepSums& sums, Lengths lengths,
                     std::int32_t* out)
{
    if (!weighing.mayDrift) {
        weigh<KNOWN_PHASE>(weighing, sums, lengths, 0, 0.0F, out);
        return;
    }
    // Parts are counted back from the end, where all these marks have them in common.
    std::size_t base = 0;
    float drifted = 0.0F;
    for (std::size_t begin = lengths.begin; begin < lengths.end;) {
        while (base + weighing.part_steps < begin) {
            const std::size_t next = base + weighing.part_steps;
            drifted +=
                2.0F * magnitude(sums.re[base] - sums.re[next], sums.im[base] - sums.im[next]) -
                weighing.driftCost;
            base = next;
        }
        const std::size_t end = std::min(lengths.end, base + weighing.part_steps + 1);
        weigh<KNOWN_PHASE>(weighing, sums, {begin, end}, base, drifted,
                           out + (begin - lengths.begin));
        begin = end;
    }
}

} // namespace

FOR_EACH_PROCESSOR
Peak peakOfSums(const Score* a, const Score* b, const Score* c, const std::vector<Run>& runs,
                std::size_t count)
{
    // The largest in each lane, and the group that it stood in first.
    ScoreLanes most = ScoreLanes{} + NEVER;
    ScoreLanes where = {};
    for (const Run& run : runs) {
        const std::size_t end = std::min(run.end, count);
        for (std::size_t i = run.begin; i < end; i += LANES) {
            ScoreLanes x;
            ScoreLanes y;
            ScoreLanes z;
            load(x, a + i);
            load(y, b + i);
            load(z, c + i);
            const ScoreLanes sum = x + y + z;
            const ScoreLanes better = sum > most;
            most = better ? sum : most;
            where = better ? ScoreLanes{} + static_cast<Score>(i / LANES) : where;
        }
    }
    // Score and index as one number, the greater the better and the earlier.
    std::array<std::int32_t, LANES> keys{};
    for (std::size_t lane = 0; lane < LANES; ++lane) {
        const std::int32_t index =
            static_cast<std::int32_t>(where[lane]) * static_cast<std::int32_t>(LANES) +
            static_cast<std::int32_t>(lane);
        keys[lane] = static_cast<std::int32_t>(most[lane]) * 0x10000 + 0xffff - index;
    }
    std::int32_t best = keys[0];
    for (const std::int32_t key : keys)
        best = std::max(best, key);
    if (best >> 16 <= NEVER)
        return {};
    return {best >> 16, static_cast<std::size_t>(0xffff - (best & 0xffff))};
}

FOR_EACH_PROCESSOR
std::uint64_t weighGroups(std::uint64_t groups, std::size_t count, std::uint32_t reference,
                          const std::uint32_t* references, const std::int32_t* additions,
                          const Score* best, Score least, Score* offsets)
{
    std::uint64_t live = 0;
    for (std::size_t group = 0; group < count; ++group) {
        const std::size_t first = group * LANES;
        if ((groups >> group & 1) == 0) {
            std::fill_n(offsets + first, LANES, NEVER);
            continue;
        }
        std::int32_t sums[LANES];
        for (std::size_t i = 0; i < LANES; ++i)
            sums[i] = static_cast<std::int32_t>(references[first + i] - reference);
        if (additions) {
            for (std::size_t i = 0; i < LANES; ++i)
                sums[i] =
                    static_cast<std::int32_t>(static_cast<std::uint32_t>(sums[i]) +
                                              static_cast<std::uint32_t>(additions[first + i]));
        }
        Score most = 3 * NEVER;
        for (std::size_t i = 0; i < LANES; ++i) {
            const auto offset = static_cast<Score>(
                std::min<std::int32_t>(MOST_SCORE, std::max<std::int32_t>(NEVER, sums[i])));
            offsets[first + i] = best[first + i] > NEVER ? offset : NEVER;
            most = std::max(most, static_cast<Score>(offset + best[first + i]));
        }
        live |= static_cast<std::uint64_t>(most >= least) << group;
    }
    return live;
}

FOR_EACH_PROCESSOR
void logarithms(const float* x, float* out, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        out[i] = quickLog(x[i]);
}

FOR_EACH_PROCESSOR
void weighMarks(const MarkWeighing& weighing, const StepSums& sums, std::size_t first,
                std::size_t count, std::int32_t* out)
{
    if (weighing.concentration > 0.0F)
        weighAll<true>(weighing, sums, {first, first + count}, out);
    else
        weighAll<false>(weighing, sums, {first, first + count}, out);
}

FOR_EACH_PROCESSOR
ComplexSum correlate(const float* aRe, const float* aIm, const float* bRe, const float* bIm,
                     std::size_t count)
{
    FloatLanes re = {};
    FloatLanes im = {};
    std::size_t i = 0;
    for (; i + FLOAT_LANES <= count; i += FLOAT_LANES) {
        FloatLanes ar;
        FloatLanes ai;
        FloatLanes br;
        FloatLanes bi;
        load(ar, aRe + i);
        load(ai, aIm + i);
        load(br, bRe + i);
        load(bi, bIm + i);
        re += ar * br + ai * bi;
        im += ai * br - ar * bi;
    }
    ComplexSum sum = {0.0F, 0.0F};
    for (std::size_t lane = 0; lane < FLOAT_LANES; ++lane) {
        sum.re += re[lane];
        sum.im += im[lane];
    }
    for (; i < count; ++i) {
        sum.re += aRe[i] * bRe[i] + aIm[i] * bIm[i];
        sum.im += aIm[i] * bRe[i] - aRe[i] * bIm[i];
    }
    return sum;
}

FOR_EACH_PROCESSOR
void raiseToDensity(const LengthDensity& density, float spacing, float* p, std::size_t count)
{
    // Both sides together are one distribution, so that its height is the mean of both widths'.
    constexpr auto NORM = static_cast<float>(STUDENT_NORM);
    constexpr auto DEGREES = static_cast<float>(STUDENT_DEGREES);
    const float height =
        density.share / (NORM * density.deviation * 0.5F * (1.0F + density.rightTail));
    const float left = 1.0F / density.deviation;
    const float right = left / density.rightTail;
    for (std::size_t i = 0; i < count; ++i) {
        const float distance =
            static_cast<float>(static_cast<std::int32_t>(i)) * spacing - density.mean;
        const float x = distance * (distance > 0.0F ? right : left);
        const float width = 1.0F + x * x / DEGREES;
        p[i] = std::max(p[i], height / (width * width * width));
    }
}

} // namespace demodulator
