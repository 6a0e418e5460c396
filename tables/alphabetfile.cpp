// SPDX-License-Identifier: MIT
#include "tables/alphabetfile.h"

#include "tables/headerline.h"
#include "tables/tabletext.h"

namespace {

struct Entry
{
    const char* text;
    const char* code;
};

constexpr Entry DEFAULT_ALPHABET[] = {
    {"A", ".-"},      {"B", "-..."},        {"C", "-.-."},         {"D", "-.."},    {"E", "."},
    {"F", "..-."},    {"G", "--."},         {"H", "...."},         {"I", ".."},     {"J", ".---"},
    {"K", "-.-"},     {"L", ".-.."},        {"M", "--"},           {"N", "-."},     {"O", "---"},
    {"P", ".--."},    {"Q", "--.-"},        {"R", ".-."},          {"S", "..."},    {"T", "-"},
    {"U", "..-"},     {"V", "...-"},        {"W", ".--"},          {"X", "-..-"},   {"Y", "-.--"},
    {"Z", "--.."},    {"1", ".----"},       {"2", "..---"},        {"3", "...--"},  {"4", "....-"},
    {"5", "....."},   {"6", "-...."},       {"7", "--..."},        {"8", "---.."},  {"9", "----."},
    {"0", "-----"},   {".", ".-.-.-"},      {",", "--..--"},       {"/", "-..-."},  {"+", ".-.-."},
    {"=", "-...-"},   {"?", "..--.."},      {"(", "-.--."},        {")", "-.--.-"}, {"-", "-....-"},
    {"\"", ".-..-."}, {"_", "..--.-"},      {"'", ".----."},       {":", "---..."}, {";", "-.-.-."},
    {"$", "...-..-"}, {"WARNING", ".-..-"}, {"ERROR", "........"},
};

/// The line that `text` stands at.
void storeEntry(const TableText& text, MorseAlphabet& alphabet, Faults& faults)
{
    const QStringView line = text.Line();
    if (line.isEmpty())
        return;
    const int number = text.Number();
    const qsizetype keyEnd = line.indexOf(QLatin1Char('\t'));
    if (keyEnd == 0) {
        faults.Error(number, "no key before the tab: the line is skipped");
        return;
    }
    if (matchHeaderLine(line))
        faults.Error(number, LATE_HEADER);
    const bool hasCode = keyEnd > 0;
    const QString key = (hasCode ? line.left(keyEnd) : line).toString();
    QStringView code = hasCode ? line.mid(keyEnd + 1) : QStringView();
    if (const qsizetype codeEnd = code.indexOf(QLatin1Char('\t')); codeEnd >= 0)
        code = code.left(codeEnd);
    if (hasCode && code.isEmpty())
        faults.Error(number, "the code of %1 is empty", key);
    else if (!hasCode && key.startsWith(QLatin1Char('#')))
        faults.Error(number,
                     "there are no comments: the whole line becomes a key with an empty code");
    else if (!hasCode)
        faults.Error(number, "no tab: the whole line becomes a key with an empty code");
    if (faults.AreWanted()) {
        int& lineOfKey = alphabet.lines[key];
        if (lineOfKey > 0) {
            faults.Error(number,
                         "the key %1 was given in line %2 already, which this line replaces", key,
                         lineOfKey);
        }
        lineOfKey = number;
    }
    alphabet.codes.insert(key, code.toString());
}

} // namespace

MorseAlphabet readAlphabetFile(const QByteArray& bytes, Faults& faults)
{
    MorseAlphabet alphabet;
    TableText text(bytes, TableEncoding::Utf8OrMarked, faults);
    alphabet.rightToLeft = readHeader(text, faults);
    for (; !text.AtEnd(); text.Next())
        storeEntry(text, alphabet, faults);
    if (!text.Line().isEmpty())
        faults.Error(text.Number(), LAST_LINE_LOST);
    if (alphabet.codes.isEmpty())
        faults.Error(0, NO_ENTRY);
    return alphabet;
}

MorseAlphabet readAlphabetFile(const QByteArray& bytes)
{
    Faults ignored(0);
    return readAlphabetFile(bytes, ignored);
}

QMap<QString, QString> defaultAlphabet()
{
    QMap<QString, QString> codes;
    for (const Entry& entry : DEFAULT_ALPHABET)
        codes.insert(QLatin1String(entry.text), QLatin1String(entry.code));
    return codes;
}
