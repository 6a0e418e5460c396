// SPDX-License-Identifier: MIT
#include "charmap/decodercharsets.h"

#include "charmap/decodermodulescenter.h"

QMap<QString, eBASE_CHARSET> readDecoderCharsets()
{
    std::vector<Quillon::DecoderModule> modules;
    Quillon::DecoderModulesCenter::Instance(QString()).GetModules(modules, true);
    QMap<QString, eBASE_CHARSET> charsets;
    for (const Quillon::DecoderModule& module : modules)
        charsets.insert(module.name, baseCharsetOfLetter(module.charset));
    return charsets;
}
