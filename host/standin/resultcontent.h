// SPDX-License-Identifier: MIT
// What a result document consists of, as it lies in memory. No API.
#pragma once

#include <QDateTime>

#include <memory>
#include <string>
#include <vector>

namespace TavikResultDataXml {

struct FrameContent
{
    unsigned long long timestamp_us;
    std::size_t textEnd; ///< its text begins where that of the frame before ends
};

/// The texts of all frames lie in one string, so that a frame costs little more than its text.
struct BlockContent
{
    int channel;
    int format;
    int flags;
    std::vector<FrameContent> frames;
    std::u16string text;
    bool isFrameOpen = false;
    bool isKept = true; ///< false: takes no frames in
    bool isOwned = false;
    unsigned long long revision = 0; ///< counts the changes
};

struct TransmissionContent
{
    QDateTime startTime; ///< UTC; invalid: not known
    QDateTime stopTime;
    std::vector<std::shared_ptr<BlockContent>> blocks;
    bool isKept = true; ///< that of its blocks
    bool isOwned = false;
    unsigned long long revision = 0; ///< counts the changes, those of the blocks apart
};

using Transmissions = std::vector<std::shared_ptr<const TransmissionContent>>;

} // namespace TavikResultDataXml
