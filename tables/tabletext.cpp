// SPDX-License-Identifier: MIT
#include "tables/tabletext.h"

#include <QTextCodec>

namespace {

QTextCodec* utf8()
{
    return QTextCodec::codecForName("UTF-8");
}

bool isUtf8(const char* bytes, int size)
{
    QTextCodec::ConverterState state;
    utf8()->toUnicode(bytes, size, &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

/// Calls `found` with the number of each line that is not UTF-8, until it returns false.
template <typename Found>
void findDamagedLines(const QByteArray& bytes, Found found)
{
    int number = 1;
    for (int start = 0; start < bytes.size(); ++number) {
        const int lineFeed = bytes.indexOf('\n', start);
        const int end = lineFeed < 0 ? bytes.size() : lineFeed;
        if (!isUtf8(bytes.constData() + start, end - start) && !found(number))
            return;
        start = end + 1;
    }
}

QString decodeOrTakeAsLatin1(const QByteArray& bytes, Faults& faults)
{
    QTextCodec::ConverterState state;
    QString text = utf8()->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    if (!faults.IsFull()) {
        findDamagedLines(bytes, [&](int number) {
            faults.Warning(number, "invalid UTF-8: the whole file is read as Latin-1");
            return false;
        });
    }
    return QString::fromLatin1(bytes.constData(), bytes.size());
}

QString decodeAsMarked(const QByteArray& bytes, Faults& faults)
{
    QTextCodec* const plain = utf8();
    QTextCodec* const codec = QTextCodec::codecForUtfText(bytes, plain);
    const bool isPlain = codec == plain;
    if (!isPlain) {
        faults.Warning(1, "the file is encoded as %1; alphabet files are UTF-8",
                       QString::fromLatin1(codec->name()));
    }
    // A state keeps a character that the end cuts off from being read as a damaged one.
    QTextCodec::ConverterState state;
    QString text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
    if (isPlain && state.invalidChars > 0 && !faults.IsFull()) {
        findDamagedLines(bytes, [&](int number) {
            faults.Error(number, "invalid UTF-8: each bad byte is read as U+FFFD");
            return !faults.IsFull();
        });
    }
    if (state.remainingChars > 0 && !faults.IsFull()) {
        faults.Error(bytes.count('\n') + 1, "the file ends within a character");
    }
    return text;
}

} // namespace

TableText::TableText(const QByteArray& bytes, TableEncoding encoding, Faults& faults)
    : m_text(encoding == TableEncoding::Utf8OrMarked ? decodeAsMarked(bytes, faults)
                                                     : decodeOrTakeAsLatin1(bytes, faults))
    , m_faults(faults)
{
    Next();
}

void TableText::Next()
{
    const int lineFeed = m_text.indexOf(QLatin1Char('\n'), m_position);
    const int end = lineFeed < 0 ? m_text.size() : lineFeed;
    m_line = QStringView(m_text).mid(m_position, end - m_position);
    m_position = lineFeed < 0 ? end : end + 1;
    ++m_number;
    if (lineFeed >= 0 && m_line.endsWith(QLatin1Char('\r')))
        m_line.chop(1);
    if (!m_faults.IsFull() && m_line.contains(QLatin1Char('\r')))
        m_faults.Error(m_number, "a lone carriage return does not end a line");
}

std::optional<int> numberIn(QStringView text, int base)
{
    bool isNumber = false;
    const int number =
        QString::fromRawData(text.data(), static_cast<int>(text.size())).toInt(&isNumber, base);
    return isNumber ? std::optional<int>(number) : std::nullopt;
}

signed char byteOf(QChar character)
{
    return character.unicode() > 0xFF ? 0 : static_cast<signed char>(character.unicode());
}
