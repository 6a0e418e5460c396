// SPDX-License-Identifier: MIT
// morsehost decode: sound to text.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/console/progress.h"
#include "app/options/soundoptions.h"
#include "app/options/teleprinteroptions.h"
#include "app/reception.h"
#include "station/archive/archive.h"
#include "station/archive/recording.h"
#include "station/decoders.h"
#include "station/finddecoder.h"
#include "station/io/interrupt.h"
#include "station/soundjob.h"

#include <QHash>

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

namespace morsehost {

namespace {

constexpr int MAX_JOBS = 256;

// So many recordings may be heard before their turn.
constexpr std::size_t MAX_AHEAD = 64;

// How often the progress is looked at.
constexpr std::chrono::milliseconds REFRESH(100);

// Hears several sounds at once and decodes them one after the other, so that what is shown and
// saved does not depend on how many are heard at once.
class Decoding
{
public:
    Decoding(const ReceptionOptions& options, const TeleprinterChoice& choice,
             std::vector<SoundRequest> sounds, std::size_t atOnce)
        : m_options(options)
        , m_choice(choice)
        , m_sounds(std::move(sounds))
        , m_atOnce(atOnce)
        , m_reception(options, choice,
                      [this](bool lineStaysOpen) { m_progress.makeRoom(lineStaysOpen); })
        , m_jobs(m_sounds.size())
        , m_isOneOfSeveral(m_sounds.size() > 1)
    {
    }

    int run()
    {
        bool isPossible = leaveOutArchived();
        for (m_current = 0; m_current < m_sounds.size() && isPossible; ++m_current) {
            isPossible = decodeCurrent();
            m_jobs[m_current].reset();
        }
        return std::max(m_reception.finish(), m_status);
    }

private:
    // What changes what is decoded: decoded otherwise, a recording is another one to the archive.
    QStringList decodingWords(const SoundRequest& sound) const
    {
        const auto number = [](const auto& value) {
            return value ? QString::number(*value, 'g', 15) : QString();
        };
        QStringList words = {sound.decoder, m_options.alphabet.name, number(m_options.frequency_Hz),
                             number(sound.demodulator.tone_Hz),
                             number(sound.demodulator.speed_wpm)};
        words += sound.channel ? QString::number(*sound.channel) : QString();
        words += QString::number(static_cast<int>(m_options.startRule));
        words += QString::number(m_options.start_us);
        if (sound.decoder == QLatin1String(MORSE_DECODER) ||
            sound.decoder == QLatin1String(DECODER_AS_FOUND)) {
            // What is not set is no part of the key: what is archived already keeps its own.
            if (!m_options.alphabet.cutNumbers)
                words += QStringLiteral("no cut numbers");
            if (!sound.demodulator.isLive)
                words += QStringLiteral("heard again");
        }
        if (sound.decoder == QLatin1String(MORSE_DECODER))
            return words;
        const teleprinter::Known& known = sound.teleprinter.known;
        words += {m_choice.map,
                  number(known.baud),
                  number(known.shift_Hz),
                  QString::number(static_cast<int>(known.reversed.value_or(false))),
                  known.parity ? QString::number(static_cast<int>(*known.parity)) : QString(),
                  QString::number(static_cast<int>(sound.teleprinter.unshift))};
        return words;
    }

    // Each recording is archived once, however often it is tried. False when the archive cannot be
    // asked.
    bool leaveOutArchived()
    {
        if (m_options.archive.isEmpty())
            return true;
        QString error;
        const std::unique_ptr<Archive> archive = Archive::open(m_options.archive, error);
        std::vector<SoundRequest> wanted;
        for (const SoundRequest& sound : m_sounds) {
            const RecordingKeys keys =
                sound.isPipe ? RecordingKeys()
                             : recordingKeys(sound.name, decodingWords(sound), sound.channel);
            const std::optional<bool> isThere = archive && !keys.content.isEmpty()
                                                    ? archive->hasRecording(keys.content)
                                                    : std::optional<bool>(false);
            if (!archive || !isThere) {
                complainOf(QStringLiteral("archive"), archive ? archive->error() : error);
                return false;
            }
            if (*isThere) {
                complain(sound.name, QStringLiteral("is in the archive"));
                continue;
            }
            m_keys.insert(sound.name, keys);
            wanted.push_back(sound);
        }
        m_sounds = std::move(wanted);
        return true;
    }

    // False when there is no use in going on.
    bool decodeCurrent()
    {
        // A pipe may bring nothing for long; what is wrong is said before.
        const SoundRequest& sound = m_sounds[m_current];
        if (sound.isPipe && sound.decoder != QLatin1String(DECODER_AS_FOUND) &&
            !canBegin(sound.decoder))
            return false;
        startJobs();
        SoundJob& job = *m_jobs[m_current];
        while (!job.facts())
            wait(job);
        const QString& name = sound.name;
        const SoundFacts& facts = *job.facts();
        if (!facts.error.isEmpty())
            return complainOf(name, facts.error);
        if (!facts.remark.isEmpty())
            remark(name, facts.remark);
        if (facts.decoder == QLatin1String(MORSE_DECODER) && m_choice.hasMap())
            remark(name, QStringLiteral("--map is for teleprinters"));
        const std::optional<unsigned long long> start_us =
            startTime(m_options, sound, facts.recorded_us, facts.arrived_us);
        if (!start_us)
            return complainOf(name, noStartTime());
        if (!canBegin(facts.decoder))
            return false;
        const ReceivedSource source = {name, *start_us, facts.demodulator, m_keys.value(name)};
        if (facts.decoder == QLatin1String(MORSE_DECODER))
            m_reception.begin(source, m_isOneOfSeveral);
        else
            m_reception.beginTeleprinter(source, facts.decoder, m_isOneOfSeveral);
        while (!job.isOver() && !m_reception.isPointless()) {
            if (!job.deliver(m_reception.sinks()))
                wait(job);
        }
        const bool isHeard = job.isOver() && !isInterrupted();
        m_reception.end(!isHeard                ? SourceEnd::Interrupted
                        : job.error().isEmpty() ? SourceEnd::Whole
                                                : SourceEnd::Damaged);
        if (job.isOver() && !job.closingRemark().isEmpty())
            remark(name, job.closingRemark());
        if (job.isOver() && !job.error().isEmpty())
            complainOf(name, job.error());
        return !m_reception.isPointless() && !isInterrupted();
    }

