// SPDX-License-Identifier: MIT
// Codec and map files: a decoder byte and the character to show for it, a line each. Nothing in
// them is refused aloud: a line that is not understood is skipped, or becomes another entry than
// the author thinks.
#include "tables/lint/rules.h"

#include "tables/headerline.h"

namespace lint {

namespace {

QString byteName(uchar byte)
{
    const QString hex = QStringLiteral("0x%1").arg(
        QString::number(byte, 16).toUpper().rightJustified(2, QLatin1Char('0')));
    return byte > 0x20 && byte < 0x7F
               ? QStringLiteral("%1 (\"%2\")").arg(hex).arg(QLatin1Char(char(byte)))
               : hex;
}

struct Number
{
    bool valid = false;
    int value = 0;
};

Number numberOf(const QString& text, int base)
{
    Number number;
    number.value = text.toInt(&number.valid, base);
    return number;
}

/// What both kinds of file share: the table, and the ways in which entries get into each other's
/// way.
class TableLint
{
public:
    TableLint(Report& report, Notes& notes)
        : m_report(report)
        , m_notes(notes)
    {
    }

protected:
    void say(const Line& line, Severity severity, const QString& message)
    {
        m_notes.add(line.number, severity, message);
    }

    void store(const Line& line, uchar key, QChar value)
    {
        const auto earlier = m_lines.constFind(key);
        if (earlier != m_lines.constEnd()) {
            say(line, Severity::Error,
                QStringLiteral("the byte %1 was given in line %2 already, which this line replaces")
                    .arg(byteName(key))
                    .arg(*earlier));
        }
        // A blank for a blank is how a table says that it means the blank.
        if (earlier == m_lines.constEnd() && value.unicode() == key && key != ' ')
            say(line, Severity::Warning,
                QStringLiteral("the byte %1 shows as itself without this line, too")
                    .arg(byteName(key)));
        m_lines.insert(key, line.number);
        m_report.characters.insert(key, value);
    }

    void checkCodePoint(const Line& line, int value)
    {
        if (value < 0 || value > 0xFFFF) {
            say(line, Severity::Error,
                QStringLiteral("the character code does not fit in 16 bits: it is cut to %1")
                    .arg(shown(QChar(ushort(value)))));
        } else if (value >= 0xD800 && value <= 0xDFFF) {
            say(line, Severity::Error,
                QStringLiteral("the character code %1 is half of a pair, not a character")
                    .arg(shown(QChar(value))));
        }
    }

    void finish()
    {
        if (m_report.characters.isEmpty()) {
            m_notes.add(0, Severity::Error,
                        QStringLiteral("no entry is stored: text would pass unchanged"));
        }
        // Turning text back takes the smallest key as a signed number: 0x80 comes before 0x00.
        QMap<QChar, uchar> winners;
        for (int signedKey = -128; signedKey < 128; ++signedKey) {
            const auto key = uchar(signedKey);
            const auto it = m_report.characters.constFind(key);
            if (it == m_report.characters.constEnd())
                continue;
            const QChar value = *it;
            if (value.isNull())
                continue;
            const auto winner = winners.constFind(value);
            if (winner == winners.constEnd()) {
                winners.insert(value, key);
                if (value == QLatin1Char(' ') && key != ' ') {
                    m_notes.add(
                        m_lines.value(key), Severity::Warning,
                        QStringLiteral("%1 is shown as a blank, so every blank that is turned "
                                       "back becomes %1")
                            .arg(byteName(key)));
                }
                continue;
            }
            m_notes.add(
                m_lines.value(key), Severity::Warning,
                QStringLiteral("%1 shows the same character %2 as %3 in line %4, which it is "
                               "always turned back into")
                    .arg(byteName(key), shown(value), byteName(*winner))
                    .arg(m_lines.value(*winner)));
        }
    }

    Report& m_report;
    Notes& m_notes;

private:
    QMap<uchar, int> m_lines; ///< the line that an entry comes from
};

class CodecLint : TableLint
{
public:
    using TableLint::TableLint;

    void run(const QVector<Line>& lines)
    {
        if (!lines.isEmpty() && isEntry(lines.first().text))
            say(lines.first(), Severity::Error,
                QStringLiteral("the first line is a title and never read as an entry"));
        if (lines.size() > 1)
            direction(lines.at(1));
        for (int i = 2; i < lines.size(); ++i)
            entry(lines.at(i));
        finish();
    }

private:
    static bool isEntry(const QString& text)
    {
        return text.size() > 1 && text.at(1) == QLatin1Char(';');
    }

    void direction(const Line& line)
    {
        m_report.rightToLeft = line.text.startsWith(QLatin1String("RL"));
        if (m_report.rightToLeft)
            return;
        if (isEntry(line.text)) {
            say(line, Severity::Error,
                QStringLiteral("the second line tells the text direction and is never read as an "
                               "entry"));
        } else if (line.text.contains(QLatin1String("RL"), Qt::CaseInsensitive) ||
                   line.text.contains(QLatin1String("RTL"), Qt::CaseInsensitive)) {
            say(line, Severity::Warning,
                QStringLiteral("this is not right-to-left: the second line has to begin with "
                               "\"RL\", in capitals"));
        }
    }

