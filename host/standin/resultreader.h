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

struct ResultFrame
{
    unsigned long long timestamp_us; ///< since 1970-01-01 00:00 UTC
    QString text;
};

struct ResultBlock
{
    int channel;
    int format;
    int flags;
    std::vector<ResultFrame> frames;
};

struct ResultTransmission
{
    QDateTime startTime; ///< UTC, as is the other; invalid when the document has none
    QDateTime stopTime;
    std::vector<ResultBlock> blocks;
};

struct ResultDocument
{
    QString version;
    std::vector<ResultTransmission> transmissions;
};

/// The document on an open device; none, and the reason and line in `error`, when that is no
/// complete result document. Elements that it does not know are skipped.
HOST_API std::optional<ResultDocument> readResultDocument(QIODevice& device,
                                                          QString* error = nullptr);

} // namespace TavikResultDataXml
