// SPDX-License-Identifier: MIT
#include "app/options/tableoptions.h"

#include "app/console/complain.h"
#include "app/datadirectory.h"
#include "host/standin/configuration.h"
#include "station/io/systemtext.h"

namespace morsehost {

QString directoryOption(const Arguments& arguments, const char* option, const char* shipped)
{
    return arguments.isSet(option) ? arguments.text(option) : dataDirectory(QLatin1String(shipped));
}

OptionRow mapsOption()
{
    return {"maps", "DIR", "folder of the codec and map files (default: those installed)"};
}

OptionRow decoderModulesOption()
{
    return {"decoders", "FILE", "the decoder modules file (default: the installed sample)"};
}

QString decoderModulesFile(const Arguments& arguments)
{
    return arguments.isSet("decoders")
               ? arguments.text("decoders")
               : dataDirectory(QStringLiteral("decoders/decodermodules.txt"));
}

bool configureDecoderModules(const Arguments& arguments)
{
    const QString file = decoderModulesFile(arguments);
    if (const QString why = whyNoRegularFile(file); !why.isEmpty()) {
        complain(file, why);
        return false;
    }
    setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"), file);
    return true;
}

} // namespace morsehost