    void entry(const Line& line)
    {
        if (!isEntry(line.text)) {
            if (!line.text.isEmpty() && !line.text.startsWith(QLatin1Char('#')))
                say(line, Severity::Error,
                    QStringLiteral("the line is skipped: an entry is one character, \";\" and a "
                                   "value"));
            return;
        }
        const QChar keyCharacter = line.text.at(0);
        const QString text = line.text.mid(2);
        const Number number = numberOf(text, 16);
        QChar value(QLatin1Char(' '));
        if (number.valid && text.startsWith(QLatin1String("0x"))) {
            checkCodePoint(line, number.value);
            value = QChar(ushort(number.value));
        } else if (!text.isEmpty()) {
            say(line, Severity::Error,
                number.valid
                    ? QStringLiteral("the line is skipped: a value is written with a "
                                     "leading \"0x\", in small letters")
                    : QStringLiteral("the line is skipped: %1 is no number").arg(shown(text)));
            return;
        }
        if (value.isNull()) {
            say(line, Severity::Error,
                QStringLiteral("the value is 0: the line is skipped and the character stays as "
                               "it is"));
            return;
        }
        if (keyCharacter.unicode() > 0xFF) {
            say(line, Severity::Error,
                QStringLiteral("the key %1 is no 8-bit character: the entry goes to byte 0x00")
                    .arg(shown(keyCharacter)));
        }
        store(line, keyCharacter.unicode() > 0xFF ? 0 : uchar(keyCharacter.unicode()), value);
    }
};

class MapLint : TableLint
{
public:
    using TableLint::TableLint;

    void run(const QVector<Line>& lines)
    {
        const int first = readHeader(lines, m_report.rightToLeft, m_notes);
        for (int i = first; i + 1 < lines.size(); ++i)
            entry(lines.at(i));
        if (first < lines.size()) {
            const Line& last = lines.last();
            if (!last.text.isEmpty() && !last.text.startsWith(QLatin1Char('#')))
                say(last, Severity::Error,
                    QStringLiteral("the last line of the file is never stored: end the file with "
                                   "an empty line or a comment"));
        }
        finish();
    }

private:
    void entry(const Line& line)
    {
        if (line.text.startsWith(QLatin1Char('#')))
            return;
        if (line.text.isEmpty()) {
            say(line, Severity::Error,
                QStringLiteral("an empty line that is not the last is an entry: it shows byte "
                               "0x00 as a blank"));
            store(line, 0, QLatin1Char(' '));
            return;
        }
        if (matchHeaderLine(line.text)) {
            say(line, Severity::Error,
                QStringLiteral("a header line after the first other line, comments included, is "
                               "an entry"));
        }
        const QStringList fields = line.text.split(QLatin1Char('\t'));
        if (fields.size() < 2) {
            say(line, Severity::Error,
                QStringLiteral("no tab: the line shows its byte as a blank"));
        }
        const uchar key = keyOf(line, fields.at(0));
        const QChar value = valueOf(line, fields.value(1));
        store(line, key, value);
    }

    uchar keyOf(const Line& line, const QString& field)
    {
        const Number number = numberOf(field, 0);
        if (number.valid) {
            if (number.value < 0 || number.value > 0xFF) {
                say(line, Severity::Error,
                    QStringLiteral("the key %1 is no byte: its low 8 bits are %2")
                        .arg(shown(field), byteName(uchar(number.value))));
            } else if (field.size() == 1) {
                say(line, Severity::Warning,
                    QStringLiteral("the key %1 is the number %2, not the digit, which is byte "
                                   "0x%3")
                        .arg(shown(field))
                        .arg(number.value)
                        .arg(QString::number(field.at(0).unicode(), 16)));
            } else if (field.startsWith(QLatin1Char('0')) &&
                       !field.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
                say(line, Severity::Warning,
                    QStringLiteral("the key %1 begins with 0 and is therefore octal: byte %2")
                        .arg(shown(field), byteName(uchar(number.value))));
            }
            return uchar(number.value);
        }
        if (field.isEmpty()) {
            say(line, Severity::Error,
                QStringLiteral("no key before the tab: the entry goes to byte 0x00"));
            return 0;
        }
        const ushort code = field.at(0).unicode();
        if (code > 0xFF) {
            say(line, Severity::Error,
                QStringLiteral("the key %1 is no 8-bit character: the entry goes to byte 0x00")
                    .arg(shown(field)));
            return 0;
        }
        if (field.size() > 1) {
            say(line, Severity::Error,
                QStringLiteral("%1 is no number: only its first character counts, byte %2")
                    .arg(shown(field), byteName(uchar(code))));
        }
        return uchar(code);
    }

    QChar valueOf(const Line& line, const QString& field)
    {
        const Number number = numberOf(field, 0);
        if (number.valid && field.startsWith(QLatin1String("0x"))) {
            checkCodePoint(line, number.value);
            if (ushort(number.value) == 0) {
                say(line, Severity::Warning,
                    QStringLiteral("the value is 0: the byte is shown as a blank"));
            }
            return QChar(ushort(number.value));
        }
        if (field.isEmpty())
            return QLatin1Char(' ');
        const QChar first = field.at(0);
        if (field.size() > 1 && !field.trimmed().isEmpty()) {
            say(line, Severity::Error,
                number.valid
                    ? QStringLiteral("only a number with a leading \"0x\" is a character code: "
                                     "%1 shows %2")
                          .arg(shown(field), shown(first))
                    : QStringLiteral("%1 is no number: only its first character counts, %2")
                          .arg(shown(field), shown(first)));
        }
        return first;
    }
};

} // namespace

void lintCodec(const QByteArray& bytes, Report& report, Notes& notes)
{
    const QVector<Line> lines = splitLines(bytes, Damage::Latin1, notes);
    CodecLint(report, notes).run(lines);
}

void lintMap(const QByteArray& bytes, Report& report, Notes& notes)
{
    const QVector<Line> lines = splitLines(bytes, Damage::Latin1, notes);
    MapLint(report, notes).run(lines);
}

} // namespace lint
