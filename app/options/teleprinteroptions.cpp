// SPDX-License-Identifier: MIT
#include "app/options/teleprinteroptions.h"

#include "app/console/complain.h"
#include "app/options/tableoptions.h"
#include "station/decoders.h"
#include "station/finddecoder.h"
#include "station/io/systemtext.h"
#include "station/teleprinterstation.h"
#include "tables/decodermodulesfile.h"
#include "tables/hostpath.h"
#include "tables/regularfile.h"

#include <QFile>

#include <algorithm>
#include <optional>
#include <utility>

namespace morsehost {

namespace {

constexpr char DECODER[] = "decoder";
constexpr char UNSHIFT[] = "unshift-on-space";
constexpr char PARITY[] = "parity";

QString decoderAsked(const Arguments& arguments)
{
    if (!arguments.isSet(DECODER))
        return QLatin1String(MORSE_DECODER);
    const QString asked = arguments.text(DECODER);
    const QLatin1String asFound(DECODER_AS_FOUND);
    return asked.compare(asFound, Qt::CaseInsensitive) == 0 ? QString(asFound)
                                                            : decoderSpelled(asked);
}

bool isInTable(const QString& decoder, const QString& modulesFile)
{
    QFile file(localPath(modulesFile));
    if (!openRegularFile(file))
        return false;
    const std::vector<Quillon::DecoderModule> modules =
        Quillon::readDecoderModulesFile(file.readAll());
    return std::any_of(modules.begin(), modules.end(),
                       [&](const Quillon::DecoderModule& row) { return row.name == decoder; });
}

QString whyNoDecoder(const QString& decoder, const QString& modulesFile)
{
    if (!isInTable(decoder, modulesFile))
        return QStringLiteral("no decoder '%1' (see 'morsehost decoders')").arg(decoder);
    const QStringList names = QStringList(QLatin1String(MORSE_DECODER)) + teleprinterDecoders();
    return QStringLiteral("there is no demodulator for '%1', only for %2")
        .arg(decoder, names.join(QLatin1String(", ")));
}

std::optional<teleprinter::Parity> readParity(Arguments& arguments)
{
    using teleprinter::Parity;
    const std::pair<QLatin1String, Parity> rows[] = {{QLatin1String("none"), Parity::None},
                                                     {QLatin1String("even"), Parity::Even},
                                                     {QLatin1String("odd"), Parity::Odd}};
    const QString parity = arguments.text(PARITY);
    for (const auto& [name, value] : rows) {
        if (parity == name)
            return value;
    }
    if (arguments.isSet(PARITY))
        arguments.fail(
            QStringLiteral("--parity takes 'none', 'even' or 'odd', not '%1'").arg(parity));
    return std::nullopt;
}

teleprinter::Settings readReceiver(Arguments& arguments)
{
    using namespace teleprinter;
    teleprinter::Settings settings;
    settings.known.baud = arguments.number("baud", LOWEST_BAUD, HIGHEST_BAUD);
    settings.known.shift_Hz = arguments.number("shift", LEAST_SHIFT_Hz, MOST_SHIFT_Hz);
    if (arguments.isSet("reverse"))
        settings.known.reversed = true;
    settings.known.parity = readParity(arguments);
    settings.unshift = readUnshift(arguments);
    return settings;
}

// Of a decoder that is known, what its signals never are.
void refuseWhatIsNoneOf(const TeleprinterDecoder& decoder, const teleprinter::Known& known,
                        Arguments& arguments)
{
    const auto baud = [](double rate) { return QString::number(rate); };
    const QString own =
        decoder.lowestBaud < decoder.highestBaud
            ? baud(decoder.lowestBaud) + QLatin1String(" to ") + baud(decoder.highestBaud)
            : baud(decoder.lowestBaud);
    if (known.baud && (*known.baud < decoder.lowestBaud || *known.baud > decoder.highestBaud))
        arguments.fail(
            QStringLiteral("--baud takes %2 for %1").arg(QLatin1String(decoder.name), own));
    if (arguments.isSet(UNSHIFT) && !decoder.hasShifts)
        arguments.fail(QStringLiteral("--unshift-on-space is not for %1, which has no shifts")
                           .arg(QLatin1String(decoder.name)));
    if (known.parity && decoder.code != teleprinter::Code::Ascii)
        arguments.fail(QStringLiteral("--parity is for ASCII RTTY, not for %1")
                           .arg(QLatin1String(decoder.name)));
}

} // namespace

OptionRow unshiftOption()
{
    return {UNSHIFT, "yes|no",
            "Baudot, Sitor-B: letters again after a blank (default: decided from the text)"};
}

teleprinter::Unshift readUnshift(Arguments& arguments)
{
    using teleprinter::Unshift;
    const QString unshift = arguments.text(UNSHIFT);
    if (unshift == QLatin1String("yes"))
        return Unshift::OnBlank;
    if (unshift == QLatin1String("no"))
        return Unshift::Never;
    if (arguments.isSet(UNSHIFT))
        arguments.fail(
            QStringLiteral("--unshift-on-space takes 'yes' or 'no', not '%1'").arg(unshift));
    return Unshift::WhereSenderDoes;
}

bool TeleprinterChoice::hasMap() const
{
    return !map.isEmpty() && map.compare(QLatin1String(NO_MAP), Qt::CaseInsensitive) != 0;
}

std::vector<OptionRow> teleprinterOptionRows()
{
    using namespace teleprinter;
    return {
        {DECODER, "NAME",
         "Morse, Baudot, \"ASCII RTTY\", Sitor-B, or auto: the first of them that is found "
         "(standard "
         "input: in its first 30 s) (default: Morse)"},
        {"map", "NAME",
         "teleprinters: the map that the text goes through (default: \"Default\", none)"},
        mapsOption(),
        decoderModulesOption(),
        {"baud", "BD",
         "teleprinters: the speed, " + range(LOWEST_BAUD, HIGHEST_BAUD) +
             " (default: any of the usual ones)"},
        {"shift", "HZ",
         "teleprinters: between the tones, " + range(LEAST_SHIFT_Hz, MOST_SHIFT_Hz) +
             " (default: any)"},
        {"reverse", nullptr, "teleprinters: mark is the lower tone (default: either)"},
        {PARITY, "none|even|odd", "ASCII RTTY: the parity bit of a character (default: found out)"},
        unshiftOption(),
    };
}

ToneRange teleprinterTones()
{
    return {teleprinter::LOWEST_SET_TONE_Hz, teleprinter::HIGHEST_SET_TONE_Hz};
}

ToneRange tonesToSet(const Arguments& arguments)
{
    return decoderAsked(arguments) == QLatin1String(MORSE_DECODER) ? ToneRange()
                                                                   : teleprinterTones();
}

TeleprinterChoice readTeleprinterOptions(Arguments& arguments,
                                         std::initializer_list<const char*> forMorse,
                                         std::vector<SoundRequest>& sounds)
{
    TeleprinterChoice choice;
    choice.decoder = decoderAsked(arguments);
    choice.mapsDirectory = directoryOption(arguments, "maps", "maps");
    choice.map = arguments.isSet("map") ? arguments.text("map") : QString(QLatin1String(NO_MAP));
    if (choice.decoder == QLatin1String(MORSE_DECODER)) {
        for (const OptionRow& row : teleprinterOptionRows()) {
            if (QLatin1String(row.name) != QLatin1String(DECODER) && arguments.isSet(row.name))
                arguments.fail(QStringLiteral("%1 needs the --%2 of a teleprinter")
                                   .arg(optionWord(row.name), QLatin1String(DECODER)));
        }
        return choice;
    }
    const teleprinter::Settings receiver = readReceiver(arguments);
    if (const TeleprinterDecoder* const decoder = teleprinterDecoder(choice.decoder))
        refuseWhatIsNoneOf(*decoder, receiver.known, arguments);
    for (SoundRequest& sound : sounds) {
        sound.decoder = choice.decoder;
        sound.teleprinter = receiver;
        sound.teleprinter.known.centre_Hz = sound.demodulator.tone_Hz;
        const teleprinter::Known& known = sound.teleprinter.known;
        using namespace teleprinter;
        const double half_Hz = 0.5 * known.shift_Hz.value_or(LEAST_SHIFT_Hz);
        if (known.centre_Hz && (*known.centre_Hz - half_Hz < LOWEST_TONE_Hz ||
                                *known.centre_Hz + half_Hz > HIGHEST_TONE_Hz))
            arguments.fail(
                QStringLiteral("--tone is midway between the tones: with %1 one of them "
                               "is outside %2 Hz")
                    .arg(known.shift_Hz ? QStringLiteral("this --shift")
                                        : QStringLiteral("any shift"),
                         QString::fromStdString(range(LOWEST_TONE_Hz, HIGHEST_TONE_Hz))));
    }
    if (choice.decoder == QLatin1String(DECODER_AS_FOUND))
        return choice;
    for (const char* const option : forMorse) {
        if (arguments.isSet(option))
            arguments.fail(QStringLiteral("--%1 is for Morse").arg(QLatin1String(option)));
    }
    return choice;
}

bool canDecode(const Arguments& arguments, const TeleprinterChoice& choice)
{
    if (choice.decoder == QLatin1String(MORSE_DECODER))
        return true;
    if (!configureDecoderModules(arguments))
        return false;
    if (choice.decoder != QLatin1String(DECODER_AS_FOUND) && !codeOfDecoder(choice.decoder)) {
        complain(whyNoDecoder(choice.decoder, decoderModulesFile(arguments)));
        return false;
    }
    const QString why = morsehost::whyNoFolder(choice.mapsDirectory);
    if (!why.isEmpty())
        complain(choice.mapsDirectory, why);
    return why.isEmpty();
}

} // namespace morsehost
