// SPDX-License-Identifier: MIT
// Alphabet files: a header, then one key and its code a line. When text is written, the keys are
// walked in UTF-16 order and the first one with the code wins, so most traps are keys that hide
// each other.
#include "tables/lint/rules.h"

#include "tables/headerline.h"

#include <QHash>

namespace lint {

namespace {

struct Entry
{
    int line = 0;
    QString code;
};

/// The letters that look alike in the scripts that share a telegraph: groups of the same shape.
constexpr char16_t lookAlikes[][3] = {
    // Latin, Greek, Cyrillic
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

QString scriptName(QChar::Script script)
{
    switch (script) {
    case QChar::Script_Latin:
        return QStringLiteral("Latin");
    case QChar::Script_Greek:
        return QStringLiteral("Greek");
    case QChar::Script_Cyrillic:
        return QStringLiteral("Cyrillic");
    case QChar::Script_Hebrew:
        return QStringLiteral("Hebrew");
    case QChar::Script_Arabic:
        return QStringLiteral("Arabic");
    case QChar::Script_Hiragana:
        return QStringLiteral("Hiragana");
    case QChar::Script_Katakana:
        return QStringLiteral("Katakana");
    case QChar::Script_Hangul:
        return QStringLiteral("Hangul");
    case QChar::Script_Han:
        return QStringLiteral("Han");
    default:
        return QStringLiteral("of another script");
    }
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

QChar twinIn(QChar character, QChar::Script script)
{
    for (const auto& group : lookAlikes) {
        bool found = false;
        QChar twin;
        for (const char16_t letter : group) {
            found = found || (letter != 0 && letter == character.unicode());
            if (letter != 0 && QChar(letter).script() == script)
                twin = QChar(letter);
        }
        if (found)
            return twin;
    }
    return {};
}

class AlphabetLint
{
public:
    AlphabetLint(Report& report, Notes& notes)
        : m_report(report)
        , m_notes(notes)
    {
    }

    void run(const QVector<Line>& lines)
    {
        const int first = readHeader(lines, m_report.rightToLeft, m_notes);
        for (int i = first; i + 1 < lines.size(); ++i)
            entry(lines.at(i));
        if (first < lines.size() && !lines.last().text.isEmpty())
            lostLine(lines.last());
        checkScripts();
        checkSharedCodes();
        for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it)
            m_report.alphabet.insert(it.key(), it->code);
        if (m_entries.isEmpty()) {
            m_notes.add(0, Severity::Error,
                        QStringLiteral("no entry is stored: every code would give an empty text"));
        }
    }

private:
    void lostLine(const Line& line)
    {
        m_notes.add(
            line.number, Severity::Error,
            QStringLiteral("the last line of the file is never stored: end the file with an "
                           "empty line"));
    }

    void entry(const Line& line)
    {
        const int tab = line.text.indexOf(QLatin1Char('\t'));
        const QString key = line.text.left(tab < 0 ? line.text.size() : tab);
        QString code;
        if (tab >= 0) {
            const int end = line.text.indexOf(QLatin1Char('\t'), tab + 1);
            code = line.text.mid(tab + 1, end < 0 ? -1 : end - tab - 1);
        }
        if (key.isEmpty()) {
            if (!line.text.isEmpty())
                m_notes.add(line.number, Severity::Error,
                            QStringLiteral("no key before the tab: the line is skipped"));
            return;
        }
        checkKey(line.number, key, tab >= 0);
        checkCode(line, key, code, tab >= 0);
        const auto earlier = m_entries.constFind(key);
        if (earlier != m_entries.constEnd()) {
            m_notes.add(
                line.number, Severity::Error,
                QStringLiteral("the key %1 was given in line %2 already, which this line replaces")
                    .arg(shown(key))
                    .arg(earlier->line));
        }
        m_entries.insert(key, {line.number, code});
    }

    void checkKey(int number, const QString& key, bool hasCode)
    {
        if (!hasCode)
            return;
        if (key != key.trimmed()) {
            m_notes.add(number, Severity::Warning,
                        QStringLiteral("the key %1 has blanks around it, which are written too")
                            .arg(shown(key)));
        }
        for (const QChar character : key) {
            if (character.category() == QChar::Other_Control ||
                character.category() == QChar::Other_Format) {
                m_notes.add(number, Severity::Warning,
                            QStringLiteral("the key holds the invisible character %1")
                                .arg(shown(character)));
                break;
            }
        }
        if (key.normalized(QString::NormalizationForm_C) != key) {
            m_notes.add(
                number, Severity::Warning,
                QStringLiteral("the key %1 is not in composed form (NFC): searches for it in the "
                               "text would miss it")
                    .arg(shown(key)));
        } else if (key.size() == 1) {
            const QChar::Decomposition form = key.at(0).decompositionTag();
            if (form == QChar::Initial || form == QChar::Medial || form == QChar::Final ||
                form == QChar::Isolated) {
                m_notes.add(
                    number, Severity::Warning,
                    QStringLiteral("the key %1 is the shape of a letter in one place of a word; "
                                   "the letter itself is %2")
                        .arg(shown(key), shown(key.normalized(QString::NormalizationForm_KC))));
            }
        }
    }

    void checkCode(const Line& line, const QString& key, const QString& code, bool hasTab)
    {
        if (!hasTab) {
            QString why = QStringLiteral("no tab");
            if (matchHeaderLine(line.text))
                why = QStringLiteral("a header line after the first entry is an entry");
            else if (key.startsWith(QLatin1Char('#')))
                why = QStringLiteral("there are no comment lines");
            m_notes.add(
                line.number, Severity::Error,
                QStringLiteral("%1: the whole line becomes a key with an empty code").arg(why));
            return;
        }
        if (matchHeaderLine(line.text)) {
            m_notes.add(line.number, Severity::Error,
                        QStringLiteral("a header line after the first entry is an entry"));
        }
        if (code.isEmpty()) {
            m_notes.add(line.number, Severity::Error,
                        QStringLiteral("the code of %1 is empty").arg(shown(key)));
            return;
        }
        for (const QChar symbol : code) {
            if (symbol != QLatin1Char('.') && symbol != QLatin1Char('-')) {
                m_notes.add(
                    line.number, Severity::Error,
                    QStringLiteral("the code of %1 holds %2: a code is made of \".\" and \"-\" "
                                   "only, so this one is never received")
                        .arg(shown(key), shown(symbol)));
                return;
            }
        }
    }

    /// One script is the alphabet's: the one of most single-letter keys.
    void checkScripts()
    {
        QMap<QChar::Script, int> counts;
        for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
            if (it.key().size() == 1 && hasOwnScript(it.key().at(0)))
                ++counts[it.key().at(0).script()];
        }
        QChar::Script main = QChar::Script_Unknown;
        for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
            if (main == QChar::Script_Unknown || it.value() > counts.value(main))
                main = it.key();
        }
        if (main == QChar::Script_Unknown)
            return;
        for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
            if (!isPlainWord(it.key()))
                checkScript(it.key(), it->line, main);
        }
    }

