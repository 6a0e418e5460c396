// SPDX-License-Identifier: MIT
#include "app/manual/manualpage.h"

#include <QRegularExpression>
#include <QStringList>

namespace morsehost {

namespace {

// A sign that roff would turn into another one, a typographic quote for example.
QString escaped(QChar c)
{
    switch (c.unicode()) {
    case '\\':
        return QStringLiteral("\\(rs");
    case '\'':
        return QStringLiteral("\\(aq");
    case '`':
        return QStringLiteral("\\(ga");
    case '"':
        return QStringLiteral("\\(dq");
    case '^':
        return QStringLiteral("\\(ha");
    case '~':
        return QStringLiteral("\\(ti");
    case u'…':
        return QStringLiteral("...");
    default:
        break;
    }
    if (c.unicode() < 0x80)
        return c;
    const QString code = QString::number(c.unicode(), 16).toUpper();
    return QStringLiteral("\\[u%1]").arg(code, 4, QLatin1Char('0'));
}

// Inside a word it may be a hyphen; elsewhere it is the sign that options begin with.
bool isHyphen(const QString& text, int at)
{
    return text.at(at) == QLatin1Char('-') && at > 0 && at + 1 < text.size() &&
           text.at(at - 1).isLetter() && text.at(at + 1).isLetter();
}

// What roff fills anyway, in lines that a person can read.
QString roffParagraph(const char* text)
{
    constexpr int MAX_COLUMN = 78;
    QString paragraph;
    int column = 0;
    const QStringList words =
        QString::fromUtf8(text).split(QRegularExpression(QStringLiteral("\\s+")));
    for (const QString& word : words) {
        const QString roff = roffText(word);
        const bool fits = column + 1 + roff.size() <= MAX_COLUMN;
        if (column > 0)
            paragraph += fits ? QLatin1Char(' ') : QLatin1Char('\n');
        column = fits ? column + 1 + roff.size() : roff.size();
        paragraph += roff;
    }
    return paragraph;
}

QString bold(const QString& text)
{
    return QStringLiteral("\\fB%1\\fR").arg(text);
}

QString italic(const QString& text)
{
    return QStringLiteral("\\fI%1\\fR").arg(text);
}

// Words to be typed have no hyphens, only minus signs.
QString roffSigns(const QString& words)
{
    return QString(words).replace(QLatin1Char('-'), QLatin1String("\\-"));
}

QString optionWords(const OptionRow& option)
{
    QString words = bold(roffSigns(optionWord(option.name)));
    if (option.valueName)
        words += QLatin1Char(' ') + italic(roffText(QLatin1String(option.valueName)));
    return words;
}

QString optionList(const std::vector<OptionRow>& options)
{
    QString list;
    for (const OptionRow& option : options)
        list += QStringLiteral(".TP\n%1\n%2.\n")
                    .arg(optionWords(option), roffParagraph(option.help.c_str()));
    return list;
}

QString commandSection(const CommandSyntax& command)
{
    const QString name = QLatin1String(command.name);
    QStringList synopsis = {bold(QStringLiteral("morsehost ") + roffText(name)),
                            roffText(QStringLiteral("[OPTION…]"))};
    const QString operands = QString::fromUtf8(command.operands);
    if (!operands.isEmpty())
        synopsis += italic(roffText(operands));

    std::vector<OptionRow> options = command.options;
    options.push_back(HELP_OPTION);
    QString section =
        QStringLiteral(".SS %1\n%2\n.PP\n%3\n")
            .arg(roffText(name), synopsis.join(QLatin1Char(' ')), roffParagraph(command.summary));
    section += optionList(options);
    return section;
}

QString exampleSection(const std::vector<Command>& commands)
{
    QString section = QStringLiteral(".SH EXAMPLES\n.nf\n");
    for (const Command& command : commands)
        section += roffText(QString::fromUtf8(command.syntax.examples));
    return section + QStringLiteral(".fi\n");
}

} // namespace

QString roffText(const QString& text)
{
    QString roff;
    bool atLineStart = true;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (atLineStart && c == QLatin1Char('.'))
            roff += QLatin1String("\\&");
        atLineStart = c == QLatin1Char('\n');
        if (c == QLatin1Char('-') && !isHyphen(text, i))
            roff += QLatin1String("\\-");
        else
            roff += escaped(c);
    }
    return roff;
}

QString manualPage(const std::vector<Command>& commands,
                   const std::vector<OptionRow>& programOptions, const QString& version,
                   const QString& date)
{
    QString page =
        QStringLiteral(
            ".\\\" Written from the tables of the program; changes made here are lost.\n"
            ".TH MORSEHOST 1 %2 \"morsehost %1\" \"User Commands\"\n"
            ".SH NAME\n"
            "morsehost \\- turn Morse code and the output of radio decoders into text\n"
            ".SH SYNOPSIS\n"
            ".B morsehost\n"
            ".I COMMAND\n"
            "[OPTION...] [ARGUMENT...]\n"
            ".SH DESCRIPTION\n"
            "Reads Morse code from a recording or a pipe, or the 8-bit output of another\n"
            "decoder, and writes it as UTF-8 text.\n"
            "Standard output carries results only; a line on standard error says why\n"
            "something cannot be done.\n"
            ".SH OPTIONS\n")
            .arg(version, date);
    page += optionList(programOptions);
    page += QStringLiteral(".SH COMMANDS\n");
    for (const Command& command : commands)
        page += commandSection(command.syntax);
    page += QStringLiteral(".SH \"EXIT STATUS\"\n"
                           ".TP\n0\nAll was done.\n"
                           ".TP\n1\nAn input cannot be used, or an output not be written.\n"
                           ".TP\n2\nUsage error.\n"
                           ".SH FILES\n"
                           "What ships with the program lies in\n"
                           ".I ../share/morsehandler\n"
                           "beside the folder that the program is in:\n"
                           ".TP\n.I alphabets\nMorse alphabets.\n"
                           ".TP\n.I maps\nCodec and map files for other decoders.\n"
                           ".TP\n.I decoders/decodermodules.txt\n"
                           "A sample of the file that says which character set a decoder has.\n"
                           ".TP\n.I samples\nRecordings to try.\n"
                           ".TP\n.I schema\nThe XML schema of the result documents.\n");
    page += exampleSection(commands);
    page += QStringLiteral(".SH \"SEE ALSO\"\n.BR arecord (1),\n.BR sox (1)\n");
    return page;
}

} // namespace morsehost
