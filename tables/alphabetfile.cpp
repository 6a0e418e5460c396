// SPDX-License-Identifier: MIT
#include "tables/alphabetfile.h"

#include "tables/headerline.h"

#include <QTextStream>

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

void storeEntry(const QString& line, QMap<QString, QString>& codes)
{
    const int keyEnd = line.indexOf(QLatin1Char('\t'));
    if (keyEnd == 0 || line.isEmpty())
        return;
    if (keyEnd < 0) {
        codes.insert(line, QString());
        return;
    }
    const int codeEnd = line.indexOf(QLatin1Char('\t'), keyEnd + 1);
    const int codeLength = codeEnd < 0 ? -1 : codeEnd - keyEnd - 1;
    codes.insert(line.left(keyEnd), line.mid(keyEnd + 1, codeLength));
}

} // namespace

MorseAlphabet readAlphabetFile(QIODevice& device)
{
    MorseAlphabet alphabet;
    QTextStream stream(&device);
    stream.setCodec("UTF-8");

    QString line = stream.readLine();
    while (const auto header = matchHeaderLine(line)) {
        alphabet.rightToLeft = header->declaresRightToLeft();
        line = stream.readLine();
    }
    // The line in hand is dropped once the file is exhausted: the spare line at its end.
    while (!stream.atEnd()) {
        storeEntry(line, alphabet.codes);
        line = stream.readLine();
    }
    return alphabet;
}

QMap<QString, QString> defaultAlphabet()
{
    QMap<QString, QString> codes;
    for (const Entry& entry : DEFAULT_ALPHABET)
        codes.insert(QLatin1String(entry.text), QLatin1String(entry.code));
    return codes;
}
