// SPDX-License-Identifier: MIT
// A decoder modules file: the input is the file.
#include "fuzz/tablechecks.h"
#include "tables/decodermodulesfile.h"

#include <QRegExp>

#include <algorithm>
#include <cmath>

using fuzzing::require;
using Quillon::DecoderModule;

namespace {

bool isSame(const DecoderModule& a, const DecoderModule& b)
{
    return a.id == b.id && a.number == b.number && a.type == b.type && a.flags == b.flags &&
           a.charset == b.charset && a.name == b.name;
}

/// How many lines hold a module.
std::size_t countModules(const QByteArray& bytes)
{
    static const QRegExp pattern(QStringLiteral("\\d+\\s+\\d+\\s+\\w(\\s+\\d){26}\\s+\\w\\s+\\w+"));
    // Longer lines take the expression too long.
    constexpr int MOST_CHARACTERS = 150;
    std::size_t count = 0;
    const QList<QByteArray> lines = bytes.split('\n');
    for (const QByteArray& bytesOfLine : lines) {
        const QString line = QString::fromLatin1(bytesOfLine.constData(), bytesOfLine.size());
        const bool isModule = Quillon::holdsDecoderModule(line);
        if (line.size() <= MOST_CHARACTERS)
            require(isModule == (pattern.indexIn(line) >= 0),
                    "a line holds a module when the expression finds one");
        count += isModule ? 1 : 0;
    }
    return count;
}

/// What a file can give that does not begin its lines with something else.
bool canBeWritten(const DecoderModule& module)
{
    const auto isWord = [](char c) {
        const QChar letter = QLatin1Char(c);
        return letter.isLetterOrNumber() || c == '_';
    };
    return module.id >= 0 && isWord(module.type) && isWord(module.charset) &&
           !module.name.isEmpty() && (module.name[0].isLetterOrNumber() || module.name[0] == '_') &&
           module.number >= 0 && module.number == std::floor(module.number) && module.number < 1e6;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzzing::bytesOf(data, size);
    const std::vector<DecoderModule> modules = Quillon::readDecoderModulesFile(bytes);
    for (std::size_t i = 1; i < modules.size(); ++i)
        require(modules[i - 1].name.compare(modules[i].name, Qt::CaseInsensitive) <= 0,
                "modules are sorted by name");
    if (!fuzzing::isChecked(data, size))
        return 0;

    require(modules.size() == countModules(bytes), "every line that holds a module is one");
    bool isPlain = true;
    for (const DecoderModule& module : modules) {
        require(module.name == module.name.trimmed(), "names have no blanks around them");
        isPlain = isPlain && canBeWritten(module);
    }
    const std::vector<DecoderModule> again =
        Quillon::readDecoderModulesFile(Quillon::decoderModulesFileOf(modules));
    require(again.size() <= modules.size(), "one line is written for each");
    if (isPlain)
        require(std::equal(modules.begin(), modules.end(), again.begin(), again.end(), isSame),
                "what is written reads back the same");
    const lint::Report report = fuzzing::requireReport("modules.txt", bytes);
    require(report.entryCount == static_cast<int>(modules.size()),
            "the check reads what a reader reads that nobody asks for faults");
    return 0;
}
