// SPDX-License-Identifier: MIT
// Alphabets: letters that look alike or stand in another form, and codes that are never received.
// When text is written, the keys are walked in UTF-16 order and the first one with the code wins,
// so keys can hide each other.
#include "tables/lint/rules.h"

#include <QHash>

#include <algorithm>

namespace lint {

namespace {

/// The letters that look alike in the scripts that share a telegraph: groups of the same shape.
constexpr char16_t LOOK_ALIKES[][3] = {
    // Latin, Greek, Cyrillic; 0 for none, which is of no script
    {u'A', u'\u0391', u'\u0410'}, {u'B', u'\u0392', u'\u0412'}, {u'C', 0, u'\u0421'},
    {u'E', u'\u0395', u'\u0415'}, {u'H', u'\u0397', u'\u041D'}, {u'I', u'\u0399', u'\u0406'},
    {u'J', 0, u'\u0408'},         {u'K', u'\u039A', u'\u041A'}, {u'M', u'\u039C', u'\u041C'},
    {u'N', u'\u039D', 0},         {u'O', u'\u039F', u'\u041E'}, {u'P', u'\u03A1', u'\u0420'},
    {u'S', 0, u'\u0405'},         {u'T', u'\u03A4', u'\u0422'}, {u'X', u'\u03A7', u'\u0425'},
    {u'Y', u'\u03A5', u'\u04AE'}, {u'Z', u'\u0396', 0},         {0, u'\u0393', u'\u0413'},
    {0, u'\u03A0', u'\u041F'},    {0, u'\u03A6', u'\u0424'},    {u'a', u'\u03B1', u'\u0430'},
    {u'c', u'\u03F2', u'\u0441'}, {u'e', 0, u'\u0435'},         {u'i', u'\u03B9', u'\u0456'},
    {u'o', u'\u03BF', u'\u043E'}, {u'p', u'\u03C1', u'\u0440'}, {u'x', u'\u03C7', u'\u0445'},
    {u'y', u'\u03B3', u'\u0443'},
};

struct Script
{
    QChar::Script script;
    const char* name;
};

constexpr Script SCRIPTS[] = {
    {QChar::Script_Latin, "Latin"},       {QChar::Script_Greek, "Greek"},
    {QChar::Script_Cyrillic, "Cyrillic"}, {QChar::Script_Hebrew, "Hebrew"},
    {QChar::Script_Arabic, "Arabic"},     {QChar::Script_Hiragana, "Hiragana"},
    {QChar::Script_Katakana, "Katakana"}, {QChar::Script_Hangul, "Hangul"},
    {QChar::Script_Han, "Han"},
};

QLatin1String scriptName(QChar::Script script)
{
    for (const Script& row : SCRIPTS) {
        if (row.script == script)
            return QLatin1String(row.name);
    }
    return QLatin1String("of another script");
}

bool hasOwnScript(QChar character)
{
    return character.isLetter() && character.script() > QChar::Script_Common;
}

/// A word of plain letters, such as "ERROR" or "<SK>", is no letter of the alphabet.
bool isPlainWord(const QString& key)
{
    if (key.size() < 2)
        return false;
    for (const QChar character : key) {
        if (character.unicode() > 0x7F)
            return false;
    }
    return true;
}

/// Of a letter of a script; null when there is none.
QChar twinIn(QChar character, QChar::Script script)
{
    for (const auto& group : LOOK_ALIKES) {
        bool found = false;
        QChar twin;
        for (const char16_t letter : group) {
            found = found || letter == character.unicode();
            if (QChar(letter).script() == script)
                twin = QChar(letter);
        }
        if (found)
            return twin;
    }
    return {};
}

void checkKey(int line, const QString& key, Faults& faults)
{
    if (key != key.trimmed())
        faults.Warning(line, "the key %1 has blanks around it, which are written too", key);
    const auto invisible = std::find_if(key.begin(), key.end(), [](QChar character) {
        return character.category() == QChar::Other_Control ||
               character.category() == QChar::Other_Format;
    });
    if (invisible != key.end())
        faults.Warning(line, "the key holds the invisible character %1", *invisible);
    if (key.normalized(QString::NormalizationForm_C) != key) {
        faults.Warning(
            line,
            "the key %1 is not in composed form (NFC): searches for it in the text would "
            "miss it",
            key);
    } else if (key.size() == 1) {
        const QChar::Decomposition form = key[0].decompositionTag();
        if (form == QChar::Initial || form == QChar::Medial || form == QChar::Final ||
            form == QChar::Isolated) {
            faults.Warning(line,
                           "the key %1 is the shape of a letter in one place of a word; the letter "
                           "itself is %2",
                           key, key.normalized(QString::NormalizationForm_KC));
        }
    }
}

void checkCode(int line, const QString& key, const QString& code, Faults& faults)
{
    const auto odd = std::find_if(code.begin(), code.end(), [](QChar symbol) {
        return symbol != QLatin1Char('.') && symbol != QLatin1Char('-');
    });
    if (odd != code.end()) {
        faults.Error(line,
                     "the code of %1 holds %2: a code is made of \".\" and \"-\" only, so this one "
                     "is never received",
                     key, *odd);
    }
}

/// One script is the alphabet's: that of most keys of a single letter.
QChar::Script mainScript(const MorseAlphabet& alphabet)
{
    QMap<QChar::Script, int> counts;
    for (auto entry = alphabet.codes.cbegin(); entry != alphabet.codes.cend(); ++entry) {
        if (entry.key().size() == 1 && hasOwnScript(entry.key()[0]))
            ++counts[entry.key()[0].script()];
    }
    const auto most = std::max_element(counts.cbegin(), counts.cend());
    return most == counts.cend() ? QChar::Script_Unknown : most.key();
}

void checkScript(int line, const QString& key, QChar::Script main, Faults& faults)
{
    if (main == QChar::Script_Unknown || isPlainWord(key))
        return;
    const auto odd = std::find_if(key.begin(), key.end(), [main](QChar character) {
        return hasOwnScript(character) && character.script() != main;
    });
    if (odd == key.end())
        return;
    const QLatin1String script = scriptName(odd->script());
    const QChar twin = twinIn(*odd, main);
    if (twin.isNull()) {
        faults.Warning(line, "the key %1 is %2 in an alphabet that is %3", *odd, script,
                       scriptName(main));
    } else {
        faults.Warning(line, "the key %1 is %2 in an alphabet that is %3; it looks like %4", *odd,
                       script, scriptName(main), twin);
    }
}

} // namespace

void checkAlphabet(const MorseAlphabet& alphabet, Faults& faults)
{
    const QChar::Script main = mainScript(alphabet);
    QHash<QString, QString> winners;
    // Ascending keys: the first one with a code is the one that is written.
    for (auto entry = alphabet.codes.cbegin(); entry != alphabet.codes.cend(); ++entry) {
        const QString& key = entry.key();
        const int line = alphabet.lines.value(key);
        checkKey(line, key, faults);
        checkCode(line, key, *entry, faults);
        checkScript(line, key, main, faults);
        const auto winner = winners.constFind(*entry);
        if (winner == winners.constEnd()) {
            // A key without a code is a fault by itself already.
            if (!entry->isEmpty())
                winners.insert(*entry, key);
            continue;
        }
        faults.Error(line,
                     "%1 is never written: %2 in line %3 has the same code and sorts before it",
                     key, *winner, alphabet.lines.value(*winner));
    }
}

} // namespace lint
