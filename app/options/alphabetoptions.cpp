// SPDX-License-Identifier: MIT
#include "app/options/alphabetoptions.h"

#include "app/console/complain.h"
#include "app/datadirectory.h"

namespace morsehost {

namespace {

constexpr char CUT_NUMBERS[] = "cut-numbers";

} // namespace

std::vector<OptionRow> alphabetOptionRows()
{
    return {
        {"alphabet", "NAME",
         "the Morse alphabet, as 'morsehost alphabets' lists it (default: International)"},
        {"alphabets", "DIR", "folder of the alphabet files (default: those installed)"},
        {CUT_NUMBERS, "on|off",
         "a dash alone after a figure is a zero, as in 5TT for 500; so is a T that begins the word "
         "after it (default: on)"},
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
    const QString cutNumbers = arguments.text(CUT_NUMBERS);
    choice.cutNumbers = cutNumbers != QLatin1String("off");
    if (arguments.isSet(CUT_NUMBERS) && choice.cutNumbers && cutNumbers != QLatin1String("on"))
        arguments.fail(
            QStringLiteral("--cut-numbers takes 'on' or 'off', not '%1'").arg(cutNumbers));
    return choice;
}

void complainOfAlphabet(const AlphabetChoice& alphabet)
{
    complain(alphabet.name, QStringLiteral("no such alphabet in %1").arg(alphabet.directory));
}

} // namespace morsehost
