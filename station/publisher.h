// SPDX-License-Identifier: MIT
// Where a station reports what goes on: its page, a broker.
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace morsehost {

struct ArchiveRecord;

/// A receiver as it is shown.
struct ReceiverFacts
{
    QString name;
    QString decoder;
    QString state;                           ///< as stateName says it
    QString problem;                         ///< why it is down; empty otherwise
    qint64 bytesLost = 0;                    ///< of samples that came too fast
    std::optional<double> frequency_Hz = {}; ///< that it is tuned to, where that is known

    bool operator==(const ReceiverFacts& other) const;
};

/// Called from the station's thread; returns at once.
class Publisher
{
public:
    virtual ~Publisher();

    /// All that there are, after any of them has changed.
    virtual void receivers(const std::vector<ReceiverFacts>& all) = 0;
    /// An object that a decoder wrote, as docs/formats/json.md describes them.
    virtual void heard(const QString& receiver, const QJsonObject& object) = 0;
    virtual void transmission(const ArchiveRecord& record) = 0;
    /// A few times a second.
    virtual void tick() = 0;
};

} // namespace morsehost
