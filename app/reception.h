// SPDX-License-Identifier: MIT
// What a command receives, from its first source to its last: the stations that decode it, and the
// one screen on which all of it is shown.
#pragma once

#include "app/options/receptionoptions.h"
#include "app/options/teleprinteroptions.h"
#include "app/receptionarchive.h"
#include "app/reporter.h"
#include "app/transmissionpictures.h"
#include "host/standin/hosttree.h"
#include "station/decoders.h"
#include "station/io/output.h"
#include "station/morsestation.h"
#include "station/soundjob.h"
#include "station/teleprinterstation.h"

#include <map>
#include <memory>
#include <optional>

namespace morsehost {

/// One recording, pipe or list of codes.
struct ReceivedSource
{
    QString name;
    unsigned long long start_us = 0;
    std::optional<demodulator::Settings> demodulator;
    RecordingKeys keys; ///< for the archive; empty for what comes but once
};

class Reception
{
public:
    explicit Reception(const ReceptionOptions& options, LineListener listener = {});
    /// Of the choice, what follows the decoder counts.
    Reception(const ReceptionOptions& options, const TeleprinterChoice& choice,
              LineListener listener);

    /// False, and said on standard error, when there is no such alphabet or map for the decoder, or
    /// nothing can be saved.
    bool canBegin(const QString& decoder = QLatin1String(MORSE_DECODER));
    // A station for the next source; it ends with `end`. Only where `canBegin`.
    MorseStation& begin(const ReceivedSource& source, bool isOneOfSeveral = false);
    TeleprinterStation& beginTeleprinter(const ReceivedSource& source, const QString& decoder,
                                         bool isOneOfSeveral);
    /// Where what is heard of the current source goes; the observer only with pictures.
    SoundSinks sinks();
    void end(SourceEnd how = SourceEnd::Whole);
    /// All is over. Returns the exit status as far as output and files decide it.
    int finish();

    /// The output takes no more and nothing is saved, so there is no use in going on.
    bool isPointless() const;

private:
    StationSettings settings() const;
    TeleprinterSettings settings(const QString& decoder) const;
    bool canShow(const QString& decoder);
    void chooseMap(const QString& decoder);
    bool canKeep();
    StationListener& listener(const ReceivedSource& source);

    ReceptionOptions m_options;
    TeleprinterChoice m_choice;
    Output m_output;
    std::unique_ptr<Reporter> m_reporter;
    ReceptionArchive m_archive;
    ArchivingListener m_listener;
    HostTree m_tree;
    std::optional<MorsePictures> m_morsePictures;
    std::optional<TeleprinterPictures> m_teleprinterPictures;
    std::optional<MorseStation> m_station;           ///< goes before the tree
    std::optional<TeleprinterStation> m_teleprinter; ///< likewise
    std::map<QString, bool> m_canBegin;              ///< decoders that were tried
    std::map<QString, QString> m_maps;               ///< of decoders that were found
    std::optional<bool> m_canKeep;                   ///< once it was tried
    SaveLosses m_lost;
    long long m_lostTransmissions = 0; ///< of teleprinters
};

} // namespace morsehost
