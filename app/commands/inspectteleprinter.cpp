// SPDX-License-Identifier: MIT
#include "app/commands/inspectteleprinter.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "station/decoders.h"
#include "station/finddecoder.h"
#include "station/picture/teleprinternotes.h"
#include "station/picture/teleprinterpicture.h"
#include "station/teleprinterstation.h"

#include <QFileInfo>

#include <algorithm>

namespace morsehost {

namespace {

// Has every character put into the operator's alphabet as `decode` would, and notes what came of
// it.
class Listener : public teleprinter::TextSink, public StationListener
{
public:
    explicit Listener(inspect::TeleprinterNotes& notes)
        : m_notes(notes)
    {
    }

    void feed(TeleprinterStation& station) { m_station = &station; }

    bool hasHeard() const { return m_hasHeard; }

    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override
    {
        m_hasHeard = true;
        m_notes.transmissionStarted(line, time_us);
        m_station->transmissionStarted(line, time_us);
    }
    void character(std::uint8_t character, std::int64_t time_us) override
    {
        m_notes.character(character, time_us);
        m_station->character(character, time_us);
    }
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override
    {
        m_notes.transmissionStopped(line, time_us);
        m_station->transmissionStopped(line, time_us);
    }

    void text(const QString& text) override { m_notes.text(text); }

private:
    inspect::TeleprinterNotes& m_notes;
    TeleprinterStation* m_station = nullptr;
    bool m_hasHeard = false;
};

} // namespace

int inspectTeleprinter(SampleSource& source, const SoundRequest& sound,
                       const StretchChoice& stretch, const TeleprinterChoice& choice,
                       PictureFile& file)
{
    StretchReader reader(source, sound, stretch);
    inspect::TeleprinterNotes notes(reader.stretch(), reader.begin_us());
    Listener listener(notes);
    HostTree tree;
    TeleprinterSettings settings;
    settings.place = QStringLiteral("Receiver1");
    settings.decoder = sound.decoder;
    settings.mapsDirectory = choice.mapsDirectory;
    settings.map = choice.map;
    if (choice.decoder == QLatin1String(DECODER_AS_FOUND))
        settings.map = mapForFound(tree, settings);
    if (settings.map != choice.map)
        complain(QStringLiteral("the map '%1' is not for %2").arg(choice.map, settings.decoder));
    TeleprinterStation station(tree, settings, listener);
    const QString refusal = station.start();
    if (!refusal.isEmpty()) {
        complain(refusal);
        return EXIT_BAD_INPUT;
    }
    listener.feed(station);
    teleprinter::Settings receiving = sound.teleprinter;
    if (const auto code = codeOfDecoder(sound.decoder))
        receiving.known.codes = {*code};
    teleprinter::Receiver receiver(receiving, listener, &notes);
    reader.hear(receiver);
    if (!reader.canDraw(file.name()))
        return EXIT_BAD_INPUT;
    if (!listener.hasHeard())
        complain(sound.name, QStringLiteral("no %1 was heard in %2 s")
                                 .arg(sound.decoder)
                                 .arg(static_cast<double>(reader.end_us()) / 1e6, 0, 'f', 1));
    inspect::SeenTeleprinter seen = notes.seen();
    seen.stretch.to_us = std::min(seen.stretch.to_us, reader.end_us());
    if (!file.write(inspect::teleprinterPicture(seen, QFileInfo(sound.name).fileName())))
        return EXIT_BAD_INPUT;
    return source.error().isEmpty() ? EXIT_DONE : EXIT_BAD_INPUT;
}

} // namespace morsehost
