// SPDX-License-Identifier: MIT
#include "host/standin/printf.h"

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace {

constexpr int LONGEST_FIELD = 1000;

struct Placeholder
{
    QByteArray flags;
    int width = -1;     ///< -1: none
    int precision = -1; ///< -1: none
    QByteArray length;
    char conversion = 0; ///< 0: none that is known
};

/// Reads the placeholder whose "%" stands before `position`, and moves behind it.
class PlaceholderReader
{
public:
    PlaceholderReader(const QString& format, int& position)
        : m_format(format)
        , m_position(position)
    {
    }

    template <typename NextInt>
    Placeholder Read(NextInt nextInt)
    {
        Placeholder placeholder;
        while (Is("-+ #0"))
            placeholder.flags.append(Take());
        placeholder.width = ReadNumber(nextInt);
        if (placeholder.width < -1) { // a negative width from "*" means left-aligned
            placeholder.flags.append('-');
            placeholder.width = std::min(-(placeholder.width + 1), LONGEST_FIELD - 1) + 1;
        }
        if (Is(".")) {
            Take();
            placeholder.precision = Is("*0123456789") ? ReadNumber(nextInt) : 0;
        }
        while (Is("hlqjzt") || Is("L"))
            placeholder.length.append(Take());
        if (Is("diuoxXcspfFeEgGaAn%"))
            placeholder.conversion = Take();
        return placeholder;
    }

private:
    bool Is(const char* characters) const
    {
        if (m_position >= m_format.size())
            return false;
        const ushort unit = m_format.at(m_position).unicode();
        return unit != 0 && unit < 0x80 && std::strchr(characters, unit);
    }

    char Take() { return m_format.at(m_position++).toLatin1(); }

    template <typename NextInt>
    int ReadNumber(NextInt nextInt)
    {
        if (Is("*")) {
            Take();
            return std::min(nextInt(), LONGEST_FIELD);
        }
        int number = -1;
        while (Is("0123456789"))
            number = std::min(std::max(number, 0) * 10 + (Take() - '0'), LONGEST_FIELD);
        return number;
    }

    const QString& m_format;
    int& m_position;
};

QString justified(const QString& text, const Placeholder& placeholder)
{
    if (placeholder.width < 0)
        return text;
    return placeholder.flags.contains('-') ? text.leftJustified(placeholder.width)
                                           : text.rightJustified(placeholder.width);
}

/// One number or pointer, by the C library itself.
template <typename T>
QString formatNumber(const Placeholder& placeholder, const char* length, T number)
{
    QByteArray format = '%' + placeholder.flags;
    if (placeholder.width >= 0)
        format += QByteArray::number(placeholder.width);
    if (placeholder.precision >= 0)
        format += '.' + QByteArray::number(placeholder.precision);
    format += length;
    format += placeholder.conversion;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int size = std::snprintf(nullptr, 0, format.constData(), number);
    QByteArray text(std::max(size, 0) + 1, '\0');
    std::snprintf(text.data(), static_cast<std::size_t>(text.size()), format.constData(), number);
#pragma GCC diagnostic pop
    text.chop(1);
    return QString::fromLatin1(text);
}

int integerBytes(const QByteArray& length)
{
    if (length.isEmpty())
        return sizeof(int);
    if (length == "hh")
        return sizeof(char);
    if (length == "h")
        return sizeof(short);
    if (length == "l")
        return sizeof(long);
    if (length == "z" || length == "t")
        return sizeof(std::size_t);
    return sizeof(long long);
}

/// The lowest bytes of a number, as the conversion reads them: with a sign for "d" and "i".
long long narrowed(long long number, int bytes, char conversion)
{
    const int unused = 64 - 8 * bytes;
    const auto bits = static_cast<unsigned long long>(number) << unused;
    return conversion == 'd' || conversion == 'i' ? static_cast<long long>(bits) >> unused
                                                  : static_cast<long long>(bits >> unused);
}

QString textOf(const char* text, int precision)
{
    if (!text)
        return QStringLiteral("(null)");
    const std::size_t size =
        precision < 0 ? qstrlen(text) : qstrnlen(text, static_cast<uint>(precision));
    return QString::fromUtf8(text, static_cast<int>(size));
}

QString textOf(const wchar_t* text, int precision)
{
    if (!text)
        return QStringLiteral("(null)");
    std::size_t size = 0;
    while ((precision < 0 || size < static_cast<std::size_t>(precision)) && text[size])
        ++size;
    return QString::fromWCharArray(text, static_cast<int>(size));
}

} // namespace

// The analyzer does not follow va_copy.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized)
QString formatPrintf(const QString& format, va_list arguments)
{
    va_list next; // a name of its own, since a va_list parameter may be an array in disguise
    va_copy(next, arguments);
    const auto nextInt = [&next] { return va_arg(next, int); };

    QString result;
    int position = 0;
    while (position < format.size()) {
        const int percent = format.indexOf(QLatin1Char('%'), position);
        if (percent < 0) {
            result += format.midRef(position);
            break;
        }
        result += format.midRef(position, percent - position);
        position = percent + 1;
        const Placeholder placeholder = PlaceholderReader(format, position).Read(nextInt);
        const QByteArray& length = placeholder.length;
        const char conversion = placeholder.conversion;
        switch (conversion) {
        case '%':
            result += QLatin1Char('%');
            break;
        case 'd':
        case 'i':
        case 'u':
        case 'o':
        case 'x':
        case 'X': {
            const int bytes = integerBytes(length);
            const long long number =
                bytes > static_cast<int>(sizeof(int)) ? va_arg(next, long long) : va_arg(next, int);
            result += formatNumber(placeholder, "ll", narrowed(number, bytes, conversion));
            break;
        }
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            if (length == "L")
                result += formatNumber(placeholder, "L", va_arg(next, long double));
            else
                result += formatNumber(placeholder, "", va_arg(next, double));
            break;
        case 'p':
            result += formatNumber(placeholder, "", va_arg(next, void*));
            break;
        case 'c': {
            const int character = va_arg(next, int);
            result += justified(length == "l" ? QString(QChar(static_cast<ushort>(character)))
                                              : QString(QLatin1Char(static_cast<char>(character))),
                                placeholder);
            break;
        }
        case 's':
            if (length == "l")
                result += justified(textOf(va_arg(next, const wchar_t*), placeholder.precision),
                                    placeholder);
            else
                result += justified(textOf(va_arg(next, const char*), placeholder.precision),
                                    placeholder);
            break;
        case 'n':
            (void)va_arg(next, void*);
            break;
        default:
            result += format.midRef(percent);
            position = format.size();
        }
    }
    va_end(next);
    return result;
}
// NOLINTEND(clang-analyzer-valist.Uninitialized)