    bool canBegin(const QString& decoder)
    {
        if (m_reception.canBegin(decoder))
            return true;
        m_status = EXIT_BAD_INPUT;
        return false;
    }

    void remark(const QString& name, const QString& text)
    {
        m_progress.makeRoom(false);
        complain(name, text);
    }

    bool complainOf(const QString& name, const QString& reason)
    {
        remark(name, reason);
        m_status = EXIT_BAD_INPUT;
        return true;
    }

    // In their order, so that the one that is decoded next is always heard.
    void startJobs()
    {
        std::size_t running = 0;
        for (std::size_t i = m_current; i < m_started; ++i)
            running += m_jobs[i]->isDone() ? 0 : 1;
        while (m_started < m_sounds.size() && m_started < m_current + MAX_AHEAD &&
               (m_started == m_current || running < m_atOnce)) {
            m_jobs[m_started] =
                std::make_unique<SoundJob>(m_sounds[m_started], m_bell, m_options.hasPictures);
            ++m_started;
            ++running;
        }
    }

    void wait(const SoundJob& job)
    {
        startJobs();
        {
            std::unique_lock<std::mutex> lock(m_bell.mutex);
            m_bell.rung.wait_for(lock, REFRESH);
        }
        // Each of several recordings counts as much as the others.
        if (const std::optional<double> part = job.progress())
            m_progress.show((static_cast<double>(m_current) + *part) /
                            static_cast<double>(m_sounds.size()));
    }

    ReceptionOptions m_options;
    TeleprinterChoice m_choice;
    std::vector<SoundRequest> m_sounds;
    std::size_t m_atOnce;
    Progress m_progress;
    Reception m_reception;
    SoundBell m_bell;
    std::vector<std::unique_ptr<SoundJob>> m_jobs; ///< each from its start to its end
    bool m_isOneOfSeveral;
    QHash<QString, RecordingKeys> m_keys; ///< of recordings, for the archive
    std::size_t m_current = 0;
    std::size_t m_started = 0;
    int m_status = EXIT_DONE;
};

int run(Arguments& arguments)
{
    ReceptionOptions options = readReceptionOptions(arguments, StartWords::TimeNowAuto);
    options.hasPictures = arguments.isSet("pictures");
    if (options.hasPictures && options.saveDirectory.isEmpty())
        arguments.fail(QStringLiteral("--pictures needs --save"));
    std::vector<SoundRequest> sounds = readSoundOptions(arguments, tonesToSet(arguments));
    const int processors = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const int atOnce = arguments.wholeNumber("jobs", 1, MAX_JOBS).value_or(processors);
    if (options.startRule == StartRule::Given && sounds.size() > 1)
        arguments.fail(QStringLiteral("--start TIME is for one recording; several take "
                                      "--start auto"));
    const TeleprinterChoice choice =
        readTeleprinterOptions(arguments, {"wpm", "alphabet", "cut-numbers", "live"}, sounds);
    if (arguments.isSet("codes") && choice.decoder != QLatin1String(MORSE_DECODER))
        arguments.fail(QStringLiteral("--codes is for Morse"));
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    if (!canDecode(arguments, choice))
        return EXIT_BAD_INPUT;
    return Decoding(options, choice, std::move(sounds), static_cast<std::size_t>(atOnce)).run();
}

} // namespace

Command decodeCommand()
{
    const ToneRange tones = teleprinterTones();
    std::vector<OptionRow> rows = soundOptionRows("; of a teleprinter midway between its tones, " +
                                                  range(tones.lowest_Hz, tones.highest_Hz));
    for (const OptionRow& row : teleprinterOptionRows())
        rows.push_back(row);
    rows.push_back({"jobs", "N",
                    "decode N recordings in parallel (default: one per processor); the output does "
                    "not depend on it"});
    rows.push_back(
        {"pictures", nullptr, "with --save: a picture of each transmission, as inspect draws it"});
    return {
        {"decode", "FILE…|-", 1, std::numeric_limits<int>::max(),
         "Decodes recordings (WAV, FLAC, Ogg, MP3) or standard input: raw samples (signed 16 "
         "bits,\n"
         "little-endian, mono) or a recording. Each character is written as soon as it is decoded.",
         receptionOptionRows(rows, StartWords::TimeNowAuto),
         "  morsehost decode recording.flac\n"
         "  morsehost decode --decoder Baudot --map Russian recording.flac\n"
         "  morsehost decode --save received --frequency 7025000 --start auto *.wav\n"
         "  arecord -t raw -f S16_LE -r 8000 | morsehost decode -\n"
         "  rtl_fm -M usb -f 7.025M -E direct2 -s 12k | morsehost decode --rate 12000 -\n"},
        run};
}

} // namespace morsehost