    void checkScript(const QString& key, int line, QChar::Script main)
    {
        for (const QChar character : key) {
            if (!hasOwnScript(character) || character.script() == main)
                continue;
            const QChar twin = twinIn(character, main);
            QString message =
                QStringLiteral("the key %1 is %2 in an alphabet that is %3")
                    .arg(shown(character), scriptName(character.script()), scriptName(main));
            if (!twin.isNull())
                message += QStringLiteral("; it looks like %1").arg(shown(twin));
            m_notes.add(line, Severity::Warning, message);
            return;
        }
    }

    void checkSharedCodes()
    {
        QHash<QString, QString> winners;
        // Ascending keys: the first one with a code is the one that is written.
        for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
            if (it->code.isEmpty())
                continue;
            const auto winner = winners.constFind(it->code);
            if (winner == winners.constEnd()) {
                winners.insert(it->code, it.key());
                continue;
            }
            m_notes.add(
                it->line, Severity::Error,
                QStringLiteral("%1 is never written: %2 in line %3 has the same code and sorts "
                               "before it")
                    .arg(shown(it.key()), shown(*winner))
                    .arg(m_entries.value(*winner).line));
        }
    }

    Report& m_report;
    Notes& m_notes;
    QMap<QString, Entry> m_entries; ///< in the order of the library's own table
};

} // namespace

void lintAlphabet(const QByteArray& bytes, Report& report, Notes& notes)
{
    const QVector<Line> lines = splitLines(bytes, Damage::Replaced, notes);
    AlphabetLint(report, notes).run(lines);
}

} // namespace lint
