// SPDX-License-Identifier: MIT
// A decoder modules file: the input is the file.
#include "charmap/decodermodulescenter.h"
#include "fuzz/fuzzing.h"

#include <QRegExp>

#include <algorithm>
#include <cmath>

using fuzzing::require;
using Quillon::DecoderModule;
using Quillon::DecoderModulesCenter;

namespace {

std::vector<DecoderModule> modulesOf(DecoderModulesCenter& center)
{
    std::vector<DecoderModule> modules;
    center.GetModules(modules, false);
    return modules;
}

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
    static const fuzzing::Folder folder;
    const QByteArray bytes = fuzzing::bytesOf(data, size);

    DecoderModulesCenter center(folder.write("input", bytes));
    const std::vector<DecoderModule> modules = modulesOf(center);
    require(modules.size() == countModules(bytes), "every line that holds a module is one");
    for (std::size_t i = 1; i < modules.size(); ++i)
        require(modules[i - 1].name.compare(modules[i].name, Qt::CaseInsensitive) <= 0,
                "modules are sorted by name");
    bool isPlain = true;
    for (const DecoderModule& module : modules) {
        require(module.name == module.name.trimmed(), "names have no blanks around them");
        isPlain = isPlain && canBeWritten(module);
    }

    require(center.WriteModulesFile(folder.filePath("written")), "a file can be written");
    DecoderModulesCenter written(folder.filePath("written"));
    const std::vector<DecoderModule> again = modulesOf(written);
    require(again.size() <= modules.size(), "one line is written for each");
    if (isPlain)
        require(std::equal(modules.begin(), modules.end(), again.begin(), again.end(), isSame),
                "what is written reads back the same");

    QString names;
    std::vector<double> numbers;
    std::vector<DecoderModule> found;
    for (const char* mode : {"FSK2", "MSK", "PSK8", "McPSK2", "any"}) {
        for (const char* family : {"FSK", "PSK", "McPSK", "PSK31"}) {
            names.clear();
            numbers.clear();
            found.clear();
            center.GetNames(family, mode, names, false);
            center.GetNumbers(family, mode, numbers, false);
            center.GetModules(family, mode, found, false);
            require(numbers.size() == found.size() && found.size() <= modules.size(),
                    "all queries find the same modules");
        }
    }
    return 0;
}
