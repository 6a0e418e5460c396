// SPDX-License-Identifier: MIT
#include "app/options/alphabetoptions.h"

#include "app/console/complain.h"
#include "app/datadirectory.h"

namespace morsehost {

std::vector<OptionRow> alphabetOptionRows()
{
    return {
        {"alphabet", "NAME", "the Morse alphabet; the built-in one without this"},
        {"alphabets", "DIR", "where the alphabet files lie; those that ship without this"},
    };
}

void readAlphabetOptions(Arguments& arguments, StationSettings& settings)
{
    settings.alphabet = arguments.text("alphabet");
    settings.alphabetDirectory = arguments.isSet("alphabets")
                                     ? arguments.text("alphabets")
                                     : dataDirectory(QStringLiteral("alphabets"));
    if (arguments.isSet("alphabets") && !arguments.isSet("alphabet"))
        arguments.fail(QStringLiteral("--alphabets needs --alphabet NAME"));
}

bool startWithAlphabet(MorseStation& station, const StationSettings& settings)
{
    if (station.start() || settings.alphabet.isEmpty())
        return true;
    complain(settings.alphabet,
             QStringLiteral("no such alphabet in %1").arg(settings.alphabetDirectory));
    return false;
}

} // namespace morsehost
