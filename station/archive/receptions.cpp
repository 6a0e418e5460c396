// SPDX-License-Identifier: MIT
#include "station/archive/receptions.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <utility>

namespace morsehost {

namespace {

constexpr double FREQUENCY_TOLERANCE_Hz = 1000.0;
constexpr int RUN = 3;                    // characters
constexpr int MOST_CHARACTERS = 1000;     // that are compared
constexpr std::size_t MOST_AT_ONCE = 200; // earlier ones that one is compared with

// Letters and digits alone: where words end is often misread.
QString comparedText(const ArchiveRecord& record)
{
    QString compared;
    for (const QChar c : record.transmission.text.left(MOST_CHARACTERS)) {
        if (c.isLetterOrNumber())
            compared += c.toUpper();
    }
    return compared;
}

QHash<QString, int> runsOf(const QString& text)
{
    QHash<QString, int> runs;
    for (int i = 0; i + RUN <= text.size(); ++i)
        ++runs[text.mid(i, RUN)];
    return runs;
}

bool isTextAlike(const ArchiveRecord& one, const ArchiveRecord& other)
{
    QString shorter = comparedText(one);
    QString longer = comparedText(other);
    if (shorter.size() > longer.size())
        std::swap(shorter, longer);
    if (shorter.size() < RUN)
        return shorter == longer;
    const QHash<QString, int> runs = runsOf(longer);
    const QHash<QString, int> wanted = runsOf(shorter);
    int common = 0;
    for (auto run = wanted.begin(); run != wanted.end(); ++run)
        common += std::min(run.value(), runs.value(run.key()));
    return 5 * common >= 3 * (shorter.size() - RUN + 1);
}

bool isTimeAlike(const Transmission& one, const Transmission& other)
{
    const qint64 common_us =
        std::min(one.stop_us, other.stop_us) - std::max(one.start_us, other.start_us);
    const qint64 shorter_us = std::min(one.stop_us - one.start_us, other.stop_us - other.start_us);
    return common_us >= 0 && 2 * common_us >= shorter_us;
}

bool isBetter(const ArchiveRecord& one, const ArchiveRecord& other)
{
    const auto value = [](const ArchiveRecord& record) {
        return std::make_pair(
            record.transmission.snr_dB.value_or(-std::numeric_limits<double>::infinity()),
            record.transmission.text.size());
    };
    return value(one) > value(other);
}

} // namespace

bool isSameTransmission(const ArchiveRecord& one, const ArchiveRecord& other)
{
    const Transmission& a = one.transmission;
    const Transmission& b = other.transmission;
    const bool isElsewhere = one.station != other.station || a.receiver != b.receiver;
    const bool isFrequencyAlike =
        !a.frequency_Hz || !b.frequency_Hz ||
        std::abs(*a.frequency_Hz - *b.frequency_Hz) <= FREQUENCY_TOLERANCE_Hz;
    return isElsewhere && a.decoder == b.decoder && isFrequencyAlike && isTimeAlike(a, b) &&
           isTextAlike(one, other);
}

std::vector<ArchivedReception> joinReceptions(const std::vector<ArchivedTransmission>& found)
{
    std::vector<std::size_t> byBegin(found.size());
    std::iota(byBegin.begin(), byBegin.end(), std::size_t(0));
    std::stable_sort(byBegin.begin(), byBegin.end(), [&found](std::size_t a, std::size_t b) {
        return found[a].record.transmission.start_us < found[b].record.transmission.start_us;
    });
    // Each is in the group of the first one that it equals, where its receiver is not in it.
    std::vector<std::size_t> group(found.size());
    std::map<std::size_t, std::set<std::pair<QString, QString>>> receivers; // by group
    std::vector<std::size_t> open; // those that may still go on, in the order of their begins
    for (const std::size_t index : byBegin) {
        const ArchiveRecord& record = found[index].record;
        const auto isOver = [&](std::size_t other) {
            return found[other].record.transmission.stop_us < record.transmission.start_us;
        };
        open.erase(std::remove_if(open.begin(), open.end(), isOver), open.end());
        if (open.size() > MOST_AT_ONCE)
            open.erase(open.begin());
        const auto receiver = std::make_pair(record.station, record.transmission.receiver);
        const auto same = std::find_if(open.begin(), open.end(), [&](std::size_t other) {
            return receivers[group[other]].count(receiver) == 0 &&
                   isSameTransmission(record, found[other].record);
        });
        group[index] = same == open.end() ? index : group[*same];
        receivers[group[index]].insert(receiver);
        open.push_back(index);
    }
    std::map<std::size_t, std::vector<std::size_t>> members; // by group, in their order
    for (std::size_t index = 0; index < found.size(); ++index)
        members[group[index]].push_back(index);
    std::vector<ArchivedReception> joined;
    for (std::size_t index = 0; index < found.size(); ++index) {
        std::vector<std::size_t>& own = members[group[index]];
        if (own.empty())
            continue; // stands with the first of them
        std::stable_sort(own.begin(), own.end(), [&found](std::size_t a, std::size_t b) {
            return isBetter(found[a].record, found[b].record);
        });
        const qint64 best = found[own.front()].id;
        for (const std::size_t member : own)
            joined.push_back({found[member],
                              member == own.front() ? std::nullopt : std::optional<qint64>(best)});
        own.clear();
    }
    return joined;
}

} // namespace morsehost
