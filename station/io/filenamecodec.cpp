// SPDX-License-Identifier: MIT
#include "station/io/filenamecodec.h"

#include <QTextCodec>

namespace morsehost {

namespace {

constexpr ushort ESCAPE = 0xDC00;

bool isEscape(QChar c)
{
    return c.unicode() >= ESCAPE + 0x80 && c.unicode() <= ESCAPE + 0xFF;
}

// The UTF-8 character at the beginning; empty where there is none.
QString characterAt(const char* bytes, int size, int& length)
{
    const auto first = static_cast<unsigned char>(*bytes);
    length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (length > size)
        return {};
    static const QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader); // a byte order mark is a character
    const QString character = utf8->toUnicode(bytes, length, &state);
    return state.invalidChars == 0 && state.remainingChars == 0 ? character : QString();
}

class FileNameCodec : public QTextCodec
{
public:
    QByteArray name() const override { return "UTF-8-with-any-bytes"; }
    int mibEnum() const override { return -4711; } // of no registered character set

protected:
    QString convertToUnicode(const char* bytes, int size, ConverterState* /*state*/) const override
    {
        QString text;
        int length = 0;
        for (int i = 0; i < size; i += length) {
            const QString character = characterAt(bytes + i, size - i, length);
            text += character;
            if (character.isEmpty()) {
                text += QChar(ESCAPE | static_cast<unsigned char>(bytes[i]));
                length = 1;
            }
        }
        return text;
    }

    QByteArray convertFromUnicode(const QChar* text, int size,
                                  ConverterState* /*state*/) const override
    {
        QByteArray bytes;
        int plainBegin = 0;
        for (int i = 0; i <= size; ++i) {
            const bool isByte =
                i < size && isEscape(text[i]) && (i == 0 || !text[i - 1].isHighSurrogate());
            if (i < size && !isByte)
                continue;
            bytes += QString(text + plainBegin, i - plainBegin).toUtf8();
            plainBegin = i + 1;
            if (isByte)
                bytes += static_cast<char>(text[i].unicode() & 0xFF);
        }
        return bytes;
    }
};

} // namespace

void useFileNameCodec()
{
    QTextCodec::setCodecForLocale(new FileNameCodec); // belongs to Qt
}

} // namespace morsehost
