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
constexpr std::size_t FLOAT_LANES = 8; // those of a register of AVX2
typedef float FloatLanes __attribute__((vector_size(FLOAT_LANES * sizeof(float))));

INLINE void load(ScoreLanes& lanes, const Score* from)
{
    std::memcpy(&lanes, from, sizeof lanes);
}

constexpr ScoreLanes LANE_NUMBERS = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

INLINE void raise(ScoreLanes& lanes, const ScoreLanes& others)
{
    lanes = lanes > others ? lanes : others;
}

INLINE Score largest(ScoreLanes& v)
{
    raise(v, __builtin_shufflevector(v, v, 8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7));
    raise(v, __builtin_shufflevector(v, v, 4, 5, 6, 7, 0, 1, 2, 3, 12, 13, 14, 15, 8, 9, 10, 11));
    raise(v, __builtin_shufflevector(v, v, 2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13));
    raise(v, __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
    return v[0];
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

// Lengths are weighed in blocks of so many.
constexpr std::size_t BLOCK = 8 * FLOAT_LANES;

// What the whole parts behind the first one of a mark are, by length within a block: the sums where
// they begin, and the magnitude of all of them together.
struct WholeParts
{
    std::array<float, BLOCK> re, im, drifted;
};

template <bool KNOWN_PHASE, bool MAY_DRIFT>
INLINE void weigh(const MarkWeighing& weighing, const StepSums& sums, std::size_t first,
                  std::size_t count, const WholeParts& parts, std::int32_t* out)
{
    constexpr float LARGEST = 1e6F; // far beyond what is believed of any mark
    const AmplitudeChoice even = weighing.choices[0];
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t length = first + i;
        const float re = sums.re[length];
        const float im = sums.im[length];
        float whole = 2.0F * magnitude(sums.re[0] - re, sums.im[0] - im);
        if (MAY_DRIFT)
            whole = std::max(whole, parts.drifted[i] +
                                        2.0F * magnitude(parts.re[i] - re, parts.im[i] - im));
        whole = std::min(LARGEST, whole);
        const float energy = sums.energy[0] - sums.energy[length];
        // The most probable amplitude, as if its phase were known; then the phase is averaged over.
        float factor = even.factor;
        float logProbability = even.logProbability;
        float fit = logProbability + factor * (whole - factor * energy);
        for (std::size_t other = 1; other < MarkWeighing::CHOICES; ++other) {
            const AmplitudeChoice choice = weighing.choices[other];
            const float itsFit =
                choice.logProbability + choice.factor * (whole - choice.factor * energy);
            const bool better = itsFit > fit;
            fit = better ? itsFit : fit;
            factor = better ? choice.factor : factor;
            logProbability = better ? choice.logProbability : logProbability;
        }
        float evidence = logBesselI0(factor * whole);
        if (KNOWN_PHASE) {
            const float turnedRe = 2.0F * factor * (sums.turnedRe[0] - sums.turnedRe[length]);
            const float turnedIm = 2.0F * factor * (sums.turnedIm[0] - sums.turnedIm[length]);
            const float expected =
                logBesselI0(
                    std::min(LARGEST, magnitude(turnedRe + weighing.concentration, turnedIm))) -
                weighing.concentrationCost;
            evidence = std::max(evidence + weighing.otherPhase, expected);
        }
        out[i] = evidenceOf(logProbability - factor * factor * energy + evidence);
    }
}

template <bool KNOWN_PHASE>
INLINE void weighAll(const MarkWeighing& weighing, const StepSums& sums, std::size_t first,
                     std::size_t count, std::int32_t* out)
{
    WholeParts parts;
    if (!weighing.mayDrift) {
        weigh<KNOWN_PHASE, false>(weighing, sums, first, count, parts, out);
        return;
    }
    // Parts are counted back from the end, where marks of all lengths have them in common.
    std::size_t base = 0;
    float drifted = 0.0F;
    for (std::size_t begin = 0; begin < count; begin += BLOCK) {
        const std::size_t block = std::min(BLOCK, count - begin);
        for (std::size_t i = 0; i < block;) {
            const std::size_t length = first + begin + i;
            while (base + weighing.part_steps < length) {
                const std::size_t next = base + weighing.part_steps;
                drifted +=
                    2.0F * magnitude(sums.re[base] - sums.re[next], sums.im[base] - sums.im[next]) -
                    weighing.driftCost;
                base = next;
            }
            const std::size_t end = std::min(block, i + base + weighing.part_steps + 1 - length);
            for (; i < end; ++i) {
                parts.re[i] = sums.re[base];
                parts.im[i] = sums.im[base];
                parts.drifted[i] = drifted;
            }
        }
        weigh<KNOWN_PHASE, true>(weighing, sums, first + begin, block, parts, out + begin);
    }
}

INLINE Peak peakOf(const SummedRow& row, const Score* b)
{
    // The largest in each lane, and the group that it stood in first.
    ScoreLanes most = ScoreLanes{} + NEVER;
    ScoreLanes where = {};
    for (std::uint64_t groups = row.groups; groups != 0; groups &= groups - 1) {
        const int group = __builtin_ctzll(groups);
        const std::size_t i = static_cast<std::size_t>(group) * LANES;
        ScoreLanes x;
        ScoreLanes y;
        ScoreLanes z;
        load(x, row.a + i);
        load(y, b + i);
        load(z, row.c + i);
        const ScoreLanes sum = x > NEVER ? x + y + z : ScoreLanes{} + NEVER;
        const ScoreLanes better = sum > most;
        most = better ? sum : most;
        where = better ? ScoreLanes{} + static_cast<Score>(group) : where;
    }
    // The first of the groups in which it stands, then the first of its lanes.
    ScoreLanes all = most;
    const Score score = largest(all);
    if (score <= NEVER)
        return {};
    const ScoreLanes index = where * static_cast<Score>(LANES) + LANE_NUMBERS;
    ScoreLanes backwards = most == score ? -index : ScoreLanes{} + NEVER;
    return {score, static_cast<std::size_t>(-largest(backwards))};
}

} // namespace

FOR_EACH_PROCESSOR
void peaksOfSums(const SummedRow* rows, std::size_t count, const Score* b, Peak* peaks)
{
    for (std::size_t row = 0; row < count; ++row)
        peaks[row] = rows[row].groups != 0 ? peakOf(rows[row], b) : Peak();
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
void raiseFromNeighbours(const std::int32_t* gaps, const std::int32_t* changes, int neighbours,
                         std::size_t speeds, std::int32_t* best, std::int32_t* from)
{
    for (int step = -neighbours; step <= neighbours; ++step) {
        const std::int32_t change = changes[step < 0 ? -step : step];
        const std::int32_t* const gap = gaps + step;
        for (std::size_t speed = 0; speed < speeds; ++speed) {
            const std::int32_t ended = gap[speed] + change;
            const bool better = gap[speed] > NEVER && ended > best[speed];
            best[speed] = better ? ended : best[speed];
            from[speed] = better ? step : from[speed];
        }
    }
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
        weighAll<true>(weighing, sums, first, count, out);
    else
        weighAll<false>(weighing, sums, first, count, out);
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
