// SPDX-License-Identifier: MIT
#include "tables/decodermodulesfile.h"

#include "tables/basecharset.h"

#include <QHash>
#include <QStringView>

#include <algorithm>
#include <cmath>

namespace Quillon {

namespace {

// Columns of the file, counted from 1.
constexpr int ID_COLUMN = 1;
constexpr int NUMBER_COLUMN = 2;
constexpr int TYPE_COLUMN = 3;
constexpr int FIRST_FLAG_COLUMN = 4;
constexpr int LAST_FLAG_COLUMN = 29;
constexpr int CHARSET_COLUMN = 30;
constexpr int NAME_COLUMN = 31; ///< and everything behind it

/// Index of a column's flag: the last columns of the file lie in another order.
std::size_t flagIndex(int column)
{
    Q_ASSERT(column >= FIRST_FLAG_COLUMN && column <= LAST_FLAG_COLUMN);
    static constexpr std::array<int, 7> LAST_COLUMNS = {24, 25, 22, 23, 19, 20, 21};
    constexpr int FIRST_CROSSED = 23;
    return static_cast<std::size_t>(column < FIRST_CROSSED
                                        ? column - FIRST_FLAG_COLUMN
                                        : LAST_COLUMNS[std::size_t(column - FIRST_CROSSED)]);
}

bool isDigit(QChar c)
{
    return c.isDigit();
}

/// Of Latin-1, which has no combining marks.
bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

/// Cuts off and returns the next column, which is empty at the start of a line that begins with
/// white space, and at its end.
QStringView takeColumn(QStringView& line)
{
    qsizetype end = 0;
    while (end < line.size() && !line[end].isSpace())
        ++end;
    const QStringView column = line.left(end);
    while (end < line.size() && line[end].isSpace())
        ++end;
    line = line.mid(end);
    return column;
}

constexpr quint32 bitOf(int column)
{
    return 1u << (column - 1);
}

/// The bits of all flag columns.
constexpr quint32 FLAG_BITS = bitOf(LAST_FLAG_COLUMN + 1) - bitOf(FIRST_FLAG_COLUMN);

/// For each column of the pattern one bit, set when `word` may stand there.
quint32 possibleColumns(QStringView word)
{
    const bool isSingle = word.size() == 1;
    // The match may begin within a word and end within one.
    quint32 columns = isWordCharacter(word[0]) ? bitOf(NAME_COLUMN) : 0;
    if (isSingle && columns)
        columns |= bitOf(TYPE_COLUMN) | bitOf(CHARSET_COLUMN);
    if (!isDigit(word.back()))
        return columns;
    columns |= bitOf(ID_COLUMN);
    if (isSingle)
        columns |= FLAG_BITS;
    if (std::all_of(word.begin(), word.end(), isDigit))
        columns |= bitOf(NUMBER_COLUMN);
    return columns;
}

/// 0 for what is not a number.
int integerIn(QStringView column)
{
    return QString::fromRawData(column.data(), static_cast<int>(column.size())).toInt();
}

/// Of a line that holds a module, and so a word for each column.
DecoderModule moduleOf(const QString& line)
{
    QStringView rest = line;
    DecoderModule module;
    module.id = integerIn(takeColumn(rest));
    module.number = takeColumn(rest).toString().toDouble();
    module.type = takeColumn(rest).front().toLatin1();
    for (int column = FIRST_FLAG_COLUMN; column <= LAST_FLAG_COLUMN; ++column)
        module.SetColumnFlag(column, integerIn(takeColumn(rest)) != 0);
    module.charset = takeColumn(rest).front().toLatin1();
    module.name = rest.trimmed().toString();
    return module;
}

/// Digits alone, which is what the column must hold to be read again.
QString digitsOf(double number)
{
    if (!(number > 0))
        return QStringLiteral("0");
    if (std::isinf(number))
        return QString(400, QLatin1Char('9'));
    const QString text = QString::number(number);
    return std::all_of(text.begin(), text.end(), isDigit) ? text : QString::number(number, 'f', 0);
}

void checkModule(int line, const QString& text, const DecoderModule& module,
                 QHash<QString, int>& lineOfName, Faults& faults)
{
    const QChar first = text[0];
    if (first.isSpace()) {
        faults.Error(line, "the line begins with a blank, which moves every column by one place");
    } else if (!first.isDigit()) {
        faults.Error(line, "the line does not begin with the id: its columns are taken from the "
                           "start of the line all the same");
    }
    if (baseCharsetOfLetter(module.charset) == eCHARSET_NONE && module.charset != 'N') {
        faults.Warning(line, "the letter %1 stands for no base character set (I, A, B; N for none)",
                       QChar(QLatin1Char(module.charset)));
    }
    const int earlier = lineOfName.value(module.name);
    if (earlier > 0) {
        faults.Error(line, "the decoder %1 was given in line %2 already; this line decides",
                     module.name, earlier);
    }
    lineOfName.insert(module.name, line);
}

} // namespace

bool DecoderModule::ColumnFlag(int column) const
{
    return flags[flagIndex(column)];
}

void DecoderModule::SetColumnFlag(int column, bool flag)
{
    flags[flagIndex(column)] = flag;
}

bool holdsDecoderModule(const QString& line)
{
    // One bit for each number of columns that the words read last may have filled.
    constexpr quint32 ALL_COLUMNS = bitOf(NAME_COLUMN);
    quint32 filled = 0;
    for (QStringView rest = line; !rest.isEmpty();) {
        const QStringView word = takeColumn(rest);
        if (word.isEmpty())
            continue;
        filled = (filled << 1 | 1) & possibleColumns(word);
        if (filled & ALL_COLUMNS)
            return true;
    }
    return false;
}

std::vector<DecoderModule> readDecoderModulesFile(const QByteArray& bytes, Faults& faults)
{
    std::vector<DecoderModule> modules;
    QHash<QString, int> lineOfName;
    int number = 0;
    for (int start = 0; start < bytes.size();) {
        const int lineFeed = bytes.indexOf('\n', start);
        const int end = lineFeed < 0 ? bytes.size() : lineFeed + 1;
        const QString line = QString::fromLatin1(bytes.constData() + start, end - start);
        start = end;
        ++number;
        if (holdsDecoderModule(line)) {
            modules.push_back(moduleOf(line));
            if (!faults.IsFull())
                checkModule(number, line, modules.back(), lineOfName, faults);
        } else if (!faults.IsFull() && !line.startsWith(QLatin1Char('#')) &&
                   !line.trimmed().isEmpty()) {
            faults.Error(number, "the line is skipped: it does not have the columns of a decoder "
                                 "(id, number, type, 26 flags, character set, name)");
        }
    }
    std::stable_sort(modules.begin(), modules.end(),
                     [](const DecoderModule& a, const DecoderModule& b) {
                         return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
                     });
    if (modules.empty())
        faults.Error(0, NO_ENTRY);
    return modules;
}

std::vector<DecoderModule> readDecoderModulesFile(const QByteArray& bytes)
{
    Faults ignored(0);
    return readDecoderModulesFile(bytes, ignored);
}

QByteArray decoderModulesFileOf(const std::vector<DecoderModule>& modules)
{
    QByteArray bytes;
    for (const DecoderModule& module : modules) {
        QString line = QString::number(module.id) + QLatin1Char(' ') + digitsOf(module.number) +
                       QLatin1Char(' ') + QLatin1Char(module.type);
        for (int column = FIRST_FLAG_COLUMN; column <= LAST_FLAG_COLUMN; ++column)
            line += QLatin1String(module.ColumnFlag(column) ? " 1" : " 0");
        line += QLatin1Char(' ') + QString(QLatin1Char(module.charset)) + QLatin1Char(' ') +
                module.name + QLatin1Char('\n');
        bytes += line.toLatin1();
    }
    return bytes;
}

} // namespace Quillon
