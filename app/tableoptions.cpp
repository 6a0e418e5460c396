// SPDX-License-Identifier: MIT
#include "app/tableoptions.h"

#include "app/datadirectory.h"
#include "host/standin/configuration.h"

namespace morsehost {

QString directoryOption(const Arguments& arguments, const char* option, const char* shipped)
{
    return arguments.isSet(option) ? arguments.text(option) : dataDirectory(QLatin1String(shipped));
}

OptionRow decoderModulesOption()
{
    return {"decoders", "FILE", "the decoder modules file; the sample that ships without this"};
}

void configureDecoderModules(const Arguments& arguments)
{
    const QString file = arguments.isSet("decoders")
                             ? arguments.text("decoders")
                             : dataDirectory(QStringLiteral("decoders/decodermodules.txt"));
    setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"), file);
}

} // namespace morsehost
