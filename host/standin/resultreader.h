// SPDX-License-Identifier: MIT
// Reads result documents back into plain structs.
#pragma once

#include "host/hostapi.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

class QIODevice;

namespace TavikResultDataXml {

/// A piece of text and the time of the signal it came from.
struct ResultFrame
{
    unsigned long long timestamp_us; ///< since 1970-01-01 00:00 UTC
    QString text;                    ///< as it was appended
};

/// A run of frames, in their order.
struct ResultBlock
{
    int channel;                     ///< -1 for none
    int format;                      ///< 0 for text
    int flags;                       ///< 0
    std::vector<ResultFrame> frames; ///< may be empty
};

/// One stretch of reception.
struct ResultTransmission
{
    QDateTime startTime;             ///< UTC, as is the other; invalid when the document has none
    QDateTime stopTime;              ///< UTC
    std::vector<ResultBlock> blocks; ///< in their order
};

/// What a file holds.
struct ResultDocument
{
    QString version;                               ///< of the format
    std::vector<ResultTransmission> transmissions; ///< in their order
};

/// The document on an open device; none, and the reason and line in `error`, when that is no
/// complete result document. Elements that it does not know are skipped.
HOST_API std::optional<ResultDocument> readResultDocument(QIODevice& device,
                                                          QString* error = nullptr);

} // namespace TavikResultDataXml
