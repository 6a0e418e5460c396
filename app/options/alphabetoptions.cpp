// SPDX-License-Identifier: MIT
#include "app/options/alphabetoptions.h"

#include "app/console/complain.h"
#include "app/datadirectory.h"

namespace morsehost {

std::vector<OptionRow> alphabetOptionRows()
{
    return {
        {"alphabet", "NAME",
         "the Morse alphabet, as 'morsehost alphabets' lists it (default: International)"},
        {"alphabets", "DIR", "folder of the alphabet files (default: those installed)"},
    };
}

AlphabetChoice readAlphabetOptions(Arguments& arguments)
{
    AlphabetChoice choice;
    choice.directory = arguments.isSet("alphabets") ? arguments.text("alphabets")
                                                    : dataDirectory(QStringLiteral("alphabets"));
    choice.name = arguments.isSet("alphabet") ? arguments.text("alphabet")
                                              : QString::fromLatin1(DEFAULT_ALPHABET);
    if (choice.name.compare(QLatin1String(BUILT_IN_ALPHABET), Qt::CaseInsensitive) == 0)
        choice.name.clear();
    return choice;
}

void complainOfAlphabet(const QString& name, const QString& directory)
{
    complain(name, QStringLiteral("no such alphabet in %1").arg(directory));
}

} // namespace morsehost
